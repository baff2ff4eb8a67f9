// The rows and events of a motion: swings with the tool pulled back, limits, the pole, and what is
// not reached.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "planner/JointSpace.h"
#include "support/Repeat.h"

namespace
{

using host::Event;
using host::EventKind;
using host::MotionRow;
using host::RetractPolicy;
using host::ToDegrees;
using host::ToRadians;
using host::Vec3;
using test::kRapid;
using test::Leaning;
using test::Motion;
using test::PathText;
using test::PlanRig;

constexpr std::size_t kX = 0; // of the tilting table's X Y Z A C
constexpr std::size_t kA = 3;
constexpr std::size_t kC = 4;
constexpr const char* kTiltsOneWay = "limits = [5, 30]\ninitial = 10";

/// On the tilting table d = (sin A sin C, sin A cos C, cos A): the direction that A positive and C
/// give.
Vec3 ForTable(double a_deg, double c_deg)
{
    return Leaning(a_deg, 90.0 - c_deg);
}

/// From one turn to another by ten degrees a step, 2 mm on along y.
void Wind(PathText& path, double a_deg, double from_deg, double to_deg)
{
    const int steps = static_cast<int>(std::lround(std::fabs(to_deg - from_deg) / 10.0));
    for (int i = 1; i <= steps; ++i) {
        const double c = from_deg + (to_deg - from_deg) * i / steps;
        path.To({10, 0.2 * (c - from_deg), 0}, ForTable(a_deg, c));
    }
}

PlanRig TableRig(const std::string& ofA, const std::string& ofC, const PathText& path)
{
    PlanRig rig(test::TableTableText(ofA, ofC), path.Path());
    rig.options.weights.limits = 0.0;
    return rig;
}

/// The tilting table below a spindle that leans by 10 degrees towards x, along the A axis: the tool
/// is never nearer to the C axis than that.
std::string LeaningSpindle()
{
    std::string text = test::TableTableText("limits = [-120, 30]", test::kUnlimited);
    const std::string upright = "z_axis = [0, 0, 1]\nx_axis = [1, 0, 0]";
    return text.replace(text.find(upright), upright.size(),
                        "z_axis = [0.17364817766693033, 0, 0.984807753012208]\n"
                        "x_axis = [0.984807753012208, 0, -0.17364817766693033]");
}

/// Where the drawing of the tilting table puts the tool's end: 120 above the A axis, and the part's
/// zero 20 above it.
Vec3 EndOnTable(const std::vector<double>& q)
{
    const double y = q[1] * std::cos(q[kA]) + (q[2] + 120) * std::sin(q[kA]);
    const double z = (q[2] + 120) * std::cos(q[kA]) - q[1] * std::sin(q[kA]);
    return {q[0] * std::cos(q[kC]) + y * std::sin(q[kC]),
            y * std::cos(q[kC]) - q[0] * std::sin(q[kC]), z - 20};
}

void ExpectEnd(const MotionRow& row, const Vec3& wanted)
{
    const Vec3 end = EndOnTable(row.joints);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(end[i], wanted[i], 1e-5);
        EXPECT_NEAR(row.asked.position[i], wanted[i], 1e-9);
    }
    EXPECT_LE(row.error.position, 1e-5);
    EXPECT_LE(row.error.direction_deg, 1e-6);
}

void ExpectDirection(const MotionRow& row, const Vec3& wanted)
{
    const double a = row.joints[kA];
    const double c = row.joints[kC];
    EXPECT_NEAR(std::sin(a) * std::sin(c), wanted[0], 1e-9);
    EXPECT_NEAR(std::sin(a) * std::cos(c), wanted[1], 1e-9);
    EXPECT_NEAR(std::cos(a), wanted[2], 1e-9);
}

std::vector<MotionRow> SwungRows(const Motion& motion)
{
    std::vector<MotionRow> swung;
    std::copy_if(motion.rows.begin(), motion.rows.end(), std::back_inserter(swung),
                 [](const MotionRow& row) { return row.flags.isRewind; });
    return swung;
}

