#ifndef TRUNNION_HOST_TABLE_TABLE_CHUNK_H
#define TRUNNION_HOST_TABLE_TABLE_CHUNK_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "table/TableColumns.h"
#include "text/Bytes.h"
#include "text/InputError.h"
#include "text/LineReader.h"

namespace host
{

/// Successive lines of a joint table, not yet understood.
struct TableChunk
{
    std::string before; //!< the line before them; empty where that is the header
    std::string lines;  //!< each with a line feed behind it
    int firstLine{0};
    std::size_t numLines{0};
    std::optional<InputError> fault; //!< what makes the line behind them unreadable

    TableLine Before() const { return {before, firstLine - 1}; }
    /// Of a chunk that has lines.
    TableLine Last() const;

    /// Calls `take` with one line after the other, as long as it answers true.
    template <class Taker>
    bool ForEach(Taker take) const
    {
        TableLine line{{}, firstLine};
        for (std::size_t begin = 0; begin < lines.size(); begin += line.text.size() + 1) {
            line.text = std::string_view(lines).substr(begin, lines.find('\n', begin) - begin);
            if (!take(line)) {
                return false;
            }
            ++line.number;
        }
        return true;
    }
};

/// All but the fault, which is the leader's.
void Put(ByteWriter& bytes, const TableChunk& chunk);
bool Take(ByteReader& bytes, TableChunk& chunk);

/// Whether a row with these flags leaves nothing open, so that what follows it depends on it alone.
bool LeavesNothingOpen(const RowFlags& flags);

/// Cuts the lines of a table into chunks, in bounded memory. It cuts behind rows that leave nothing
/// open where there are such.
class TableCutter
{
  public:
    /// @param below the lines of a table behind its header
    /// @param rows in a usual chunk
    TableCutter(LineReader& below, std::size_t rows) : lines(below), usualRows(rows) {}

    /// False behind the last chunk. The last one has a fault where the table cannot be read to its
    /// end; without it the others have lines.
    bool Next(TableChunk& chunk);

  private:
    bool IsEnough(const TableChunk& chunk) const;

    LineReader& lines;
    std::size_t usualRows;
    std::string before;
    bool isAtEnd{false};
};

} // namespace host

#endif
