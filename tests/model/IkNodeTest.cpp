#include "IkNode.h"

#include <functional>
#include <memory>
#include <type_traits>

#include <gtest/gtest.h>

#include "geometry/Matrices.h"
#include "model/Contents.h"

namespace
{

using test::BitsOf;
using test::ContentsOf;
using test::ElementsOf;
using test::Numbered;
using Names = std::vector<std::wstring>;
using Nodes = std::vector<IkNode*>;

/// A host's own node: notes when its frames are updated and when it goes.
class NotingNode : public IkBody
{
  public:
    NotingNode(const std::wstring& called, Names& takenNotes) : IkBody(called), notes(takenNotes) {}
    ~NotingNode() override { notes.push_back(L"~" + GetName()); }
    NotingNode(const NotingNode&) = delete;
    NotingNode& operator=(const NotingNode&) = delete;
    NotingNode(NotingNode&&) = delete;
    NotingNode& operator=(NotingNode&&) = delete;

    bool UpdateFrames() override
    {
        const bool result = IkBody::UpdateFrames();
        notes.push_back(GetName());
        return result;
    }

  private:
    Names& notes;
};

//   root ── a ── a1 ── a11
//     │     └─── a2
//     └──── b ── b1
struct Tree
{
    Names notes;
    IkBody root{L"root"};
    IkNode* a = Add(root, L"a");
    IkNode* a1 = Add(*a, L"a1");
    IkNode* a11 = Add(*a1, L"a11");
    IkNode* a2 = Add(*a, L"a2");
    IkNode* b = Add(root, L"b");
    IkNode* b1 = Add(*b, L"b1");

    Tree() = default;
    ~Tree() { root.DestroyChildren(); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    Tree(Tree&&) = delete;
    Tree& operator=(Tree&&) = delete;

    IkNode* Add(IkNode& parent, const wchar_t* name)
    {
        auto* node = new NotingNode(name, notes);
        parent.AddChild(node);
        return node;
    }

    Nodes All() { return {&root, a, a1, a11, a2, b, b1}; }
};

/// A node whose every member differs from its default.
template <class Node>
void FillIn(Node& node, IkNode& parent, IkNode& child, int& hostObject)
{
    node.SetName(L"name");
    node.SetType(L"type");
    node.SetOrigFrame(IkXformMat::Translate(1, 0, 0));
    node.SetRelFrame(IkXformMat::Translate(2, 0, 0));
    node.SetWorldFrame(IkXformMat::Translate(3, 0, 0));
    node.AddChild(&child);
    node.SetParent(&parent);
    node.SetUserData(&hostObject);
}

template <class Node>
void ExpectNodeConstruction()
{
    const IkNode named(L"NA"); // stands for a fresh node
    EXPECT_EQ(ContentsOf(Node()), ContentsOf(named));

    const Node node(L"spindle");
    EXPECT_EQ(node.GetName(), L"spindle");
    EXPECT_EQ(node.GetType(), L"NA");
    EXPECT_EQ(BitsOf(node.GetOrigFrame()), BitsOf(IkXformMat()));
    EXPECT_EQ(BitsOf(node.GetRelFrame()), BitsOf(IkXformMat()));
    EXPECT_EQ(BitsOf(node.GetWorldFrame()), BitsOf(IkXformMat()));
    EXPECT_EQ(node.GetKidList(), Nodes());
    EXPECT_EQ(node.GetParentPtr(), nullptr);
    EXPECT_EQ(node.GetUserData(), nullptr);
    EXPECT_TRUE(node.IsDirty());
}

TEST(Node, StartsNamelessWithoutRelativesAndDirty)
{
    ExpectNodeConstruction<IkNode>();
    ExpectNodeConstruction<IkBody>();
    EXPECT_EQ(IkNode().GetName(), L"NA");
}

TEST(Node, BodyAddsNothing)
{
    static_assert(std::is_base_of_v<IkNode, IkBody>);
    static_assert(std::has_virtual_destructor_v<IkNode>);
    EXPECT_EQ(sizeof(IkBody), sizeof(IkNode));
}

template <class Node>
void ExpectShallowCopies()
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    Node node;
    FillIn(node, parent, child, hostObject);

