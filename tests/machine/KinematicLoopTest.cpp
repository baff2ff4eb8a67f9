#include "machine/KinematicLoop.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "geometry/Trace.h"
#include "machine/Rig.h"
#include "support/Bits.h"
#include "support/Fixtures.h"
#include "support/RandomMachine.h"
#include "support/Repeat.h"

namespace
{

using test::Fixture;
using test::NumberBits;
using test::Random;
using test::Rig;
using trunnion::Affine;
using trunnion::ChainProduct;
using trunnion::KinematicLoop;

std::vector<std::uint64_t> RowBits(const double* rows)
{
    std::vector<std::uint64_t> bits;
    for (int i = 0; i < 12; ++i) {
        bits.push_back(NumberBits(rows[i]));
    }
    return bits;
}

/// The pose with every node asked.
std::vector<std::uint64_t> AskedPose(IkStream& stream, IkJtStateVector& states, bool toolOnly)
{
    return RowBits(stream.PoseByNodes(states, nullptr, nullptr, toolOnly)[0]);
}

void MoveAtRandom(IkJtStateVector& states, Random& random)
{
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        if (!random.OneIn(3)) { // some stand still, so that some products are kept
            state.SetValue(state.GetValue() + random.Between(-0.5, 0.5));
        }
    }
}

TEST(KinematicLoop, GivesThePoseThatTheNodesGiveVectorAfterVector)
{
    test::Repeat(300, 1, [](Random& random) {
        const Fixture fixture = test::RandomMachine(random);
        IkStream& stream = *fixture.stream;
        const bool toolOnly = random.OneIn(4);
        IkJtStateVector states = stream.GetJointStates();
        KinematicLoop loop(stream, toolOnly);
        ASSERT_TRUE(loop.Settle(states));
        for (int i = 0; i < 5; ++i) {
            Affine pose;
            loop.Pose(states, pose);
            ASSERT_EQ(RowBits(pose.e), AskedPose(stream, states, toolOnly)) << "vector " << i;
            MoveAtRandom(states, random);
        }
    });
}

TEST(KinematicLoop, GivesThePosesOfSingleMovesAndStaysWhereItIs)
{
    test::Repeat(300, 2, [](Random& random) {
        const Fixture fixture = test::RandomMachine(random);
        IkStream& stream = *fixture.stream;
        IkJtStateVector states = stream.GetJointStates();
        KinematicLoop loop(stream, false);
        ASSERT_TRUE(loop.Settle(states));
        loop.Prepare(states);
        for (int i = 0; i < states.Size(); ++i) {
            IkJtState& state = states.GetState(i);
            const double value = state.GetValue();
            state.SetValue(value + 0.1);
            Affine pose;
            loop.PoseMoved(states, i, pose);
            const std::vector<std::uint64_t> expected = AskedPose(stream, states, false);
            EXPECT_EQ(RowBits(pose.e), expected);
            double offset[3];
            Affine slid = loop.LastPose();
            if (loop.TryOffsetSlid(i, value + 0.1, offset)) {
                EXPECT_FALSE(state.GetJoint()->IsRotary());
                for (int row = 0; row < 3; ++row) {
                    slid.e[4 * row + 3] = offset[row];
                }
                EXPECT_EQ(RowBits(slid.e), expected);
            }
            state.SetValue(value);
        }
    });
}

TEST(KinematicLoop, AsksTheNodesWhereElementsAreNotFinite)
{
    for (const double wrong : {std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), 1e308}) {
        const Fixture mill = test::HeadHeadMill();
        IkJtStateVector states = mill.States({1, wrong, 3, 0.4, 0.5});
        mill.stream->SetPartSpaceMatrix(IkXformMat::Translate(-1e308, -1e308, 0), false);
        KinematicLoop loop(*mill.stream, false);
        ASSERT_TRUE(loop.Settle(states));
        Affine pose;
        EXPECT_FALSE(loop.TryPose(states, pose));
        double offset[3];
        EXPECT_FALSE(loop.TryOffsetSlid(0, 2, offset));
        loop.Pose(states, pose);
        EXPECT_EQ(RowBits(pose.e), AskedPose(*mill.stream, states, false));
        states.GetState(1).SetValue(2);
        loop.PoseMoved(states, 1, pose); // finite again in this coordinate
        EXPECT_EQ(RowBits(pose.e), AskedPose(*mill.stream, states, false));
    }
}

TEST(KinematicLoop, KnowsNoOffsetOfWhichOneCoordinateIsInfinite)
{
    constexpr double kNearlyAll = 1.7e308; // of what a double holds
    Rig rig;
    rig.Body(rig.tool, IkXformMat::Translate(kNearlyAll, kNearlyAll, kNearlyAll));
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Linear(rig.tool, IkJoint::JtPrimTransY);
    rig.Linear(rig.tool, IkJoint::JtPrimTransZ);
    rig.stream.AddChain(&rig.tool); // without a part side each joint has its coordinate
    IkJtStateVector states = rig.stream.GetJointStates();
    KinematicLoop loop(rig.stream, false);
    ASSERT_TRUE(loop.Settle(states));
    loop.Prepare(states);
    for (int axis = 0; axis < 3; ++axis) {
        double offset[3];
        EXPECT_TRUE(loop.TryOffsetSlid(axis, -kNearlyAll, offset));
        EXPECT_EQ(offset[axis], 0);
        EXPECT_FALSE(loop.TryOffsetSlid(axis, kNearlyAll, offset)) << axis;
    }
}

