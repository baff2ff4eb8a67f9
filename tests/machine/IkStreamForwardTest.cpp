#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "IkStream.h"
#include "machine/Rig.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

namespace
{

using test::BitsOf;
using test::CountingBody;
using test::ExpectNear;
using test::kQuarterTurn;
using test::PositionOf;
using test::Rig;
using test::Values;

constexpr double kRounding = 1e-12; // of lengths up to a metre [length]

IkXformMat Sentinel()
{
    return IkXformMat::Translate(-7, -8, -9);
}

test::Filter FilterOf(const IkEndState& state)
{
    test::Filter filter{};
    state.GetFilter(filter.data());
    return filter;
}

/// Tool: a prism along x. Part: a prism along y, then a turn about z.
struct ForwardKinematics : testing::Test
{
    ForwardKinematics()
        : x(rig.Linear(rig.tool, IkJoint::JtPrimTransX)), toolTip(rig.Add<CountingBody>(rig.tool)),
          y(rig.Linear(rig.part, IkJoint::JtPrimTransY)),
          c(rig.Rotary(rig.part, IkJoint::JtPrimRotZ)), partTip(rig.Add<CountingBody>(rig.part))
    {
        rig.Connect();
    }

    IkJtStateVector States(const Values& values)
    {
        IkJtStateVector states = rig.stream.GetJointStates();
        EXPECT_TRUE(states.SetValVector(values));
        return states;
    }
    Values JointValues() { return rig.stream.GetJointStates().GetValVector(); }

    Rig rig;
    IkJtPrism& x;
    CountingBody& toolTip;
    IkJtPrism& y;
    IkJtRot& c;
    CountingBody& partTip;
};

TEST_F(ForwardKinematics, GivesTheToolInPartCoordinatesWithTheDefaultFilter)
{
    IkJtStateVector states = States({10, 4, kQuarterTurn});
    const IkEndState pose = rig.stream.SolveFK(states, false, nullptr, nullptr, false);
    // Seen from the part the tool lies at RotZ(-90 deg) (10, -4, 0) = (-4, -10, 0).
    ExpectNear(PositionOf(pose.GetCompleteState()), {-4, -10, 0}, kRounding);
    EXPECT_EQ(FilterOf(pose), test::kPositionAndZ);
    EXPECT_EQ(toolTip.count, 1);
    EXPECT_EQ(partTip.count, 1);
}

TEST_F(ForwardKinematics, WritesBothFramesWhereAsked)
{
    IkJtStateVector states = States({10, 4, 0});
    IkXformMat part = Sentinel();
    IkXformMat tool = Sentinel();
    const IkEndState pose = rig.stream.SolveFK(states, false, &part, &tool, false);
    ExpectNear(part, IkXformMat::Translate(0, 4, 0), 0);
    ExpectNear(tool, IkXformMat::Translate(10, 0, 0), 0);
    ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(10, -4, 0), 0);
}

TEST_F(ForwardKinematics, ToolOnlyGivesTheToolInMachineCoordinatesAndAsksNoPartNode)
{
    IkJtStateVector states = States({10, 4, 1});
    const IkEndState pose = rig.stream.SolveFK(states, false, nullptr, nullptr, true);
    ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(10, 0, 0), 0);
    EXPECT_EQ(partTip.count, 0);
}

TEST_F(ForwardKinematics, ToolOnlyWithPartOutGivesTheIdentityPose)
{
    IkJtStateVector states = States({10, 4, 0});
    IkXformMat part = Sentinel();
    IkXformMat tool = Sentinel();
    IkEndState pose = rig.stream.SolveFK(states, false, &part, nullptr, true);
    ExpectNear(pose.GetCompleteState(), IkXformMat(), 0);
    ExpectNear(part, IkXformMat::Translate(0, 4, 0), 0);
    part = Sentinel();
    pose = rig.stream.SolveFK(states, false, &part, &tool, true);
    ExpectNear(pose.GetCompleteState(), IkXformMat(), 0);
    ExpectNear(part, IkXformMat::Translate(0, 4, 0), 0);
    ExpectNear(tool, IkXformMat::Translate(10, 0, 0), 0);
}

