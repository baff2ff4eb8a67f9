#include "app/SolveCommand.h"

#include <chrono>
#include <initializer_list>
#include <string>
#include <system_error>

#include "app/Interrupt.h"
#include "app/Progress.h"
#include "app/SolveSetup.h"
#include "app/Summary.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "planner/Checkpoint.h"
#include "planner/PathPlan.h"
#include "table/JointTable.h"
#include "text/InputError.h"
#include "text/OutputFile.h"
#include "toolpath/AptReader.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

void RefuseOverwriting(const fs::path& output, std::initializer_list<fs::path> inputs)
{
    for (const fs::path& input : inputs) {
        std::error_code notThere;
        if (fs::equivalent(output, input, notThere)) {
            throw InputError(output.string(),
                             "the table would replace a file that is read; choose another name");
        }
    }
}

fs::path WithSuffix(fs::path path, const char* suffix)
{
    path += suffix;
    return path;
}

/// One run over a path.
class Run
{
  public:
    Run(const SolveOptions& ofUser, const PlanRequest& request, std::ostream& messages)
        : options(ofUser), path(request.path), err(messages),
          plan(request), units{request.machine.length,
                               ofUser.inRadians ? AngleUnit::Radian : AngleUnit::Degree},
          table(plan.Axes(), units), summary(plan.Axes(), units),
          showsProgress(!ofUser.isQuiet && IsErrorATerminal()),
          checkpoint(WithSuffix(ofUser.output, ".resume"))
    {}

    /// False when it was interrupted; what is done is then kept.
    bool Execute(const Interrupt& interrupt)
    {
        OutputFile file(options.output);
        const std::string fingerprint = RunFingerprint(options);
        if (options.resumes) {
            LoadCheckpoint(checkpoint, fingerprint, plan);
        }
        // Rows are written even where not all points are solved: for the user to look at.
        const bool isFound = FindCandidates(interrupt);
        const bool isWritten = WriteRows(file, interrupt, isFound);
        if (!isFound || !isWritten) {
            SaveCheckpoint(checkpoint, fingerprint, plan);
            Explain(file, isFound);
            return false;
        }
        file.Finish();
        std::error_code ignored; // what an earlier, interrupted run has left
        fs::remove(checkpoint, ignored);
        fs::remove(WithSuffix(options.output, ".partial"), ignored);
        return true;
    }

    const Summary& Result() const { return summary; }

  private:
    bool FindCandidates(const Interrupt& interrupt)
    {
        Progress progress(err, "solving point", path.points.size(), showsProgress);
        for (std::size_t block = plan.NumAppended(); block < plan.NumBlocks(); ++block) {
            if (interrupt.IsRequested()) {
                return false;
            }
            plan.Append(plan.FindBlock(block));
            progress.Show(plan.PointsUpTo(block));
        }
        return true;
    }

    bool WriteRows(OutputFile& file, const Interrupt& interrupt, bool isInterruptible)
    {
        Progress progress(err, "writing point", path.points.size(), showsProgress);
        file.Write(table.Header());
        const auto takeRow = [&](const MotionRow& row) {
            const int line = path.points[row.point].line;
            summary.Add(row, line);
            file.Write(table.Row(row, line));
        };
        const auto takeEvent = [&](const Event& event) {
            summary.Add(event);
            if (event.kind == EventKind::Failed) {
                progress.Clear();
                err << path.file << ":" << event.line << ": point " << event.point + 1
                    << " failed: " << event.sentence << std::endl;
            }
        };
        const auto mayGoOn = [&](std::size_t point) {
            done = point;
            progress.Show(point);
            return !isInterruptible || !interrupt.IsRequested();
        };
        return plan.Build({takeRow, takeEvent, mayGoOn});
    }

    void Explain(OutputFile& file, bool isFound)
    {
        const std::size_t solved =
            plan.NumAppended() == 0 ? 0 : plan.PointsUpTo(plan.NumAppended() - 1);
        const fs::path partial = file.FinishAsPartial();
        err << "interrupted after " << (isFound ? done : solved) << " of " << path.points.size()
            << " points; their rows are in " << partial.string()
            << "; the same command with --resume goes on from there\n";
    }

    const SolveOptions& options;
    const Toolpath& path;
    std::ostream& err;
    PathPlan plan;
    ShownUnits units;
    JointTable table;
    Summary summary;
    bool showsProgress;
    fs::path checkpoint;
    std::size_t done{0};
};

} // namespace

ExitCode Solve(const SolveOptions& options, std::ostream& out, std::ostream& err)
{
    const auto start = std::chrono::steady_clock::now();
    LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const Toolpath path = ReadAptFile(options.toolpath, machine.length);
    for (const std::string& warning : path.warnings) {
        err << warning << "\n";
    }
    RefuseOverwriting(options.output, {options.machine.file, options.toolpath});
    const PlanRequest request = RequestFrom(options, machine, path, err);

    const Interrupt interrupt; // from here on a signal does not end it in the middle of a row
    Run run(options, request, err);
    if (!run.Execute(interrupt)) {
        return kExitInterrupted;
    }
    if (!options.isQuiet) {
        run.Result().Print(out, path.file, std::chrono::steady_clock::now() - start);
    }
    return run.Result().HasFailures() ? kExitPointsFailed : kExitOk;
}

} // namespace host
