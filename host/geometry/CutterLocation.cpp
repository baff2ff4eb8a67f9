#include "geometry/CutterLocation.h"

#include <algorithm>

#include "geometry/Frame.h"
#include "geometry/Units.h"

namespace host
{

namespace
{

/// A direction of length 1 across `from`, in the plane of the turn to `to`.
Vec3 AcrossTowards(const Vec3& from, const Vec3& to)
{
    const Vec3 across = to - Dot(from, to) * from;
    const auto normalised = Normalised(across);
    return normalised && Dot(*normalised, to) > 0.0 ? *normalised
                                                    : Column(FrameOf(Vec3{}, from), 0);
}

/// Where along the line the nearest place to `position` is.
double NearestShare(const Vec3& from, const Vec3& to, const Vec3& position)
{
    const Vec3 way = to - from;
    const double square = Dot(way, way);
    return square > 0.0 ? std::clamp(Dot(position - from, way) / square, 0.0, 1.0) : 0.0;
}

/// Where along the great circle the nearest place to `direction` is.
double NearestShareOfTurn(const Vec3& from, const Vec3& to, const Vec3& direction)
{
    const double turn = AngleBetween(from, to);
    if (!(turn > 0.0)) {
        return 0.0;
    }
    const Vec3 across = AcrossTowards(from, to);
    const double angle = std::atan2(Dot(direction, across), Dot(direction, from));
    if (angle >= 0.0) {
        return std::min(angle / turn, 1.0);
    }
    return Dot(direction, from) >= Dot(direction, to) ? 0.0 : 1.0;
}

} // namespace

CutterLocation Between(const CutterLocation& from, const CutterLocation& to, double share)
{
    const Vec3 position = from.position + share * (to.position - from.position);
    const double turn = AngleBetween(from.direction, to.direction);
    if (!(turn > 0.0)) {
        return {position, from.direction};
    }
    const Vec3 across = AcrossTowards(from.direction, to.direction);
    const Vec3 direction =
        std::cos(share * turn) * from.direction + std::sin(share * turn) * across;
    return {position, Normalised(direction).value_or(from.direction)};
}

Deviation DeviationFrom(const CutterLocation& from, const CutterLocation& to,
                        const CutterLocation& tool, double linear, double angle)
{
    const auto at = [&](double share) {
        const CutterLocation place = Between(from, to, share);
        return Deviation{Length(tool.position - place.position),
                         AngleBetween(tool.direction, place.direction)};
    };
    const auto ratio = [&](const Deviation& deviation) {
        return std::max(deviation.position / linear, deviation.direction / angle);
    };
    double low = NearestShare(from.position, to.position, tool.position);
    const Deviation onLine = at(low);
    if (onLine.direction / angle <= onLine.position / linear) {
        return onLine; // the position, at its least here, is what counts
    }
    double high = NearestShareOfTurn(from.direction, to.direction, tool.direction);
    const Deviation onTurn = at(high);
    if (onTurn.position / linear <= onTurn.direction / angle) {
        return onTurn;
    }
    // From low to high the position's share of the worst grows and the direction's shrinks: the
    // worst is least where they meet.
    constexpr int kHalvings = 30;
    Deviation best = ratio(onLine) <= ratio(onTurn) ? onLine : onTurn;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = low + (high - low) / 2.0;
        const Deviation there = at(middle);
        if (ratio(there) < ratio(best)) {
            best = there;
        }
        (there.position / linear <= there.direction / angle ? low : high) = middle;
    }
    return best;
}

} // namespace host
