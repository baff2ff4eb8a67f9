// The program amid files, disks and signals that mean it no good: an error that names the file, or
// correct work, and output that is whole or absent.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "MillText.h"
#include "Paths.h"
#include "Process.h"
#include "TempFolder.h"
#include "app/FileDigest.h"
#include "app/SolveCommand.h"
#include "text/InputError.h"

namespace
{

namespace fs = std::filesystem;
using test::ContentOf;
using test::Outcome;
using test::Process;
using Names = std::vector<std::string>;

// [KiB], a fifth of the largest file here. A sanitizer's own map of memory takes more.
constexpr const char* kLimitMemory = test::kIsSanitized ? "" : "ulimit -v 200000; ";

std::string ShortPath(int points)
{
    std::string text = "UNITS/MM\nFEDRAT/500,MMPM\nGOTO/0,0,50,0,-0.5,0.8660254\n";
    for (int i = 1; i < points; ++i) {
        text += "GOTO/" + std::to_string(i % 100) + ",0,0\n";
    }
    return text + "FINI\n";
}

std::string Repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

std::string Replaced(const std::string& text, char what, const std::string& with)
{
    std::string changed;
    for (const char c : text) {
        changed += c == what ? with : std::string(1, c);
    }
    return changed;
}

/// As text of plain ASCII stands in UTF-16, the low byte first.
std::string Utf16(const std::string& text)
{
    std::string wide = "\xFF\xFE";
    for (const char c : text) {
        wide += c;
        wide += '\0';
    }
    return wide;
}

class HostileFiles : public testing::Test
{
  protected:
    HostileFiles()
    {
        folder.Write("mill.toml", test::MillText());
        folder.Write("part.cl", ShortPath(5));
    }

    Outcome Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), test::kProgram);
        return Process(arguments, folder.Path()).Wait();
    }
    /// `$1` is the program.
    Outcome RunShell(const std::string& script) const
    {
        return Process({"/bin/sh", "-c", script, "sh", test::kProgram}, folder.Path()).Wait();
    }
    std::string ErrorOf(const std::vector<std::string>& arguments) const
    {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.code, 2) << outcome.err;
        EXPECT_EQ(outcome.out, "");
        return outcome.err;
    }
    std::string Content(const std::string& name) const { return ContentOf(folder.Path() / name); }

    /// A file that begins with `text` and goes on with NULs for a gibibyte, none of it on the disk.
    void WriteHuge(const std::string& name, const std::string& text) const
    {
        fs::resize_file(folder.Write(name, text), std::uintmax_t{1} << 30U);
    }

    test::TempFolder folder;
};

// What is read -------------------------------------------------------------------------------

TEST_F(HostileFiles, APipeOrADeviceIsRefusedAndNotWaitedFor)
{
    for (const char* const name : {"pipe.toml", "pipe.cl", "pipe.csv"}) {
        ASSERT_EQ(::mkfifo((folder.Path() / name).c_str(), 0600), 0);
    }
    const std::string fault = ": this is not an ordinary file but a pipe or a device; write what "
                              "it gives to a file and name that\n";
    EXPECT_EQ(ErrorOf({"check", "pipe.toml"}), "pipe.toml" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "pipe.cl"}), "pipe.cl" + fault);
    EXPECT_EQ(ErrorOf({"verify", "mill.toml", "part.cl", "pipe.csv"}), "pipe.csv" + fault);
    EXPECT_EQ(ErrorOf({"solve", "mill.toml", "pipe.cl", "-o", "t.csv"}), "pipe.cl" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "/dev/zero"}), "/dev/zero" + fault);
    EXPECT_EQ(ErrorOf({"solve", "mill.toml", "part.cl", "-o", "t.csv", "--gcode", "t.nc",
                       "--dialect", "pipe.toml"}),
              "pipe.toml" + fault);
    EXPECT_EQ(folder.Names(), (Names{"mill.toml", "part.cl", "pipe.cl", "pipe.csv", "pipe.toml"}));
}

