#include "app/SolveOutputs.h"

#include <array>

#include "app/SummaryJson.h"

namespace host
{

SolveOutputs::SolveOutputs(const SolveOptions& options, const LoadedMachine& machine,
                           const Toolpath& ofPath, const std::vector<const Axis*>& axes,
                           const ShownUnits& units, std::ostream& messages)
    : err(messages), table(axes, units), tableFile(options.output)
{
    if (options.gcode) {
        dialect = LoadDialect(options.dialect);
        program.emplace(*dialect, machine, axes, ofPath);
        programFile = std::make_unique<OutputFile>(*options.gcode);
    }
    if (options.summary) {
        summaryFile = std::make_unique<OutputFile>(*options.summary);
    }
}

void SolveOutputs::Begin()
{
    tableFile.Write(table.Header());
    if (program) {
        programFile->Write(program->Begin());
    }
}

void SolveOutputs::Add(const MotionRow& row, int line)
{
    tableFile.Write(table.Row(row, line));
    if (program) {
        AddToProgram(row);
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
    // None moves before all are on the disk: where one finds no room, none appears.
    const std::array files{programFile.get(), summaryFile.get(), &tableFile};
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

std::filesystem::path SolveOutputs::FinishAsPartial()
{
    program.reset();
    programFile.reset();
    summaryFile.reset();
    return tableFile.FinishAsPartial();
}

} // namespace host
