// Forward kinematics of a stream.

#include "IkStream.h"
#include "geometry/Compose.h"
#include "geometry/Trace.h"
#include "machine/KinematicLoop.h"
#include "machine/SoleSolve.h"
#include "model/DirectAccess.h"

using trunnion::Compose;
using trunnion::SoleSolve;

const IkNode* IkStream::FixedPartTip() const
{
    if (!HasPartSpaceMatrix || !PartSpaceFixed || Chains.size() < 2) {
        return nullptr;
    }
    return Chains[1]->GetAt(Chains[1]->Size() - 1);
}

IkEndState IkStream::SolveFK(IkJtStateVector& states, bool commit, IkXformMat* partOut,
                             IkXformMat* toolOut, bool toolOnly)
{
    const SoleSolve sole(SoleSolve::Use::Evaluation, this);
    IkEndState result;
    if (Chains.empty() || states.Size() == 0) {
        return result;
    }
    if (commit) {
        states.CommitValuesToJoints();
    }
    trunnion::KinematicLoop loop(*this, toolOnly);
    if (partOut == nullptr && toolOut == nullptr && loop.Settle(states)) {
        trunnion::Affine pose; // NOLINT(*-member-init)
        if (loop.TryPose(states, pose)) {
            trunnion::DirectAccess::SetPose(result, pose.e);
            return result;
        }
    }
    result.SetCompleteState(PoseByNodes(states, partOut, toolOut, toolOnly));
    return result;
}

/// The pose with every node asked for its transform.
IkXformMat IkStream::PoseByNodes(IkJtStateVector& states, IkXformMat* partOut, IkXformMat* toolOut,
                                 bool toolOnly) const
{
    const bool isTraced = trunnion::Tracing().streamForwardKinematics;
    const IkChain& toolChain = *Chains[0];
    const IkXformMat baseToTool = toolChain.GetXformMat(states);
    if (toolOut != nullptr) {
        *toolOut = baseToTool;
    }
    if (isTraced) {
        toolChain.TraceDump(L"FK_TOOL_CHAIN>>");
        baseToTool.TraceDump(L"FK_TOOL_MAT>>");
    }

    IkXformMat pose;
    if (Chains.size() < 2 || (toolOnly && partOut == nullptr)) {
        pose = baseToTool;
    } else {
        const IkChain& partChain = *Chains[1];
        const IkNode* fixedTip = FixedPartTip();
        const IkXformMat baseToPart =
            fixedTip != nullptr ? fixedTip->GetWorldFrame() : partChain.GetXformMat(states);
        if (isTraced) {
            partChain.TraceDump(L"FK_PRT_CHAIN>>");
            baseToPart.TraceDump(L"FK_PART>>");
        }
        if (partOut != nullptr) {
            *partOut = baseToPart;
        }
        // Kept on purpose: tool only and the part frame asked for leaves the pose the identity.
        if (!toolOnly) {
            const IkXformMat partToBase = baseToPart.QuickInvert();
            pose = Compose(partToBase, baseToTool);
            if (isTraced) {
                partToBase.TraceDump(L"PartCS_Inverse>>");
                pose.TraceDump(L"Tool_WRT_PartCS>>");
            }
        }
    }
    if (isTraced) {
        pose.TraceDump(L"Tool_WRT_PartCS>>");
    }
    return pose;
}

IkEndState IkStream::SolveFK(bool toolOnly)
{
    IkJtStateVector current = GetJointStates();
    return SolveFK(current, false, nullptr, nullptr, toolOnly);
}

bool IkStream::SolveNewPartSpace(IkJtStateVector& states, IkXformMat& partSpace, IkXformMat& out)
{
    if (Chains.size() != 2 || states.Size() == 0) {
        return false;
    }
    const IkChain& partChain = *Chains[1];
    const int count = HasPartSpaceMatrix ? partChain.Size() - 1 : partChain.Size();
    out.Eye();
    for (int i = 0; i < count; ++i) {
        IkNode* node = partChain.GetAt(i);
        if (node == nullptr) {
            return false;
        }
        out = Compose(out, node->GetXformMat(states));
    }
    out = Compose(out, partSpace);
    return true;
}
