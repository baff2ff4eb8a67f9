#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "ArmWays.h"
#include "MillText.h"
#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/SampledSolver.h"
#include "support/LoadedFixture.h"

namespace
{

using host::AreSameSolution;
using host::JointValues;
using host::kPi;
using host::PathTarget;
using host::PointSolver;
using host::SampledSolver;

PathTarget TargetAt(PointSolver& solver, const JointValues& joints)
{
    const IkXformMat pose = solver.PoseAt(joints);
    return {{host::Column(pose, 3), host::Column(pose, 2)}, host::Column(pose, 0)};
}

class SampledArm : public testing::Test
{
  protected:
    void ExpectAt(const JointValues& joints, const PathTarget& target)
    {
        const PathTarget reached = TargetAt(fk, joints);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(reached.at.position[i], target.at.position[i], 1e-6);
            EXPECT_NEAR(reached.at.direction[i], target.at.direction[i], 1.7e-5);
            EXPECT_NEAR((*reached.xAxis)[i], (*target.xAxis)[i], 1.7e-5);
        }
        for (std::size_t i = 0; i < joints.size(); ++i) {
            EXPECT_GE(joints[i], fk.Axes()[i]->joint->GetLowBound());
            EXPECT_LE(joints[i], fk.Axes()[i]->joint->GetHiBound());
        }
    }

    host::LoadedMachine machine{test::Loaded(test::SixAxisArm())};
    PointSolver fk{machine, machine.streams.front(), {}};
    SampledSolver solver{machine, machine.streams.front(), {}, fk.Initial()};
};

TEST_F(SampledArm, ReachesAPoseFromFarAway)
{
    for (const JointValues& there :
         {JointValues{2.1, 0.7, -1.1, 2.9, -1.4, 5.0}, JointValues{-2.5, 1.6, 0.4, -1.2, 1.9, -6.0},
          JointValues{0.3, -1.2, 2.0, 0.5, 0.8, 3.0}}) {
        const PathTarget target = TargetAt(fk, there);
        const std::optional<JointValues> found = solver.FindFirst(target, fk.Initial());
        ASSERT_TRUE(found.has_value());
        ExpectAt(*found, target);
    }
}

TEST_F(SampledArm, FindsEveryWayToStandWithinTheLimitsOnce)
{
    // The wrist turns over within its limits everywhere. Bent the other way the elbow would stand
    // at -J3 - 2 * atan(420/50) = -J3 - 2.905, or a turn on: -2.005 and 4.278 in the first case,
    // outside its limits; 1.478 in the second. The third is above the shoulder, which may be turned
    // either way.
    for (const auto& [there, count] : {std::pair{JointValues{0.4, 0.3, -0.9, 0.6, 1.0, -0.5}, 2U},
                                       {{0.4, 0.3, 1.9, 0.6, 1.0, -0.5}, 4U},
                                       {{1.1, -0.3, -1.2, 0.7, -1.1, 1.6}, 8U}}) {
        const PathTarget target = TargetAt(fk, there);
        const std::vector<JointValues> ways = test::WaysWithinLimits(fk.Axes(), target);
        const std::vector<JointValues> found = solver.FindAll(target, fk.Initial());
        EXPECT_EQ(ways.size(), count);
        EXPECT_EQ(found.size(), count);
        for (const JointValues& way : ways) {
            EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const JointValues& one) {
                return AreSameSolution(fk.Axes(), one, way);
            }));
        }
        for (const JointValues& joints : found) {
            ExpectAt(joints, target);
        }
    }
}

TEST_F(SampledArm, TurnsTowardsTheFirstJointsWithinTheLimits)
{
    // J6 may stand at 0.5 + k turns for k = -1 and 0, as its limits are a turn either way; J4 at
    // 0.6 only.
    const JointValues there{0.4, -0.9, 1.2, 0.6, 1.0, 0.5};
    const PathTarget target = TargetAt(fk, there);
    for (const auto& [near, expected] :
         {std::pair{-4.0, 0.5 - 2 * kPi}, {0.0, 0.5}, {6.0, 0.5}, {-12.0, 0.5 - 2 * kPi}}) {
        JointValues first = there;
        first[3] = near;
        first[5] = near;
        const std::vector<JointValues> all = solver.FindAll(target, first);
        const auto found = std::find_if(all.begin(), all.end(), [&](const JointValues& one) {
            return AreSameSolution(fk.Axes(), one, there);
        });
        ASSERT_NE(found, all.end());
        EXPECT_NEAR((*found)[3], 0.6, 1e-4);
        EXPECT_NEAR((*found)[5], expected, 1e-4);
    }
}