TEST_F(HostileFiles, AFolderOrANameThatIsEmptyIsRefused)
{
    fs::create_directory(folder.Path() / "d");
    const std::string fault = "d: this is a folder; name a file in it\n";
    EXPECT_EQ(ErrorOf({"check", "d"}), fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "d"}), fault);
    EXPECT_EQ(ErrorOf({"verify", "mill.toml", "part.cl", "d"}), fault);
    EXPECT_EQ(ErrorOf({"check", ""}), "trunnion: the name of a file to read is empty; give one\n");
    EXPECT_EQ(ErrorOf({"solve", "mill.toml", "part.cl", "-o", ""}),
              "trunnion: the name of a file to write is empty; give one\n");
}

TEST_F(HostileFiles, AFileThatMayNotBeReadIsNamed)
{
    for (const char* const name : {"mill.toml", "part.cl"}) {
        fs::permissions(folder.Path() / name, fs::perms::none);
        // The rights to read everything, which root has, are laid down.
        const std::string drop =
            ::geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search " : "";
        const Outcome outcome = RunShell("exec " + drop + "\"$1\" check mill.toml part.cl");
        if (outcome.err.rfind("setpriv:", 0) == 0) {
            GTEST_SKIP() << "rights cannot be laid down here: " << outcome.err;
        }
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.err, std::string(name) +
                                   ": this file cannot be opened (Permission denied); check its "
                                   "name and your rights to read it\n");
        fs::permissions(folder.Path() / name, fs::perms::owner_all);
    }
}

