#include "solve/SampledSolver.h"

#include <algorithm>
#include <cmath>

#include "geometry/Units.h"

namespace host
{

namespace
{

// Measured over random poses of a six-axis arm, each start 11 passes on average.
constexpr std::size_t kStartsForFirst = 32; // 99.9 % of the poses are solved; more solve no more
constexpr int kGiveUpAfter = 10; // of those that lead there 96 % are near; of the others 1 % are

SolverSettings Impatient(SolverSettings settings)
{
    settings.giveUpAfter = kGiveUpAfter;
    return settings;
}

double Clamped(double value, const IkJoint& joint)
{
    return std::clamp(value, joint.GetLowBound(), joint.GetHiBound());
}

/// The value, whole turns away from `value`, that is nearest to `near` of those within the limits;
/// when there is none within, one of the nearest to them.
double NearestTurn(double value, double near, const IkJoint& joint)
{
    double turned = value - std::round((value - near) / kTurn) * kTurn;
    if (turned > joint.GetHiBound()) {
        turned -= std::ceil((turned - joint.GetHiBound()) / kTurn) * kTurn;
    } else if (turned < joint.GetLowBound()) {
        turned += std::ceil((joint.GetLowBound() - turned) / kTurn) * kTurn;
    }
    return turned;
}

} // namespace

SampledSolver::SampledSolver(const LoadedMachine& machine, const LoadedStream& stream,
                             SolverSettings settings, const JointValues& lockedAt)
    : solver(machine, stream, Impatient(settings)), free(solver.FreeAxes()),
      starts(solver, lockedAt)
{}

/// Turns rotary axes by whole turns into their limits, as near to `near` as that goes. False where
/// an axis stays outside.
bool SampledSolver::BringWithinLimits(JointValues& joints, const JointValues& near) const
{
    bool areWithin = true;
    for (const std::size_t i : free) {
        const Axis& axis = *solver.Axes()[i];
        if (axis.isRotary) {
            joints[i] = NearestTurn(joints[i], near[i], *axis.joint);
        }
        areWithin = areWithin && joints[i] == Clamped(joints[i], *axis.joint);
    }
    return areWithin;
}

/// Without limits more starts lead somewhere, and more of the solutions turn out to lie within the
/// limits, than of those that are kept within them on the way: at a limit the iteration often
/// stops. From a solution a little outside, or with joints to spare, there may be a way back.
std::optional<JointValues> SampledSolver::SolveFrom(const PathTarget& target, JointValues joints,
                                                    const JointValues& near, bool isLimited)
{
    if (!solver.Solve(target, IkJoint::JtLimitNone, joints)) {
        return std::nullopt;
    }
    if (BringWithinLimits(joints, near) || !isLimited) {
        return joints;
    }
    for (const std::size_t i : free) {
        joints[i] = Clamped(joints[i], *solver.Axes()[i]->joint);
    }
    const bool isBack =
        solver.Solve(target, IkJoint::JtLimitAll, joints) && BringWithinLimits(joints, near);
    return isBack ? std::optional(joints) : std::nullopt;
}

std::optional<JointValues> SampledSolver::FindFirst(const PathTarget& target,
                                                    const JointValues& first)
{
    std::optional<JointValues> found = SolveFrom(target, first, first, true);
    const std::vector<std::size_t> nearest = starts.NearestTo(target, kStartsForFirst);
    for (auto start = nearest.begin(); start != nearest.end() && !found; ++start) {
        found = SolveFrom(target, starts[*start], first, true);
    }
    return found;
}

std::vector<JointValues> SampledSolver::FindAll(const PathTarget& target, const JointValues& first,
                                                const SampleExtent& extent)
{
    std::vector<JointValues> found;
    const auto take = [&](const JointValues& start) {
        const std::optional<JointValues> joints = SolveFrom(target, start, first, extent.isLimited);
        if (joints && std::none_of(found.begin(), found.end(), [&](const JointValues& other) {
                return AreSameSolution(solver.Axes(), *joints, other);
            })) {
            found.push_back(*joints);
        }
    };
    take(first);
    for (const std::size_t start : starts.NearestTo(target, extent.starts)) {
        take(starts[start]);
    }
    return found;
}

bool AreSameSolution(const std::vector<const Axis*>& axes, const JointValues& a,
                     const JointValues& b)
{
    constexpr double kSameLinear = 1e-3; // [length]
    // Close to a pose at which two axes are one, what a direction may be off by, 1.7e-5 rad, lets
    // them turn by much more against each other.
    constexpr double kSameRotary = 1e-2; // [rad]
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const double apart = a[i] - b[i];
        const bool isSame = axes[i]->isRotary
                                ? std::fabs(std::remainder(apart, kTurn)) <= kSameRotary
                                : std::fabs(apart) <= kSameLinear;
        if (!isSame) {
            return false;
        }
    }
    return true;
}

} // namespace host
