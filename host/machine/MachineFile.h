#ifndef TRUNNION_HOST_MACHINE_MACHINE_FILE_H
#define TRUNNION_HOST_MACHINE_MACHINE_FILE_H

#include <string>
#include <string_view>

#include "machine/MachineDescription.h"

namespace host
{

/// Reads a machine from TOML text. `file` is what messages call it. Throws InputError at the first
/// thing that is wrong.
MachineDescription ReadMachine(std::string_view text, const std::string& file);

} // namespace host

#endif
