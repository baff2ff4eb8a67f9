#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "geometry/Vec3.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/WarmStart.h"

namespace
{

using host::Reached;
using host::ToolPoint;
using host::Unreached;
using host::Vec3;

constexpr double kPi = 3.14159265358979323846;
// What a converged solve may leave: the objective is position squared plus degrees squared, at most
// 1e-8; a direction counts as met when its cosine is within 1.523e-10 of 1, acos of which is
// 1.745e-5 rad.
constexpr double kPositionTolerance = 1e-4;
constexpr double kDirectionTolerance_deg = 1e-3;

/// The mill, off the pole at A = 0, where the tool's direction does not say where C is.
const std::string& TiltedMillText()
{
    static const std::string text = test::MillWith(33, "limits = [-120, 30]\ninitial = -30");
    return text;
}

class WarmStart : public testing::Test
{
  protected:
    explicit WarmStart(const std::string& text = TiltedMillText())
        : machine(host::AssembleMachine(host::ReadMachine(text, "mill.toml"))),
          solver(machine, machine.streams.front())
    {}

    static ToolPoint Point(const Vec3& position, const Vec3& direction)
    {
        ToolPoint point;
        point.position = position;
        point.direction = *host::Normalised(direction);
        return point;
    }

    std::vector<double> CurrentValues() const
    {
        std::vector<double> values;
        for (const host::Axis& axis : machine.axes) {
            values.push_back(axis.joint->GetCurValue());
        }
        return values;
    }

    host::LoadedMachine machine;
    host::WarmStart solver;
};

class WarmStartFromThePole : public WarmStart
{
  protected:
    WarmStartFromThePole() : WarmStart(test::MillText()) {}
};

const host::ShownUnits kDegrees{};

TEST_F(WarmStart, BeginsWhereTheAxesStart)
{
    machine.axes[0].joint->SetCurValue(77.0);
    const host::WarmStart again(machine, machine.streams.front());
    EXPECT_EQ(CurrentValues(), (std::vector<double>{0, 0, 0, host::ToRadians(-30), 0}));
}

TEST_F(WarmStart, ReachesAPointWithTheJointsThatItReturns)
{
    // Tilted back by 30 degrees about x the part's z axis is (0, -1/2, 0.866) to the tool. Its
    // origin, 20 above the A axis, is then at z = -120 + 20 cos 30, y = 20 sin 30 of the machine.
    const auto reached = solver.Solve(Point({0, 0, 0}, {0, -0.5, std::sqrt(0.75)}));
    ASSERT_TRUE(reached.has_value());
    EXPECT_LE(reached->error.position, kPositionTolerance);
    EXPECT_LE(reached->error.direction_deg, kDirectionTolerance_deg);
    const std::vector<double> expected{0, 10, -120 + 20 * std::sqrt(0.75), -kPi / 6, 0};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(reached->joints[i], expected[i], 1e-4) << "axis " << i;
    }
    EXPECT_EQ(CurrentValues(), reached->joints);
}

TEST_F(WarmStart, FollowsATurningToolRoundWithoutJumps)
{
    // Ten turns about z with the tool leaning by 30 degrees: C goes on and on, A stays.
    double last = 0.0;
    for (int i = 0; i <= 360; ++i) {
        const double angle = 2.0 * kPi * i / 36.0;
        const auto reached =
            solver.Solve(Point({20 * std::sin(angle), -20 * std::cos(angle), 5},
                               {0.5 * std::sin(angle), -0.5 * std::cos(angle), std::sqrt(0.75)}));
        ASSERT_TRUE(reached.has_value()) << "point " << i;
        EXPECT_LE(reached->error.position, kPositionTolerance);
        EXPECT_LE(reached->error.direction_deg, kDirectionTolerance_deg);
        EXPECT_NEAR(reached->joints[3], -kPi / 6, 1e-4);
        if (i > 0) {
            EXPECT_NEAR(reached->joints[4] - last, -kPi / 18.0, 1e-4);
        }
        last = reached->joints[4];
    }
    EXPECT_NEAR(last, -20.0 * kPi, 1e-3);
}