TEST_F(ForwardKinematics, CommitsTheValuesOnlyWhenAsked)
{
    IkJtStateVector states = States({10, 4, 1});
    rig.stream.SolveFK(states, false, nullptr, nullptr, false);
    EXPECT_EQ(JointValues(), (Values{0, 0, 0}));
    rig.stream.SolveFK(states, true, nullptr, nullptr, false);
    EXPECT_EQ(JointValues(), (Values{10, 4, 1}));
}

TEST_F(ForwardKinematics, TakesTheCurrentValueOfAJointThatTheStatesDoNotHold)
{
    y.SetCurValue(3);
    IkJtStateVector states;
    states.AddState(IkJtState(&x, 10));
    const IkEndState pose = rig.stream.SolveFK(states, true, nullptr, nullptr, false);
    ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(10, -3, 0), 0);
    EXPECT_EQ(JointValues(), (Values{10, 3, 0}));
}

TEST_F(ForwardKinematics, WithoutStatesGivesTheDefaultPoseAndWritesNothing)
{
    x.SetCurValue(5);
    IkJtStateVector none;
    IkXformMat part = Sentinel();
    IkXformMat tool = Sentinel();
    const IkEndState pose = rig.stream.SolveFK(none, true, &part, &tool, false);
    ExpectNear(pose.GetCompleteState(), IkXformMat(), 0);
    ExpectNear(part, Sentinel(), 0);
    ExpectNear(tool, Sentinel(), 0);
    EXPECT_EQ(toolTip.count, 0);
    EXPECT_EQ(x.GetCurValue(), 5);
}

TEST_F(ForwardKinematics, WithoutChainsGivesTheDefaultPoseAndCommitsNothing)
{
    IkJtStateVector states = States({10, 4, 1});
    IkXformMat tool = Sentinel();
    const IkEndState pose = IkStream().SolveFK(states, true, nullptr, &tool, false);
    ExpectNear(pose.GetCompleteState(), IkXformMat(), 0);
    ExpectNear(tool, Sentinel(), 0);
    EXPECT_EQ(JointValues(), (Values{0, 0, 0}));
}

TEST_F(ForwardKinematics, OfAToolChainAloneIgnoresToolOnlyAndPartOut)
{
    IkStream toolStream;
    toolStream.AddChain(&rig.tool);
    IkJtStateVector states = States({10, 4, 1});
    for (const bool toolOnly : {false, true}) {
        IkXformMat part = Sentinel();
        const IkEndState pose = toolStream.SolveFK(states, false, &part, nullptr, toolOnly);
        ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(10, 0, 0), 0);
        ExpectNear(part, Sentinel(), 0);
    }
}

TEST_F(ForwardKinematics, LeavesFurtherChainsOut)
{
    IkChain third;
    auto& body = rig.Add<CountingBody>(third);
    rig.stream.AddChain(&third);
    IkJtStateVector states = States({10, 4, 0});
    const IkEndState pose = rig.stream.SolveFK(states, false, nullptr, nullptr, false);
    ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(10, -4, 0), 0);
    EXPECT_EQ(body.count, 0);
}

TEST_F(ForwardKinematics, AtTheCurrentValuesNeedsNoStates)
{
    x.SetCurValue(10);
    y.SetCurValue(4);
    ExpectNear(rig.stream.SolveFK(false).GetCompleteState(), IkXformMat::Translate(10, -4, 0), 0);
    ExpectNear(rig.stream.SolveFK(true).GetCompleteState(), IkXformMat::Translate(10, 0, 0), 0);
    EXPECT_EQ(FilterOf(rig.stream.SolveFK(false)), test::kPositionAndZ);
    EXPECT_EQ(JointValues(), (Values{10, 4, 0}));
}

