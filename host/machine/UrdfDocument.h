#ifndef TRUNNION_HOST_MACHINE_URDF_DOCUMENT_H
#define TRUNNION_HOST_MACHINE_URDF_DOCUMENT_H

#include <string>
#include <string_view>
#include <vector>

#include "machine/UrdfVisuals.h"
#include "text/Located.h"

namespace host
{

/// A URDF that is sound: its links and joints make one tree, every joint is of a kind that this
/// program moves or leaves fixed, and all its numbers are finite.
struct UrdfDocument
{
    std::string file;
    Located<std::string> robot;
    std::vector<Located<std::string>> links;  //!< in the file's order
    std::vector<Located<std::string>> joints; //!< in the file's order
    std::string kinematics;                   //!< the links and joints alone, a URDF again
    std::vector<UrdfVisual> visuals;          //!< in the file's order
};

/// Throws InputError at the first thing that is wrong. What neither moves nor is looked
/// at (collision, inertial and other elements) may say anything.
UrdfDocument CheckUrdf(std::string_view text, const std::string& file);

} // namespace host

#endif
