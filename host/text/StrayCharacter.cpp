#include "text/StrayCharacter.h"

#include <algorithm>

#include "text/Utf8.h"

namespace host
{

namespace
{

bool IsPlain(char c)
{
    return (c >= ' ' && c <= '~') || c == '\t' || c == '\n' || c == '\r';
}

bool StandsAt(std::string_view text, std::size_t position, std::string_view part)
{
    return text.substr(position, part.size()) == part;
}

std::size_t EndOfComment(std::string_view text, std::size_t position)
{
    return std::min(text.find('\n', position), text.size());
}

/// Behind the string that begins at `position`; one within a line ends with it at the latest.
std::size_t EndOfString(std::string_view text, std::size_t position)
{
    const std::string_view quote = text.substr(position, 1);
    const std::string_view triple = quote == "\"" ? R"(""")" : "'''";
    const bool isLong = StandsAt(text, position, triple);
    const std::string_view closing = isLong ? triple : quote;
    position += closing.size();
    while (position < text.size() && !StandsAt(text, position, closing)) {
        if (!isLong && text[position] == '\n') {
            return position;
        }
        position += quote == "\"" && text[position] == '\\' ? 2 : 1;
    }
    return std::min(position + closing.size(), text.size());
}

/// The first character outside of strings and comments that `isWanted`.
template <class Predicate>
std::size_t FindOutsideStrings(std::string_view toml, Predicate isWanted)
{
    std::size_t position = StandsAt(toml, 0, kByteOrderMark) ? kByteOrderMark.size() : 0;
    while (position < toml.size()) {
        const char c = toml[position];
        if (c == '#') {
            position = EndOfComment(toml, position);
        } else if (c == '"' || c == '\'') {
            position = EndOfString(toml, position);
        } else if (!isWanted(c)) {
            ++position;
        } else {
            return position;
        }
    }
    return std::string_view::npos;
}

} // namespace

std::size_t FindStrayCharacter(std::string_view toml)
{
    return FindOutsideStrings(toml, [](char c) { return !IsPlain(c); });
}

std::size_t FindLongKey(std::string_view toml, std::size_t maxDots)
{
    static constexpr std::string_view kEndsOfKeys = "=,[]{}\n";
    return FindOutsideStrings(toml, [maxDots, dots = std::size_t{0}](char c) mutable {
        if (kEndsOfKeys.find(c) != std::string_view::npos) {
            dots = 0;
        }
        return c == '.' && ++dots > maxDots;
    });
}

} // namespace host
