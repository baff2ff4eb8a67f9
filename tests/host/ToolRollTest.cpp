#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "geometry/CutterLocation.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/ToolRoll.h"
#include "support/LoadedFixture.h"

namespace
{

using host::operator*;
using host::Orientation;
using host::Toolpath;
using host::ToolPoint;
using host::ToolRoll;
using host::ToRadians;
using host::Vec3;

constexpr bool kRapid = true;

void ExpectNear(const Vec3& vector, const Vec3& expected)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(vector[i], expected[i], 1e-12) << "component " << i;
    }
}

void Add(Toolpath& path, const Vec3& position, const Vec3& direction, bool isRapid = false)
{
    ToolPoint point;
    point.position = position;
    point.direction = *host::Normalised(direction);
    point.isRapid = isRapid;
    path.points.push_back(point);
}

/// From z (0 degrees) towards x (90 degrees) and on.
Vec3 InXZ(double angle_deg)
{
    return {std::sin(ToRadians(angle_deg)), 0.0, std::cos(ToRadians(angle_deg))};
}

/// What InXZ is when it is turned on by a quarter of a turn.
Vec3 AcrossInXZ(double angle_deg)
{
    return {std::cos(ToRadians(angle_deg)), 0.0, -std::sin(ToRadians(angle_deg))};
}

const ToolRoll kAlongX{ToolRoll::Policy::Fixed, {1, 0, 0}};
const ToolRoll kAlongFeed{ToolRoll::Policy::Feed, {1, 0, 0}};

TEST(FixedRoll, IsThePartOfTheReferenceAcrossTheTool)
{
    Toolpath path;
    Add(path, {0, 0, 0}, {0, 0, 1});
    Add(path, {0, 0, 0}, InXZ(30));
    Add(path, {0, 0, 0}, {0, 0.6, 0.8});
    const std::vector<Vec3> along = host::ToolXAxes(path, kAlongX);
    ExpectNear(along[0], {1, 0, 0});
    ExpectNear(along[1], AcrossInXZ(30));
    ExpectNear(along[2], {1, 0, 0});
    const auto alongY = host::ToolXAxes(path, {ToolRoll::Policy::Fixed, {0, 1, 0}});
    ExpectNear(alongY[2], {0, 0.8, -0.6});
}

TEST(FixedRoll, DoesNotJumpWhereTheToolPassesOverTheReference)
{
    // The part of x across the tool turns round at 90 degrees; the axis goes on as the tool does,
    // in small steps as in one.
    for (const double step_deg : {1.0, 60.0}) {
        Toolpath path;
        for (double angle_deg = 0.0; angle_deg <= 180.0; angle_deg += step_deg) {
            Add(path, {0, 0, 0}, InXZ(angle_deg));
        }
        const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongX);
        for (std::size_t i = 0; i < axes.size(); ++i) {
            ExpectNear(axes[i], AcrossInXZ(static_cast<double>(i) * step_deg));
        }
    }
}

TEST(FixedRoll, TurnsFourTimesAsFastAsTheToolAtMost)
{
    // Past the reference at a distance, on a small circle about z: 1 / sin(15 deg) is 3.9.
    for (const double lift_deg : {0.5, 5.0, 14.0, 16.0, 40.0}) {
        Toolpath path;
        const double up = std::sin(ToRadians(lift_deg));
        const double out = std::cos(ToRadians(lift_deg));
        for (double angle_deg = -90.0; angle_deg <= 90.0; angle_deg += 0.5) {
            Add(path, {0, 0, 0},
                {out * std::cos(ToRadians(angle_deg)), out * std::sin(ToRadians(angle_deg)), up});
        }
        const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongX);
        for (std::size_t i = 0; i < axes.size(); ++i) {
            EXPECT_NEAR(host::Dot(axes[i], path.points[i].direction), 0.0, 1e-12);
            EXPECT_NEAR(host::Length(axes[i]), 1.0, 1e-12);
            if (i > 0) {
                EXPECT_LE(host::AngleBetween(axes[i], axes[i - 1]), 4.1 * ToRadians(0.5))
                    << "lift " << lift_deg << ", point " << i;
            }
        }
    }
}

TEST(FixedRoll, ReturnsToTheReferenceAfterARapid)
{
    Toolpath path;
    Add(path, {0, 0, 0}, InXZ(60));
    Add(path, {0, 0, 0}, InXZ(120));
    Add(path, {0, 0, 0}, InXZ(125));
    Add(path, {0, 0, 0}, InXZ(125), kRapid);
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongX);
    ExpectNear(axes[2], AcrossInXZ(125));
    ExpectNear(axes[3], -1.0 * AcrossInXZ(125));
}

