#include "app/FileDigest.h"

#include <array>
#include <memory>
#include <new>
#include <string_view>
#include <tuple>
#include <utility>

#include <openssl/evp.h>

#include "text/InputError.h"
#include "text/InputFile.h"

namespace host
{

namespace
{

std::string HexText(const unsigned char* bytes, std::size_t size)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += kDigits[bytes[i] >> 4U];
        text += kDigits[bytes[i] & 0xFU];
    }
    return text;
}

} // namespace

std::string FileDigest(const std::filesystem::path& path)
{
    std::ifstream in = OpenInput(path);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                          &EVP_MD_CTX_free);
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) {
        throw std::bad_alloc();
    }
    std::array<char, 65536> block{};
    while (in.read(block.data(), block.size()) || in.gcount() > 0) {
        EVP_DigestUpdate(context.get(), block.data(), static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw InputError(path.string(), "this file cannot be read to its end; try again");
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    EVP_DigestFinal_ex(context.get(), digest.data(), &size);
    return HexText(digest.data(), size);
}

WatchedFile::WatchedFile(std::filesystem::path place)
    : path(std::move(place)), before(StampOf(path))
{}

std::string WatchedFile::Digest() const
{
    std::string digest = FileDigest(path);
    CheckUnchanged();
    return digest;
}

void WatchedFile::CheckUnchanged() const
{
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