TEST_F(HostileFiles, AGibibyteInOneLineIsRefusedAtOnceAndInLittleMemory)
{
    const std::string line(70000, 'x'); // longer than any line may be
    WriteHuge("nul.cl", "");
    WriteHuge("line.cl", line);
    WriteHuge("line.nc", line);
    WriteHuge("line.csv", "x,y,z,i,j,k\n" + line);
    WriteHuge("line.toml", "#" + line);
    WriteHuge("line.urdf", "<" + line);
    WriteHuge("t.csv.resume", "trunnion checkpoint 1 ");
    const auto start = std::chrono::steady_clock::now();
    const auto errorOf = [this](const std::string& arguments) {
        const Outcome outcome = RunShell(kLimitMemory + ("exec \"$1\" " + arguments));
        EXPECT_EQ(outcome.code, 2) << outcome.err;
        return outcome.err;
    };
    EXPECT_EQ(errorOf("check mill.toml nul.cl"),
              "nul.cl:1:1: there is a NUL byte here; this is not a text file, or it is damaged\n");
    EXPECT_EQ(errorOf("check mill.toml line.cl"),
              "line.cl:1:4097: this line is longer than 4096 characters; break it up\n");
    EXPECT_EQ(errorOf("check mill.toml line.nc").rfind("line.nc:1:", 0), 0U);
    EXPECT_EQ(errorOf("check mill.toml line.csv").rfind("line.csv:2:", 0), 0U);
    EXPECT_EQ(errorOf("check line.toml"),
              "line.toml: this file is larger than 16 MiB; is it the right one?\n");
    EXPECT_EQ(errorOf("check line.urdf"),
              "line.urdf: this file is larger than 16 MiB; is it the right one?\n");
    EXPECT_EQ(errorOf("verify mill.toml part.cl nul.cl").rfind("nul.cl:1:1: ", 0), 0U);
    EXPECT_EQ(
        errorOf("solve mill.toml part.cl -o t.csv --resume").rfind("t.csv.resume: this was", 0),
        0U);
    // Seven gibibytes in the time that reading half of one takes on a slow machine.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(HostileFiles, NestingHasItsBounds)
{
    constexpr int kDeep = 200000;
    folder.Write("header.toml", "[a" + Repeated(".a", kDeep) + "]\n");
    folder.Write("key.toml", "a" + Repeated(" . \"a\"", kDeep) + " = 1\n");
    folder.Write("array.toml", "a = " + Repeated("[", kDeep));
    folder.Write("inline.toml", "a = " + Repeated("{a=", kDeep));
    folder.Write("robot.urdf", "<robot name=\"r\">" + Repeated("<a>", kDeep));
    EXPECT_EQ(ErrorOf({"check", "header.toml"}),
              "header.toml:1:35: this name has more than 16 dots; is it the right file?\n");
    EXPECT_EQ(ErrorOf({"check", "key.toml"}),
              "key.toml:1:99: this name has more than 16 dots; is it the right file?\n");
    EXPECT_EQ(ErrorOf({"check", "array.toml"}).rfind("array.toml:1:", 0), 0U);
    EXPECT_EQ(ErrorOf({"check", "inline.toml"}).rfind("inline.toml:1:", 0), 0U);
    EXPECT_EQ(ErrorOf({"check", "robot.urdf"}).rfind("robot.urdf:1:", 0), 0U);
    // The most that both bounds let through together: 255 tables in one another, each 17 deep.
    const std::string key = "a" + Repeated(".a", 16);
    folder.Write("most.toml", Repeated(key + "={", 255).replace(0, key.size() + 2, key + " = {") +
                                  key + "=1" + Repeated("}", 255) + "\n");
    EXPECT_EQ(ErrorOf({"check", "most.toml"}).rfind("most.toml:", 0), 0U);
}

TEST_F(HostileFiles, OtherEncodingsAreRefusedWithTheirPlace)
{
    folder.Write("wide.toml", Utf16(test::MillText()));
    folder.Write("wide.cl", Utf16(ShortPath(5)));
    folder.Write("latin.toml", "# caf\xE9\n" + test::MillText());
    folder.Write("nul.toml", "# a" + std::string(1, '\0') + "\n" + test::MillText());
    folder.Write("nul.nc", "G90\nG1 X1" + std::string(1, '\0') + "\n");
    folder.Write("nul.csv", std::string("x,y,z,i,j,k\n1,2,") + '\0' + "\n");
    EXPECT_EQ(ErrorOf({"check", "wide.toml"}).rfind("wide.toml:1:1: ", 0), 0U);
    EXPECT_EQ(ErrorOf({"check", "latin.toml"}).rfind("latin.toml:1:", 0), 0U);
    EXPECT_EQ(ErrorOf({"check", "nul.toml"}).rfind("nul.toml:1:4: ", 0), 0U);
    const std::string fault =
        ": there is a NUL byte here; this is not a text file, or it is damaged\n";
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "wide.cl"}), "wide.cl:1:4" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "nul.nc"}), "nul.nc:2:6" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "nul.csv"}), "nul.csv:2:5" + fault);
}

TEST_F(HostileFiles, LineEndsOfOtherSystemsAndAByteOrderMarkChangeNothing)
{
    ASSERT_EQ(Run({"solve", "mill.toml", "part.cl", "-o", "t.csv"}).code, 0);
    const std::string mark = "\xEF\xBB\xBF";
    folder.Write("crlf.toml", mark + Replaced(test::MillText(), '\n', "\r\n"));
    folder.Write("crlf.cl", mark + Replaced(ShortPath(5), '\n', "\r\n"));
    EXPECT_EQ(Run({"solve", "crlf.toml", "crlf.cl", "-o", "u.csv"}).err, "");
    EXPECT_EQ(Content("u.csv"), Content("t.csv"));
}

