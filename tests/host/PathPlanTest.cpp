// Plans whose blocks are found in any order, by anyone, and operations of several streams.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "planner/PathPlan.h"
#include "support/Random.h"

namespace
{

using host::CandidateBlock;
using host::PathPlan;
using host::Toolpath;
using host::ToRadians;
using test::kRapid;
using test::Leaning;
using test::Motion;
using test::PathText;
using test::PlanRig;

std::vector<std::uint64_t> BitsOf(const CandidateBlock& block)
{
    std::vector<std::uint64_t> bits{block.firstPoint, block.joints.size(), block.exits.size()};
    bits.insert(bits.end(), block.ends.begin(), block.ends.end());
    const auto addDoubles = [&bits](const std::vector<double>& values) {
        std::transform(values.begin(), values.end(), std::back_inserter(bits),
                       [](double value) { return test::BitsOf(value); });
    };
    addDoubles(block.joints);
    for (const std::int8_t branch : block.branches) {
        bits.push_back(static_cast<std::uint64_t>(branch));
    }
    for (const std::int8_t parent : block.parents) {
        bits.push_back(static_cast<std::uint64_t>(parent));
    }
    for (const host::JointValues& exit : block.exits) {
        bits.push_back(exit.size());
        addDoubles(exit);
    }
    return bits;
}

std::vector<std::uint64_t> BitsOf(const Motion& motion)
{
    std::vector<std::uint64_t> bits;
    for (const host::MotionRow& row : motion.rows) {
        bits.push_back(row.point);
        for (const double value : row.joints) {
            bits.push_back(test::BitsOf(value));
        }
        bits.push_back(static_cast<std::uint64_t>(row.branch));
    }
    return bits;
}

/// Some hundred points with all that a path may have: rapids, the pole, what is out of reach.
Toolpath MixedPath(std::uint64_t seed)
{
    test::Random random(seed);
    PathText path;
    double tilt = 30;
    double azimuth = 0;
    for (int i = 0; i < 290; ++i) {
        tilt = std::clamp(tilt + random.Between(-1, 1), 0.0, 80.0);
        azimuth += random.Between(-1, 2);
        const double x = i % 97 == 50 ? 5000.0 : random.Between(-2, 2);
        path.To({x, 0.3 * i - 40, random.Between(0, 2)}, Leaning(i % 41 == 7 ? 0.0 : tilt, azimuth),
                i % 60 == 0);
    }
    return path.Path();
}

/// A tool that leans in one plane alone, before a head with one axis.
Toolpath PlanePath()
{
    test::Random random(3);
    PathText path;
    double tilt = 0;
    for (int i = 0; i < 300; ++i) {
        tilt = std::clamp(tilt + random.Between(-1, 1), -60.0, 60.0);
        path.To({random.Between(-2, 2), 0.1 * i, 0}, Leaning(tilt, 0), i % 100 == 0);
    }
    return path.Path();
}

std::string TiltingHead()
{
    return test::WholeMill(
        test::LinearText("X", "base", "[1, 0, 0]") + test::LinearText("Y", "X", "[0, 1, 0]") +
            test::LinearText("Z", "Y", "[0, 0, 1]") +
            test::RotaryText("B", "Z", "[0, 1, 0]", "[0, 0, 200]", "limits = [-90, 90]"),
        test::MountText("tool", "B", "[0, 0, 0]") + test::MountText("part", "base", "[0, 0, 0]"));
}

struct Case
{
    const char* name;
    std::string machine;
    Toolpath path;
};

std::vector<Case> AllCases()
{
    const char* two = "limits = [-400, 400]";
    return {{"table-table", test::TableTableText("limits = [-120, 30]", two), MixedPath(1)},
            {"head-table", test::HeadTableText("limits = [-100, 100]", two), MixedPath(2)},
            {"head-head", test::HeadHeadText(two, "limits = [-100, 100]"), MixedPath(3)},
            {"one rotary axis", TiltingHead(), PlanePath()}};
}

// The division of the work -------------------------------------------------------------------

TEST(PathPlan, FindsTheSameBlocksInAnyOrderOnAnyMachine)
{
    for (const Case& one : AllCases()) {
        SCOPED_TRACE(one.name);
        const PlanRig rig(one.machine, one.path);
        PathPlan plan(rig.Request());
        ASSERT_GE(plan.NumBlocks(), 3U);
        std::vector<std::vector<std::uint64_t>> blocks;
        for (std::size_t block = 0; block < plan.NumBlocks(); ++block) {
            blocks.push_back(BitsOf(plan.FindBlock(block)));
        }
        const PlanRig other(one.machine, one.path);
        PathPlan backwards(other.Request());
        for (std::size_t block = plan.NumBlocks(); block-- > 0;) {
            EXPECT_EQ(BitsOf(backwards.FindBlock(block)), blocks[block]);
        }
        for (std::size_t block = 0; block < plan.NumBlocks(); ++block) {
            const PlanRig fresh(one.machine, one.path);
            EXPECT_EQ(BitsOf(PathPlan(fresh.Request()).FindBlock(block)), blocks[block]);
            // Not the first that it finds, and not the last.
            EXPECT_EQ(BitsOf(plan.FindBlock(block)), blocks[block]);
        }
    }
}

TEST(PathPlan, DoesNotDependOnWhereTheMachineStands)
{
    for (const Case& one : AllCases()) {
        SCOPED_TRACE(one.name);
        const PlanRig rig(one.machine, one.path);
        const Motion motion = rig.Plan();
        const PlanRig moved(one.machine, one.path);
        for (const host::Axis& axis : moved.machine.axes) {
            axis.joint->SetCurValue(0.3);
        }
        EXPECT_EQ(BitsOf(moved.Plan()), BitsOf(motion));
    }
}

TEST(PathPlan, MakesTheSameMotionOfBlocksFromElsewhere)
{
    for (const Case& one : AllCases()) {
        SCOPED_TRACE(one.name);
        const PlanRig rig(one.machine, one.path);
        const PlanRig other(one.machine, one.path);
        PathPlan found(rig.Request());
        PathPlan elsewhere(other.Request());
        PathPlan plan(rig.Request());
        for (std::size_t block = 0; block < plan.NumBlocks(); ++block) {
            plan.Append((block % 2 == 0 ? found : elsewhere).FindBlock(block));
        }
        const Motion motion = rig.Build(plan);
        EXPECT_EQ(motion.PointRows().size(), one.path.points.size());
        EXPECT_LT(motion.NumFailed(), one.path.points.size() / 10);
        EXPECT_EQ(BitsOf(motion), BitsOf(rig.Plan()));
        EXPECT_EQ(BitsOf(rig.Build(plan)), BitsOf(motion)); // once more
    }
}

TEST(PathPlan, GoesOnFromTheBlockBeforeWhereThereIsAnAxisToSpare)
{
    PathText path;
    for (int i = 0; i < 300; ++i) { // no reason for a way that is followed to end
        path.To({20.0 * std::cos(0.03 * i), 0.1 * i, 0}, Leaning(20.0 + 0.05 * i, 0.5 * i));
    }
    const PlanRig rig(test::TiltingPartText(), path.Path());
    PathPlan plan(rig.Request());
    plan.Append(plan.FindBlock(0));
    EXPECT_THROW(plan.FindBlock(2), std::logic_error);
    CandidateBlock next = plan.FindBlock(1);
    const std::size_t count = plan.Appended(0).ends[127] - plan.Appended(0).ends[126];
    ASSERT_GT(count, 0U);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(next.parents[i], static_cast<int>(i)); // each goes on
    }
    EXPECT_TRUE(plan.Accepts(next));
    next.parents[0] = static_cast<std::int8_t>(count);
    EXPECT_FALSE(plan.Accepts(next)) << "what it is to continue is not there";
    next.parents[0] = 0;
    plan.Append(next);
    plan.Append(plan.FindBlock(2));
    const Motion motion = rig.Build(plan);
    EXPECT_EQ(motion.NumFailed(), 0U);
    EXPECT_TRUE(motion.EventsOf(host::EventKind::Flip).empty());
}

