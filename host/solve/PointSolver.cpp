#include "solve/PointSolver.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "geometry/Frame.h"
#include "geometry/Units.h"

namespace host
{

namespace
{

IkEndState EndStateOf(const PathTarget& target)
{
    IkEndState end; // its filter takes position and z axis
    if (target.xAxis) {
        std::array<bool, 4> xAndZAndPosition{true, false, true, true}; // the y axis follows
        end.SetFilter(xAndZAndPosition.data());
        end.SetCompleteState(FrameOf(target.at.position, *target.xAxis, target.at.direction));
    } else {
        end.SetCompleteState(FrameOf(target.at.position, target.at.direction));
    }
    return end;
}

} // namespace

PointSolver::PointSolver(const LoadedMachine& ofMachine, const LoadedStream& ofStream,
                         const SolverSettings& settings)
    : stream(ofStream), axes(ofMachine.AxesOf(ofStream)), states(ofStream.stream->GetJointStates()),
      solver(ofStream.stream, settings.maxIterations)
{
    std::transform(axes.begin(), axes.end(), std::back_inserter(stateOf),
                   [&](const Axis* axis) { return states.FindStateByJointPtr(axis->joint); });
    solver.SetConvergenceTolerance(settings.tolerance);
    solver.GiveUpAfter(settings.giveUpAfter);
    solver.SetStartingJtStates(&states);
}

void PointSolver::SetStates(const JointValues& joints)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        states.GetState(stateOf[i]).SetValue(joints[i]);
    }
}

bool PointSolver::Solve(const PathTarget& target, IkJoint::JointLimitTypes limits,
                        JointValues& joints)
{
    return SolveFor(EndStateOf(target), limits, false, joints);
}

bool PointSolver::SolveLinear(const Vec3& position, JointValues& joints)
{
    return SolveFor(EndStateOf({{position, ToolAt(joints).direction}, std::nullopt}),
                    IkJoint::JtLimitAll, true, joints);
}

bool PointSolver::SolveFor(IkEndState target, IkJoint::JointLimitTypes limits, bool holdsRotary,
                           JointValues& joints)
{
    SetStates(joints);
    if (!solver.SolveIK(target, answer, false, limits, holdsRotary)) {
        return false;
    }
    joints = ValuesOf(answer);
    return true;
}

JointValues PointSolver::ValuesOf(IkJtStateVector& solved) const
{
    JointValues values;
    std::transform(stateOf.begin(), stateOf.end(), std::back_inserter(values),
                   [&](int state) { return solved.GetState(state).GetValue(); });
    return values;
}

std::vector<JointValues> PointSolver::SolveFromSamples(const PathTarget& target,
                                                       IkJoint::JointLimitTypes limits)
{
    IkEndState end = EndStateOf(target);
    IkJtStateVector first;
    IkSolverHybrid hybrid(stream.stream);
    hybrid.SolveIK(end, first, false, limits, false);
    std::vector<JointValues> found;
    for (IkSolverSampleItem& sample : hybrid.GetSampleList()) {
        if (sample.rejected) {
            continue;
        }
        JointValues joints = ValuesOf(sample.resultStates);
        if (Solve(target, limits, joints)) { // to the tolerance that is asked for
            found.push_back(std::move(joints));
        }
    }
    return found;
}

IkXformMat PointSolver::PoseAt(const JointValues& joints)
{
    SetStates(joints);
    return stream.stream->SolveFK(states, false, nullptr, nullptr, false).GetCompleteState();
}

CutterLocation PointSolver::ToolAt(const JointValues& joints)
{
    const IkXformMat partToTool = PoseAt(joints);
    return {Column(partToTool, 3), Column(partToTool, 2)};
}

PoseError PointSolver::ErrorAt(const JointValues& joints, const CutterLocation& asked)
{
    const CutterLocation tool = ToolAt(joints);
    return {Length(tool.position - asked.position),
            ToDegrees(AngleBetween(tool.direction, asked.direction))};
}

std::vector<std::size_t> PointSolver::FreeAxes() const
{
    std::vector<std::size_t> free;
    for (std::size_t i = 0; i < axes.size(); ++i) {
        bool isLocked = false;
        stream.stream->GetJointLockStatus(axes[i]->joint, IkStream::GlobalOrLocalLock, isLocked);
        if (!isLocked) {
            free.push_back(i);
        }
    }
    return free;
}

std::vector<std::size_t> PointSolver::FreeRotaryAxes() const
{
    std::vector<std::size_t> rotary = FreeAxes();
    rotary.erase(std::remove_if(rotary.begin(), rotary.end(),
                                [this](std::size_t i) { return !axes[i]->isRotary; }),
                 rotary.end());
    return rotary;
}

JointValues PointSolver::Initial() const
{
    JointValues joints;
    std::transform(axes.begin(), axes.end(), std::back_inserter(joints),
                   [](const Axis* axis) { return axis->initial; });
    return joints;
}

} // namespace host
