#include "app/FileDigest.h"

#include <array>
#include <cstdint>

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

} // namespace host
