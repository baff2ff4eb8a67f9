// The program's pages, written as a user has them written. Most are of a program whose page is
// nothing but its data.

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "MillText.h"
#include "Paths.h"
#include "Process.h"
#include "ReportData.h"
#include "TempFolder.h"
#include "machine/LoadedMachine.h"
#include "table/JointTableReader.h"
#include "toolpath/ToolpathFile.h"
#include "verify/ToolKinematics.h"

namespace
{

namespace fs = std::filesystem;
using Json = nlohmann::json;
using test::ColumnOf;
using test::ContentOf;
using test::Outcome;
using test::Process;
using Names = std::vector<std::string>;

std::string PathOf(int points)
{
    std::string text = "UNITS/MM\nFEDRAT/500,MMPM\nGOTO/0,0,50,0,-0.5,0.8660254\n";
    for (int i = 1; i < points; ++i) {
        text += "GOTO/" + std::to_string(i % 100) + ",0,0\n";
    }
    return text + "FINI\n";
}

class Report : public testing::Test
{
  protected:
    Report()
    {
        folder.Write("mill.toml", test::MillText());
        folder.Write("part.cl", PathOf(5));
    }

    Outcome Run(const char* program, std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), program);
        return Process(arguments, folder.Path()).Wait();
    }
    Outcome Run(const std::vector<std::string>& arguments) const
    {
        return Run(test::kDataProgram, arguments);
    }
    /// `$1` is the program.
    Outcome RunShell(const std::string& script) const
    {
        return Process({"/bin/sh", "-c", script, "sh", test::kDataProgram}, folder.Path()).Wait();
    }
    Json Data(const std::string& name) const
    {
        return Json::parse(ContentOf(folder.Path() / name));
    }

    test::TempFolder folder;
};

// What is in it ----------------------------------------------------------------------------------

struct Sample
{
    const char* machine;
    const char* toolpath;
    std::vector<std::string> links;
};

void PrintTo(const Sample& sample, std::ostream* out)
{
    *out << sample.toolpath;
}

class SampleReport : public testing::TestWithParam<Sample>
{
  protected:
    static fs::path MachineFile()
    {
        return fs::path(test::kSamples) / "machines" / GetParam().machine;
    }
    static fs::path PathFile()
    {
        return fs::path(test::kSamples) / "toolpaths" / GetParam().toolpath;
    }
    static host::LoadedMachine Machine()
    {
        const std::vector<std::string>& links = GetParam().links;
        return host::LoadMachine(MachineFile(), links.empty()
                                                    ? host::MountLinks{}
                                                    : host::MountLinks{links[1], links[3]});
    }

    Json Solve() const
    {
        std::vector<std::string> command{test::kDataProgram, "solve", MachineFile(), PathFile()};
        command.insert(command.end(), {"-o", "t.csv", "--report", "t.json", "--quiet"});
        command.insert(command.end(), GetParam().links.begin(), GetParam().links.end());
        const Outcome outcome = Process(command, folder.Path()).Wait();
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return Json::parse(ContentOf(folder.Path() / "t.json"));
    }

    test::TempFolder folder;
};

/// The number that a page shows for the flags of a row.
int NumberOf(const host::RowFlags& flags)
{
    return (flags.isRapid ? 1 : 0) + (flags.hasFailed ? 2 : 0) + (flags.isInserted ? 4 : 0) +
           (flags.isFlip ? 8 : 0) + (flags.isRewind ? 16 : 0) + (flags.isPole ? 32 : 0) +
           (flags.isAtLimit ? 64 : 0);
}

