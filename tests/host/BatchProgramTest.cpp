// trunnion batch, run as a user runs it, in one process.

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BegunJobs.h"
#include "MillText.h"
#include "Paths.h"
#include "Process.h"
#include "ProgramText.h"
#include "TempFolder.h"
#include "text/InputError.h"
#include "text/ShellWords.h"

namespace
{

namespace fs = std::filesystem;
using test::Contains;
using test::Outcome;
using test::Process;
using test::Sample;
using test::Untimed;

// With A and C at 0 the tool's end is at (X, Y, Z + 100) of the part; X ends at 300.
constexpr const char* kPath = "UNITS/MM\n"
                              "RAPID\n"
                              "GOTO/0,0,150,0,0,1\n"
                              "FEDRAT/500,MMPM\n"
                              "GOTO/0,0,100\n"
                              "GOTO/20,0,100\n";
constexpr const char* kFarPath = "UNITS/MM\nGOTO/0,0,150,0,0,1\nGOTO/5000,0,100\nGOTO/0,0,100\n";

class BatchProgram : public testing::Test
{
  protected:
    BatchProgram()
    {
        folder.Write("mill.toml", test::MillText());
        folder.Write("part.cl", kPath);
        folder.Write("far.cl", kFarPath);
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
    Outcome Batch(const std::string& jobs, const std::vector<std::string>& options = {}) const
    {
        folder.Write("jobs.txt", jobs);
        std::vector<std::string> arguments{"batch", "jobs.txt"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }
    std::string Content(const std::string& name) const
    {
        return test::ContentOf(folder.Path() / name);
    }
    bool IsThere(const std::string& name) const { return fs::exists(folder.Path() / name); }
    /// So many points that a run takes a while.
    void WriteLongPath() const
    {
        std::ostringstream path;
        path << "UNITS/MM\nMULTAX/ON\nFEDRAT/1000\n";
        constexpr int kPoints = test::kIsSanitized ? 3000 : 20000;
        for (int i = 0; i < kPoints; ++i) {
            const double tilt = 0.3 + 0.1 * std::sin(0.001 * i);
            path << "GOTO/" << 40.0 * std::sin(0.0007 * i) << ",0,10," << std::sin(tilt) << ",0,"
                 << std::cos(tilt) << "\n";
        }
        folder.Write("long.cl", path.str());
    }

    test::TempFolder folder;
};

TEST_F(BatchProgram, DoesEachRunAsByItself)
{
    const std::string dome =
        "solve " + Sample("machines/trunnion-ac.toml") + " " +
        Sample("toolpaths/dome-over-the-top.cl") +
        " -o dome.csv --gcode 'dome program.ngc' --dialect per-minute --summary dome.json";
    const std::string blade = "solve  " + Sample("machines/head-table-bc.toml") + " \"" +
                              Sample("toolpaths/impeller-blade.cl") + "\" -o blade\\ 1.csv --quiet";
    const std::string verify = "verify mill.toml part.cl given.csv";
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "given.csv"}).code, 0);
    const Outcome domeAlone =
        Run({"solve", Sample("machines/trunnion-ac.toml"), Sample("toolpaths/dome-over-the-top.cl"),
             "-o", "dome.csv", "--gcode", "dome program.ngc", "--dialect", "per-minute",
             "--summary", "dome.json"});
    ASSERT_EQ(domeAlone.code, 0) << domeAlone.err;
    ASSERT_EQ(Run({"solve", Sample("machines/head-table-bc.toml"),
                   Sample("toolpaths/impeller-blade.cl"), "-o", "blade 1.csv"})
                  .code,
              0);
    const Outcome verified = Run({"verify", "mill.toml", "part.cl", "given.csv"});
    ASSERT_EQ(verified.code, 0);
    const std::vector<std::string> names = {"dome.csv", "dome program.ngc", "dome.json",
                                            "blade 1.csv"};
    const auto untimedContent = [&](const std::string& name) {
        return std::regex_replace(Content(name), std::regex("\"seconds\": [0-9.e-]+"), "");
    };
    std::vector<std::string> alone;
    for (const std::string& name : names) {
        alone.push_back(untimedContent(name));
        fs::remove(folder.Path() / name);
    }