TEST_F(WarmStart, GoesOnFromTheLastGoodJointsAfterAFailure)
{
    const ToolPoint good = Point({0, 0, 0}, {0, -0.5, std::sqrt(0.75)});
    ASSERT_TRUE(solver.Solve(good).has_value());
    const std::vector<double> joints = CurrentValues();
    EXPECT_FALSE(solver.Solve(Point({2000, 0, 0}, {0, -0.5, std::sqrt(0.75)})).has_value());
    EXPECT_EQ(CurrentValues(), joints);
    const auto again = solver.Solve(good);
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(again->joints, joints);
}

TEST_F(WarmStart, SaysWhichLimitStandsInTheWayAndWhatRemainsThere)
{
    // From (0, 0, 0) to x = 350: X would have to go 50 beyond its limit, nothing else changes.
    ASSERT_TRUE(solver.Solve(Point({0, 0, 0}, {0, -0.5, std::sqrt(0.75)})).has_value());
    const ToolPoint far = Point({350, 0, 0}, {0, -0.5, std::sqrt(0.75)});
    ASSERT_FALSE(solver.Solve(far).has_value());
    const Unreached unreached = solver.WhyNot(far);
    EXPECT_EQ(unreached.cause, Unreached::Cause::Limits);
    ASSERT_EQ(unreached.exceeded.size(), 1U);
    EXPECT_EQ(unreached.exceeded[0].axis->name, "X");
    EXPECT_NEAR(unreached.exceeded[0].value, 350, 1e-3);
    EXPECT_NEAR(unreached.remaining.position, 50, 1e-3);
    EXPECT_NEAR(unreached.remaining.direction_deg, 0, 1e-3);
}

TEST_F(WarmStart, SaysWhatARotaryLimitLeavesOver)
{
    // The tool leaning to +y by 45 degrees needs A = 45 or, half a turn about C away, A = -45.
    // Coming from A = 20 it is the first one. At A = 30 there are 15 degrees left; the tool's end,
    // which stands right, is off by the chord that 15 degrees cut on the circle about the A axis.
    ASSERT_TRUE(solver.Solve(Point({0, 0, 0}, {0, std::sin(kPi / 9), std::cos(kPi / 9)})));
    const double c = machine.axes[4].joint->GetCurValue();
    ASSERT_NEAR(c, 0.0, 1e-4);
    const ToolPoint steep = Point({0, 0, 0}, {0, 1, 1});
    ASSERT_FALSE(solver.Solve(steep).has_value());
    const Unreached unreached = solver.WhyNot(steep);
    EXPECT_EQ(unreached.cause, Unreached::Cause::Limits);
    ASSERT_EQ(unreached.exceeded.size(), 1U);
    EXPECT_NEAR(unreached.exceeded[0].value, kPi / 4, 1e-4);
    EXPECT_NEAR(unreached.remaining.direction_deg, 15, 1e-3);
    EXPECT_NEAR(unreached.remaining.position, 2 * 20 * std::sin(kPi / 24), 1e-3);
    EXPECT_EQ(host::Sentence(unreached, kDegrees).substr(0, 54),
              "reaching it would need A 45 deg (limits -120 to 30); a");
}

TEST_F(WarmStart, RestoresTheLimitsAfterADiagnosis)
{
    std::vector<double> before;
    std::vector<double> after;
    const auto collect = [this](std::vector<double>& bounds) {
        for (const host::Axis& axis : machine.axes) {
            bounds.push_back(axis.joint->GetLowBound());
            bounds.push_back(axis.joint->GetHiBound());
        }
    };
    const std::vector<double> values = CurrentValues();
    collect(before);
    solver.WhyNot(Point({2000, 0, 0}, {0, 0, 1}));
    collect(after);
    EXPECT_EQ(before, after);
    EXPECT_EQ(CurrentValues(), values);
}

class WarmStartWithoutRotaryAxes : public WarmStart
{
  protected:
    WarmStartWithoutRotaryAxes() : WarmStart(test::MillWith(54, "parent = \"base\"")) {}
};

