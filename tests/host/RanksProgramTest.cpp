// The program started by mpirun, as several processes that share a run.

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "Mpirun.h"
#include "Paths.h"
#include "Process.h"
#include "ProgramText.h"
#include "TempFolder.h"
#include "toolpath/Toolpath.h"

namespace
{

namespace fs = std::filesystem;
using test::Outcome;
using test::Process;
using test::Sample;

class Ranks : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (std::string(test::kMpirun).empty()) {
            GTEST_SKIP() << "built without MPI";
        }
    }

    Outcome Run(int ranks, const std::vector<std::string>& arguments, int patience_s = 1)
    {
        return Process(test::Started(ranks, arguments, patience_s), folder.Path()).Wait();
    }
    /// Expects what one process by itself says, but for the time that it takes.
    void ExpectTheSameOf(int ranks, const std::vector<std::string>& arguments, const Outcome& alone)
    {
        const Outcome shared = Run(ranks, arguments, 0);
        EXPECT_EQ(shared.code, alone.code) << ranks;
        EXPECT_EQ(Untimed(shared.out), Untimed(alone.out)) << ranks;
        EXPECT_EQ(shared.err, alone.err) << ranks;
    }
    static std::string Untimed(const std::string& report)
    {
        return report.substr(0, report.find("\ntime"));
    }
    /// To the table that a run without interruption writes.
    void ExpectToGoOn(const std::vector<std::string>& solve)
    {
        std::vector<std::string> resume = solve;
        resume.emplace_back("--resume");
        ASSERT_EQ(Run(2, resume).code, 0);
        const std::string resumed = Content("table.csv");
        ASSERT_EQ(Run(0, solve).code, 0);
        EXPECT_EQ(resumed, Content("table.csv"));
    }
    std::string Content(const std::string& name) const
    {
        return test::ContentOf(folder.Path() / name);
    }
    /// Waves on a slope.
    void WriteLongPath(int numPoints) const
    {
        std::ostringstream path;
        path << "UNITS/MM\nMULTAX/ON\nFEDRAT/1000\n";
        for (int i = 0; i < numPoints; ++i) {
            const double tilt = 0.3 + 0.1 * std::sin(0.001 * i);
            path << "GOTO/" << 40.0 * std::sin(0.0007 * i) << "," << 40.0 * std::cos(0.0005 * i)
                 << ",10," << std::sin(tilt) * std::cos(0.0002 * i) << ","
                 << std::sin(tilt) * std::sin(0.0002 * i) << "," << std::cos(tilt) << "\n";
        }
        folder.Write("long.cl", path.str());
    }

    test::TempFolder folder;
};

TEST_F(Ranks, WriteTheSameBytesHoweverManyTheyAre)
{
    const std::vector<std::string> solve{"solve",
                                         Sample("machines/trunnion-ac.toml"),
                                         Sample("toolpaths/dome-over-the-top.cl"),
                                         "-o",
                                         "table.csv",
                                         "--gcode",
                                         "program.ngc"};
    const Outcome alone = Run(0, solve);
    ASSERT_EQ(alone.code, 0) << alone.err;
    const std::string table = Content("table.csv");
    const std::string program = Content("program.ngc");
    for (const int ranks : {1, 2, 3, 7}) {
        fs::remove(folder.Path() / "table.csv");
        const Outcome shared = Run(ranks, solve);
        EXPECT_EQ(shared.code, 0) << shared.err;
        EXPECT_EQ(Content("table.csv"), table) << ranks;
        EXPECT_EQ(Content("program.ngc"), program) << ranks;
        EXPECT_EQ(Untimed(shared.out), Untimed(alone.out)) << ranks;
    }
}

/// The table of a sample, line by line.
class RanksVerify : public Ranks
{
  protected:
    void SetUp() override
    {
        Ranks::SetUp();
        if (!IsSkipped()) {
            ASSERT_EQ(Run(0, {"solve", kMachine, kPath, "-o", "table.csv"}).code, 0);
            std::istringstream in(Content("table.csv"));
            for (std::string line; std::getline(in, line);) {
                lines.push_back(line);
            }
            ASSERT_GT(lines.size(), 1500U);
        }
    }

    void WriteTable() const
    {
        std::string text;
        for (const std::string& line : lines) {
            text += line + "\n";
        }
        folder.Write("table.csv", text);
    }

    const std::string kMachine = Sample("machines/trunnion-ac.toml");
    const std::string kPath = Sample("toolpaths/dome-over-the-top.cl");
    const std::vector<std::string> kVerify{"verify", kMachine, kPath, "table.csv"};
    std::vector<std::string> lines;
};

