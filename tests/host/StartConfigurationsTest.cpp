#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/StartConfigurations.h"
#include "support/LoadedFixture.h"

namespace
{

using host::JointValues;
using host::kPi;
using host::PathTarget;
using host::PointSolver;
using host::StartConfigurations;

void ExpectNear(const JointValues& values, const JointValues& expected)
{
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_NEAR(values[i], expected[i], 1e-14) << "axis " << i;
    }
}

class ArmStarts : public testing::Test
{
  protected:
    PathTarget PoseAt(const JointValues& joints)
    {
        const IkXformMat pose = solver.PoseAt(joints);
        return {{host::Column(pose, 3), host::Column(pose, 2)}, host::Column(pose, 0)};
    }

    host::LoadedMachine machine{test::Loaded(test::SixAxisArm())};
    PointSolver solver{machine, machine.streams.front(), {}};
};

TEST_F(ArmStarts, ArePointsOfTheHaltonSequenceInTheLimits)
{
    // Points 1 and 2 of the sequence are 1/2 and 1/4 in base 2, 1/3 and 2/3 in base 3, then 1/b and
    // 2/b. J4 and J6 turn further than once round; a turn about the middle of their limits, 0, is
    // used.
    const StartConfigurations starts(solver, solver.Initial());
    ExpectNear(starts[0], {-2.9 + 5.8 / 2, -1.5 + 3.5 / 3, -2.0 + 4.4 / 5, -kPi + 2 * kPi / 7,
                           -2.1 + 4.2 / 11, -kPi + 2 * kPi / 13});
    ExpectNear(starts[1], {-2.9 + 5.8 / 4, -1.5 + 3.5 * 2 / 3, -2.0 + 4.4 * 2 / 5,
                           -kPi + 2 * kPi * 2 / 7, -2.1 + 4.2 * 2 / 11, -kPi + 2 * kPi * 2 / 13});
}

TEST_F(ArmStarts, FillTheLimitsEvenly)
{
    // 1024 points of a sequence in base b put 1024/b values into each b-th part, one more or less.
    const StartConfigurations starts(solver, solver.Initial());
    ASSERT_EQ(starts.Size(), 1024U);
    int inLowerHalf = 0;
    int inLowestThird = 0;
    for (std::size_t i = 0; i < starts.Size(); ++i) {
        inLowerHalf += starts[i][0] < 0.0 ? 1 : 0;
        inLowestThird += starts[i][1] < -1.5 + 3.5 / 3 - 1e-9 ? 1 : 0;
    }
    EXPECT_NEAR(inLowerHalf, 512, 1);
    EXPECT_NEAR(inLowestThird, 341, 1);
}

TEST_F(ArmStarts, TheNearestToThePlaceOfAConfigurationIsThatConfiguration)
{
    const StartConfigurations starts(solver, solver.Initial());
    for (const std::size_t index : {0U, 77U, 1023U}) {
        const PathTarget target = PoseAt(starts[index]);
        EXPECT_EQ(starts.NearestTo(target, 3).front(), index);
    }
}

TEST_F(ArmStarts, AreGivenByDistanceEachOnce)
{
    const StartConfigurations starts(solver, solver.Initial());
    const std::vector<std::size_t> few = starts.NearestTo(PoseAt({0, 0, 0, 0, 0.3, 0}), 40);
    const std::vector<std::size_t> all = starts.NearestTo(PoseAt({0, 0, 0, 0, 0.3, 0}), 5000);
    ASSERT_EQ(few.size(), 40U);
    ASSERT_EQ(all.size(), 1024U);
    EXPECT_TRUE(std::equal(few.begin(), few.end(), all.begin()));
    std::vector<std::size_t> sorted = all;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        ASSERT_EQ(sorted[i], i);
    }
}

TEST_F(ArmStarts, LeaveLockedAxesWhereTheyAreGiven)
{
    machine.streams.front().stream->SetLocalLock(machine.axes[3].joint, true);
    const StartConfigurations starts(solver, {0, 0, 0, 1.25, 0, 0});
    for (std::size_t i = 0; i < starts.Size(); ++i) {
        ASSERT_EQ(starts[i][3], 1.25);
    }
    ExpectNear(starts[0], {-2.9 + 5.8 / 2, -1.5 + 3.5 / 3, -2.0 + 4.4 / 5, 1.25, -2.1 + 4.2 / 7,
                           -kPi + 2 * kPi / 11});
}

class MillStarts : public testing::Test
{
  protected:
    host::LoadedMachine machine{
        host::AssembleMachine(host::ReadMachine(test::MillText(), "mill.toml"))};
    PointSolver solver{machine, machine.streams.front(), {}};
    const StartConfigurations starts{solver, solver.Initial()};
};

TEST_F(MillStarts, HoldLinearAxesInTheMiddleAndTurnUnlimitedOnesOnce)
{
    // A from -120 to 30 degrees; C unlimited, so a turn about its initial value, 0.
    ASSERT_EQ(starts.Size(), 64U); // eight values for each of two rotary axes
    ExpectNear(starts[0], {0, 0, 0, host::ToRadians(-120 + 150.0 / 2), -kPi + 2 * kPi / 3});
    for (std::size_t i = 0; i < starts.Size(); ++i) {
        EXPECT_LE(std::fabs(starts[i][4]), kPi);
    }
}

TEST_F(MillStarts, AreAsNearWhereverTheLinearAxesReach)
{
    const host::Vec3 direction{0.36, -0.48, 0.8};
    const auto here = starts.NearestTo({{{0, 0, 0}, direction}, std::nullopt}, 64);
    const auto there = starts.NearestTo({{{150, -80, 40}, direction}, std::nullopt}, 64);
    EXPECT_EQ(here, there);
    // The table turned by A and C sees the tool along (sin C sin A, cos C sin A, cos A).
    const JointValues& nearest = starts[here.front()];
    const double a = nearest[3];
    const double c = nearest[4];
    const double cosine = direction[0] * std::sin(c) * std::sin(a) +
                          direction[1] * std::cos(c) * std::sin(a) + direction[2] * std::cos(a);
    for (std::size_t i = 0; i < starts.Size(); ++i) {
        const JointValues& other = starts[i];
        EXPECT_GE(cosine + 1e-12, direction[0] * std::sin(other[4]) * std::sin(other[3]) +
                                      direction[1] * std::cos(other[4]) * std::sin(other[3]) +
                                      direction[2] * std::cos(other[3]));
    }
}

TEST_F(MillStarts, AnswerForPlacesBeyondAllNumbersToo)
{
    const host::Vec3 far{1e300, -1e300, 1e308};
    EXPECT_EQ(starts.NearestTo({{far, {0, 0, 1}}, std::nullopt}, 64).size(), 64U);
}

} // namespace
