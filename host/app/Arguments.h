#ifndef TRUNNION_HOST_APP_ARGUMENTS_H
#define TRUNNION_HOST_APP_ARGUMENTS_H

#include <CLI/CLI.hpp>

#include "app/MachineOptions.h"
#include "app/PathOptions.h"

// What the commands' command lines have in common.
namespace host
{

inline constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0    everything was done\n"
    "  1    some points of the path were not reached, or a joint table does not hold\n"
    "  2    bad input or usage, or a file that cannot be read or "
    "written\n"
    "  130  interrupted\n";

/// Every command that works on a machine asks for it in the same words.
void AddMachine(CLI::App& command, MachineOptions& machine);
/// As above, for one that takes all its streams.
void AddWholeMachine(CLI::App& command, MachineOptions& machine);
/// And the same for toolpaths; the option is TOOLPATH itself.
CLI::Option* AddToolpath(CLI::App& command, PathOptions& path);

} // namespace host

#endif
