#ifndef TRUNNION_HOST_APP_PATH_OPTIONS_H
#define TRUNNION_HOST_APP_PATH_OPTIONS_H

#include <filesystem>
#include <optional>

#include "toolpath/ToolpathFile.h"

namespace host
{

/// The toolpath that a command works on, as its user names it.
struct PathOptions
{
    std::filesystem::path file;
    std::optional<ToolpathFormat> format; //!< nothing: that which the file's name says
};

} // namespace host

#endif
