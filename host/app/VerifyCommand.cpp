#include "app/VerifyCommand.h"

#include <array>
#include <chrono>
#include <fstream>
#include <string>

#include "app/Operations.h"
#include "app/Progress.h"
#include "machine/LoadedMachine.h"
#include "motion/Tolerances.h"
#include "table/JointTableReader.h"
#include "text/InputFile.h"
#include "text/Numbers.h"
#include "verify/Verification.h"

namespace host
{

namespace
{

constexpr std::size_t kShownOfAKind = 10;

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
        if (count > kShownOfAKind + 1) {
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

} // namespace

ExitCode Verify(const VerifyOptions& options, std::ostream& out, std::ostream& err)
{
    const auto start = std::chrono::steady_clock::now();
    LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const Toolpath path = ReadPath(options.toolpath, machine.length, err);
    const VerificationRequest request{machine, path, ToolsOf(options, machine, path),
                                      TolerancesOf(options, machine.length), options.samples};
    const std::string table = options.table.string();
    std::ifstream in = OpenInput(options.table);
    JointTableReader reader(in, table, request.Axes(), machine.length);

    Progress progress(err, "checking point", path.points.size(), IsErrorATerminal());
    FindingPrinter findings(err, table, path.file);
    Verification verification(request, [&](const Finding& finding) {
        progress.Clear();
        findings.Print(finding);
    });
    TableRow row;
    while (reader.Next(row)) {
        verification.Take(row);
        progress.Show(row.motion.point + 1);
    }
    verification.Finish();
    progress.Clear();
    const VerificationReport& report = verification.Report();
    ReportPrinter(out, report, table, path.file)
        .Print(machine.length, request.tolerances, std::chrono::steady_clock::now() - start);
    return report.Holds() ? kExitOk : kExitNotVerified;
}

} // namespace host
