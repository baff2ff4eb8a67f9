#include "post/Dialect.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>

#include "post/BundledDialects.h"
#include "text/InputFile.h"
#include "text/Quoted.h"
#include "text/TomlTable.h"

namespace host
{

namespace
{

constexpr std::uintmax_t kMaxDialectBytes = 1024UL * 1024;
constexpr int kMostDecimals = 9;
constexpr int kLargestLineNumber = 999999999;
constexpr std::array<std::string_view, 5> kPlaceholders{"program", "machine", "operation", "tool",
                                                        "unit"};

bool IsPlaceholder(std::string_view name)
{
    return std::find(kPlaceholders.begin(), kPlaceholders.end(), name) != kPlaceholders.end();
}

/// Nothing but placeholders stands in braces.
bool HasStrayBrace(std::string_view line)
{
    while (true) {
        const std::size_t open = line.find_first_of("{}");
        if (open == std::string_view::npos) {
            return false;
        }
        const std::size_t close = line.find('}', open);
        if (line[open] == '}' || close == std::string_view::npos ||
            !IsPlaceholder(line.substr(open + 1, close - open - 1))) {
            return true;
        }
        line.remove_prefix(close + 1);
    }
}

void RefuseUnprintable(const TomlTable& table, const Located<std::string>& text)
{
    const auto isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
    if (!std::all_of(text.value.begin(), text.value.end(), isPrintable)) {
        table.Refuse(text.at, Quoted(text.value) + " has characters that controls do not read; "
                                                   "write one line of plain ASCII");
    }
}

std::string ReadWord(const TomlTable& table, std::string_view key, std::string_view example)
{
    const Located<std::string> word = table.Text(key, example);
    RefuseUnprintable(table, word);
    return word.value;
}

int ReadIntegerWithin(const TomlTable& table, std::string_view key, int low, int high,
                      std::string_view example)
{
    const Located<int> number = table.Integer(key, example);
    if (number.value < low || number.value > high) {
        table.Refuse(number.at, std::string(key) + " is " + std::to_string(number.value) +
                                    "; it is from " + std::to_string(low) + " to " +
                                    std::to_string(high));
    }
    return number.value;
}

double ReadPositive(const TomlTable& table, std::string_view key, std::string_view example)
{
    const double number = table.Number(key, example);
    if (!(number > 0.0)) {
        table.Refuse(key, std::string(key) + " is not greater than 0; write for instance " +
                              std::string(key) + " = " + std::string(example));
    }
    return number;
}

std::vector<std::string> ReadLines(const TomlTable& table, std::string_view key,
                                   std::string_view example)
{
    std::vector<std::string> lines;
    for (const Located<std::string>& line : table.Texts(key, example)) {
        RefuseUnprintable(table, line);
        if (HasStrayBrace(line.value)) {
            table.Refuse(line.at, "in braces stand {program}, {machine}, {operation}, {tool} and "
                                  "{unit} only; correct " +
                                      Quoted(line.value));
        }
        lines.push_back(line.value);
    }
    return lines;
}

Decimals ReadDecimals(const TomlTable& table)
{
    table.RefuseKeysOtherThan({"mm", "inch", "degree", "feed", "trailing_zeros"});
    Decimals decimals;
    decimals.mm = ReadIntegerWithin(table, "mm", 1, kMostDecimals, "4");
    decimals.inch = ReadIntegerWithin(table, "inch", 1, kMostDecimals, "5");
    decimals.degree = ReadIntegerWithin(table, "degree", 1, kMostDecimals, "4");
    decimals.feed = ReadIntegerWithin(table, "feed", 0, kMostDecimals, "3");
    decimals.keepsZeros = table.IsTrue("trailing_zeros");
    return decimals;
}

FeedRules ReadFeed(const TomlTable& table)
{
    table.RefuseKeysOtherThan({"mode", "word", "per_revolution", "largest", "rotary_rate"});
    FeedRules feed;
    feed.mode = table.Choice("mode", {"inverse-time", "per-minute"}) == 0 ? FeedMode::InverseTime
                                                                          : FeedMode::PerMinute;
    feed.word = ReadWord(table, "word", "\"G93\"");
    if (table.Has("per_revolution")) {
        feed.perRevolution = ReadWord(table, "per_revolution", "\"G95\"");
    }
    feed.largest = ReadPositive(table, "largest", "99999.999");
    feed.rotaryRate_deg = ReadPositive(table, "rotary_rate", "3600");
    return feed;
}

LineNumbers ReadLineNumbers(const TomlTable& table)
{
    table.RefuseKeysOtherThan({"first", "step", "last"});
    LineNumbers numbers;
    numbers.first = ReadIntegerWithin(table, "first", 0, kLargestLineNumber, "10");
    numbers.step = ReadIntegerWithin(table, "step", 1, kLargestLineNumber, "10");
    numbers.last = ReadIntegerWithin(table, "last", numbers.first, kLargestLineNumber, "99990");
    return numbers;
}

std::optional<TcpLines> ReadTcp(const TomlTable& table)
{
    if (!table.Has("tcp_on") && !table.Has("tcp_off")) {
        return std::nullopt;
    }
    return TcpLines{ReadLines(table, "tcp_on", R"(["G43.4 H{tool}"])"),
                    ReadLines(table, "tcp_off", R"(["G49"])")};
}

void ReadBlocks(const TomlTable& table, Dialect& dialect)
{
    table.RefuseKeysOtherThan({"modal", "long_words", "comment", "line_numbers"});
    dialect.isModal = table.IsTrue("modal");
    dialect.takesLongWords = table.IsTrue("long_words");
    dialect.comment = table.Choice("comment", {"()", ";"}) == 0 ? CommentStyle::Parentheses
                                                                : CommentStyle::Semicolon;
    if (table.Has("line_numbers")) {
        dialect.lineNumbers = ReadLineNumbers(table.Table("line_numbers"));
    }
}

void ReadAllLines(const TomlTable& table, Dialect& dialect)
{
    table.RefuseKeysOtherThan({"header", "footer", "tool_change", "tcp_on", "tcp_off"});
    dialect.header = ReadLines(table, "header", R"(["%", "{unit} G90"])");
    dialect.footer = ReadLines(table, "footer", R"(["M30", "%"])");
    dialect.toolChange = ReadLines(table, "tool_change", R"(["T{tool} M6"])");
    dialect.tcp = ReadTcp(table);
}

} // namespace

Dialect ReadDialect(std::string_view text, const std::string& file)
{
    const toml::table document = ParseToml(text, file);
    const TomlTable root(document, file, "the dialect");
    root.RefuseKeysOtherThan({"name", "decimals", "words", "feed", "blocks", "lines"});
    Dialect dialect;
    dialect.file = file;
    dialect.name = ReadWord(root, "name", "\"my-control\"");
    dialect.decimals = ReadDecimals(root.Table("decimals"));
    const TomlTable words = root.Table("words");
    words.RefuseKeysOtherThan({"mm", "inch", "rapid", "linear"});
    dialect.mm = ReadWord(words, "mm", "\"G21\"");
    dialect.inch = ReadWord(words, "inch", "\"G20\"");
    dialect.rapid = ReadWord(words, "rapid", "\"G0\"");
    dialect.linear = ReadWord(words, "linear", "\"G1\"");
    dialect.feed = ReadFeed(root.Table("feed"));
    ReadBlocks(root.Table("blocks"), dialect);
    ReadAllLines(root.Table("lines"), dialect);
    return dialect;
}

Dialect LoadDialect(const std::string& nameOrFile)
{
    const std::vector<BundledDialect>& bundled = BundledDialects();
    const auto found = std::find_if(bundled.begin(), bundled.end(), [&](const auto& candidate) {
        return candidate.name == nameOrFile;
    });
    if (found != bundled.end()) {
        return ReadDialect(found->text, "dialects/" + nameOrFile + ".toml");
    }
    std::error_code notThere;
    if (!std::filesystem::exists(nameOrFile, notThere)) {
        std::string names;
        for (const std::string& name : BundledDialectNames()) {
            names += (names.empty() ? "" : ", ") + name;
        }
        throw InputError(nameOrFile, "there is no dialect of this name and no file either; the "
                                     "bundled dialects are " +
                                         names);
    }
    return ReadDialect(ReadWholeFile(nameOrFile, kMaxDialectBytes), nameOrFile);
}

std::vector<std::string> BundledDialectNames()
{
    std::vector<std::string> names;
    for (const BundledDialect& dialect : BundledDialects()) {
        names.emplace_back(dialect.name);
    }
    return names;
}

std::string Filled(std::string_view line, const std::function<std::string(std::string_view)>& value)
{
    std::string filled;
    while (true) {
        const std::size_t open = line.find('{');
        const std::size_t close = open == std::string_view::npos ? open : line.find('}', open);
        if (close == std::string_view::npos) {
            return filled.append(line);
        }
        filled += line.substr(0, open);
        filled += value(line.substr(open + 1, close - open - 1));
        line.remove_prefix(close + 1);
    }
}

} // namespace host
