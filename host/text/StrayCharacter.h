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

} // namespace host

#endif
