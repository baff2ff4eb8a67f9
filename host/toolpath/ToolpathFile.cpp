#include "toolpath/ToolpathFile.h"

#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "text/InputFile.h"
#include "toolpath/AptReader.h"
#include "toolpath/CsvReader.h"
#include "toolpath/NcReader.h"
#include "toolpath/PathText.h"

namespace host
{

std::optional<ToolpathFormat> FindToolpathFormat(std::string_view name)
{
    static const std::map<std::string, ToolpathFormat, std::less<>> formats{
        {"APT", ToolpathFormat::Apt}, {"CSV", ToolpathFormat::Csv}, {"NC", ToolpathFormat::Nc}};
    const auto found = formats.find(Capitals(name));
    return found == formats.end() ? std::nullopt : std::optional(found->second);
}

ToolpathFormat ToolpathFormatOf(const std::filesystem::path& path)
{
    static const std::set<std::string, std::less<>> programs{".CNC", ".GCODE", ".MPF",
                                                             ".NC",  ".NGC",   ".TAP"};
    const std::string extension = Capitals(path.extension().string());
    if (extension == ".CSV") {
        return ToolpathFormat::Csv;
    }
    return programs.find(extension) != programs.end() ? ToolpathFormat::Nc : ToolpathFormat::Apt;
}

Toolpath ReadToolpath(const std::filesystem::path& path, std::optional<ToolpathFormat> format,
                      LengthUnit lengthUnit)
{
    std::ifstream in = OpenInput(path);
    switch (format.value_or(ToolpathFormatOf(path))) {
    case ToolpathFormat::Csv:
        return ReadCsv(in, path.string());
    case ToolpathFormat::Nc:
        return ReadNc(in, path.string(), lengthUnit);
    case ToolpathFormat::Apt:
        break;
    }
    return ReadApt(in, path.string(), lengthUnit);
}

} // namespace host
