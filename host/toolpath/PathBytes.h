#ifndef TRUNNION_HOST_TOOLPATH_PATH_BYTES_H
#define TRUNNION_HOST_TOOLPATH_PATH_BYTES_H

#include <cstddef>
#include <vector>

#include "text/Bytes.h"
#include "toolpath/PathWindow.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// A path as bytes, from rank to rank: all but its points, which go along with what is asked of
/// them, and its warnings, which have been told.
void PutFrame(ByteWriter& bytes, const Toolpath& path);
bool TakeFrame(ByteReader& bytes, Toolpath& path);

/// Successive points of a path, without the path.
struct PathPart
{
    std::vector<ToolPoint> points;
    std::size_t first{0};
    std::size_t ofWhole{0}; //!< how many points the path has

    PathWindow Window() const { return {points.data(), first, first + points.size(), ofWhole}; }
};

PathPart PartOf(const PathWindow& path, std::size_t first, std::size_t end);
void Put(ByteWriter& bytes, const PathPart& part);
bool Take(ByteReader& bytes, PathPart& part);

} // namespace host

#endif
