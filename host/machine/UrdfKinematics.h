#ifndef TRUNNION_HOST_MACHINE_URDF_KINEMATICS_H
#define TRUNNION_HOST_MACHINE_URDF_KINEMATICS_H

#include <map>
#include <string>

#include <IkXformMat.h>

#include "geometry/Vec3.h"
#include "machine/MachineDescription.h"
#include "machine/UrdfDocument.h"

namespace host
{

enum class UrdfMotion { Fixed, Rotary, Linear };

/// A joint as URDF has it: its frame is that of its child link. Metres and radians.
struct UrdfJoint
{
    UrdfMotion motion{UrdfMotion::Fixed};
    std::string parentLink;
    std::string childLink;
    IkXformMat parentToJoint; //!< with the joint at 0 [m]
    Vec3 axis{};              //!< in the joint's frame; length 1, unless it is fixed
    Range limits;             //!< [m] or [rad]
};

/// A frame as URDF writes it down: its origin, and its turns about the fixed x, y and z axes one
/// after the other [rad].
IkXformMat FrameOfOrigin(const Vec3& xyz, const Vec3& rpy);

/// The joints by name. Throws InputError with what the URDF library has to say when it does not
/// take the document.
std::map<std::string, UrdfJoint> UrdfJointsOf(const UrdfDocument& document);

} // namespace host

#endif
