#include "IkChain.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "geometry/Matrices.h"
#include "model/Contents.h"
#include "support/Chains.h"

namespace
{

using test::BitsOf;
using test::ChainOf;
using test::ContentsOf;
using test::ElementsOf;
using test::Nodes;
using test::NodesOf;
using test::Numbered;
using test::States;
using test::StatesOf;

TEST(Chain, StartsEmpty)
{
    static_assert(std::has_virtual_destructor_v<IkChain>);
    const IkChain chain;
    EXPECT_EQ(chain.Size(), 0);
    EXPECT_EQ(chain.GetAt(0), nullptr);
    EXPECT_EQ(chain.GetJointStates().Size(), 0);
    EXPECT_EQ(chain.SearchByUserDataPtr(nullptr), nullptr);
}

TEST(Chain, AddsNodesAtEitherEnd)
{
    IkBody a, b, c;
    IkChain chain;
    chain.AddNode(&b);
    chain.AddNode(&c);
    chain.AddNodeAtHead(&a);
    EXPECT_EQ(NodesOf(chain), (Nodes{&a, &b, &c}));
    chain.AddNode(&b); // no check for duplicates
    EXPECT_EQ(NodesOf(chain), (Nodes{&a, &b, &c, &b}));
    EXPECT_EQ(a.GetKidList(), Nodes()); // the tree is not touched
    EXPECT_EQ(b.GetParentPtr(), nullptr);
}

TEST(Chain, StoresNoNull)
{
    IkBody a;
    IkChain chain = ChainOf({&a});
    chain.AddNode(nullptr);
    chain.AddNodeAtHead(nullptr);
    EXPECT_EQ(NodesOf(chain), Nodes{&a});
}

TEST(Chain, HasNoNodeOutsideItsRange)
{
    IkBody a, b;
    const IkChain chain = ChainOf({&a, &b});
    EXPECT_EQ(chain.GetAt(1), &b);
    for (const int index : {-1, 2, 1000, -2147483647 - 1, 2147483647}) {
        EXPECT_EQ(chain.GetAt(index), nullptr);
    }
}

TEST(Chain, RemovesItsTail)
{
    IkBody a, b;
    IkChain chain = ChainOf({&a, &b});
    chain.RemoveTail();
    EXPECT_EQ(NodesOf(chain), Nodes{&a});
    chain.RemoveTail();
    chain.RemoveTail(); // of an empty chain: nothing
    EXPECT_EQ(chain.Size(), 0);
    chain.AddNode(&b);
    EXPECT_EQ(NodesOf(chain), Nodes{&b});
}

TEST(Chain, ResetsToEmpty)
{
    IkBody a;
    IkChain chain = ChainOf({&a});
    chain.Reset();
    EXPECT_EQ(chain.Size(), 0);
}

TEST(Chain, CopiesThePointersAlone)
{
    IkBody a, b;
    IkChain chain = ChainOf({&a, &b});
    const IkChain copy(chain);
    IkChain assigned;
    EXPECT_EQ(&(assigned = chain), &assigned);
    const IkChain& same = assigned;
    assigned = same;
    chain.Reset();
    EXPECT_EQ(NodesOf(copy), (Nodes{&a, &b}));
    EXPECT_EQ(NodesOf(assigned), (Nodes{&a, &b}));
}

TEST(Chain, LeavesItsNodesWhenItGoes)
{
    class Counted : public IkBody
    {
      public:
        explicit Counted(int& number) : destroyed(number) {}
        ~Counted() override { ++destroyed; }
        Counted(const Counted&) = delete;
        Counted& operator=(const Counted&) = delete;
        Counted(Counted&&) = delete;
        Counted& operator=(Counted&&) = delete;

      private:
        int& destroyed;
    };
    int destroyed = 0;
    Counted node(destroyed);
    {
        IkChain chain = ChainOf({&node, &node});
        chain.RemoveTail();
    }
    EXPECT_EQ(destroyed, 0);
}

TEST(Chain, FillsFromTheRootToANode)
{
    IkBody root, a, b, c;
    root.AddChild(&a);
    a.AddChild(&b);
    b.AddChild(&c);
    IkChain chain = ChainOf({&c, &c}); // emptied first
    chain.FillFromBase2Node(&root);
    EXPECT_EQ(NodesOf(chain), Nodes{&root});
    chain.FillFromBase2Node(&c);
    EXPECT_EQ(NodesOf(chain), (Nodes{&root, &a, &b, &c}));
    chain.FillFromBase2Node(nullptr);
    EXPECT_EQ(chain.Size(), 0);
}

TEST(Chain, FillsFromACycleOfParentsWithEachNodeOnce)
{
    IkBody a, b, c;
    c.SetParent(&b);
    b.SetParent(&a);
    a.SetParent(&b);
    IkChain chain;
    chain.FillFromBase2Node(&c);
    EXPECT_EQ(NodesOf(chain), (Nodes{&a, &b, &c}));
    a.SetParent(&a);
    chain.FillFromBase2Node(&a);
    EXPECT_EQ(NodesOf(chain), Nodes{&a});
}

TEST(Chain, FindsTheNodeNearestTheBaseByUserPointer)
{
    IkBody a, b, c;
    int mark = 0;
    b.SetUserData(&mark);
    c.SetUserData(&mark);
    const IkChain chain = ChainOf({&a, &b, &c});
    EXPECT_EQ(chain.SearchByUserDataPtr(&mark), &b);
    EXPECT_EQ(chain.SearchByUserDataPtr(nullptr), &a);
    EXPECT_EQ(chain.SearchByUserDataPtr(&chain), nullptr);
}

TEST(Chain, CollectsItsJointsAtTheirCurrentValues)
{
    IkBody a, b;
    IkJtPrism x;
    IkJtRot c;
    x.SetCurValue(3);
    c.SetCurValue(0.5);
    EXPECT_EQ(ContentsOf(ChainOf({&a, &x, &b, &c}).GetJointStates()), (States{{&x, 3}, {&c, 0.5}}));
    EXPECT_EQ(ChainOf({&a, &b}).GetJointStates().Size(), 0);
    const IkJtStateVector twice = ChainOf({&x, &x}).GetJointStates();
    EXPECT_EQ(ContentsOf(twice), (States{{&x, 3}, {&x, 3}}));
    EXPECT_EQ(twice.FindStateByJointPtr(&x), 1);
}

TEST(Chain, TransformOfNoNodesIsTheIdentity)
{
    IkJtStateVector states;
    EXPECT_EQ(BitsOf(IkChain().GetXformMat()), BitsOf(IkXformMat()));
    EXPECT_EQ(BitsOf(IkChain().GetXformMat(states)), BitsOf(IkXformMat()));
}

TEST(Chain, TransformOfTwoOffsetsIsTheirSum)
{
    IkBody a, b;
    a.SetOrigFrame(IkXformMat::Translate(1, 0, 0));
    b.SetOrigFrame(IkXformMat::Translate(0, 2, 0));
    EXPECT_EQ(BitsOf(ChainOf({&a, &b}).GetXformMat()), BitsOf(IkXformMat::Translate(1, 2, 0)));
}

/// body, x, c, tool: of transforms that do not commute.
struct Arm
{
    IkBody body, tool;
    IkJtPrism x;
    IkJtRot c;
    IkChain chain = ChainOf({&body, &x, &c, &tool});

