#include "toolpath/PathText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

std::size_t LeadingBlanks(std::string_view text)
{
    const auto* const end = std::find_if_not(text.begin(), text.end(), IsBlank);
    return static_cast<std::size_t>(end - text.begin());
}

std::string_view WithoutTrailingBlanks(std::string_view text)
{
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string Capitals(std::string_view text)
{
    std::string capitals(text);
    std::transform(capitals.begin(), capitals.end(), capitals.begin(), Capital);
    return capitals;
}

double PathNumber(const std::string& file, TextPosition at, std::string_view text)
{
    const auto value = ParseNumber(text);
    if (!value) {
        throw InputError(file, at,
                         Quoted(text) + " is not a number; write it like 12.5 or -1.0E-3");
    }
    if (std::fabs(*value) > kLargestPathNumber) {
        throw InputError(file, at, Quoted(text) + " is beyond any machine; correct it");
    }
    return *value;
}

int PathToolNumber(const std::string& file, TextPosition at, std::string_view text)
{
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stopped != end || number < 0) {
        throw InputError(file, at,
                         Quoted(text) + " is not a tool's number; write a whole one like 12");
    }
    return number;
}

double PathFeed(const std::string& file, TextPosition at, double value)
{
    if (!(value > 0.0)) {
        throw InputError(file, at, "a feed is greater than 0; correct it");
    }
    return value;
}

Vec3 PathDirection(const std::string& file, TextPosition at, const Vec3& vector)
{
    constexpr double kNoLength = 1e-9; // less than files write
    const auto direction = Normalised(vector);
    if (!direction || Length(vector) < kNoLength) {
        throw InputError(file, at, "the tool vector has no length; give its direction as i,j,k");
    }
    return *direction;
}

} // namespace host
