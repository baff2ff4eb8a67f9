// One suite of properties, every fixture machine.

#include <array>
#include <cmath>
#include <iostream>

#include <gtest/gtest.h>

#include "properties/ClosedForms.h"
#include "properties/EveryMachine.h"
#include "support/Bits.h"
#include "support/Repeat.h"

using test::Angle;
using test::BitsOf;
using test::Distance;
using test::EveryMachine;
using test::kQuarterTurn;
using test::PoseAt;
using test::Random;
using test::RandomJointValues;
using test::StartNear;

namespace
{

// What the tolerance 1e-8 of the objective promises: its square root as a distance, and as an angle
// the one whose cosine is 1.523e-10 below 1, since directions that near count as met.
constexpr double kPromisedDistance = 1e-4;                // [mm]
const double kPromisedAngle = std::acos(1.0 - 1.523e-10); // [rad], 0.0010 deg

} // namespace

TEST_P(EveryMachine, ForwardKinematicsIsTheClosedForm)
{
    test::Repeat(500, 21, [this](Random& random) {
        const std::vector<double> values = RandomJointValues(fixture, random);
        const IkXformMat pose = PoseAt(fixture, values).GetCompleteState();
        const test::ToolPose expected = test::ClosedForm(fixture.name, values);
        for (int i = 0; i < 3; ++i) {
            const auto k = static_cast<std::size_t>(i);
            ASSERT_NEAR(pose[i][3], expected.position.at(k), 1e-9);
            ASSERT_NEAR(pose[i][2], expected.direction.at(k), 1e-12);
        }
        ASSERT_TRUE(pose.IsOrthogonal(1e-12));
    });
}

TEST_P(EveryMachine, ForwardKinematicsTakesValuesFromTheJointsWhenNoneAreGiven)
{
    test::Repeat(50, 22, [this](Random& random) {
        const std::vector<double> values = RandomJointValues(fixture, random);
        fixture.SetJoints(values);
        ASSERT_EQ(BitsOf(stream.SolveFK(false).GetCompleteState()),
                  BitsOf(PoseAt(fixture, values).GetCompleteState()));
    });
}

TEST_P(EveryMachine, PartAndToolSideViewsAgree)
{
    test::Repeat(200, 23, [this](Random& random) {
        IkJtStateVector states = fixture.States(RandomJointValues(fixture, random));
        IkXformMat baseToPart;
        IkXformMat baseToTool;
        const IkEndState partToTool =
            stream.SolveFK(states, false, &baseToPart, &baseToTool, false);
        const IkXformMat composed = baseToPart * partToTool.GetCompleteState();
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                ASSERT_NEAR(composed[i][j], baseToTool[i][j], 1e-9);
            }
        }
    });
}

TEST_P(EveryMachine, InverseKinematicsReturnsToReachablePoses)
{
    long tried = 0;
    long converged = 0;
    double worstDistance = 0.0; // [mm]
    double worstAngle = 0.0;    // [rad]
    test::Repeat(300, 24, [&](Random& random) {
        const std::vector<double> wanted = RandomJointValues(fixture, random);
        IkEndState target = PoseAt(fixture, wanted);
        if (fixture.name == "SixAxisArm") { // the whole orientation, else the roll is left open
            std::array<bool, 4> filter{true, true, true, true};
            target.SetFilter(filter.data());
        }
        fixture.SetJoints(StartNear(fixture, wanted, random));
        IkJtStateVector result;
        ++tried;
        if (!stream.SolveIK(target, result, false, IkJoint::JtLimitNone, false)) {
            return;
        }
        ++converged;
        ASSERT_EQ(result.Size(), static_cast<int>(fixture.joints.size()));
        const IkEndState reached = PoseAt(fixture, result.GetValVector());
        worstDistance = std::max(worstDistance, Distance(reached, target));
        worstAngle = std::max(worstAngle, Angle(reached, target));
        ASSERT_LE(worstDistance, kPromisedDistance);
        // A cosine is known to 1e-16, a chord is not: leave room for that.
        ASSERT_LE(worstAngle, kPromisedAngle * (1 + 1e-5));
    });
    const double wantedShare = fixture.name == "SixAxisArm" ? 0.98 : 0.999;
    std::cout << fixture.name << ": " << converged << " of " << tried << " converged, worst "
              << worstDistance << " mm and " << worstAngle * 90 / kQuarterTurn << " deg\n";
    if (tried > 1) {
        EXPECT_GE(static_cast<double>(converged), wantedShare * static_cast<double>(tried));
    }
}

