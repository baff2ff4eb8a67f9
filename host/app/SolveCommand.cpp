#include "app/SolveCommand.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "app/FileDigest.h"
#include "app/Helpers.h"
#include "app/Interrupt.h"
#include "app/PageHtml.h"
#include "app/Progress.h"
#include "app/ReportText.h"
#include "app/SolveOutputs.h"
#include "app/SolveReport.h"
#include "app/SolveSetup.h"
#include "app/Summary.h"
#include "app/UsedFiles.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "machine/MachineAssembly.h"
#include "planner/Checkpoint.h"
#include "planner/PathPlan.h"
#include "planner/PlanAssistant.h"
#include "ranks/SharedWork.h"
#include "report/RunReport.h"
#include "text/Bytes.h"
#include "text/InputError.h"
#include "toolpath/PathBytes.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

std::string BytesOf(const std::string& machineText, const Toolpath& path)
{
    ByteWriter bytes;
    bytes.PutText(machineText);
    PutFrame(bytes, path);
    return bytes.Take();
}

/// What a run reads.
struct SolveSources
{
    std::string machineText;
    LoadedMachine machine;
    Toolpath path;
    SourceDigests digests;
};

/// Where there are other ranks they are joined in the meantime.
SolveSources ReadSources(const SolveOptions& options, Ranks& ranks, std::ostream& warnings)
{
    const WatchedFile machineFile(options.machine.file);
    const WatchedFile pathFile(options.toolpath.file);
    auto digesting = Meanwhile(ranks, [&] {
        return SourceDigests{machineFile.Digest(), pathFile.Digest()};
    });
    SolveSources sources = ReadWhileJoining(ranks, [&] {
        std::string machineText = ReadMachineText(options.machine.file);
        LoadedMachine machine = AssembleMachine(
            DescriptionFromText(machineText, options.machine.file, options.machine.links));
        Toolpath path = ReadPath(options.toolpath, machine.length, warnings);
        return SolveSources{std::move(machineText), std::move(machine), std::move(path), {}};
    });
    sources.digests = digesting.get();
    machineFile.CheckUnchanged();
    pathFile.CheckUnchanged();
    return sources;
}

ReportedSharing SharingOf(const WorkLeader& leader)
{
    const SharingAccount& account = leader.Account();
    return {leader.NumRanks(),      account.tasks,     account.ownTasks,     account.ownSeconds,
            account.waitingSeconds, account.sentBytes, account.receivedBytes};
}

/// On the other ranks: what the leader has read is planned with, as it asks.
ExitCode Help(const SolveOptions& options, Ranks& ranks)
{
    ranks.Join();
    const std::string sources = ranks.FromLeader({});
    ByteReader bytes(sources);
    std::string machineText;
    Toolpath path;
    if (!bytes.TakeText(machineText) || !TakeFrame(bytes, path)) {
        return kExitOk; // the leader has found that there is nothing to do
    }
    LoadedMachine machine = AssembleMachine(
        DescriptionFromText(machineText, options.machine.file, options.machine.links));
    const PlanRequest request = RequestWithoutPoints(options, machine, path);
    PlanAssistant assistant(request);
    AnswerLeader(ranks, [&](std::string_view question, ByteWriter& answer) {
        assistant.Answer(question, answer);
    });
    return kExitOk;
}

/// Several processes are several that may die, and take the run with them: what has been found is
/// saved from time to time, for a small share of the time.
class RegularSaving
{
  public:
    explicit RegularSaving(std::function<void()> bySaving) : save(std::move(bySaving)) {}

