#ifndef TRUNNION_HOST_APP_FILE_DIGEST_H
#define TRUNNION_HOST_APP_FILE_DIGEST_H

#include <filesystem>
#include <string>

namespace host
{

/// SHA-256 of a file's content, as sha256sum prints it. Throws InputError for one that cannot be
/// read.
std::string FileDigest(const std::filesystem::path& path);

} // namespace host

#endif
