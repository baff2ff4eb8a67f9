#include "IkStream.h"

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "machine/Rig.h"
#include "support/Chains.h"

namespace
{

using test::ChainOf;
using test::ExpectNear;
using test::FalseJoint;
using test::Nodes;
using test::NodesOf;
using test::Rig;
using test::Values;

static_assert(std::has_virtual_destructor_v<IkStream>);

/// "none" without an entry, else what it holds.
std::string LocalLock(const IkStream& stream, IkNode* joint)
{
    bool isLocked = true;
    if (!stream.GetLocalLock(joint, isLocked)) {
        return isLocked ? "none, but flag set" : "none";
    }
    return isLocked ? "locked" : "free";
}

TEST(Stream, StartsWithTheDefaultOfEveryField)
{
    const IkStream stream;
    EXPECT_EQ(stream.Id, 0);
    EXPECT_TRUE(stream.Chains.empty());
    EXPECT_FALSE(stream.HasPartSpaceMatrix);
    EXPECT_EQ(stream.PartSpaceBody.GetName(), L"PartSpace");
    EXPECT_FALSE(stream.PartSpaceFixed);
    EXPECT_TRUE(stream.LocalLocks.empty());
    EXPECT_EQ(stream.SolverJtStates.Size(), 0);
    EXPECT_TRUE(stream.LockedFlags.empty());
    EXPECT_TRUE(stream.RotaryFlags.empty());
    EXPECT_TRUE(stream.RotaryJointIndices.empty());
    EXPECT_TRUE(stream.FreeJointIndices.empty());
    // 45 degrees multiplied by the factor from radians to degrees.
    EXPECT_EQ(stream.MaxAngleStep, 2578.310078088707);
}

TEST(Stream, EnumerationsHaveTheirNumbers)
{
    EXPECT_EQ(IkStream::PartChain, 0);
    EXPECT_EQ(IkStream::ToolChain, 1);
    EXPECT_EQ(IkStream::PartToToolChain, 2);
    EXPECT_EQ(IkStream::LocalLockOnly, 0);
    EXPECT_EQ(IkStream::GlobalLockOnly, 1);
    EXPECT_EQ(IkStream::GlobalOrLocalLock, 2);
}

TEST(Stream, KeepsItsId)
{
    IkStream stream;
    stream.SetId(-3);
    EXPECT_EQ(stream.GetId(), -3);
}

// --- chains ---

TEST(StreamChains, AreListedInTheOrderAdded)
{
    IkChain tool;
    IkChain part;
    IkChain third;
    IkStream stream;
    stream.AddChain(&tool);
    stream.AddChain(&part);
    stream.AddChain(&third);
    stream.AddChain(nullptr);
    ASSERT_EQ(stream.NumChains(), 3);
    IkChain* out = nullptr;
    EXPECT_TRUE(stream.GetChain(0, &out));
    EXPECT_EQ(out, &tool);
    EXPECT_TRUE(stream.GetChain(2, &out));
    EXPECT_EQ(out, &third);
    for (const int outside : {-1, 3, 2147483647}) {
        EXPECT_FALSE(stream.GetChain(outside, &out));
        EXPECT_EQ(out, &third);
    }
    EXPECT_FALSE(stream.GetChain(0, nullptr));
}

TEST(StreamChains, RegisterTheirJointsForLocalLocks)
{
    Rig rig;
    IkNode& body = rig.Body(rig.tool, IkXformMat());
    IkNode& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    IkNode& c = rig.Rotary(rig.part, IkJoint::JtPrimRotZ);
    EXPECT_EQ(LocalLock(rig.stream, &x), "none");
    rig.Connect();
    IkJtRot third;
    IkChain thirdChain = ChainOf({&third});
    rig.stream.AddChain(&thirdChain);
    for (IkNode* joint : Nodes{&x, &c, &third}) {
        EXPECT_EQ(LocalLock(rig.stream, joint), "free");
    }
    EXPECT_EQ(LocalLock(rig.stream, &body), "none");
}

TEST(StreamChains, AddedAgainReleaseTheLocalLocksOfTheirJoints)
{
    Rig rig;
    IkNode& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    IkNode& c = rig.Rotary(rig.part, IkJoint::JtPrimRotZ);
    rig.Connect();
    rig.stream.SetLocalLock(&x, true);
    rig.stream.SetLocalLock(&c, true);
    rig.stream.AddChain(&rig.tool);
    EXPECT_EQ(LocalLock(rig.stream, &x), "free");
    EXPECT_EQ(LocalLock(rig.stream, &c), "locked");
}

TEST(StreamChains, AreForgottenByResetWhichLeavesEverythingElse)
{
    Rig rig;
    IkNode& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    rig.stream.SetId(4);
    rig.stream.SetLocalLock(&x, true);
    rig.stream.SetPartSpaceMatrix(IkXformMat::Translate(1, 2, 3), true);
    rig.stream.InitializeIkSolver(false);
    rig.stream.Reset();
    EXPECT_EQ(rig.stream.NumChains(), 0);
    EXPECT_EQ(rig.stream.GetId(), 4);
    EXPECT_EQ(LocalLock(rig.stream, &x), "locked");
    EXPECT_TRUE(rig.stream.GetHasPartSpaceMatrix());
    EXPECT_EQ(rig.stream.SolverJtStates.Size(), 1);
    EXPECT_EQ(rig.stream.LockedFlags, std::vector<bool>{true});
}

struct SubChains : testing::Test
{
    IkBody base, t1, p1, p2;
    IkChain tool = ChainOf({&base, &t1});
    IkChain part = ChainOf({&base, &p1, &p2});