TEST_P(EveryMachine, SolvesStayWithinLimitsAndReportWhatDoesNot)
{
    test::Repeat(200, 25, [this](Random& random) {
        const std::vector<double> start = RandomJointValues(fixture, random);
        IkEndState target = PoseAt(fixture, RandomJointValues(fixture, random));
        fixture.SetJoints(start);
        IkJtStateVector result;
        const bool isSolved = stream.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
        for (int i = 0; i < result.Size(); ++i) {
            const IkJtState& state = result.GetState(i);
            ASSERT_EQ(test::Contains(*state.GetJoint(), state.GetValue()), isSolved);
        }
    });
}

TEST_P(EveryMachine, LockedJointsStayAndJointsAreNeverWritten)
{
    test::Repeat(200, 26, [this](Random& random) {
        const std::vector<double> start = RandomJointValues(fixture, random);
        IkEndState target = PoseAt(fixture, StartNear(fixture, start, random));
        fixture.SetJoints(start);
        const int count = static_cast<int>(fixture.joints.size());
        const auto own = static_cast<std::size_t>(random.Below(count));
        const auto local = static_cast<std::size_t>(random.Below(count));
        const bool lockRotary = random.OneIn(3);
        fixture.joints[own]->SetIsLocked(true);
        stream.SetLocalLock(fixture.joints[local], true);
        IkJtStateVector result;
        stream.SolveIK(target, result, false, IkJoint::JtLimitNone, lockRotary);
        const IkJtStateVector working = stream.SolverJtStates;
        fixture.joints[own]->SetIsLocked(false);
        stream.ResetAllLocalLocks();

        ASSERT_EQ(fixture.JointValues(), start);
        const std::vector<double> ended = working.GetValVector();
        for (std::size_t i = 0; i < start.size(); ++i) {
            const bool isHeld =
                i == own || i == local || (lockRotary && fixture.joints[i]->IsRotary());
            if (isHeld) {
                ASSERT_EQ(BitsOf(ended[i]), BitsOf(start[i]));
            }
        }
    });
}

TEST_P(EveryMachine, TheSameSolveTwiceGivesTheSameBits)
{
    test::Repeat(100, 27, [this](Random& random) {
        IkEndState target = PoseAt(fixture, RandomJointValues(fixture, random));
        fixture.SetJoints(RandomJointValues(fixture, random));
        IkJtStateVector first;
        const bool isSolved = stream.SolveIK(target, first, false, IkJoint::JtLimitAll, false);
        const IkStream copy(stream);
        IkStream other(copy);
        IkJtStateVector second;
        IkJtStateVector third;
        ASSERT_EQ(stream.SolveIK(target, second, false, IkJoint::JtLimitAll, false), isSolved);
        ASSERT_EQ(other.SolveIK(target, third, false, IkJoint::JtLimitAll, false), isSolved);
        ASSERT_EQ(BitsOf(first), BitsOf(second));
        ASSERT_EQ(BitsOf(first), BitsOf(third));
    });
}

TEST_P(EveryMachine, APartSpaceFrameMovesWithThePartOrStandsStill)
{
    test::Repeat(100, 28, [this](Random& random) {
        IkXformMat baseToSpace = IkXformMat::Translate(10, -20, 30);
        baseToSpace.RotXThis(random.Between(-1, 1));
        IkJtStateVector states = fixture.States(RandomJointValues(fixture, random));
        IkXformMat baseToPart;
        IkXformMat riding;
        IkXformMat standing;
        stream.SolveFK(states, false, &baseToPart, nullptr, false);
        // The part frame with every joint at its initial value, 0.
        IkJtStateVector home = fixture.States(std::vector<double>(fixture.joints.size(), 0.0));
        IkXformMat baseToHome;
        stream.SolveFK(home, false, &baseToHome, nullptr, false);

        stream.SetPartSpaceMatrix(baseToSpace, false);
        stream.SolveFK(states, false, &riding, nullptr, false);
        stream.SetPartSpaceMatrix(baseToSpace, true);
        stream.SolveFK(states, false, &standing, nullptr, false);
        stream.SetHasPartSpaceMatrix(false, false);

        const IkXformMat expected = baseToPart * baseToHome.QuickInvert() * baseToSpace;
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                ASSERT_NEAR(riding[i][j], expected[i][j], 1e-9);
                ASSERT_EQ(BitsOf(standing[i][j]), BitsOf(baseToSpace[i][j]));
            }
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Fixtures, EveryMachine, ::testing::ValuesIn(test::AllFixtures()),
                         [](const auto& tested) { return tested.param.name; });
