#include "geometry/CutterLocation.h"

#include <algorithm>
#include <optional>

#include "geometry/Frame.h"
#include "geometry/Units.h"

namespace host
{

namespace
{

/// Exact at both ends, never beyond them, and finite for finite ends.
double Between(double from, double to, double share)
{
    if ((from < 0.0) != (to < 0.0)) {
        return (1.0 - share) * from + share * to;
    }
    return share >= 1.0 ? to : from + share * (to - from);
}

Vec3 Between(const Vec3& from, const Vec3& to, double share)
{
    return {Between(from[0], to[0], share), Between(from[1], to[1], share),
            Between(from[2], to[2], share)};
}

/// A quarter of the way from one position to another: it is finite, as is its length, wherever both
/// ends are.
Vec3 QuarterWay(const Vec3& from, const Vec3& to)
{
    return 0.25 * to - 0.25 * from;
}

double Distance(const Vec3& from, const Vec3& to)
{
    return 4.0 * Length(QuarterWay(from, to));
}

/// The shorter part of the great circle between two directions.
class Arc
{
  public:
    Arc(const Vec3& fromDirection, const Vec3& to)
        : from(fromDirection), turn(AngleBetween(from, to)), across(AcrossTowards(to))
    {}

    double Turn() const { return turn; } //!< [rad], 0 to pi

    Vec3 At(double share) const
    {
        const double angle = share * turn;
        const Vec3 direction = std::cos(angle) * from + std::sin(angle) * across;
        return Normalised(direction).value_or(from);
    }

    /// The turn from the beginning to the place of the whole circle that is nearest to `direction`
    /// [rad], -pi to pi.
    double TurnTo(const Vec3& direction) const
    {
        return std::atan2(Dot(direction, across), Dot(direction, from));
    }

  private:
    /// A direction of length 1 across `from`, in the plane of the turn to `to`.
    Vec3 AcrossTowards(const Vec3& to) const
    {
        // Below this what is left of the plane is mostly rounding.
        constexpr double kLeastAngle = 1e-12;
        const Vec3 normal = Cross(from, to);
        const bool hasPlane = Dot(from, to) > 0.0 || Length(normal) > kLeastAngle;
        const auto unitNormal = hasPlane ? Normalised(normal) : std::nullopt;
        return unitNormal ? Cross(*unitNormal, from) : Column(FrameOf(Vec3{}, from), 0);
    }

    Vec3 from;
    double turn;
    Vec3 across;
};

/// The straight way between two locations.
class Way
{
  public:
    Way(const CutterLocation& wayFrom, const CutterLocation& wayTo)
        : from(wayFrom.position), to(wayTo.position), arc(wayFrom.direction, wayTo.direction)
    {}

    CutterLocation At(double share) const { return {Between(from, to, share), arc.At(share)}; }
    double Line() const { return Distance(from, to); } //!< [length]
    double Turn() const { return arc.Turn(); }         //!< [rad]

    /// Where the position is nearest to `position`.
    double NearestShare(const Vec3& position) const
    {
        const Vec3 line = QuarterWay(from, to);
        const auto along = Normalised(line);
        if (!along) {
            return 0.0;
        }
        return std::clamp(Dot(QuarterWay(from, position), *along) / Length(line), 0.0, 1.0);
    }

    /// Where the direction is nearest to `direction`.
    double NearestShareOfTurn(const Vec3& direction) const
    {
        const double turnTo = arc.TurnTo(direction);
        if (turnTo >= 0.0) {
            return turnTo < Turn() ? turnTo / Turn() : 1.0;
        }
        return -turnTo <= kPi - Turn() / 2.0 ? 0.0 : 1.0;
    }

    /// Where the direction is farthest from `direction`: to both sides of it the angle shrinks.
    /// Nothing when that is an end of the way.
    std::optional<double> FarthestShareOfTurn(const Vec3& direction) const
    {
        const double turnTo = arc.TurnTo(direction) + kPi;
        return turnTo > 0.0 && turnTo < Turn() ? std::optional(turnTo / Turn()) : std::nullopt;
    }

  private:
    Vec3 from;
    Vec3 to;
    Arc arc;
};

/// A place of a way and how far a tool is from it.
struct Place
{
    double share;
    Deviation deviation;
    double linear; //!< the position's deviation, in units of its tolerance
    double angle;  //!< the direction's

