#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "text/InputError.h"
#include "toolpath/ToolpathFile.h"

namespace
{

using host::LengthUnit;
using host::ToolpathFormat;
using host::Vec3;

constexpr const char* kApt = "UNITS/INCH\nGOTO/1,0,0\n";
constexpr const char* kCsv = "x,y,z,i,j,k\n2,0,0,0,0,1\n";
constexpr const char* kNc = "G20 G1 X3 Y0 Z0\n";

TEST(ToolpathFile, KnowsFormatsByName)
{
    EXPECT_EQ(host::FindToolpathFormat("apt"), ToolpathFormat::Apt);
    EXPECT_EQ(host::FindToolpathFormat("CSV"), ToolpathFormat::Csv);
    EXPECT_EQ(host::FindToolpathFormat("Nc"), ToolpathFormat::Nc);
    EXPECT_EQ(host::FindToolpathFormat("step"), std::nullopt);
    EXPECT_EQ(host::FindToolpathFormat(""), std::nullopt);
}

TEST(ToolpathFile, KnowsFormatsByTheEndOfTheName)
{
    for (const std::string name : {"a.nc", "a.ngc", "a.tap", "a.gcode", "a.MPF", "b.csv.cnc"}) {
        EXPECT_EQ(host::ToolpathFormatOf(name), ToolpathFormat::Nc) << name;
    }
    EXPECT_EQ(host::ToolpathFormatOf("path.Csv"), ToolpathFormat::Csv);
    for (const std::string name : {"a.cl", "a.apt", "a.cls", "nc", "a.csv/b", "a.nc~", ""}) {
        EXPECT_EQ(host::ToolpathFormatOf(name), ToolpathFormat::Apt) << name;
    }
}

TEST(ToolpathFile, ReadsEachFormatIntoTheWantedUnit)
{
    const test::TempFolder folder;
    const auto read = [&folder](const std::string& name, const std::string& text,
                                std::optional<ToolpathFormat> format) {
        const std::filesystem::path path = folder.Write(name, text);
        const host::Toolpath toolpath = host::ReadToolpath(path, format, LengthUnit::Millimetre);
        EXPECT_EQ(toolpath.file, path.string());
        return toolpath.points.at(0).position[0];
    };
    EXPECT_DOUBLE_EQ(read("a.cl", kApt, std::nullopt), 25.4);
    EXPECT_DOUBLE_EQ(read("a.csv", kCsv, std::nullopt), 2);
    EXPECT_DOUBLE_EQ(read("a.nc", kNc, std::nullopt), 76.2);
    EXPECT_DOUBLE_EQ(read("b.nc", kApt, ToolpathFormat::Apt), 25.4);
    EXPECT_DOUBLE_EQ(read("b.cl", kCsv, ToolpathFormat::Csv), 2);
    EXPECT_DOUBLE_EQ(read("b.csv", kNc, ToolpathFormat::Nc), 76.2);
}

TEST(ToolpathFile, SaysThatAFileIsMissing)
{
    EXPECT_THROW(host::ReadToolpath("/none/a.nc", std::nullopt, LengthUnit::Inch),
                 host::InputError);
}

} // namespace