/// The tool pulled back by `retract` at the point of the rows, the axes swung there, the tool back.
void ExpectSwing(const PlanRig& rig, const std::vector<MotionRow>& rows, double retract)
{
    ASSERT_EQ(rows.size(), 3U);
    const host::ToolPoint& foot = rig.path.points[rows[0].point];
    Vec3 back = foot.position;
    for (std::size_t i = 0; i < 3; ++i) {
        back[i] += retract * foot.direction[i];
    }
    ExpectEnd(rows[0], back);
    ExpectEnd(rows[1], back);
    ExpectEnd(rows[2], foot.position);
    for (const MotionRow& row : rows) {
        EXPECT_EQ(row.point, rows[0].point);
        ExpectDirection(row, foot.direction);
        EXPECT_TRUE(host::AreWithinLimits(rig.machine.AxesOf(rig.machine.streams[0]), row.joints));
        EXPECT_FALSE(row.flags.isRapid);
        EXPECT_FALSE(row.flags.isInserted);
    }
    for (const std::size_t axis : {kA, kC}) { // rests where the tool moves along itself
        EXPECT_NEAR(rows[2].joints[axis], rows[1].joints[axis], 1e-12);
    }
}

// Axes that run out of turns -----------------------------------------------------------------

/// C runs from 0 to 300 in one cut.
PathText LongCut()
{
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 300);
    return path;
}

TEST(MotionBuilder, RefusesAnAxisThatRunsOutOfTurns)
{
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]", LongCut());
    const Motion motion = rig.Plan();
    const std::vector<Event> failed = motion.EventsOf(EventKind::Failed);
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(
        failed[0].sentence,
        "an axis has run out of turns here, and there is no rapid at which it could have been "
        "turned back; allow --rewind retract, or put a rapid before");
    EXPECT_EQ(motion.NumFailed(), 1U);
    EXPECT_TRUE(SwungRows(motion).empty());
    // C may turn back anywhere from 160 to 200, and not later; behind it stands a turn lower.
    const std::vector<MotionRow> rows = motion.PointRows();
    ASSERT_EQ(rows.size(), 31U);
    const std::size_t at = failed[0].point;
    EXPECT_GE(at, 17U);
    EXPECT_LE(at, 21U);
    EXPECT_TRUE(rows[at].flags.hasFailed);
    EXPECT_TRUE(rows[at].joints.empty());
    EXPECT_NEAR(ToDegrees(rows[at - 1].joints[kC]), 10.0 * static_cast<double>(at - 1), 1e-9);
    EXPECT_NEAR(ToDegrees(rows[at + 1].joints[kC]), 10.0 * static_cast<double>(at + 1) - 360, 1e-9);
    // It is told of, and not as if there were a rapid.
    const std::vector<Event> rewound = motion.EventsOf(EventKind::Rewind);
    ASSERT_EQ(rewound.size(), 1U);
    EXPECT_EQ(rewound[0].point, at + 1);
    EXPECT_EQ(rewound[0].sentence, "C turns by 340 deg past what is not reached");
}

TEST(MotionBuilder, TurnsAnAxisBackWithTheToolPulledBack)
{
    PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]", LongCut());
    rig.options.rewind = RetractPolicy::Retract;
    rig.options.retract = 40.0;
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    const std::vector<MotionRow> swung = SwungRows(motion);
    ExpectSwing(rig, swung, 40.0);
    EXPECT_NEAR(swung[1].joints[kC], swung[0].joints[kC] - host::kTurn, 1e-9);
    EXPECT_NEAR(swung[1].joints[kA], swung[0].joints[kA], 1e-9);
    for (const MotionRow& row : swung) {
        EXPECT_FALSE(row.flags.isFlip);
        EXPECT_EQ(row.branch, motion.rows[0].branch);
    }
    const std::vector<Event> events = motion.EventsOf(EventKind::Rewind);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].point, swung[0].point);
    EXPECT_EQ(events[0].line, rig.path.points[swung[0].point].line);
    EXPECT_EQ(events[0].sentence, "the tool is pulled back by 40, an axis is turned back by whole "
                                  "turns, and the tool returns");
    // The swing stands behind the row of its point, and the cut goes on from there.
    const auto first = std::find_if(motion.rows.begin(), motion.rows.end(),
                                    [](const MotionRow& row) { return row.flags.isRewind; });
    EXPECT_EQ((first - 1)->point, swung[0].point);
    EXPECT_FALSE((first - 1)->flags.isInserted);
    EXPECT_EQ((first + 3)->point, swung[0].point + 1);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR((first + 2)->joints[axis], (first - 1)->joints[axis], 1e-5);
    }
}

