// Bytes as the files of a whole run: machine, toolpath and options. Each command has to end with
// what its user asked for or with a sentence that says why not; a table that is said to hold has to
// pass its verification, and another run has to write the same bytes.

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "ReportData.h"
#include "TempFolder.h"
#include "app/BranchesCommand.h"
#include "app/CheckCommand.h"
#include "app/PoseCommand.h"
#include "app/SolveCommand.h"
#include "app/VerifyCommand.h"
#include "fuzz/ProgramInput.h"
#include "fuzz/Targets.h"
#include "mutated/Checks.h"
#include "report/Page.h"
#include "text/InputError.h"

namespace test
{

namespace
{

using host::ExitCode;

/// A command's exit code, or nothing where it refuses its input.
template <class Command, class Options>
std::optional<ExitCode> Ran(const Command& command, const Options& options, std::string& printed)
{
    std::ostringstream out;
    std::ostringstream err;
    try {
        const ExitCode code = command(options, out, err);
        printed = out.str();
        return code;
    } catch (const host::InputError& error) {
        EXPECT_FALSE(error.Sentence().empty());
        const std::string message = error.what();
        EXPECT_TRUE(std::none_of(message.begin(), message.end(), [](char c) {
            return (c >= '\0' && c < ' ') || c == '\x7F';
        })) << Shown(message);
    }
    return std::nullopt;
}

/// A folder with the files of a run.
class Job
{
  public:
    explicit Job(Random& random) : options(AnyOptions(random))
    {
        const std::string machine = AnyMachineText(random);
        const PathInput path = AnyPath(random);
        options.machine.file = folder.Write("machine.toml", machine);
        options.toolpath.file = folder.Write(path.name, path.text);
        options.version = "fuzz";
        options.page = host::kDataMark;
        inputs = folder.Names();
        if (random.OneIn(16)) {
            options.toolpath.format = host::ToolpathFormat::Nc;
        }
    }

    /// Writes table, program, summary and report under this name.
    std::optional<ExitCode> Solve(const std::string& name)
    {
        options.output = folder.Path() / (name + ".csv");
        options.gcode = folder.Path() / (name + ".nc");
        options.summary = folder.Path() / (name + ".json");
        options.report = folder.Path() / (name + ".html");
        std::string printed;
        const std::vector<std::string> before = folder.Names();
        const auto code = Ran(host::Solve, options, printed);
        if (!code) {
            EXPECT_EQ(folder.Names(), before); // nothing half written
        }
        return code;
    }

    void CheckSame(const std::string& a, const std::string& b) const
    {
        for (const char* end : {".csv", ".nc"}) {
            EXPECT_EQ(ContentOf(folder.Path() / (a + end)), ContentOf(folder.Path() / (b + end)));
        }
        const std::string table = ContentOf(folder.Path() / (a + ".csv"));
        EXPECT_EQ(table.find("nan"), std::string::npos);
        EXPECT_EQ(table.find("inf"), std::string::npos);
    }

    /// What a run shows of itself reads back, with a number in every column for each row.
    void CheckReport(const std::string& name) const
    {
        const std::string table = ContentOf(folder.Path() / (name + ".csv"));
        const auto rows = std::count(table.begin(), table.end(), '\n') - 1;
        const std::string report = ContentOf(folder.Path() / (name + ".html"));
        EXPECT_EQ(report.find('<'), std::string::npos);
        const nlohmann::json data = nlohmann::json::parse(report);
        for (const auto& column : data["run"]["rows"]["columns"]) {
            EXPECT_EQ(static_cast<long>(Decoded(column).wholes.size()), rows);
        }
        for (const auto& event : data["run"]["events"]) {
            EXPECT_LT(event["row"].get<long>(), rows);
        }
    }

    /// The verification of what a run has called solved.
    void CheckVerified(const std::string& name) const
    {
        host::VerifyOptions verify;
        verify.machine = options.machine;
        verify.toolpath = options.toolpath;
        verify.table = folder.Path() / (name + ".csv");
        verify.linearTolerance = options.linearTolerance;
        verify.angleTolerance_deg = options.angleTolerance_deg;
        verify.toolLength = options.toolLength;
        std::string printed;
        const auto code = Ran(host::Verify, verify, printed);
        ASSERT_TRUE(code);
        if (!options.pointsOnly) { // on whose ways nobody has looked
            EXPECT_EQ(*code, host::kExitOk) << printed;
        }
    }

    void CheckSmallCommands(Random& random) const
    {
        std::string printed;
        host::CheckOptions check;
        check.machine = options.machine;
        check.toolpath = options.toolpath;
        check.inRadians = options.inRadians;
        Ran(host::Check, check, printed);
        host::PoseOptions pose;
        pose.machine = options.machine;
        pose.values = {"X=" + std::to_string(random.Below(100)), "A=1e3"};
        Ran(host::Pose, pose, printed);
        host::BranchesOptions branches;
        branches.machine = options.machine;
        branches.pose = {"1", "2", "3", "0", "0.1", std::to_string(random.Below(3) - 1)};
        branches.ignoresLimits = random.OneIn(2);
        Ran(host::ListBranches, branches, printed);
    }

    const std::vector<std::string>& Inputs() const { return inputs; }
    std::vector<std::string> Files() const { return folder.Names(); }

  private:
    TempFolder folder;
    host::SolveOptions options;
    std::vector<std::string> inputs;
};

} // namespace

void FuzzProgram(const std::uint8_t* bytes, std::size_t size)
{
    Random random(bytes, size);
    Job job(random);
    if (random.OneIn(3)) {
        job.CheckSmallCommands(random);
        EXPECT_EQ(job.Files(), job.Inputs());
    }
    const auto code = job.Solve("first");
    if (!code) {
        EXPECT_EQ(job.Files(), job.Inputs());
        return;
    }
    const bool isComplete = *code == host::kExitOk; // otherwise there is no program
    EXPECT_EQ(job.Files().size(), job.Inputs().size() + (isComplete ? 4 : 3));
    job.CheckReport("first");
    if (isComplete) {
        job.CheckVerified("first");
    }
    EXPECT_EQ(job.Solve("again"), code);
    job.CheckSame("first", "again");
}

} // namespace test