    static Nodes Get(const IkStream& stream, int type)
    {
        IkBody stale;
        IkChain out = ChainOf({&stale});
        const int size = stream.GetSubNodeChain(out, static_cast<IkStream::NodeChainType>(type));
        EXPECT_EQ(size, out.Size());
        return NodesOf(out);
    }
};

TEST_F(SubChains, FollowTheirType)
{
    IkStream stream;
    stream.AddChain(&tool);
    stream.AddChain(&part);
    EXPECT_EQ(Get(stream, IkStream::PartChain), (Nodes{&base, &p1, &p2}));
    EXPECT_EQ(Get(stream, IkStream::ToolChain), (Nodes{&base, &t1}));
    EXPECT_EQ(Get(stream, IkStream::PartToToolChain), (Nodes{&p2, &p1, &base, &t1}));
    EXPECT_EQ(Get(stream, 3), Nodes{});
    EXPECT_EQ(Get(stream, -1), Nodes{});
}

TEST_F(SubChains, CountAMissingChainAsEmpty)
{
    IkStream stream;
    for (const int type : {0, 1, 2}) {
        EXPECT_EQ(Get(stream, type), Nodes{});
    }
    stream.AddChain(&tool);
    EXPECT_EQ(Get(stream, IkStream::PartChain), Nodes{});
    EXPECT_EQ(Get(stream, IkStream::ToolChain), (Nodes{&base, &t1}));
    EXPECT_EQ(Get(stream, IkStream::PartToToolChain), Nodes{&t1});

    IkChain empty;
    IkStream partOnly;
    partOnly.AddChain(&empty);
    partOnly.AddChain(&part);
    EXPECT_EQ(Get(partOnly, IkStream::PartToToolChain), (Nodes{&p2, &p1, &base}));
}

TEST_F(SubChains, MayFillOneOfTheStreamsOwnChains)
{
    IkStream stream;
    stream.AddChain(&tool);
    stream.AddChain(&part);
    EXPECT_EQ(stream.GetSubNodeChain(part, IkStream::PartChain), 3);
    EXPECT_EQ(NodesOf(part), (Nodes{&base, &p1, &p2}));
    EXPECT_EQ(stream.GetSubNodeChain(tool, IkStream::PartToToolChain), 4);
    EXPECT_EQ(NodesOf(tool), (Nodes{&p2, &p1, &base, &t1}));
}

TEST(StreamChains, SetBoundNodesIsInert)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    for (const int index : {5, 0, -1}) {
        EXPECT_EQ(rig.stream.SetBoundNodes(index).Size(), 0);
    }
    EXPECT_EQ(rig.stream.NumChains(), 2);
    EXPECT_EQ(rig.tool.Size(), 1);
}

