#include "solve/Branches.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include <IkSolver.h>

#include "solve/PointSolver.h"
#include "solve/SampledSolver.h"
#include "solve/ToolRoll.h"

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

Branches FindByHybridSolver(const LoadedMachine& machine, const LoadedStream& stream,
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

Branches FindByManyStarts(const LoadedMachine& machine, const LoadedStream& stream,
                          const ToolPoint& point, IkJoint::JointLimitTypes limits)
{
    PointSolver solver(machine, stream, {});
    PathTarget target{{point.position, point.direction}, std::nullopt};
    if (HasOpenRoll(solver)) {
        Toolpath path;
        path.points.push_back(point);
        target.xAxis = ToolXAxes(path, {}).front();
    }
    SampleExtent extent;
    extent.starts = 256; // a single pose may take its time: few are missed then
    extent.isLimited = limits != IkJoint::JtLimitNone;
    const JointValues first = solver.Initial();
    Branches branches;
    branches.starts = extent.starts + 1;
    branches.xAxis = target.xAxis;
    for (JointValues& joints :
         SampledSolver(machine, stream, {}, first).FindAll(target, first, extent)) {
        const PoseError error = solver.ErrorAt(joints, target.at);
        branches.found.push_back({std::move(joints), error});
    }
    return branches;
}

} // namespace

Branches FindBranches(const LoadedMachine& machine, const LoadedStream& stream,
                      const ToolPoint& point, IkJoint::JointLimitTypes limits)
{
    const bool isSampled =
        PointSolver(machine, stream, {}).FreeRotaryAxes().size() <= kMostSampledByHybrid;
    return isSampled ? FindByHybridSolver(machine, stream, point, limits)
                     : FindByManyStarts(machine, stream, point, limits);
}

} // namespace host
