#ifndef TRUNNION_MODEL_TREE_VISIT_H
#define TRUNNION_MODEL_TREE_VISIT_H

class IkNode;

namespace trunnion
{

/// Keeps a recursion over the tree from running for ever where a host has linked a node below
/// itself: one object a visited node, alive while its descendants are visited. Recursions of
/// different kinds do not see each other.
class TreeVisit
{
  public:
    enum class Walk { Search, UpdateFrames, TraceDump, DestroyChildren, JointStates, InitValues };

    TreeVisit(Walk walk, const IkNode* node);
    ~TreeVisit();
    TreeVisit(const TreeVisit&) = delete;
    TreeVisit& operator=(const TreeVisit&) = delete;
    TreeVisit(TreeVisit&&) = delete;
    TreeVisit& operator=(TreeVisit&&) = delete;

    /// The node is its own ancestor on this walk: turn back.
    bool IsCycle() const { return isCycle; }

  private:
    const TreeVisit* outer;
    Walk walk;
    const IkNode* node;
    bool isCycle{false};
};

} // namespace trunnion

#endif
