#ifndef TRUNNION_HOST_TABLE_JOINT_TABLE_READER_H
#define TRUNNION_HOST_TABLE_JOINT_TABLE_READER_H

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "motion/MotionRow.h"
#include "text/LineReader.h"

namespace host
{

/// A row of a joint table.
struct TableRow
{
    int tableLine{0}; //!< where it stands
    int pathLine{0};  //!< where the toolpath has its point
    MotionRow motion; //!< joints in the order of the reader's axes; `asked` is not in a table
};

/// Reads a joint table row by row, in bounded memory.
class JointTableReader
{
  public:
    /// Reads the header. Throws InputError for what is no joint table of these axes.
    /// @param inLength the machine's unit
    JointTableReader(std::istream& in, const std::string& file, std::vector<const Axis*> ofAxes,
                     LengthUnit inLength);

    /// Moves to the next row; false at the end. Throws InputError for a row that is not one.
    bool Next(TableRow& row);

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
    void Split();
    void ReadValues(MotionRow& motion) const;
    int Count(const Cell& cell, const std::string& what) const;
    double Number(const Cell& cell) const;
    double Error(const Cell& cell) const;
    RowFlags Flags(const Cell& cell) const;
    [[noreturn]] void Refuse(const Cell& cell, const std::string& sentence) const;

    LineReader lines;
    std::vector<const Axis*> axes;
    LengthUnit length;
    std::vector<AxisColumn> columns;
    std::vector<Cell> cells; // of the current line
};

} // namespace host

#endif
