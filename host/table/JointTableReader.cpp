#include "table/JointTableReader.h"

#include <utility>

#include "text/InputError.h"

namespace host
{

namespace
{

// What is kept is one line; the whole may be large.
constexpr TextBounds kBounds{16UL * 1024 * 1024 * 1024, 65536};

TableLine HeaderOf(LineReader& lines)
{
    if (!lines.Next()) {
        throw InputError(lines.File(), "this file is empty; a joint table begins with the names of "
                                       "its columns");
    }
    return {lines.Line(), lines.Number()};
}

} // namespace

JointTableReader::JointTableReader(std::istream& in, const std::string& file,
                                   std::vector<const Axis*> ofAxes, LengthUnit inLength)
    : lines(in, file, kBounds), columns(file, std::move(ofAxes), inLength, HeaderOf(lines))
{}

bool JointTableReader::Next(TableRow& row)
{
    if (!lines.Next()) {
        return false;
    }
    columns.Read({lines.Line(), lines.Number()}, row);
    return true;
}

} // namespace host
