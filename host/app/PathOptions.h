#ifndef TRUNNION_HOST_APP_PATH_OPTIONS_H
#define TRUNNION_HOST_APP_PATH_OPTIONS_H

#include <filesystem>
#include <optional>
#include <ostream>

#include "geometry/Units.h"
#include "toolpath/Toolpath.h"
#include "toolpath/ToolpathFile.h"

namespace host
{

/// The toolpath that a command works on, as its user names it.
struct PathOptions
{
    std::filesystem::path file;
    std::optional<ToolpathFormat> format; //!< nothing: that which the file's name says
};

/// Reads that toolpath and passes on its warnings. Lengths come out in `unit`.
Toolpath ReadPath(const PathOptions& options, LengthUnit unit, std::ostream& warnings);

} // namespace host

#endif
