#ifndef TRUNNION_HOST_TOOLPATH_APT_READER_H
#define TRUNNION_HOST_TOOLPATH_APT_READER_H

#include <istream>
#include <string>

#include "geometry/Units.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// Reads cutter locations in the APT family's text form. Lengths come out in `lengthUnit`, which is
/// also what a file without UNITS is taken to be in. Throws InputError at the first statement that
/// is wrong or not known: nothing that could move the tool is passed over.
///
/// FROM is no motion: it makes no point, and only its vector counts. Before any vector the tool
/// stands along z of the frame that MSYS set.
Toolpath ReadApt(std::istream& in, const std::string& file, LengthUnit lengthUnit);

} // namespace host

#endif