TEST(FixedRoll, BeginsInTheConeWithWhatFollows)
{
    Toolpath path;
    Add(path, {0, 0, 0}, InXZ(90));
    Add(path, {0, 0, 0}, InXZ(100));
    Add(path, {0, 0, 0}, InXZ(110)); // the first outside
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongX);
    ExpectNear(axes[2], -1.0 * AcrossInXZ(110)); // which points to +x
    ExpectNear(axes[1], -1.0 * AcrossInXZ(100));
    ExpectNear(axes[0], -1.0 * AcrossInXZ(90));
}

TEST(FixedRoll, HasAnAxisWhereTheToolStaysAlongTheReference)
{
    Toolpath path;
    Add(path, {0, 0, 0}, {1, 0, 0});
    Add(path, {5, 0, 0}, {1, 0, 0});
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongX);
    EXPECT_NEAR(host::Length(axes[0]), 1.0, 1e-12);
    EXPECT_EQ(axes[0][0], 0.0);
    EXPECT_EQ(axes[0], axes[1]);
}

TEST(FeedRoll, PointsTheWayFromThePointBeforeToThePointAfter)
{
    Toolpath path;
    Add(path, {0, 0, 0}, {0, 0, 1});
    Add(path, {10, 0, 0}, {0, 0, 1});
    Add(path, {10, 10, 5}, {0, 0, 1}); // climbing: only what is across the tool counts
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongFeed);
    ExpectNear(axes[0], {1, 0, 0});
    ExpectNear(axes[1], {std::sqrt(0.5), std::sqrt(0.5), 0});
    ExpectNear(axes[2], {0, 1, 0});
}

TEST(FeedRoll, IsTakenFromWhatFollowsOnTheWayDownAndKeptOnTheWayUp)
{
    Toolpath path;
    Add(path, {0, 0, 50}, {0, 0, 1}, kRapid);
    Add(path, {0, 0, 10}, {0, 0, 1});
    Add(path, {0, 0, 0}, {0, 0, 1});
    Add(path, {0, 10, 0}, {0, 0, 1});
    Add(path, {0, 20, 0}, {0, 0, 1});
    Add(path, {0, 20, 30}, {0, 0, 1});
    Add(path, {0, 20, 50}, {0, 0, 1});
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongFeed);
    for (const Vec3& axis : axes) {
        ExpectNear(axis, {0, 1, 0});
    }
}

TEST(FeedRoll, IsKeptWhereTheToolTurnsBackOnItsTrack)
{
    Toolpath path;
    Add(path, {0, 0, 0}, {0, 0, 1});
    Add(path, {10, 0, 0}, {0, 0, 1});
    Add(path, {0, 0, 0}, {0, 0, 1});
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongFeed);
    ExpectNear(axes[1], {1, 0, 0});
    ExpectNear(axes[2], {-1, 0, 0});
}

TEST(FeedRoll, LooksAcrossNoRapid)
{
    Toolpath path;
    Add(path, {0, 0, 0}, {0, 0, 1});
    Add(path, {10, 0, 0}, {0, 0, 1});
    Add(path, {10, 50, 0}, {0, 0, 1}, kRapid);
    Add(path, {0, 50, 0}, {0, 0, 1});
    const std::vector<Vec3> axes = host::ToolXAxes(path, kAlongFeed);
    ExpectNear(axes[1], {1, 0, 0});
    ExpectNear(axes[2], {-1, 0, 0});
}

TEST(FeedRoll, IsTheReferencesWhereARunHasNoFeedAcrossTheTool)
{
    Toolpath path;
    Add(path, {0, 0, 50}, {0, 0.6, 0.8}, kRapid);
    Add(path, {0, -6, 42}, {0, 0.6, 0.8}); // a hole along the tool
    const std::vector<Vec3> axes = host::ToolXAxes(path, {ToolRoll::Policy::Feed, {0, 1, 0}});
    ExpectNear(axes[0], {0, 0.8, -0.6});
    ExpectNear(axes[1], {0, 0.8, -0.6});
}

