#ifndef TRUNNION_HOST_TOOLPATH_TOOLPATH_FILE_H
#define TRUNNION_HOST_TOOLPATH_TOOLPATH_FILE_H

#include <filesystem>
#include <optional>
#include <string_view>

#include "geometry/Units.h"
#include "toolpath/Toolpath.h"

namespace host
{

enum class ToolpathFormat {
    Apt, //!< cutter locations in the APT family's text form
    Csv, //!< a table
    Nc   //!< an NC program with tool vectors
};

/// The format that `name` stands for: apt, csv or nc, in capitals or not.
std::optional<ToolpathFormat> FindToolpathFormat(std::string_view name);
/// By the name's end: .csv is a table; .nc, .ngc, .tap, .gcode, .mpf and .cnc are NC programs; all
/// others are cutter locations.
ToolpathFormat ToolpathFormatOf(const std::filesystem::path& path);

/// Reads a toolpath of this format, or of that which its name says. Lengths come out in
/// `lengthUnit`, which is also what a file that names no unit is taken to be in.
Toolpath ReadToolpath(const std::filesystem::path& path, std::optional<ToolpathFormat> format,
                      LengthUnit lengthUnit);

} // namespace host

#endif
