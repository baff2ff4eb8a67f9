#ifndef TRUNNION_HOST_TOOLPATH_NC_READER_H
#define TRUNNION_HOST_TOOLPATH_NC_READER_H

#include <istream>
#include <string>

#include "geometry/Units.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// Reads an NC program whose blocks give the tool's end as X Y Z and its direction as I J K
/// (G43.5), in one work offset, which is taken for the part's. Lengths come out in `lengthUnit`,
/// which is also what a program without G20 and G21 is taken to be in. Inverse time (G93) comes out
/// as a feed per minute. Throws InputError at the first word that is wrong or not known: nothing
/// that could move the tool is passed over.
///
/// At the start, and behind a tool change, rapids make no point until X, Y and Z have all been
/// given; a warning says so.
Toolpath ReadNc(std::istream& in, const std::string& file, LengthUnit lengthUnit);

} // namespace host

#endif
