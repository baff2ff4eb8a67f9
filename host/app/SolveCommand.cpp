#include "app/SolveCommand.h"

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <string>
#include <system_error>

#include "app/Interrupt.h"
#include "app/Progress.h"
#include "app/Summary.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "solve/WarmStart.h"
#include "table/JointTable.h"
#include "text/InputError.h"
#include "text/OutputFile.h"
#include "toolpath/AptReader.h"

namespace host
{

namespace
{

void RefuseOverwriting(const std::filesystem::path& output,
                       std::initializer_list<std::filesystem::path> inputs)
{
    for (const std::filesystem::path& input : inputs) {
        std::error_code notThere;
        if (std::filesystem::equivalent(output, input, notThere)) {
            throw InputError(output.string(),
                             "the table would replace a file that is read; choose another name");
        }
    }
}

MotionRow RowOf(std::size_t index, const ToolPoint& point, const std::optional<Reached>& reached)
{
    MotionRow row;
    row.point = index;
    row.asked = {point.position, point.direction};
    row.flags.isRapid = point.isRapid;
    row.flags.hasFailed = !reached;
    if (reached) {
        row.joints = reached->joints;
        row.error = reached->error;
    }
    return row;
}

/// One run over a path.
class Run
{
  public:
    Run(const SolveOptions& options, const LoadedMachine& machine, const LoadedStream& stream,
        const Toolpath& ofPath, std::ostream& messages)
        : path(ofPath), err(messages), units{machine.length, options.inRadians ? AngleUnit::Radian
                                                                               : AngleUnit::Degree},
          solver(machine, stream), table(machine.AxesOf(stream), units),
          summary(machine.AxesOf(stream), units),
          progress(messages, ofPath.points.size(), !options.isQuiet && IsErrorATerminal())
    {}

    /// False when it was interrupted.
    bool WriteTo(OutputFile& file, const Interrupt& interrupt)
    {
        file.Write(table.Header());
        for (done = 0; done < path.points.size(); ++done) {
            if (interrupt.IsRequested()) {
                progress.Clear();
                return false;
            }
            TakePoint(file, path.points[done]);
        }
        progress.Clear();
        return true;
    }

    std::size_t Done() const { return done; }
    const Summary& Result() const { return summary; }

  private:
    void TakePoint(OutputFile& file, const ToolPoint& point)
    {
        const std::optional<Reached> reached = solver.Solve(point);
        summary.Add(point, reached);
        file.Write(table.Row(RowOf(done, point, reached), point.line));
        if (!reached) {
            progress.Clear();
            err << path.file << ":" << point.line << ": point " << done + 1
                << " failed: " << Sentence(solver.WhyNot(point), units) << std::endl;
        }
        progress.Show(done + 1);
    }

    const Toolpath& path;
    std::ostream& err;
    ShownUnits units;
    WarmStart solver;
    JointTable table;
    Summary summary;
    Progress progress;
    std::size_t done{0};
};

} // namespace

ExitCode Solve(const SolveOptions& options, std::ostream& out, std::ostream& err)
{
    const auto start = std::chrono::steady_clock::now();
    LoadedMachine machine = LoadMachine(options.machine);
    const LoadedStream& stream = machine.StreamWithId(options.stream);
    const Toolpath path = ReadAptFile(options.toolpath, machine.length);
    for (const std::string& warning : path.warnings) {
        err << warning << "\n";
    }
    RefuseOverwriting(options.output, {options.machine, options.toolpath});

    const Interrupt interrupt; // from here on a signal does not end it in the middle of a row
    OutputFile file(options.output);
    Run run(options, machine, stream, path, err);
    if (!run.WriteTo(file, interrupt)) {
        const std::filesystem::path partial = file.FinishAsPartial();
        err << "interrupted after " << run.Done() << " of " << path.points.size()
            << " points; they are in " << partial.string() << "\n";
        return kExitInterrupted;
    }
    file.Finish();
    if (!options.isQuiet) {
        run.Result().Print(out, path.file, std::chrono::steady_clock::now() - start);
    }
    return run.Result().HasFailures() ? kExitPointsFailed : kExitOk;
}

} // namespace host