    void MaySave()
    {
        const Clock::time_point begin = Clock::now();
        if (begin < next) {
            return;
        }
        save();
        const Clock::time_point end = Clock::now();
        constexpr int kShare = 50;
        next = end + std::max<Clock::duration>(kPause, kShare * (end - begin));
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kPause{20};

    std::function<void()> save;
    Clock::time_point next{Clock::now() + kPause};
};

/// One run over a path.
class PathRun
{
  public:
    PathRun(const SolveOptions& ofUser, const SourceDigests& ofSources, const PlanRequest& request,
            Helpers& withHelp, std::ostream& messages)
        : options(ofUser), sources(ofSources), path(request.path), helpers(withHelp), err(messages),
          plan(request), units{request.machine.length,
                               ofUser.inRadians ? AngleUnit::Radian : AngleUnit::Degree},
          summary(plan.Axes(), units), showsProgress(!ofUser.isQuiet && IsErrorATerminal()),
          checkpoint(CheckpointOf(ofUser.output)),
          outputs(ofUser, request.machine, request.path, plan.Axes(), units, messages)
    {}

    /// False when it was interrupted; what is done is then kept.
    bool Execute(const Interrupt& interrupt)
    {
        const std::string fingerprint = RunFingerprint(options, sources);
        if (options.resumes) {
            LoadCheckpoint(checkpoint, fingerprint, plan);
        }
        const auto save = [&] { SaveCheckpoint(checkpoint, fingerprint, plan); };
        RegularSaving saving(save);
        const bool isFound = FindCandidates(interrupt, saving);
        // A launcher that ends the run leaves a moment only: what is hard to find comes first.
        if (!isFound) {
            save();
        }
        // Rows are written even where not all points are solved: for the user to look at.
        const bool isWritten = WriteRows(interrupt, isFound);
        if (isFound && !isWritten) {
            save();
        }
        if (!isFound || !isWritten) {
            Explain(isFound);
        }
        return isFound && isWritten;
    }

    /// Puts all files in their places.
    void Finish(const RunReport& report)
    {
        outputs.Finish(report);
        std::error_code ignored; // what an earlier, interrupted run has left
        fs::remove(checkpoint, ignored);
        fs::remove(PartialOf(options.output), ignored);
    }

    const Summary& Result() const { return summary; }

  private:
    bool FindCandidates(const Interrupt& interrupt, RegularSaving& saving)
    {
        Progress progress(err, "solving point", path.points.size(), showsProgress);
        if (WorkLeader* const leader = helpers.Leader()) {
            return plan.FindShared(*leader, [&](std::size_t appended) {
                progress.Show(appended == 0 ? 0 : plan.PointsUpTo(appended - 1));
                saving.MaySave();
                return !interrupt.IsRequested();
            });
        }
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
            outputs.Add(row);
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
        const auto takeText = [&](std::string_view text) { outputs.AddToTable(text); };
        // Where the run has been asked to end, the others may be gone.
        return plan.Build({takeRow, takeEvent, mayGoOn, takeText},
                          isInterruptible ? helpers.Leader() : nullptr);
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
    Helpers& helpers;
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
    SoleRank alone;
    return SolveShared(options, alone, out, err);
}

ExitCode SolveShared(const SolveOptions& options, Ranks& ranks, std::ostream& out,
                     std::ostream& err)
{
    if (!ranks.Leads()) {
        return Help(options, ranks);
    }
    const auto start = std::chrono::steady_clock::now();
    Helpers helpers(ranks);
    if (options.report) {
        PageFor("--report", options.page);
    }
    SolveSources sources = ReadSources(options, ranks, err);
    RefuseOverwriting(FilesOf(options));
    const PlanRequest request = RequestFrom(options, sources.machine, sources.path, err);
    helpers.Share([&] { return BytesOf(sources.machineText, sources.path); });

    const Interrupt interrupt; // from here on a signal does not end it in the middle of a row
    PathRun run(options, sources.digests, request, helpers, err);
    if (!run.Execute(interrupt)) {
        return kExitInterrupted;
    }
    RunReport report = ReportOf(options, sources.digests, request, run.Result(),
                                std::chrono::steady_clock::now() - start);
    if (const WorkLeader* const leader = helpers.Leader()) {
        report.sharing = SharingOf(*leader);
    }
    FinishWhileParting(ranks, helpers, [&] { run.Finish(report); });
    if (!options.isQuiet) {
        PrintReport(report, out);
    }
    return run.Result().HasFailures() ? kExitPointsFailed : kExitOk;
}

} // namespace host