TEST(Runs, BeginAtRapidsAndAtTheFirstPoint)
{
    Toolpath path;
    EXPECT_TRUE(host::RunsOf(path).empty());
    for (const bool isRapid : {false, false, true, true, false}) {
        Add(path, {0, 0, 0}, {0, 0, 1}, isRapid);
    }
    const std::vector<host::Run> runs = host::RunsOf(path);
    ASSERT_EQ(runs.size(), 3U);
    const std::vector<std::size_t> ends{2, 3, 5};
    for (std::size_t i = 0; i < runs.size(); ++i) {
        EXPECT_EQ(runs[i].begin, i == 0 ? 0 : ends[i - 1]);
        EXPECT_EQ(runs[i].end, ends[i]);
    }
}

TEST(XAxisBetween, GoesAlongWithTheTool)
{
    const Orientation up{{0, 0, 1}, {1, 0, 0}};
    const Orientation over{InXZ(90), AcrossInXZ(90)};
    ExpectNear(host::XAxisBetween(up, over, 0.0), up.xAxis);
    ExpectNear(host::XAxisBetween(up, over, 0.5), AcrossInXZ(45));
    ExpectNear(host::XAxisBetween(up, over, 1.0), over.xAxis);
}

TEST(XAxisBetween, TurnsEvenlyTheShorterWayRound)
{
    const auto inXY = [](double angle_deg) {
        return Vec3{std::cos(ToRadians(angle_deg)), std::sin(ToRadians(angle_deg)), 0.0};
    };
    const Orientation start{{0, 0, 1}, inXY(20)};
    ExpectNear(host::XAxisBetween(start, {{0, 0, 1}, inXY(110)}, 1.0 / 3.0), inXY(50));
    ExpectNear(host::XAxisBetween(start, {{0, 0, 1}, inXY(-150)}, 0.5), inXY(-65));
}

TEST(XAxisBetween, IsAcrossTheToolBetweenAnyTwoOrientations)
{
    const Orientation from{{0, 0, 1}, {0, 1, 0}};
    for (const Orientation& to : {Orientation{{0, 0.6, -0.8}, {-1, 0, 0}},
                                  {{0, 0, -1}, {0, -1, 0}}, // opposite: no one great circle
                                  {{0, 0, -1}, {0, 1, 0}},
                                  {{1e-14, 0, -1}, {0, 1, 0}}}) {
        for (const double share : {0.0, 0.25, 0.5, 0.9, 1.0}) {
            const Vec3 axis = host::XAxisBetween(from, to, share);
            const Vec3 direction =
                host::Between({{}, from.direction}, {{}, to.direction}, share).direction;
            EXPECT_NEAR(host::Length(axis), 1.0, 1e-12);
            EXPECT_NEAR(host::Dot(axis, direction), 0.0, 1e-12);
        }
        ExpectNear(host::XAxisBetween(from, to, 0.0), from.xAxis);
        ExpectNear(host::XAxisBetween(from, to, 1.0), to.xAxis);
    }
}

TEST(Carried, IsTheSmallestRotation)
{
    ExpectNear(host::Carried({0, 1, 0}, {0, 0, 1}, {1, 0, 0}), {0, 1, 0});
    ExpectNear(host::Carried({1, 0, 0}, {0, 0, 1}, {1, 0, 0}), {0, 0, -1});
    ExpectNear(host::Carried({1, 0, 0}, {0, 0, 1}, {0, 0, 1}), {1, 0, 0});
}

TEST(OpenRoll, IsLeftByArmsAlone)
{
    host::LoadedMachine arm = test::Loaded(test::SixAxisArm());
    const host::PointSolver armSolver(arm, arm.streams.front(), {});
    EXPECT_TRUE(host::HasOpenRoll(armSolver));
    arm.streams.front().stream->SetLocalLock(arm.axes[1].joint, true);
    EXPECT_FALSE(host::HasOpenRoll(armSolver));

    const auto hasOpenRoll = [](const std::string& text) {
        const host::LoadedMachine mill =
            host::AssembleMachine(host::ReadMachine(text, "mill.toml"));
        return host::HasOpenRoll(host::PointSolver(mill, mill.streams.front(), {}));
    };
    EXPECT_FALSE(hasOpenRoll(test::MillText()));
    // A quill that carries the spindle along with Z: six axes, two of them rotary.
    std::string text = test::MillText();
    text.replace(text.find("parent = \"Z\""), 12, "parent = \"W\"");
    EXPECT_FALSE(hasOpenRoll(text + "\n[[axis]]\nname = \"W\"\nparent = \"Z\"\ntype = \"linear\"\n"
                                    "direction = [0, 0, 1]\nlimits = [0, 100]\n"));
}

} // namespace
