// What an interrupted run leaves, and what is made of it.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "TempFolder.h"
#include "planner/Checkpoint.h"
#include "support/Repeat.h"
#include "table/JointTable.h"
#include "text/Fingerprint.h"
#include "text/InputError.h"

namespace
{

namespace fs = std::filesystem;
using host::PathPlan;
using test::Leaning;
using test::PathText;
using test::PlanRig;

constexpr const char* kRun = "0123456789abcdef";

/// Four blocks, on a machine with branches and turns.
PlanRig LongRig()
{
    PathText path;
    for (int i = 0; i < 450; ++i) {
        path.To({i % 91 == 90 ? 5000.0 : 20.0, 0.1 * i, 0},
                Leaning(20 + 10 * std::sin(0.1 * i), 3 * i), i % 100 == 0);
    }
    return {test::TableTableText("limits = [-120, 30]", "limits = [-400, 400]"), path.Path()};
}

/// One block, and a machine whose solutions are continued from point to point.
PlanRig ShortRig()
{
    PathText path;
    for (int i = 0; i < 12; ++i) {
        path.To({20, 0.1 * i, 0}, Leaning(2 * i, 0), i % 100 == 0);
    }
    return {test::WholeMill(
                test::LinearText("X", "base", "[1, 0, 0]") +
                    test::LinearText("Y", "X", "[0, 1, 0]") +
                    test::LinearText("Z", "Y", "[0, 0, 1]") +
                    test::RotaryText("B", "Z", "[0, 1, 0]", "[0, 0, 200]", "limits = [-90, 90]"),
                test::MountText("tool", "B", "[0, 0, 0]") +
                    test::MountText("part", "base", "[0, 0, 0]")),
            path.Path()};
}

void FindUpTo(PathPlan& plan, std::size_t end)
{
    while (plan.NumAppended() < end) {
        plan.Append(plan.FindBlock(plan.NumAppended()));
    }
}

/// The table that the program writes.
std::string TableOf(const PlanRig& rig, PathPlan& plan)
{
    const host::JointTable table(plan.Axes(), {rig.machine.length, host::AngleUnit::Degree});
    std::string text = table.Header();
    for (const host::MotionRow& row : rig.Build(plan).rows) {
        text += table.Row(row, rig.path.points[row.point].line);
    }
    return text;
}

class Checkpoint : public testing::Test
{
  protected:
    fs::path Place() const { return folder.Path() / "table.csv.resume"; }
    void Put(const std::string& content) const
    {
        fs::remove(Place()); // some file systems wait for the disk where a file is overwritten
        folder.Write("table.csv.resume", content);
    }
    std::string SavedBlocks(const PlanRig& rig, std::size_t blocks) const
    {
        PathPlan plan(rig.Request());
        FindUpTo(plan, blocks);
        host::SaveCheckpoint(Place(), kRun, plan);
        return test::ContentOf(Place());
    }
    /// The sentence with which a file is refused; empty where it is taken.
    std::string RefusalOf(const PlanRig& rig, const std::string& content,
                          const std::string& run = kRun) const
    {
        PathPlan plan(rig.Request());
        return RefusalOf(plan, content, run);
    }
    std::string RefusalOf(PathPlan& plan, const std::string& content,
                          const std::string& run = kRun) const
    {
        Put(content);
        try {
            host::LoadCheckpoint(Place(), run, plan);
        } catch (const host::InputError& error) {
            return error.what();
        }
        return "";
    }
    std::string Damaged() const
    {
        return Place().string() + ": this file is damaged; take it away and run without --resume";
    }
    std::string Foreign() const
    {
        return Place().string() +
               ": this was left by a run with another machine, toolpath, option or version; repeat "
               "that run, or run without --resume";
    }

    test::TempFolder folder;
};

TEST_F(Checkpoint, LeadsToTheSameTableFromAnyBlock)
{
    const PlanRig rig = LongRig();
    PathPlan whole(rig.Request());
    ASSERT_EQ(whole.NumBlocks(), 4U);
    FindUpTo(whole, 4);
    const std::string table = TableOf(rig, whole);
    for (std::size_t done = 0; done <= 4; ++done) {
        const PlanRig first = LongRig();
        PathPlan interrupted(first.Request());
        FindUpTo(interrupted, done);
        TableOf(first, interrupted); // the rows that are done are written too
        host::SaveCheckpoint(Place(), kRun, interrupted);

        const PlanRig second = LongRig();
        PathPlan resumed(second.Request());
        host::LoadCheckpoint(Place(), kRun, resumed);
        EXPECT_EQ(resumed.NumAppended(), done);
        FindUpTo(resumed, 4);
        EXPECT_EQ(TableOf(second, resumed), table);
    }
}

TEST_F(Checkpoint, IsTheSameWhenItIsSavedAgain)
{
    const PlanRig rig = ShortRig();
    const std::string content = SavedBlocks(rig, 1);
    PathPlan plan(rig.Request());
    host::LoadCheckpoint(Place(), kRun, plan);
    host::SaveCheckpoint(Place(), kRun, plan);
    EXPECT_EQ(test::ContentOf(Place()), content);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"table.csv.resume"});
}

