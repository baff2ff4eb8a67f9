#ifndef TRUNNION_HOST_TOOLPATH_CSV_ROW_H
#define TRUNNION_HOST_TOOLPATH_CSV_ROW_H

#include <string>
#include <vector>

#include "text/InputError.h"
#include "text/LineReader.h"

namespace host
{

struct CsvCell
{
    std::string text; //!< without blanks and quotes around it
    TextPosition at;
};

/// The cells of the current line. A cell in quotes may hold commas, and quotes written twice.
/// Throws InputError for one that does not end.
std::vector<CsvCell> CsvCellsOf(const LineReader& lines);

} // namespace host

#endif
