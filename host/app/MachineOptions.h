#ifndef TRUNNION_HOST_APP_MACHINE_OPTIONS_H
#define TRUNNION_HOST_APP_MACHINE_OPTIONS_H

#include <filesystem>
#include <optional>

#include "machine/MountLinks.h"

namespace host
{

/// The machine that a command works on, as its user names it.
struct MachineOptions
{
    std::filesystem::path file;
    MountLinks links;          //!< of a URDF
    std::optional<int> stream; //!< nothing: the first
};

} // namespace host

#endif
