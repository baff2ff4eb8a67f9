#ifndef TRUNNION_HOST_TEXT_QUOTED_H
#define TRUNNION_HOST_TEXT_QUOTED_H

#include <algorithm>
#include <string>
#include <string_view>

namespace host
{

/// Text out of a file as a message shows it: in quotes, not too long, and unable to steer the
/// terminal.
inline std::string Quoted(std::string_view text)
{
    constexpr std::size_t kLongest = 60;
    const auto isControl = [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; };
    std::string shown(text.substr(0, kLongest));
    std::replace_if(shown.begin(), shown.end(), isControl, '?');
    return '"' + shown + (text.size() > kLongest ? "...\"" : "\"");
}

} // namespace host

#endif
