#include "app/SolveOutputs.h"

#include <array>

#include "app/PageHtml.h"
#include "app/SummaryJson.h"
#include "report/Page.h"

namespace host
{

SolveOutputs::SolveOutputs(const SolveOptions& options, const LoadedMachine& ofMachine,
                           const Toolpath& ofPath, const std::vector<const Axis*>& axes,
                           const ShownUnits& units, std::ostream& messages)
    : err(messages), machine(ofMachine), table(axes, units), tableFile(options.output)
{
    if (options.gcode) {
        dialect = LoadDialect(options.dialect);
        program.emplace(*dialect, machine, axes, ofPath);
        programFile = std::make_unique<OutputFile>(*options.gcode);
    }
    if (options.summary) {
        summaryFile = std::make_unique<OutputFile>(*options.summary);
    }
    if (options.report) {
        pageHtml = PageFor("--report", options.page);
        reportRows.emplace(axes, ofPath, machine.length);
        reportFile = std::make_unique<OutputFile>(*options.report);
    }
}

void SolveOutputs::Begin()
{
    tableFile.Write(table.Header());
    if (program) {
        programFile->Write(program->Begin());
    }
}

void SolveOutputs::Add(const MotionRow& row)
{
    if (program) {
        AddToProgram(row);
    }
    if (reportRows) {
        reportRows->Add(row);
    }
}

void SolveOutputs::AddToProgram(const MotionRow& row)
{
    if (!row.flags.hasFailed) {
        programFile->Write(program->Row(row));
        return;
    }
    err << "no G-code is written: a program without this point would cut something else\n";
    program.reset();
    programFile.reset();
}

void SolveOutputs::Finish(const RunReport& report)
{
    if (program) {
        programFile->Write(program->End());
    }
    if (summaryFile) {
        summaryFile->Write(ToJson(report));
    }
    if (reportFile) {
        WriteReport(report);
    }
    // None moves before all are on the disk: where one finds no room, none appears.
    const std::array files{programFile.get(), summaryFile.get(), reportFile.get(), &tableFile};
    for (OutputFile* const file : files) {
        if (file != nullptr) {
            file->Seal();
        }
    }
    for (OutputFile* const file : files) {
        if (file != nullptr) {
            file->Finish();
        }
    }
}

void SolveOutputs::WriteReport(const RunReport& report)
{
    const ShownRun run{report, *reportRows};
    WritePage(pageHtml, {machine, report.machine, report.version}, &run,
              [this](std::string_view text) { reportFile->Write(text); });
}

std::filesystem::path SolveOutputs::FinishAsPartial()
{
    program.reset();
    programFile.reset();
    summaryFile.reset();
    reportFile.reset();
    return tableFile.FinishAsPartial();
}

} // namespace host
