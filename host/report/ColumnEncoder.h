#ifndef TRUNNION_HOST_REPORT_COLUMN_ENCODER_H
#define TRUNNION_HOST_REPORT_COLUMN_ENCODER_H

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace host
{

/// Takes a text piece by piece.
using TextSink = std::function<void(std::string_view)>;

/// A column of numbers in few bytes: whole multiples of the last decimal, of these the differences,
/// each a zigzag number (0, -1, 1, -2, ...) of seven bits a byte, the low ones first.
class ColumnEncoder
{
  public:
    explicit ColumnEncoder(int ofDecimals) : decimals(ofDecimals) {}

    /// What is too large for whole numbers that any reader holds, stands at the edge of these;
    /// what is no number stands as 0.
    void Add(double value);

    int Decimals() const { return decimals; }
    const std::vector<std::uint8_t>& Bytes() const { return bytes; }

  private:
    int decimals;
    std::int64_t last{0};
    std::vector<std::uint8_t> bytes;
};

/// As base64, with "=" at its end.
void WriteBase64(const std::vector<std::uint8_t>& bytes, const TextSink& sink);

} // namespace host

#endif
