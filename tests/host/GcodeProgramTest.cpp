// Programs for the control that the built program writes, read back beside the joint table.

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "GcodeReader.h"
#include "MillText.h"
#include "MotionRows.h"
#include "Paths.h"
#include "Process.h"
#include "TempFolder.h"
#include "geometry/Units.h"
#include "geometry/Vec3.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "table/JointTableReader.h"
#include "toolpath/ToolpathFile.h"

namespace
{

using host::operator-;
using host::MotionRow;
using test::ContentOf;
using test::GcodeBlock;

std::string MachineFile(const std::string& name)
{
    return std::string(test::kSamples) + "/machines/" + name + ".toml";
}

std::string PathFile(const std::string& name)
{
    return std::string(test::kSamples) + "/toolpaths/" + name + ".cl";
}

/// Machine, toolpath, dialect.
using Job = std::tuple<std::string, std::string, std::string>;

class GcodeOfSamples : public testing::TestWithParam<Job>
{
  protected:
    GcodeOfSamples()
        : machine(host::LoadMachine(MachineFile(std::get<0>(GetParam())))),
          path(host::ReadToolpath(PathFile(std::get<1>(GetParam())), std::nullopt, machine.length)),
          axes(machine.AxesOf(machine.streams.front())), isTcp(std::get<2>(GetParam()) == "tcp")
    {
        machine.streams.front().SetToolLength(path.operations.front().toolLength.value_or(0.0));
    }

    /// Runs the program and reads what it has written.
    void Solve()
    {
        const test::Outcome outcome =
            test::Process({test::kProgram, "solve", machine.file, path.file, "-o", "joints.csv",
                           "--gcode", "part.ngc", "--dialect", std::get<2>(GetParam())},
                          folder.Path())
                .Wait();
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        blocks = test::ReadGcode(ContentOf(folder.Path() / "part.ngc"));
        std::ifstream in(folder.Path() / "joints.csv");
        host::JointTableReader reader(in, "joints.csv", machine.AxesOf(machine.streams.front()),
                                      machine.length);
        for (host::TableRow row; reader.Next(row);) {
            rows.push_back(test::RowAt(machine, row.motion.point, row.motion.joints));
            rows.back().flags = row.motion.flags;
        }
    }

    /// How far the words of a block are from where the axes, or the tool's end, stand at a row.
    double OffBy(const GcodeBlock& block, const MotionRow& row) const
    {
        double off = 0.0;
        const auto note = [&](const std::string& word, double wanted) {
            off = std::max(off, std::fabs(block.place.at(word) - wanted));
        };
        for (std::size_t i = 0; i < axes.size(); ++i) {
            if (!isTcp || axes[i]->isRotary) {
                note(axes[i]->word, axes[i]->wordSign * host::Shown(*axes[i], row.joints[i], {}));
            }
        }
        if (isTcp) {
            note("X", row.asked.position[0]);
            note("Y", row.asked.position[1]);
            note("Z", row.asked.position[2]);
        }
        return off;
    }

    /// What the way to a row takes at the feed; no rotary axis is asked for more than 3600 degrees
    /// a minute, unless the control has that in its own hands.
    double MinutesTo(std::size_t index) const
    {
        const MotionRow& from = rows[index - 1];
        const MotionRow& to = rows[index];
        const double feed = path.points[to.point].feed.value().value;
        double minutes = host::Length(to.asked.position - from.asked.position) / feed;
        for (std::size_t i = 0; i < axes.size() && !isTcp; ++i) {
            if (axes[i]->isRotary) {
                const double turn = std::fabs(to.joints[i] - from.joints[i]);
                minutes = std::max(minutes, host::ToDegrees(turn) / 3600.0);
            }
        }
        return minutes;
    }

    test::TempFolder folder;
    host::LoadedMachine machine;
    host::Toolpath path;
    std::vector<const host::Axis*> axes;
    bool isTcp;
    std::vector<GcodeBlock> blocks;
    std::vector<MotionRow> rows;
};

TEST_P(GcodeOfSamples, AreTheMotionOfTheJointTableInTheTimeOfItsFeeds)
{
    Solve();
    // The table's rows are where the tool is asked for, up to what the solver leaves.
    constexpr double kNear = 0.5e-4 + 2e-5;
    std::size_t block = 0;
    double wanted = 0.0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        // A row at which no word changes has no block.
        if (i > 0 && block + 1 < blocks.size() && OffBy(blocks[block], rows[i]) > kNear) {
            ++block;
        }
        ASSERT_LE(OffBy(blocks[block], rows[i]), kNear) << "row " << i;
        EXPECT_EQ(blocks[block].isRapid, rows[i].flags.isRapid) << "row " << i;
        wanted += i == 0 || rows[i].flags.isRapid ? 0.0 : MinutesTo(i);
    }
    EXPECT_EQ(block + 1, blocks.size());
    double taken = 0.0;
    for (const GcodeBlock& one : blocks) {
        taken += one.duration;
    }
    EXPECT_NEAR(taken, wanted, 1e-4 * wanted);
}

INSTANTIATE_TEST_SUITE_P(Jobs, GcodeOfSamples,
                         testing::Values(Job{"trunnion-ac", "dome-tilted", "inverse-time"},
                                         Job{"trunnion-ac", "dome-tilted", "per-minute"},
                                         Job{"trunnion-ac", "dome-tilted", "tcp"},
                                         Job{"head-table-bc", "blade-swarf", "inverse-time"},
                                         Job{"head-table-bc", "blade-swarf", "per-minute"},
                                         Job{"head-table-bc", "blade-swarf", "tcp"}),
                         [](const auto& instance) {
                             std::string name =
                                 std::get<1>(instance.param) + "_" + std::get<2>(instance.param);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// What is not written -----------------------------------------------------------------------

class GcodeProgram : public testing::Test
{
  protected:
    test::Outcome Solve(const std::string& path, const std::string& dialect) const
    {
        folder.Write("mill.toml", test::MillWith(33, "limits = [-120, 30]\ninitial = -30"));
        folder.Write("part.cl", path);
        return test::Process({test::kProgram, "solve", "mill.toml", "part.cl", "-o", "joints.csv",
                              "--gcode", "part.ngc", "--dialect", dialect},
                             folder.Path())
            .Wait();
    }

    test::TempFolder folder;
};

TEST_F(GcodeProgram, IsNotWrittenForAPathWithoutFeeds)
{
    const test::Outcome outcome =
        Solve("GOTO/0,0,50,0,-0.5,0.8660254\nGOTO/0,0,0\nFINI\n", "inverse-time");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.err.substr(0, 46), "part.cl:2:1: no feed holds at this point, whic");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"mill.toml", "part.cl"}));
}

TEST_F(GcodeProgram, IsNotWrittenForADialectThatIsNotThere)
{
    const test::Outcome outcome = Solve("GOTO/0,0,50,0,-0.5,0.8660254\nFINI\n", "tpc");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.err, "tpc: there is no dialect of this name and no file either; the bundled "
                           "dialects are inverse-time, per-minute, tcp\n");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"mill.toml", "part.cl"}));
}

TEST_F(GcodeProgram, IsNotWrittenWhereAPointIsNotReached)
{
    const test::Outcome outcome = Solve("FEDRAT/300,MMPM\nGOTO/0,0,50,0,-0.5,0.8660254\n"
                                        "GOTO/0,0,5000\nFINI\n",
                                        "inverse-time");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"joints.csv", "mill.toml", "part.cl"}));
}

} // namespace
