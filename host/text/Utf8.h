#ifndef TRUNNION_HOST_TEXT_UTF8_H
#define TRUNNION_HOST_TEXT_UTF8_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace host
{

/// May stand before a text; says no more than that it is UTF-8.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// How many characters a text of UTF-8 has.
inline std::size_t CharacterCount(std::string_view text)
{
    const auto begins = [](char c) {
        constexpr unsigned kTopBits = 0xC0;
        constexpr unsigned kContinuation = 0x80;
        return (static_cast<unsigned char>(c) & kTopBits) != kContinuation;
    };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

} // namespace host

#endif