TEST(MotionBuilder, RefusesASwingForWhichThereIsNoRoom)
{
    // Z ends at 400: the tool cannot be pulled back by more than about half a metre.
    PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]", LongCut());
    rig.options.rewind = RetractPolicy::Retract;
    rig.options.retract = 1000.0;
    const Motion motion = rig.Plan();
    const std::vector<Event> failed = motion.EventsOf(EventKind::Failed);
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(failed[0].sentence,
              "an axis has to swing before it, and there is no room within the limits to pull the "
              "tool back for that; change --retract, or put a rapid before");
    EXPECT_TRUE(SwungRows(motion).empty());
}

TEST(MotionBuilder, UnwindsAtARapidWithoutBeingAsked)
{
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 170);
    path.To({10, 34, 50}, ForTable(20, 170), kRapid);
    Wind(path, 20, 170, 270);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]", path);
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    EXPECT_TRUE(SwungRows(motion).empty());
    const std::vector<Event> events = motion.EventsOf(EventKind::Rewind);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].point, 18U);
    EXPECT_EQ(events[0].line, 11 + 10 * 18);
    EXPECT_EQ(events[0].sentence, "C turns by 360 deg on the rapid to it");
    EXPECT_TRUE(motion.EventsOf(EventKind::Flip).empty());
}

TEST(MotionBuilder, LeavesAnUnlimitedAxisToWindUp)
{
    const Motion motion = TableRig(kTiltsOneWay, test::kUnlimited, LongCut()).Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    EXPECT_TRUE(motion.events.empty());
    EXPECT_NEAR(ToDegrees(motion.rows.back().joints[kC]), 300, 1e-9);
}

// Branches that cannot be kept ---------------------------------------------------------------

/// C runs from 0 to 150. With A positive it ends at its limit of 100; with A negative it stands
/// half a turn lower, and its limit of -100 is met at 80.
PathText CutAcrossBranches()
{
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 150);
    return path;
}

TEST(MotionBuilder, RefusesABranchThatCannotBeKept)
{
    const PlanRig rig = TableRig("limits = [-60, 60]", "limits = [-100, 100]", CutAcrossBranches());
    const Motion motion = rig.Plan();
    const std::vector<Event> failed = motion.EventsOf(EventKind::Failed);
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(
        failed[0].sentence,
        "from here on this branch does not keep to the limits, and there is no rapid at which "
        "it could have been changed; allow --branch-change retract, or put a rapid before");
    const std::vector<Event> flips = motion.EventsOf(EventKind::Flip);
    ASSERT_EQ(flips.size(), 1U);
    EXPECT_EQ(flips[0].sentence, "the axes swing to branch 2 past what is not reached");
}

TEST(MotionBuilder, SwingsToTheOtherBranchWithTheToolPulledBack)
{
    PlanRig rig = TableRig("limits = [-60, 60]", "limits = [-100, 100]", CutAcrossBranches());
    rig.options.branchChange = RetractPolicy::Retract;
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    const std::vector<MotionRow> swung = SwungRows(motion);
    ExpectSwing(rig, swung, 50.0);
    EXPECT_NEAR(ToDegrees(swung[0].joints[kA]), 20, 1e-9);
    EXPECT_NEAR(ToDegrees(swung[1].joints[kA]), -20, 1e-9);
    EXPECT_NEAR(swung[1].joints[kC], swung[0].joints[kC] - host::kPi, 1e-9);
    EXPECT_GE(ToDegrees(swung[0].joints[kC]), 80 - 1e-9);
    const std::array<int, 3> branches{1, 2, 2};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(swung[i].flags.isFlip);
        EXPECT_EQ(swung[i].branch, branches[i]);
    }
    const std::vector<Event> events = motion.EventsOf(EventKind::Flip);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].point, swung[0].point);
    EXPECT_EQ(events[0].sentence,
              "the tool is pulled back by 50, the axes swing to branch 2, and the tool returns");
}

