#ifndef TRUNNION_HOST_TABLE_JOINT_TABLE_READER_H
#define TRUNNION_HOST_TABLE_JOINT_TABLE_READER_H

#include <istream>
#include <string>
#include <vector>

#include "table/TableColumns.h"
#include "text/LineReader.h"

namespace host
{

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

    /// For those who take the lines below the header as they are.
    LineReader& Lines() { return lines; }
    const TableColumns& Columns() const { return columns; }

  private:
    LineReader lines;
    TableColumns columns;
};

} // namespace host

#endif
