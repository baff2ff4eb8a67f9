#ifndef TRUNNION_HOST_TABLE_TABLE_COLUMNS_H
#define TRUNNION_HOST_TABLE_TABLE_COLUMNS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "table/TableRow.h"

namespace host
{

/// A line of a joint table, and where it stands in its file.
struct TableLine
{
    std::string_view text;
    int number{0}; //!< from 1
};

/// The columns of a joint table: they say what the lines below them mean.
class TableColumns
{
  public:
    /// Throws InputError for what is no header of a joint table of these axes.
    /// @param inLength the machine's unit
    TableColumns(std::string inFile, std::vector<const Axis*> ofAxes, LengthUnit inLength,
                 TableLine header);

    /// Reads a row. Throws InputError for a line that is none.
    void Read(TableLine from, TableRow& row);
    const std::string& Header() const { return headerText; }

  private:
    struct Cell
    {
        std::string_view text;
        int column; //!< in its line, from 1
    };
    /// Where an axis stands in the table.
    struct AxisColumn
    {
        const Axis* axis;
        std::size_t joint; //!< its place among the joints of a row
        ShownUnits units;
    };

    void ReadHeader();
    AxisColumn ColumnOf(const Cell& cell) const;
    std::string AxisNames() const;
    void Split(TableLine from);
    void ReadValues(MotionRow& motion) const;
    int Count(const Cell& cell, const std::string& what) const;
    double Number(const Cell& cell) const;
    double Error(const Cell& cell) const;
    RowFlags Flags(const Cell& cell) const;
    [[noreturn]] void Refuse(const Cell& cell, const std::string& sentence) const;

    std::string file;
    std::vector<const Axis*> axes;
    LengthUnit length;
    std::string headerText;
    std::vector<AxisColumn> columns;
    TableLine line;          // the current one
    std::vector<Cell> cells; // its own
};

} // namespace host

#endif
