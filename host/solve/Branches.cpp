#include "solve/Branches.h"

#include <algorithm>
#include <iterator>

#include <IkSolver.h>

namespace host
{

namespace
{

std::vector<double> JointsOf(const IkJtStateVector& states, const std::vector<const Axis*>& axes)
{
    std::vector<double> joints;
    std::transform(axes.begin(), axes.end(), std::back_inserter(joints), [&](const Axis* axis) {
        double value = axis->joint->GetCurValue();
        states.FindValFromPtr(axis->joint, value);
        return value;
    });
    return joints;
}

} // namespace

Branches FindBranches(const LoadedMachine& machine, const LoadedStream& stream,
                      const ToolPoint& point, IkJoint::JointLimitTypes limits)
{
    IkEndState target = TargetAt(point);
    IkJtStateVector first;
    IkSolverHybrid solver(stream.stream);
    solver.SolveIK(target, first, false, limits, false);

    const std::vector<const Axis*> axes = machine.AxesOf(stream);
    Branches branches;
    branches.starts = solver.GetSampleList().size();
    for (IkSolverSampleItem& sample : solver.GetSampleList()) {
        if (!sample.rejected) {
            branches.found.push_back({JointsOf(sample.resultStates, axes),
                                      ErrorAt(*stream.stream, sample.resultStates, point)});
        }
    }
    return branches;
}

} // namespace host
