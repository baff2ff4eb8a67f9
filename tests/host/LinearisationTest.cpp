// The rows between two points: whether the tool keeps to the straight way, and by how many of them.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "geometry/CutterLocation.h"
#include "support/Repeat.h"

namespace
{

using host::CutterLocation;
using host::EventKind;
using host::MotionRow;
using host::ToDegrees;
using host::ToRadians;
using host::Vec3;
using test::kRapid;
using test::Leaning;
using test::Motion;
using test::PathText;
using test::PlanRig;

using Joints = std::vector<double>;

// Forward kinematics of the two tables, written out from their drawings.

/// X Y Z A C; the A axis runs 120 below the tool's end, the part's zero lies 20 above it.
CutterLocation ToolOfTableTable(const Joints& q)
{
    const double sinA = std::sin(q[3]);
    const double cosA = std::cos(q[3]);
    const double sinC = std::sin(q[4]);
    const double cosC = std::cos(q[4]);
    const double y = q[1] * cosA + (q[2] + 120) * sinA;
    const double z = (q[2] + 120) * cosA - q[1] * sinA;
    return {{q[0] * cosC + y * sinC, y * cosC - q[0] * sinC, z - 20},
            {sinA * sinC, sinA * cosC, cosA}};
}

/// Y Z B X C; the tool's end hangs 150 below the B axis, the part's zero lies 50 below that end.
CutterLocation ToolOfHeadTable(const Joints& q)
{
    const double sinB = std::sin(q[2]);
    const double cosB = std::cos(q[2]);
    const double sinC = std::sin(q[4]);
    const double cosC = std::cos(q[4]);
    const double x = q[3] - 150 * sinB;
    return {{x * cosC + q[0] * sinC, q[0] * cosC - x * sinC, q[1] + 150 - 150 * cosB + 50},
            {sinB * cosC, -sinB * sinC, cosB}};
}

struct Mill
{
    const char* name;
    std::string (*text)(const std::string& ofTilt, const std::string& ofTurn);
    CutterLocation (*tool)(const Joints& joints);
    std::size_t tilt;
    std::size_t turn;
};

const std::array<Mill, 2> kMills{{
    {"tilting table", test::TableTableText, ToolOfTableTable, 3, 4},
    {"head over a table", test::HeadTableText, ToolOfHeadTable, 2, 4},
}};

constexpr const char* kWideTilt = "limits = [-120, 120]";

/// What lies between the rows of a motion.
struct Between
{
    double worst{0.0};      //!< deviation, in units of the tolerances
    double turnInCone{0.0}; //!< largest step of the turning axis with an end in the pole cone [rad]
};

double TiltOf(const MotionRow& row)
{
    return std::hypot(row.asked.direction[0], row.asked.direction[1]);
}

/// Looks at 64 places between any two rows of a cut, the axes moving evenly.
Between LookBetween(const PlanRig& rig, const Mill& mill, const Motion& motion)
{
    Between between;
    const double linear = rig.options.tolerances.linear;
    const double angle = ToRadians(rig.options.tolerances.angle_deg);
    for (std::size_t i = 1; i < motion.rows.size(); ++i) {
        const MotionRow& before = motion.rows[i - 1];
        const MotionRow& row = motion.rows[i];
        if (before.flags.hasFailed || row.flags.hasFailed || rig.path.points[row.point].isRapid) {
            continue;
        }
        const host::ToolPoint& from = rig.path.points[row.point - 1];
        const host::ToolPoint& to = rig.path.points[row.point];
        for (int place = 0; place <= 64; ++place) {
            Joints joints = before.joints;
            for (std::size_t axis = 0; axis < joints.size(); ++axis) {
                joints[axis] += (row.joints[axis] - before.joints[axis]) * place / 64.0;
            }
            const host::Deviation deviation =
                DeviationFrom({from.position, from.direction}, {to.position, to.direction},
                              mill.tool(joints), linear, angle);
            between.worst =
                std::max({between.worst, deviation.position / linear, deviation.direction / angle});
        }
        if (std::min(TiltOf(before), TiltOf(row)) <= std::sin(rig.options.poleCone)) {
            between.turnInCone = std::max(
                between.turnInCone, std::fabs(row.joints[mill.turn] - before.joints[mill.turn]));
        }
    }
    return between;
}

/// Plans, and expects every point reached and the tool on its way between them.
Motion ExpectKept(const PlanRig& rig, const Mill& mill)
{
    Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    const Between between = LookBetween(rig, mill, motion);
    EXPECT_LE(between.worst, 1.0);
    EXPECT_LE(ToDegrees(between.turnInCone), 10.0 + 1e-9);
    return motion;
}

PlanRig RigOf(const Mill& mill, const PathText& path)
{
    return {mill.text(kWideTilt, test::kUnlimited), path.Path()};
}

// Any way ------------------------------------------------------------------------------------

TEST(Linearisation, KeepsToTheStraightWayOnSmoothAndOnCoarsePaths)
{
    for (const Mill& mill : kMills) {
        SCOPED_TRACE(mill.name);
        test::Repeat(12, 1, [&](test::Random& random) {
            // Steps of the tilt and of the azimuth [deg], and of the position.
            const double tiltStep = random.OneOf({1, 5, 30});
            const double azimuthStep = random.OneOf({1, 20, 90, 170});
            const double step = random.OneOf({0, 1, 50});
            double tilt = random.Between(0, 60);
            double azimuth = random.Between(0, 360);
            Vec3 position{0, 0, 0};
            PathText path;
            for (int i = 0; i < 15; ++i) {
                tilt = std::clamp(tilt + random.Between(-tiltStep, tiltStep), 0.0, 80.0);
                azimuth += random.Between(-azimuthStep, azimuthStep);
                for (double& coordinate : position) {
                    coordinate = std::clamp(coordinate + random.Between(-step, step), -80.0, 80.0);
                }
                path.To(position, Leaning(tilt, azimuth), i == 0);
            }
            ExpectKept(RigOf(mill, path), mill);
        });
    }
}

TEST(Linearisation, KeepsToTheStraightWayAroundThePole)
{
    for (const Mill& mill : kMills) {
        SCOPED_TRACE(mill.name);
        test::Repeat(12, 2, [&](test::Random& random) {
            const double reach_deg = random.OneOf({0.01, 0.02, 0.03, 0.1, 0.5, 2});
            const double step = random.OneOf({0, 1, 50});
            PathText path;
            for (int i = 0; i < 15; ++i) {
                path.To({random.Between(-step, step), random.Between(-step, step), 0},
                        Leaning(random.Between(0, reach_deg), random.Between(0, 360)), i == 0);
            }
            ExpectKept(RigOf(mill, path), mill);
        });
    }
}

/// 20 degrees from one side of the pole to the other in ten moves, `beside_deg` away from it; by
/// nine, so that it lies within one of them.
PathText PathPast(double beside_deg, int moves, double length)
{
    PathText path;
    for (int i = 0; i <= moves; ++i) {
        const double lean = std::tan(ToRadians(-10.0 + 20.0 * i / moves));
        const auto direction = host::Normalised({lean, std::tan(ToRadians(beside_deg)), 1.0});
        path.To({length * i / moves, 3, 0}, direction.value(), i == 0);
    }
    return path;
}

TEST(Linearisation, PassesThePoleAndBesideItByFewRows)
{
    for (const Mill& mill : kMills) {
        for (const double beside_deg : {0.0, 0.001, 0.01, 0.02, 0.03, 0.1, 1.0}) {
            for (const int moves : {9, 10}) {
                for (const double length : {0.0, 20.0}) {
                    SCOPED_TRACE(std::string(mill.name) + " " + std::to_string(beside_deg) + " " +
                                 std::to_string(moves));
                    const Motion motion =
                        ExpectKept(RigOf(mill, PathPast(beside_deg, moves, length)), mill);
                    // Within half the angle tolerance, 0.025 degrees, the turning axis rests, and
                    // the tilt passes to the other side: no more than a row for each move where the
                    // head swings. Else half a turn by steps of ten degrees, twice that at most as
                    // steps are halves of halves.
                    EXPECT_LE(motion.NumInserted(), beside_deg < 0.025 ? 11U : 47U);
                }
            }
        }
    }
}

TEST(Linearisation, LeavesOutTheRowsWhereTheyAreNotWanted)
{
    PlanRig rig = RigOf(kMills[0], PathPast(0.1, 9, 20));
    rig.options.insertsRows = false;
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    EXPECT_EQ(motion.rows.size(), 10U);
}

// How many rows ------------------------------------------------------------------------------

TEST(Linearisation, HalvesTheWayUntilTheToolStaysWithinTheTolerance)
{
    // The head swivels by 60 degrees with the tool's end at rest. While B moves evenly by h and X
    // and Z along the chord, the end strays by 150 (1 - cos(h / 2)), of which 0.8 of the tolerance
    // is used: 0.008 at 1.18 degrees, 0.16 at 5.29 degrees. 60 / 64 and 60 / 16 are below.
    PathText path;
    path.To({0, 0, 0}, Leaning(5, 0), kRapid).To({0, 0, 0}, Leaning(65, 0));
    PlanRig rig = RigOf(kMills[1], path);
    rig.options.tolerances.linear = 0.01;
    const Motion fine = ExpectKept(rig, kMills[1]);
    EXPECT_EQ(fine.NumInserted(), 63U);
    for (std::size_t i = 1; i < fine.rows.size(); ++i) {
        const double step = fine.rows[i].joints[2] - fine.rows[i - 1].joints[2];
        EXPECT_NEAR(ToDegrees(step), 60.0 / 64, 1e-9);
    }
    rig.options.tolerances.linear = 0.2;
    EXPECT_EQ(ExpectKept(rig, kMills[1]).NumInserted(), 15U);
}

TEST(Linearisation, NeedsFewerRowsWhereMoreIsAllowed)
{
    for (const Mill& mill : kMills) {
        PathText path;
        path.To({0, 0, 0}, Leaning(10, 0), kRapid).To({50, 10, 0}, Leaning(40, 70));
        path.To({60, -10, 20}, Leaning(50, 200)).To({60, -10, 0}, Leaning(30, 120));
        PlanRig rig = RigOf(mill, path);
        rig.options.tolerances = {0.01, 0.05};
        const std::size_t fine = ExpectKept(rig, mill).NumInserted();
        rig.options.tolerances = {0.1, 0.5};
        const std::size_t coarse = ExpectKept(rig, mill).NumInserted();
        // Deviations grow with the square of a step: a tenth of the tolerance takes sqrt 10 = 3.2
        // times the rows; by halves, something between twice and four times.
        EXPECT_GT(fine, 2 * coarse);
        EXPECT_LT(fine, 4 * coarse + 4);
        EXPECT_GT(coarse, 10U);
    }
}

TEST(Linearisation, InsertsNothingWhereTheAxesLeadStraight)
{
    PathText path;
    path.To({0, 0, 0}, Leaning(30, 40), kRapid).To({80, 60, 20}, Leaning(30, 40));
    path.To({80, 60, 20}, Leaning(30, 40)).To({0, 0, 0}, Leaning(60, 100), kRapid);
    for (const Mill& mill : kMills) {
        EXPECT_EQ(ExpectKept(RigOf(mill, path), mill).rows.size(), 4U);
    }
}

TEST(Linearisation, AsksOfTheRowsWhatLiesOnTheStraightWay)
{
    PathText path;
    path.To({0, 0, 0}, Leaning(10, 0), kRapid).To({60, 20, 10}, Leaning(50, 130));
    const PlanRig rig = RigOf(kMills[0], path);
    const Motion motion = rig.Plan();
    ASSERT_GT(motion.NumInserted(), 10U);
    double before = -1.0;
    for (const MotionRow& row : motion.rows) {
        const double share = row.asked.position[0] / 60.0;
        EXPECT_GT(share, before);
        before = share;
        EXPECT_NEAR(row.asked.position[1], 20 * share, 1e-9);
        const CutterLocation tool = ToolOfTableTable(row.joints);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(tool.position[i], row.asked.position[i], 1e-4);
        }
        EXPECT_LE(host::AngleBetween(tool.direction, row.asked.direction), 1e-9);
        EXPECT_LE(row.error.position, 1e-4);
        EXPECT_EQ(row.branch, motion.rows.front().branch);
        EXPECT_EQ(row.flags.isInserted, share > 0.0 && share < 1.0);
        EXPECT_EQ(row.point, share > 0.0 ? 1U : 0U);
    }
}

