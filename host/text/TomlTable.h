#ifndef TRUNNION_HOST_TEXT_TOML_TABLE_H
#define TRUNNION_HOST_TEXT_TOML_TABLE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "text/Located.h"
#include "text/TomlText.h"

namespace host
{

/// One table of a TOML file, read key by key; what is missing or of the wrong type is refused with
/// its place and an example of what belongs there.
class TomlTable
{
  public:
    /// `name` names the table in sentences, for instance "an axis".
    TomlTable(const toml::table& ofFile, std::string fileName, std::string name);

    void SetWhat(std::string name);
    const std::string& What() const { return what; }
    TextPosition Position() const { return PositionOf(table.source()); }

    [[noreturn]] void Refuse(TextPosition at, const std::string& sentence) const;
    [[noreturn]] void Refuse(std::string_view key, const std::string& sentence) const;

    /// Refuses the unknown key that comes first in the file; the table orders them by name.
    void RefuseKeysOtherThan(std::initializer_list<std::string_view> known) const;

    bool Has(std::string_view key) const { return table.contains(key); }
    /// A table within this one, named [key] in sentences.
    TomlTable Table(std::string_view key) const;
    /// Not empty.
    Located<std::string> Text(std::string_view key, std::string_view example) const;
    /// One of a few words; returns its index.
    std::size_t Choice(std::string_view key, std::initializer_list<std::string_view> choices) const;
    /// False where there is no such key.
    bool IsTrue(std::string_view key) const;
    double Number(std::string_view key, std::string_view example) const;
    Located<int> Integer(std::string_view key, std::string_view example) const;
    /// A list of texts, which may be empty.
    std::vector<Located<std::string>> Texts(std::string_view key, std::string_view example) const;

    template <std::size_t Size>
    std::array<double, Size> Numbers(std::string_view key, std::string_view example) const
    {
        const toml::array& entries = ArrayOf(key, Size, example);
        std::array<double, Size> values{};
        std::transform(entries.begin(), entries.end(), values.begin(),
                       [&](const toml::node& entry) { return NumberIn(key, entry, example); });
        return values;
    }

  private:
    const toml::node& Required(std::string_view key, std::string_view example) const;
    const toml::array& ArrayOf(std::string_view key, std::string_view example) const;
    const toml::array& ArrayOf(std::string_view key, std::size_t size,
                               std::string_view example) const;
    [[noreturn]] void RefuseType(std::string_view key, const toml::node& node,
                                 std::string_view example) const;
    double NumberIn(std::string_view key, const toml::node& node, std::string_view example) const;

    const toml::table& table;
    std::string file;
    std::string what;
};

} // namespace host

#endif
