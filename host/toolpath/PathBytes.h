#ifndef TRUNNION_HOST_TOOLPATH_PATH_BYTES_H
#define TRUNNION_HOST_TOOLPATH_PATH_BYTES_H

#include "text/Bytes.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// A path as bytes, from rank to rank: all but its warnings, which have been told.
void Put(ByteWriter& bytes, const Toolpath& path);
bool Take(ByteReader& bytes, Toolpath& path);

} // namespace host

#endif
