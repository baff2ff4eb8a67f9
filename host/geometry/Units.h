#ifndef TRUNNION_HOST_GEOMETRY_UNITS_H
#define TRUNNION_HOST_GEOMETRY_UNITS_H

#include <string_view>

// Inside the program lengths are in the machine's unit and angles in radians; degrees exist where
// people read and write.
namespace host
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kTurn = 2.0 * kPi;
constexpr double kRadiansPerDegree = kPi / 180.0;

enum class AngleUnit { Degree, Radian };
enum class LengthUnit { Millimetre, Inch };

constexpr double ToRadians(double angle_deg)
{
    return angle_deg * kRadiansPerDegree;
}

constexpr double ToDegrees(double angle)
{
    return angle / kRadiansPerDegree;
}

constexpr double Converted(double length, LengthUnit from, LengthUnit to)
{
    constexpr double kMillimetresPerInch = 25.4;
    if (from == to) {
        return length;
    }
    return to == LengthUnit::Millimetre ? length * kMillimetresPerInch
                                        : length / kMillimetresPerInch;
}

constexpr std::string_view Symbol(LengthUnit unit)
{
    return unit == LengthUnit::Millimetre ? "mm" : "inch";
}

constexpr std::string_view Symbol(AngleUnit unit)
{
    return unit == AngleUnit::Degree ? "deg" : "rad";
}

} // namespace host

#endif
