// The built program, run as a user runs it.

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ArmText.h"
#include "MillText.h"
#include "Paths.h"
#include "Process.h"
#include "ProgramText.h"
#include "TempFolder.h"
#include "text/Numbers.h"

namespace
{

namespace fs = std::filesystem;
using test::Contains;
using test::ContentOf;
using test::Outcome;
using test::Process;

constexpr const char* kShortPath = "UNITS/MM\n"
                                   "RAPID\n"
                                   "GOTO/0,0,50,0,-0.5,0.8660254\n"
                                   "FEDRAT/500,MMPM\n"
                                   "GOTO/0,0,0\n"
                                   "GOTO/10,0,0\n"
                                   "FINI\n";

std::string FirstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

/// A table as a user's spreadsheet sees it.
struct Table
{
    explicit Table(const fs::path& path)
    {
        std::ifstream in(path);
        std::string line;
        while (std::getline(in, line)) {
            std::vector<std::string> cells;
            std::istringstream text(line + ",");
            for (std::string cell; std::getline(text, cell, ',');) {
                cells.push_back(cell);
            }
            rows.push_back(cells);
        }
        if (rows.empty()) {
            throw std::runtime_error("no table in " + path.string());
        }
        header = rows.front();
        rows.erase(rows.begin());
    }

    std::size_t Column(const std::string& name) const
    {
        const auto found = std::find(header.begin(), header.end(), name);
        return static_cast<std::size_t>(found - header.begin());
    }
    const std::string& Text(std::size_t row, const std::string& name) const
    {
        return rows.at(row).at(Column(name));
    }
    double Number(std::size_t row, const std::string& name) const
    {
        return host::ParseNumber(Text(row, name)).value_or(std::nan(""));
    }

    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;
};

/// A folder with a machine and a path, in which the program runs.
class Program : public testing::Test
{
  protected:
    Program()
    {
        folder.Write("mill.toml", test::MillWith(33, "limits = [-120, 30]\ninitial = -30"));
        folder.Write("part.cl", kShortPath);
    }

    static std::vector<std::string> Command(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), test::kProgram);
        return arguments;
    }
    Outcome Run(const std::vector<std::string>& arguments) const
    {
        return Process(Command(arguments), folder.Path()).Wait();
    }
    Outcome RunShell(const std::string& script) const
    {
        return Process({"/bin/sh", "-c", script, "sh", test::kProgram}, folder.Path()).Wait();
    }

    /// A path that takes a while, with its second point out of reach.
    void WriteLongPath() const
    {
        std::string text = "GOTO/0,0,50,0,-0.5,0.8660254\nGOTO/5000,0,0\n";
        for (std::size_t i = 2; i < kLongPoints; ++i) {
            text += i % 2 == 0 ? "GOTO/0,0,0\n" : "GOTO/20,30,40\n";
        }
        folder.Write("long.cl", text);
    }

    static constexpr std::size_t kLongPoints = 4000;
    test::TempFolder folder;
};

// Help, version, usage -----------------------------------------------------------------------

TEST_F(Program, TellsItsVersion)
{
    const Outcome outcome = Run({"--version"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, std::string("trunnion ") + test::kProjectVersion + "\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Program, ListsItsExitCodesInItsHelp)
{
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--help"},
                                                      {"solve", "--help"},
                                                      {"check", "--help"},
                                                      {"pose", "--help"},
                                                      {"branches", "--help"},
                                                      {"verify", "--help"}}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_TRUE(Contains(outcome.out,
                             "Exit codes:\n"
                             "  0    everything was done\n"
                             "  1    some points of the path were not reached, or a joint "
                             "table does not hold\n"
                             "  2    bad input or usage,"))
            << outcome.out;
        EXPECT_TRUE(Contains(outcome.out, "\n  130  interrupted\n"));
        EXPECT_EQ(outcome.err, "");
    }
}

TEST_F(Program, AnswersWrongUsageWithTwo)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{},
          {"mill"},
          {"solve"},
          {"solve", "mill.toml", "part.cl"},
          {"solve", "mill.toml", "-o", "joints.csv"},
          {"solve", "mill.toml", "part.cl", "-o", "joints.csv", "--fast"},
          {"solve", "mill.toml", "part.cl", "-o", "joints.csv", "--stream", "one"},
          {"solve", "mill.toml", "part.cl", "third", "-o", "joints.csv"},
          {"check"},
          {"check", "mill.toml", "part.cl", "third"},
          {"check", "mill.toml", "part.cl", "--format", "step"},
          {"pose"}}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"mill.toml", "part.cl"}));
}

