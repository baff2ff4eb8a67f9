#ifndef TRUNNION_HOST_POST_BUNDLED_DIALECTS_H
#define TRUNNION_HOST_POST_BUNDLED_DIALECTS_H

#include <string_view>
#include <vector>

namespace host
{

/// A file of dialects/ as it was when the program was built.
struct BundledDialect
{
    std::string_view name; //!< of the file, without .toml
    std::string_view text;
};

/// In the order of their names.
const std::vector<BundledDialect>& BundledDialects();

} // namespace host

#endif