TEST(MotionBuilder, SwingsOnCoarsePathsToo)
{
    // From one point to the next the tool's lean turns by 80 degrees: where it stands before the
    // swing is far from where it leads.
    PathText path;
    path.To({10, 0, 0}, ForTable(50, 0), kRapid);
    for (int i = 1; i <= 6; ++i) {
        path.To({10, 5.0 * i, 0}, ForTable(50, 80 * i));
    }
    PlanRig rig = TableRig("limits = [5, 60]\ninitial = 10", "limits = [-230, 230]", path);
    rig.options.rewind = RetractPolicy::Retract;
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    const std::vector<MotionRow> swung = SwungRows(motion);
    ExpectSwing(rig, swung, 50.0);
    EXPECT_NEAR(swung[1].joints[kC], swung[0].joints[kC] - host::kTurn, 1e-9);
}

// Limits -------------------------------------------------------------------------------------

TEST(MotionBuilder, TellsOfEachTimeThatAnAxisComesToItsLimit)
{
    // X = 300 with the tool upright and C at rest; twice, the first time for three points.
    PathText path;
    path.To({200, 0, 0}, {0, 0, 1}, kRapid).To({300, 0, 0}, {0, 0, 1}).To({300, 20, 0}, {0, 0, 1});
    path.To({300, 30, 0}, {0, 0, 1}).To({250, 30, 0}, {0, 0, 1}).To({300, 0, 0}, {0, 0, 1});
    const PlanRig rig = TableRig("limits = [-120, 30]", test::kUnlimited, path);
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    const std::vector<Event> events = motion.EventsOf(EventKind::Limit);
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].point, 1U);
    EXPECT_EQ(events[0].line, 21);
    EXPECT_EQ(events[0].sentence, "X 300 mm is at its limit (limits -300 to 300)");
    EXPECT_EQ(events[1].point, 5U);
    const std::vector<MotionRow> rows = motion.PointRows();
    const std::array<bool, 6> expected{false, true, true, true, false, true};
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].flags.isAtLimit, expected[i]) << i;
    }
}

TEST(MotionBuilder, ReachesPointsOnALimitToTheLastBit)
{
    // A tilt of 30 degrees, give or take roundings, where A ends at 30; X 300 likewise. No axis
    // stands beyond its limit, by however little.
    test::Repeat(50, 1, [&](test::Random& random) {
        const double tilt_deg = 30.0 + random.OneOf({0.0, 1e-14, -1e-14, 1e-10, 1e-6, -1e-6});
        const double x = 300.0 + random.OneOf({0.0, 1e-13, -1e-13, 1e-9, 5e-7, -5e-7});
        const double c = ToRadians(random.Between(-180, 180));
        PathText path; // the place of the part that C brings to x
        path.To({x * std::cos(c), -x * std::sin(c), 0}, ForTable(tilt_deg, ToDegrees(c)), kRapid);
        const PlanRig rig = TableRig("limits = [0, 30]", "limits = [-200, 200]", path);
        const Motion motion = rig.Plan();
        ASSERT_EQ(motion.NumFailed(), 0U) << motion.events.front().sentence;
        const MotionRow& row = motion.rows.front();
        EXPECT_LE(row.joints[kA], rig.AxisNamed("A").joint->GetHiBound());
        EXPECT_LE(row.joints[kX], 300.0);
        EXPECT_LE(row.error.position, 3e-6);
        EXPECT_LE(row.error.direction_deg, 2e-6);
        EXPECT_TRUE(row.flags.isAtLimit);
    });
}

