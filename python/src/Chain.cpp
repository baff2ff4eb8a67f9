#include "Chain.h"

#include <stdexcept>

namespace bindings
{

namespace
{

void RefusePartSpace(const std::shared_ptr<IkNode>& node)
{
    if (TreeHandleOf(node.get()) == nullptr) {
        throw std::invalid_argument("the part space of a stream stands in its own part chain only");
    }
}

std::vector<IkNode*> NodesOf(const IkChain& chain)
{
    std::vector<IkNode*> nodes;
    nodes.reserve(static_cast<std::size_t>(chain.Size()));
    for (int i = 0; i < chain.Size(); ++i) {
        nodes.push_back(chain.GetAt(i));
    }
    return nodes;
}

} // namespace

void Chain::AddNode(const std::shared_ptr<IkNode>& node, bool atHead)
{
    RefusePartSpace(node);
    if (atHead) {
        chain.AddNodeAtHead(node.get());
    } else {
        chain.AddNode(node.get());
    }
    Keep();
}

void Chain::FillFromBase2Node(const std::shared_ptr<IkNode>& node)
{
    RefusePartSpace(node);
    chain.FillFromBase2Node(node.get());
    Keep();
}

void Chain::RemoveTail()
{
    chain.RemoveTail();
    Keep();
}

void Chain::Reset()
{
    chain.Reset();
    Keep();
}

void Chain::Remove(const IkNode& node)
{
    const std::vector<IkNode*> nodes = NodesOf(chain);
    chain.Reset();
    for (IkNode* other : nodes) {
        if (other != &node) {
            chain.AddNode(other);
        }
    }
}

void Chain::Keep()
{
    std::vector<std::shared_ptr<IkNode>> handles;
    for (IkNode* node : NodesOf(chain)) {
        handles.push_back(TreeHandleOf(node));
    }
    kept.swap(handles);
}

} // namespace bindings
