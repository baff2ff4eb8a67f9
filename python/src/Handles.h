#ifndef TRUNNION_PYTHON_HANDLES_H
#define TRUNNION_PYTHON_HANDLES_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <IkNode.h>

// Who keeps what alive. The library's objects refer to each other by pointers that nobody counts;
// here each Python object holds what the library's object inside it refers to, and never a thing
// that holds it in turn.
namespace bindings
{

/// Owns the nodes of one tree, all for as long as Python refers to any of them: a joint without the
/// bodies below it would stand elsewhere. A node begins as a tree of its own.
class Tree : public std::enable_shared_from_this<Tree>
{
  public:
    template <class Node>
    static std::shared_ptr<Node> Plant(const std::wstring& name)
    {
        auto node = std::make_unique<Node>(name);
        Node* const planted = node.get();
        return {Plant(std::move(node)), planted};
    }
    /// Hangs `child` with all that hangs on it on `parent`. Throws std::invalid_argument where that
    /// would not be a tree any more.
    static void Hang(const std::shared_ptr<IkNode>& parent, const std::shared_ptr<IkNode>& child);

    Tree() = default;
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

  private:
    static std::shared_ptr<Tree> Plant(std::unique_ptr<IkNode> root);
    void TakeOver(Tree& other);

    std::vector<std::unique_ptr<IkNode>> nodes;
    std::shared_ptr<Tree> within; // the tree that took this one over
};

/// With its owner, for Python; null for null. Every node that the low-level classes meet has one.
std::shared_ptr<IkNode> HandleOf(IkNode* node);
/// The same for the nodes of trees, and null for the part space of a stream: what a chain keeps
/// must not keep the stream that keeps the chain.
std::shared_ptr<IkNode> TreeHandleOf(IkNode* node);

/// From now on `node`, the part space of a stream, lives as long as its owner.
void RegisterPartSpace(IkNode& node, const std::weak_ptr<void>& owner);
void ForgetNode(const IkNode& node);

} // namespace bindings

#endif
