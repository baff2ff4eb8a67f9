#include "machine/KinematicLoop.h"

#include <algorithm>

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

void KinematicLoop::Prepare(IkJtStateVector& states)
{
    if (!isSettled) {
        return;
    }
    baseToTool = toolChain.Evaluate(states);
    if (hasPart && !isPartFixed) {
        InvertRigid(partChain.Evaluate(states), partToBase.e);
    }
}

bool KinematicLoop::TryPose(IkJtStateVector& states, Affine& pose)
{
    Prepare(states);
    if (hasPart) {
        Multiply(partToBase.e, baseToTool, pose.e);
    } else {
        Copy(baseToTool, pose);
    }
    return IsFinite(pose.e);
}

void KinematicLoop::Pose(IkJtStateVector& states, Affine& pose)
{
    if (!isSettled || !TryPose(states, pose)) {
        AskNodes(states, pose);
    }
}

bool KinematicLoop::TryPoseMoved(IkJtStateVector& states, int index, Affine& pose) const
{
    const double value = DirectAccess::Value(states, index);
    Affine movedTool;       // NOLINT(*-member-init)
    Affine movedPart;       // NOLINT(*-member-init)
    Affine movedPartToBase; // NOLINT(*-member-init)
    const double* tool = baseToTool;
    const double* fromPart = partToBase.e;
    if (toolChain.Moves(index)) {
        toolChain.EvaluateMoved(index, value, movedTool);
        tool = movedTool.e;
    }
    if (hasPart && !isPartFixed && partChain.Moves(index)) {
        partChain.EvaluateMoved(index, value, movedPart);
        InvertRigid(movedPart.e, movedPartToBase.e);
        fromPart = movedPartToBase.e;
    }
    if (hasPart) {
        Multiply(fromPart, tool, pose.e);
    } else {
        Copy(tool, pose);
    }
    return IsFinite(pose.e);
}

void KinematicLoop::PoseMoved(IkJtStateVector& states, int index, Affine& pose)
{
    if (!isSettled || !TryPoseMoved(states, index, pose)) {
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
