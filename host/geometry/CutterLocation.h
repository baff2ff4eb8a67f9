#ifndef TRUNNION_HOST_GEOMETRY_CUTTER_LOCATION_H
#define TRUNNION_HOST_GEOMETRY_CUTTER_LOCATION_H

#include "geometry/Vec3.h"

namespace host
{

/// The tool's end and direction (of length 1) in part coordinates.
struct CutterLocation
{
    Vec3 position{};
    Vec3 direction{};
};

/// The location at `share` (0 to 1) of the straight way from `from` to `to`: the position evenly
/// along the line, the direction evenly along the great circle. Between opposite directions, where
/// there is no one great circle, always the same one is taken.
CutterLocation Between(const CutterLocation& from, const CutterLocation& to, double share);

struct Deviation
{
    double position{0.0};  //!< [length]
    double direction{0.0}; //!< [rad]
};

/// How far `tool` is from the straight way between two locations: from that place of the way for
/// which the larger of position / `linear` and direction / `angle` is least, found to a billionth
/// of the two. When the tool passes a place does not count, only whether it keeps to the way.
/// @param linear [length], @param angle [rad]: both greater than 0
Deviation DeviationFrom(const CutterLocation& from, const CutterLocation& to,
                        const CutterLocation& tool, double linear, double angle);

} // namespace host

#endif
