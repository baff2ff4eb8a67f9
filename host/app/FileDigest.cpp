#include "app/FileDigest.h"

#include <array>
#include <cstdint>
#include <tuple>
#include <utility>

#include <sha2.h>

#include "text/InputError.h"
#include "text/InputFile.h"

namespace host
{

std::string FileDigest(const std::filesystem::path& path)
{
    std::ifstream in = OpenInput(path);
    SHA2_CTX context{};
    SHA256Init(&context);
    std::array<char, 65536> block{};
    while (in.read(block.data(), block.size()) || in.gcount() > 0) {
        const auto size = static_cast<std::size_t>(in.gcount());
        SHA256Update(&context, reinterpret_cast<const std::uint8_t*>(block.data()), size);
    }
    if (in.bad()) {
        throw InputError(path.string(), "this file cannot be read to its end; try again");
    }
    std::array<char, SHA256_DIGEST_STRING_LENGTH> digits{};
    return SHA256End(&context, digits.data());
}

WatchedFile::WatchedFile(std::filesystem::path place)
    : path(std::move(place)), before(StampOf(path))
{}

std::string WatchedFile::Digest() const
{
    std::string digest = FileDigest(path);
    const Stamp after = StampOf(path);
    const auto values = [](const Stamp& stamp) {
        return std::tuple(stamp.device, stamp.number, stamp.size, stamp.changed.tv_sec,
                          stamp.changed.tv_nsec);
    };
    if (values(before) != values(after)) {
        throw InputError(path.string(),
                         "this file was changed while it was read; run again when it "
                         "is finished");
    }
    return digest;
}

WatchedFile::Stamp WatchedFile::StampOf(const std::filesystem::path& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return {}; // its opening says why
    }
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

} // namespace host