    for (const bool isDirty : {false, true}) {
        node.SetDirty(isDirty);
        const Node copy(node);
        EXPECT_TRUE(copy.IsDirty());
        Node assigned(L"other");
        assigned.SetDirty(!isDirty);
        EXPECT_EQ(&(assigned = node), &assigned);
        EXPECT_EQ(ContentsOf(assigned), ContentsOf(node)); // the dirty flag included

        node.SetDirty(true); // to compare the rest
        EXPECT_EQ(ContentsOf(copy), ContentsOf(node));
    }
    EXPECT_EQ(child.GetParentPtr(), &node); // still
}

TEST(Node, CopiesShareTheChildrenAndAreDirty)
{
    ExpectShallowCopies<IkNode>();
    ExpectShallowCopies<IkBody>();
}

TEST(Node, AssignmentToItselfChangesNothing)
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    IkNode node;
    FillIn(node, parent, child, hostObject);
    node.SetDirty(false);
    const auto before = ContentsOf(node);
    const IkNode& same = node;
    node = same;
    EXPECT_EQ(ContentsOf(node), before);
}

TEST(Node, FramesAreHandedOutAsCopies)
{
    IkNode node;
    node.SetOrigFrame(Numbered(4, 4));
    IkXformMat copy = node.GetOrigFrame();
    copy.Eye();
    EXPECT_EQ(BitsOf(node.GetOrigFrame()), BitsOf(Numbered(4, 4)));
    EXPECT_EQ(BitsOf(node.GetRelFrame()), BitsOf(IkXformMat()));
    EXPECT_EQ(BitsOf(node.GetWorldFrame()), BitsOf(IkXformMat()));
}

// Nine stored elements of a 3x3 fall on the first nine places of the 4x4.
TEST(Node, FramesTakeStoredElementsFromAnyShape)
{
    IkNode node;
    node.SetOrigFrame(IkXformMat(Numbered(3, 3)));
    EXPECT_EQ(ElementsOf(node.GetOrigFrame()),
              (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 0, 0, 0, 0, 1}));
    node.SetRelFrame(IkXformMat(Numbered(5, 5)));
    EXPECT_EQ(BitsOf(node.GetRelFrame()), BitsOf(Numbered(4, 4))); // its first sixteen, 1 to 16
    node.SetWorldFrame(IkXformMat(Numbered(0, 0)));
    EXPECT_EQ(BitsOf(node.GetWorldFrame()), BitsOf(IkXformMat()));
}

TEST(Node, SettersOfItsDefinitionMarkItDirty)
{
    struct Case
    {
        const char* what;
        std::function<void(IkNode&)> set;
        bool marksDirty;
    };
    IkNode other;
    const std::vector<Case> cases{
        {"SetName", [](IkNode& n) { n.SetName(L"NA"); }, true}, // its own name
        {"SetType", [](IkNode& n) { n.SetType(n.GetType()); }, true},
        {"SetOrigFrame", [](IkNode& n) { n.SetOrigFrame(IkXformMat()); }, true},
        {"SetRelFrame", [](IkNode& n) { n.SetRelFrame(IkXformMat()); }, true},
        {"SetWorldFrame", [](IkNode& n) { n.SetWorldFrame(IkXformMat()); }, true},
        {"SetParent", [&other](IkNode& n) { n.SetParent(&other); }, true},
        {"SetParent null", [](IkNode& n) { n.SetParent(nullptr); }, true},
        {"SetDirty", [](IkNode& n) { n.SetDirty(true); }, true},
        {"SetUserData", [&other](IkNode& n) { n.SetUserData(&other); }, false},
        {"AddChild", [&other](IkNode& n) { n.AddChild(&other); }, false},
        {"SetDirty false", [](IkNode& n) { n.SetDirty(false); }, false},
    };
    for (const Case& c : cases) {
        IkNode node;
        node.SetDirty(false);
        c.set(node);
        EXPECT_EQ(node.IsDirty(), c.marksDirty) << c.what;
    }
}

TEST(Node, SetParentTouchesNoChildList)
{
    IkNode parent;
    IkNode node;
    node.SetParent(&parent);
    EXPECT_EQ(node.GetParentPtr(), &parent);
    EXPECT_EQ(parent.GetKidList(), Nodes());
}

