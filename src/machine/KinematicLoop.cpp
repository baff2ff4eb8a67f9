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

bool KinematicLoop::TryPoseMoved(int index, double value, Affine& pose) const
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

bool KinematicLoop::TryOffsetSlid(int index, double value, double* offset) const
{
    if (!isSettled || !isFinite) {
        return false;
    }
    const bool slidesTool = toolChain.Slides(index);
    const bool slidesPart = hasPart && partChain.Slides(index);
    if (!slidesTool && !slidesPart) {
        return false;
    }
    double tool[3]{baseToTool[3], baseToTool[7], baseToTool[11]};
    double part[3]{partToBase.e[3], partToBase.e[7], partToBase.e[11]};
    if (slidesTool) {
        toolChain.EvaluateSlid(index, value, tool);
    }
    if (slidesPart) {
        double moved[3];
        partChain.EvaluateSlid(index, value, moved);
        InvertOffset(baseToPart, moved[0], moved[1], moved[2], part);
    }
    if (hasPart) {
        Turn(partToBase.e, tool[0], tool[1], tool[2], offset);
        for (int row = 0; row < 3; ++row) {
            offset[row] = offset[row] + part[row];
        }
    } else {
        std::copy_n(tool, 3, offset);
    }
    return std::isfinite(offset[0]) && std::isfinite(offset[1]) && std::isfinite(offset[2]);
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
