#include "IkChain.h"

#include <algorithm>

#include "geometry/Compose.h"
#include "geometry/Trace.h"
#include "model/Indexing.h"

IkChain::IkChain() = default;
IkChain::IkChain(const IkChain& other) = default;
IkChain& IkChain::operator=(const IkChain& other) = default;
IkChain::~IkChain() = default;

void IkChain::TraceDump(const wchar_t* label) const
{
    trunnion::TraceLabel(label, L"\t", trunnion::kTraceChildLabel);
}

void IkChain::AddNode(IkNode* node)
{
    if (node != nullptr) {
        nodes.push_back(node);
    }
}

void IkChain::AddNodeAtHead(IkNode* node)
{
    if (node != nullptr) {
        nodes.insert(nodes.begin(), node);
    }
}

void IkChain::FillFromBase2Node(IkNode* node)
{
    std::vector<IkNode*> path;
    const auto isListed = [&path](const IkNode* candidate) {
        return std::find(path.begin(), path.end(), candidate) != path.end();
    };
    // A node met again is its own ancestor: the walk ends there instead of going round for ever.
    for (; node != nullptr && !isListed(node); node = node->GetParentPtr()) {
        path.push_back(node);
    }
    nodes.assign(path.rbegin(), path.rend());
}

void IkChain::RemoveTail()
{
    if (!nodes.empty()) {
        nodes.pop_back();
    }
}

void IkChain::Reset()
{
    nodes.clear();
}

IkNode* IkChain::GetAt(int index) const
{
    return trunnion::IsInRange(index, nodes) ? nodes[trunnion::ToIndex(index)] : nullptr;
}

int IkChain::Size() const
{
    return trunnion::Count(nodes);
}

IkNode* IkChain::SearchByUserDataPtr(const void* data) const
{
    const auto found = std::find_if(nodes.begin(), nodes.end(), [data](const IkNode* node) {
        return node->GetUserData() == data;
    });
    return found == nodes.end() ? nullptr : *found;
}

IkJtStateVector IkChain::GetJointStates() const
{
    IkJtStateVector states;
    for (int i = 0; i < Size(); ++i) { // a host's node may change the chain when asked
        IkNode* node = nodes[trunnion::ToIndex(i)];
        if (node->IsJoint()) {
            states.AddState(IkJtState(node));
        }
    }
    return states;
}

IkXformMat IkChain::GetXformMat() const
{
    double* const currentValue = nullptr;
    IkXformMat baseToTip;
    for (int i = 0; i < Size(); ++i) {
        baseToTip =
            trunnion::Compose(baseToTip, nodes[trunnion::ToIndex(i)]->GetXformMat(currentValue));
    }
    return baseToTip;
}

IkXformMat IkChain::GetXformMat(IkJtStateVector& states) const
{
    IkXformMat baseToTip;
    for (int i = 0; i < Size(); ++i) {
        baseToTip = trunnion::Compose(baseToTip, nodes[trunnion::ToIndex(i)]->GetXformMat(states));
    }
    return baseToTip;
}

bool IkChain::operator==(const IkChain& other) const
{
    return nodes == other.nodes;
}
bool IkChain::operator<(const IkChain& other) const
{
    return nodes.size() < other.nodes.size();
}
