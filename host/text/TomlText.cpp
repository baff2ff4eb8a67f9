#include "text/TomlText.h"

#include <algorithm>

#include "text/Quoted.h"
#include "text/StrayCharacter.h"
#include "text/Utf8.h"

namespace host
{

namespace
{

/// Of one key. Each opens a table within the last, and the reader's tables go down one in another:
/// far fewer than its stack holds, also where each of the nested values that it takes has as many.
constexpr std::size_t kMaxDots = 16;

/// Columns count characters of UTF-8 text, as those of the TOML reader do.
TextPosition PositionIn(std::string_view text, std::size_t offset)
{
    const std::string_view before = text.substr(0, offset);
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    return {1 + static_cast<int>(std::count(before.begin(), before.end(), '\n')),
            1 + static_cast<int>(CharacterCount(line))};
}

bool BreaksAssumptions(std::string_view text)
{
    try {
        const toml::table ignored = toml::parse(text);
    } catch (const BrokenAssumption&) {
        return true;
    } catch (const toml::parse_error&) {
    }
    return false;
}

/// The offset at which the reader stops in a text that breaks its assumptions. They say nothing of
/// the place, but every beginning of the text breaks them that reaches as far as it.
std::size_t WhereAssumptionsBreak(std::string_view text)
{
    std::size_t longestGood = 0;
    std::size_t shortestBad = text.size();
    while (shortestBad - longestGood > 1) {
        const std::size_t middle = longestGood + (shortestBad - longestGood) / 2;
        (BreaksAssumptions(text.substr(0, middle)) ? shortestBad : longestGood) = middle;
    }
    return longestGood;
}

} // namespace

toml::table ParseToml(std::string_view text, const std::string& file)
{
    if (const std::size_t stray = FindStrayCharacter(text); stray != std::string_view::npos) {
        throw InputError(file, PositionIn(text, stray),
                         "this character stands outside a string or comment, where TOML has plain "
                         "ASCII only; take it out");
    }
    if (const std::size_t dot = FindLongKey(text, kMaxDots); dot != std::string_view::npos) {
        throw InputError(file, PositionIn(text, dot),
                         "this name has more than " + std::to_string(kMaxDots) +
                             " dots; is it the right file?");
    }
    try {
        return toml::parse(text, file);
    } catch (const toml::parse_error& error) {
        throw InputError(file, PositionOf(error.source()),
                         "this is not TOML (" + WithoutControlCharacters(error.description()) +
                             "); correct it here or on the lines before");
    } catch (const BrokenAssumption&) {
        throw InputError(file, PositionIn(text, WhereAssumptionsBreak(text)),
                         "this is not TOML; correct it here or on the lines before");
    }
}

TextPosition PositionOf(const toml::source_region& region)
{
    return {static_cast<int>(region.begin.line), static_cast<int>(region.begin.column)};
}

} // namespace host
