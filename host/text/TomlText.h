#ifndef TRUNNION_HOST_TEXT_TOML_TEXT_H
#define TRUNNION_HOST_TEXT_TOML_TEXT_H

#include <exception>
#include <string>
#include <string_view>

#include "text/InputError.h"

namespace host
{

/// The TOML reader found something that it takes for granted not to hold.
class BrokenAssumption : public std::exception
{};

constexpr void Assume(bool holds)
{
    if (!holds) {
        throw BrokenAssumption();
    }
}

} // namespace host

// Some texts that are not TOML, for instance "[/]", get past the reader's own checks and reach its
// assertions. Those must refuse the text in every build type, not end the program; the reader
// offers no other way to say so than this macro, which it overrides where NDEBUG is set.
#undef NDEBUG
#define TOML_ASSERT(holds) ::host::Assume(static_cast<bool>(holds))
#include <toml++/toml.h>

namespace host
{

/// Parses a text, throwing InputError with the place for one that is not TOML.
toml::table ParseToml(std::string_view text, const std::string& file);

TextPosition PositionOf(const toml::source_region& region);

} // namespace host

#endif