TEST_F(Checkpoint, IsRefusedWhenItIsOfAnotherRun)
{
    const PlanRig rig = ShortRig();
    const std::string content = SavedBlocks(rig, 1);
    EXPECT_EQ(RefusalOf(rig, content), "");
    EXPECT_EQ(RefusalOf(rig, content, "0123456789abcdee"), Foreign());
    EXPECT_EQ(RefusalOf(rig, ""), Foreign());
    EXPECT_EQ(RefusalOf(rig, "n,line,X_mm\n1,2,3\n"), Foreign());
    EXPECT_EQ(RefusalOf(rig, "trunnion checkpoint 2" + content.substr(21)), Foreign());
    EXPECT_EQ(RefusalOf(rig, std::string(1000, '\0')), Foreign());
}

TEST_F(Checkpoint, IsRefusedWhenAnythingIsMissingOrAdded)
{
    const PlanRig rig = ShortRig();
    const std::string content = SavedBlocks(rig, 1);
    const std::size_t head = content.find('\n') + 1;
    PathPlan plan(rig.Request());
    for (std::size_t length = head; length < content.size(); length += 3) {
        ASSERT_EQ(RefusalOf(plan, content.substr(0, length)), Damaged()) << length;
    }
    for (std::size_t length = 0; length < head; ++length) {
        ASSERT_NE(RefusalOf(plan, content.substr(0, length)), "") << length;
    }
    EXPECT_EQ(RefusalOf(rig, content + '\0'), Damaged());
    EXPECT_EQ(RefusalOf(rig, content + content), Damaged());
}

TEST_F(Checkpoint, IsRefusedWhenItIsNotThere)
{
    const PlanRig rig = ShortRig();
    PathPlan plan(rig.Request());
    EXPECT_THROW(host::LoadCheckpoint(Place(), kRun, plan), host::InputError);
    EXPECT_THROW(host::LoadCheckpoint(folder.Path(), kRun, plan), host::InputError);
}

/// Some bytes changed, cut out or put in.
std::string Mutated(std::string text, test::Random& random)
{
    for (int i = 1 + random.Below(4); i > 0 && !text.empty(); --i) {
        const auto at = static_cast<std::size_t>(random.Below(static_cast<int>(text.size())));
        const int few = 1 + random.Below(16);
        switch (random.Below(4)) {
        case 0:
            text[at] = static_cast<char>(random.Below(256));
            break;
        case 1:
            text[at] = static_cast<char>(text[at] ^ (1 << random.Below(8)));
            break;
        case 2:
            text.erase(at, static_cast<std::size_t>(few));
            break;
        default:
            text.insert(at, static_cast<std::size_t>(few),
                        static_cast<char>(static_cast<int>(random.OneOf({0, 1, 127, 255}))));
            break;
        }
    }
    return text;
}

TEST_F(Checkpoint, IsRefusedWhenItIsDamagedAnywhere)
{
    const PlanRig rig = ShortRig();
    const std::string content = SavedBlocks(rig, 1);
    PathPlan plan(rig.Request());
    test::Repeat(2000, 1, [&](test::Random& random) {
        const std::string mutated = Mutated(content, random);
        EXPECT_TRUE(mutated == content || !RefusalOf(plan, mutated).empty());
        EXPECT_EQ(plan.NumAppended(), 0U);
    });
}

/// A file whose check is right and whose content is not.
std::string Forged(const std::string& blocks)
{
    host::Fingerprint check;
    check.Add(blocks);
    return std::string("trunnion checkpoint 1 ") + kRun + " " + check.Hex() + "\n" + blocks;
}

TEST_F(Checkpoint, DoesNoHarmWhenItIsForged)
{
    // Numbers may come through that no solve has found: then the motion is a bad one, with an error
    // in every row. Whatever else is there has to hold together.
    std::size_t taken = 0;
    std::size_t refused = 0;
    const PlanRig rig = ShortRig();
    const std::string content = SavedBlocks(rig, 1);
    const std::string blocks = content.substr(content.find('\n') + 1);
    ASSERT_EQ(Forged(blocks), content);
    test::Repeat(300, 2, [&](test::Random& random) {
        Put(Forged(Mutated(blocks, random)));
        PathPlan plan(rig.Request());
        try {
            host::LoadCheckpoint(Place(), kRun, plan);
        } catch (const host::InputError& error) {
            ++refused;
            EXPECT_EQ(error.what(), Damaged());
            return;
        }
        ++taken;
        FindUpTo(plan, plan.NumBlocks());
        const auto rows = rig.Build(plan).PointRows();
        EXPECT_EQ(rows.size(), rig.path.points.size());
    });
    EXPECT_GT(taken, 20U);
    EXPECT_GT(refused, 20U);
}

} // namespace
