// trunnion batch, started by mpirun: jobs go side by side and come to the same.

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BegunJobs.h"
#include "MillText.h"
#include "Mpirun.h"
#include "Paths.h"
#include "Process.h"
#include "ProgramText.h"
#include "TempFolder.h"

namespace
{

namespace fs = std::filesystem;
using test::Contains;
using test::Outcome;
using test::Process;
using test::Sample;
using test::Untimed;

/// Where the ranks leave by themselves, the launcher need not wait before it kills them.
constexpr int kImpatient = 0;

class BatchRanks : public testing::Test
{
  protected:
    void SetUp() override
    {
        if (std::string(test::kMpirun).empty()) {
            GTEST_SKIP() << "built without MPI";
        }
        folder.Write("mill.toml", test::MillText());
        folder.Write("far.cl", "UNITS/MM\nGOTO/0,0,150,0,0,1\nGOTO/5000,0,100\nGOTO/0,0,100\n");
    }

    Outcome Run(int ranks, const std::vector<std::string>& arguments) const
    {
        return Process(test::Started(ranks, arguments, kImpatient), folder.Path()).Wait();
    }
    /// All tables, one behind the other.
    std::string Tables() const
    {
        std::string all;
        for (const std::string& name : folder.Names()) {
            if (fs::path(name).extension() == ".csv") {
                all += name + "\n" + test::ContentOf(folder.Path() / name);
            }
        }
        return all;
    }
    void RemoveTables() const
    {
        for (const std::string& name : folder.Names()) {
            if (fs::path(name).extension() == ".csv") {
                fs::remove(folder.Path() / name);
            }
        }
    }
    /// So many points that a run takes a while.
    void WriteLongPath() const
    {
        std::ostringstream path;
        path << "UNITS/MM\nMULTAX/ON\nFEDRAT/1000\n";
        for (int i = 0; i < 20000; ++i) {
            const double tilt = 0.3 + 0.1 * std::sin(0.001 * i);
            path << "GOTO/" << 40.0 * std::sin(0.0007 * i) << ",0,10," << std::sin(tilt) << ",0,"
                 << std::cos(tilt) << "\n";
        }
        folder.Write("long.cl", path.str());
    }