TEST_P(SampleReport, HasTheRowsOfTheTable)
{
    const Json data = Solve();
    const host::LoadedMachine machine = Machine();
    std::vector<const host::Axis*> axes;
    std::vector<test::DecodedColumn> joints;
    for (const std::size_t axis : data["run"]["rows"]["axes"]) {
        joints.push_back(ColumnOf(data, "joint" + std::to_string(axes.size())));
        axes.push_back(&machine.axes.at(axis));
    }
    const auto point = ColumnOf(data, "point").wholes;
    const auto line = ColumnOf(data, "line").wholes;
    const auto flags = ColumnOf(data, "flags").wholes;
    const auto branch = ColumnOf(data, "branch").wholes;
    const test::DecodedColumn error = ColumnOf(data, "positionError");

    std::ifstream in(folder.Path() / "t.csv");
    host::JointTableReader table(in, "t.csv", axes, machine.length);
    host::TableRow row;
    std::size_t count = 0;
    for (; table.Next(row); ++count) {
        ASSERT_LT(count, point.size());
        for (std::size_t i = 0; i < axes.size(); ++i) {
            // Six decimals of a millimetre or degree.
            const double value = row.motion.joints.at(i);
            const double shown = axes[i]->isRotary ? host::ToDegrees(value) : value;
            ASSERT_NEAR(joints[i].At(count), shown, 0.5001e-6) << row.tableLine;
        }
        ASSERT_EQ(point[count], static_cast<double>(row.motion.point));
        ASSERT_EQ(line[count], row.pathLine);
        ASSERT_EQ(flags[count], NumberOf(row.motion.flags));
        ASSERT_EQ(branch[count], row.motion.branch);
        ASSERT_NEAR(error.At(count), row.motion.error.position, 0.5001e-9);
    }
    EXPECT_EQ(count, point.size());
    EXPECT_EQ(data["run"]["rows"]["count"], count);
    EXPECT_EQ(data["run"]["counts"]["rows"], count);
}

TEST_P(SampleReport, HasToolsWhereTheMachineHoldsThem)
{
    const Json data = Solve();
    host::LoadedMachine machine = Machine();
    std::vector<const host::Axis*> axes;
    std::vector<test::DecodedColumn> joints;
    for (const std::size_t axis : data["run"]["rows"]["axes"]) {
        joints.push_back(ColumnOf(data, "joint" + std::to_string(axes.size())));
        axes.push_back(&machine.axes.at(axis));
    }
    const std::vector<test::DecodedColumn> tool{ColumnOf(data, "x"), ColumnOf(data, "y"),
                                                ColumnOf(data, "z"), ColumnOf(data, "i"),
                                                ColumnOf(data, "j"), ColumnOf(data, "k")};
    host::ToolKinematics kinematics(machine, axes);
    const Json& operations = data["run"]["operations"];
    const std::size_t count = data["run"]["rows"]["count"];
    std::size_t operation = 0;
    for (std::size_t row = 0; row < count; ++row) {
        while (operation + 1 < operations.size() &&
               row >= operations[operation + 1]["firstRow"].get<std::size_t>()) {
            ++operation;
        }
        kinematics.Seat({&machine.StreamWithId(operations[operation]["stream"].get<int>()),
                         operations[operation]["toolLength"].get<double>()});
        std::vector<double> values;
        for (std::size_t i = 0; i < axes.size(); ++i) {
            const double shown = joints[i].At(row);
            values.push_back(axes[i]->isRotary ? host::ToRadians(shown) : shown);
        }
        const host::CutterLocation at = kinematics.ToolAt(values);
        for (std::size_t i = 0; i < 3; ++i) {
            // Half the last decimal of each of eight axes, angles a metre and a half away, is
            // 1e-7 mm a linear one and 1.3e-5 mm a rotary one. At the pole the direction is off by
            // up to the angle tolerance of 0.05 degrees.
            ASSERT_NEAR(at.position[i], tool[i].At(row), 1e-4) << "row " << row;
            ASSERT_NEAR(at.direction[i], tool[i + 3].At(row), 9e-4) << "row " << row;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Bundled, SampleReport,
                         testing::Values(Sample{"trunnion-ac.toml", "dome-over-the-top.cl", {}},
                                         Sample{"head-head-ca.toml", "turbine-ring.cl", {}},
                                         Sample{"mill-turn-bc.toml", "cylinder-engraving.cl", {}},
                                         Sample{"arm-positioner.urdf",
                                                "bowl-trimming.cl",
                                                {"--tool-link", "spindle_nose", "--part-link",
                                                 "part"}}));

TEST_F(Report, ShowsDegreesWhateverTheTableShows)
{
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "t.csv", "--report", "d.json"}).code, 0);
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "t.csv", "--report", "r.json",
                   "--radians", "--lock", "C=3.141592653589793"})
                  .code,
              0);
    // The tool leans 30 degrees to -y, and with the table turned half round, to +y.
    EXPECT_NEAR(ColumnOf(Data("d.json"), "joint3").At(0), -30.0, 1e-5);
    const Json turned = Data("r.json");
    EXPECT_NEAR(ColumnOf(turned, "joint3").At(0), 30.0, 1e-5);
    EXPECT_NEAR(turned["run"]["ranges"][3]["reached"][1].get<double>(), 30.0, 1e-5);
    EXPECT_NEAR(turned["machine"]["axes"][4]["initial"].get<double>(), 180.0, 1e-12);
}

