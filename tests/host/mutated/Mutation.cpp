#include "mutated/Mutation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <functional>
#include <string_view>

namespace test
{

namespace
{

/// A piece of a text.
struct Span
{
    std::size_t begin;
    std::size_t size;
};

using Spans = std::vector<Span>;

std::size_t Below(std::size_t count, Random& random)
{
    return static_cast<std::size_t>(random.Bits() % std::max<std::size_t>(count, 1));
}

template <class Items>
auto OneOf(const Items& items, Random& random)
{
    return items[Below(items.size(), random)];
}

/// Lines with their ends.
Spans LinesOf(const std::string& text)
{
    Spans lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        lines.push_back({begin, end - begin});
        begin = end;
    }
    return lines;
}

/// Longest pieces whose characters all are of one kind.
Spans PiecesOf(const std::string& text, const std::function<bool(char)>& isInside)
{
    Spans pieces;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isInside(text[i])) {
            continue;
        }
        const std::size_t begin = i;
        while (i < text.size() && isInside(text[i])) {
            ++i;
        }
        pieces.push_back({begin, i - begin});
    }
    return pieces;
}

Spans WordsOf(const std::string& text)
{
    return PiecesOf(text, [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' || c == '.';
    });
}

Spans NumbersOf(const std::string& text)
{
    return PiecesOf(text, [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '-';
    });
}

void Swap(std::string& text, const Spans& pieces, Random& random)
{
    if (pieces.size() < 2) {
        return;
    }
    Span first = OneOf(pieces, random);
    Span second = OneOf(pieces, random);
    if (first.begin > second.begin) {
        std::swap(first, second);
    }
    if (first.begin == second.begin) {
        return;
    }
    const std::string a = text.substr(first.begin, first.size);
    const std::string b = text.substr(second.begin, second.size);
    text.replace(second.begin, second.size, a);
    text.replace(first.begin, first.size, b);
}

void Double(std::string& text, const Spans& pieces, Random& random)
{
    if (!pieces.empty()) {
        const Span piece = OneOf(pieces, random);
        text.insert(piece.begin, text.substr(piece.begin, piece.size));
    }
}

void Move(std::string& text, const Spans& pieces, Random& random)
{
    if (!pieces.empty()) {
        const std::size_t to = OneOf(pieces, random).begin;
        const Span piece = OneOf(pieces, random);
        const std::string moved = text.substr(piece.begin, piece.size);
        text.erase(piece.begin, piece.size);
        text.insert(std::min(to, text.size()), moved);
    }
}

void TakeOut(std::string& text, const Spans& pieces, Random& random)
{
    if (!pieces.empty()) {
        const Span piece = OneOf(pieces, random);
        text.erase(piece.begin, piece.size);
    }
}

void Replace(std::string& text, const Spans& pieces, std::string_view with, Random& random)
{
    if (!pieces.empty()) {
        const Span piece = OneOf(pieces, random);
        text.replace(piece.begin, piece.size, with);
    }
}

void PutIn(std::string& text, std::string_view what, Random& random)
{
    text.insert(Below(text.size() + 1, random), what);
}

Span SomeBytes(const std::string& text, std::size_t most, Random& random)
{
    const std::size_t begin = Below(text.size(), random);
    return {begin, std::min(1 + Below(most, random), text.size() - begin)};
}

std::string_view OddNumber(Random& random)
{
    static constexpr std::array<std::string_view, 30> kNumbers{
        "0",       "-0",         "1",          "-1",     "1e12",  "1.000001e12",
        "1e13",    "1e308",      "1e309",      "1e-320", "1e-9",  "99999999999999999999",
        "nan",     "inf",        "-inf",       "",       ".",     "-",
        "+-1",     "0x10",       "1,5",        "1_000",  "1.2.3", "2147483647",
        "1000000", "2147483648", "-999999999", "1d3",    "5e",    "00012.50"};
    return OneOf(kNumbers, random);
}

std::string_view OddText(Random& random)
{
    using namespace std::string_view_literals;
    static constexpr std::array<std::string_view, 40> kTexts{"\0"sv,
                                                             "\x01"sv,
                                                             "\x1B[31m"sv,
                                                             "\x7F"sv,
                                                             "\r"sv,
                                                             "\n"sv,
                                                             "\t"sv,
                                                             " "sv,
                                                             "\xFF"sv,
                                                             "\xC3\xA4"sv,
                                                             "\xEF\xBB\xBF"sv,
                                                             "\xE2\x82"sv,
                                                             "$"sv,
                                                             "$$"sv,
                                                             "$\n"sv,
                                                             "/"sv,
                                                             ","sv,
                                                             ";"sv,
                                                             "%"sv,
                                                             "#"sv,
                                                             "("sv,
                                                             ")"sv,
                                                             "["sv,
                                                             "]"sv,
                                                             "\""sv,
                                                             "'"sv,
                                                             "\\"sv,
                                                             "="sv,
                                                             "<"sv,
                                                             ">"sv,
                                                             "&"sv,
                                                             "<!--"sv,
                                                             "-->"sv,
                                                             "]]>"sv,
                                                             "\"\"\""sv,
                                                             "'''"sv,
                                                             "{"sv,
                                                             "}"sv,
                                                             "|"sv,
                                                             "_"sv};
    return OneOf(kTexts, random);
}