TEST_F(RanksVerify, FindWhatOneOfThemFinds)
{
    ExpectTheSameOf(3, kVerify, Run(0, kVerify));

    const std::string otherEnd = lines.back();
    lines.insert(lines.begin() + 700, lines[700]);
    lines.erase(lines.begin() + 900, lines.begin() + 930);
    lines[300] = otherEnd;
    for (std::size_t i = 1000; i < 1100; ++i) {
        lines[i].replace(lines[i].rfind(',') + 1, std::string::npos, "rapid");
    }
    WriteTable();
    const Outcome damaged = Run(0, kVerify);
    EXPECT_EQ(damaged.code, 1);
    EXPECT_GT(std::count(damaged.err.begin(), damaged.err.end(), '\n'), 20) << damaged.err;
    for (const int ranks : {1, 2, 3, 7}) {
        ExpectTheSameOf(ranks, kVerify, damaged);
    }
}

TEST_F(RanksVerify, EndTogetherWhereARowIsNone)
{
    for (std::size_t i = 1; i < lines.size(); ++i) {
        // So much is found in each row that answers are long.
        lines[i].replace(lines[i].find(','), std::string(",").size(), ",1");
        const std::size_t x = lines[i].find(',', lines[i].find(',') + 1) + 1;
        lines[i].replace(x, lines[i].find(',', x) - x, i % 2 == 0 ? "9000" : "0");
        lines[i].replace(lines[i].rfind(',') + 1, std::string::npos, i % 2 == 0 ? "" : "rapid");
    }
    lines[1000] += ",";
    WriteTable();
    const Outcome alone = Run(0, kVerify);
    EXPECT_EQ(alone.code, 2);
    EXPECT_NE(alone.err.find("\ntable.csv:1001:"), std::string::npos) << alone.err;
    for (const int ranks : {2, 7}) {
        ExpectTheSameOf(ranks, kVerify, alone);
    }
}

TEST_F(Ranks, EndTogetherWhereTheInputIsWrong)
{
    const Outcome shared =
        Run(3, {"solve", Sample("machines/trunnion-ac.toml"), "missing.cl", "-o", "table.csv"});
    EXPECT_EQ(shared.code, 2);
    EXPECT_EQ(shared.err.find("missing.cl: this file cannot be opened"), 0U) << shared.err;
    EXPECT_FALSE(fs::exists(folder.Path() / "table.csv"));
}

TEST_F(Ranks, ShowProgressWhereTheLauncherSpeaksToATerminal)
{
    const std::vector<std::string> solve =
        test::Started(2, {"solve", Sample("machines/trunnion-ac.toml"),
                          Sample("toolpaths/dome-over-the-top.cl"), "-o", "table.csv"});
    const Outcome onTerminal = Process(solve, folder.Path(), Process::ErrorOutput::Terminal).Wait();
    EXPECT_EQ(onTerminal.code, 0);
    EXPECT_NE(onTerminal.err.find("\r\x1B[Ksolving point "), std::string::npos) << onTerminal.err;
    EXPECT_NE(onTerminal.err.find("\r\x1B[Kwriting point "), std::string::npos) << onTerminal.err;
    EXPECT_EQ(Process(solve, folder.Path()).Wait().err, "");
}

TEST_F(Ranks, LeaveOtherCommandsToOneOfThem)
{
    const std::vector<std::string> pose{"pose", Sample("machines/trunnion-ac.toml"), "A=10"};
    const Outcome shared = Run(3, pose);
    EXPECT_EQ(shared.code, 0) << shared.err;
    EXPECT_EQ(shared.out, Run(0, pose).out);
}

/// Whether a rank has a file open in the folder that has no name yet.
bool IsBeingWritten(const fs::path& folder)
{
    for (const pid_t rank : test::RanksIn(folder)) {
        std::error_code gone;
        for (const fs::directory_entry& open :
             fs::directory_iterator("/proc/" + std::to_string(rank) + "/fd", gone)) {
            const std::string place = fs::read_symlink(open.path(), gone).string();
            if (place.find(folder.string()) == 0 && place.find(" (deleted)") != std::string::npos) {
                return true;
            }
        }
    }
    return false;
}

