#ifndef TRUNNION_TESTS_HOST_MUTATED_PLAIN_TOML_H
#define TRUNNION_TESTS_HOST_MUTATED_PLAIN_TOML_H

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test
{

/// A table of a TOML text: its values as they are written.
struct PlainTable
{
    std::string name;
    std::map<std::string, std::string> values;

    bool Has(const std::string& key) const { return values.count(key) > 0; }
    std::string Text(const std::string& key) const; //!< without quotes
    double Number(const std::string& key) const;
    std::vector<double> Numbers(const std::string& key) const;
    std::vector<std::string> Texts(const std::string& key) const;
};

/// The tables in their order, first that without name. Nothing where the text is written in other
/// ways than a table's head or `key = value` a line, with plain numbers and plain texts.
std::optional<std::vector<PlainTable>> PlainToml(const std::string& text);

/// The tables of one name.
std::vector<PlainTable> Named(const std::vector<PlainTable>& tables, const std::string& name);

} // namespace test

#endif