// Behind a comment's carriage return a whole file would pass for the rest of the comment.
TEST_F(HostileFiles, ACarriageReturnWithinALineIsRefused)
{
    folder.Write("old.cl", Replaced("$$ made by hand\n" + ShortPath(5), '\n', "\r"));
    folder.Write("old.nc", "G90\n; turn\rG1 X5\n");
    folder.Write("twice.cl", Replaced(ShortPath(5), '\n', "\r\r\n")); // converted once too often
    folder.Write("old.csv", Replaced("x,y,z\n1,2,3\n", '\n', "\r"));
    folder.Write("old.toml", Replaced(test::MillText(), '\n', "\r"));
    const std::string fault = ": there is a carriage return here without a line feed behind it; "
                              "write the file with the line ends of Unix or of Windows\n";
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "old.cl"}), "old.cl:1:16" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "twice.cl"}), "twice.cl:1:9" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "old.nc"}), "old.nc:2:7" + fault);
    EXPECT_EQ(ErrorOf({"check", "mill.toml", "old.csv"}), "old.csv:1:6" + fault);
    EXPECT_EQ(ErrorOf({"check", "old.toml"}).rfind("old.toml:1:", 0), 0U);
}

TEST_F(HostileFiles, ACommaLocaleChangesNoByte)
{
    class Comma : public std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    folder.Write("long.cl", ShortPath(1500));
    const auto solve = [this](const std::string& name) {
        host::SolveOptions options;
        options.machine.file = folder.Path() / "mill.toml";
        options.toolpath.file = folder.Path() / "long.cl";
        options.output = folder.Path() / (name + ".csv");
        options.gcode = folder.Path() / (name + ".nc");
        options.isQuiet = true;
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(host::Solve(options, out, err), host::kExitOk) << err.str();
    };
    solve("plain");
    const std::locale before =
        std::locale::global(std::locale(std::locale(), new Comma)); // its own
    solve("comma");
    std::locale::global(before);
    EXPECT_NE(Content("plain.csv").find("\n1500,"), std::string::npos);
    EXPECT_EQ(Content("comma.csv"), Content("plain.csv"));
    EXPECT_EQ(Content("comma.nc"), Content("plain.nc"));
    // Where the system has this one, the program is asked to speak it.
    const Outcome german = RunShell(
        "LC_ALL=de_DE.UTF-8 exec \"$1\" solve mill.toml long.cl -o german.csv --gcode german.nc");
    EXPECT_EQ(german.code, 0);
    EXPECT_EQ(Content("german.csv"), Content("plain.csv"));
    EXPECT_EQ(Content("german.nc"), Content("plain.nc"));
}

TEST_F(HostileFiles, AFileThatChangesWhileItIsReadIsNoticed)
{
    const auto anHourAgo = fs::file_time_type::clock::now() - std::chrono::hours(1);
    const auto faultAfter = [&](const std::string& change) -> std::string {
        const fs::path place = folder.Write("moving.cl", "GOTO/1,2,3\n");
        fs::last_write_time(place, anHourAgo);
        const host::WatchedFile watched(place);
        EXPECT_EQ(watched.Digest(), host::FileDigest(place)) << "nothing has changed";
        if (change == "grows") {
            std::ofstream(place, std::ios::app) << "GOTO/4,5,6\n";
        } else if (change == "shrinks") {
            fs::resize_file(place, 5);
        } else if (change == "is rewritten") {
            folder.Write("moving.cl", "GOTO/1,2,4\n");
        } else {
            fs::rename(folder.Write("other.cl", "GOTO/1,2,3\n"), place);
        }
        try {
            watched.Digest();
            return "not noticed";
        } catch (const host::InputError& error) {
            return error.what();
        }
    };
    const std::string fault = (folder.Path() / "moving.cl").string() +
                              ": this file was changed while it was read; run again when it is "
                              "finished";
    for (const char* const change : {"grows", "shrinks", "is rewritten", "is replaced"}) {
        EXPECT_EQ(faultAfter(change), fault) << change;
    }
}

// What is written ----------------------------------------------------------------------------

