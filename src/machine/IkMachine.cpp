#include "IkMachine.h"

#include <algorithm>

#include "IkJtState.h"
#include "model/Indexing.h"
#include "model/TreeVisit.h"

using trunnion::IsInRange;
using trunnion::ToIndex;
using trunnion::TreeVisit;

namespace
{

constexpr int kVirtualIdOffset = 1000;

/// No range is tested: an id at the end of the range comes round at its other end.
int Shifted(int id, int offset)
{
    return static_cast<int>(static_cast<unsigned>(id) + static_cast<unsigned>(offset));
}

bool HasId(const IkStream* stream, int id)
{
    return stream != nullptr && stream->GetId() == id;
}

/// Calls `act` for each joint from `node` down, children first. Null stands for `base`, which is
/// walked but kept out on purpose: what is tried as a joint is the argument, not its stand-in.
template <class Act>
void ForEachJoint(IkNode* base, IkNode* node, TreeVisit::Walk walk, const Act& act)
{
    IkNode* visited = node != nullptr ? node : base;
    if (visited == nullptr) {
        return;
    }
    const TreeVisit visit(walk, visited);
    if (visit.IsCycle()) {
        return;
    }
    for (IkNode* child : visited->GetKidList()) {
        ForEachJoint(base, child, walk, act);
    }
    if (visited->IsJoint()) {
        if (auto* joint = dynamic_cast<IkJoint*>(node)) {
            act(*joint);
        }
    }
}

} // namespace

IkMachine::IkMachine() = default;
IkMachine::IkMachine(const IkMachine& other) = default;
IkMachine& IkMachine::operator=(const IkMachine& other)
{
    if (this == &other) {
        return *this;
    }
    streams = other.streams; // may fail, and then nothing has changed
    baseNode = other.baseNode;
    return *this;
}
IkMachine::~IkMachine()
{
    Reset();
}

void IkMachine::SetBaseNode(IkNode* node)
{
    baseNode = node;
}
IkNode* IkMachine::GetBaseNode() const
{
    return baseNode;
}

void IkMachine::AddStream(IkStream* stream)
{
    streams.push_back(stream);
}

void IkMachine::RemoveStream(int id)
{
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [id](const IkStream* stream) { return HasId(stream, id); });
    if (found == streams.end()) {
        return;
    }
    IkStream* removed = *found;
    streams.erase(found);
    if (std::find(streams.begin(), streams.end(), removed) == streams.end()) {
        delete removed; // unless it was added twice and is still listed
    }
}

int IkMachine::GetNumStreams() const
{
    return trunnion::Count(streams);
}

IkStream& IkMachine::GetStreamById(int id)
{
    IkStream* stream = GetStreamPtrById(id);
    if (stream == nullptr) {
        throw "Failed to find matching stream."; // a raw pointer, as hosts catch it
    }
    return *stream;
}

IkStream& IkMachine::GetStreamByIndex(int index)
{
    IkStream* stream = GetStreamPtrByIndex(index);
    if (stream == nullptr) {
        throw "Invalid index argument";
    }
    return *stream;
}

IkStream* IkMachine::GetStreamPtrById(int id)
{
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [id](const IkStream* stream) { return HasId(stream, id); });
    return found == streams.end() ? nullptr : *found;
}

IkStream* IkMachine::GetStreamPtrByIndex(int index)
{
    return IsInRange(index, streams) ? streams[ToIndex(index)] : nullptr;
}

int IkMachine::Physical2VirtualStreamId(int id) const
{
    return Shifted(id, kVirtualIdOffset);
}
int IkMachine::Virtual2PhysicalStreamId(int id) const
{
    return Shifted(id, -kVirtualIdOffset);
}

void IkMachine::GetJointStates(IkJtStateVector& out)
{
    out.Reset();
    RecurseGetJointStates(out, nullptr);
}

void IkMachine::RecurseGetJointStates(IkJtStateVector& out, IkNode* node)
{
    ForEachJoint(baseNode, node, TreeVisit::Walk::JointStates,
                 [&out](IkJoint& joint) { out.AddState(IkJtState(&joint)); });
}

void IkMachine::RecurseInitJointValues(IkNode* node)
{
    ForEachJoint(baseNode, node, TreeVisit::Walk::InitValues,
                 [](IkJoint& joint) { joint.SetCurValue(joint.GetInitialValue()); });
}

void IkMachine::ClearStreamInfo()
{
    while (!streams.empty()) {
        IkStream* last = streams.back();
        streams.pop_back();
        if (std::find(streams.begin(), streams.end(), last) == streams.end()) {
            delete last; // unless it was added twice and comes up again
        }
    }
}

void IkMachine::Reset()
{
    if (baseNode != nullptr) {
        baseNode->DestroyChildren();
        delete baseNode;
        baseNode = nullptr;
    }
    ClearStreamInfo();
}
