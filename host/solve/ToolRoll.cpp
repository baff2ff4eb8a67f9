#include "solve/ToolRoll.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "geometry/CutterLocation.h"
#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "solve/SampledSolver.h"

namespace host
{

namespace
{

/// Half the angle of the cone about the reference: at its edge the part of the reference across the
/// tool swings four times as fast as the tool.
constexpr double kCone = ToRadians(15.0);

std::optional<Vec3> DirectionAcross(const Vec3& vector, const Vec3& direction)
{
    return Normalised(vector - Dot(vector, direction) * direction);
}

Vec3 Across(const Vec3& vector, const Vec3& direction)
{
    return DirectionAcross(vector, direction).value_or(Column(FrameOf(Vec3{}, direction), 0));
}

/// An x axis along with the tool's direction; errors of rounding do not add up.
Vec3 CarriedAxis(const Vec3& xAxis, const Vec3& from, const Vec3& to)
{
    return Across(Carried(xAxis, from, to), to);
}

/// From one vector across `direction` to another, about it, from -pi to pi.
double AngleAbout(const Vec3& direction, const Vec3& from, const Vec3& to)
{
    return std::atan2(Dot(Cross(from, to), direction), Dot(from, to));
}

/// Between `axis`, pointing either way, and the nearest direction of the turn `from` one `to`
/// another.
double AngleToTurn(const Vec3& axis, const Vec3& from, const Vec3& to)
{
    const auto toEnd = [&](const Vec3& direction) {
        const double angle = AngleBetween(axis, direction);
        return std::min(angle, kPi - angle);
    };
    const double toEnds = std::min(toEnd(from), toEnd(to));
    const std::optional<Vec3> normal = Normalised(Cross(from, to));
    if (!normal) {
        return toEnds;
    }
    Vec3 nearest = axis - Dot(axis, *normal) * *normal;
    if (Dot(nearest, from + to) < 0.0) {
        nearest = -1.0 * nearest;
    }
    const bool isBetween =
        Dot(Cross(from, nearest), *normal) >= 0.0 && Dot(Cross(nearest, to), *normal) >= 0.0;
    return isBetween ? std::asin(std::min(std::fabs(Dot(axis, *normal)), 1.0)) : toEnds;
}

/// The x axes of a run by the reference.
class FixedRoll
{
  public:
    FixedRoll(const Toolpath& ofPath, const Vec3& toReference)
        : path(ofPath), reference(toReference)
    {}

    void Fill(const Run& run, std::vector<Vec3>& xAxes) const
    {
        std::size_t anchor = run.begin;
        while (anchor < run.end && IsInCone(Direction(anchor))) {
            ++anchor;
        }
        if (anchor == run.end) { // nowhere outside the cone
            anchor = run.begin;
        }
        xAxes[anchor] = Across(reference, Direction(anchor));
        for (std::size_t i = anchor; i-- > run.begin;) {
            xAxes[i] = CarriedAxis(xAxes[i + 1], Direction(i + 1), Direction(i));
        }
        double gained = 0.0;
        for (std::size_t i = anchor + 1; i < run.end; ++i) {
            xAxes[i] = Next(xAxes[i - 1], Direction(i - 1), Direction(i), gained);
        }
    }

  private:
    const Vec3& Direction(std::size_t point) const { return path.points[point].direction; }

    bool IsInCone(const Vec3& direction) const
    {
        return AngleToTurn(reference, direction, direction) < kCone;
    }

    /// @param gained the angle of the axis against the reference, outside the cone
    Vec3 Next(const Vec3& last, const Vec3& from, const Vec3& to, double& gained) const
    {
        if (AngleToTurn(reference, from, to) >= kCone) {
            return Turned(Across(reference, to), to, gained);
        }
        const Vec3 carried = CarriedAxis(last, from, to);
        if (!IsInCone(to)) {
            gained = AngleAbout(to, Across(reference, to), carried);
        }
        return carried;
    }