TEST_F(Ranks, LeaveWhatIsDoneWhenOneOfThemDies)
{
    WriteLongPath(60000); // so many that a run takes a while
    const std::vector<std::string> solve{"solve", Sample("machines/trunnion-ac.toml"), "long.cl",
                                         "-o", "table.csv"};
    Process run(test::Started(3, solve, 2), folder.Path());
    ASSERT_TRUE(run.WaitUntil([&] { return IsBeingWritten(folder.Path()); }));
    const std::vector<pid_t> ranks = test::RanksIn(folder.Path());
    ASSERT_EQ(ranks.size(), 3U);
    ::kill(ranks.back(), SIGKILL);
    const Outcome ended = run.Wait();
    EXPECT_NE(ended.code, 0);
    EXPECT_NE(ended.err.find("interrupted after "), std::string::npos) << ended.err;
    EXPECT_FALSE(fs::exists(folder.Path() / "table.csv"));

    ExpectToGoOn(solve);
}

TEST_F(Ranks, LeaveWhatIsDoneWhenOneOfThemHasTooLittleMemory)
{
    if (test::kIsSanitized) {
        GTEST_SKIP() << "a sanitizer takes memory of its own";
    }
    // So far from each other that each stretch of 128 points takes tens of thousands of rows.
    std::ostringstream path;
    path << "UNITS/MM\nMULTAX/ON\nFEDRAT/1000\n";
    for (int i = 0; i < 300; ++i) {
        const double tilt = 0.3 + 0.1 * std::sin(0.9 * i);
        path << "GOTO/" << 40.0 * std::sin(0.7 * i) << "," << 40.0 * std::cos(0.5 * i) << ",10,"
             << std::sin(tilt) * std::cos(0.25 * i) << "," << std::sin(tilt) * std::sin(0.25 * i)
             << "," << std::cos(tilt) << "\n";
    }
    folder.Write("wide.cl", path.str());
    const std::vector<std::string> solve{"solve",     Sample("machines/trunnion-ac.toml"),
                                         "wide.cl",   "--linear-tol",
                                         "1e-5",      "-o",
                                         "table.csv", "--quiet"};
    std::vector<std::string> command = solve;
    command.insert(command.begin(), test::kProgram);
    // 80 MB: to join takes 60 and to build the rows about 100.
    std::vector<std::string> poor{"/bin/sh", "-c", R"(ulimit -d 80000; exec "$0" "$@")"};
    poor.insert(poor.end(), command.begin(), command.end());
    std::vector<std::string> launch = test::StartedApart({command, poor}, 2);
    launch.insert(launch.begin(), {"/usr/bin/timeout", "60"}); // else it ends with code 124
    const Outcome ended = Process(launch, folder.Path()).Wait();
    EXPECT_EQ(ended.code, 2);
    EXPECT_NE(("\n" + ended.err)
                  .find("\ntrunnion: rank 1: there is not enough memory; free some, or start fewer "
                        "ranks\n"),
              std::string::npos)
        << ended.err;
    EXPECT_NE(ended.err.find("interrupted after "), std::string::npos) << ended.err;
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"table.csv.partial", "table.csv.resume", "wide.cl"}));

    ExpectToGoOn(solve);
}

class RanksMemory : public Ranks
{
  protected:
    /// The most that each of two ranks holds during a run. [bytes]
    std::vector<long> MostHeld(int numPoints) const
    {
        WriteLongPath(numPoints);
        folder.Write("held.py",
                     "import os, resource, subprocess, sys\n"
                     "code = subprocess.call(sys.argv[1:])\n"
                     "held = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss\n"
                     "with open('held' + os.environ['OMPI_COMM_WORLD_RANK'], 'w') as to:\n"
                     "    to.write(str(held * 1024))\n"
                     "sys.exit(code)\n");
        const std::vector<std::string> measured{test::kPython,
                                                "held.py",
                                                test::kProgram,
                                                "solve",
                                                Sample("machines/trunnion-ac.toml"),
                                                "long.cl",
                                                "--quiet",
                                                "-o",
                                                "table.csv"};
        EXPECT_EQ(Process(test::StartedApart({measured, measured}), folder.Path()).Wait().code, 0);
        return {std::stol(Content("held0")), std::stol(Content("held1"))};
    }
};

TEST_F(RanksMemory, DoesNotGrowWithThePathWhereTheyDoNotLead)
{
    if (test::kIsSanitized) {
        GTEST_SKIP() << "a sanitizer takes memory of its own";
    }
    constexpr int kFew = 10000;
    constexpr int kMany = 110000;
    constexpr long kOfPoints = (kMany - kFew) * static_cast<long>(sizeof(host::ToolPoint));
    const std::vector<long> few = MostHeld(kFew);
    const std::vector<long> many = MostHeld(kMany);
    EXPECT_GT(many[0] - few[0], kOfPoints);
    EXPECT_LT(many[1] - few[1], kOfPoints / 5);
}

} // namespace