TEST(PathPlan, BuildsWhatIsFoundSoFar)
{
    const PlanRig rig(AllCases()[0].machine, AllCases()[0].path);
    PathPlan plan(rig.Request());
    EXPECT_TRUE(rig.Build(plan).rows.empty());
    plan.Append(plan.FindBlock(0));
    plan.Append(plan.FindBlock(1));
    EXPECT_EQ(plan.NumAppended(), 2U);
    EXPECT_EQ(rig.Build(plan).PointRows().size(), plan.PointsUpTo(1));
    EXPECT_EQ(plan.PointsUpTo(plan.NumBlocks() - 1), rig.path.points.size());
}

TEST(PathPlan, StopsWhereItMayNotGoOn)
{
    const PlanRig rig(AllCases()[0].machine, AllCases()[0].path);
    PathPlan plan(rig.Request());
    plan.Append(plan.FindBlock(0));
    std::vector<std::size_t> asked;
    std::size_t last = 0;
    const bool isWhole = plan.Build({[&](const host::MotionRow& row) { last = row.point; },
                                     [](const host::Event&) {},
                                     [&](std::size_t point) {
                                         asked.push_back(point);
                                         return point < 20;
                                     }});
    EXPECT_FALSE(isWhole);
    EXPECT_EQ(last, 19U);
    std::vector<std::size_t> expected(21);
    std::iota(expected.begin(), expected.end(), std::size_t{0});
    EXPECT_EQ(asked, expected);
}