    const Toolpath& path;
    Vec3 reference;
};

/// The feed at a point of a run across the tool there, if it has one worth the name.
std::optional<Vec3> FeedAcross(const Toolpath& path, const Run& run, std::size_t point)
{
    constexpr double kLeastAcross = 0.1; // of the feed: about six degrees off the tool
    const std::size_t before = point > run.begin ? point - 1 : point;
    const std::size_t after = point + 1 < run.end ? point + 1 : point;
    const auto feed = Normalised(path.points[after].position - path.points[before].position);
    if (!feed) {
        return std::nullopt;
    }
    const Vec3& direction = path.points[point].direction;
    const Vec3 across = *feed - Dot(*feed, direction) * direction;
    return Length(across) >= kLeastAcross ? Normalised(across) : std::nullopt;
}

/// False where no point of the run has a feed across the tool.
bool FillAlongFeed(const Toolpath& path, const Run& run, std::vector<Vec3>& xAxes)
{
    std::optional<std::size_t> first;
    for (std::size_t i = run.begin; i < run.end; ++i) {
        if (const auto feed = FeedAcross(path, run, i)) {
            xAxes[i] = *feed;
            first = first.value_or(i);
        } else if (first) {
            xAxes[i] =
                CarriedAxis(xAxes[i - 1], path.points[i - 1].direction, path.points[i].direction);
        }
    }
    for (std::size_t i = first.value_or(run.begin); i-- > run.begin;) {
        xAxes[i] =
            CarriedAxis(xAxes[i + 1], path.points[i + 1].direction, path.points[i].direction);
    }
    return first.has_value();
}

} // namespace

bool HasOpenRoll(const PointSolver& solver)
{
    constexpr std::size_t kNumbersOfTarget = 5; // position and direction
    return solver.FreeAxes().size() > kNumbersOfTarget &&
           solver.FreeRotaryAxes().size() > kMostSampledByHybrid;
}

std::vector<Run> RunsOf(const Toolpath& path)
{
    std::vector<Run> runs;
    for (std::size_t i = 0; i < path.points.size(); ++i) {
        if (i == 0 || path.points[i].isRapid) {
            runs.push_back({i, i});
        }
        runs.back().end = i + 1;
    }
    return runs;
}

std::vector<Vec3> ToolXAxes(const Toolpath& path, const ToolRoll& roll)
{
    std::vector<Vec3> xAxes(path.points.size());
    const FixedRoll fixed(path, roll.reference);
    for (const Run& run : RunsOf(path)) {
        if (roll.policy != ToolRoll::Policy::Feed || !FillAlongFeed(path, run, xAxes)) {
            fixed.Fill(run, xAxes);
        }
    }
    return xAxes;
}

Vec3 XAxisBetween(const Orientation& from, const Orientation& to, double share)
{
    const Vec3 direction =
        Between({Vec3{}, from.direction}, {Vec3{}, to.direction}, share).direction;
    const Vec3 arriving = CarriedAxis(from.xAxis, from.direction, to.direction);
    const double roll = AngleAbout(to.direction, arriving, to.xAxis);
    return Across(Turned(Carried(from.xAxis, from.direction, direction), direction, share * roll),
                  direction);
}

Vec3 Carried(const Vec3& vector, const Vec3& from, const Vec3& to)
{
    // Below this what is left of the plane of the turn is mostly rounding.
    constexpr double kLeastAngle = 1e-12;
    const Vec3 normal = Cross(from, to);
    const bool hasPlane = Dot(from, to) > 0.0 || Length(normal) > kLeastAngle;
    const Vec3 axis = hasPlane ? Normalised(normal).value_or(from)
                               : Cross(from, Column(FrameOf(Vec3{}, from), 0));
    return Turned(vector, axis, AngleBetween(from, to));
}

Vec3 Turned(const Vec3& vector, const Vec3& axis, double angle)
{
    const double along = Dot(axis, vector) * (1.0 - std::cos(angle));
    return std::cos(angle) * vector + std::sin(angle) * Cross(axis, vector) + along * axis;
}

} // namespace host
