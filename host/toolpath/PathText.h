#ifndef TRUNNION_HOST_TOOLPATH_PATH_TEXT_H
#define TRUNNION_HOST_TOOLPATH_PATH_TEXT_H

#include <string>
#include <string_view>

#include "geometry/Vec3.h"
#include "text/InputError.h"
#include "text/LineReader.h"

// What the readers of toolpaths have in common.
namespace host
{

constexpr TextBounds kPathBounds{1024UL * 1024 * 1024, 4096};
constexpr double kLargestPathNumber = 1e12; //!< its square and its conversion are still finite
constexpr Vec3 kUpright{0.0, 0.0, 1.0};     //!< how the tool stands before any vector is given

constexpr bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

constexpr bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr char Capital(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::size_t LeadingBlanks(std::string_view text);
std::string_view WithoutTrailingBlanks(std::string_view text);
std::string Capitals(std::string_view text);

/// Refuses what is no number and what is too large for any machine.
double PathNumber(const std::string& file, TextPosition at, std::string_view text);
/// A tool's number: whole and not negative.
int PathToolNumber(const std::string& file, TextPosition at, std::string_view text);
/// Refuses a feed that is not greater than 0.
double PathFeed(const std::string& file, TextPosition at, double value);
/// The tool's direction, length 1. Refuses a vector without length.
Vec3 PathDirection(const std::string& file, TextPosition at, const Vec3& vector);

} // namespace host

#endif