// check --------------------------------------------------------------------------------------

TEST_F(Program, ChecksAMachineAndAToolpath)
{
    const Outcome machineAlone = Run({"check", "mill.toml"});
    EXPECT_EQ(machineAlone.code, 0);
    EXPECT_TRUE(Contains(machineAlone.out, "\n  tool     base -> X -> Y -> Z -> \"spindle\"\n"));
    EXPECT_FALSE(Contains(machineAlone.out, "toolpath"));
    const Outcome both = Run({"check", "mill.toml", "part.cl"});
    EXPECT_EQ(both.code, 0);
    EXPECT_EQ(both.out.rfind(machineAlone.out, 0), 0U);
    EXPECT_EQ(Run({"check", "mill.toml", "part.cl", "--format", "APT"}).out, both.out);
    EXPECT_TRUE(Contains(
        both.out,
        "\ntoolpath   part.cl\nformat     cutter locations (APT)\npoints     3, 1 at rapid\n"));
    EXPECT_EQ(both.err, "");
}

TEST_F(Program, ChecksAndRefuses)
{
    folder.Write("bad.cl", "GOTO/1,2\n");
    const Outcome outcome = Run({"check", "mill.toml", "bad.cl"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind("bad.cl:1:1: GOTO has 2 numbers", 0), 0U) << outcome.err;
    EXPECT_EQ(Run({"check", "none.toml"}).code, 2);
}

// pose ---------------------------------------------------------------------------------------

TEST_F(Program, PrintsThePoseAtTheInitialValues)
{
    // A starts at -30: the tool's end, 120 above the A axis, is seen from the part at
    // (0, -120 sin 30, 120 cos 30 - 20) = (0, -60, 83.923048).
    const Outcome outcome = Run({"pose", "mill.toml"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "stream 1: tool \"spindle\" in coordinates of part \"table\"\n"
                           "position   x 0.000000  y -60.000000  z 83.923048 mm\n"
                           "direction  i 0.000000000  j -0.500000000  k 0.866025404\n"
                           "x axis     i 1.000000000  j 0.000000000  k 0.000000000\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Program, PrintsThePoseAtGivenValues)
{
    // A at 0, C a quarter turn on: the tool at (10, 20, 5) of the machine is at z = 105 of the
    // part, whose x axis now points along the machine's y: (20, -10).
    const Outcome outcome = Run({"pose", "mill.toml", "X=10", "Y=+20", "Z=5", "A=0", "C=90"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "stream 1: tool \"spindle\" in coordinates of part \"table\"\n"
                           "position   x 20.000000  y -10.000000  z 105.000000 mm\n"
                           "direction  i 0.000000000  j 0.000000000  k 1.000000000\n"
                           "x axis     i 0.000000000  j -1.000000000  k 0.000000000\n");
    const Outcome inRadians = Run(
        {"pose", "--radians", "mill.toml", "X=10", "Y=+20", "Z=5", "A=0", "C=1.5707963267948966"});
    EXPECT_EQ(inRadians.out, outcome.out);
}

TEST_F(Program, WarnsOfAValueOutsideItsLimitsAndStillAnswers)
{
    const Outcome outcome = Run({"pose", "mill.toml", "A=90", "X=-300"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "warning: A 90 deg is outside its limits -120 to 30\n");
    // Tilted by 90 degrees, 120 above the axis becomes 120 along y, and the part's origin is 20.
    EXPECT_TRUE(Contains(outcome.out, "position   x -300.000000  y 120.000000  z -20.000000 mm\n"))
        << outcome.out;
}

TEST_F(Program, ListsTheAxesForAWordThatItDoesNotUnderstand)
{
    const std::string rest =
        "; write NAME=VALUE once for each of the axes X, Y, Z, A, C as needed\n";
    const auto errorFor = [this](const std::vector<std::string>& values) {
        std::vector<std::string> arguments{"pose", "mill.toml"};
        arguments.insert(arguments.end(), values.begin(), values.end());
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    };
    EXPECT_EQ(errorFor({"B=3"}), "mill.toml: \"B=3\" is no axis with its value" + rest);
    EXPECT_EQ(errorFor({"x=3"}), "mill.toml: \"x=3\" is no axis with its value" + rest);
    EXPECT_EQ(errorFor({"X"}), "mill.toml: \"X\" is no axis with its value" + rest);
    EXPECT_EQ(errorFor({"X="}), "mill.toml: \"X=\" has no number behind the =" + rest);
    EXPECT_EQ(errorFor({"X=1,5"}), "mill.toml: \"X=1,5\" has no number behind the =" + rest);
    EXPECT_EQ(errorFor({"X=nan"}), "mill.toml: \"X=nan\" has no number behind the =" + rest);
    EXPECT_EQ(errorFor({"X=1", "X=2"}),
              "mill.toml: \"X=2\" sets an axis that was set before" + rest);
}

TEST_F(Program, AnswersAStreamThatIsNotThere)
{
    const std::string fault = "mill.toml: there is no stream 4 in this machine; choose from: 1\n";
    EXPECT_EQ(Run({"pose", "mill.toml", "--stream", "4"}).err, fault);
    const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", "j.csv", "--stream", "4"});
    EXPECT_EQ(outcome.err, fault);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(Run({"pose", "mill.toml", "--stream", "1"}).code, 0);
}

TEST_F(Program, FailsWhenItsAnswerCannotBeWritten)
{
    const Outcome outcome = RunShell("\"$1\" pose mill.toml >/dev/full");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.err, "trunnion: standard output cannot be written; check where it leads\n");
}

// solve --------------------------------------------------------------------------------------

TEST_F(Program, WritesATableAndASummary)
{
    const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", "joints.csv"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(FirstLine(outcome.out), "points     3: 3 converged, 0 failed");
    EXPECT_TRUE(Contains(outcome.out, "\nposition   off by at most ")) << outcome.out;
    EXPECT_TRUE(Contains(outcome.out, " mm, at part.cl:")) << outcome.out;
    EXPECT_TRUE(Contains(outcome.out, " deg, at part.cl:")) << outcome.out;
    EXPECT_TRUE(Contains(outcome.out, "\naxis       A -30 to -30 deg (limits -120 to 30)\n"))
        << outcome.out;
    EXPECT_TRUE(Contains(outcome.out, " deg (unlimited)\n")) << outcome.out;
    EXPECT_TRUE(Contains(outcome.out, "\ntime       ")) << outcome.out;
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"joints.csv", "mill.toml", "part.cl"}));

    const Table table(folder.Path() / "joints.csv");
    ASSERT_EQ(table.rows.size(), 3U);
    EXPECT_EQ(table.Text(0, "n"), "1");
    EXPECT_EQ(table.Text(0, "line"), "3");
    EXPECT_EQ(table.Text(0, "flags"), "rapid");
    EXPECT_EQ(table.Text(2, "n"), "3");
    EXPECT_EQ(table.Text(2, "line"), "6");
    EXPECT_EQ(table.Text(2, "flags"), "");
    EXPECT_EQ(table.Text(2, "branch"), table.Text(1, "branch"));
    EXPECT_NE(table.Text(2, "branch"), "");
    // The part's zero, 20 above the A axis, tilted by -30: (0, 20 sin 30, -120 + 20 cos 30).
    EXPECT_NEAR(table.Number(2, "X_mm"), 10, 1e-4);
    EXPECT_NEAR(table.Number(2, "Y_mm"), 10, 1e-4);
    EXPECT_NEAR(table.Number(2, "Z_mm"), -120 + 20 * std::sqrt(0.75), 1e-4);
    EXPECT_NEAR(table.Number(2, "A_deg"), -30, 1e-3);
}

TEST_F(Program, WritesRadiansOnRequest)
{
    const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", "joints.csv", "--radians"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(Contains(outcome.out, " rad (limits -2.0944 to 0.5236)\n")) << outcome.out;
    const Table table(folder.Path() / "joints.csv");
    EXPECT_NEAR(table.Number(2, "A_rad"), -0.5235987755982988, 1e-5);
}

TEST_F(Program, WritesTheSameTableEveryTime)
{
    Run({"solve", "mill.toml", "part.cl", "-o", "one.csv"});
    Run({"solve", "mill.toml", "part.cl", "-o", "two.csv"});
    EXPECT_EQ(ContentOf(folder.Path() / "one.csv"), ContentOf(folder.Path() / "two.csv"));
}

TEST_F(Program, IsQuietOnRequest)
{
    const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", "joints.csv", "--quiet"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(Table(folder.Path() / "joints.csv").rows.size(), 3U);
}

TEST_F(Program, SolvesTheStreamThatItIsTold)
{
    // The second stream's part stands still, so that its tool cannot be tilted.
    std::ofstream(folder.Path() / "mill.toml", std::ios::app)
        << "[[mount]]\nname = \"bench\"\nkind = \"part\"\nparent = \"base\"\norigin = [0, 0, "
           "-100]\n"
           "z_axis = [0, 0, 1]\nx_axis = [1, 0, 0]\n"
           "[[stream]]\nid = 2\ntool = \"spindle\"\npart = \"bench\"\n";
    folder.Write("upright.cl", "GOTO/1,2,3\n");
    const Outcome outcome =
        Run({"solve", "mill.toml", "upright.cl", "-o", "j.csv", "--quiet", "--stream", "2"});
    EXPECT_EQ(outcome.code, 0);
    const std::string table = ContentOf(folder.Path() / "j.csv");
    EXPECT_EQ(FirstLine(table), "n,line,X_mm,Y_mm,Z_mm,pos_err,dir_err_deg,branch,flags");
    EXPECT_NEAR(Table(folder.Path() / "j.csv").Number(0, "Z_mm"), -97, 1e-4);
}

TEST_F(Program, ReportsPointsThatItCannotReachAndFinishesTheRest)
{
    folder.Write("far.cl", "GOTO/0,0,0,0,-0.5,0.8660254\n"
                           "GOTO/350,0,0\n"
                           "RAPID\nGOTO/400,0,0\n"
                           "GOTO/10,0,0\n");
    const Outcome outcome = Run({"solve", "mill.toml", "far.cl", "-o", "joints.csv"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(FirstLine(outcome.out), "points     4: 2 converged, 2 failed");
    EXPECT_EQ(outcome.err.rfind("far.cl:2: point 2 failed: reaching it would need X 350 mm (limits "
                                "-300 to 300); at the limit 50 mm and ",
                                0),
              0U)
        << outcome.err;
    EXPECT_TRUE(Contains(outcome.err, "\nfar.cl:4: point 3 failed: reaching it would need X 400 mm "
                                      "(limits -300 to 300); at the limit 100 mm and "))
        << outcome.err;
    EXPECT_TRUE(Contains(outcome.err, " deg remain\n"));

    const std::string table = ContentOf(folder.Path() / "joints.csv");
    EXPECT_TRUE(Contains(table, "\n2,2,,,,,,,,,failed\n3,4,,,,,,,,,rapid|failed\n4,5,")) << table;
    EXPECT_NEAR(Table(folder.Path() / "joints.csv").Number(3, "X_mm"), 10, 1e-4);
}

TEST_F(Program, FinishesTheTableWhenNobodyReadsItsMessages)
{
    folder.Write("far.cl", "GOTO/0,0,0,0,-0.5,0.8660254\nGOTO/350,0,0\nGOTO/10,0,0\n");
    const Outcome outcome = Process(Command({"solve", "mill.toml", "far.cl", "-o", "joints.csv"}),
                                    folder.Path(), Process::ErrorOutput::ClosedPipe)
                                .Wait();
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(Table(folder.Path() / "joints.csv").rows.size(), 3U);
    EXPECT_EQ(folder.Names().size(), 4U);
}

TEST_F(Program, PassesTheWarningsOfThePathOn)
{
    folder.Write("off.cl", "GOTO/0,0,0,0,-0.5,0.8660254\nMULTAX/OFF\nGOTO/1,0,0,0,0,1\n");
    const Outcome outcome = Run({"solve", "mill.toml", "off.cl", "-o", "joints.csv"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err,
              "off.cl:3:12: warning: tool vectors after MULTAX/OFF are ignored, 1 in all and the "
              "first of them here; put MULTAX/ON before them if they count\n");
}

TEST_F(Program, StopsAtABadFileWithItsPlaceAndLeavesTheTableAlone)
{
    folder.Write("joints.csv", "old");
    folder.Write("bad.toml", test::MillWith(15, "parent = \"Q\""));
    folder.Write("bad.cl", "GOTO/1,2,3\nCIRCLE/1,2,3,4\n");
    const auto errorFor = [this](const std::string& machine, const std::string& path) {
        const Outcome outcome = Run({"solve", machine, path, "-o", "joints.csv"});
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    };
    EXPECT_EQ(
        errorFor("bad.toml", "part.cl"),
        "bad.toml:15:10: the parent of axis \"Y\" is \"Q\", and there is no such axis; name an "
        "axis or \"base\"\n");
    EXPECT_EQ(errorFor("mill.toml", "bad.cl"),
              "bad.cl:2:1: \"CIRCLE\" is not understood, and it may move the tool; have the points "
              "written as GOTO, or take it out if it moves nothing\n");
    EXPECT_EQ(
        errorFor("none.toml", "part.cl"),
        "none.toml: this file cannot be opened (No such file or directory); check its name and "
        "your rights to read it\n");
    EXPECT_EQ(errorFor("mill.toml", "."), ".: this is a folder; name a file in it\n");
    EXPECT_EQ(ContentOf(folder.Path() / "joints.csv"), "old");
    EXPECT_EQ(folder.Names().size(), 5U);
}

// The table's file ---------------------------------------------------------------------------

TEST_F(Program, DoesNotReplaceWhatItReads)
{
    const std::string machine = ContentOf(folder.Path() / "mill.toml");
    for (const std::string output : {"mill.toml", "./part.cl"}) {
        const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", output});
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(
            outcome.err,
            output +
                ": the run would write over a file that it reads or writes; choose another name\n");
    }
    EXPECT_EQ(ContentOf(folder.Path() / "mill.toml"), machine);
    EXPECT_EQ(ContentOf(folder.Path() / "part.cl"), kShortPath);
}

TEST_F(Program, RefusesATableWhereNoFileCanStand)
{
    EXPECT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "no/joints.csv"}).code, 2);
    const Outcome outcome = Run({"solve", "mill.toml", "part.cl", "-o", "/dev/stdout"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.err, "/dev/stdout: this is not an ordinary file; name one to write to\n");
    EXPECT_EQ(folder.Names().size(), 2U);
}

TEST_F(Program, LeavesNothingBehindWhenTheTableCannotBeWritten)
{
    folder.Write("joints.csv", "old");
    std::string path = "GOTO/0,0,50,0,-0.5,0.8660254\n";
    for (int i = 0; i < 200; ++i) {
        path += "GOTO/" + std::to_string(i) + ",0,0\n";
    }
    folder.Write("path.cl", path);
    // Files may have no more than one block of 512 bytes; the signal for that is switched off, so
    // that the write fails as it does on a full disk.
    const Outcome outcome =
        RunShell("trap '' XFSZ; ulimit -f 1; exec \"$1\" solve mill.toml path.cl -o joints.csv");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.err, "joints.csv: this file cannot be written (File too large); check the "
                           "folder, your rights and the free space\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(ContentOf(folder.Path() / "joints.csv"), "old");
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"joints.csv", "mill.toml", "part.cl", "path.cl"}));
}

