#include "text/InputFile.h"

#include <array>
#include <cerrno>
#include <system_error>

#include "text/InputError.h"

namespace host
{

namespace
{

constexpr std::uintmax_t kBytesPerMebibyte = 1024UL * 1024;

} // namespace

std::ifstream OpenInput(const std::filesystem::path& path)
{
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw InputError(path.string(), "this file cannot be opened (" +
                                            std::generic_category().message(errno) +
                                            "); check its name and your rights to read it");
    }
    if (std::error_code ignored; std::filesystem::is_directory(path, ignored)) {
        throw InputError(path.string(), "this is a folder; name a file in it");
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
