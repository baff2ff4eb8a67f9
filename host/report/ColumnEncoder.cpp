#include "report/ColumnEncoder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

namespace host
{

namespace
{

/// The zigzag number of the difference of two such is still below 2^53.
constexpr double kLargest = 1LL << 50;

double ScaleOf(int decimals)
{
    constexpr double kTen = 10.0;
    double scale = 1.0;
    for (int i = 0; i < decimals; ++i) {
        scale *= kTen;
    }
    return scale;
}

std::uint64_t ZigZag(std::int64_t number)
{
    const auto magnitude = static_cast<std::uint64_t>(number < 0 ? -(number + 1) : number);
    return 2 * magnitude + (number < 0 ? 1 : 0);
}

} // namespace

void ColumnEncoder::Add(double value)
{
    constexpr std::uint64_t kMore = 0x80;
    constexpr int kBits = 7;
    const double scaled = std::isnan(value) ? 0.0 : std::round(value * ScaleOf(decimals));
    const auto whole = static_cast<std::int64_t>(std::clamp(scaled, -kLargest, kLargest));
    std::uint64_t rest = ZigZag(whole - last);
    last = whole;
    for (; rest >= kMore; rest >>= kBits) {
        bytes.push_back(static_cast<std::uint8_t>(kMore | (rest & (kMore - 1))));
    }
    bytes.push_back(static_cast<std::uint8_t>(rest));
}

void WriteBase64(const std::vector<std::uint8_t>& bytes, const TextSink& sink)
{
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t kGroup = 3; // bytes, which make four digits
    constexpr std::size_t kPiece = 65536;
    constexpr unsigned kDigitBits = 6;
    constexpr unsigned kByteBits = 8;
    std::string piece;
    for (std::size_t i = 0; i < bytes.size(); i += kGroup) {
        const std::size_t count = std::min(kGroup, bytes.size() - i);
        std::uint32_t bits = 0;
        for (std::size_t j = 0; j < kGroup; ++j) {
            bits = bits << kByteBits | (j < count ? bytes[i + j] : 0U);
        }
        for (std::size_t j = 0; j <= kGroup; ++j) {
            const std::uint32_t digit = bits >> (kDigitBits * (kGroup - j)) & (kDigits.size() - 1);
            piece += j <= count ? kDigits[digit] : '=';
        }
        if (piece.size() >= kPiece) {
            sink(piece);
            piece.clear();
        }
    }
    sink(piece);
}

} // namespace host