TEST(MotionBuilder, DoesNotReachPointsBeyondALimit)
{
    PathText path;
    path.To({0, 0, 0}, ForTable(30.01, 0), kRapid).To({0, 0, 0}, ForTable(29, 0));
    const Motion motion = TableRig("limits = [0, 30]", test::kUnlimited, path).Plan();
    const std::vector<Event> failed = motion.EventsOf(EventKind::Failed);
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(failed[0].point, 0U);
    EXPECT_EQ(
        failed[0].sentence.rfind("reaching it would need A 30.01 deg (limits 0 to 30); at the "
                                 "limit ",
                                 0),
        0U)
        << failed[0].sentence;
}

TEST(MotionBuilder, NamesTheAxisInTheWayOfAnUprightToolToo)
{
    PathText path;
    path.To({0, 0, 0}, {0, 0, 1}, kRapid).To({350, 0, 0}, {0, 0, 1}).To({0, 0, 0}, {0, 0, 1});
    path.To({0, 0, 0}, {0, 0, -1});
    const Motion motion = TableRig("limits = [-120, 30]", test::kUnlimited, path).Plan();
    const std::vector<Event> failed = motion.EventsOf(EventKind::Failed);
    ASSERT_EQ(failed.size(), 2U);
    EXPECT_EQ(failed[0].sentence, "reaching it would need X 350 mm (limits -300 to 300); at the "
                                  "limit 50 mm and 0 deg remain");
    EXPECT_EQ(failed[1].point, 3U);
    EXPECT_EQ(failed[1].sentence.rfind("reaching it would need A -180 deg (limits -120 to 30)", 0),
              0U)
        << failed[1].sentence;
    EXPECT_EQ(motion.PointRows().size(), 4U);
}

TEST(MotionBuilder, DoesNotReachAPoleThatItsAxesDoNotReach)
{
    PathText path;
    path.To({0, 0, 0}, {0, 0, 1}, kRapid).To({0, 0, 0}, Leaning(11, 0));
    const Motion motion = PlanRig(LeaningSpindle(), path.Path()).Plan();
    const std::vector<Event> failed = motion.EventsOf(EventKind::Failed);
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(failed[0].point, 0U);
    EXPECT_EQ(failed[0].sentence.rfind("no joint values were found that reach it; ", 0), 0U)
        << failed[0].sentence;
}

// The pole and large turns -------------------------------------------------------------------

TEST(MotionBuilder, TellsOfEachTimeThatTheToolComesNearThePole)
{
    PathText path;
    path.To({0, 0, 0}, Leaning(10, 0), kRapid).To({10, 0, 0}, Leaning(1.5, 0));
    path.To({20, 0, 0}, Leaning(0.5, 0)).To({30, 0, 0}, Leaning(8, 0));
    path.To({40, 0, 0}, Leaning(8, 30)).To({50, 0, 0}, Leaning(8, 210)); // straight over it
    path.To({60, 0, 0}, Leaning(1, 210), kRapid);
    PlanRig rig = TableRig("limits = [-120, 30]", test::kUnlimited, path);
    const std::vector<Event> events = rig.Plan().EventsOf(EventKind::Pole);
    ASSERT_EQ(events.size(), 4U);
    const std::string comes = "the tool comes within 2 deg of the pole of C";
    EXPECT_EQ(events[0].point, 1U);
    EXPECT_EQ(events[0].line, 21);
    EXPECT_EQ(events[0].sentence, comes);
    EXPECT_EQ(events[1].point, 5U);
    EXPECT_EQ(events[1].sentence, comes);
    EXPECT_EQ(events[2].point, 5U);
    EXPECT_EQ(events[2].sentence.rfind("the tool passes over the pole to branch ", 0), 0U);
    EXPECT_EQ(events[3].point, 6U);
    EXPECT_EQ(events[3].sentence, comes);
    rig.options.poleCone = ToRadians(0.2); // the crossing alone, and what it does
    EXPECT_EQ(rig.Plan().EventsOf(EventKind::Pole).size(), 2U);
}