    test::TempFolder folder;
};

TEST_F(BatchRanks, DoAndSayTheSameHoweverManyTheyAre)
{
    folder.Write("jobs.txt", "solve " + Sample("machines/trunnion-ac.toml") + " " +
                                 Sample("toolpaths/dome-over-the-top.cl") + " -o 'a dome.csv'\n" +
                                 "solve mill.toml near.cl -o b.csv\n" + "solve " +
                                 Sample("machines/head-table-bc.toml") + " " +
                                 Sample("toolpaths/impeller-blade.cl") + " -o c.csv\n" +
                                 "solve mill.toml near.cl -o d.csv --points-only --quiet\n" +
                                 "solve " + Sample("machines/nutating-bc.toml") + " " +
                                 Sample("toolpaths/pocket-tilted-walls.cl") + " -o e.csv\n");
    folder.Write("near.cl", "UNITS/MM\nGOTO/0,0,150,0,0,1\nGOTO/0,0,100\n");
    const Outcome alone = Run(0, {"batch", "jobs.txt"});
    EXPECT_EQ(alone.code, 0);
    EXPECT_TRUE(Contains(alone.out, "\njobs       5: 5 done\n"));
    const std::string tables = Tables();
    for (const int ranks : {1, 2, 3, 7}) {
        RemoveTables();
        const Outcome shared = Run(ranks, {"batch", "jobs.txt"});
        EXPECT_EQ(shared.code, 0) << ranks;
        EXPECT_EQ(Tables(), tables) << ranks;
        EXPECT_EQ(Untimed(shared.out), Untimed(alone.out)) << ranks;
    }
}

TEST_F(BatchRanks, FinishTheOthersWhereOneFails)
{
    folder.Write("jobs.txt", "solve mill.toml far.cl -o a.csv\n"
                             "solve mill.toml missing.cl -o b.csv\n"
                             "verify mill.toml far.cl mill.toml\n"
                             "solve mill.toml far.cl -o c.csv --points-only --quiet\n");
    const Outcome alone = Run(0, {"batch", "jobs.txt"});
    EXPECT_EQ(alone.code, 2);
    const std::string tables = Tables();
    RemoveTables();
    const Outcome shared = Run(3, {"batch", "jobs.txt"});
    EXPECT_EQ(shared.code, 2);
    EXPECT_EQ(Tables(), tables);
    EXPECT_TRUE(Contains(Untimed(shared.out), Untimed(alone.out)))
        << shared.out; // mpirun adds some
    EXPECT_TRUE(Contains(shared.err, alone.err)) << shared.err;
    EXPECT_TRUE(Contains(alone.out, "jobs       4: 2 with failed points, 2 not done\n"));
}

TEST_F(BatchRanks, EndTogetherWhereALineIsWrong)
{
    folder.Write("jobs.txt", "solve mill.toml far.cl -o a.csv\nsolve mill.toml far.cl -o a.csv\n");
    const Outcome shared = Run(3, {"batch", "jobs.txt"});
    EXPECT_EQ(shared.code, 2);
    EXPECT_EQ(shared.err.rfind("jobs.txt:2:1: a.csv is written by the job of line 1 too", 0), 0U)
        << shared.err;
    EXPECT_EQ(Tables(), "");
}

TEST_F(BatchRanks, GoOnWhereTheyWereInterrupted)
{
    WriteLongPath();
    folder.Write("jobs.txt", "solve mill.toml far.cl -o a.csv --quiet\n"
                             "solve mill.toml long.cl -o b.csv --quiet\n"
                             "solve mill.toml long.cl -o c.csv --quiet --radians\n"
                             "solve mill.toml long.cl -o d.csv --quiet --points-only\n"
                             "solve mill.toml far.cl -o e.csv --quiet\n");
    Process process(test::Started(2, {"batch", "jobs.txt"}, kImpatient), folder.Path());
    ASSERT_TRUE(test::WaitUntilBegun(process, folder.Path(), 3));
    const std::vector<pid_t> ranks = test::RanksIn(folder.Path());
    ASSERT_EQ(ranks.size(), 2U);
    ::kill(ranks.front(), SIGTERM); // the leader tells the other
    const Outcome interrupted = process.Wait();
    EXPECT_EQ(interrupted.code, 130);
    EXPECT_TRUE(Contains(interrupted.out,
                         "jobs       5: 1 with failed points, 2 interrupted, 2 not "
                         "begun\n"))
        << interrupted.out;
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"a.csv", "b.csv.partial", "b.csv.resume", "c.csv.partial",
                                        "c.csv.resume", "far.cl", "jobs.txt", "jobs.txt.done",
                                        "long.cl", "mill.toml"}));

    const Outcome resumed = Run(2, {"batch", "jobs.txt", "--resume"});
    EXPECT_EQ(resumed.code, 1);
    EXPECT_TRUE(Contains(resumed.out, "jobs       5: 3 done, 2 with failed points\n"
                                      "           jobs.txt:1: some points failed in an earlier "
                                      "run\n"
                                      "           jobs.txt:2: done, "))
        << resumed.out;
    EXPECT_FALSE(fs::exists(folder.Path() / "jobs.txt.done"));
    const std::string tables = Tables();
    RemoveTables();
    EXPECT_EQ(Run(0, {"batch", "jobs.txt"}).code, 1);
    EXPECT_EQ(Tables(), tables);
}

TEST_F(BatchRanks, KeepWhatIsDoneWhenOneOfThemDies)
{
    WriteLongPath();
    folder.Write("jobs.txt", "solve mill.toml far.cl -o a.csv --quiet\n"
                             "solve mill.toml long.cl -o b.csv --quiet\n"
                             "solve mill.toml long.cl -o c.csv --quiet --radians\n");
    constexpr int kPatience_s = 1;
    Process process(test::Started(2, {"batch", "jobs.txt"}, kPatience_s), folder.Path());
    ASSERT_TRUE(test::WaitUntilBegun(process, folder.Path(), 3));
    const std::vector<pid_t> ranks = test::RanksIn(folder.Path());
    ASSERT_EQ(ranks.size(), 2U);
    ::kill(ranks.back(), SIGKILL);
    const Outcome ended = process.Wait();
    EXPECT_NE(ended.code, 0);
    EXPECT_TRUE(Contains(ended.out, "\n           jobs.txt:3: interrupted\n")) << ended.out;
    EXPECT_TRUE(fs::exists(folder.Path() / "jobs.txt.done"));

    const Outcome resumed = Run(0, {"batch", "jobs.txt", "--resume"});
    EXPECT_EQ(resumed.code, 1) << resumed.err;
    EXPECT_TRUE(Contains(resumed.out, "jobs.txt:1: some points failed in an earlier run\n"));
    const std::string tables = Tables();
    RemoveTables();
    EXPECT_EQ(Run(0, {"batch", "jobs.txt"}).code, 1);
    EXPECT_EQ(Tables(), tables);
}

} // namespace
