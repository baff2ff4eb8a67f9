#ifndef TRUNNION_HOST_APP_PAGE_HTML_H
#define TRUNNION_HOST_APP_PAGE_HTML_H

#include <optional>
#include <string>
#include <string_view>

namespace host
{

/// What a build has of the page that shows reports; nothing in a build without reports.
using BuiltPage = std::optional<std::string_view>;

/// The page for a command or an option that needs it; throws InputError, naming it, without one.
std::string_view PageFor(const std::string& asker, const BuiltPage& built);

} // namespace host

#endif
