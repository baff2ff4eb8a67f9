#include "IkStream.h"

#include <algorithm>

#include "geometry/Compose.h"
#include "geometry/Trace.h"
#include "machine/SolveFields.h"
#include "model/Indexing.h"

using trunnion::IsInRange;
using trunnion::ToIndex;

namespace
{

// 45 degrees turned the wrong way. Kept on purpose: no solve uses it, each sets its own at its
// start.
constexpr double kUnsetMaxAngleStep = 2578.310078088707;

std::vector<IkNode*> NodesOf(const IkChain* chain)
{
    std::vector<IkNode*> nodes;
    for (int i = 0; chain != nullptr && i < chain->Size(); ++i) {
        nodes.push_back(chain->GetAt(i));
    }
    return nodes;
}

/// What the chain's joints are when the machine stands at its initial values.
IkJtStateVector InitialStates(const IkChain& chain)
{
    IkJtStateVector states = chain.GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        if (const IkJoint* joint = state.GetJoint()) {
            state.SetValue(joint->GetInitialValue());
        }
    }
    return states;
}

} // namespace

IkStream::IkStream() : PartSpaceBody(L"PartSpace"), MaxAngleStep(kUnsetMaxAngleStep) {}

IkStream::IkStream(const IkStream& other) : IkStream()
{
    Copy(other);
}

IkStream& IkStream::operator=(const IkStream& other)
{
    if (this != &other) {
        Copy(other);
    }
    return *this;
}

IkStream::~IkStream() = default;

void IkStream::Copy(const IkStream& other)
{
    // What may fail goes first: a stream is never half another one.
    std::vector<IkChain*> chains = other.Chains;
    std::map<IkNode*, bool> locks = other.LocalLocks;
    trunnion::CopiedFields fields{other.SolverJtStates,   other.LockedFlags,
                                  other.RotaryFlags,      other.RotaryJointIndices,
                                  other.FreeJointIndices, other.MaxAngleStep};
    PartSpaceBody = other.PartSpaceBody;
    Id = other.Id;
    Chains.swap(chains);
    HasPartSpaceMatrix = other.HasPartSpaceMatrix;
    PartSpaceFixed = other.PartSpaceFixed;
    LocalLocks.swap(locks);
    fields.MoveInto(Fields());
}

bool IkStream::operator==(const IkStream& other) const
{
    return Chains == other.Chains;
}
bool IkStream::operator<(const IkStream& other) const
{
    return Chains.size() < other.Chains.size();
}

void IkStream::SetId(int id)
{
    Id = id;
}
int IkStream::GetId() const
{
    return Id;
}

void IkStream::AddChain(IkChain* chain)
{
    if (chain == nullptr) {
        return;
    }
    std::map<IkNode*, bool> locks = LocalLocks;
    for (IkNode* node : NodesOf(chain)) {
        if (node->IsJoint()) {
            locks[node] = false;
        }
    }
    Chains.push_back(chain); // the last that may fail: with the locks or not at all
    LocalLocks.swap(locks);
}

bool IkStream::GetChain(int index, IkChain** out) const
{
    if (!IsInRange(index, Chains) || out == nullptr) {
        return false;
    }
    *out = Chains[ToIndex(index)];
    return true;
}

int IkStream::NumChains() const
{
    return trunnion::Count(Chains);
}

void IkStream::Reset()
{
    Chains.clear();
}

int IkStream::GetSubNodeChain(IkChain& out, NodeChainType type) const
{
    // Collected first: `out` may be one of the stream's own chains.
    const std::vector<IkNode*> tool = NodesOf(!Chains.empty() ? Chains[0] : nullptr);
    const std::vector<IkNode*> part = NodesOf(Chains.size() > 1 ? Chains[1] : nullptr);
    std::vector<IkNode*> nodes;
    switch (type) {
    case PartChain:
        nodes = part;
        break;
    case ToolChain:
        nodes = tool;
        break;
    case PartToToolChain:
        nodes.assign(part.rbegin(), part.rend());
        if (!tool.empty()) {
            nodes.insert(nodes.end(), tool.begin() + 1, tool.end());
        }
        break;
    }
    out.Reset();
    for (IkNode* node : nodes) {
        out.AddNode(node);
    }
    return out.Size();
}

// Inert on purpose: hosts call it and count on an empty chain.
IkChain IkStream::SetBoundNodes(int /*index*/)
{
    return {};
}

IkJtStateVector IkStream::GetJointStates() const
{
    IkJtStateVector states;
    trunnion::CollectJointStates(*this, states);
    return states;
}

IkNode* IkStream::SearchByUserDataPtr(const void* data) const
{
    for (const IkChain* chain : Chains) {
        if (IkNode* found = chain->SearchByUserDataPtr(data)) {
            return found;
        }
    }
    return nullptr;
}