// At the pole --------------------------------------------------------------------------------

double TurnAt_deg(const MotionRow& row)
{
    return ToDegrees(row.joints[4]);
}

TEST(Linearisation, HoldsTheFreeAxisWhereTheToolIsUprightThroughout)
{
    for (const Mill& mill : kMills) {
        PathText path;
        for (int i = 0; i < 20; ++i) {
            path.To({5.0 * i, 10.0 * (i % 2), 0}, {0, 0, 1}, i == 0);
        }
        const Motion motion = ExpectKept(RigOf(mill, path), mill);
        EXPECT_EQ(motion.rows.size(), 20U);
        for (const MotionRow& row : motion.rows) {
            EXPECT_EQ(row.joints[mill.turn], 0.0);
            EXPECT_NEAR(row.joints[mill.tilt], 0.0, 1e-12);
            EXPECT_TRUE(row.flags.isPole);
            EXPECT_EQ(row.branch, 0);
        }
    }
}

TEST(Linearisation, HoldsTheFreeAxisInTheNoiseAroundThePole)
{
    for (const Mill& mill : kMills) {
        test::Repeat(4, 3, [&](test::Random& random) {
            PathText path;
            for (int i = 0; i < 40; ++i) {
                path.To({0.5 * i, 0, 0}, Leaning(random.Between(0, 0.01), random.Between(0, 360)),
                        i == 0);
            }
            const Motion motion = ExpectKept(RigOf(mill, path), mill);
            EXPECT_EQ(motion.rows.size(), 40U);
            for (const MotionRow& row : motion.rows) {
                EXPECT_EQ(row.joints[mill.turn], 0.0);
                EXPECT_LE(row.error.direction_deg, 0.01);
                EXPECT_LE(row.error.position, 1e-4);
            }
        });
    }
}

