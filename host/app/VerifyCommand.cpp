#include "app/VerifyCommand.h"

#include <array>
#include <chrono>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "app/Helpers.h"
#include "app/Interrupt.h"
#include "app/Operations.h"
#include "app/Progress.h"
#include "machine/LoadedMachine.h"
#include "machine/MachineAssembly.h"
#include "motion/Tolerances.h"
#include "ranks/SharedWork.h"
#include "table/JointTableReader.h"
#include "table/TableChunk.h"
#include "text/Bytes.h"
#include "text/InputFile.h"
#include "text/Numbers.h"
#include "toolpath/PathBytes.h"
#include "verify/ChunkVerification.h"
#include "verify/SharedVerification.h"
#include "verify/Verification.h"

namespace host
{

namespace
{

constexpr std::size_t kShownOfAKind = 10;
constexpr std::size_t kNotedOfAKind = kShownOfAKind + 1; // with the word that there are more
constexpr std::size_t kRowsOfChunk = 256;

/// Prints the first findings of each kind.
class FindingPrinter
{
  public:
    FindingPrinter(std::ostream& to, std::string table, std::string path)
        : err(to), tableFile(std::move(table)), pathFile(std::move(path))
    {}

    void Print(const Finding& finding)
    {
        const std::size_t count = ++counts[static_cast<std::size_t>(finding.kind)];
        if (count > kNotedOfAKind) {
            return;
        }
        err << tableFile;
        if (finding.tableLine > 0) {
            err << ":" << finding.tableLine;
        }
        if (count > kShownOfAKind) {
            err << ": more of this kind are only counted\n";
            return;
        }
        err << ": " << finding.sentence << " (" << pathFile << ":" << finding.pathLine << ")\n";
    }

  private:
    std::ostream& err;
    std::string tableFile;
    std::string pathFile;
    std::array<std::size_t, kFindingNames.size()> counts{};
};

/// Prints what a table comes to.
class ReportPrinter
{
  public:
    ReportPrinter(std::ostream& to, const VerificationReport& ofTable, std::string table,
                  std::string path)
        : out(to), report(ofTable), tableFile(std::move(table)), pathFile(std::move(path))
    {}

    void Print(LengthUnit unit, const Tolerances& tolerances,
               std::chrono::duration<double> time) const
    {
        const std::string length(Symbol(unit));
        out << "points     " << report.points << "\n"
            << "rows       " << report.rows << ": " << report.inserted << " inserted, "
            << report.rewound << " of rewinds\n";
        PrintLargest("at points  ", report.pointPosition, length);
        PrintLargest("           ", report.pointDirection_deg, "deg");
        PrintLargest("between    ", report.wayPosition, length);
        PrintLargest("           ", report.wayDirection_deg, "deg");
        out << "not held   to the straight line: " << report.rapids << " rapids, "
            << report.toolChanges << " tool changes, " << report.interrupted
            << " ways from an unknown place\n";
        PrintFindings();
        out << "verdict    " << (report.Holds() ? "holds" : "does not hold") << " within "
            << RoundedText(tolerances.linear) << " " << length << " and "
            << RoundedText(tolerances.angle_deg) << " deg\n"
            << "time       " << FixedText(time.count(), 2) << " s\n";
    }

  private:
    void PrintLargest(const char* heading, const Largest& largest, const std::string& unit) const
    {
        if (largest.tableLine > 0) {
            out << heading << "off by at most " << RoundedText(largest.value) << " " << unit
                << ", at " << tableFile << ":" << largest.tableLine << " (" << pathFile << ":"
                << largest.pathLine << ")\n";
        }
    }

    void PrintFindings() const
    {
        for (std::size_t kind = 0; kind < kFindingNames.size(); ++kind) {
            if (report.findings[kind] > 0) {
                out << "found      " << kFindingNames[kind] << ": " << report.findings[kind]
                    << "\n";
            }
        }
    }

