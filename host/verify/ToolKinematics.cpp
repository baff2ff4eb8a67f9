#include "verify/ToolKinematics.h"

#include <utility>

#include "geometry/Frame.h"

namespace host
{

ToolKinematics::ToolKinematics(const LoadedMachine& ofMachine, std::vector<const Axis*> ofJoints)
    : machine(ofMachine), axes(std::move(ofJoints))
{}

void ToolKinematics::Seat(const SeatedTool& tool)
{
    if (seated == tool) {
        return;
    }
    seated = tool;
    tool.stream->SetToolLength(tool.length);
    machine.MoveToInitial();
    states = tool.stream->stream->GetJointStates();
    stateOf.clear();
    for (const Axis* axis : axes) {
        stateOf.push_back(states.FindStateByJointPtr(axis->joint));
    }
}

CutterLocation ToolKinematics::ToolAt(const std::vector<double>& joints)
{
    for (std::size_t i = 0; i < joints.size(); ++i) {
        if (stateOf[i] >= 0) {
            states.GetState(stateOf[i]).SetValue(joints[i]);
        }
    }
    const IkXformMat partToTool =
        seated->stream->stream->SolveFK(states, false, nullptr, nullptr, false).GetCompleteState();
    return {Column(partToTool, 3), Column(partToTool, 2)};
}

} // namespace host