TEST(Linearisation, StandsAtThePoleAsItWillLeaveIt)
{
    // A tool that leans towards azimuth 50 has the table at C -50, or at 130.
    PathText path;
    path.To({0, 0, 0}, {0, 0, 1}, kRapid).To({10, 0, 0}, {0, 0, 1}).To({20, 0, 0}, Leaning(5, 50));
    const PlanRig rig = RigOf(kMills[1], path);
    const Motion motion = ExpectKept(rig, kMills[1]);
    for (const MotionRow& row : motion.rows) {
        EXPECT_NEAR(TurnAt_deg(row), -50, 1e-9);
    }
}

TEST(Linearisation, StaysAtThePoleAsItCame)
{
    PathText path;
    path.To({0, 0, 0}, Leaning(5, 50), kRapid).To({10, 0, 0}, {0, 0, 1}).To({20, 0, 0}, {0, 0, 1});
    const Motion motion = ExpectKept(RigOf(kMills[1], path), kMills[1]);
    for (const MotionRow& row : motion.rows) {
        EXPECT_NEAR(TurnAt_deg(row), -50, 1e-9);
    }
}

/// Comes to the pole leaning towards azimuth 30 and leaves it towards 90, upright on the way from
/// x = 10 to x = 40.
PathText PathOverThePole(bool hasRapid)
{
    PathText path;
    path.To({0, 0, 0}, Leaning(5, 30), kRapid);
    for (int i = 1; i <= 4; ++i) {
        path.To({10.0 * i, 0, 0}, {0, 0, 1}, hasRapid && i == 3);
    }
    return path.To({50, 0, 0}, Leaning(5, 90));
}

