#ifndef TRUNNION_HOST_APP_OVERWRITING_H
#define TRUNNION_HOST_APP_OVERWRITING_H

#include <filesystem>
#include <vector>

namespace host
{

/// A file that is read must not be replaced, nor one that is written be written twice: throws
/// InputError for the first in `written` that is one of `read` or the same as one before it,
/// whatever links lead there.
void RefuseOverwriting(const std::vector<std::filesystem::path>& written,
                       const std::vector<std::filesystem::path>& read);

} // namespace host

#endif