TEST_F(WarmStartWithoutRotaryAxes, SaysThatNothingReachesATiltedTool)
{
    // Three linear axes bring the tool's end there, but never its direction: 30 degrees are left.
    const ToolPoint tilted = Point({10, 20, 30}, {0.5, 0, std::sqrt(0.75)});
    ASSERT_FALSE(solver.Solve(tilted).has_value());
    const Unreached unreached = solver.WhyNot(tilted);
    EXPECT_EQ(unreached.cause, Unreached::Cause::OutOfReach);
    EXPECT_TRUE(unreached.exceeded.empty());
    EXPECT_NEAR(unreached.remaining.position, 0, 1e-6);
    EXPECT_NEAR(unreached.remaining.direction_deg, 30, 1e-6);
    const std::string sentence = host::Sentence(unreached, kDegrees);
    EXPECT_EQ(sentence.rfind("no joint values were found that reach it; ", 0), 0U) << sentence;
    EXPECT_NE(sentence.find(" mm and 30 deg are left over"), std::string::npos) << sentence;
}

TEST_F(WarmStartFromThePole, KnowsWhenItLostItsWayToValuesWithinTheLimits)
{
    // A = -35, C = -90 leans the tool to +x. At A = 0 turning A leans it to y only and turning C
    // does not lean it at all, so that the iteration has no step to take towards x.
    const ToolPoint aside =
        Point({0, 10, 20}, {std::sin(host::ToRadians(35)), 0, std::cos(host::ToRadians(35))});
    ASSERT_FALSE(solver.Solve(aside).has_value());
    const Unreached unreached = solver.WhyNot(aside);
    EXPECT_EQ(unreached.cause, Unreached::Cause::LostOnTheWay);
    EXPECT_TRUE(unreached.exceeded.empty());
    EXPECT_LE(unreached.remaining.position, kPositionTolerance);
    EXPECT_LE(unreached.remaining.direction_deg, kDirectionTolerance_deg);
    EXPECT_EQ(
        host::Sentence(unreached, kDegrees),
        "there are joint values within the limits that reach it, but no way to them was found "
        "from where the axes stood; put points before it, or give the axes another initial");
}

class WarmStartATurnOn : public WarmStart
{
  protected:
    WarmStartATurnOn() : WarmStart(test::MillWith(33, "limits = [-400, 400]\ninitial = 380")) {}
};

TEST_F(WarmStartATurnOn, CountsAnAngleThatIsWithinTheLimitsAWholeTurnAway)
{
    // From 20 degrees of lean, a turn on, to 50: the iteration would go on to 410, which is 50.
    const ToolPoint steep =
        Point({0, 0, 0}, {0, std::sin(host::ToRadians(50)), std::cos(host::ToRadians(50))});
    ASSERT_FALSE(solver.Solve(steep).has_value());
    EXPECT_EQ(solver.WhyNot(steep).cause, Unreached::Cause::LostOnTheWay);
}

// Sentences ----------------------------------------------------------------------------------

TEST_F(WarmStart, NamesEveryExceededAxisInItsSentence)
{
    Unreached unreached;
    unreached.cause = Unreached::Cause::Limits;
    unreached.exceeded = {{&machine.axes[3], host::ToRadians(47.3)}, {&machine.axes[0], -412.0}};
    unreached.remaining = {3.2, 17.3};
    EXPECT_EQ(host::Sentence(unreached, kDegrees),
              "reaching it would need A 47.3 deg (limits -120 to 30), X -412 mm (limits -300 to "
              "300); at the limits 3.2 mm and 17.3 deg remain");
    unreached.exceeded.pop_back();
    EXPECT_EQ(host::Sentence(unreached, kDegrees),
              "reaching it would need A 47.3 deg (limits -120 to 30); at the limit 3.2 mm and 17.3 "
              "deg remain");
}

TEST_F(WarmStart, SpeaksOfRadiansAndInchesWhereTheyAreShown)
{
    Unreached unreached;
    unreached.cause = Unreached::Cause::Limits;
    unreached.exceeded = {{&machine.axes[3], 0.75}};
    unreached.remaining = {0.5, 2.0};
    EXPECT_EQ(host::Sentence(unreached, {host::LengthUnit::Inch, host::AngleUnit::Radian}),
              "reaching it would need A 0.75 rad (limits -2.0944 to 0.5236); at the limit 0.5 "
              "inch and 2 deg remain");
}

} // namespace
