#include "machine/KinematicLoop.h"

#include <algorithm>
#include <cmath>

#include "geometry/Trace.h"
#include "model/DirectAccess.h"

namespace trunnion
{

namespace
{

void Copy(const double* from, Affine& to)
{
    std::copy_n(from, 12, to.e);
}

} // namespace

KinematicLoop::KinematicLoop(IkStream& ofStream, bool withToolOnly)
    : stream(ofStream), toolOnly(withToolOnly)
{}

bool KinematicLoop::Settle(const IkJtStateVector& states)
{
    const std::vector<IkChain*>& chains = stream.Chains;
    isSettled = !chains.empty() && states.Size() > 0 && !Tracing().streamForwardKinematics &&
                toolChain.Settle(*chains[0], states);
    hasPart = chains.size() > 1 && !toolOnly;
    isPartFixed = false;
    if (isSettled && hasPart) {
        if (const IkNode* tip = stream.FixedPartTip()) {
            isPartFixed = true;
            InvertRigid(DirectAccess::WorldFrame(*tip), partToBase.e);
        } else {
            isSettled = partChain.Settle(*chains[1], states);
        }
    }
    return isSettled;
}

void KinematicLoop::Join(const double* fromPart, const double* toTool, Affine& pose) const
{
    if (hasPart) {
        double lever[3];
        Multiply(fromPart, toTool, pose.e, lever);
    } else {
        Copy(toTool, pose);
    }
}

void KinematicLoop::Prepare(IkJtStateVector& states)
{
    if (!isSettled) {
        return;
    }
    baseToTool = toolChain.Evaluate(states);
    if (hasPart && !isPartFixed) {
        baseToPart = partChain.Evaluate(states);
        InvertRigid(baseToPart, partToBase.e);
    }
    Join(partToBase.e, baseToTool, lastPose);
    isFinite = IsFinite(lastPose.e);
}

bool KinematicLoop::TryPose(IkJtStateVector& states, Affine& pose)
{
    Prepare(states);
    pose = lastPose;
    return isFinite;
}

void KinematicLoop::Pose(IkJtStateVector& states, Affine& pose)
{
    if (!isSettled || !TryPose(states, pose)) {
        AskNodes(states, pose);
    }
}

bool KinematicLoop::IsPartMovedBy(int index) const
{
    return hasPart && !isPartFixed && partChain.Moves(index);
}

bool KinematicLoop::TryPoseTurned(int index, double value, Affine& pose) const
{
    Affine movedTool;       // NOLINT(*-member-init)
    Affine movedPart;       // NOLINT(*-member-init)
    Affine movedPartToBase; // NOLINT(*-member-init)
    const double* tool = baseToTool;
    const double* fromPart = partToBase.e;
    if (toolChain.Moves(index)) {
        toolChain.EvaluateMoved(index, value, movedTool);
        tool = movedTool.e;
    }
    if (IsPartMovedBy(index)) {
        partChain.EvaluateMoved(index, value, movedPart);
        InvertRigid(movedPart.e, movedPartToBase.e);
        fromPart = movedPartToBase.e;
    }
    Join(fromPart, tool, pose);
    return IsFinite(pose.e);
}

/// The offset alone changes, and it alone is calculated anew.
bool KinematicLoop::TryPoseSlid(int index, double value, Affine& pose) const
{
    double tool[3]{baseToTool[3], baseToTool[7], baseToTool[11]};
    double part[3]{partToBase.e[3], partToBase.e[7], partToBase.e[11]};
    if (toolChain.Moves(index)) {
        toolChain.EvaluateSlid(index, value, tool);
    }
    if (IsPartMovedBy(index)) {
        double moved[3];
        partChain.EvaluateSlid(index, value, moved);
        InvertOffset(baseToPart, moved[0], moved[1], moved[2], part);
    }
    pose = lastPose;
    if (hasPart) {
        double lever[3];
        Turn(partToBase.e, tool[0], tool[1], tool[2], lever);
        for (int row = 0; row < 3; ++row) {
            pose.e[4 * row + 3] = lever[row] + part[row];
        }
    } else {
        for (int row = 0; row < 3; ++row) {
            pose.e[4 * row + 3] = tool[row];
        }
    }
    return std::isfinite(pose.e[3]) && std::isfinite(pose.e[7]) && std::isfinite(pose.e[11]);
}

bool KinematicLoop::TryPoseMoved(int index, double value, Affine& pose) const
{
    const bool slides = toolChain.Slides(index) || (hasPart && partChain.Slides(index));
    return isFinite && slides ? TryPoseSlid(index, value, pose) : TryPoseTurned(index, value, pose);
}

void KinematicLoop::PoseMoved(IkJtStateVector& states, int index, Affine& pose)
{
    if (!isSettled || !TryPoseMoved(index, DirectAccess::Value(states, index), pose)) {
        AskNodes(states, pose);
    }
}

void KinematicLoop::AskNodes(IkJtStateVector& states, Affine& pose)
{
    if (stream.Chains.empty() || states.Size() == 0) {
        pose = kIdentityAffine;
        return;
    }
    Copy(stream.PoseByNodes(states, nullptr, nullptr, toolOnly)[0], pose);
}

} // namespace trunnion