TEST_F(Report, IsWrittenWherePointsFail)
{
    folder.Write("far.cl", "GOTO/0,0,0,0,-0.5,0.8660254\nGOTO/5000,0,0\nGOTO/1,0,0\nFINI\n");
    const Outcome outcome =
        Run({"solve", "mill.toml", "far.cl", "-o", "t.csv", "--report", "t.json"});
    EXPECT_EQ(outcome.code, 1);
    const Json data = Data("t.json");
    EXPECT_EQ(data["run"]["counts"], Json::parse(R"({"points": 3, "converged": 2, "failed": 1,
      "rows": 2, "inserted": 0})"));
    EXPECT_EQ(ColumnOf(data, "flags").wholes, (std::vector<double>{0, 2, 0}));
    EXPECT_EQ(ColumnOf(data, "x").At(1), 5000.0);
    EXPECT_EQ(ColumnOf(data, "joint0").wholes[1], ColumnOf(data, "joint0").wholes[0]);
    ASSERT_EQ(data["run"]["events"].size(), 1U);
    EXPECT_EQ(data["run"]["events"][0]["kind"], "failed");
    EXPECT_EQ(data["run"]["events"][0]["row"], 1);
    EXPECT_EQ(data["run"]["events"][0]["line"], 2);
}

TEST_F(Report, IsListedInTheSummary)
{
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "t.csv", "--report", "t.html",
                   "--summary", "t.json"})
                  .code,
              0);
    EXPECT_EQ(Data("t.json")["outputs"], Json::parse(R"([{"kind": "joints", "file": "t.csv"},
                              {"kind": "report", "file": "t.html"}])"));
}

/// What takes part in a result, without the times and the words of the call.
Json WithoutTheCall(Json data)
{
    data["run"].erase("seconds");
    data["run"].erase("command");
    return data;
}

TEST_F(Report, IsTheSameAfterAnInterruptedRunAsInOneGo)
{
    folder.Write("long.cl", PathOf(4000));
    const std::vector<std::string> solve{
        test::kDataProgram, "solve", "mill.toml", "long.cl", "-o", "t.csv", "--report", "t.json"};
    constexpr int kTries = 20; // on a busy machine a run may be over before its signal comes
    Outcome outcome;
    for (int i = 0; i < kTries && outcome.code != 130; ++i) {
        fs::remove(folder.Path() / "t.json");
        Process process(solve, folder.Path(), Process::ErrorOutput::Terminal);
        process.WaitForError("solving point ");
        process.Send(SIGINT);
        outcome = process.Wait();
    }
    ASSERT_EQ(outcome.code, 130);
    EXPECT_FALSE(fs::exists(folder.Path() / "t.json"));
    // The report is no part of what makes two runs the same.
    ASSERT_EQ(Run({"solve", "mill.toml", "long.cl", "-o", "t.csv", "--resume", "--report",
                   "resumed.json"})
                  .code,
              0);
    ASSERT_EQ(Process(solve, folder.Path()).Wait().code, 0);
    Json resumed = WithoutTheCall(Data("resumed.json"));
    Json whole = WithoutTheCall(Data("t.json"));
    resumed["run"].erase("outputs");
    whole["run"].erase("outputs");
    EXPECT_EQ(resumed, whole);
}

// Size and cost ----------------------------------------------------------------------------------

