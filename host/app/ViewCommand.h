#ifndef TRUNNION_HOST_APP_VIEW_COMMAND_H
#define TRUNNION_HOST_APP_VIEW_COMMAND_H

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

#include "app/ExitCode.h"
#include "app/MachineOptions.h"
#include "app/PageHtml.h"

namespace host
{

struct ViewOptions
{
    MachineOptions machine;
    std::optional<std::filesystem::path> output; //!< nothing: named after the machine's file, here
    BuiltPage page;
    std::string version; //!< of the program
};

/// Writes a page on which a machine can be looked at and moved. Throws InputError for input that
/// stops it.
ExitCode View(const ViewOptions& options, std::ostream& out);

} // namespace host

#endif
