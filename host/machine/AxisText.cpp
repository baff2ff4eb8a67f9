#include "machine/AxisText.h"

#include "text/Numbers.h"

namespace host
{

double Shown(const Axis& axis, double value, const ShownUnits& units)
{
    return axis.isRotary && units.angle == AngleUnit::Degree ? ToDegrees(value) : value;
}

double FromShown(const Axis& axis, double shown, const ShownUnits& units)
{
    return axis.isRotary && units.angle == AngleUnit::Degree ? ToRadians(shown) : shown;
}

std::string_view Symbol(const Axis& axis, const ShownUnits& units)
{
    return axis.isRotary ? Symbol(units.angle) : Symbol(units.length);
}

std::string ValueText(const Axis& axis, double value, const ShownUnits& units)
{
    return axis.name + " " + DecimalText(Shown(axis, value, units)) + " " +
           std::string(Symbol(axis, units));
}

std::string LimitsText(const Axis& axis, const ShownUnits& units)
{
    if (axis.IsUnlimited()) {
        return "unlimited";
    }
    return "limits " + DecimalText(Shown(axis, axis.joint->GetLowBound(), units)) + " to " +
           DecimalText(Shown(axis, axis.joint->GetHiBound(), units));
}

} // namespace host