TEST_F(Program, GoesOnWhereItWasInterruptedAndWritesTheSameTable)
{
    WriteLongPath();
    const std::vector<std::string> solve =
        Command({"solve", "mill.toml", "long.cl", "-o", "joints.csv"});
    // On a busy machine a run may be over before its signal comes.
    constexpr int kTries = 20;
    const auto interruptedBy = [&](int signal) {
        Outcome outcome;
        for (int i = 0; i < kTries && outcome.code != 130; ++i) {
            folder.Write("joints.csv", "old");
            Process process(solve, folder.Path(), Process::ErrorOutput::Terminal);
            process.WaitForError("solving point ");
            process.Send(signal);
            outcome = process.Wait();
        }
        return outcome;
    };
    for (const int signal : {SIGINT, SIGTERM}) {
        const Outcome outcome = interruptedBy(signal);
        ASSERT_EQ(outcome.code, 130) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        const Table table(folder.Path() / "joints.csv.partial");
        EXPECT_GE(table.rows.size(), 2U);
        EXPECT_LT(table.rows.size(), kLongPoints);
        EXPECT_EQ(table.Text(1, "flags"), "failed");
        EXPECT_EQ(table.rows.back().size(), table.header.size());
        EXPECT_TRUE(Contains(outcome.err, "interrupted after " + table.rows.back().at(0) + " of " +
                                              std::to_string(kLongPoints) +
                                              " points; their rows are in joints.csv.partial; the "
                                              "same command with --resume goes on from there"))
            << outcome.err;
        EXPECT_EQ(ContentOf(folder.Path() / "joints.csv"), "old");
        EXPECT_EQ(folder.Names(),
                  (std::vector<std::string>{"joints.csv", "joints.csv.partial", "joints.csv.resume",
                                            "long.cl", "mill.toml", "part.cl"}));
    }
    std::vector<std::string> resume = solve;
    resume.emplace_back("--resume");
    EXPECT_EQ(Process(resume, folder.Path()).Wait().code, 1); // the point beyond reach
    const std::string resumed = ContentOf(folder.Path() / "joints.csv");
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"joints.csv", "long.cl", "mill.toml", "part.cl"}));
    EXPECT_EQ(Process(solve, folder.Path()).Wait().code, 1);
    EXPECT_EQ(ContentOf(folder.Path() / "joints.csv"), resumed);
}