TEST(Node, AddChildAppendsAndLinksBack)
{
    IkNode parent;
    IkNode first;
    IkNode second;
    first.SetDirty(false);
    parent.SetDirty(false);
    parent.AddChild(&first);
    parent.AddChild(&second);
    EXPECT_EQ(parent.GetKidList(), (Nodes{&first, &second}));
    EXPECT_EQ(first.GetParentPtr(), &parent);
    EXPECT_TRUE(first.IsDirty());
    EXPECT_FALSE(parent.IsDirty());
}

TEST(Node, AddChildIgnoresNull)
{
    IkNode parent;
    parent.AddChild(nullptr);
    EXPECT_EQ(parent.GetKidList(), Nodes());
}

TEST(Node, AddChildChecksNoDuplicatesAndNoOtherParent)
{
    IkNode one;
    IkNode other;
    IkNode child;
    one.AddChild(&child);
    one.AddChild(&child);
    other.AddChild(&child);
    EXPECT_EQ(one.GetKidList(), (Nodes{&child, &child}));
    EXPECT_EQ(other.GetKidList(), Nodes{&child});
    EXPECT_EQ(child.GetParentPtr(), &other); // the later one
}

TEST(Node, HandsOutACopyOfItsChildList)
{
    Tree tree;
    tree.root.GetKidList().clear();
    EXPECT_EQ(tree.root.GetKidList(), (Nodes{tree.a, tree.b}));
}

TEST(Node, TransformIsItsOriginalFrameWhateverTheValue)
{
    IkBody node;
    node.SetOrigFrame(Numbered(4, 4));
    node.SetRelFrame(IkXformMat::RotX(1));
    node.SetWorldFrame(IkXformMat::RotY(1));
    IkJtStateVector states;
    double value = 5.0;
    double* const none = nullptr;
    EXPECT_EQ(BitsOf(node.GetXformMat(states)), BitsOf(Numbered(4, 4)));
    EXPECT_EQ(BitsOf(node.GetXformMat(&value)), BitsOf(Numbered(4, 4)));
    EXPECT_EQ(BitsOf(node.GetXformMat(none)), BitsOf(Numbered(4, 4)));
    EXPECT_FALSE(node.IsJoint());
    EXPECT_FALSE(IkNode().IsJoint());
}

TEST(Node, IsComparedByIdentityAndHasNoOrder)
{
    const IkNode node(L"same");
    const IkNode copy(node);
    EXPECT_TRUE(node == node);
    EXPECT_FALSE(node == copy);
    EXPECT_FALSE(node < copy);
    EXPECT_FALSE(copy < node);
    EXPECT_FALSE(node < node);
}

TEST(NodeSearch, FindsEveryNodeWithThePathFromTheRoot)
{
    Tree tree;
    const std::vector<Nodes> paths{
        {&tree.root},
        {&tree.root, tree.a},
        {&tree.root, tree.a, tree.a1},
        {&tree.root, tree.a, tree.a1, tree.a11},
        {&tree.root, tree.a, tree.a2},
        {&tree.root, tree.b},
        {&tree.root, tree.b, tree.b1},
    };
    for (const Nodes& expected : paths) {
        IkNode* wanted = expected.back();
        wanted->SetUserData(wanted);
        Nodes byName;
        Nodes byData;
        EXPECT_EQ(tree.root.SearchByName(wanted->GetName()), wanted);
        EXPECT_EQ(tree.root.SearchByName(wanted->GetName(), byName), wanted);
        EXPECT_EQ(tree.root.SearchByUserDataPtr(wanted), wanted);
        EXPECT_EQ(tree.root.SearchByUserDataPtr(wanted, byData), wanted);
        EXPECT_EQ(byName, expected);
        EXPECT_EQ(byData, expected);
    }
}

TEST(NodeSearch, LooksBelowItselfOnly)
{
    Tree tree;
    EXPECT_EQ(tree.a->SearchByName(L"b1"), nullptr);
    EXPECT_EQ(tree.a->SearchByName(L"root"), nullptr);
    Nodes path;
    EXPECT_EQ(tree.a->SearchByName(L"a11", path), tree.a11);
    EXPECT_EQ(path, (Nodes{tree.a, tree.a1, tree.a11}));
}