TEST_F(HostileFiles, NothingThatARunReadsOrWritesIsReplaced)
{
    const auto faultOf = [](const std::string& name) {
        return name +
               ": the run would write over a file that it reads or writes; choose another name\n";
    };
    fs::copy_file(folder.Path() / "part.cl", folder.Path() / "t.csv.partial");
    fs::copy_file(folder.Path() / "part.cl", folder.Path() / "t.csv.resume");
    fs::create_symlink("part.cl", folder.Path() / "soft.csv");
    fs::create_hard_link(folder.Path() / "part.cl", folder.Path() / "hard.csv");
    const Names before = folder.Names();
    for (const std::string suffix : {".partial", ".resume"}) {
        EXPECT_EQ(ErrorOf({"solve", "mill.toml", "t.csv" + suffix, "-o", "t.csv"}),
                  faultOf("t.csv" + suffix));
        EXPECT_EQ(ErrorOf({"solve", "mill.toml", "part.cl", "-o", "u.csv", "--summary",
                           "u.csv" + suffix}),
                  faultOf("u.csv" + suffix));
    }
    for (const std::string link : {"soft.csv", "hard.csv"}) {
        EXPECT_EQ(ErrorOf({"solve", "mill.toml", "part.cl", "-o", link}), faultOf(link));
    }
    const std::string whole = (folder.Path() / "u.csv").string();
    EXPECT_EQ(ErrorOf({"solve", "mill.toml", "part.cl", "-o", "u.csv", "--summary", whole}),
              faultOf(whole));
    EXPECT_EQ(ErrorOf({"solve", "mill.toml", "part.cl", "-o", "u.csv", "--gcode", "mine.toml",
                       "--dialect", "mine.toml"}),
              faultOf("mine.toml"));
    EXPECT_EQ(folder.Names(), before);
    EXPECT_EQ(Content("part.cl"), ShortPath(5));
}

TEST_F(HostileFiles, WhereNoFileCanStandTheErrorNamesIt)
{
    const std::vector<std::string> places{"part.cl/t.csv", "/proc/t.csv", "no/t.csv", "/dev/full",
                                          std::string(300, 'n')};
    for (const std::string& place : places) {
        const std::string error = ErrorOf({"solve", "mill.toml", "part.cl", "-o", place});
        EXPECT_EQ(error.rfind(place + ": this ", 0), 0U) << error;
    }
    EXPECT_EQ(folder.Names(), (Names{"mill.toml", "part.cl"}));
}

// At each limit on the size of a file, the three outputs of a run appear together or not at all:
// some limits end it within a row, some at the last flush, when other files are complete.
TEST_F(HostileFiles, AFullDiskLeavesAllOrNothing)
{
    folder.Write("path.cl", ShortPath(60));
    const std::string solve =
        "solve mill.toml path.cl -o t.csv --gcode t.nc --summary t.json --quiet";
    ASSERT_EQ(RunShell("exec \"$1\" " + solve).code, 0);
    constexpr std::uintmax_t kBlock = 512; // of the shell's ulimit
    std::uintmax_t largest = 0;
    for (const char* const name : {"t.csv", "t.nc", "t.json"}) {
        largest = std::max(largest, fs::file_size(folder.Path() / name));
        fs::remove(folder.Path() / name);
    }
    ASSERT_GT(largest, 5000U); // more than a stream holds back
    const Names before = folder.Names();
    const std::uintmax_t enough = (largest + kBlock - 1) / kBlock;
    for (std::uintmax_t blocks = 1; blocks < enough; ++blocks) {
        const Outcome outcome =
            RunShell("ulimit -f " + std::to_string(blocks) + "; exec \"$1\" " + solve);
        EXPECT_EQ(outcome.code, 2) << blocks;
        EXPECT_NE(outcome.err.find(": this file cannot be written (File too large); check the "
                                   "folder, your rights and the free space\n"),
                  std::string::npos)
            << outcome.err;
        EXPECT_EQ(folder.Names(), before) << blocks;
    }
    EXPECT_EQ(RunShell("ulimit -f " + std::to_string(enough + 1) + "; exec \"$1\" " + solve).code,
              0);
    EXPECT_EQ(folder.Names().size(), before.size() + 3);
}