    const Outcome batch =
        Batch("# three runs\n\n  " + dome + "\n\t# and\n" + blade + " # the blade\r\n" + verify);
    EXPECT_EQ(batch.code, 0) << batch.err;
    EXPECT_EQ(batch.err, "");
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(untimedContent(names[i]), alone[i]) << names[i];
        EXPECT_GT(alone[i].size(), 1000U);
    }
    EXPECT_EQ(Untimed(batch.out), "jobs.txt:3: " + dome + "\n" + Untimed(domeAlone.out) +
                                      "\njobs.txt:6: " + verify + "\n" + Untimed(verified.out) +
                                      "\n"
                                      "jobs       3: 3 done\n"
                                      "           jobs.txt:3: done, T s\n"
                                      "           jobs.txt:5: done, T s\n"
                                      "           jobs.txt:6: done, T s\n"
                                      "time       T s\n");
    EXPECT_FALSE(IsThere("jobs.txt.done"));
}

TEST_F(BatchProgram, FinishesTheOthersWhereOneFails)
{
    folder.Write("broken.toml", test::MillWith(9, "type = \"sideways\""));
    const Outcome batch = Batch("solve mill.toml part.cl -o a.csv --quiet\n"
                                "solve mill.toml missing.cl -o b.csv\n"
                                "solve broken.toml part.cl -o c.csv\n"
                                "solve mill.toml part.cl -o nowhere/d.csv\n"
                                "solve mill.toml part.cl -o e.csv --lock Q=1\n"
                                "solve mill.toml far.cl -o f.csv --quiet\n"
                                "solve mill.toml part.cl -o g.csv --quiet\n");
    EXPECT_EQ(batch.code, 2);
    EXPECT_EQ(Content("a.csv"), Content("g.csv"));
    EXPECT_TRUE(Contains(Content("f.csv"), "failed"));
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"a.csv", "broken.toml", "f.csv", "far.cl", "g.csv",
                                        "jobs.txt", "jobs.txt.done", "mill.toml", "part.cl"}));
    const std::string missing = "missing.cl: this file cannot be opened (No such file or "
                                "directory); check its name and your rights to read it\n";
    EXPECT_EQ(batch.err.rfind("jobs.txt:2: solve mill.toml missing.cl -o b.csv\n" + missing, 0), 0U)
        << batch.err;
    EXPECT_TRUE(Contains(batch.err, "\njobs.txt:3: solve broken.toml part.cl -o c.csv\n"
                                    "broken.toml:9:8: "))
        << batch.err;
    EXPECT_TRUE(Contains(batch.err, "\njobs.txt:6: solve mill.toml far.cl -o f.csv --quiet\n"
                                    "far.cl:3: point 2 failed: "))
        << batch.err;
    EXPECT_TRUE(
        Contains(batch.err, "\nthe same command with --resume does what is not done yet\n"));
    const std::string list = Untimed(batch.out);
    EXPECT_EQ(list.rfind("jobs       7: 2 done, 1 with failed points, 4 not done\n"
                         "           jobs.txt:1: done, T s\n"
                         "           jobs.txt:2: not done, ",
                         0),
              0U)
        << list;
    EXPECT_TRUE(Contains(list, " s: " + missing)) << list;
    EXPECT_TRUE(Contains(list, " s: --lock: there is no axis \"Q\"; the machine has X, Y, Z, A, C\n"
                               "           jobs.txt:6: some points failed, T s\n"
                               "           jobs.txt:7: done, T s\n"
                               "time       T s\n"))
        << list;
}

