#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "report/ColumnEncoder.h"

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes Encoded(int decimals, const std::vector<double>& values)
{
    host::ColumnEncoder column(decimals);
    for (const double value : values) {
        column.Add(value);
    }
    return column.Bytes();
}

std::string Base64(const Bytes& bytes)
{
    std::string text;
    host::WriteBase64(bytes, [&text](std::string_view piece) { text += piece; });
    return text;
}

TEST(ColumnEncoder, WritesTheZigZagDifferencesOfWholeNumbers)
{
    // Differences 0, 1, -2, 63, -126: zigzag 0, 2, 3, 126, 251 = 0x7B + 1 * 128.
    EXPECT_EQ(Encoded(0, {0, 1, -1, 62, -64}), (Bytes{0x00, 0x02, 0x03, 0x7E, 0xFB, 0x01}));
}

TEST(ColumnEncoder, RoundsToItsDecimals)
{
    // 1.2345 to three decimals is 1235 (halves go away from zero): zigzag 2470 = 0x26 + 19 * 128.
    EXPECT_EQ(Encoded(3, {1.2345}), (Bytes{0xA6, 0x13}));
    // -0.0004 is 0, and -0.0006 is -1 from there: 0, then 1.
    EXPECT_EQ(Encoded(3, {-0.0004, -0.0006}), (Bytes{0x00, 0x01}));
}

TEST(ColumnEncoder, HoldsNumbersBeyond32Bits)
{
    // 5e9 is zigzag 1e10 = 0x2540BE400: in sevens of bits from below 0x00, 0x48, 0x2F, 0x20, 0x25.
    EXPECT_EQ(Encoded(6, {5000.0}), (Bytes{0x80, 0xC8, 0xAF, 0xA0, 0x25}));
}

TEST(ColumnEncoder, HoldsWhatIsNoSuchNumberAtTheEdge)
{
    const double infinity = std::numeric_limits<double>::infinity();
    // 2^50 is zigzag 2^51: bit 51 is bit 2 of the eighth seven.
    const Bytes edge{0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x04};
    EXPECT_EQ(Encoded(6, {infinity}), edge);
    EXPECT_EQ(Encoded(0, {1e300}), edge);
    EXPECT_EQ(Encoded(6, {std::nan("")}), Bytes{0x00});
    // From one edge to the other: -2^51 is zigzag 2^52 - 1, 52 bits.
    Bytes both = edge;
    both.insert(both.end(), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x07});
    EXPECT_EQ(Encoded(0, {infinity, -infinity}), both);
}

TEST(Base64, IsAsAnyOtherReaderExpects)
{
    // The test vectors of RFC 4648.
    EXPECT_EQ(Base64({}), "");
    EXPECT_EQ(Base64({'f'}), "Zg==");
    EXPECT_EQ(Base64({'f', 'o'}), "Zm8=");
    EXPECT_EQ(Base64({'f', 'o', 'o', 'b', 'a', 'r'}), "Zm9vYmFy");
    EXPECT_EQ(Base64({0xFB, 0xFF, 0xBF}), "+/+/");
}

TEST(Base64, GoesOnOverAllPieces)
{
    // 3 bytes make 4 digits, and 0 is "A": a piece is shorter than this.
    const std::string text = Base64(Bytes(300000, 0));
    EXPECT_EQ(text, std::string(400000, 'A'));
}

} // namespace
