#include "text/TomlTable.h"

#include <cmath>
#include <cstdint>
#include <utility>

#include "text/Quoted.h"

namespace host
{

namespace
{

std::string Joined(std::initializer_list<std::string_view> words)
{
    std::string text;
    for (const std::string_view word : words) {
        text += (text.empty() ? "" : ", ") + std::string(word);
    }
    return text;
}

std::string Assigned(std::string_view key, std::string_view example)
{
    return std::string(key) + " = " + std::string(example);
}

std::string_view TypeName(const toml::node& node)
{
    switch (node.type()) {
    case toml::node_type::table:
        return "a table";
    case toml::node_type::array:
        return "an array";
    case toml::node_type::string:
        return "a string";
    case toml::node_type::integer:
    case toml::node_type::floating_point:
        return "a number";
    case toml::node_type::boolean:
        return "true or false";
    default:
        return "a date or time";
    }
}

/// Of a node that is a number. The reader's own conversion gives nothing for whole numbers that a
/// double does not hold exactly.
double NumberOf(const toml::node& node)
{
    const auto* const whole = node.as_integer();
    return whole != nullptr ? static_cast<double>(whole->get()) : node.as_floating_point()->get();
}

} // namespace

TomlTable::TomlTable(const toml::table& ofFile, std::string fileName, std::string name)
    : table(ofFile), file(std::move(fileName)), what(std::move(name))
{}

void TomlTable::SetWhat(std::string name)
{
    what = std::move(name);
}

void TomlTable::Refuse(TextPosition at, const std::string& sentence) const
{
    throw InputError(file, at, sentence);
}

void TomlTable::Refuse(std::string_view key, const std::string& sentence) const
{
    Refuse(PositionOf(table.get(key)->source()), sentence);
}

void TomlTable::RefuseKeysOtherThan(std::initializer_list<std::string_view> known) const
{
    const toml::key* first = nullptr;
    for (const auto& [key, value] : table) {
        const bool isKnown = std::find(known.begin(), known.end(), key.str()) != known.end();
        if (!isKnown && (first == nullptr || key.source().begin < first->source().begin)) {
            first = &key;
        }
    }
    if (first != nullptr) {
        Refuse(PositionOf(first->source()), Quoted(first->str()) + " is not a key of " + what +
                                                "; its keys are " + Joined(known));
    }
}

TomlTable TomlTable::Table(std::string_view key) const
{
    const std::string name = "[" + std::string(key) + "]";
    const toml::node* const node = table.get(key);
    if (node == nullptr) {
        Refuse(Position(), what + " has no table " + name + "; add it");
    }
    if (!node->is_table()) {
        Refuse(key, std::string(key) + " is " + std::string(TypeName(*node)) + "; write a table " +
                        name);
    }
    return {*node->as_table(), file, name};
}

Located<std::string> TomlTable::Text(std::string_view key, std::string_view example) const
{
    const toml::node& node = Required(key, example);
    const auto text = node.value_exact<std::string>();
    if (!text) {
        RefuseType(key, node, example);
    }
    if (text->empty()) {
        Refuse(key, std::string(key) + " is empty; write for instance " + Assigned(key, example));
    }
    return {*text, PositionOf(node.source())};
}

std::size_t TomlTable::Choice(std::string_view key,
                              std::initializer_list<std::string_view> choices) const
{
    const Located<std::string> text = Text(key, Quoted(*choices.begin()));
    const auto* const found = std::find(choices.begin(), choices.end(), text.value);
    if (found == choices.end()) {
        Refuse(text.at, std::string(key) + " is " + Quoted(text.value) +
                            "; it is one of: " + Joined(choices));
    }
    return static_cast<std::size_t>(found - choices.begin());
}

bool TomlTable::IsTrue(std::string_view key) const
{
    if (!Has(key)) {
        return false;
    }
    const toml::node& node = *table.get(key);
    if (!node.is_boolean()) {
        RefuseType(key, node, "true");
    }
    return node.as_boolean()->get();
}

double TomlTable::Number(std::string_view key, std::string_view example) const
{
    return NumberIn(key, Required(key, example), example);
}

Located<int> TomlTable::Integer(std::string_view key, std::string_view example) const
{
    const toml::node& node = Required(key, example);
    const auto value = node.value_exact<std::int64_t>();
    if (!value || *value < INT32_MIN || *value > INT32_MAX) {
        Refuse(key, std::string(key) +
                        " is no whole number of at most 32 bits; write for instance " +
                        Assigned(key, example));
    }
    return {static_cast<int>(*value), PositionOf(node.source())};
}

std::vector<Located<std::string>> TomlTable::Texts(std::string_view key,
                                                   std::string_view example) const
{
    std::vector<Located<std::string>> texts;
    for (const toml::node& entry : ArrayOf(key, example)) {
        const auto text = entry.value_exact<std::string>();
        if (!text) {
            RefuseType(key, entry, example);
        }
        texts.push_back({*text, PositionOf(entry.source())});
    }
    return texts;
}

const toml::node& TomlTable::Required(std::string_view key, std::string_view example) const
{
    const toml::node* const node = table.get(key);
    if (node == nullptr) {
        Refuse(Position(), what + " has no " + std::string(key) + "; add for instance " +
                               Assigned(key, example));
    }
    return *node;
}

const toml::array& TomlTable::ArrayOf(std::string_view key, std::string_view example) const
{
    const toml::node& node = Required(key, example);
    const toml::array* const entries = node.as_array();
    if (entries == nullptr) {
        RefuseType(key, node, example);
    }
    return *entries;
}

const toml::array& TomlTable::ArrayOf(std::string_view key, std::size_t size,
                                      std::string_view example) const
{
    const toml::array& entries = ArrayOf(key, example);
    if (entries.size() != size) {
        Refuse(key, std::string(key) + " has " + std::to_string(entries.size()) + " entries, not " +
                        std::to_string(size) + "; write for instance " + Assigned(key, example));
    }
    return entries;
}

void TomlTable::RefuseType(std::string_view key, const toml::node& node,
                           std::string_view example) const
{
    Refuse(PositionOf(node.source()), std::string(key) + " is " + std::string(TypeName(node)) +
                                          "; write for instance " + Assigned(key, example));
}

double TomlTable::NumberIn(std::string_view key, const toml::node& node,
                           std::string_view example) const
{
    if (!node.is_number()) {
        RefuseType(key, node, example);
    }
    const double value = NumberOf(node);
    if (!std::isfinite(value)) {
        Refuse(PositionOf(node.source()), std::string(key) + " of " + what +
                                              " is not a finite number; write for instance " +
                                              Assigned(key, example));
    }
    return value;
}

} // namespace host
