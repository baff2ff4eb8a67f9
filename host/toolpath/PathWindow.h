#ifndef TRUNNION_HOST_TOOLPATH_PATH_WINDOW_H
#define TRUNNION_HOST_TOOLPATH_PATH_WINDOW_H

#include <cstddef>

#include "toolpath/Toolpath.h"

namespace host
{

/// Successive points of a path under the numbers that they have in it: all of them, or those that
/// the work at hand needs. The points outlive the window.
class PathWindow
{
  public:
    /// The whole path.
    explicit PathWindow(const Toolpath& path)
        : PathWindow(path.points.data(), 0, path.points.size(), path.points.size())
    {}
    /// @param points that number `first` and those behind it, up to `end`
    /// @param ofWhole how many points the path has
    PathWindow(const ToolPoint* points, std::size_t first, std::size_t end, std::size_t ofWhole)
        : begin(points), firstPoint(first), endPoint(end), numPoints(ofWhole)
    {}

    std::size_t FirstPoint() const { return firstPoint; }
    /// Of the path, not the window.
    std::size_t NumPoints() const { return numPoints; }
    bool Has(std::size_t point) const { return firstPoint <= point && point < endPoint; }
    /// @param point one that the window has
    const ToolPoint& operator[](std::size_t point) const { return begin[point - firstPoint]; }

  private:
    const ToolPoint* begin;
    std::size_t firstPoint;
    std::size_t endPoint;
    std::size_t numPoints;
};

} // namespace host

#endif
