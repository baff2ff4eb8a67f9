#ifndef TRUNNION_HOST_APP_SOLVE_OUTPUTS_H
#define TRUNNION_HOST_APP_SOLVE_OUTPUTS_H

#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/RunReport.h"
#include "app/SolveOptions.h"
#include "machine/AxisText.h"
#include "post/Dialect.h"
#include "post/GcodeWriter.h"
#include "table/JointTable.h"
#include "text/OutputFile.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// The files that a run writes row by row, side by side: the joint table and, on request, G-code
/// and a summary. They appear at their places all together, at the end.
class SolveOutputs
{
  public:
    SolveOutputs(const SolveOptions& options, const LoadedMachine& machine, const Toolpath& ofPath,
                 const std::vector<const Axis*>& axes, const ShownUnits& units,
                 std::ostream& messages);

    void Begin();
    void Add(const MotionRow& row, int line);
    void Finish(const RunReport& report);
    /// Leaves the table as a partial one and nothing else; returns the table's name.
    std::filesystem::path FinishAsPartial();

  private:
    void AddToProgram(const MotionRow& row);

    std::ostream& err;
    JointTable table;
    OutputFile tableFile;
    std::optional<Dialect> dialect;
    std::optional<GcodeWriter> program; // nothing where none is wanted, or none can be whole
    std::unique_ptr<OutputFile> programFile;
    std::unique_ptr<OutputFile> summaryFile;
};

} // namespace host

#endif
