#include "solve/Unreached.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geometry/Units.h"
#include "text/Numbers.h"

namespace host
{

namespace
{

/// Turns the bounds of joints inside out, and back again at the end of its life.
///
/// A solve that fails returns only the joints that ended outside their bounds, and the values of
/// the others are lost. With bounds from plus to minus infinity every value lies outside, so that
/// the failed solve, run without limits, tells where each joint ended.
class InvertedBounds
{
  public:
    explicit InvertedBounds(const std::vector<const Axis*>& axes)
    {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        kept.reserve(axes.size());
        for (const Axis* axis : axes) {
            kept.push_back({axis->joint, axis->joint->GetLowBound(), axis->joint->GetHiBound()});
            axis->joint->SetBounds(kInfinity, -kInfinity);
        }
    }
    ~InvertedBounds()
    {
        for (const Bounds& bounds : kept) {
            bounds.joint->SetBounds(bounds.low, bounds.high);
        }
    }
    InvertedBounds(const InvertedBounds&) = delete;
    InvertedBounds& operator=(const InvertedBounds&) = delete;

  private:
    struct Bounds
    {
        IkJoint* joint;
        double low;
        double high;
    };
    std::vector<Bounds> kept;
};

struct UnlimitedSolve
{
    bool hasConverged{false};
    IkJtStateVector states; //!< where every joint ended
};

UnlimitedSolve SolveWithoutLimits(const LoadedStream& stream, const std::vector<const Axis*>& axes,
                                  const ToolPoint& point)
{
    const InvertedBounds inverted(axes);
    IkEndState target = TargetAt(point);
    UnlimitedSolve solve;
    solve.hasConverged =
        stream.stream->SolveIK(target, solve.states, false, IkJoint::JtLimitNone, false);
    return solve;
}

/// Turns limited rotary joints by whole turns to where they are nearest to their limits: a solve
/// without limits may end a turn away from a value that is as good.
void TurnBack(IkJtStateVector& states, const std::vector<const Axis*>& axes)
{
    for (const Axis* axis : axes) {
        if (axis->isRotary && !axis->IsUnlimited()) {
            IkJtState& state = states.GetState(states.FindStateByJointPtr(axis->joint));
            const double middle = (axis->joint->GetLowBound() + axis->joint->GetHiBound()) / 2.0;
            const double turns = std::round((state.GetValue() - middle) / kTurn);
            state.SetValue(state.GetValue() - turns * kTurn);
        }
    }
}

/// Puts the states that lie outside their joint's bounds on the bound; returns their axes.
std::vector<ExceededAxis> Clamp(IkJtStateVector& states, const std::vector<const Axis*>& axes)
{
    std::vector<ExceededAxis> exceeded;
    for (const Axis* axis : axes) {
        const int index = states.FindStateByJointPtr(axis->joint);
        const double value = states.GetState(index).GetValue();
        const double clamped =
            std::clamp(value, axis->joint->GetLowBound(), axis->joint->GetHiBound());
        if (clamped != value) {
            exceeded.push_back({axis, value});
            states.GetState(index).SetValue(clamped);
        }
    }
    return exceeded;
}

std::string RemainingText(const PoseError& remaining, const ShownUnits& units)
{
    return DecimalText(remaining.position) + " " + std::string(Symbol(units.length)) + " and " +
           DecimalText(remaining.direction_deg) + " deg";
}

std::string ExceededText(const std::vector<ExceededAxis>& exceeded, const ShownUnits& units)
{
    std::string text;
    for (const ExceededAxis& one : exceeded) {
        text += (text.empty() ? "" : ", ") + ValueText(*one.axis, one.value, units) + " (" +
                LimitsText(*one.axis, units) + ")";
    }
    return text;
}

} // namespace

Unreached Diagnose(const LoadedMachine& machine, const LoadedStream& stream, const ToolPoint& point)
{
    const std::vector<const Axis*> axes = machine.AxesOf(stream);
    UnlimitedSolve solve = SolveWithoutLimits(stream, axes, point);
    Unreached unreached;
    if (solve.hasConverged) {
        TurnBack(solve.states, axes);
        unreached.exceeded = Clamp(solve.states, axes);
        unreached.cause =
            unreached.exceeded.empty() ? Unreached::Cause::LostOnTheWay : Unreached::Cause::Limits;
    }
    unreached.remaining = ErrorAt(*stream.stream, solve.states, point);
    return unreached;
}

std::string Sentence(const Unreached& unreached, const ShownUnits& units)
{
    const std::string remaining = RemainingText(unreached.remaining, units);
    switch (unreached.cause) {
    case Unreached::Cause::Limits:
        return "reaching it would need " + ExceededText(unreached.exceeded, units) + "; at the " +
               (unreached.exceeded.size() == 1 ? "limit " : "limits ") + remaining + " remain";
    case Unreached::Cause::LostOnTheWay:
        return "there are joint values within the limits that reach it, but no way to them was "
               "found from where the axes stood; put points before it, or give the axes another "
               "initial";
    case Unreached::Cause::OutOfReach:
        break;
    }
    return "no joint values were found that reach it; " + remaining + " are left over";
}

} // namespace host
