#include "text/Numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace host
{

namespace
{

// Room for the longest double in fixed notation: 309 digits, sign, point and decimals.
constexpr std::size_t kLongestText = 400;

template <class... Format>
std::string Text(double value, Format... format)
{
    std::array<char, kLongestText> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
    return error == std::errc() ? std::string(buffer.data(), end) : std::string();
}

} // namespace

std::optional<double> ParseNumber(std::string_view text)
{
    const bool hasPlus = !text.empty() && text.front() == '+';
    if (hasPlus) {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') {
            return std::nullopt;
        }
    }
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stopped != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<int> ParseCount(std::string_view text)
{
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stopped != end || text.front() == '-') {
        return std::nullopt;
    }
    return value;
}

std::string ShortestText(double value)
{
    return Text(value);
}

std::string RoundedText(double value)
{
    return Text(value, std::chars_format::general, 6);
}

std::string DecimalText(double value)
{
    std::string text = FixedText(value, 4);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        text.erase(text.find_last_not_of('.') + 1);
    }
    return text;
}

std::string FixedText(double value, int decimals)
{
    const std::string text = Text(value, std::chars_format::fixed, decimals);
    const bool isMinusZero = text.find_first_not_of("-0.") == std::string::npos &&
                             text.find_first_of('-') != std::string::npos;
    return isMinusZero ? text.substr(1) : text;
}

} // namespace host