TEST_F(Report, TakesSomeTensOfBytesARow)
{
    folder.Write("wave.cl", [] {
        std::string text = "UNITS/MM\n";
        for (int i = 0; i < 2000; ++i) {
            const double x = 0.05 * i;
            text += "GOTO/" + std::to_string(x) + "," + std::to_string(20.0 * std::sin(x / 10.0)) +
                    "," + std::to_string(5.0 * std::cos(x / 7.0)) + ",0.2," +
                    std::to_string(-0.5 + 0.1 * std::sin(x / 9.0)) + ",0.8\n";
        }
        return text + "FINI\n";
    }());
    ASSERT_EQ(
        Run({"solve", "mill.toml", "wave.cl", "-o", "t.csv", "--report", "t.json", "--quiet"}).code,
        0);
    const std::size_t rows = Data("t.json")["run"]["rows"]["count"];
    ASSERT_GE(rows, 2000U);
    // 40,000 rows then take 3.2 MB, next to a page of some hundred kB.
    EXPECT_LT(fs::file_size(folder.Path() / "t.json"), 80 * rows);
}

// Where it cannot be -----------------------------------------------------------------------------

// At each limit on the size of a file, a run's outputs appear together or not at all.
TEST_F(Report, AFullDiskLeavesAllOrNothing)
{
    folder.Write("path.cl", PathOf(60));
    const std::string solve =
        "solve mill.toml path.cl -o t.csv --report t.json --gcode t.nc --quiet";
    ASSERT_EQ(RunShell("exec \"$1\" " + solve).code, 0);
    constexpr std::uintmax_t kBlock = 512; // of the shell's ulimit
    std::uintmax_t largest = 0;
    for (const char* const name : {"t.csv", "t.json", "t.nc"}) {
        largest = std::max(largest, fs::file_size(folder.Path() / name));
        fs::remove(folder.Path() / name);
    }
    const Names before = folder.Names();
    const std::uintmax_t enough = (largest + kBlock - 1) / kBlock;
    for (std::uintmax_t blocks = 1; blocks < enough; ++blocks) {
        const Outcome outcome =
            RunShell("ulimit -f " + std::to_string(blocks) + "; exec \"$1\" " + solve);
        EXPECT_EQ(outcome.code, 2) << blocks;
        EXPECT_NE(outcome.err.find(": this file cannot be written (File too large)"),
                  std::string::npos)
            << outcome.err;
        EXPECT_EQ(folder.Names(), before) << blocks;
    }
    EXPECT_EQ(RunShell("ulimit -f " + std::to_string(enough + 1) + "; exec \"$1\" " + solve).code,
              0);
    EXPECT_EQ(folder.Names().size(), before.size() + 3);
}

TEST_F(Report, StandsNowhereThatFilesCannot)
{
    const Names before = folder.Names();
    for (const std::string place : {"part.cl/t.html", "no/t.html", "/proc/t.html", "/dev/full"}) {
        for (const std::vector<std::string>& arguments :
             {std::vector<std::string>{"solve", "mill.toml", "part.cl", "-o", "t.csv", "--report",
                                       place},
              {"view", "mill.toml", "-o", place}}) {
            const Outcome outcome = Run(arguments);
            EXPECT_EQ(outcome.code, 2) << place;
            EXPECT_EQ(outcome.err.rfind(place + ": this ", 0), 0U) << outcome.err;
            EXPECT_EQ(outcome.out, "");
        }
    }
    EXPECT_EQ(folder.Names(), before);
}

TEST_F(Report, ReplacesNothingThatIsReadOrWritten)
{
    const Names before = folder.Names();
    const auto faultOf = [](const std::string& name) {
        return name +
               ": the run would write over a file that it reads or writes; choose another name\n";
    };
    for (const std::string place : {"t.csv", "./t.csv", "t.csv.partial", "t.csv.resume", "t.nc",
                                    "t.json", "mill.toml", "part.cl"}) {
        const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", "t.csv", "--gcode",
                                     "t.nc", "--summary", "t.json", "--report", place});
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.err, faultOf(place));
    }
    EXPECT_EQ(Run({"view", "mill.toml", "-o", "./mill.toml"}).err, faultOf("./mill.toml"));
    fs::copy_file(folder.Path() / "mill.toml", folder.Path() / "m.html");
    EXPECT_EQ(Run({"view", "m.html"}).err, faultOf("m.html"));
    fs::remove(folder.Path() / "m.html");
    EXPECT_EQ(folder.Names(), before);
    EXPECT_EQ(ContentOf(folder.Path() / "mill.toml"), test::MillText());
}