TEST(Linearisation, SpreadsATurnAlongTheWayAtThePole)
{
    // C goes from -30 to -90 along 50 mm, by 12 degrees each 10 mm: each in two steps in the cone.
    const Motion motion = ExpectKept(RigOf(kMills[1], PathOverThePole(false)), kMills[1]);
    const std::vector<MotionRow> rows = motion.PointRows();
    ASSERT_EQ(rows.size(), 6U);
    for (int i = 0; i <= 5; ++i) {
        EXPECT_NEAR(TurnAt_deg(rows[static_cast<std::size_t>(i)]), -30 - 12 * i, 1e-6);
    }
    for (std::size_t i = 1; i < motion.rows.size(); ++i) {
        EXPECT_LE(TurnAt_deg(motion.rows[i]), TurnAt_deg(motion.rows[i - 1]) + 1e-9);
    }
}

TEST(Linearisation, TurnsAtARapidWhereThereIsOneAtThePole)
{
    const Motion motion = ExpectKept(RigOf(kMills[1], PathOverThePole(true)), kMills[1]);
    const std::vector<MotionRow> rows = motion.PointRows();
    ASSERT_EQ(rows.size(), 6U);
    const std::array<double, 6> expected{-30, -30, -30, -90, -90, -90};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_NEAR(TurnAt_deg(rows[i]), expected[i], 1e-6);
    }
}

TEST(Linearisation, TurnsOnTheSpotAtThePole)
{
    // The tool's end stays where it is; only its lean changes, over the pole.
    PathText path;
    path.To({10, 0, 0}, Leaning(5, 30), kRapid).To({10, 0, 0}, {0, 0, 1});
    path.To({10, 0, 0}, Leaning(5, 90));
    for (const Mill& mill : kMills) {
        const Motion motion = ExpectKept(RigOf(mill, path), mill);
        EXPECT_LE(motion.rows.size(), 40U);
    }
}

