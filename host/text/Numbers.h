#ifndef TRUNNION_HOST_TEXT_NUMBERS_H
#define TRUNNION_HOST_TEXT_NUMBERS_H

#include <optional>
#include <string>
#include <string_view>

// Numbers as text, always with a decimal point, whatever the locale.
namespace host
{

/// The finite number that the whole of `text` spells; a leading plus is legal.
std::optional<double> ParseNumber(std::string_view text);

/// The whole number that the whole of `text` spells in digits, without a sign.
std::optional<int> ParseCount(std::string_view text);

/// The shortest text that reads back as the same number.
std::string ShortestText(double value);
/// For people, of any size: six significant digits.
std::string RoundedText(double value);
/// For people: four decimals, without zeros at the end.
std::string DecimalText(double value);
/// With this many digits after the point.
std::string FixedText(double value, int decimals);

} // namespace host

#endif