TEST_F(SampledArm, StaysOnALimitThatThePoseNeeds)
{
    const JointValues atLimit{2.9, 0.3, 0.5, 0.4, 0.9, 1.0};
    const PathTarget target = TargetAt(fk, atLimit);
    const std::vector<JointValues> all = solver.FindAll(target, fk.Initial());
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const JointValues& one) {
        return AreSameSolution(fk.Axes(), one, atLimit);
    }));
}

TEST_F(SampledArm, FindsNothingOutOfReach)
{
    // Stretched out the arm is 150 + 450 + 423 + 80 long: 1103 mm.
    const PathTarget target{{{2000, 0, 400}, {0, 0, 1}}, host::Vec3{1, 0, 0}};
    EXPECT_FALSE(solver.FindFirst(target, fk.Initial()).has_value());
    EXPECT_TRUE(solver.FindAll(target, fk.Initial(), {false, 64}).empty());
}

TEST_F(SampledArm, AnswersTheSameWhateverItWasAskedBefore)
{
    const PathTarget one = TargetAt(fk, {0.4, -0.9, 1.2, 0.6, 1.0, 0.5});
    const PathTarget other = TargetAt(fk, {-2.5, 1.6, 0.4, -1.2, 1.9, -6.0});
    const auto first = solver.FindAll(one, fk.Initial());
    solver.FindFirst(other, fk.Initial());
    machine.axes[1].joint->SetCurValue(0.7);
    EXPECT_EQ(solver.FindAll(one, fk.Initial()), first);
    SampledSolver another{machine, machine.streams.front(), {}, fk.Initial()};
    EXPECT_EQ(another.FindAll(one, fk.Initial()), first);
}

TEST_F(SampledArm, SolvesWithTheTurnAboutTheToolLeftOpen)
{
    // Position and direction are five numbers and the arm has six joints.
    for (const JointValues& there :
         {JointValues{2.1, 0.7, -1.1, 2.9, -1.4, 5.0}, JointValues{-2.5, 1.6, 0.4, -1.2, 1.9, -6.0},
          JointValues{0.3, -1.2, 2.0, 0.5, 0.8, 3.0}}) {
        PathTarget target = TargetAt(fk, there);
        target.xAxis.reset();
        const std::optional<JointValues> found = solver.FindFirst(target, fk.Initial());
        ASSERT_TRUE(found.has_value());
        const host::PoseError error = fk.ErrorAt(*found, target.at);
        EXPECT_LE(error.position, 1e-6);
        EXPECT_LE(error.direction_deg, 1e-3);
        // Any turn about the tool will do: each of the ten starts, and the joints given, may find
        // another.
        EXPECT_LE(solver.FindAll(target, fk.Initial(), {true, 10}).size(), 11U);
    }
}

TEST(SampledMill, FindsBothSidesOfTheTiltingTable)
{
    // As in BranchesTest: the tool leans by 20 degrees towards -y, so A = -20 with C = 0, or A = 20
    // with C half a turn away; at 40 degrees a limit of A leaves the first alone.
    const host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(test::MillText(), "mill.toml"));
    PointSolver fk(machine, machine.streams.front(), {});
    SampledSolver solver(machine, machine.streams.front(), {}, fk.Initial());
    for (const auto& [tilt_deg, ways] : {std::pair{20.0, 2U}, {40.0, 1U}}) {
        const double tilt = host::ToRadians(tilt_deg);
        const PathTarget target{{{0, 0, 50}, {0, -std::sin(tilt), std::cos(tilt)}}, std::nullopt};
        const std::vector<JointValues> found = solver.FindAll(target, fk.Initial());
        ASSERT_EQ(found.size(), ways);
        for (const JointValues& joints : found) {
            EXPECT_NEAR(std::fabs(joints[3]), tilt, 1e-5);
            EXPECT_NEAR(std::cos(joints[4]), joints[3] < 0.0 ? 1.0 : -1.0, 1e-9);
        }
    }
}

TEST(SameSolutions, DifferByWholeTurnsAndLittleElse)
{
    const host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(test::MillText(), "mill.toml"));
    const auto axes = machine.AxesOf(machine.streams.front());
    const JointValues one{10, 20, 30, 0.5, -1.0};
    EXPECT_TRUE(AreSameSolution(axes, one, {10, 20, 30.0009, 0.509, -1.0 + 4 * kPi}));
    EXPECT_FALSE(AreSameSolution(axes, one, {10, 20, 30.0011, 0.5, -1.0}));
    EXPECT_FALSE(AreSameSolution(axes, one, {10, 20, 30, 0.5, -1.0 + kPi}));
    EXPECT_FALSE(AreSameSolution(axes, one, {10, 20, 30, 0.511, -1.0}));
}

} // namespace