// The machine alone ------------------------------------------------------------------------------

TEST_F(Report, ShowsAMachineInAFileNamedAfterIt)
{
    fs::create_directory(folder.Path() / "shop");
    fs::rename(folder.Path() / "mill.toml", folder.Path() / "shop" / "mill.v2.toml");
    const Outcome outcome = Run({"view", "shop/mill.v2.toml"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "the machine is in mill.v2.html; open it in a browser\n");
    const Json data = Data("mill.v2.html");
    EXPECT_EQ(data["kind"], "machine");
    EXPECT_EQ(data["version"], test::kProjectVersion);
    EXPECT_EQ(data["machine"]["name"], "Mill");
    EXPECT_EQ(data["machine"]["file"], "shop/mill.v2.toml");
    EXPECT_EQ(data["machine"]["sha256"].get<std::string>().size(), 64U);
    EXPECT_TRUE(data["run"].is_null());
}

TEST_F(Report, ShowsAUrdfBetweenItsLinks)
{
    const std::string arm = std::string(test::kSamples) + "/machines/arm-positioner.urdf";
    EXPECT_EQ(Run({"view", arm, "-o", "a.html"}).code, 2);
    ASSERT_EQ(
        Run({"view", arm, "--tool-link", "spindle_nose", "--part-link", "part", "-o", "a.html"})
            .code,
        0);
    const Json machine = Data("a.html")["machine"];
    EXPECT_EQ(machine["axes"].size(), 8U);
    // Twelve visuals in the file: six of boxes, five of cylinders, a sphere.
    EXPECT_EQ(machine["visuals"].size(), 12U);
    const auto count = [&machine](const std::string& shape) {
        return std::count_if(machine["visuals"].begin(), machine["visuals"].end(),
                             [&shape](const Json& visual) { return visual["shape"] == shape; });
    };
    EXPECT_EQ(count("box"), 6);
    EXPECT_EQ(count("cylinder"), 5);
    EXPECT_EQ(count("sphere"), 1);
}

// The program as it is built ---------------------------------------------------------------------

TEST_F(Report, SaysWhatToDoWhereTheProgramHasNone)
{
    const Names before = folder.Names();
    const std::string todo = ": this trunnion was built without reports; install Node.js and npm "
                             "and build it again with -DTRUNNION_REPORTS=ON\n";
    const Outcome solve = Run(test::kPagelessProgram, {"solve", "mill.toml", "part.cl", "-o",
                                                       "t.csv", "--report", "t.html"});
    EXPECT_EQ(solve.code, 2);
    EXPECT_EQ(solve.out, "");
    EXPECT_EQ(solve.err, "--report" + todo);
    const Outcome view = Run(test::kPagelessProgram, {"view", "mill.toml"});
    EXPECT_EQ(view.code, 2);
    EXPECT_EQ(view.err, "trunnion view" + todo);
    EXPECT_EQ(folder.Names(), before);
    EXPECT_EQ(Run(test::kPagelessProgram, {"solve", "mill.toml", "part.cl", "-o", "t.csv"}).code,
              0);
}

TEST_F(Report, IsOnePageWithItsDataInIt)
{
    if (!test::kHasReports) {
        GTEST_SKIP() << "built without reports";
    }
    ASSERT_EQ(Run(test::kProgram, {"view", "mill.toml", "-o", "page.html"}).code, 0);
    ASSERT_EQ(Run({"view", "mill.toml", "-o", "data.json"}).code, 0);
    const std::string page = ContentOf(folder.Path() / "page.html");
    const std::string head = "<script type=\"application/json\" id=\"trunnion-data\">";
    const std::size_t begin = page.find(head) + head.size();
    const std::size_t end = page.find("</script>", begin);
    ASSERT_LT(end, page.size());
    EXPECT_EQ(Json::parse(page.substr(begin, end - begin)), Data("data.json"));
    EXPECT_EQ(page.find("@TRUNNION_DATA@"), std::string::npos);
    // Together with the data of 40,000 points, below 8 MB.
    EXPECT_LT(page.size(), 4'000'000U);
}

} // namespace