TEST(Linearisation, WindsALimitedAxisBackAtThePole)
{
    // C runs up to 180 of its 200 degrees, over the pole, and on to 250, which the head cannot meet
    // on its other side: at the pole C turns back by a whole turn, to -110.
    PathText path;
    for (int i = 0; i <= 9; ++i) {
        path.To({10, 2.0 * i, 0}, Leaning(20, -20 * i), i == 0);
    }
    path.To({10, 20, 0}, {0, 0, 1}).To({10, 40, 0}, {0, 0, 1});
    path.To({10, 42, 0}, Leaning(20, -250));
    const PlanRig rig(test::HeadTableText("limits = [-5, 100]", "limits = [-200, 200]"),
                      path.Path());
    const Motion motion = ExpectKept(rig, kMills[1]);
    const std::vector<MotionRow> rows = motion.PointRows();
    ASSERT_EQ(rows.size(), 13U);
    EXPECT_NEAR(TurnAt_deg(rows[9]), 180, 1e-6);
    EXPECT_NEAR(TurnAt_deg(rows[12]), -110, 1e-6);
    EXPECT_EQ(motion.EventsOf(EventKind::Flip).size(), 0U);
}

// What is not kept ---------------------------------------------------------------------------

std::string SentenceOf(const Motion& motion)
{
    const auto failed = motion.EventsOf(EventKind::Failed);
    return failed.size() == 1 ? failed.front().sentence : "";
}

TEST(Linearisation, RefusesAWayOnWhichAnAxisLeavesItsLimits)
{
    // 310 from the C axis, C from 40 to -40: X is 310 cos 40 = 237 at both ends, and 310 halfway,
    // beyond its 300.
    PathText path;
    path.To({310, 0, 0}, Leaning(10, 50), kRapid).To({310, 0, 0}, Leaning(10, 130));
    path.To({310, 0, 0}, Leaning(10, 131));
    PlanRig rig(test::TableTableText("limits = [-5, 30]", test::kUnlimited), path.Path());
    const Motion motion = rig.Plan();
    EXPECT_EQ(SentenceOf(motion), "on the straight way to it an axis leaves its limits; put points "
                                  "on a way around, or move the part");
    EXPECT_TRUE(motion.rows.at(1).flags.hasFailed);
    EXPECT_EQ(motion.rows.size(), 3U); // and goes on behind it
    rig.options.insertsRows = false;
    EXPECT_EQ(rig.Plan().NumFailed(), 0U);
}

TEST(Linearisation, RefusesAWayThroughDirectionsThatAreNotReached)
{
    // With a spindle that leans by 10 degrees the tool is never nearer to the pole than that.
    std::string text = test::TableTableText(kWideTilt, test::kUnlimited);
    const std::string upright = "z_axis = [0, 0, 1]\nx_axis = [1, 0, 0]";
    text.replace(text.find(upright), upright.size(),
                 "z_axis = [0.17364817766693033, 0, 0.984807753012208]\n"
                 "x_axis = [0.984807753012208, 0, -0.17364817766693033]");
    PathText path;
    path.To({0, 0, 0}, Leaning(20, 0), kRapid).To({10, 0, 0}, Leaning(20, 180));
    const Motion motion = PlanRig(text, path.Path()).Plan();
    EXPECT_EQ(SentenceOf(motion),
              "a place on the straight way to it is not reached; put points on a way around");
}

TEST(Linearisation, RefusesTolerancesThatNoRowsKeep)
{
    // A solve leaves a millionth of the unit: what asks for less is refused, and soon.
    PathText path;
    path.To({0, 0, 0}, Leaning(10, 0), kRapid).To({50, 10, 0}, Leaning(40, 70));
    PlanRig rig = RigOf(kMills[0], path);
    rig.options.tolerances = {1e-12, 1e-9};
    EXPECT_EQ(SentenceOf(rig.Plan()), "the axes cannot keep the tool within the tolerances on the "
                                      "straight way to it; allow wider ones");
}

TEST(Linearisation, TurnsTheToolOver)
{
    // Half a turn of the direction between two points has no one way; the path takes always the
    // same, and the machine follows it.
    for (const Vec3& from : {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Leaning(60, 20), Leaning(1, 200)}) {
        for (const Mill& mill : kMills) {
            SCOPED_TRACE(mill.name);
            PathText path;
            path.To({0, 0, 0}, from, kRapid).To({20, 0, 0}, {-from[0], -from[1], -from[2]});
            const PlanRig rig(mill.text("limits = [-200, 200]", test::kUnlimited), path.Path());
            const Motion motion = ExpectKept(rig, mill);
            EXPECT_LE(motion.rows.size(), 600U);
        }
    }
}

} // namespace