TEST(PathPlan, AcceptsNothingButItsNextBlock)
{
    const PlanRig rig(AllCases()[0].machine, AllCases()[0].path);
    PathPlan plan(rig.Request());
    const CandidateBlock first = plan.FindBlock(0);
    const CandidateBlock second = plan.FindBlock(1);
    EXPECT_TRUE(plan.Accepts(first));
    EXPECT_FALSE(plan.Accepts(second));
    EXPECT_FALSE(plan.Accepts({}));
    const auto accepts = [&](void (*spoil)(CandidateBlock&)) {
        CandidateBlock block = first;
        spoil(block);
        return plan.Accepts(block);
    };
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.firstPoint = 1; }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.ends.pop_back(); }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { std::swap(block.ends[3], block.ends[5]); }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { ++block.ends.back(); }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.joints.push_back(0.0); }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.joints[7] = std::nan(""); }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.parents.pop_back(); }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.parents[4] = 2; }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.parents[4] = -2; }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.branches[4] = -1; }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.exits = {{1.0}, {2.0}}; }));
    EXPECT_FALSE(accepts([](CandidateBlock& block) { block.exits.resize(3); }));
    EXPECT_TRUE(accepts([](CandidateBlock& block) { block.exits.resize(2); }));
    while (plan.NumAppended() < plan.NumBlocks()) {
        plan.Append(plan.FindBlock(plan.NumAppended()));
    }
    EXPECT_FALSE(plan.Accepts(first));
}

// Operations ---------------------------------------------------------------------------------

/// Two spindles above one table that tilts and turns: the second hangs from its own slides.
std::string TwoSpindles()
{
    const std::string axes =
        test::LinearText("X", "base", "[1, 0, 0]") + test::LinearText("Y", "X", "[0, 1, 0]") +
        test::LinearText("Z", "Y", "[0, 0, 1]") + test::LinearText("U", "base", "[1, 0, 0]") +
        test::LinearText("V", "U", "[0, 1, 0]") + test::LinearText("W", "V", "[0, 0, 1]") +
        test::RotaryText("A", "base", "[1, 0, 0]", "[0, 0, -120]", "limits = [-120, 5]") +
        test::RotaryText("C", "A", "[0, 0, 1]", "[0, 0, 0]", test::kUnlimited);
    std::string second = test::MountText("tool", "W", "[0, 0, 0]");
    second.replace(second.find("spindle"), 7, "drill");
    return test::WholeMill(axes, test::MountText("tool", "Z", "[0, 0, 0]") + second +
                                     test::MountText("part", "C", "[0, 0, -100]")) +
           "[[stream]]\nid = 2\ntool = \"drill\"\npart = \"table\"\n";
}

