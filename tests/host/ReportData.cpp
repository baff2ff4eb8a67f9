#include "ReportData.h"

#include <cmath>
#include <stdexcept>

namespace test
{

namespace
{

/// The bits that base64 spells, the first first.
std::vector<bool> BitsOf(const std::string& base64)
{
    if (base64.size() % 4 != 0) {
        throw std::runtime_error("base64 that is no groups of four");
    }
    std::vector<bool> bits;
    for (const char c : base64.substr(0, base64.find('='))) {
        int digit = 0;
        if (c >= 'A' && c <= 'Z') {
            digit = c - 'A';
        } else if (c >= 'a' && c <= 'z') {
            digit = c - 'a' + 26;
        } else if (c >= '0' && c <= '9') {
            digit = c - '0' + 52;
        } else if (c == '+' || c == '/') {
            digit = c == '+' ? 62 : 63;
        } else {
            throw std::runtime_error("no digit of base64");
        }
        for (int bit = 32; bit > 0; bit /= 2) {
            bits.push_back(digit / bit % 2 == 1);
        }
    }
    return bits;
}

std::vector<int> BytesOf(const std::string& base64)
{
    const std::vector<bool> bits = BitsOf(base64);
    std::vector<int> bytes;
    for (std::size_t i = 0; i + 8 <= bits.size(); i += 8) {
        int byte = 0;
        for (std::size_t j = 0; j < 8; ++j) {
            byte = 2 * byte + (bits[i + j] ? 1 : 0);
        }
        bytes.push_back(byte);
    }
    return bytes;
}

} // namespace

double DecodedColumn::At(std::size_t row) const
{
    return wholes.at(row) / std::pow(10.0, decimals);
}

DecodedColumn Decoded(const nlohmann::json& column)
{
    DecodedColumn decoded;
    decoded.decimals = column.at("decimals");
    double last = 0.0;
    double number = 0.0;
    double weight = 1.0;
    for (const int byte : BytesOf(column.at("data"))) {
        number += weight * (byte % 128);
        weight *= 128.0;
        if (byte >= 128) {
            continue;
        }
        const bool isOdd = std::fmod(number, 2.0) == 1.0;
        last += isOdd ? -(number + 1.0) / 2.0 : number / 2.0;
        decoded.wholes.push_back(last);
        number = 0.0;
        weight = 1.0;
    }
    if (weight != 1.0) {
        throw std::runtime_error("a column that ends within a number");
    }
    return decoded;
}

DecodedColumn ColumnOf(const nlohmann::json& data, const std::string& name)
{
    return Decoded(data.at("run").at("rows").at("columns").at(name));
}

} // namespace test
