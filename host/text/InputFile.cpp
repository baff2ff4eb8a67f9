#include "text/InputFile.h"

#include <array>
#include <cerrno>
#include <system_error>

#include "text/InputError.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

constexpr std::uintmax_t kBytesPerMebibyte = 1024UL * 1024;

/// Opening a pipe waits for who writes to it, and what came out of it does not come again.
void RefuseOtherThanFile(const fs::path& path)
{
    if (path.empty()) {
        throw InputError("trunnion", "the name of a file to read is empty; give one");
    }
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::is_directory(status)) {
        throw InputError(path.string(), "this is a folder; name a file in it");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw InputError(path.string(),
                         "this is not an ordinary file but a pipe or a device; write "
                         "what it gives to a file and name that");
    }
}

} // namespace

std::ifstream OpenInput(const std::filesystem::path& path)
{
    RefuseOtherThanFile(path);
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw InputError(path.string(), "this file cannot be opened (" +
                                            std::generic_category().message(errno) +
                                            "); check its name and your rights to read it");
    }
    return in;
}

std::string ReadWholeFile(const std::filesystem::path& path, std::uintmax_t maxBytes)
{
    std::ifstream in = OpenInput(path);
    std::string text;
    std::array<char, 65536> block{};
    while (in.read(block.data(), block.size()) || in.gcount() > 0) {
        text.append(block.data(), static_cast<std::size_t>(in.gcount()));
        if (text.size() > maxBytes) {
            throw InputError(path.string(), "this file is larger than " + SizeText(maxBytes) +
                                                "; is it the right one?");
        }
    }
    if (in.bad()) {
        throw InputError(path.string(), "this file cannot be read to its end; try again");
    }
    return text;
}

std::string SizeText(std::uintmax_t bytes)
{
    return std::to_string(bytes / kBytesPerMebibyte) + " MiB";
}

} // namespace host