    double Worst() const { return std::max(linear, angle); }
    double Balance() const { return linear - angle; }
};

/// Closes in on the share between two where the balance passes 0 from below: false position, where
/// an end that stays a second time counts for half (the Illinois method).
class Bracket
{
  public:
    Bracket(const Place& below, const Place& above)
        : low(below.share), high(above.share), lowBalance(below.Balance()),
          highBalance(above.Balance())
    {}

    double Middle() const
    {
        const double part = lowBalance / (lowBalance - highBalance);
        return low + (high - low) * (part > 0.0 && part < 1.0 ? part : 0.5);
    }

    void Take(const Place& middle)
    {
        const bool isLow = middle.Balance() <= 0.0;
        (isLow ? low : high) = middle.share;
        (isLow ? lowBalance : highBalance) = middle.Balance();
        if (wasLow == isLow) {
            (isLow ? highBalance : lowBalance) /= 2.0;
        }
        wasLow = isLow;
    }

  private:
    double low;
    double high;
    double lowBalance;
    double highBalance;
    std::optional<bool> wasLow; //!< the place that was taken last
};

/// The search for the place of a way from which a tool is the least far away.
class Search
{
  public:
    Search(const Way& onWay, const CutterLocation& ofTool, double linear, double angle)
        : way(onWay), tool(ofTool), linearUnit(linear), angleUnit(angle)
    {}

    Place Run() const
    {
        const Place onTurn = At(way.NearestShareOfTurn(tool.direction));
        if (way.Line() <= kAccuracy * linearUnit) {
            return onTurn;
        }
        const Place onLine = At(way.NearestShare(tool.position));
        if (onLine.Balance() >= 0.0 || way.Turn() <= kAccuracy * angleUnit) {
            return onLine;
        }
        if (onTurn.Balance() <= 0.0) {
            return onTurn;
        }
        const std::optional<double> farthest = way.FarthestShareOfTurn(tool.direction);
        if (!farthest) {
            return Least(onLine, onTurn);
        }
        // The angle is least at both ends; behind the farthest place it comes down from there.
        const Place hill = At(*farthest);
        const bool isBefore = onLine.share < *farthest;
        const Place first = Least(isBefore ? onLine : hill, At(0.0));
        const Place second = Least(isBefore ? hill : onLine, At(1.0));
        return first.Worst() <= second.Worst() ? first : second;
    }

  private:
    static constexpr double kAccuracy = 1e-9; //!< in units of the tolerances

    Place At(double share) const
    {
        const CutterLocation place = way.At(share);
        const Deviation deviation{Distance(place.position, tool.position),
                                  AngleBetween(tool.direction, place.direction)};
        return {share, deviation, deviation.position / linearUnit, deviation.direction / angleUnit};
    }

    static bool IsBalanced(const Place& place)
    {
        return std::fabs(place.Balance()) <= kAccuracy * std::max(1.0, place.Worst());
    }

    /// The best place between two when the position's deviation grows from `low` to `high` and the
    /// direction's shrinks: an end, or else where they meet.
    Place Least(const Place& low, const Place& high) const
    {
        if (low.Balance() >= 0.0) {
            return low;
        }
        if (high.Balance() <= 0.0) {
            return high;
        }
        constexpr int kMostSteps = 60;
        Bracket bracket(low, high);
        Place best = low.Worst() <= high.Worst() ? low : high;
        for (int i = 0; i < kMostSteps && !IsBalanced(best); ++i) {
            const Place middle = At(bracket.Middle());
            bracket.Take(middle);
            if (middle.Worst() < best.Worst()) {
                best = middle;
            }
        }
        return best;
    }

    const Way& way;
    const CutterLocation& tool;
    double linearUnit;
    double angleUnit;
};

} // namespace

CutterLocation Between(const CutterLocation& from, const CutterLocation& to, double share)
{
    return Way(from, to).At(share);
}

Deviation DeviationFrom(const CutterLocation& from, const CutterLocation& to,
                        const CutterLocation& tool, double linear, double angle)
{
    const Way way(from, to);
    return Search(way, tool, linear, angle).Run().deviation;
}

} // namespace host