TEST_F(BatchProgram, TellsByItsExitCodeWhatCameOfAll)
{
    const std::string good = "solve mill.toml part.cl -o a.csv\n";
    const std::string far = "solve mill.toml far.cl -o b.csv\n";
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "given.csv"}).code, 0);
    const std::string other = "verify mill.toml far.cl given.csv\n";
    const std::string bad = "solve missing.toml part.cl -o c.csv\n";
    EXPECT_EQ(Batch(good).code, 0);
    EXPECT_EQ(Batch(good + far).code, 1);
    const Outcome unverified = Batch(other + good);
    EXPECT_EQ(unverified.code, 1);
    EXPECT_TRUE(Contains(Untimed(unverified.out), "jobs       2: 1 done, 1 that do not hold\n"
                                                  "           jobs.txt:1: does not hold, T s\n"))
        << unverified.out;
    EXPECT_EQ(Batch(far + bad + good).code, 2);
}

TEST_F(BatchProgram, KeepsQuietWhereAllIsWell)
{
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "given.csv"}).code, 0);
    const std::string jobs = "solve mill.toml part.cl -o a.csv\n"
                             "verify mill.toml part.cl given.csv\n";
    const Outcome well = Batch(jobs, {"--quiet"});
    EXPECT_EQ(well.code, 0);
    EXPECT_EQ(well.out + well.err, "");
    const Outcome failing = Batch(jobs + "solve mill.toml far.cl -o b.csv\n", {"--quiet"});
    EXPECT_EQ(failing.code, 1);
    EXPECT_EQ(failing.out, "");
    EXPECT_EQ(
        failing.err.rfind("jobs.txt:3: solve mill.toml far.cl -o b.csv\nfar.cl:3: point 2 ", 0), 0U)
        << failing.err;
}

TEST_F(BatchProgram, ShowsItsProgressOnATerminalOnly)
{
    folder.Write("jobs.txt", "solve mill.toml part.cl -o a.csv\nsolve mill.toml far.cl -o b.csv\n");
    const std::vector<std::string> batch = Command({"batch", "jobs.txt"});
    const std::string onTerminal =
        Process(batch, folder.Path(), Process::ErrorOutput::Terminal).Wait().err;
    EXPECT_EQ(onTerminal.rfind("\r\x1B[Kfinished jobs: 0 of 2", 0), 0U) << onTerminal;
    EXPECT_FALSE(Contains(onTerminal, "solving point"));
    EXPECT_TRUE(Contains(onTerminal, "\x1B[Kjobs.txt:2: solve ")) << onTerminal;
    EXPECT_FALSE(Contains(Process(batch, folder.Path()).Wait().err, "\x1B"));
}

// What is refused before anything runs ---------------------------------------------------------

TEST_F(BatchProgram, RunsNothingWhereALineIsWrong)
{
    const std::string good = "solve mill.toml part.cl -o a.csv\n";
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"mill.toml part.cl -o b.csv",
         "1: \"mill.toml\" does not begin a job; write solve or verify, and behind it what stands "
         "behind that on the command line"},
        {"batch jobs.txt", "1: a batch cannot start another; write its jobs here, or give it a "
                           "call of its own"},
        {"solve mill.toml part.cl", "1: --output is required"},
        {"solve mill.toml -o b.csv", "1: TOOLPATH is required"},
        {"verify mill.toml part.cl", "1: JOINTS is required"},
        {"solve mill.toml part.cl -o b.csv --speed 3",
         "1: The following arguments were not expected: 3 --speed"},
        {"solve mill.toml part.cl -o b.csv --tolerance much",
         "1: Could not convert: --tolerance = much"},
        {"solve mill.toml part.cl -o b.csv --resume",
         "1: --resume is an option of the batch, not of its jobs; it goes on with those that were "
         "interrupted"},
        {"solve --help", "1: a job is no place to ask for help; trunnion solve --help prints it"},
        {"solve mill.toml 'part.cl -o b.csv",
         "17: the quotation that begins here has no end on this line; close it"},
        {"solve mill.toml part.cl -o b.csv > log.txt",
         "34: > means something to a shell and nothing here; write it in single quotes where it "
         "belongs to a name"},
    };
    for (const auto& [line, fault] : wrong) {
        const Outcome batch = Batch(good + line + "\n");
        EXPECT_EQ(batch.code, 2) << line;
        EXPECT_EQ(batch.err, "jobs.txt:2:" + fault + "\n");
        EXPECT_EQ(batch.out, "");
        EXPECT_FALSE(IsThere("a.csv")) << line;
    }
}