PlanRig TwoSpindleRig()
{
    PathText path;
    // C winds up by one and a half turns, which the second spindle finds it on. A is negative: a
    // lean towards azimuth -90 - C.
    for (int i = 0; i <= 54; ++i) {
        path.To({10, 0, 0}, Leaning(20, -90 - 10 * i), i == 0);
    }
    path.NextOperation("drill");
    for (int i = 0; i <= 9; ++i) {
        path.To({10, 5, 0}, Leaning(20, -90 - 540 - 10 * i), i == 0);
    }
    path.NextOperation("finish").To({30, 0, 0}, Leaning(20, -90 - 630), kRapid);
    PlanRig rig(TwoSpindles(), path.Path());
    rig.streams[1] = &rig.machine.streams[1];
    return rig;
}

TEST(PathPlan, StartsEachStreamWhereTheOneBeforeLeavesTheAxes)
{
    const PlanRig rig = TwoSpindleRig();
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    const std::vector<host::MotionRow> rows = motion.PointRows();
    ASSERT_EQ(rows.size(), 66U);
    const std::size_t x = rig.IndexOf("X");
    const std::size_t u = rig.IndexOf("U");
    const std::size_t c = rig.IndexOf("C");
    EXPECT_NEAR(rows[54].joints[c], ToRadians(540), 1e-9);
    EXPECT_NEAR(rows[55].joints[c], ToRadians(540), 1e-9);
    EXPECT_NEAR(rows[64].joints[c], ToRadians(630), 1e-9);
    EXPECT_NEAR(rows[65].joints[c], ToRadians(630), 1e-9);
    // What a stream does not move stays where it was.
    EXPECT_EQ(rows[30].joints[u], 0.0);
    EXPECT_NE(rows[60].joints[u], 0.0);
    EXPECT_EQ(rows[60].joints[x], rows[54].joints[x]);
    EXPECT_EQ(rows[65].joints[u], rows[64].joints[u]);
    EXPECT_NE(rows[65].joints[x], rows[54].joints[x]);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].point, i);
    }
}

TEST(PathPlan, KeepsTheToolOfEachOperationInItsSeat)
{
    // The first and the last operation use one spindle with tools of their own: each block and each
    // row is found with the right one, whatever was found before.
    PlanRig rig = TwoSpindleRig();
    rig.toolLengths = {0.0, 10.0, 70.0};
    PathPlan plan(rig.Request());
    ASSERT_EQ(plan.NumBlocks(), 3U);
    const CandidateBlock last = plan.FindBlock(2);
    const CandidateBlock first = plan.FindBlock(0);
    plan.Append(first);
    plan.Append(plan.FindBlock(1));
    plan.Append(last);
    EXPECT_EQ(BitsOf(plan.FindBlock(0)), BitsOf(first));
    EXPECT_EQ(BitsOf(plan.FindBlock(2)), BitsOf(last));
    const Motion motion = rig.Build(plan);
    EXPECT_EQ(motion.NumFailed(), 0U);
    for (const host::MotionRow& row : motion.rows) {
        EXPECT_LE(row.error.position, 1e-4);
    }
    // A tool that is longer by 70 stands higher by as much.
    rig.toolLengths = {0.0, 10.0, 0.0};
    const double z = rig.Plan().rows.back().joints[rig.IndexOf("Z")];
    EXPECT_NEAR(motion.rows.back().joints[rig.IndexOf("Z")], z + 70.0, 1e-6);
}

TEST(PathPlan, ChangesToolsWithoutCuttingOnTheWay)
{
    // No RAPID before the point behind the change: the tool's end jumps by the difference of the
    // lengths, and nothing could lead there along a straight line.
    PathText path;
    path.To({0, 0, 0}, Leaning(20, 0), kRapid).To({10, 0, 0}, Leaning(20, 0));
    path.NextOperation("finish").To({20, 0, 0}, Leaning(25, 0)).To({30, 0, 0}, Leaning(25, 0));
    PlanRig rig(test::HeadTableText("limits = [-100, 100]", test::kUnlimited), path.Path());
    rig.toolLengths = {50.0, 90.0};
    const Motion motion = rig.Plan();
    EXPECT_EQ(motion.NumFailed(), 0U);
    EXPECT_EQ(motion.rows.size(), 4U);
    for (const host::MotionRow& row : motion.rows) {
        EXPECT_LE(row.error.position, 1e-4);
    }
}

} // namespace