void IkStream::SetHasPartSpaceMatrix(bool has, bool fixed)
{
    if (has) {
        SetUpPartSpace(PartSpaceBody.GetWorldFrame());
    } else if (EndsInPartSpace()) {
        Chains[1]->RemoveTail();
    }
    PartSpaceFixed = fixed;
    HasPartSpaceMatrix = has;
}

void IkStream::SetPartSpaceMatrix(const IkXformMat& frame, bool fixed)
{
    IkXformMat baseToPart = PartSpaceBody.GetWorldFrame();
    baseToPart = frame; // of whatever shape: what fits
    SetUpPartSpace(baseToPart);
    PartSpaceBody.SetWorldFrame(baseToPart);
    PartSpaceFixed = fixed;
    HasPartSpaceMatrix = true;
}

bool IkStream::GetHasPartSpaceMatrix() const
{
    return HasPartSpaceMatrix;
}

void IkStream::GetPartSpaceInfo(bool& has, bool& fixed) const
{
    has = HasPartSpaceMatrix;
    fixed = PartSpaceFixed;
}

void IkStream::GetPartSpaceMatrix(IkXformMat& out) const
{
    out = PartSpaceBody.GetWorldFrame();
}

bool IkStream::EndsInPartSpace() const
{
    return Chains.size() > 1 && Chains[1]->GetAt(Chains[1]->Size() - 1) == &PartSpaceBody;
}

/// Hangs the part-space body on the tip of the part chain so that, with every part joint at its
/// initial value, the chain ends at the requested frame.
void IkStream::SetUpPartSpace(const IkXformMat& baseToPart)
{
    if (Chains.size() < 2) {
        return;
    }
    IkChain& partChain = *Chains[1];
    IkChain baseToTipChain = partChain;
    if (EndsInPartSpace()) {
        baseToTipChain.RemoveTail();
    }
    IkJtStateVector initial = InitialStates(baseToTipChain);
    const IkXformMat baseToTip = baseToTipChain.GetXformMat(initial);
    const IkXformMat tipToPart = trunnion::Compose(baseToTip.QuickInvert(), baseToPart);
    if (!EndsInPartSpace()) {
        partChain.AddNode(&PartSpaceBody); // the last that may fail
    }
    PartSpaceBody.SetOrigFrame(tipToPart);
}

bool IkStream::SetLocalLock(IkNode* joint, bool locked)
{
    const auto entry = LocalLocks.find(joint);
    if (entry == LocalLocks.end()) {
        return false;
    }
    entry->second = locked;
    return true;
}

bool IkStream::GetLocalLock(IkNode* joint, bool& locked) const
{
    const auto entry = LocalLocks.find(joint);
    locked = entry != LocalLocks.end() && entry->second;
    return entry != LocalLocks.end();
}

void IkStream::SetLocalLockAllRotary(bool locked)
{
    for (const IkChain* chain : Chains) {
        for (IkNode* node : NodesOf(chain)) {
            const auto* joint = node->IsJoint() ? dynamic_cast<const IkJoint*>(node) : nullptr;
            if (joint != nullptr && joint->IsRotary()) {
                SetLocalLock(node, locked);
            }
        }
    }
}

void IkStream::ResetAllLocalLocks()
{
    for (auto& [joint, locked] : LocalLocks) {
        locked = false;
    }
}

bool IkStream::GetJointLockStatus(IkJoint* joint, JointLockType type, bool& locked) const
{
    if (joint == nullptr) {
        return true;
    }
    locked = false;
    if (type == GlobalLockOnly || type == GlobalOrLocalLock) {
        locked = joint->IsLocked();
        if (locked) {
            return true;
        }
    }
    if (type == LocalLockOnly || type == GlobalOrLocalLock) {
        return GetLocalLock(joint, locked);
    }
    return true;
}

void IkStream::TraceDump(const wchar_t* /*label*/)
{
    for (std::size_t i = 0; i < std::min<std::size_t>(Chains.size(), 2); ++i) {
        for (IkNode* node : NodesOf(Chains[i])) {
            if (node->IsJoint()) {
                bool locked = false;
                GetLocalLock(node, locked);
            }
        }
    }
}

void IkStream::TraceDumpIkNodeInfo(const wchar_t* /*label*/)
{
    const std::wstring nodeLabel = trunnion::TraceLabel(L"", L"\t", trunnion::kTraceNodeInfoLabel);
    for (const IkChain* chain : Chains) {
        for (const IkNode* node : NodesOf(chain)) {
            node->TraceDump(nodeLabel.c_str());
        }
    }
}

void IkStream::TraceDumpLocks() {}

void IkStream::SolverStatusTraceDump()
{
    for (int i = 0; i < SolverJtStates.Size(); ++i) {
        bool locked = false;
        GetJointLockStatus(SolverJtStates.GetState(i).GetJoint(), GlobalOrLocalLock, locked);
    }
}