TEST_F(BatchProgram, RunsNothingWhereThereIsNoJob)
{
    for (const std::string jobs : {"", "# none\n\n"}) {
        const Outcome batch = Batch(jobs);
        EXPECT_EQ(batch.code, 2);
        EXPECT_EQ(batch.err, "jobs.txt: there is no job in this file; write one a line, beginning "
                             "with solve or verify\n");
    }
    EXPECT_EQ(Run({"batch", "missing.txt"}).code, 2);
    EXPECT_EQ(Run({"batch", "."}).err, ".: this is a folder; name a file in it\n");
    EXPECT_EQ(Run({"batch"}).code, 2);
}

TEST_F(BatchProgram, RunsNothingWhereJobsShareAFileThatOneWrites)
{
    fs::create_directory(folder.Path() / "sub");
    fs::create_directory_symlink("sub", folder.Path() / "link");
    folder.Write("old.csv", "old");
    fs::create_hard_link(folder.Path() / "old.csv", folder.Path() / "same.csv");
    const std::string solve = "solve mill.toml part.cl -o ";
    const std::string second = " is written by the job of line 1 too; choose another name for one "
                               "of them\n";
    const std::string reader = " is written by the job of line 1, and jobs do not wait for each "
                               "other; put what reads it in a batch of its own\n";
    const std::string own = ": the run would write over a file that it reads or writes; choose "
                            "another name\n";
    const std::string batchs = " is of the batch itself; let the job write another file\n";
    struct Case
    {
        std::string jobs;
        std::string err;
    };
    const std::vector<Case> cases{
        {solve + "a.csv\n" + solve + "sub/../a.csv", "jobs.txt:2:1: sub/../a.csv" + second},
        {solve + "sub/a.csv\n" + solve + "link/a.csv", "jobs.txt:2:1: link/a.csv" + second},
        {solve + "old.csv\n" + solve + "same.csv", "jobs.txt:2:1: same.csv" + second},
        {solve + "a.csv --gcode g\n" + solve + "b.csv --summary g", "jobs.txt:2:1: g" + second},
        {solve + "a.csv\n" + solve + "b.csv --report a.csv.resume",
         "jobs.txt:2:1: a.csv.resume" + second},
        {solve + "a.csv\nverify mill.toml part.cl a.csv", "jobs.txt:2:1: a.csv" + reader},
        {solve + "new.cl\nsolve mill.toml new.cl -o b.csv", "jobs.txt:2:1: new.cl" + reader},
        {"verify mill.toml part.cl a.csv\n" + solve + "a.csv",
         "jobs.txt:1:1: a.csv is written by the job of line 2" + reader.substr(reader.find(','))},
        {solve + "a.csv\n" + solve + "part.cl", "jobs.txt:2:1: part.cl" + own},
        {solve + "jobs.txt", "jobs.txt:1:1: jobs.txt" + batchs},
        {solve + "./jobs.txt.done", "jobs.txt:1:1: jobs.txt.done" + batchs},
    };
    const std::vector<std::string> before = folder.Names();
    for (const Case& one : cases) {
        const Outcome batch = Batch(one.jobs);
        EXPECT_EQ(batch.code, 2) << one.jobs;
        EXPECT_EQ(batch.err, one.err);
        EXPECT_EQ(batch.out, "");
        fs::remove(folder.Path() / "jobs.txt");
        EXPECT_EQ(folder.Names(), before) << one.jobs;
    }
    // What several read, and one verifies that was there before, is no one's alone.
    EXPECT_EQ(Batch(solve + "a.csv\n" + solve + "b.csv\nverify mill.toml part.cl same.csv").code,
              2); // "old" is no table
    EXPECT_EQ(Content("a.csv"), Content("b.csv"));
}

