#ifndef TRUNNION_HOST_PLANNER_PATH_TARGETS_H
#define TRUNNION_HOST_PLANNER_PATH_TARGETS_H

#include <cstddef>
#include <utility>
#include <vector>

#include "solve/PointSolver.h"
#include "toolpath/PathWindow.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// What the points of a path, and the way between them, ask of the tool.
class PathTargets
{
  public:
    /// @param ofXAxes of the tool, one for each point of the window, where the whole orientation
    /// counts; empty where position and direction do
    explicit PathTargets(const PathWindow& ofPoints, std::vector<Vec3> ofXAxes = {})
        : points(ofPoints), xAxes(std::move(ofXAxes))
    {}

    const PathWindow& Points() const { return points; }
    const ToolPoint& PointAt(std::size_t point) const { return points[point]; }
    CutterLocation LocationAt(std::size_t point) const;
    PathTarget At(std::size_t point) const;
    /// On the straight way to `point` from the point before it, at `share` of it.
    PathTarget Towards(std::size_t point, double share) const;
    bool FixWholeOrientation() const { return !xAxes.empty(); }

  private:
    const Vec3& XAxisAt(std::size_t point) const { return xAxes[point - points.FirstPoint()]; }

    PathWindow points;
    std::vector<Vec3> xAxes;
};

} // namespace host

#endif
