#ifndef TRUNNION_HOST_TEXT_QUOTED_H
#define TRUNNION_HOST_TEXT_QUOTED_H

#include <algorithm>
#include <string>
#include <string_view>

namespace host
{

/// Text out of a file that may go to a terminal or into another file: control characters show as ?.
inline std::string WithoutControlCharacters(std::string_view text)
{
    const auto isControl = [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; };
    std::string shown(text);
    std::replace_if(shown.begin(), shown.end(), isControl, '?');
    return shown;
}

/// Text out of a file as a message shows it: in quotes, not too long, and unable to steer the
/// terminal.
inline std::string Quoted(std::string_view text)
{
    constexpr std::size_t kLongest = 60;
    return '"' + WithoutControlCharacters(text.substr(0, kLongest)) +
           (text.size() > kLongest ? "...\"" : "\"");
}

} // namespace host

#endif