TEST(KinematicLoop, KnowsNoOffsetOnceItIsNotSettledAnyMore)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    IkBody& body = rig.Body(rig.tool, IkXformMat());
    rig.Connect();
    IkJtStateVector states = rig.stream.GetJointStates();
    KinematicLoop loop(rig.stream, false);
    ASSERT_TRUE(loop.Settle(states));
    loop.Prepare(states);
    double offset[3];
    EXPECT_TRUE(loop.TryOffsetSlid(0, 5, offset));
    IkXformMat frame;
    frame[3][3] = 2;
    body.SetOrigFrame(frame);
    ASSERT_FALSE(loop.Settle(states));
    EXPECT_FALSE(loop.TryOffsetSlid(0, 5, offset));
}

TEST(KinematicLoop, SettlesNothingWhereANodeIsAHostsOwn)
{
    for (const bool inTool : {true, false}) {
        Rig rig;
        rig.Linear(rig.tool, IkJoint::JtPrimTransX);
        rig.Linear(rig.part, IkJoint::JtPrimTransY);
        auto& counting = rig.Add<test::CountingBody>(inTool ? rig.tool : rig.part);
        rig.Connect();
        IkJtStateVector states = rig.stream.GetJointStates();
        KinematicLoop loop(rig.stream, false);
        EXPECT_FALSE(loop.Settle(states));
        for (int i = 1; i <= 3; ++i) {
            Affine pose;
            loop.Pose(states, pose);
            EXPECT_EQ(counting.count, i);
        }
    }
}

TEST(KinematicLoop, SettlesNothingForAFrameThatIsNotAffineNorForTracesNorWithoutJoints)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    IkXformMat frame;
    frame[3][0] = 0.5;
    IkBody& body = rig.Body(rig.tool, frame);
    rig.Connect();
    IkJtStateVector states = rig.stream.GetJointStates();
    KinematicLoop loop(rig.stream, false);
    EXPECT_FALSE(loop.Settle(states));
    body.SetOrigFrame(IkXformMat());
    EXPECT_TRUE(loop.Settle(states));
    EXPECT_FALSE(loop.Settle(IkJtStateVector()));
    trunnion::Tracing().streamForwardKinematics = true;
    EXPECT_FALSE(loop.Settle(states));
    trunnion::Tracing().streamForwardKinematics = false;
    EXPECT_FALSE(KinematicLoop(*std::make_unique<IkStream>(), false).Settle(states));
}

TEST(KinematicLoop, TakesFramesOfWhichOneElementIsAnother)
{
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            Rig rig;
            rig.Linear(rig.tool, IkJoint::JtPrimTransX);
            IkXformMat frame;
            frame[row][column] += 0.5;
            rig.Body(rig.tool, frame);
            rig.Body(rig.tool, IkXformMat::Translate(1, 20, 300));
            rig.Connect();
            IkJtStateVector states = rig.stream.GetJointStates();
            states.GetState(0).SetValue(7);
            KinematicLoop loop(rig.stream, false);
            ASSERT_TRUE(loop.Settle(states));
            Affine pose;
            loop.Pose(states, pose);
            EXPECT_EQ(RowBits(pose.e), AskedPose(rig.stream, states, false))
                << row << ", " << column;
        }
    }
}

/// Alternating joints and bodies, more than a chain keeps in itself and more than states it keeps a
/// table for.
TEST(ChainProduct, TakesChainsOfAnyLength)
{
    Rig rig;
    for (int i = 0; i < 40; ++i) {
        rig.Linear(rig.tool, i % 2 == 0 ? IkJoint::JtPrimTransX : IkJoint::JtPrimTransZ);
        rig.Rotary(rig.tool, i % 2 == 0 ? IkJoint::JtPrimRotY : IkJoint::JtPrimRotX);
        rig.Body(rig.tool, IkXformMat::Translate(i, 1, -1));
    }
    rig.Connect();
    IkJtStateVector states = rig.stream.GetJointStates();
    ASSERT_EQ(states.Size(), 80);
    Random random(4);
    MoveAtRandom(states, random);
    ChainProduct product;
    ASSERT_TRUE(product.Settle(rig.tool, states));
    EXPECT_EQ(RowBits(product.Evaluate(states)), RowBits(rig.tool.GetXformMat(states)[0]));
    for (const int index : {0, 15, 16, 17, 79}) {
        EXPECT_TRUE(product.Moves(index));
        EXPECT_EQ(product.Slides(index), index % 2 == 0);
        IkJtStateVector moved = states;
        moved.GetState(index).SetValue(0.25);
        Affine pose;
        product.EvaluateMoved(index, 0.25, pose);
        EXPECT_EQ(RowBits(pose.e), RowBits(rig.tool.GetXformMat(moved)[0])) << index;
    }
    EXPECT_FALSE(product.Moves(80));
}

TEST(ChainProduct, MovesAJointWhereverItStandsInTheChain)
{
    Rig rig;
    IkJtRot& turn = rig.Rotary(rig.tool, IkJoint::JtPrimRotZ);
    IkJtPrism& slide = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    slide.SetDirectionReversed(true);
    rig.tool.AddNode(&turn);
    rig.tool.AddNode(&slide);
    IkJtStateVector states;
    states.AddState(IkJtState(&slide, 2.0)); // the turn stands at its own value
    turn.SetCurValue(std::acos(-1.0) / 2);
    ChainProduct product;
    ASSERT_TRUE(product.Settle(rig.tool, states));
    EXPECT_EQ(RowBits(product.Evaluate(states)), RowBits(rig.tool.GetXformMat(states)[0]));
    double offset[3];
    product.EvaluateSlid(0, 3.0, offset);
    // A quarter turn, 3 back, a quarter turn, 3 back again: along -y, then along x.
    EXPECT_NEAR(offset[0], 3, 1e-12);
    EXPECT_NEAR(offset[1], -3, 1e-12);
    EXPECT_EQ(offset[2], 0);
}

} // namespace