TEST_F(ForwardKinematics, AtTheCurrentValuesLeavesTheJointsAlone)
{
    x.SetDirty(false); // a value that is set, if it be the same, marks a joint
    rig.stream.SolveFK(false);
    EXPECT_FALSE(x.IsDirty());
}

TEST_F(ForwardKinematics, FixedPartSpaceStandsStillWhileThePartSideMoves)
{
    IkJtStateVector states = States({10, 4, 0});
    for (const bool fixed : {true, false}) {
        rig.stream.SetPartSpaceMatrix(IkXformMat::Translate(1, 0, 0), fixed);
        IkXformMat part;
        const IkEndState pose = rig.stream.SolveFK(states, false, &part, nullptr, false);
        const double moved = fixed ? 0 : 4;
        ExpectNear(part, IkXformMat::Translate(1, moved, 0), 0);
        ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(9, -moved, 0), 0);
        EXPECT_EQ(partTip.count, fixed ? 1 : 3); // set-up once each, the second pose once
    }
}

TEST_F(ForwardKinematics, FixedWithoutPartSpaceIsNotFixed)
{
    rig.stream.SetHasPartSpaceMatrix(false, true);
    IkJtStateVector states = States({10, 4, 0});
    const IkEndState pose = rig.stream.SolveFK(states, false, nullptr, nullptr, false);
    ExpectNear(pose.GetCompleteState(), IkXformMat::Translate(10, -4, 0), 0);
}

TEST_F(ForwardKinematics, LeavesTheStreamsFieldsAlone)
{
    rig.stream.InitializeIkSolver(false);
    IkJtStateVector states = States({10, 4, 1});
    rig.stream.SolveFK(states, true, nullptr, nullptr, false);
    EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), (Values{0, 0, 0}));
    EXPECT_EQ(states.GetValVector(), (Values{10, 4, 1}));
}

TEST_F(ForwardKinematics, CarriesNonFiniteValuesThrough)
{
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        IkJtStateVector states = States({value, 0, 0});
        const IkEndState pose = rig.stream.SolveFK(states, false, nullptr, nullptr, false);
        EXPECT_FALSE(std::isfinite(pose.GetCompleteState()[0][3]));
    }
}

TEST(ForwardKinematicsOfAMachine, MatchesTheClosedFormOfATiltingTable)
{
    const test::Fixture mill = test::TableTableMill();
    // The nose stands at (x, y, z + 500), the table 50 out along the A axis' z at height 100. With
    // A = -90 deg the part sees the nose at RotX(90 deg) (x, y, z + 400), lowered by 50:
    // (x, -(z + 400), y - 50), and the tool axis z as (0, -1, 0).
    IkJtStateVector states = mill.States({10, 20, -30, -kQuarterTurn, 0});
    const IkEndState state = mill.stream->SolveFK(states, false, nullptr, nullptr, false);
    const IkXformMat& pose = state.GetCompleteState();
    ExpectNear(PositionOf(pose), {10, -370, -30}, kRounding);
    ExpectNear(Values{pose[0][2], pose[1][2], pose[2][2]}, {0, -1, 0}, kRounding);
}

// --- host-defined nodes ---

/// Moves twice as far along x as another joint stands.
class Follower : public IkJoint
{
  public:
    explicit Follower(const IkJoint& ofMaster) : master(ofMaster) {}
    using IkJoint::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        double value = master.GetCurValue();
        states.FindValFromPtr(&master, value);
        return IkXformMat::Translate(2 * value, 0, 0);
    }

  private:
    const IkJoint& master;
};