TEST(StreamChains, GiveTheirJointsInOrderEachOnceAtItsCurrentValue)
{
    EXPECT_EQ(IkStream().GetJointStates().Size(), 0);

    IkJtPrism shared(L"shared");
    IkJtPrism x(L"x");
    IkJtRot c(L"c");
    IkJtRot third(L"third");
    IkBody body;
    IkChain tool = ChainOf({&body, &shared, &x});
    IkChain part = ChainOf({&shared, &c});
    IkChain more = ChainOf({&third, &x});
    IkStream stream;
    stream.AddChain(&tool);
    stream.AddChain(&part);
    stream.AddChain(&more);
    shared.SetCurValue(1);
    x.SetCurValue(2);
    c.SetCurValue(3);
    third.SetCurValue(4);
    const IkJtStateVector states = stream.GetJointStates();
    EXPECT_EQ(states.GetNameVector(), (std::vector<std::wstring>{L"shared", L"x", L"c", L"third"}));
    EXPECT_EQ(states.GetValVector(), (Values{1, 2, 3, 4}));
}

TEST(StreamChains, SearchByUserDataPtrAsksTheChainsInOrder)
{
    int a = 0;
    int b = 0;
    int c = 0;
    Rig rig;
    IkNode& toolA = rig.Body(rig.tool, IkXformMat());
    IkNode& partA = rig.Body(rig.part, IkXformMat());
    IkNode& partB = rig.Body(rig.part, IkXformMat());
    toolA.SetUserData(&a);
    partA.SetUserData(&a);
    partB.SetUserData(&b);
    EXPECT_EQ(rig.stream.SearchByUserDataPtr(&a), nullptr); // no chain yet
    rig.Connect();
    EXPECT_EQ(rig.stream.SearchByUserDataPtr(&a), &toolA);
    EXPECT_EQ(rig.stream.SearchByUserDataPtr(&b), &partB);
    EXPECT_EQ(rig.stream.SearchByUserDataPtr(&c), nullptr);
}

// --- part space ---

/// Part chain: a body 100 up, then a prism along x that stands at 20 and starts from 7.
struct PartSpace : testing::Test
{
    PartSpace() : x(MakePrism())
    {
        x.SetCurValue(20);
        x.SetInitialValue(0);
        rig.Connect();
    }

    IkJtPrism& MakePrism()
    {
        rig.Body(rig.part, IkXformMat::Translate(0, 0, 100));
        return rig.Linear(rig.part, IkJoint::JtPrimTransX);
    }

    IkNode* Body() { return &rig.stream.PartSpaceBody; }
    std::pair<bool, bool> Flags() const
    {
        bool has = false;
        bool fixed = false;
        rig.stream.GetPartSpaceInfo(has, fixed);
        EXPECT_EQ(rig.stream.GetHasPartSpaceMatrix(), has);
        return {has, fixed};
    }
    IkXformMat Matrix() const
    {
        IkXformMat out;
        rig.stream.GetPartSpaceMatrix(out);
        return out;
    }

    Rig rig;
    IkJtPrism& x;
};
using BoolPair = std::pair<bool, bool>;

IkXformMat PartFrame()
{
    IkXformMat frame = IkXformMat::Translate(1, 2, 3);
    frame.RotZThis(test::kQuarterTurn);
    return frame;
}

