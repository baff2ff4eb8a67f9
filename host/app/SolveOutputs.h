#ifndef TRUNNION_HOST_APP_SOLVE_OUTPUTS_H
#define TRUNNION_HOST_APP_SOLVE_OUTPUTS_H

#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include "app/SolveOptions.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "post/Dialect.h"
#include "post/GcodeWriter.h"
#include "report/ReportRows.h"
#include "report/RunReport.h"
#include "table/JointTable.h"
#include "text/OutputFile.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// The files that a run writes row by row, side by side: the joint table and, on request, G-code,
/// a summary and a page to look at. They appear at their places all together, at the end.
class SolveOutputs
{
  public:
    SolveOutputs(const SolveOptions& options, const LoadedMachine& ofMachine,
                 const Toolpath& ofPath, const std::vector<const Axis*>& axes,
                 const ShownUnits& units, std::ostream& messages);

    void Begin();
    void Add(const MotionRow& row);
    void AddToTable(std::string_view text) { tableFile.Write(text); }
    void Finish(const RunReport& report);
    /// Leaves the table as a partial one and nothing else; returns the table's name.
    std::filesystem::path FinishAsPartial();

  private:
    void AddToProgram(const MotionRow& row);
    void WriteReport(const RunReport& report);

    std::ostream& err;
    const LoadedMachine& machine;
    JointTable table;
    OutputFile tableFile;
    std::optional<Dialect> dialect;
    std::optional<GcodeWriter> program; // nothing where none is wanted, or none can be whole
    std::unique_ptr<OutputFile> programFile;
    std::unique_ptr<OutputFile> summaryFile;
    std::string_view pageHtml;
    std::optional<ReportRows> reportRows; // nothing where no report is wanted
    std::unique_ptr<OutputFile> reportFile;
};

} // namespace host

#endif
