#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "geometry/Vec3.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/Unreached.h"

namespace
{

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

class UnreachedPoint : public testing::Test
{
  protected:
    explicit UnreachedPoint(const std::string& text = TiltedMillText())
        : machine(host::AssembleMachine(host::ReadMachine(text, "mill.toml")))
    {}

    /// Moves the axes to a point from where they stand; false, and they stay, when it fails.
    bool MoveTo(const ToolPoint& point) const
    {
        IkEndState target = host::TargetAt(point);
        IkJtStateVector states;
        return machine.streams.front().stream->SolveIK(target, states, false, IkJoint::JtLimitAll,
                                                       false) &&
               states.CommitValuesToJoints();
    }
    Unreached WhyNot(const ToolPoint& point) const
    {
        return host::Diagnose(machine, machine.streams.front(), point);
    }

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
};

class UnreachedFromThePole : public UnreachedPoint
{
  protected:
    UnreachedFromThePole() : UnreachedPoint(test::MillText()) {}
};

const host::ShownUnits kDegrees{};

TEST_F(UnreachedPoint, SaysWhichLimitStandsInTheWayAndWhatRemainsThere)
{
    // From (0, 0, 0) to x = 350: X would have to go 50 beyond its limit, nothing else changes.
    ASSERT_TRUE(MoveTo(Point({0, 0, 0}, {0, -0.5, std::sqrt(0.75)})));
    const ToolPoint far = Point({350, 0, 0}, {0, -0.5, std::sqrt(0.75)});
    ASSERT_FALSE(MoveTo(far));
    const Unreached unreached = WhyNot(far);
    EXPECT_EQ(unreached.cause, Unreached::Cause::Limits);
    ASSERT_EQ(unreached.exceeded.size(), 1U);
    EXPECT_EQ(unreached.exceeded[0].axis->name, "X");
    EXPECT_NEAR(unreached.exceeded[0].value, 350, 1e-3);
    EXPECT_NEAR(unreached.remaining.position, 50, 1e-3);
    EXPECT_NEAR(unreached.remaining.direction_deg, 0, 1e-3);
}

TEST_F(UnreachedPoint, SaysWhatARotaryLimitLeavesOver)
{
    // The tool leaning to +y by 45 degrees needs A = 45 or, half a turn about C away, A = -45.
    // Coming from A = 20 it is the first one. At A = 30 there are 15 degrees left; the tool's end,
    // which stands right, is off by the chord that 15 degrees cut on the circle about the A axis.
    ASSERT_TRUE(MoveTo(Point({0, 0, 0}, {0, std::sin(kPi / 9), std::cos(kPi / 9)})));
    const double c = machine.axes[4].joint->GetCurValue();
    ASSERT_NEAR(c, 0.0, 1e-4);
    const ToolPoint steep = Point({0, 0, 0}, {0, 1, 1});
    ASSERT_FALSE(MoveTo(steep));
    const Unreached unreached = WhyNot(steep);
    EXPECT_EQ(unreached.cause, Unreached::Cause::Limits);
    ASSERT_EQ(unreached.exceeded.size(), 1U);
    EXPECT_NEAR(unreached.exceeded[0].value, kPi / 4, 1e-4);
    EXPECT_NEAR(unreached.remaining.direction_deg, 15, 1e-3);
    EXPECT_NEAR(unreached.remaining.position, 2 * 20 * std::sin(kPi / 24), 1e-3);
    EXPECT_EQ(host::Sentence(unreached, kDegrees).substr(0, 54),
              "reaching it would need A 45 deg (limits -120 to 30); a");
}

TEST_F(UnreachedPoint, RestoresTheLimitsAfterADiagnosis)
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
    WhyNot(Point({2000, 0, 0}, {0, 0, 1}));
    collect(after);
    EXPECT_EQ(before, after);
    EXPECT_EQ(CurrentValues(), values);
}

class UnreachedWithoutRotaryAxes : public UnreachedPoint
{
  protected:
    UnreachedWithoutRotaryAxes() : UnreachedPoint(test::MillWith(54, "parent = \"base\"")) {}
};

TEST_F(UnreachedWithoutRotaryAxes, SaysThatNothingReachesATiltedTool)
{
    // Three linear axes bring the tool's end there, but never its direction: 30 degrees are left.
    const ToolPoint tilted = Point({10, 20, 30}, {0.5, 0, std::sqrt(0.75)});
    ASSERT_FALSE(MoveTo(tilted));
    const Unreached unreached = WhyNot(tilted);
    EXPECT_EQ(unreached.cause, Unreached::Cause::OutOfReach);
    EXPECT_TRUE(unreached.exceeded.empty());
    EXPECT_NEAR(unreached.remaining.position, 0, 1e-6);
    EXPECT_NEAR(unreached.remaining.direction_deg, 30, 1e-6);
    const std::string sentence = host::Sentence(unreached, kDegrees);
    EXPECT_EQ(sentence.rfind("no joint values were found that reach it; ", 0), 0U) << sentence;
    EXPECT_NE(sentence.find(" mm and 30 deg are left over"), std::string::npos) << sentence;
}

TEST_F(UnreachedFromThePole, KnowsWhenItLostItsWayToValuesWithinTheLimits)
{
    // A = -35, C = -90 leans the tool to +x. At A = 0 turning A leans it to y only and turning C
    // does not lean it at all, so that the iteration has no step to take towards x.
    const ToolPoint aside =
        Point({0, 10, 20}, {std::sin(host::ToRadians(35)), 0, std::cos(host::ToRadians(35))});
    ASSERT_FALSE(MoveTo(aside));
    const Unreached unreached = WhyNot(aside);
    EXPECT_EQ(unreached.cause, Unreached::Cause::LostOnTheWay);
    EXPECT_TRUE(unreached.exceeded.empty());
    EXPECT_LE(unreached.remaining.position, kPositionTolerance);
    EXPECT_LE(unreached.remaining.direction_deg, kDirectionTolerance_deg);
    EXPECT_EQ(
        host::Sentence(unreached, kDegrees),
        "there are joint values within the limits that reach it, but no way to them was found "
        "from where the axes stood; put points before it, or give the axes another initial");
}

class UnreachedATurnOn : public UnreachedPoint
{
  protected:
    UnreachedATurnOn() : UnreachedPoint(test::MillWith(33, "limits = [-400, 400]\ninitial = 380"))
    {}
};

TEST_F(UnreachedATurnOn, CountsAnAngleThatIsWithinTheLimitsAWholeTurnAway)
{
    // From 20 degrees of lean, a turn on, to 50: the iteration would go on to 410, which is 50.
    const ToolPoint steep =
        Point({0, 0, 0}, {0, std::sin(host::ToRadians(50)), std::cos(host::ToRadians(50))});
    ASSERT_FALSE(MoveTo(steep));
    EXPECT_EQ(WhyNot(steep).cause, Unreached::Cause::LostOnTheWay);
}

// Sentences ----------------------------------------------------------------------------------

TEST_F(UnreachedPoint, NamesEveryExceededAxisInItsSentence)
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

TEST_F(UnreachedPoint, SpeaksOfRadiansAndInchesWhereTheyAreShown)
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