TEST(MotionBuilder, FlagsRowsInThePoleCone)
{
    PathText path;
    path.To({0, 0, 0}, Leaning(10, 0), kRapid).To({50, 0, 0}, Leaning(0.5, 90));
    const Motion motion = TableRig("limits = [-120, 30]", test::kUnlimited, path).Plan();
    ASSERT_GT(motion.NumInserted(), 3U);
    for (const MotionRow& row : motion.rows) {
        const double tilt = std::hypot(row.asked.direction[0], row.asked.direction[1]);
        EXPECT_EQ(row.flags.isPole, tilt <= std::sin(ToRadians(2.0)));
    }
}

TEST(MotionBuilder, TellsOfLargeTurnsOnTheWay)
{
    // A little less and a little more than a quarter of a turn between two points, far from the
    // pole.
    PathText path;
    path.To({0, 0, 0}, ForTable(25, 0), kRapid).To({0, 0, 0}, ForTable(25, 89));
    path.To({0, 0, 0}, ForTable(25, 180));
    const Motion motion = TableRig(kTiltsOneWay, test::kUnlimited, path).Plan();
    ASSERT_EQ(motion.events.size(), 1U);
    EXPECT_EQ(motion.events[0].kind, EventKind::Flip);
    EXPECT_EQ(motion.events[0].point, 2U);
    EXPECT_EQ(motion.events[0].sentence, "C turns by 91 deg on the way to it");
    EXPECT_TRUE(motion.rows.back().flags.isFlip);
    EXPECT_EQ(std::count_if(motion.rows.begin(), motion.rows.end(),
                            [](const MotionRow& row) { return row.flags.isFlip; }),
              1);
}

// Events of any motion -----------------------------------------------------------------------

/// Wanders over the pole and out of reach, with rapids now and then.
PathText RandomPath(test::Random& random)
{
    double tilt = random.Between(0, 60);
    double azimuth = 0;
    PathText path;
    for (int i = 0; i < 80; ++i) {
        tilt = random.OneIn(25) ? 0.0 : std::clamp(tilt + random.Between(-8, 8), 0.0, 75.0);
        azimuth += random.Between(-20, 25);
        const double x = random.OneIn(40) ? 900.0 : random.Between(-60, 60);
        path.To({x, random.Between(-60, 60), 0}, Leaning(tilt, azimuth), random.OneIn(15));
    }
    return path;
}

TEST(MotionBuilder, TellsOfEveryChangeOfBranchAndEveryFailureWithItsLine)
{
    test::Repeat(6, 2, [&](test::Random& random) {
        PlanRig rig = TableRig("limits = [-120, 40]", "limits = [-200, 200]", RandomPath(random));
        rig.options.rewind = random.OneIn(2) ? RetractPolicy::Retract : RetractPolicy::Refuse;
        rig.options.branchChange = random.OneIn(2) ? RetractPolicy::Retract : RetractPolicy::Refuse;
        const Motion motion = rig.Plan();
        for (const Event& event : motion.events) {
            ASSERT_LT(event.point, rig.path.points.size());
            EXPECT_EQ(event.line, rig.path.points[event.point].line);
            EXPECT_FALSE(event.sentence.empty());
        }
        const auto isTold = [&](EventKind kind, std::size_t point) {
            return std::any_of(motion.events.begin(), motion.events.end(), [&](const Event& event) {
                return event.kind == kind && event.point == point;
            });
        };
        int branch = 0;
        std::vector<double> before;
        for (const MotionRow& row : motion.rows) {
            SCOPED_TRACE(row.point);
            EXPECT_EQ(row.flags.hasFailed, row.joints.empty());
            if (row.flags.hasFailed) {
                EXPECT_TRUE(isTold(EventKind::Failed, row.point));
                continue;
            }
            EXPECT_LE(row.error.position, 1e-4);
            const bool isFlipTold = isTold(EventKind::Flip, row.point);
            if (row.branch != 0 && branch != 0 && row.branch != branch) {
                EXPECT_TRUE(isFlipTold || isTold(EventKind::Pole, row.point));
            }
            branch = row.branch != 0 ? row.branch : branch;
            // More than half a turn of C is a rewind or a flip: at a rapid, behind a failure, or
            // pulled back.
            if (!before.empty() && std::fabs(row.joints[kC] - before[kC]) > host::kPi + 1e-6) {
                EXPECT_TRUE(isFlipTold || isTold(EventKind::Rewind, row.point));
            }
            before = row.joints;
        }
        EXPECT_EQ(motion.NumFailed(), motion.EventsOf(EventKind::Failed).size());
    });
}

