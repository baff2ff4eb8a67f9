#ifndef TRUNNION_HOST_MACHINE_AXIS_TEXT_H
#define TRUNNION_HOST_MACHINE_AXIS_TEXT_H

#include <string>
#include <string_view>

#include "machine/LoadedMachine.h"

// Axis values as people read and write them.
namespace host
{

/// The units that values are shown in.
struct ShownUnits
{
    LengthUnit length{LengthUnit::Millimetre};
    AngleUnit angle{AngleUnit::Degree};
};

double Shown(const Axis& axis, double value, const ShownUnits& units);
/// The value that is shown as `shown`.
double FromShown(const Axis& axis, double shown, const ShownUnits& units);
std::string_view Symbol(const Axis& axis, const ShownUnits& units);

/// "A 47.3 deg"
std::string ValueText(const Axis& axis, double value, const ShownUnits& units);
/// "limits -120 to 30", or "unlimited"
std::string LimitsText(const Axis& axis, const ShownUnits& units);

} // namespace host

#endif