/// One digit becomes another: what is read changes, and nothing else shows it.
void ChangeDigit(std::string& text, Random& random)
{
    const Spans digits =
        PiecesOf(text, [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; });
    if (!digits.empty()) {
        text[OneOf(digits, random).begin] = static_cast<char>('0' + random.Below(10));
    }
}

void ChangeCase(std::string& text, Random& random)
{
    const Spans words = WordsOf(text);
    if (!words.empty()) {
        const Span word = OneOf(words, random);
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(word.begin),
                       text.begin() + static_cast<std::ptrdiff_t>(word.begin + word.size),
                       text.begin() + static_cast<std::ptrdiff_t>(word.begin), [](char c) {
                           const auto byte = static_cast<unsigned char>(c);
                           return static_cast<char>(std::islower(byte) != 0 ? std::toupper(byte)
                                                                            : std::tolower(byte));
                       });
    }
}

void ChangeLineEnds(std::string& text, std::string_view to)
{
    std::string changed;
    for (const char c : text) {
        changed += c == '\n' ? std::string(to) : std::string(1, c);
    }
    text = changed;
}

void MutateBytes(std::string& text, Random& random)
{
    const Span bytes = SomeBytes(text, 8, random);
    switch (random.Below(7)) {
    case 0:
        text[bytes.begin] = static_cast<char>(text[bytes.begin] ^ (1 << random.Below(8)));
        break;
    case 1:
        text[bytes.begin] = static_cast<char>(random.Below(256));
        break;
    case 2:
        TakeOut(text, {bytes}, random);
        break;
    case 3:
        Double(text, {SomeBytes(text, 64, random)}, random);
        break;
    case 4:
        TakeOut(text, {SomeBytes(text, 200, random)}, random);
        break;
    default:
        PutIn(text, OddText(random), random);
        break;
    }
}

void MutatePieces(std::string& text, const Spans& pieces, Random& random)
{
    switch (random.Below(4)) {
    case 0:
        Swap(text, pieces, random);
        break;
    case 1:
        Double(text, pieces, random);
        break;
    case 2:
        Move(text, pieces, random);
        break;
    default:
        TakeOut(text, pieces, random);
        break;
    }
}

void MutateNumbers(std::string& text, Random& random)
{
    switch (random.Below(3)) {
    case 0:
        Replace(text, NumbersOf(text), OddNumber(random), random);
        break;
    case 1:
        Swap(text, NumbersOf(text), random);
        break;
    default:
        ChangeDigit(text, random);
        break;
    }
}

void MutateSeldom(std::string& text, const std::vector<std::string>& good, Random& random)
{
    switch (random.Below(7)) {
    case 0:
        text.resize(Below(text.size() + 1, random));
        break;
    case 1:
        ChangeLineEnds(text, random.OneIn(2) ? "\r\n" : "\r");
        break;
    case 2:
        PutIn(text, std::string(Below(6000, random), random.OneIn(2) ? ' ' : '1'), random);
        break;
    case 3: {
        const std::string other = OneOf(good, random);
        const Span line = OneOf(LinesOf(other), random);
        PutIn(text, other.substr(line.begin, line.size), random);
        break;
    }
    case 4:
        text += text;
        break;
    default:
        ChangeCase(text, random);
        break;
    }
}

} // namespace

std::string Mutated(const std::vector<std::string>& good, Random& random)
{
    std::string text = good[Below(good.size(), random)];
    for (int i = random.OneIn(100) ? 0 : 1 + random.Below(4); i > 0 && !text.empty(); --i) {
        switch (random.Below(6)) {
        case 0:
        case 1:
            MutateBytes(text, random);
            break;
        case 2:
            MutatePieces(text, LinesOf(text), random);
            break;
        case 3:
            MutatePieces(text, WordsOf(text), random);
            break;
        case 4:
            MutateNumbers(text, random);
            break;
        default:
            MutateSeldom(text, good, random);
            break;
        }
    }
    return text;
}

} // namespace test