TEST_F(PartSpace, HangsTheBodyOnTheTipSoThatTheChainAtItsInitialValuesEndsAtTheFrame)
{
    EXPECT_EQ(Flags(), BoolPair(false, false));
    rig.stream.SetPartSpaceMatrix(PartFrame(), true);
    EXPECT_EQ(Flags(), BoolPair(true, true));
    ASSERT_EQ(rig.part.Size(), 3);
    EXPECT_EQ(rig.part.GetAt(2), Body());
    ExpectNear(Matrix(), PartFrame(), 0);
    // The tip at the initial value is 100 up: 100 less is left for the body.
    IkXformMat offset = IkXformMat::Translate(1, 2, -97);
    offset.RotZThis(test::kQuarterTurn);
    ExpectNear(Body()->GetOrigFrame(), offset, 0);
    EXPECT_EQ(x.GetCurValue(), 20);
    x.SetCurValue(0);
    ExpectNear(rig.part.GetXformMat(), PartFrame(), 0);
}

TEST_F(PartSpace, TakesTheOffsetFromTheInitialValuesNotTheCurrentOnes)
{
    // A table that leans by a quarter turn about x, on a C that starts a quarter turn on: at the
    // initial values the joints move nothing, and the home is Translate(0, 0, 100) RotX(90 deg).
    IkJtRot& c = rig.Rotary(rig.part, IkJoint::JtPrimRotZ);
    rig.Body(rig.part, IkXformMat::RotX(test::kQuarterTurn));
    c.SetInitialValue(test::kQuarterTurn);
    c.SetCurValue(1);
    x.SetInitialValue(7);
    rig.stream.SetPartSpaceMatrix(PartFrame(), false);
    IkXformMat offset = IkXformMat::RotX(-test::kQuarterTurn);
    offset.TranslateThis(1, 2, -97);
    offset.RotZThis(test::kQuarterTurn);
    ExpectNear(Body()->GetOrigFrame(), offset, 1e-13);
    x.SetCurValue(7);
    c.SetCurValue(test::kQuarterTurn);
    ExpectNear(rig.part.GetXformMat(), PartFrame(), 1e-13);
}

TEST_F(PartSpace, SetAgainReplacesTheBodyInsteadOfAppendingAnother)
{
    rig.stream.SetPartSpaceMatrix(PartFrame(), false);
    rig.stream.SetPartSpaceMatrix(IkXformMat::Translate(0, 0, 150), true);
    rig.stream.SetHasPartSpaceMatrix(true, false);
    EXPECT_EQ(Flags(), BoolPair(true, false));
    ASSERT_EQ(rig.part.Size(), 3);
    EXPECT_EQ(rig.part.GetAt(2), Body());
    // The body itself was not part of the tip that the offset was taken from.
    ExpectNear(Body()->GetOrigFrame(), IkXformMat::Translate(0, 0, 50), 0);
}

TEST_F(PartSpace, IsTakenOffOnceAndComesBackWithTheSameFrame)
{
    rig.stream.SetPartSpaceMatrix(PartFrame(), false);
    rig.stream.SetHasPartSpaceMatrix(false, true);
    EXPECT_EQ(Flags(), BoolPair(false, true));
    EXPECT_EQ(rig.part.Size(), 2);
    rig.stream.SetHasPartSpaceMatrix(false, false);
    EXPECT_EQ(Flags(), BoolPair(false, false));
    EXPECT_EQ(rig.part.Size(), 2); // nothing more is removed
    rig.stream.SetHasPartSpaceMatrix(true, true);
    EXPECT_EQ(rig.part.GetAt(2), Body());
    ExpectNear(Matrix(), PartFrame(), 0);
}

TEST_F(PartSpace, StartsAsTheIdentityFrame)
{
    rig.stream.SetHasPartSpaceMatrix(true, false);
    ExpectNear(Body()->GetOrigFrame(), IkXformMat::Translate(0, 0, -100), 0);
}

