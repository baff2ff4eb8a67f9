#include "mutated/PlainToml.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "mutated/PlainText.h"

namespace test
{

namespace
{

/// Cut off at a # outside of quotes.
std::string WithoutComment(const std::string& line)
{
    bool isInQuotes = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        isInQuotes = isInQuotes != (line[i] == '"');
        if (line[i] == '#' && !isInQuotes) {
            return line.substr(0, i);
        }
    }
    return line;
}

bool IsName(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
    });
}

bool IsPlainText(const std::string& value)
{
    return value.size() >= 2 && value.front() == '"' && value.back() == '"' &&
           value.find_first_of("\"\\", 1) == value.size() - 1;
}

bool IsPlainNumber(const std::string& value)
{
    return !value.empty() && value.find_first_not_of("+-.0123456789eE") == std::string::npos &&
           value.find_first_of("0123456789") != std::string::npos;
}

bool IsPlainValue(const std::string& value)
{
    return value == "true" || value == "false" || IsPlainText(value) || IsPlainNumber(value);
}

/// What stands between the brackets of a list.
std::vector<std::string> Items(const std::string& list)
{
    std::vector<std::string> items(1);
    bool isInQuotes = false;
    for (const char c : list.substr(1, list.size() - 2)) {
        isInQuotes = isInQuotes != (c == '"');
        if (c == ',' && !isInQuotes) {
            items.emplace_back();
        } else {
            items.back() += c;
        }
    }
    std::transform(items.begin(), items.end(), items.begin(), Trim);
    if (items.back().empty()) {
        items.pop_back(); // a comma may stand at the end
    }
    return items;
}

bool IsPlainList(const std::string& value)
{
    if (value.size() < 2 || value.front() != '[' || value.back() != ']') {
        return false;
    }
    const std::vector<std::string> items = Items(value);
    return std::all_of(items.begin(), items.end(), IsPlainValue);
}

/// The name in a table's head, or nothing.
std::string HeadOf(const std::string& line)
{
    const std::size_t brackets = line.rfind("[[", 0) == 0 ? 2 : 1;
    if (line.size() < 2 * brackets + 1 || line.front() != '[' ||
        line.substr(line.size() - brackets) != std::string(brackets, ']')) {
        return "";
    }
    return Trim(line.substr(brackets, line.size() - 2 * brackets));
}

} // namespace

std::string PlainTable::Text(const std::string& key) const
{
    const std::string& value = values.at(key);
    return value.substr(1, value.size() - 2);
}

double PlainTable::Number(const std::string& key) const
{
    return PlainNumber(values.at(key));
}

std::vector<double> PlainTable::Numbers(const std::string& key) const
{
    const std::vector<std::string> items = Items(values.at(key));
    std::vector<double> numbers;
    std::transform(items.begin(), items.end(), std::back_inserter(numbers), PlainNumber);
    return numbers;
}

std::vector<std::string> PlainTable::Texts(const std::string& key) const
{
    std::vector<std::string> texts = Items(values.at(key));
    for (std::string& text : texts) {
        text = text.substr(1, text.size() - 2);
    }
    return texts;
}

std::optional<std::vector<PlainTable>> PlainToml(const std::string& text)
{
    std::vector<PlainTable> tables(1);
    for (const std::string& whole : PlainLines(text)) {
        const std::string line = Trim(WithoutComment(whole));
        if (line.empty()) {
            continue;
        }
        if (const std::string head = HeadOf(line); IsName(head)) {
            tables.push_back({head, {}});
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            return std::nullopt;
        }
        const std::string key = Trim(line.substr(0, equals));
        const std::string value = Trim(line.substr(equals + 1));
        if (!IsName(key) || !(IsPlainValue(value) || IsPlainList(value))) {
            return std::nullopt;
        }
        tables.back().values[key] = value;
    }
    return tables;
}

std::vector<PlainTable> Named(const std::vector<PlainTable>& tables, const std::string& name)
{
    std::vector<PlainTable> named;
    std::copy_if(tables.begin(), tables.end(), std::back_inserter(named),
                 [&name](const PlainTable& table) { return table.name == name; });
    return named;
}

} // namespace test
