#ifndef TRUNNION_HOST_APP_OVERWRITING_H
#define TRUNNION_HOST_APP_OVERWRITING_H

#include <filesystem>
#include <string>
#include <vector>

namespace host
{

/// A file that is read must not be replaced, nor one that is written be written twice: throws
/// InputError for the first in `written` that is one of `read` or the same as one before it,
/// whatever links lead there.
void RefuseOverwriting(const std::vector<std::filesystem::path>& written,
                       const std::vector<std::filesystem::path>& read);

/// What tells a file from all others, whatever links lead there: two names are of the same file
/// where they have one of these in common.
std::vector<std::string> FileKeys(const std::filesystem::path& path);

} // namespace host

#endif
