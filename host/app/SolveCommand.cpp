#include "app/SolveCommand.h"

#include <chrono>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "app/FileDigest.h"
#include "app/Interrupt.h"
#include "app/Overwriting.h"
#include "app/PageHtml.h"
#include "app/Progress.h"
#include "app/ReportText.h"
#include "app/SolveOutputs.h"
#include "app/SolveReport.h"
#include "app/SolveSetup.h"
#include "app/Summary.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "planner/Checkpoint.h"
#include "planner/PathPlan.h"
#include "report/RunReport.h"
#include "text/InputError.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

fs::path WithSuffix(fs::path path, const char* suffix)
{
    path += suffix;
    return path;
}

/// Next to the table stands what an interrupted run leaves and a finished one takes away.
void CheckPlaces(const SolveOptions& options)
{
    std::vector<fs::path> read{options.machine.file, options.toolpath.file};
    std::vector<fs::path> written{options.output, WithSuffix(options.output, ".partial"),
                                  WithSuffix(options.output, ".resume")};
    if (options.gcode) {
        read.emplace_back(options.dialect);
        written.push_back(*options.gcode);
    }
    if (options.summary) {
        written.push_back(*options.summary);
    }
    if (options.report) {
        written.push_back(*options.report);
    }
    RefuseOverwriting(written, read);
}

/// One run over a path.
class PathRun
{
  public:
    PathRun(const SolveOptions& ofUser, const SourceDigests& ofSources, const PlanRequest& request,
            std::ostream& messages)
        : options(ofUser), sources(ofSources), path(request.path), err(messages),
          plan(request), units{request.machine.length,
                               ofUser.inRadians ? AngleUnit::Radian : AngleUnit::Degree},
          summary(plan.Axes(), units), showsProgress(!ofUser.isQuiet && IsErrorATerminal()),
          checkpoint(WithSuffix(ofUser.output, ".resume")),
          outputs(ofUser, request.machine, request.path, plan.Axes(), units, messages)
    {}

    /// False when it was interrupted; what is done is then kept.
    bool Execute(const Interrupt& interrupt)
    {
        const std::string fingerprint = RunFingerprint(options, sources);
        if (options.resumes) {
            LoadCheckpoint(checkpoint, fingerprint, plan);
        }
        // Rows are written even where not all points are solved: for the user to look at.
        const bool isFound = FindCandidates(interrupt);
        const bool isWritten = WriteRows(interrupt, isFound);
        if (!isFound || !isWritten) {
            SaveCheckpoint(checkpoint, fingerprint, plan);
            Explain(isFound);
            return false;
        }
        return true;
    }

    /// Puts all files in their places.
    void Finish(const RunReport& report)
    {
        outputs.Finish(report);
        std::error_code ignored; // what an earlier, interrupted run has left
        fs::remove(checkpoint, ignored);
        fs::remove(WithSuffix(options.output, ".partial"), ignored);
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

    bool WriteRows(const Interrupt& interrupt, bool isInterruptible)
    {
        Progress progress(err, "writing point", path.points.size(), showsProgress);
        outputs.Begin();
        const auto takeRow = [&](const MotionRow& row) {
            const int line = path.points[row.point].line;
            summary.Add(row, line);
            outputs.Add(row, line);
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

    void Explain(bool isFound)
    {
        const std::size_t solved =
            plan.NumAppended() == 0 ? 0 : plan.PointsUpTo(plan.NumAppended() - 1);
        const fs::path partial = outputs.FinishAsPartial();
        err << "interrupted after " << (isFound ? done : solved) << " of " << path.points.size()
            << " points; their rows are in " << partial.string()
            << "; the same command with --resume goes on from there\n";
    }

    const SolveOptions& options;
    const SourceDigests& sources;
    const Toolpath& path;
    std::ostream& err;
    PathPlan plan;
    ShownUnits units;
    Summary summary;
    bool showsProgress;
    fs::path checkpoint;
    SolveOutputs outputs;
    std::size_t done{0};
};

} // namespace

ExitCode Solve(const SolveOptions& options, std::ostream& out, std::ostream& err)
{
    const auto start = std::chrono::steady_clock::now();
    if (options.report) {
        PageFor("--report", options.page);
    }
    const WatchedFile machineFile(options.machine.file);
    LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const WatchedFile pathFile(options.toolpath.file);
    const Toolpath path = ReadPath(options.toolpath, machine.length, err);
    const SourceDigests sources{machineFile.Digest(), pathFile.Digest()};
    CheckPlaces(options);
    const PlanRequest request = RequestFrom(options, machine, path, err);

    const Interrupt interrupt; // from here on a signal does not end it in the middle of a row
    PathRun run(options, sources, request, err);
    if (!run.Execute(interrupt)) {
        return kExitInterrupted;
    }
    const RunReport report =
        ReportOf(options, sources, request, run.Result(), std::chrono::steady_clock::now() - start);
    run.Finish(report);
    if (!options.isQuiet) {
        PrintReport(report, out);
    }
    return run.Result().HasFailures() ? kExitPointsFailed : kExitOk;
}

} // namespace host