TEST(ForwardKinematicsOfHostNodes, AsksAJointKindThroughItsVirtualFunctionOfTheValue)
{
    Rig rig;
    rig.Add<test::FunctionJoint>(rig.tool, [](double v) { // a screw of 2 a radian
        IkXformMat motion = IkXformMat::RotZ(v);
        motion.TranslateThis(0, 0, 2 * v);
        return motion;
    });
    rig.Connect();
    IkJtStateVector states = rig.stream.GetJointStates();
    states.SetValVector({kQuarterTurn});
    IkXformMat expected = IkXformMat::RotZ(kQuarterTurn);
    expected.TranslateThis(0, 0, 2 * kQuarterTurn);
    ExpectNear(rig.stream.SolveFK(states, false, nullptr, nullptr, false).GetCompleteState(),
               expected, 0);
}

TEST(ForwardKinematicsOfHostNodes, AsksAJointKindThroughItsVirtualFunctionOfTheStates)
{
    Rig rig;
    const IkJoint& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Add<Follower>(rig.part, x);
    rig.Connect();
    IkJtStateVector states = rig.stream.GetJointStates();
    states.SetValVector({10, 77});
    ExpectNear(rig.stream.SolveFK(states, false, nullptr, nullptr, false).GetCompleteState(),
               IkXformMat::Translate(-10, 0, 0), 0); // 10 - 2 * 10
}

// --- a new part space ---

TEST_F(ForwardKinematics, SolveNewPartSpaceCarriesAFrameAtTheTipOfThePartChain)
{
    IkJtStateVector states = States({10, 4, kQuarterTurn});
    IkXformMat offset = IkXformMat::Translate(2, 0, 0);
    IkXformMat out = Sentinel();
    ASSERT_TRUE(rig.stream.SolveNewPartSpace(states, offset, out));
    // y moves 4, then the offset is turned by a quarter: (0, 4) + (0, 2).
    IkXformMat expected = IkXformMat::Translate(0, 6, 0);
    expected.RotZThis(kQuarterTurn);
    ExpectNear(out, expected, kRounding);
    EXPECT_EQ(JointValues(), (Values{0, 0, 0}));
    ExpectNear(offset, IkXformMat::Translate(2, 0, 0), 0);
}

TEST_F(ForwardKinematics, SolveNewPartSpaceLeavesThePresentPartSpaceOut)
{
    IkJtStateVector states = States({10, 4, 0});
    IkXformMat offset = IkXformMat::Translate(2, 0, 0);
    rig.stream.SetPartSpaceMatrix(IkXformMat::Translate(0, 0, 50), true);
    IkXformMat out;
    ASSERT_TRUE(rig.stream.SolveNewPartSpace(states, offset, out));
    ExpectNear(out, IkXformMat::Translate(2, 4, 0), 0);
    EXPECT_EQ(rig.part.Size(), 4);
    IkXformMat partSpace;
    rig.stream.GetPartSpaceMatrix(partSpace);
    ExpectNear(partSpace, IkXformMat::Translate(0, 0, 50), 0);
}

TEST_F(ForwardKinematics, SolveNewPartSpaceNeedsExactlyTwoChainsAndSomeStates)
{
    IkJtStateVector states = States({10, 4, 0});
    IkJtStateVector none;
    IkXformMat offset;
    IkXformMat out = Sentinel();
    EXPECT_FALSE(rig.stream.SolveNewPartSpace(none, offset, out));
    IkStream stream;
    EXPECT_FALSE(stream.SolveNewPartSpace(states, offset, out));
    stream.AddChain(&rig.tool);
    EXPECT_FALSE(stream.SolveNewPartSpace(states, offset, out));
    stream.AddChain(&rig.part);
    stream.AddChain(&rig.part);
    EXPECT_FALSE(stream.SolveNewPartSpace(states, offset, out));
    ExpectNear(out, Sentinel(), 0);
}

TEST(SolveNewPartSpace, OfAnEmptyPartChainIsTheFrameItself)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    IkJtStateVector states = rig.stream.GetJointStates();
    IkXformMat frame = IkXformMat::Translate(1, 2, 3);
    IkXformMat out = Sentinel();
    EXPECT_TRUE(rig.stream.SolveNewPartSpace(states, frame, out));
    EXPECT_EQ(BitsOf(out), BitsOf(frame));
}

} // namespace