// Pre-order is root, a, a1, a11, a2, b, b1.
TEST(NodeSearch, MeetsANodeBeforeItsDescendantsAndASubtreeBeforeTheNext)
{
    Tree tree;
    const Nodes preOrder = tree.All();
    for (std::size_t first = 0; first < preOrder.size(); ++first) {
        for (std::size_t i = 0; i < preOrder.size(); ++i) {
            preOrder[i]->SetName(i >= first ? L"twin" : L"other");
            preOrder[i]->SetUserData(i >= first ? &tree : nullptr);
        }
        EXPECT_EQ(tree.root.SearchByName(L"twin"), preOrder[first]);
        EXPECT_EQ(tree.root.SearchByUserDataPtr(&tree), preOrder[first]);
    }
}

TEST(NodeSearch, PutsAncestorsBeforeAndTheMatchBehindWhatThePathHeld)
{
    Tree tree;
    IkNode old;
    Nodes path{&old};
    tree.root.SearchByName(L"a2", path);
    EXPECT_EQ(path, (Nodes{&tree.root, tree.a, &old, tree.a2}));
    path = {&old};
    tree.root.SearchByUserDataPtr(nullptr, path); // the root itself has none
    EXPECT_EQ(path, (Nodes{&old, &tree.root}));
}

TEST(NodeSearch, ComparesNamesExactly)
{
    IkNode node(std::wstring(L"Axis\0C", 6));
    EXPECT_EQ(node.SearchByName(std::wstring(L"Axis\0C", 6)), &node);
    for (const std::wstring& other :
         {std::wstring(L"Axis"), std::wstring(L"axis\0C", 6), std::wstring(L"Axis\0c", 6),
          std::wstring(L"Axis\0C ", 7), std::wstring()}) {
        EXPECT_EQ(node.SearchByName(other), nullptr);
    }
}

TEST(NodeSearch, ReturnsNullAndLeavesThePathWhenNothingMatches)
{
    Tree tree;
    IkNode old;
    Nodes path{&old};
    EXPECT_EQ(tree.root.SearchByName(L"A11", path), nullptr);
    EXPECT_EQ(tree.root.SearchByUserDataPtr(&tree, path), nullptr);
    EXPECT_EQ(path, Nodes{&old});
}

TEST(Node, UpdateFramesClearsTheSubtreeChildrenFirstAndComputesNothing)
{
    Tree tree;
    for (IkNode* node : tree.All()) {
        node->SetOrigFrame(IkXformMat::Translate(1, 2, 3));
        node->SetWorldFrame(Numbered(4, 4));
    }
    EXPECT_TRUE(tree.root.UpdateFrames());
    EXPECT_EQ(tree.notes, (Names{L"a11", L"a1", L"a2", L"a", L"b1", L"b"}));
    for (const IkNode* node : tree.All()) {
        EXPECT_FALSE(node->IsDirty());
        EXPECT_EQ(BitsOf(node->GetOrigFrame()), BitsOf(IkXformMat::Translate(1, 2, 3)));
        EXPECT_EQ(BitsOf(node->GetRelFrame()), BitsOf(IkXformMat()));
        EXPECT_EQ(BitsOf(node->GetWorldFrame()), BitsOf(Numbered(4, 4)));
    }
}

TEST(Node, UpdateFramesLeavesAncestorsAndSiblingsDirty)
{
    Tree tree;
    EXPECT_TRUE(tree.a->UpdateFrames());
    EXPECT_TRUE(tree.root.IsDirty());
    EXPECT_TRUE(tree.b->IsDirty());
    EXPECT_FALSE(tree.a11->IsDirty());
}

TEST(Node, DestroyChildrenDeletesAllDescendantsDeepestAndLastFirst)
{
    Tree tree;
    tree.root.DestroyChildren();
    EXPECT_EQ(tree.notes, (Names{L"~b1", L"~b", L"~a2", L"~a11", L"~a1", L"~a"}));
    EXPECT_EQ(tree.root.GetKidList(), Nodes());
    EXPECT_EQ(tree.root.GetName(), L"root");
    tree.root.DestroyChildren(); // of a leaf: nothing
    EXPECT_EQ(tree.notes.size(), 6U);
}