TEST_F(Program, ResumesNothingButTheSameRun)
{
    const Outcome without = Run({"solve", "mill.toml", "part.cl", "-o", "joints.csv", "--resume"});
    EXPECT_EQ(without.code, 2);
    EXPECT_TRUE(Contains(without.err, "joints.csv.resume: ")) << without.err;
    folder.Write("joints.csv.resume", "trunnion checkpoint 1 0123456789abcdef 0123456789abcdef\n");
    const Outcome other = Run({"solve", "mill.toml", "part.cl", "-o", "joints.csv", "--resume"});
    EXPECT_EQ(other.code, 2);
    EXPECT_EQ(other.err,
              "joints.csv.resume: this was left by a run with another machine, toolpath, option or "
              "version; repeat that run, or run without --resume\n");
}

TEST_F(Program, ShowsItsProgressOnATerminalOnly)
{
    const std::vector<std::string> solve =
        Command({"solve", "mill.toml", "part.cl", "-o", "joints.csv"});
    const Outcome onTerminal = Process(solve, folder.Path(), Process::ErrorOutput::Terminal).Wait();
    EXPECT_EQ(onTerminal.code, 0);
    const std::string clearLine = "\r\x1B[K";
    EXPECT_EQ(onTerminal.err.rfind(clearLine + "solving point 3 of 3" + clearLine, 0), 0U);
    EXPECT_EQ(onTerminal.err.substr(onTerminal.err.size() - clearLine.size()), clearLine);
    EXPECT_EQ(Process(solve, folder.Path()).Wait().err, "");

    std::vector<std::string> quiet = solve;
    quiet.emplace_back("--quiet");
    EXPECT_EQ(Process(quiet, folder.Path(), Process::ErrorOutput::Terminal).Wait().err, "");
}