// Lines ----------------------------------------------------------------------------------------

/// The words of random lines, against those that /bin/sh finds.
TEST_F(BatchProgram, TakesLinesApartAsTheShellDoes)
{
    constexpr int kLines = 4000;
    constexpr std::size_t kLongest = 12;
    const std::string alphabet = "ab'\"\\# \t";
    std::mt19937 random(7);
    std::string script;
    std::string words;
    int numTaken = 0;
    for (int i = 0; i < kLines; ++i) {
        std::string line(random() % kLongest, ' ');
        std::generate(line.begin(), line.end(),
                      [&] { return alphabet[random() % alphabet.size()]; });
        try {
            for (const std::string& word : host::ShellWords(line, "lines", i)) {
                words += "<" + word + ">";
            }
        } catch (const host::InputError&) {
            continue; // a quotation or a backslash that would take the next line in
        }
        words += "\n";
        script += "set -- " + line + "\nfor word do printf '<%s>' \"$word\"; done; echo\n";
        ++numTaken;
    }
    EXPECT_GT(numTaken, kLines / 4);
    folder.Write("script", script);
    const Outcome shell = Process({"/bin/sh", "script"}, folder.Path()).Wait();
    EXPECT_EQ(shell.err, "");
    EXPECT_EQ(shell.out, words);
}

TEST_F(BatchProgram, RefusesFilesThatAreNoText)
{
    const std::string solve = "solve mill.toml part.cl -o a.csv\n";
    EXPECT_EQ(
        Batch(solve + std::string("so\0lve", 6)).err,
        "jobs.txt:2:3: there is a NUL byte here; this is not a text file, or it is damaged\n");
    EXPECT_EQ(Batch(solve + "solve " + std::string(70000, 'x')).err,
              "jobs.txt:2:65537: this line is longer than 65536 characters; break it up\n");
    EXPECT_EQ(Batch(solve + "\tverify \x1B[2J").err,
              "jobs.txt:2:9: there is a control character here; take it out\n");
    EXPECT_EQ(Batch("\xEF\xBB\xBF" + solve).code, 0); // as some editors begin a file
    fs::remove(folder.Path() / "a.csv");
    fs::resize_file(folder.Write("jobs.txt", solve), std::uintmax_t{1} << 30U);
    EXPECT_EQ(Run({"batch", "jobs.txt"}).err.rfind("jobs.txt:2:1: there is a NUL byte", 0), 0U);
    EXPECT_EQ(Run({"batch", "/dev/zero"}).code, 2);
    EXPECT_FALSE(IsThere("a.csv"));
}

// Interruption and what goes on after it -------------------------------------------------------

