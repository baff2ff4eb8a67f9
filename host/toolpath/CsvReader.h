#ifndef TRUNNION_HOST_TOOLPATH_CSV_READER_H
#define TRUNNION_HOST_TOOLPATH_CSV_READER_H

#include <istream>
#include <string>

#include "toolpath/Toolpath.h"

namespace host
{

/// Reads a path from a table: a header row that names the columns x, y, z, i, j, k and, if wanted,
/// f (feed per minute), rapid (0, 1, true, false) and op (the operation's name), in any order; then
/// a row for each point, part coordinates in the machine's unit with a decimal point. Where the
/// cell of f or op is empty, what the rows before say goes on. Throws InputError at the first thing
/// that is wrong.
Toolpath ReadCsv(std::istream& in, const std::string& file);

} // namespace host

#endif
