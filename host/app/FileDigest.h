#ifndef TRUNNION_HOST_APP_FILE_DIGEST_H
#define TRUNNION_HOST_APP_FILE_DIGEST_H

#include <filesystem>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

namespace host
{

/// SHA-256 of a file's content, as sha256sum prints it. Throws InputError for one that cannot be
/// read.
std::string FileDigest(const std::filesystem::path& path);

/// The digests of what a run reads.
struct SourceDigests
{
    std::string machine;
    std::string toolpath;
};

/// Notices when a file changes between its reading and its digest. Made before the reading.
class WatchedFile
{
  public:
    explicit WatchedFile(std::filesystem::path place);

    /// Throws InputError for a file that is no longer the one that was read.
    std::string Digest() const;
    void CheckUnchanged() const;

  private:
    /// What is another when a file was written to or replaced.
    struct Stamp
    {
        ::dev_t device{0};
        ::ino_t number{0};
        ::off_t size{0};
        ::timespec changed{};
    };

    static Stamp StampOf(const std::filesystem::path& path);

    std::filesystem::path path;
    Stamp before;
};

} // namespace host

#endif
