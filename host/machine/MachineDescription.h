#ifndef TRUNNION_HOST_MACHINE_MACHINE_DESCRIPTION_H
#define TRUNNION_HOST_MACHINE_MACHINE_DESCRIPTION_H

#include <array>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "geometry/Units.h"
#include "geometry/Vec3.h"
#include "text/Located.h"

// A machine as a file describes it, each value sound by itself; whether they fit together is for
// the assembly to say. Everything stands in machine coordinates with all axes at zero; lengths are
// in the machine's unit, angles in radians.
namespace host
{

/// What all axes hang on, where a parent is named.
constexpr std::string_view kBaseName = "base";

struct Range
{
    double low{-std::numeric_limits<double>::infinity()};
    double high{std::numeric_limits<double>::infinity()};
};

struct AxisDescription
{
    Located<std::string> name;
    Located<std::string> parent;
    bool isRotary{false};
    Vec3 direction{};    //!< of this body's motion for a positive value; length 1
    Vec3 point{};        //!< on the axis of a rotary one [length]
    Range limits;        //!< [length] or [rad]; infinite for an unlimited axis
    double initial{0.0}; //!< [length] or [rad]
    std::string word;
    int wordSign{1};
};

enum class MountKind { Tool, Part };

struct MountDescription
{
    Located<std::string> name;
    MountKind kind{MountKind::Tool};
    Located<std::string> parent;
    Vec3 origin{}; //!< [length]
    Vec3 zAxis{};  //!< length 1
    Vec3 xAxis{};  //!< across zAxis
};

enum class Shape {
    Box,      //!< size: along x, y and z, its middle at the origin
    Cylinder, //!< size: radius and length, this along z, its middle at the origin
    Sphere    //!< size: radius
};

using Color = std::array<double, 4>; //!< red, green, blue and opacity, 0 to 1

/// A body that is only looked at.
struct VisualDescription
{
    std::string name;
    Located<std::string> parent;
    Shape shape{Shape::Box};
    std::vector<double> size; //!< [length]
    Vec3 origin{};            //!< [length]
    Vec3 zAxis{};             //!< length 1
    Vec3 xAxis{};             //!< across zAxis
    std::optional<Color> color;
};

struct StreamDescription
{
    Located<int> id;
    Located<std::string> tool;
    Located<std::string> part;
};

struct MachineDescription
{
    std::string file;
    std::string name;
    LengthUnit length{LengthUnit::Millimetre};
    std::vector<AxisDescription> axes;
    std::vector<MountDescription> mounts;
    std::vector<VisualDescription> visuals;
    std::vector<StreamDescription> streams;
};

} // namespace host

#endif