// Unusual machines and paths -----------------------------------------------------------------

constexpr const char* kWide = "limits = [-400, 400]";

std::string MillWithTable(const std::string& rotary, const std::string& carrier)
{
    const std::string slides = test::LinearText("X", "base", "[1, 0, 0]") +
                               test::LinearText("Y", "X", "[0, 1, 0]") +
                               test::LinearText("Z", "Y", "[0, 0, 1]");
    return test::WholeMill(slides + rotary, test::MountText("tool", "Z", "[0, 0, 0]") +
                                                test::MountText("part", carrier, "[0, 0, 0]"));
}

/// With no rotary axis, one, two that are parallel, two of which one turns about the tool, three.
std::vector<std::string> UnusualMachines()
{
    const std::string c = test::RotaryText("C", "base", "[0, 0, 1]", "[0, 0, 0]", kWide);
    const std::string d = test::RotaryText("D", "C", "[0, 0, 1]", "[100, 0, 0]", kWide);
    const std::string a = test::RotaryText("A", "C", "[1, 0, 0]", "[0, 0, 0]", kWide);
    const std::string b = test::RotaryText("B", "A", "[0, 1, 0]", "[0, 0, 0]", kWide);
    return {MillWithTable("", "base"), MillWithTable(c, "C"), MillWithTable(c + d, "D"),
            MillWithTable(c + a, "A"), MillWithTable(c + a + b, "B")};
}

/// One point, equal points, half turns, turns on the spot, far out of reach, hair's breadths.
std::vector<PathText> UnusualPaths()
{
    std::vector<PathText> paths(7);
    paths[0].To({0, 0, 0}, {0, 0, 1});
    paths[1].To({1, 2, 3}, Leaning(20, 30)).To({1, 2, 3}, Leaning(20, 30));
    paths[2].To({0, 0, 0}, {0, 0, 1}).To({0, 0, 0}, {0, 0, -1}).To({0, 0, 0}, {0, 0, 1}, kRapid);
    paths[3].To({0, 0, 0}, Leaning(20, 0)).To({0, 0, 0}, Leaning(20, 180)).To({0, 0, 0}, {1, 0, 0});
    paths[3].To({0, 0, 0}, {-1, 0, 0}).To({0, 0, 0}, {0, 1, 0}).To({0, 0, 0}, {0, -1, 0});
    paths[4].To({1e9, -1e12, 1e300}, {0, 0, 1}).To({-1e300, 1e300, 0}, Leaning(40, 50));
    paths[5].To({0, 0, 0}, {0, 0, 1}).To({1e7, 0, 0}, {0, 0, 1}).To({10, 0, 0}, {0, 0, 1});
    paths[6].To({0, 0, 0}, Leaning(1e-9, 0)).To({0, 0, 0}, Leaning(1e-12, 90));
    return paths;
}

/// Whatever comes of it, every point has its row, and every row that has not failed is right.
Motion ExpectSound(const PlanRig& rig)
{
    Motion motion = rig.Plan();
    EXPECT_EQ(motion.PointRows().size(), rig.path.points.size());
    EXPECT_EQ(motion.NumFailed(), motion.EventsOf(EventKind::Failed).size());
    for (const MotionRow& row : motion.rows) {
        EXPECT_LE(row.error.position, row.flags.hasFailed ? 0.0 : 1e-4);
        EXPECT_LE(row.error.direction_deg, row.flags.hasFailed ? 0.0 : 0.025);
    }
    return motion;
}

