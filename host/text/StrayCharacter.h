#ifndef TRUNNION_HOST_TEXT_STRAY_CHARACTER_H
#define TRUNNION_HOST_TEXT_STRAY_CHARACTER_H

#include <cstddef>
#include <string_view>

namespace host
{

/// Where in a TOML text the first character stands that belongs into a string or a comment only and
/// stands outside both: all but printable ASCII, tabs and line ends. npos when there is none.
///
/// The TOML reader takes some of these for impossible and goes astray on them.
std::size_t FindStrayCharacter(std::string_view toml);

/// Where in a TOML text a key has one dot more than `maxDots`; npos when none has.
std::size_t FindLongKey(std::string_view toml, std::size_t maxDots);

} // namespace host

#endif
