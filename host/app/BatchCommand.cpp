#include "app/BatchCommand.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "app/BatchRecord.h"
#include "app/BatchReport.h"
#include "app/Interrupt.h"
#include "app/Progress.h"
#include "ranks/SharedJobs.h"
#include "text/Bytes.h"
#include "text/InputError.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

/// How long a launcher that ends the run can be relied on to wait for a report.
constexpr std::chrono::milliseconds kPatience{300};

fs::path RecordOf(fs::path file)
{
    file += ".done";
    return file;
}

/// True when it was last true a moment ago: for what is asked at every point of a path.
class NowAndThen
{
  public:
    bool IsTime()
    {
        constexpr std::chrono::milliseconds kInterval{5};
        const Clock::time_point now = Clock::now();
        if (now < next) {
            return false;
        }
        next = now + kInterval;
        return true;
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point next;
};

/// What a rank has to know of a job.
struct JobQuestion
{
    bool resumes{false};
    std::vector<std::string> words;
};

std::string BytesOf(const JobQuestion& question)
{
    ByteWriter writer;
    writer.Put(question.resumes);
    writer.Put(static_cast<std::uint64_t>(question.words.size()));
    for (const std::string& word : question.words) {
        writer.PutText(word);
    }
    return writer.Take();
}

JobQuestion QuestionFrom(const std::string& bytes)
{
    ByteReader reader(bytes);
    JobQuestion question;
    reader.Take(question.resumes);
    reader.TakeEach(question.words,
                    [](ByteReader& from, std::string& word) { return from.TakeText(word); });
    return question;
}

/// What the options of the batch mean for a job.
void Adapt(SolveOptions& job, bool isQuiet, bool resumes)
{
    job.isQuiet = job.isQuiet || isQuiet;
    job.resumes = resumes;
}

void Adapt(VerifyOptions& /*job*/, bool /*isQuiet*/, bool /*resumes*/) {}

bool IsThere(const fs::path& file)
{
    std::error_code ignored;
    return fs::exists(file, ignored);
}

/// On any rank: does a job and says what came of it.
std::string DoJob(const BatchOptions& options, const std::string& bytes)
{
    const JobQuestion question = QuestionFrom(bytes);
    JobOptions job = options.read(question.words);
    std::visit([&](auto& one) { Adapt(one, options.isQuiet, question.resumes); }, job);
    return BytesOf(RunJob(job));
}

ExitCode Help(const BatchOptions& options, Ranks& ranks)
{
    NowAndThen pause;
    const Interrupt interrupt([&] {
        if (pause.IsTime() && IsAskedToEnd(ranks)) {
            Interrupt::Request();
        }
    });
    DoJobs(ranks, [&](const std::string& question) { return DoJob(options, question); });
    return kExitOk;
}

/// The leader's view of a batch.
class BatchRun
{
  public:
    BatchRun(const BatchOptions& ofUser, std::ostream& toOut, std::ostream& toErr)
        : options(ofUser), out(toOut), err(toErr), record(RecordOf(ofUser.file)),
          lines(ReadBatch(ofUser.file, record.File(), ofUser.read)), states(lines.size()),
          progress(err, "finished jobs:", lines.size(), !ofUser.isQuiet && IsErrorATerminal())
    {
        record.Load();
        if (options.resumes) {
            TakeUpWhatIsDone();
        } else {
            record.Remove();
        }
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (!states[i].result) {
                open.push_back(i);
            }
        }
    }

    ExitCode Execute(JobLeader& leader)
    {
        const auto start = std::chrono::steady_clock::now();
        SharedJobs jobs;
        NowAndThen pause;
        const Interrupt interrupt([&] {
            if (pause.IsTime()) {
                leader.LookAround(jobs);
                ShowProgress();
            }
        });
        jobs.count = open.size();
        jobs.question = [this](std::size_t job) { return Begin(open[job]); };
        jobs.work = [this](const std::string& question) {
            ShowProgress();
            return DoJob(options, question);
        };
        jobs.take = [this](std::size_t job, const std::string& answer) {
            Take(open[job], ResultFrom(answer));
        };
        jobs.mayGoOn = [&] { return !isInterrupted && !interrupt.IsRequested(); };
        leader.Run(jobs, kPatience);
        Report(std::chrono::steady_clock::now() - start);
        const ExitCode code = CodeOf(lines, states);
        leader.Finish(jobs); // what still comes is noted
        return code;
    }

