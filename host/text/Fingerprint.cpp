#include "text/Fingerprint.h"

namespace host
{

void Fingerprint::AddByte(unsigned char byte)
{
    constexpr std::uint64_t kPrime = 0x100000001B3ULL;
    value = (value ^ byte) * kPrime;
}

void Fingerprint::Add(std::string_view piece)
{
    for (const char c : piece) {
        AddByte(static_cast<unsigned char>(c));
    }
    for (std::size_t size = piece.size(), i = 0; i < sizeof(size); ++i, size >>= 8U) {
        AddByte(static_cast<unsigned char>(size & 0xFFU)); // so that "ab", "c" is not "a", "bc"
    }
}

std::string Fingerprint::Hex() const
{
    constexpr unsigned kDigits = 16;
    constexpr unsigned kBitsOfDigit = 4;
    std::string hex;
    for (unsigned i = kDigits; i-- > 0;) {
        hex += "0123456789abcdef"[(value >> (i * kBitsOfDigit)) & 0xFU];
    }
    return hex;
}

} // namespace host