TEST(Node, DestroyChildrenDeletesAChildThatWasAddedTwiceOnce)
{
    Names notes;
    IkNode root;
    auto* twice = new NotingNode(L"twice", notes);
    root.AddChild(twice);
    root.AddChild(new NotingNode(L"between", notes));
    root.AddChild(twice);
    root.DestroyChildren();
    EXPECT_EQ(notes, (Names{L"~twice", L"~between"}));
    EXPECT_EQ(root.GetKidList(), Nodes());
}

TEST(Node, DestructorLeavesTheChildren)
{
    Names notes;
    NotingNode child(L"child", notes);
    {
        NotingNode parent(L"parent", notes);
        parent.AddChild(&child);
    }
    EXPECT_EQ(notes, Names{L"~parent"});
    EXPECT_EQ(child.GetName(), L"child");
}

//   root ── a ── leaf
//     └──<──┘
struct Ring
{
    Names notes;
    IkBody root{L"root"};
    NotingNode a{L"a", notes};
    std::unique_ptr<IkNode> leaf = std::make_unique<NotingNode>(L"leaf", notes);

    Ring()
    {
        root.AddChild(&a);
        a.AddChild(leaf.get());
        a.AddChild(&root);
    }
};

TEST(NodeCycle, SearchesEnd)
{
    Ring ring;
    ring.leaf->SetUserData(&ring);
    Nodes path;
    EXPECT_EQ(ring.root.SearchByName(L"leaf", path), ring.leaf.get());
    EXPECT_EQ(path, (Nodes{&ring.root, &ring.a, ring.leaf.get()}));
    EXPECT_EQ(ring.a.SearchByName(L"root"), &ring.root); // both are below each other
    EXPECT_EQ(ring.root.SearchByName(L"none", path), nullptr);
    EXPECT_EQ(ring.root.SearchByUserDataPtr(&ring), ring.leaf.get());
    EXPECT_EQ(ring.root.SearchByUserDataPtr(path.data(), path), nullptr);
    EXPECT_EQ(path.size(), 3U);
}

TEST(NodeCycle, ANodeBelowItselfIsMetOnce)
{
    IkNode node(L"node");
    node.AddChild(&node);
    Nodes path;
    EXPECT_EQ(node.SearchByName(L"node", path), &node);
    EXPECT_EQ(path, Nodes{&node});
    EXPECT_EQ(node.SearchByName(L"none"), nullptr);
    EXPECT_TRUE(node.UpdateFrames());
    EXPECT_FALSE(node.IsDirty());
    node.DestroyChildren();
    EXPECT_EQ(node.GetKidList(), Nodes{&node});
}

TEST(NodeCycle, UpdateFramesEndsWithEveryNodeClean)
{
    Ring ring;
    EXPECT_TRUE(ring.root.UpdateFrames());
    EXPECT_FALSE(ring.root.IsDirty());
    EXPECT_FALSE(ring.a.IsDirty());
    EXPECT_FALSE(ring.leaf->IsDirty());
}

TEST(NodeCycle, DestroyChildrenEndsAndKeepsTheRing)
{
    Ring ring;
    IkNode* const leaf = ring.leaf.release();
    EXPECT_EQ(ring.a.GetKidList(), (Nodes{leaf, &ring.root}));
    ring.root.DestroyChildren();
    EXPECT_EQ(ring.notes, Names{L"~leaf"});
    EXPECT_EQ(ring.root.GetKidList(), Nodes{&ring.a});
    EXPECT_EQ(ring.a.GetKidList(), Nodes{&ring.root});
}

TEST(NodeCycle, WalksFromWithinAnotherWalkDoNotSeeIt)
{
    // A host's node may search its tree while its frames are updated.
    class Searching : public IkBody
    {
      public:
        using IkBody::IkBody;
        bool UpdateFrames() override
        {
            found = GetParentPtr()->SearchByName(L"sibling");
            return IkBody::UpdateFrames();
        }
        IkNode* found{nullptr};
    };
    IkNode root;
    Searching node(L"node");
    IkNode sibling(L"sibling");
    root.AddChild(&node);
    root.AddChild(&sibling);
    root.UpdateFrames();
    EXPECT_EQ(node.found, &sibling);
    EXPECT_FALSE(sibling.IsDirty());
}

} // namespace