  private:
    void TakeUpWhatIsDone()
    {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::vector<fs::path> results = FilesOf(lines[i].job).results;
            const std::optional<ExitCode> code = record.Find(FingerprintOf(i));
            if (code && *code != kExitInterrupted &&
                std::all_of(results.begin(), results.end(), IsThere)) {
                states[i].isOfEarlierRun = true;
                states[i].result = JobResult();
                states[i].result->code = *code;
            }
        }
    }

    std::string FingerprintOf(std::size_t line) const
    {
        return JobFingerprint(lines[line].words, lines[line].job, options.version);
    }

    /// What has been found of a job may be used if it was found for just that job.
    std::string Begin(std::size_t line)
    {
        JobState& state = states[line];
        state.isBegun = true;
        state.fingerprint = FingerprintOf(line);
        const auto* const solve = std::get_if<SolveOptions>(&lines[line].job);
        const bool resumes = options.resumes && solve != nullptr &&
                             record.Find(state.fingerprint) == kExitInterrupted &&
                             IsThere(CheckpointOf(solve->output));
        Note(state.fingerprint, kExitInterrupted);
        return BytesOf({resumes, lines[line].words});
    }

    void Take(std::size_t line, JobResult result)
    {
        const ExitCode code = result.code;
        isInterrupted = isInterrupted || code == kExitInterrupted;
        if (code == kExitOk || code == kExitPointsFailed) {
            Note(states[line].fingerprint, code);
        }
        states[line].result = std::move(result);
        PrintThoseInOrder();
    }

    /// A batch without its record is worth more than none.
    void Note(const std::string& fingerprint, ExitCode code)
    {
        if (fingerprint.empty() || !isNoting) {
            return;
        }
        try {
            record.Add(fingerprint, code);
        } catch (const InputError& error) {
            isNoting = false;
            progress.Clear();
            err << error.what() << "\nthe batch goes on; --resume will not know what is done\n";
        }
    }

    void PrintThoseInOrder()
    {
        while (printed < lines.size() && states[printed].result) {
            Print(printed++);
        }
        ShowProgress();
    }

    void Print(std::size_t line)
    {
        const JobResult& result = *states[line].result;
        const std::string heading = options.file.string() + ":" +
                                    std::to_string(lines[line].number) + ": " + lines[line].text +
                                    "\n";
        progress.Clear();
        if (!result.err.empty()) {
            err << heading << result.err << std::flush;
        }
        if (!result.out.empty() && !options.isQuiet) {
            out << heading << result.out << "\n" << std::flush;
        }
    }

    void ShowProgress()
    {
        progress.Show(static_cast<std::size_t>(
            std::count_if(states.begin(), states.end(),
                          [](const JobState& state) { return state.result.has_value(); })));
    }

    void Report(std::chrono::duration<double> time)
    {
        for (; printed < lines.size(); ++printed) { // behind what was interrupted or not begun
            if (states[printed].result) {
                Print(printed);
            }
        }
        progress.Clear();
        if (!options.isQuiet) {
            PrintBatch(options.file.string(), lines, states, time, out);
            out << std::flush;
        }
        if (CodeOf(lines, states) <= kExitPointsFailed) {
            record.Remove();
        } else if (isNoting) {
            err << "the same command with --resume does what is not done yet\n";
        }
    }

    const BatchOptions& options;
    std::ostream& out;
    std::ostream& err;
    BatchRecord record;
    std::vector<BatchLine> lines;
    std::vector<JobState> states;  // by line
    std::vector<std::size_t> open; // the lines that this run has to do
    std::size_t printed{0};
    bool isInterrupted{false};
    bool isNoting{true};
    Progress progress;
};

} // namespace

ExitCode Batch(const BatchOptions& options, Ranks& ranks, std::ostream& out, std::ostream& err)
{
    if (!ranks.Leads()) {
        return Help(options, ranks);
    }
    JobLeader leader(ranks); // lets the others go where there is nothing to do
    BatchRun run(options, out, err);
    return run.Execute(leader);
}

} // namespace host
