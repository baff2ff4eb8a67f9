#ifndef TRUNNION_HOST_TOOLPATH_PATH_BYTES_H
#define TRUNNION_HOST_TOOLPATH_PATH_BYTES_H

#include "text/Bytes.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// A path as bytes, from rank to rank: all but its points, which go along with what is asked of
/// them, and its warnings, which have been told.
void PutFrame(ByteWriter& bytes, const Toolpath& path);
bool TakeFrame(ByteReader& bytes, Toolpath& path);

} // namespace host

#endif
