#include "solve/WarmStart.h"

#include <algorithm>
#include <iterator>

namespace host
{

WarmStart::WarmStart(const LoadedMachine& ofMachine, const LoadedStream& ofStream)
    : machine(ofMachine), stream(ofStream), axes(ofMachine.AxesOf(ofStream))
{
    machine.MoveToInitial();
}

std::optional<Reached> WarmStart::Solve(const ToolPoint& point)
{
    IkEndState target = TargetAt(point);
    IkJtStateVector states;
    if (!stream.stream->SolveIK(target, states, false, IkJoint::JtLimitAll, false)) {
        return std::nullopt;
    }
    states.CommitValuesToJoints();
    Reached reached;
    reached.error = ErrorAt(*stream.stream, states, point);
    std::transform(axes.begin(), axes.end(), std::back_inserter(reached.joints),
                   [](const Axis* axis) { return axis->joint->GetCurValue(); });
    return reached;
}

Unreached WarmStart::WhyNot(const ToolPoint& point) const
{
    return Diagnose(machine, stream, point);
}

} // namespace host