TEST(StreamPartSpace, WithFewerThanTwoChainsStoresFlagsAndFrameAndTouchesNoChain)
{
    Rig rig;
    rig.Body(rig.tool, IkXformMat());
    for (int chains = 0; chains < 2; ++chains) {
        if (chains == 1) {
            rig.stream.AddChain(&rig.tool);
        }
        rig.stream.SetPartSpaceMatrix(PartFrame(), true);
        bool has = false;
        bool fixed = false;
        rig.stream.GetPartSpaceInfo(has, fixed);
        EXPECT_TRUE(has && fixed);
        IkXformMat out;
        rig.stream.GetPartSpaceMatrix(out);
        ExpectNear(out, PartFrame(), 0);
        rig.stream.SetHasPartSpaceMatrix(false, false);
        EXPECT_FALSE(rig.stream.GetHasPartSpaceMatrix());
        rig.stream.SetHasPartSpaceMatrix(true, false);
        EXPECT_TRUE(rig.stream.GetHasPartSpaceMatrix());
        EXPECT_EQ(rig.tool.Size(), 1);
    }
}

TEST(StreamPartSpace, OnAnEmptyPartChainAppendsTheBody)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    rig.stream.SetHasPartSpaceMatrix(false, false); // nothing to take off
    EXPECT_EQ(rig.part.Size(), 0);
    rig.stream.SetPartSpaceMatrix(PartFrame(), false);
    EXPECT_EQ(NodesOf(rig.part), Nodes{&rig.stream.PartSpaceBody});
    ExpectNear(rig.stream.PartSpaceBody.GetOrigFrame(), PartFrame(), 0);
}

TEST(StreamPartSpace, StaysInTheChainOfADestroyedStreamWhichMayBeGoneBefore)
{
    auto tool = std::make_unique<IkChain>();
    IkChain part;
    {
        IkStream stream;
        stream.AddChain(tool.get());
        stream.AddChain(&part);
        stream.SetPartSpaceMatrix(PartFrame(), false);
        tool.reset();
    }
    EXPECT_EQ(part.Size(), 1); // the host takes it off while the stream lives, or not at all
}

// --- locks ---

TEST(StreamLocks, AreHeldOnlyForJointsOfItsChains)
{
    Rig rig;
    IkNode& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    IkJtPrism stranger;
    for (IkNode* node : Nodes{&stranger, nullptr}) {
        EXPECT_FALSE(rig.stream.SetLocalLock(node, true));
        EXPECT_EQ(LocalLock(rig.stream, node), "none");
    }
    EXPECT_TRUE(rig.stream.SetLocalLock(&x, true));
    EXPECT_EQ(LocalLock(rig.stream, &x), "locked");
    EXPECT_TRUE(rig.stream.SetLocalLock(&x, false));
    EXPECT_EQ(LocalLock(rig.stream, &x), "free");
}

TEST(StreamLocks, OfAllRotaryJointsAreSetTogether)
{
    Rig rig;
    IkNode& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    IkNode& a = rig.Rotary(rig.tool, IkJoint::JtPrimRotX);
    IkNode& turning = rig.Linear(rig.part, IkJoint::JtPrimRotArbitrary); // the primitive decides
    IkNode& sliding = rig.Rotary(rig.part, IkJoint::JtPrimTransZ);
    IkNode& falseJoint = rig.Add<FalseJoint>(rig.part);
    rig.Connect();
    IkNode& late = rig.Rotary(rig.part, IkJoint::JtPrimRotZ); // after the chain was registered
    rig.stream.SetLocalLock(&x, true);
    rig.stream.SetLocalLockAllRotary(true);
    const auto locks = [&rig](const Nodes& nodes) {
        std::vector<std::string> all;
        for (IkNode* node : nodes) {
            all.push_back(LocalLock(rig.stream, node));
        }
        return all;
    };
    const Nodes nodes{&x, &a, &turning, &sliding, &falseJoint, &late};
    EXPECT_EQ(locks(nodes),
              (std::vector<std::string>{"locked", "locked", "locked", "free", "free", "none"}));
    rig.stream.SetLocalLockAllRotary(false);
    EXPECT_EQ(locks(nodes),
              (std::vector<std::string>{"locked", "free", "free", "free", "free", "none"}));
    rig.stream.SetLocalLock(&a, true);
    rig.stream.ResetAllLocalLocks(); // the entries stay
    EXPECT_EQ(locks(nodes),
              (std::vector<std::string>{"free", "free", "free", "free", "free", "none"}));
}