TEST(MotionBuilder, IsSoundOnUnusualMachinesAndPaths)
{
    for (const std::string& machine : UnusualMachines()) {
        for (const PathText& path : UnusualPaths()) {
            ExpectSound({machine, path.Path()});
        }
    }
}

TEST(MotionBuilder, IsSoundWithAnyAxesLocked)
{
    constexpr std::size_t kAxes = 5;
    PathText path;
    path.To({0, 0, 0}, {0, 0, 1}).To({10, 0, 0}, {0, 0, 1}).To({10, 5, 0}, Leaning(10, 20));
    path.To({10, 5, 0}, Leaning(10, -90));
    for (unsigned locked = 0; locked < 1U << kAxes; ++locked) {
        SCOPED_TRACE(locked);
        const PlanRig rig = TableRig("limits = [-120, 30]", test::kUnlimited, path);
        for (std::size_t i = 0; i < kAxes; ++i) {
            rig.machine.axes[i].joint->SetIsLocked((locked >> i & 1U) != 0);
        }
        for (const MotionRow& row : ExpectSound(rig).rows) {
            for (std::size_t i = 0; i < kAxes && !row.flags.hasFailed; ++i) {
                if ((locked >> i & 1U) != 0) {
                    EXPECT_EQ(row.joints[i], 0.0);
                }
            }
        }
    }
}

TEST(MotionBuilder, PlansThreeAxisWorkOnAThreeAxisMill)
{
    PathText path;
    path.To({0, 0, 50}, {0, 0, 1}, kRapid).To({0, 0, 0}, {0, 0, 1}).To({100, 50, -20}, {0, 0, 1});
    const Motion motion = PlanRig(UnusualMachines()[0], path.Path()).Plan();
    ASSERT_EQ(motion.rows.size(), 3U);
    EXPECT_TRUE(motion.events.empty());
    const std::vector<double> end{100, 50, -20};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(motion.rows[2].joints[i], end[i], 1e-9);
    }
    EXPECT_EQ(motion.rows[2].branch, 1);
}

TEST(MotionBuilder, TurnsTheSpindleOfALatheThatHasNoYAxis)
{
    // X, Z and C alone place an upright tool: on a square around the C axis X follows the distance
    // from it, and C the angle. The corners are 42.43 away, the middles of the sides 30.
    const std::string lathe = test::WholeMill(
        test::LinearText("Z", "base", "[0, 0, 1]") + test::LinearText("X", "Z", "[1, 0, 0]") +
            test::RotaryText("B", "X", "[0, 1, 0]", "[0, 0, 150]", "limits = [-100, 100]") +
            test::RotaryText("C", "base", "[0, 0, 1]", "[0, 0, 0]", test::kUnlimited),
        test::MountText("tool", "B", "[0, 0, 0]") + test::MountText("part", "C", "[0, 0, 0]"));
    PathText path;
    path.To({30, 30, 0}, {0, 0, 1}, kRapid).To({-30, 30, 0}, {0, 0, 1});
    path.To({-30, -30, 0}, {0, 0, 1}).To({30, -30, 0}, {0, 0, 1}).To({30, 30, 0}, {0, 0, 1});
    const Motion motion = PlanRig(lathe, path.Path()).Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    double least = 100.0;
    for (const MotionRow& row : motion.rows) {
        EXPECT_LE(row.error.position, 1e-4);
        EXPECT_NEAR(row.joints[2], 0.0, 1e-6);
        const double distance = std::hypot(row.asked.position[0], row.asked.position[1]);
        EXPECT_NEAR(row.joints[1], distance, 1e-4);
        least = std::min(least, row.joints[1]);
    }
    EXPECT_NEAR(least, 30.0, 0.1);
    EXPECT_NEAR(ToDegrees(motion.rows.back().joints[3] - motion.rows.front().joints[3]), -360,
                1e-4);
}

} // namespace
