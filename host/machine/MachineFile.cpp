#include "machine/MachineFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "machine/TomlText.h"
#include "text/InputFile.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr std::uintmax_t kMaxMachineBytes = 16UL * 1024 * 1024;
constexpr std::size_t kMaxEntries = 64; // axes, mounts or streams: far more than machines have
constexpr double kPerpendicularTolerance = 1e-6;

std::string Joined(std::initializer_list<std::string_view> words)
{
    std::string text;
    for (const std::string_view word : words) {
        text += (text.empty() ? "" : ", ") + std::string(word);
    }
    return text;
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

/// One table of the file, read key by key; what is missing or of the wrong type is refused with its
/// place and an example of what belongs there.
class Table
{
  public:
    /// `name` names the table in sentences, for instance "an axis".
    Table(const toml::table& ofFile, std::string fileName, std::string name)
        : table(ofFile), file(std::move(fileName)), what(std::move(name))
    {}

    void SetWhat(std::string name) { what = std::move(name); }
    const std::string& What() const { return what; }
    TextPosition Position() const { return PositionOf(table.source()); }

    [[noreturn]] void Refuse(TextPosition at, const std::string& sentence) const
    {
        throw InputError(file, at, sentence);
    }
    [[noreturn]] void Refuse(std::string_view key, const std::string& sentence) const
    {
        Refuse(PositionOf(table.get(key)->source()), sentence);
    }

    /// Refuses the unknown key that comes first in the file; the table orders them by name.
    void RefuseKeysOtherThan(std::initializer_list<std::string_view> known) const
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

    bool Has(std::string_view key) const { return table.contains(key); }

    Located<std::string> Text(std::string_view key, std::string_view example) const
    {
        const toml::node& node = Required(key, example);
        const auto text = node.value_exact<std::string>();
        if (!text) {
            RefuseType(key, node, example);
        }
        if (text->empty()) {
            Refuse(key,
                   std::string(key) + " is empty; write for instance " + Assigned(key, example));
        }
        return {*text, PositionOf(node.source())};
    }

    /// One of a few words; returns its index.
    std::size_t Choice(std::string_view key, std::initializer_list<std::string_view> choices) const
    {
        const Located<std::string> text = Text(key, Quoted(*choices.begin()));
        const auto* const found = std::find(choices.begin(), choices.end(), text.value);
        if (found == choices.end()) {
            Refuse(text.at, std::string(key) + " is " + Quoted(text.value) +
                                "; it is one of: " + Joined(choices));
        }
        return static_cast<std::size_t>(found - choices.begin());
    }

    bool IsTrue(std::string_view key) const
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

    double Number(std::string_view key, std::string_view example) const
    {
        return NumberIn(key, Required(key, example), example);
    }

    Located<int> Integer(std::string_view key, std::string_view example) const
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

    template <std::size_t Size>
    std::array<double, Size> Numbers(std::string_view key, std::string_view example) const
    {
        const toml::node& node = Required(key, example);
        const toml::array* const entries = node.as_array();
        if (entries == nullptr) {
            RefuseType(key, node, example);
        }
        if (entries->size() != Size) {
            Refuse(key, std::string(key) + " has " + std::to_string(entries->size()) +
                            " entries, not " + std::to_string(Size) + "; write for instance " +
                            Assigned(key, example));
        }
        std::array<double, Size> values{};
        std::transform(entries->begin(), entries->end(), values.begin(),
                       [&](const toml::node& entry) { return NumberIn(key, entry, example); });
        return values;
    }

    Vec3 Direction(std::string_view key) const
    {
        const auto direction = Normalised(Numbers<3>(key, "[0, 0, 1]"));
        if (!direction) {
            Refuse(key, std::string(key) + " of " + what +
                            " has no length; give the direction as [x, y, z]");
        }
        return *direction;
    }

  private:
    static std::string Assigned(std::string_view key, std::string_view example)
    {
        return std::string(key) + " = " + std::string(example);
    }

    const toml::node& Required(std::string_view key, std::string_view example) const
    {
        const toml::node* const node = table.get(key);
        if (node == nullptr) {
            Refuse(Position(), what + " has no " + std::string(key) + "; add for instance " +
                                   Assigned(key, example));
        }
        return *node;
    }

    [[noreturn]] void RefuseType(std::string_view key, const toml::node& node,
                                 std::string_view example) const
    {
        Refuse(PositionOf(node.source()), std::string(key) + " is " + std::string(TypeName(node)) +
                                              "; write for instance " + Assigned(key, example));
    }

    double NumberIn(std::string_view key, const toml::node& node, std::string_view example) const
    {
        if (!node.is_number()) {
            RefuseType(key, node, example);
        }
        const double value = NumberOf(node);
        if (!std::isfinite(value)) {
            Refuse(PositionOf(node.source()),
                   std::string(key) + " of " + what + " is not a finite number" +
                       (key == "limits" ? "; write unlimited = true for an axis without limits"
                                        : "; write for instance " + Assigned(key, example)));
        }
        return value;
    }

    const toml::table& table;
    std::string file;
    std::string what;
};

/// Reads the file's tables in turn. Angles are turned into radians here.
class Reader
{
  public:
    explicit Reader(const std::string& file) { machine.file = file; }

    MachineDescription Read(const toml::table& document)
    {
        const Table root(document, machine.file, "the file");
        root.RefuseKeysOtherThan({"machine", "axis", "mount", "stream"});
        ReadHeader(document);
        ForEachTable(document, "axis", [this](Table& table) { ReadAxis(table); });
        ForEachTable(document, "mount", [this](Table& table) { ReadMount(table); });
        ForEachTable(document, "stream", [this](Table& table) { ReadStream(table); });
        return std::move(machine);
    }

  private:
    void ReadHeader(const toml::table& document)
    {
        const toml::node* const header = document.get("machine");
        if (header == nullptr || !header->is_table()) {
            const TextPosition at =
                header == nullptr ? TextPosition{1, 1} : PositionOf(header->source());
            throw InputError(machine.file, at,
                             "there is no table [machine] with name, length and angle; add it");
        }
        const Table table(*header->as_table(), machine.file, "[machine]");
        table.RefuseKeysOtherThan({"name", "length", "angle"});
        machine.name = table.Text("name", "\"Trunnion mill\"").value;
        machine.length =
            table.Choice("length", {"mm", "inch"}) == 0 ? LengthUnit::Millimetre : LengthUnit::Inch;
        angle = table.Choice("angle", {"deg", "rad"}) == 0 ? AngleUnit::Degree : AngleUnit::Radian;
    }

    template <class Read>
    void ForEachTable(const toml::table& document, const std::string& key, const Read& read)
    {
        const std::string name = "this " + key;
        for (const toml::node& entry : TablesOf(document, key)) {
            if (!entry.is_table()) {
                throw InputError(machine.file, PositionOf(entry.source()),
                                 name + " is not a table; " + OneForEach(key));
            }
            Table table(*entry.as_table(), machine.file, name);
            read(table);
        }
    }

    static std::string OneForEach(const std::string& key)
    {
        return "write one [[" + key + "]] for each " + key;
    }

    const toml::array& TablesOf(const toml::table& document, const std::string& key) const
    {
        const toml::node* const node = document.get(key);
        if (node == nullptr) {
            throw InputError(machine.file, {1, 1}, "there is no " + key + "; " + OneForEach(key));
        }
        const toml::array* const tables = node->as_array();
        if (tables == nullptr || tables->empty()) {
            throw InputError(machine.file, PositionOf(node->source()),
                             key + " is not a list of tables; " + OneForEach(key));
        }
        if (tables->size() > kMaxEntries) {
            throw InputError(machine.file, PositionOf(tables->get(kMaxEntries)->source()),
                             "there are more than " + std::to_string(kMaxEntries) + " tables [[" +
                                 key + "]]; leave out what does not move or hold anything");
        }
        return *tables;
    }

    void ReadAxis(Table& table)
    {
        table.RefuseKeysOtherThan({"name", "parent", "type", "direction", "point", "limits",
                                   "unlimited", "initial", "word", "word_sign"});
        AxisDescription axis;
        axis.name = table.Text("name", "\"X\"");
        RefuseUnspeakableName(table, axis.name);
        table.SetWhat("axis " + Quoted(axis.name.value));
        axis.parent = table.Text("parent", "\"base\"");
        axis.isRotary = table.Choice("type", {"linear", "rotary"}) == 1;
        axis.direction = table.Direction("direction");
        if (axis.isRotary) {
            axis.point = table.Numbers<3>("point", "[0, 0, 0]");
        } else if (table.Has("point")) {
            table.Refuse("point", table.What() + " is linear, and only a rotary axis has a point; "
                                                 "take the point out");
        }
        axis.limits = ReadLimits(table, axis.isRotary);
        axis.initial = ReadInitial(table, axis);
        axis.word = table.Has("word") ? table.Text("word", "\"A\"").value : axis.name.value;
        axis.wordSign = ReadWordSign(table);
        machine.axes.push_back(axis);
    }

    /// An axis name is a column of the joint table and a word of the command line.
    static void RefuseUnspeakableName(const Table& table, const Located<std::string>& name)
    {
        const auto isBad = [](char c) {
            return static_cast<unsigned char>(c) <= ' ' || c == '\x7F' ||
                   std::string_view("=,;|\"'").find(c) != std::string_view::npos;
        };
        if (std::any_of(name.value.begin(), name.value.end(), isBad)) {
            table.Refuse(name.at, "the name of an axis has no blanks, quotes or any of = , ; | in "
                                  "it; choose a plain one like \"X\"");
        }
    }

    double FromFile(double value, bool isRotary) const
    {
        return isRotary && angle == AngleUnit::Degree ? ToRadians(value) : value;
    }

    Range ReadLimits(const Table& table, bool isRotary) const
    {
        const bool isUnlimited = table.IsTrue("unlimited");
        if (isUnlimited && table.Has("limits")) {
            table.Refuse("unlimited",
                         table.What() + " has limits and unlimited = true; keep one of them");
        }
        if (isUnlimited) {
            return {};
        }
        if (!table.Has("limits")) {
            table.Refuse(table.Position(), table.What() + " has no limits; add limits = [low, "
                                                          "high] or unlimited = true");
        }
        const auto [low, high] = table.Numbers<2>("limits", "[-300, 300]");
        if (low > high) {
            table.Refuse("limits", "the limits of " + table.What() +
                                       " are in the wrong order; write the lower one first");
        }
        return {FromFile(low, isRotary), FromFile(high, isRotary)};
    }

    double ReadInitial(const Table& table, const AxisDescription& axis) const
    {
        const auto isInside = [&axis](double value) {
            return axis.limits.low <= value && value <= axis.limits.high;
        };
        if (!table.Has("initial")) {
            if (!isInside(0.0)) {
                table.Refuse("limits", "0 lies outside the limits of " + table.What() +
                                           "; add initial = the value at which it starts");
            }
            return 0.0;
        }
        const double initial = FromFile(table.Number("initial", "0"), axis.isRotary);
        if (!isInside(initial)) {
            table.Refuse("initial", "initial lies outside the limits of " + table.What() +
                                        "; start it within them");
        }
        return initial;
    }

    static int ReadWordSign(const Table& table)
    {
        if (!table.Has("word_sign")) {
            return 1;
        }
        const int sign = table.Integer("word_sign", "-1").value;
        if (sign != 1 && sign != -1) {
            table.Refuse("word_sign", "word_sign is " + std::to_string(sign) + "; it is 1 or -1");
        }
        return sign;
    }

    void ReadMount(Table& table)
    {
        table.RefuseKeysOtherThan({"name", "kind", "parent", "origin", "z_axis", "x_axis"});
        MountDescription mount;
        mount.name = table.Text("name", "\"spindle\"");
        table.SetWhat("mount " + Quoted(mount.name.value));
        mount.kind =
            table.Choice("kind", {"tool", "part"}) == 0 ? MountKind::Tool : MountKind::Part;
        mount.parent = table.Text("parent", "\"Z\"");
        mount.origin = table.Numbers<3>("origin", "[0, 0, 0]");
        mount.zAxis = table.Direction("z_axis");
        mount.xAxis = table.Direction("x_axis");
        if (!(std::fabs(Dot(mount.xAxis, mount.zAxis)) <= kPerpendicularTolerance)) {
            table.Refuse("x_axis", "x_axis of " + table.What() +
                                       " is not perpendicular to its z_axis; correct one of them");
        }
        machine.mounts.push_back(mount);
    }

    void ReadStream(const Table& table)
    {
        table.RefuseKeysOtherThan({"id", "tool", "part"});
        StreamDescription stream;
        stream.id = table.Integer("id", "1");
        stream.tool = table.Text("tool", "\"spindle\"");
        stream.part = table.Text("part", "\"table\"");
        machine.streams.push_back(stream);
    }

    MachineDescription machine;
    AngleUnit angle{AngleUnit::Degree};
};

} // namespace

MachineDescription ReadMachine(std::string_view text, const std::string& file)
{
    return Reader(file).Read(ParseToml(text, file));
}

MachineDescription ReadMachineFile(const std::filesystem::path& path)
{
    return ReadMachine(ReadWholeFile(path, kMaxMachineBytes), path.string());
}

} // namespace host