TEST_F(BatchProgram, GoesOnWhereItWasInterrupted)
{
    WriteLongPath();
    folder.Write("jobs.txt", "solve mill.toml far.cl -o a.csv --quiet\n"
                             "solve mill.toml long.cl -o b.csv --quiet\n"
                             "solve mill.toml part.cl -o c.csv --quiet\n");
    Process process(Command({"batch", "jobs.txt"}), folder.Path());
    ASSERT_TRUE(test::WaitUntilBegun(process, folder.Path(), 2));
    process.Send(SIGINT);
    const Outcome interrupted = process.Wait();
    EXPECT_EQ(interrupted.code, 130);
    EXPECT_TRUE(IsThere("a.csv"));
    EXPECT_TRUE(IsThere("b.csv.resume"));
    EXPECT_TRUE(IsThere("b.csv.partial"));
    EXPECT_FALSE(IsThere("c.csv"));
    EXPECT_TRUE(Contains(interrupted.err, "jobs.txt:2: solve mill.toml long.cl -o b.csv --quiet\n"
                                          "interrupted after "));
    EXPECT_TRUE(
        Contains(interrupted.err, "\nthe same command with --resume does what is not done yet\n"));
    EXPECT_EQ(Untimed(interrupted.out),
              "jobs       3: 1 with failed points, 1 interrupted, 1 not begun\n"
              "           jobs.txt:1: some points failed, T s\n"
              "           jobs.txt:2: interrupted, T s\n"
              "           jobs.txt:3: not begun\n"
              "time       T s\n");

    const fs::file_time_type written = fs::last_write_time(folder.Path() / "a.csv");
    const Outcome resumed = Run({"batch", "jobs.txt", "--resume"});
    EXPECT_EQ(resumed.code, 1); // of the first job, still
    EXPECT_EQ(resumed.err, "");
    EXPECT_EQ(Untimed(resumed.out), "jobs       3: 2 done, 1 with failed points\n"
                                    "           jobs.txt:1: some points failed in an earlier run\n"
                                    "           jobs.txt:2: done, T s\n"
                                    "           jobs.txt:3: done, T s\n"
                                    "time       T s\n");
    EXPECT_EQ(fs::last_write_time(folder.Path() / "a.csv"), written);
    EXPECT_EQ(folder.Names(),
              (std::vector<std::string>{"a.csv", "b.csv", "c.csv", "far.cl", "jobs.txt", "long.cl",
                                        "mill.toml", "part.cl"}));
    ASSERT_EQ(Run({"solve", "mill.toml", "long.cl", "-o", "alone.csv"}).code, 0);
    EXPECT_EQ(Content("b.csv"), Content("alone.csv"));
}

/// What was found so far was found with another tolerance.
TEST_F(BatchProgram, BeginsAnInterruptedJobAnewThatIsNotTheSame)
{
    WriteLongPath();
    const std::string jobs = "solve mill.toml far.cl -o a.csv\nsolve mill.toml long.cl -o b.csv";
    folder.Write("jobs.txt", jobs);
    Process process(Command({"batch", "jobs.txt"}), folder.Path());
    ASSERT_TRUE(test::WaitUntilBegun(process, folder.Path(), 2));
    process.Send(SIGINT);
    EXPECT_EQ(process.Wait().code, 130);
    ASSERT_TRUE(IsThere("b.csv.resume"));
    const Outcome resumed = Batch(jobs + " --tolerance 1e-10\n", {"--resume"});
    EXPECT_EQ(resumed.code, 1) << resumed.err;
    EXPECT_TRUE(Contains(resumed.out, "jobs.txt:1: some points failed in an earlier run\n"));
    EXPECT_FALSE(IsThere("b.csv.resume"));
    ASSERT_EQ(Run({"solve", "mill.toml", "long.cl", "-o", "c.csv", "--tolerance", "1e-10"}).code,
              0);
    EXPECT_EQ(Content("b.csv"), Content("c.csv"));
}

TEST_F(BatchProgram, InterruptsAVerificationToo)
{
    WriteLongPath();
    ASSERT_EQ(Run({"solve", "mill.toml", "long.cl", "-o", "given.csv"}).code, 0);
    folder.Write("jobs.txt", "solve mill.toml far.cl -o a.csv\n"
                             "verify mill.toml long.cl given.csv --samples 200\n");
    Process process(Command({"batch", "jobs.txt"}), folder.Path());
    ASSERT_TRUE(test::WaitUntilBegun(process, folder.Path(), 2));
    process.Send(SIGINT);
    const Outcome interrupted = process.Wait();
    EXPECT_EQ(interrupted.code, 130);
    EXPECT_TRUE(Contains(interrupted.err, "\ngiven.csv: interrupted at line ")) << interrupted.err;
    EXPECT_TRUE(Contains(Untimed(interrupted.out), "           jobs.txt:2: interrupted, T s\n"))
        << interrupted.out;
    EXPECT_FALSE(Contains(interrupted.out, "verdict"));
}