TEST_F(HostileFiles, AReaderThatGoesAwayIsAnErrorAndNoDeath)
{
    // The reader is gone before the program starts.
    const Outcome outcome = RunShell(
        "mkfifo p; (exec 3<p; exec 3<&-; : >gone) & exec 4>p; while [ ! -e gone ]; do sleep 0.01; "
        "done; \"$1\" check mill.toml part.cl >&4; echo \"exit $?\" >&2");
    EXPECT_EQ(outcome.err,
              "trunnion: standard output cannot be written; check where it leads\nexit 2\n");
}

TEST_F(HostileFiles, ClosedStreamsGetIntoNoFile)
{
    folder.Write("far.cl", "FEDRAT/500,MMPM\nGOTO/0,0,0,0,-0.5,0.8660254\nGOTO/9999,0,0\n");
    ASSERT_EQ(Run({"solve", "mill.toml", "far.cl", "-o", "open.csv"}).code, 1);
    // The first file opened takes the lowest descriptor that is free.
    for (const std::string closed : {"<&-", ">&-", "2>&-", ">&- 2>&-", "<&- >&- 2>&-"}) {
        const Outcome outcome = RunShell("exec \"$1\" solve mill.toml far.cl -o t.csv --summary "
                                         "t.json --quiet " +
                                         closed);
        EXPECT_EQ(outcome.code, 1) << closed;
        EXPECT_EQ(Content("t.csv"), Content("open.csv")) << closed;
        EXPECT_EQ(Content("t.json").rfind("{\n", 0), 0U) << closed;
    }
    EXPECT_EQ(RunShell("exec \"$1\" check mill.toml >&-").err,
              "trunnion: standard output cannot be written; check where it leads\n");
}

// Signals ------------------------------------------------------------------------------------

// A signal comes at any time: while the program loads, reads, solves, writes and afterwards.
TEST_F(HostileFiles, ASignalLeavesAllOrNothingWheneverItComes)
{
    folder.Write("path.cl", ShortPath(1500));
    const std::vector<std::string> solve{test::kProgram, "solve", "mill.toml", "path.cl",
                                         "-o",           "t.csv", "--gcode",   "t.nc",
                                         "--summary",    "t.json"};
    ASSERT_EQ(Process(solve, folder.Path()).Wait().code, 0);
    const std::string table = Content("t.csv");
    const std::string program = Content("t.nc");
    const Names whole = folder.Names();
    const Names inputs{"mill.toml", "part.cl", "path.cl"};
    const auto clear = [this, &inputs] {
        for (const std::string& name : folder.Names()) {
            if (std::find(inputs.begin(), inputs.end(), name) == inputs.end()) {
                fs::remove(folder.Path() / name);
            }
        }
    };
    const auto finished = [&] {
        EXPECT_EQ(folder.Names(), whole);
        EXPECT_EQ(Content("t.csv"), table);
        EXPECT_EQ(Content("t.nc"), program);
    };
    std::vector<std::string> resume = solve;
    resume.emplace_back("--resume");
    for (const int signal : {SIGINT, SIGTERM}) {
        for (const int delay_ms : {0, 1, 2, 4, 6, 8, 10, 14, 20, 30, 45, 70}) {
            clear();
            Process process(solve, folder.Path());
            std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
            process.Send(signal);
            const Outcome outcome = process.Wait();
            if (outcome.code == 0) {
                finished();
            } else if (outcome.code == 128 + signal && outcome.err.empty()) {
                EXPECT_EQ(folder.Names(), inputs) << delay_ms; // before anything is written
            } else {
                EXPECT_EQ(outcome.code, 130) << outcome.err;
                EXPECT_EQ(folder.Names(), (Names{"mill.toml", "part.cl", "path.cl", "t.csv.partial",
                                                 "t.csv.resume"}));
                const std::string partial = Content("t.csv.partial");
                EXPECT_EQ(partial.back(), '\n');
                EXPECT_EQ(Process(resume, folder.Path()).Wait().code, 0);
                finished();
            }
        }
    }
}

} // namespace