    std::ostream& out;
    const VerificationReport& report;
    std::string tableFile;
    std::string pathFile;
};

Tolerances TolerancesOf(const VerifyOptions& options, LengthUnit unit)
{
    const Tolerances usual = DefaultTolerances(unit);
    return {options.linearTolerance.value_or(usual.linear),
            options.angleTolerance_deg.value_or(usual.angle_deg)};
}

std::vector<SeatedTool> ToolsOf(const VerifyOptions& options, LoadedMachine& machine,
                                const Toolpath& path)
{
    const std::vector<const LoadedStream*> streams =
        StreamsOf({options.machine.stream, options.operationStreams}, machine, path);
    const std::vector<double> lengths = ToolLengthsOf(options.toolLength, path);
    std::vector<SeatedTool> tools;
    for (std::size_t i = 0; i < streams.size(); ++i) {
        tools.push_back({streams[i], lengths[i]});
    }
    return tools;
}

/// @param path of which the operations are enough
VerificationRequest RequestFrom(const VerifyOptions& options, LoadedMachine& machine,
                                const Toolpath& path)
{
    return {machine, path.operations, ToolsOf(options, machine, path),
            TolerancesOf(options, machine.length), options.samples};
}

LoadedMachine MachineFrom(const std::string& text, const MachineOptions& options)
{
    return AssembleMachine(DescriptionFromText(text, options.file, options.links));
}

/// What the other ranks verify with. Points come with the rows.
std::string BytesOf(const std::string& machineText, const Toolpath& path,
                    const std::string& tableHeader)
{
    ByteWriter bytes;
    bytes.PutText(machineText);
    PutFrame(bytes, path);
    bytes.PutText(tableHeader);
    return bytes.Take();
}

/// On the other ranks: verifies what the leader has read, as it asks.
ExitCode Help(const VerifyOptions& options, Ranks& ranks)
{
    ranks.Join();
    const std::string sources = ranks.FromLeader({});
    ByteReader bytes(sources);
    std::string machineText;
    Toolpath path;
    std::string header;
    if (!bytes.TakeText(machineText) || !TakeFrame(bytes, path) || !bytes.TakeText(header)) {
        return kExitOk; // the leader has found that there is nothing to do
    }
    LoadedMachine machine = MachineFrom(machineText, options.machine);
    const VerificationRequest request = RequestFrom(options, machine, path);
    const TableColumns columns(options.table.string(), request.Axes(), machine.length, {header, 1});
    ToolKinematics kinematics(machine, request.Axes());
    ChunkVerification chunks(request, columns, kinematics, kNotedOfAKind);
    AnswerLeader(ranks, [&](std::string_view question, ByteWriter& answer) {
        answer.PutRest(chunks.Answer(question));
    });
    return kExitOk;
}

/// What a run reads before the table.
struct VerifySources
{
    std::string machineText;
    LoadedMachine machine;
    Toolpath path;
};

VerifySources ReadSources(const VerifyOptions& options, std::ostream& warnings)
{
    std::string machineText = ReadMachineText(options.machine.file);
    LoadedMachine machine = MachineFrom(machineText, options.machine);
    Toolpath path = ReadPath(options.toolpath, machine.length, warnings);
    return {std::move(machineText), std::move(machine), std::move(path)};
}

/// One run over a table.
class TableRun
{
  public:
    TableRun(const VerificationRequest& request, const Toolpath& path, std::string tableFile,
             JointTableReader& ofTable, std::ostream& messages)
        : table(std::move(tableFile)), reader(ofTable), err(messages), points(path),
          progress(messages, "checking point", path.points.size(), IsErrorATerminal()),
          findings(messages, table, path.file), kinematics(request.machine, request.Axes()),
          chunks(request, reader.Columns(), kinematics, kNotedOfAKind),
          verification(request, points, kinematics, [this](const Finding& finding) {
              progress.Clear();
              findings.Print(finding);
          })
    {}

    /// False when it was interrupted. @param leader null where there are no other ranks
    bool TakeRows(WorkLeader* leader)
    {
        if (leader == nullptr) {
            return TakeRowsAlone();
        }
        TableCutter cutter(reader.Lines(), kRowsOfChunk);
        SharedVerification(verification, chunks, reader.Columns(), points,
                           [this](std::size_t point) { progress.Show(point + 1); })
            .Run(cutter, *leader);
        return true;
    }

    const VerificationReport& Finish()
    {
        verification.Finish();
        progress.Clear();
        return verification.Report();
    }

  private:
    bool TakeRowsAlone()
    {
        TableRow row;
        while (reader.Next(row)) {
            if (Interrupt::IsOneRequested()) { // of a batch
                err << table << ": interrupted at line " << row.tableLine << "\n";
                return false;
            }
            verification.Take(row);
            progress.Show(row.motion.point + 1);
        }
        return true;
    }

    std::string table;
    JointTableReader& reader;
    std::ostream& err;
    PathWindow points;
    Progress progress;
    FindingPrinter findings;
    ToolKinematics kinematics;
    ChunkVerification chunks;
    Verification verification;
};

} // namespace

ExitCode Verify(const VerifyOptions& options, std::ostream& out, std::ostream& err)
{
    SoleRank alone;
    return VerifyShared(options, alone, out, err);
}

ExitCode VerifyShared(const VerifyOptions& options, Ranks& ranks, std::ostream& out,
                      std::ostream& err)
{
    if (!ranks.Leads()) {
        return Help(options, ranks);
    }
    const auto start = std::chrono::steady_clock::now();
    Helpers helpers(ranks);
    VerifySources sources = ReadWhileJoining(ranks, [&] { return ReadSources(options, err); });
    const Toolpath& path = sources.path;
    const VerificationRequest request = RequestFrom(options, sources.machine, path);
    const std::string table = options.table.string();
    std::ifstream in = OpenInput(options.table);
    JointTableReader reader(in, table, request.Axes(), sources.machine.length);
    helpers.Share([&] { return BytesOf(sources.machineText, path, reader.Columns().Header()); });

    TableRun run(request, path, table, reader, err);
    if (!run.TakeRows(helpers.Leader())) {
        return kExitInterrupted;
    }
    const VerificationReport& report = run.Finish();
    ReportPrinter(out, report, table, path.file)
        .Print(sources.machine.length, request.tolerances,
               std::chrono::steady_clock::now() - start);
    return report.Holds() ? kExitOk : kExitNotVerified;
}

} // namespace host