/// A job that cannot be done leaves the record behind.
class ResumedBatch : public BatchProgram
{
  protected:
    ResumedBatch()
    {
        Batch(kJobs);
        EXPECT_TRUE(IsThere("jobs.txt.done"));
    }
    /// How many jobs another run does not do again.
    int NumOfEarlierRun(const std::string& jobs, const std::vector<std::string>& options) const
    {
        const std::string out = Batch(jobs, options).out;
        const std::regex mark("in an earlier run\n");
        return static_cast<int>(
            std::distance(std::sregex_iterator(out.begin(), out.end(), mark), {}));
    }

    static constexpr const char* kJobs = "solve mill.toml part.cl -o a.csv --quiet\n"
                                         "solve mill.toml far.cl -o b.csv --quiet\n"
                                         "solve mill.toml missing.cl -o c.csv --quiet\n";
};

TEST_F(ResumedBatch, DoesWhatWasNotDone)
{
    EXPECT_EQ(NumOfEarlierRun(kJobs, {"--resume"}), 2);
    folder.Write("missing.cl", kPath);
    const Outcome resumed = Batch(kJobs, {"--resume"});
    EXPECT_EQ(resumed.code, 1);
    EXPECT_EQ(Content("c.csv"), Content("a.csv"));
    EXPECT_FALSE(IsThere("jobs.txt.done"));
}

TEST_F(ResumedBatch, KnowsItsJobsWhereverTheyStand)
{
    EXPECT_EQ(NumOfEarlierRun("# first the others\nverify mill.toml part.cl a.csv\n"
                              "solve   mill.toml 'missing.cl' -o c.csv --quiet\n"
                              "solve mill.toml far.cl -o b.csv --quiet\n",
                              {"--resume"}),
              1);
}

TEST_F(ResumedBatch, DoesAgainWhatIsNotTheSame)
{
    EXPECT_EQ(NumOfEarlierRun("solve mill.toml part.cl -o a.csv --quiet --points-only\n"
                              "solve mill.toml far.cl -o b.csv --quiet\n"
                              "solve mill.toml missing.cl -o c.csv --quiet\n",
                              {"--resume"}),
              1);
    folder.Write("part.cl", std::string(kPath) + "GOTO/20,1,100\n");
    EXPECT_EQ(NumOfEarlierRun(kJobs, {"--resume"}), 1);
    EXPECT_TRUE(Contains(Content("a.csv"), "\n4,7,")); // the new point, of line 7
    fs::remove(folder.Path() / "b.csv");
    EXPECT_EQ(NumOfEarlierRun(kJobs, {"--resume"}), 1);
    EXPECT_TRUE(IsThere("b.csv"));
}

TEST_F(ResumedBatch, BeginsAnewWhereItIsNotAskedTo)
{
    EXPECT_EQ(NumOfEarlierRun(kJobs, {}), 0);
}

TEST_F(ResumedBatch, RefusesARecordThatIsNone)
{
    const std::string record = Content("jobs.txt.done");
    for (const std::string& text : {std::string("my own notes\n"), record + "0123\n",
                                    record + "0123 2\n", record + "0123 00\n", record + " 0\n"}) {
        folder.Write("jobs.txt.done", text);
        for (const std::vector<std::string>& options :
             {std::vector<std::string>(), std::vector<std::string>{"--resume"}}) {
            const Outcome batch = Batch(kJobs, options);
            EXPECT_EQ(batch.code, 2);
            EXPECT_EQ(batch.err, "jobs.txt.done: a batch notes in this file what is done, and it "
                                 "holds something else; move it away\n");
            EXPECT_EQ(Content("jobs.txt.done"), text);
        }
    }
}

} // namespace