TEST(StreamLocks, AnswerByLockType)
{
    struct Row
    {
        int type;
        bool own;
        const char* local; // in the stream
        bool answer;
        bool locked;
    };
    constexpr int kOther = 7;
    const std::vector<Row> rows{
        {IkStream::LocalLockOnly, true, "none", false, false},
        {IkStream::LocalLockOnly, true, "free", true, false},
        {IkStream::LocalLockOnly, false, "locked", true, true},
        {IkStream::GlobalLockOnly, false, "none", true, false},
        {IkStream::GlobalLockOnly, false, "locked", true, false},
        {IkStream::GlobalLockOnly, true, "none", true, true},
        {IkStream::GlobalOrLocalLock, true, "none", true, true},
        {IkStream::GlobalOrLocalLock, true, "free", true, true},
        {IkStream::GlobalOrLocalLock, false, "none", false, false},
        {IkStream::GlobalOrLocalLock, false, "free", true, false},
        {IkStream::GlobalOrLocalLock, false, "locked", true, true},
        {kOther, true, "locked", true, false},
    };
    for (const Row& row : rows) {
        IkJtRot joint;
        joint.SetIsLocked(row.own);
        IkChain chain = ChainOf({&joint});
        IkStream stream;
        if (row.local != std::string("none")) {
            stream.AddChain(&chain);
            stream.SetLocalLock(&joint, row.local == std::string("locked"));
        }
        bool locked = !row.locked;
        const auto type = static_cast<IkStream::JointLockType>(row.type);
        EXPECT_EQ(stream.GetJointLockStatus(&joint, type, locked), row.answer)
            << row.type << row.own << row.local;
        EXPECT_EQ(locked, row.locked) << row.type << row.own << row.local;
    }
}

TEST(StreamLocks, OfNoJointAreNotTold)
{
    const IkStream stream;
    for (const bool before : {false, true}) {
        bool locked = before;
        EXPECT_TRUE(stream.GetJointLockStatus(nullptr, IkStream::GlobalOrLocalLock, locked));
        EXPECT_EQ(locked, before);
    }
}

// --- copy and comparison ---

struct CopiedStream : testing::Test
{
    CopiedStream() : x(rig.Linear(rig.tool, IkJoint::JtPrimTransX))
    {
        rig.Rotary(rig.part, IkJoint::JtPrimRotZ).SetCurValue(0.5);
        rig.Connect();
        rig.stream.SetId(12);
        rig.stream.SetPartSpaceMatrix(PartFrame(), true);
        rig.stream.SetLocalLock(&x, true);
        rig.stream.InitializeIkSolver(false);
        rig.stream.MaxAngleStep = 0.25;
    }

    void ExpectCopied(const IkStream& copy)
    {
        const IkStream& source = rig.stream;
        EXPECT_EQ(copy.Id, 12);
        EXPECT_EQ(copy.Chains, source.Chains);
        EXPECT_TRUE(copy.HasPartSpaceMatrix);
        EXPECT_TRUE(copy.PartSpaceFixed);
        EXPECT_EQ(copy.PartSpaceBody.GetName(), L"PartSpace");
        ExpectNear(copy.PartSpaceBody.GetWorldFrame(), PartFrame(), 0);
        ExpectNear(copy.PartSpaceBody.GetOrigFrame(), source.PartSpaceBody.GetOrigFrame(), 0);
        EXPECT_EQ(copy.LocalLocks, source.LocalLocks);
        EXPECT_EQ(copy.SolverJtStates.GetValVector(), (Values{0, 0.5}));
        EXPECT_EQ(copy.LockedFlags, (std::vector<bool>{true, false}));
        EXPECT_EQ(copy.RotaryFlags, (std::vector<bool>{false, true}));
        EXPECT_EQ(copy.RotaryJointIndices, std::vector<int>{1});
        EXPECT_EQ(copy.FreeJointIndices, std::vector<int>{1});
        EXPECT_EQ(copy.MaxAngleStep, 0.25);
    }

    Rig rig;
    IkJtPrism& x;
};