// URDF ---------------------------------------------------------------------------------------

// A head that tilts about y, 0.3 m above the tool's end, on a slide along z.
constexpr const char* kTiltingHead =
    "<robot name=\"head\"><link name=\"floor\"/><link name=\"ram\"/><link name=\"tip\"/>\n"
    "<joint name=\"Z\" type=\"prismatic\"><parent link=\"floor\"/><child link=\"ram\"/>\n"
    "<origin xyz=\"0 0 0.5\"/><axis xyz=\"0 0 1\"/><limit lower=\"-0.4\" upper=\"0.4\"/></joint>\n"
    "<joint name=\"seat\" type=\"fixed\"><parent link=\"swivel\"/><child link=\"tip\"/>\n"
    "<origin xyz=\"0 0 -0.3\"/></joint><link name=\"swivel\"/>\n"
    "<joint name=\"B\" type=\"revolute\"><parent link=\"ram\"/><child link=\"swivel\"/>\n"
    "<axis xyz=\"0 1 0\"/><limit lower=\"-2\" upper=\"2\"/></joint></robot>\n";

TEST_F(Program, PosesAUrdfBetweenTwoLinks)
{
    folder.Write("head.urdf", kTiltingHead);
    // Tilted by 30 degrees the tool's end is at -300 (sin 30, 0, cos 30) from the axis at z = 600.
    const Outcome outcome =
        Run({"pose", "head.urdf", "Z=100", "B=30", "--tool-link", "tip", "--part-link", "floor"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "stream 1: tool \"tip\" in coordinates of part \"floor\"\n"
                           "position   x -150.000000  y 0.000000  z 340.192379 mm\n"
                           "direction  i 0.500000000  j 0.000000000  k 0.866025404\n"
                           "x axis     i 0.866025404  j 0.000000000  k -0.500000000\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Program, ListsTheBranchesOfAUrdf)
{
    folder.Write("head.urdf", kTiltingHead);
    const Outcome outcome = Run({"branches", "head.urdf", "-150", "0", "340.192379", "0.5", "0",
                                 "0.8660254", "--tool-link", "tip", "--part-link", "floor"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(Contains(outcome.out, "B deg       limits -114.5916 to 114.5916            30\n"))
        << outcome.out;
}

TEST_F(Program, AsksForTheLinksOfAUrdf)
{
    folder.Write("head.urdf", kTiltingHead);
    const Outcome outcome = Run({"pose", "head.urdf", "--tool-link", "tip"});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "head.urdf: a URDF does not say where its tool and its part are; give "
                           "--tool-link and --part-link, each one of: \"floor\", \"ram\", \"tip\", "
                           "\"swivel\"\n");
    EXPECT_EQ(Run({"pose", "mill.toml", "--part-link", "floor"}).code, 2);
}

// The samples --------------------------------------------------------------------------------

// What a converged solve may leave: the objective is position squared plus degrees squared, at most
// 1e-8; a direction counts as met when its cosine is within 1.523e-10 of 1, acos of which is
// 1.745e-5 rad = 0.0010 degrees.
constexpr double kPositionTolerance = 1e-4;
constexpr double kDirectionTolerance_deg = 1e-3;

struct Sample
{
    const char* machine;
    const char* toolpath;
    std::size_t leastPoints;
    const char* tiltColumn;
};

void PrintTo(const Sample& sample, std::ostream* out)
{
    *out << sample.toolpath << " on " << sample.machine;
}

class Samples : public testing::TestWithParam<Sample>
{
  protected:
    test::TempFolder folder;
};

TEST_P(Samples, AreSolvedAtEveryPointWithoutJumps)
{
    const Sample& sample = GetParam();
    const fs::path samples(test::kSamples);
    const Outcome outcome = Process({test::kProgram, "solve", samples / "machines" / sample.machine,
                                     samples / "toolpaths" / sample.toolpath, "-o", "joints.csv"},
                                    folder.Path())
                                .Wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    const Table table(folder.Path() / "joints.csv");
    const std::size_t count = table.rows.size();
    const std::string points = table.Text(count - 1, "n");
    EXPECT_GE(host::ParseNumber(points), sample.leastPoints);
    EXPECT_EQ(FirstLine(outcome.out),
              "points     " + points + ": " + points + " converged, 0 failed");
    // A step of the dome turns the part by 6 degrees; a jump to another branch would be far more.
    constexpr double kLargestTurn_deg = 8.0;
    for (std::size_t i = 0; i < count; ++i) {
        SCOPED_TRACE("row " + std::to_string(i + 1));
        ASSERT_LE(table.Number(i, "pos_err"), kPositionTolerance);
        ASSERT_LE(table.Number(i, "dir_err_deg"), kDirectionTolerance_deg);
        for (const char* column : {"C_deg", sample.tiltColumn}) {
            if (i > 0) {
                ASSERT_LE(std::fabs(table.Number(i, column) - table.Number(i - 1, column)),
                          kLargestTurn_deg);
            }
        }
    }
    EXPECT_EQ(table.Text(0, "flags"), "rapid");
    EXPECT_EQ(table.Text(1, "flags"), "rapid");
    EXPECT_EQ(table.Text(2, "flags"), "");
}

INSTANTIATE_TEST_SUITE_P(
    All, Samples,
    testing::Values(Sample{"trunnion-ac.toml", "dome-tilted.cl", 600, "A_deg"},
                    Sample{"trunnion-ac.toml", "blade-swarf.cl", 400, "A_deg"},
                    Sample{"head-table-bc.toml", "dome-tilted.cl", 600, "B_deg"},
                    Sample{"head-table-bc.toml", "blade-swarf.cl", 400, "B_deg"}),
    [](const testing::TestParamInfo<Sample>& sample) {
        const std::string machine = sample.param.machine;
        const std::string toolpath = sample.param.toolpath;
        return std::string(toolpath[0] == 'd' ? "DomeOn" : "BladeOn") +
               (machine[0] == 't' ? "TrunnionTable" : "HeadAndTable");
    });

// Branches ------------------------------------------------------------------------------------

// A tool that leans by 40 degrees towards -y: the table tilts to A -40, or, beyond its limit of 30,
// to A 40 half a turn of C away. See BranchesTest for the numbers.
const std::vector<std::string> kLeaning{"branches", "mill.toml", "0",           "0",
                                        "50",       "0",         "-0.64278761", "0.76604444"};

TEST_F(Program, ListsTheBranchesAtAPoseWithLimitsAndErrors)
{
    const Outcome outcome = Run(kLeaning);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(Contains(outcome.out, "Y mm        limits -300 to 300             44.9951\n"));
    EXPECT_TRUE(Contains(outcome.out, "Z mm        limits -400 to 400            -66.3769\n"));
    EXPECT_TRUE(Contains(outcome.out, "A deg       limits -120 to 30                  -40\n"));
    EXPECT_TRUE(Contains(outcome.out, "\noff by      mm "));
    EXPECT_TRUE(Contains(outcome.out, "\noff by      deg "));
}

TEST_F(Program, MarksBranchesBeyondTheLimits)
{
    std::vector<std::string> command = kLeaning;
    EXPECT_FALSE(Contains(Run(command).out, "!"));
    command.emplace_back("--ignore-limits");
    EXPECT_TRUE(Contains(Run(command).out, " ! 40"));
}

TEST_F(Program, ListsTheBranchesOfAnArmFromManyStarts)
{
    // The bench's middle, from above: the turn about the tool is open. With a table there is an
    // axis to spare, and each start leads to a solution of its own.
    const std::vector<std::string> pose{"0", "0", "250", "0", "0", "1"};
    for (const auto& [file, table] : {std::pair{"arm.toml", ""}, {"cell.toml", "-200, 200"}}) {
        folder.Write(file, test::ArmText("-360, 360", table));
        std::vector<std::string> command{"branches", file};
        command.insert(command.end(), pose.begin(), pose.end());
        const Outcome outcome = Run(command);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_TRUE(Contains(outcome.out, " of 257 starts lead to distinct solutions"));
        EXPECT_TRUE(Contains(outcome.out, "turn of the tool about itself open; here its x axis is "
                                          "1 0 0\n"));
        EXPECT_EQ(Contains(outcome.out, "; the first 8 of them\n"), std::string(table) != "");
    }
}

TEST_F(Program, SaysWhyAPoseHasNoBranch)
{
    const Outcome outcome = Run({"branches", "mill.toml", "0", "0", "5000", "0", "0", "1"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(Contains(outcome.err, "no solution from"));
    EXPECT_TRUE(Contains(outcome.err, "reaching it would need Z 4900 mm (limits -400 to 400)"));
}

TEST_F(Program, RefusesAPoseThatIsNone)
{
    for (const std::vector<std::string>& pose :
         {std::vector<std::string>{"0", "0", "0", "0", "0", "0"},
          {"0", "0", "0", "0", "0", "x"},
          {"0", "0", "nan", "0", "0", "1"},
          {"0", "0", "0"}}) {
        std::vector<std::string> command{"branches", "mill.toml"};
        command.insert(command.end(), pose.begin(), pose.end());
        const Outcome outcome = Run(command);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
}

} // namespace
