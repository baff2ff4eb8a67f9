#ifndef TRUNNION_HOST_MACHINE_URDF_VISUALS_H
#define TRUNNION_HOST_MACHINE_URDF_VISUALS_H

#include <optional>
#include <string>
#include <vector>

#include "geometry/Vec3.h"
#include "machine/MachineDescription.h"
#include "machine/UrdfNumbers.h"
#include "text/Located.h"
#include "text/XmlText.h"

namespace host
{

/// What is seen of a link.
struct UrdfVisual
{
    Located<std::string> link;
    Shape shape{Shape::Box};
    std::vector<double> size; //!< as its shape wants it [m]
    Vec3 xyz{};               //!< in the link's frame [m]
    Vec3 rpy{};               //!< turns about the link's axes x, y and z, one after the other [rad]
    std::optional<Color> color;
};

/// The boxes, cylinders and spheres of all links; other shapes are left out. A color may stand with
/// the visual, or under the name of its material anywhere in the file. Throws InputError for a
/// shape whose numbers are wrong or missing.
/// @param root of a file whose links all have names
std::vector<UrdfVisual> UrdfVisualsOf(const XmlElement& root, const UrdfNumbers& numbers);

} // namespace host

#endif