TEST_F(CopiedStream, TakesEveryField)
{
    const IkStream constructed(rig.stream);
    ExpectCopied(constructed);

    IkJtRot previous;
    IkChain chain = ChainOf({&previous});
    IkStream assigned;
    assigned.AddChain(&chain);
    EXPECT_EQ(&(assigned = rig.stream), &assigned);
    ExpectCopied(assigned);
    EXPECT_EQ(LocalLock(assigned, &previous), "none"); // the map was replaced

    IkStream copied;
    copied.Copy(rig.stream);
    ExpectCopied(copied);
}

TEST_F(CopiedStream, SurvivesBeingAssignedToItself)
{
    IkStream& same = rig.stream;
    rig.stream = same;
    rig.stream.Copy(same);
    ExpectCopied(rig.stream);
}

TEST_F(CopiedStream, HasItsOwnLocksAndChainList)
{
    IkStream copy(rig.stream);
    copy.SetLocalLock(&x, false);
    copy.Reset();
    EXPECT_EQ(LocalLock(rig.stream, &x), "locked");
    EXPECT_EQ(rig.stream.NumChains(), 2);
}

TEST(StreamComparison, LooksOnlyAtTheChainPointers)
{
    IkChain a;
    IkChain b;
    const auto streamOf = [](const std::vector<IkChain*>& chains, int id) {
        IkStream stream;
        stream.SetId(id);
        for (IkChain* chain : chains) {
            stream.AddChain(chain);
        }
        return stream;
    };
    EXPECT_TRUE(streamOf({&a, &b}, 1) == streamOf({&a, &b}, 2));
    EXPECT_FALSE(streamOf({&a, &b}, 1) == streamOf({&b, &a}, 1));
    EXPECT_FALSE(streamOf({&a}, 1) == streamOf({&b}, 1)); // equal chains, other objects
    EXPECT_FALSE(streamOf({&a}, 1) == streamOf({&a, &b}, 1));
    EXPECT_TRUE(streamOf({&b}, 9) < streamOf({&a, &b}, 1));
    EXPECT_FALSE(streamOf({&a, &b}, 1) < streamOf({&b, &a}, 2));
    EXPECT_FALSE(streamOf({&a, &b}, 1) < streamOf({&a}, 2));
}

// --- dumps ---

class Dumped : public IkBody
{
  public:
    void TraceDump(const wchar_t* label) const override { labels.emplace_back(label); }
    mutable std::vector<std::wstring> labels;
};

TEST(StreamDumps, PassEachNodeALabelOneTabDeep)
{
    Rig rig;
    auto& inTool = rig.Add<Dumped>(rig.tool);
    auto& inPart = rig.Add<Dumped>(rig.part);
    rig.Connect();
    rig.stream.TraceDumpIkNodeInfo(L"ignored");
    EXPECT_EQ(inTool.labels, std::vector<std::wstring>{L"\t"});
    EXPECT_EQ(inPart.labels, std::vector<std::wstring>{L"\t"});
}

TEST(StreamDumps, ChangeNothing)
{
    Rig rig;
    IkNode& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Add<FalseJoint>(rig.tool);
    rig.Connect();
    rig.stream.SetLocalLock(&x, true);
    rig.stream.InitializeIkSolver(false);
    const IkStream before(rig.stream);
    rig.stream.TraceDump();
    rig.stream.TraceDump(L"label");
    rig.stream.TraceDumpIkNodeInfo();
    rig.stream.TraceDumpLocks();
    rig.stream.SolverStatusTraceDump();
    EXPECT_EQ(rig.stream.LocalLocks, before.LocalLocks);
    EXPECT_EQ(rig.stream.LockedFlags, before.LockedFlags);
    EXPECT_EQ(rig.stream.FreeJointIndices, before.FreeJointIndices);
    EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), before.SolverJtStates.GetValVector());
    EXPECT_TRUE(rig.stream == before);
    IkStream().TraceDump();
    IkStream().TraceDumpIkNodeInfo();
    IkStream().SolverStatusTraceDump();
}

} // namespace
