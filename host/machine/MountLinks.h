#ifndef TRUNNION_HOST_MACHINE_MOUNT_LINKS_H
#define TRUNNION_HOST_MACHINE_MOUNT_LINKS_H

#include <optional>
#include <string>

namespace host
{

/// The links of a URDF that stand for the mounts of a machine. A machine in TOML has its own.
struct MountLinks
{
    std::optional<std::string> tool; //!< its z axis points from the tool's end to its shank
    std::optional<std::string> part;
};

} // namespace host

#endif
