#include "planner/JointSpace.h"

#include <cmath>

namespace host
{

double NearestImage(double value, double reference)
{
    return value + kTurn * std::round((reference - value) / kTurn);
}

JointValues NearestImages(const std::vector<const Axis*>& axes, JointValues joints,
                          const JointValues& reference)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->isRotary) {
            joints[i] = NearestImage(joints[i], reference[i]);
        }
    }
    return joints;
}

bool CountsTurns(const Axis& axis)
{
    constexpr double kMostTurns = 64.0;
    return axis.joint->GetHiBound() - axis.joint->GetLowBound() <= kMostTurns * kTurn;
}

double BaseImage(const Axis& axis, double value)
{
    if (!CountsTurns(axis)) {
        return NearestImage(value, 0.0);
    }
    const double low = axis.joint->GetLowBound() - kRotarySlack;
    return value - kTurn * std::floor((value - low) / kTurn);
}

double OnNearestTurn(const Axis& axis, double value, double reference)
{
    const double low = axis.joint->GetLowBound();
    const double high = axis.joint->GetHiBound();
    const double nearest = NearestImage(value, reference);
    if (nearest < low) {
        return nearest + kTurn * std::ceil((low - nearest) / kTurn);
    }
    return nearest > high ? nearest - kTurn * std::ceil((nearest - high) / kTurn) : nearest;
}

JointValues OnNearestTurns(const std::vector<const Axis*>& axes, JointValues joints,
                           const JointValues& reference)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->isRotary && !CountsTurns(*axes[i])) {
            joints[i] = OnNearestTurn(*axes[i], joints[i], reference[i]);
        }
    }
    return joints;
}

bool IsWithinLimits(const Axis& axis, double value)
{
    const double slack = axis.isRotary ? kRotarySlack : kLinearSlack;
    return value >= axis.joint->GetLowBound() - slack && value <= axis.joint->GetHiBound() + slack;
}

bool AreWithinLimits(const std::vector<const Axis*>& axes, const JointValues& joints)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (!IsWithinLimits(*axes[i], joints[i])) {
            return false;
        }
    }
    return true;
}

double RotaryTravel(const std::vector<const Axis*>& axes, const JointValues& from,
                    const JointValues& to)
{
    double travel = 0.0;
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->isRotary) {
            travel += std::fabs(to[i] - from[i]);
        }
    }
    return travel;
}

} // namespace host
