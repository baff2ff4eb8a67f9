#ifndef TRUNNION_HOST_REPORT_REPORT_ROWS_H
#define TRUNNION_HOST_REPORT_REPORT_ROWS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "machine/LoadedMachine.h"
#include "motion/MotionRow.h"
#include "report/ColumnEncoder.h"
#include "report/RunReport.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// The rows of a motion as the page of a run has them: lengths in the machine's unit and degrees,
/// to as many decimals as are ever shown, in some tens of bytes a row.
class ReportRows
{
  public:
    struct NamedColumn
    {
        std::string name;
        ColumnEncoder column;
    };

    /// The joints of the rows are in the order of `ofAxes`. The path outlives this.
    ReportRows(std::vector<const Axis*> ofAxes, const Toolpath& ofPath, LengthUnit inLength);

    /// Rows come in the order of their points. One that has failed stands where the one before it
    /// does.
    void Add(const MotionRow& row);

    std::size_t Count() const { return count; }
    const std::vector<const Axis*>& Axes() const { return axes; }
    const std::vector<NamedColumn>& Columns() const { return columns; }
    /// Index of the first row that leads to this point or to a later one.
    std::size_t FirstRowOf(std::size_t point) const;
    /// How far an axis goes [length] or [deg]; nothing without any row that has not failed.
    std::optional<ReportedRange> ReachedBy(std::size_t axis) const;

  private:
    void NoteReached(const MotionRow& row);

    std::vector<const Axis*> axes;
    const Toolpath& path;
    std::vector<NamedColumn> columns;
    std::size_t count{0};
    std::vector<std::size_t> firstRows; // by point
    std::vector<double> joints;         // of the last row that has not failed [length] or [deg]
    std::vector<ReportedRange> reached; // [length] or [deg]; empty without any row
};

} // namespace host

#endif