    explicit Arm(test::Random& random)
    {
        body.SetOrigFrame(test::RandomRigid(random));
        x.SetOrigFrame(test::RandomRigid(random));
        c.SetOrigFrame(test::RandomRigid(random));
        tool.SetOrigFrame(test::RandomRigid(random));
        for (IkNode* node : NodesOf(chain)) { // take no part
            node->SetWorldFrame(test::RandomRigid(random));
            node->SetRelFrame(test::RandomRigid(random));
        }
        x.SetCurValue(random.Between(-500, 500));
        c.SetCurValue(random.Between(-7, 7));
    }

    /// identity * body * x * c * tool, from left to right.
    IkXformMat Product(double vx, double vc)
    {
        return IkXformMat() * body.GetOrigFrame() * x.GetXformMat(&vx) * c.GetXformMat(&vc) *
               tool.GetOrigFrame();
    }
};

TEST(Chain, TransformIsTheProductFromTheBaseOn)
{
    test::Random random(7);
    for (int i = 0; i < 100; ++i) {
        Arm arm(random);
        const double vx = random.Between(-500, 500);
        const double vc = random.Between(-7, 7);
        const auto atCurrent = BitsOf(arm.Product(arm.x.GetCurValue(), arm.c.GetCurValue()));
        ASSERT_EQ(BitsOf(arm.chain.GetXformMat()), atCurrent);

        IkJtStateVector none;
        IkJtStateVector some = StatesOf({{&arm.c, vc}});
        IkJtStateVector all = StatesOf({{&arm.c, vc}, {&arm.x, vx}});
        ASSERT_EQ(BitsOf(arm.chain.GetXformMat(none)), atCurrent);
        ASSERT_EQ(BitsOf(arm.chain.GetXformMat(some)),
                  BitsOf(arm.Product(arm.x.GetCurValue(), vc)));
        ASSERT_EQ(BitsOf(arm.chain.GetXformMat(all)), BitsOf(arm.Product(vx, vc)));
    }
}

TEST(Chain, AsksEachNodeForItsOwnTransform)
{
    class Asked : public IkBody
    {
      public:
        IkXformMat GetXformMat(IkJtStateVector& states) override
        {
            askedWith = &states;
            return IkXformMat::Translate(1, 0, 0);
        }
        IkXformMat GetXformMat(double* value) override
        {
            askedWith = value;
            return IkXformMat::Translate(0, 1, 0);
        }
        const void* askedWith{this};
    };
    Asked a, b;
    const IkChain chain = ChainOf({&a, &b});
    IkJtStateVector states;
    EXPECT_EQ(BitsOf(chain.GetXformMat(states)), BitsOf(IkXformMat::Translate(2, 0, 0)));
    EXPECT_EQ(a.askedWith, &states); // one and the same vector
    EXPECT_EQ(b.askedWith, &states);
    EXPECT_EQ(BitsOf(chain.GetXformMat()), BitsOf(IkXformMat::Translate(0, 2, 0)));
    EXPECT_EQ(a.askedWith, nullptr); // the current value
    EXPECT_EQ(b.askedWith, nullptr);
}

TEST(Chain, CountsWhatAHostsTransformLacksAsZero)
{
    class ThreeByThree : public IkBody
    {
      public:
        IkXformMat GetXformMat(IkJtStateVector& /*states*/) override { return Numbered(3, 3); }
        IkXformMat GetXformMat(double* /*value*/) override { return Numbered(3, 3); }
    };
    ThreeByThree node;
    IkJtStateVector states;
    const std::vector<double> expected{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 0};
    EXPECT_EQ(ElementsOf(ChainOf({&node}).GetXformMat()), expected);
    EXPECT_EQ(ElementsOf(ChainOf({&node}).GetXformMat(states)), expected);
}

TEST(Chain, EqualsTheSameNodesInTheSameOrderAndIsLessWithFewer)
{
    IkBody a, b, c;
    struct Case
    {
        Nodes left, right;
        bool isEqual;
    };
    const std::vector<Case> cases{
        {{}, {}, true},
        {{&a, &b}, {&a, &b}, true},
        {{&a, &b}, {&b, &a}, false},
        {{&a, &b}, {&a, &c}, false},
        {{&a}, {&a, &b}, false},
        {{}, {&a}, false},
        {{&a, &b}, {&b}, false},
    };
    for (const Case& each : cases) {
        const IkChain left = ChainOf(each.left);
        const IkChain right = ChainOf(each.right);
        EXPECT_EQ(left == right, each.isEqual);
        EXPECT_EQ(right == left, each.isEqual);
        EXPECT_EQ(left < right, each.left.size() < each.right.size());
        EXPECT_EQ(right < left, each.right.size() < each.left.size());
    }
}

} // namespace
