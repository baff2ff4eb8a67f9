#ifndef TRUNNION_HOST_MOTION_TOLERANCES_H
#define TRUNNION_HOST_MOTION_TOLERANCES_H

#include "geometry/Units.h"

namespace host
{

/// How far the tool may stray from the straight way between two points of the path.
struct Tolerances
{
    double linear{0.01};    //!< [length]
    double angle_deg{0.05}; //!< of the tool's direction
};

/// A hundredth of a millimetre, half a thousandth of an inch: what finishing asks for.
constexpr Tolerances DefaultTolerances(LengthUnit unit)
{
    constexpr double kInchLinear = 0.0005;
    return unit == LengthUnit::Inch ? Tolerances{kInchLinear, Tolerances{}.angle_deg}
                                    : Tolerances{};
}

} // namespace host

#endif
