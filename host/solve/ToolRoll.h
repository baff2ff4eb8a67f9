#ifndef TRUNNION_HOST_SOLVE_TOOL_ROLL_H
#define TRUNNION_HOST_SOLVE_TOOL_ROLL_H

#include <cstddef>
#include <vector>

#include "geometry/Vec3.h"
#include "solve/PointSolver.h"
#include "toolpath/Toolpath.h"

// The turn of the tool about itself, which a toolpath leaves open and an arm has to choose.
namespace host
{

/// Whether a stream has axes enough to choose it: more than position and direction need, and so
/// many rotary ones that the hybrid solver does not sample them.
bool HasOpenRoll(const PointSolver& solver);

/// How the tool's x axis is chosen. A run is a point reached by a rapid, or the first one, and the
/// points cut from it on; the axis never jumps within a run unless the feed does.
struct ToolRoll
{
    enum class Policy {
        Fixed, //!< as near to the reference as the tool's direction lets it be
        Feed,  //!< along the feed
        Search //!< from `Fixed` by an angle for each run that the machine reaches best (RollSearch)
    };
    Policy policy{Policy::Fixed};
    Vec3 reference{1.0, 0.0, 0.0}; //!< part coordinates, length 1
};

/// Points of one run: `begin` up to `end`.
struct Run
{
    std::size_t begin{0};
    std::size_t end{0};
};
std::vector<Run> RunsOf(const Toolpath& path);

/// The tool's x axis at each point, of length 1 and across the tool; for `Search` that of `Fixed`.
///
/// `Fixed`: where the tool comes within a cone about the reference, in which the part of it that is
/// across the tool swings round fast, the axis is carried along without turning about the tool. The
/// angle that it has gained by then against the reference stays for the rest of the run.
///
/// `Feed`: the feed at a point is the way from the point before it to the one after it. Where that
/// is nothing, or along the tool, the axis is carried on from the point before, at the beginning of
/// a run back from the first point that has one; a run without any is `Fixed`.
std::vector<Vec3> ToolXAxes(const Toolpath& path, const ToolRoll& roll);

/// How a tool stands.
struct Orientation
{
    Vec3 direction{}; //!< length 1
    Vec3 xAxis{};     //!< across it, length 1
};

/// The x axis where the tool, on its straight way between two orientations, has come to `share` of
/// it: the turn about the tool goes evenly, the shorter way round.
Vec3 XAxisBetween(const Orientation& from, const Orientation& to, double share);

/// `vector` by the smallest rotation that turns `from` into `to`, both of length 1; between
/// opposite directions as `Between` of cutter locations goes.
Vec3 Carried(const Vec3& vector, const Vec3& from, const Vec3& to);

/// `vector` turned about `axis`, of length 1.
Vec3 Turned(const Vec3& vector, const Vec3& axis, double angle);

} // namespace host

#endif
