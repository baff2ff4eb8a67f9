#ifndef TRUNNION_HOST_PLANNER_PATH_TARGETS_H
#define TRUNNION_HOST_PLANNER_PATH_TARGETS_H

#include <cstddef>
#include <vector>

#include "solve/PointSolver.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// What the points of a path, and the way between them, ask of the tool.
class PathTargets
{
  public:
    /// Position and direction of the tool count.
    explicit PathTargets(const Toolpath& ofPath) : path(ofPath) {}
    /// The whole orientation counts: an x axis of the tool for each point.
    PathTargets(const Toolpath& ofPath, std::vector<Vec3> ofXAxes)
        : path(ofPath), xAxes(std::move(ofXAxes))
    {}

    const Toolpath& Path() const { return path; }
    const ToolPoint& PointAt(std::size_t point) const { return path.points[point]; }
    CutterLocation LocationAt(std::size_t point) const;
    PathTarget At(std::size_t point) const;
    /// On the straight way to `point` from the point before it, at `share` of it.
    PathTarget Towards(std::size_t point, double share) const;
    bool FixWholeOrientation() const { return !xAxes.empty(); }

  private:
    const Toolpath& path;
    std::vector<Vec3> xAxes; // empty where the turn about the tool does not count
};

} // namespace host

#endif
