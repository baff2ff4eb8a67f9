#include "Handles.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <unordered_map>

namespace bindings
{

namespace
{

/// The library and this module walk trees by recursion.
constexpr int kDeepestTree = 1000;

struct Owner
{
    std::weak_ptr<Tree> tree;
    std::weak_ptr<void> stream; // of a part space
};

/// Whoever looks at it holds the interpreter's lock.
std::unordered_map<const IkNode*, Owner>& Owners()
{
    static std::unordered_map<const IkNode*, Owner> owners;
    return owners;
}

std::shared_ptr<Tree> TreeOf(const IkNode& node)
{
    const auto owner = Owners().find(&node);
    return owner == Owners().end() ? nullptr : owner->second.tree.lock();
}

int DepthOf(const IkNode* node)
{
    int depth = 0;
    for (; node != nullptr; node = node->GetParentPtr()) {
        ++depth;
    }
    return depth;
}

int HeightOf(const IkNode& node)
{
    int height = 0;
    for (const IkNode* child : node.GetKidList()) {
        height = std::max(height, HeightOf(*child));
    }
    return height + 1;
}

std::string Quoted(const IkNode& node)
{
    std::string text;
    for (const wchar_t letter : node.GetName()) {
        text += letter >= L' ' && letter <= L'~' ? static_cast<char>(letter) : '?';
    }
    return "\"" + text + "\"";
}

[[noreturn]] void Refuse(const IkNode& child, const std::string& fault)
{
    throw std::invalid_argument(Quoted(child) + " " + fault);
}

} // namespace

std::shared_ptr<Tree> Tree::Plant(std::unique_ptr<IkNode> root)
{
    auto tree = std::make_shared<Tree>();
    const IkNode* const planted = root.get();
    tree->nodes.push_back(std::move(root));
    Owners()[planted].tree = tree;
    return tree;
}

Tree::~Tree()
{
    for (const std::unique_ptr<IkNode>& node : nodes) {
        ForgetNode(*node);
    }
}

void Tree::TakeOver(Tree& other)
{
    nodes.reserve(nodes.size() + other.nodes.size());
    for (const std::unique_ptr<IkNode>& node : other.nodes) {
        Owners()[node.get()].tree = weak_from_this();
    }
    std::move(other.nodes.begin(), other.nodes.end(), std::back_inserter(nodes));
    other.nodes.clear();
    other.within = shared_from_this();
}

void Tree::Hang(const std::shared_ptr<IkNode>& parent, const std::shared_ptr<IkNode>& child)
{
    const std::shared_ptr<Tree> tree = TreeOf(*parent);
    const std::shared_ptr<Tree> hung = TreeOf(*child);
    if (tree == nullptr || hung == nullptr) {
        Refuse(tree == nullptr ? *parent : *child,
               "is the part space of a stream, which has no place in a tree");
    }
    if (const IkNode* const there = child->GetParentPtr()) {
        Refuse(*child, there == parent.get()
                           ? "hangs there already; a node is added once"
                           : "hangs on " + Quoted(*there) + " already; a node has one parent");
    }
    if (tree == hung) {
        Refuse(*child, "would be its own ancestor; hang one of the two elsewhere");
    }
    if (DepthOf(parent.get()) + HeightOf(*child) > kDeepestTree) {
        Refuse(*child, "would make the tree more than 1000 nodes deep");
    }
    tree->TakeOver(*hung);
    parent->AddChild(child.get());
}

std::shared_ptr<IkNode> TreeHandleOf(IkNode* node)
{
    const std::shared_ptr<Tree> tree = node == nullptr ? nullptr : TreeOf(*node);
    return tree == nullptr ? nullptr : std::shared_ptr<IkNode>(tree, node);
}

std::shared_ptr<IkNode> HandleOf(IkNode* node)
{
    if (node == nullptr) {
        return nullptr;
    }
    const auto owner = Owners().find(node);
    if (owner == Owners().end()) {
        throw std::logic_error("a node without owner");
    }
    std::shared_ptr<void> holder = owner->second.tree.lock();
    if (holder == nullptr) {
        holder = owner->second.stream.lock();
    }
    return {holder, node};
}

void RegisterPartSpace(IkNode& node, const std::weak_ptr<void>& owner)
{
    Owners()[&node].stream = owner;
}

void ForgetNode(const IkNode& node)
{
    Owners().erase(&node);
}

} // namespace bindings
