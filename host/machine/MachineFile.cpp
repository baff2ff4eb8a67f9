#include "machine/MachineFile.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "machine/AxisName.h"
#include "text/Quoted.h"
#include "text/TomlTable.h"

namespace host
{

namespace
{

constexpr std::size_t kMaxEntries = 64; // axes, mounts or streams: far more than machines have
constexpr double kPerpendicularTolerance = 1e-6;

Vec3 Direction(const TomlTable& table, std::string_view key)
{
    const auto direction = Normalised(table.Numbers<3>(key, "[0, 0, 1]"));
    if (!direction) {
        table.Refuse(key, std::string(key) + " of " + table.What() +
                              " has no length; give the direction as [x, y, z]");
    }
    return *direction;
}

/// Reads the file's tables in turn. Angles are turned into radians here.
class Reader
{
  public:
    explicit Reader(const std::string& file) { machine.file = file; }

    MachineDescription Read(const toml::table& document)
    {
        const TomlTable root(document, machine.file, "the file");
        root.RefuseKeysOtherThan({"machine", "axis", "mount", "stream"});
        ReadHeader(document);
        ForEachTable(document, "axis", [this](TomlTable& table) { ReadAxis(table); });
        ForEachTable(document, "mount", [this](TomlTable& table) { ReadMount(table); });
        ForEachTable(document, "stream", [this](TomlTable& table) { ReadStream(table); });
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
        const TomlTable table(*header->as_table(), machine.file, "[machine]");
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
            TomlTable table(*entry.as_table(), machine.file, name);
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

    void ReadAxis(TomlTable& table)
    {
        table.RefuseKeysOtherThan({"name", "parent", "type", "direction", "point", "limits",
                                   "unlimited", "initial", "word", "word_sign"});
        AxisDescription axis;
        axis.name = table.Text("name", "\"X\"");
        RefuseUnspeakableName(machine.file, axis.name);
        table.SetWhat("axis " + Quoted(axis.name.value));
        axis.parent = table.Text("parent", "\"base\"");
        axis.isRotary = table.Choice("type", {"linear", "rotary"}) == 1;
        axis.direction = Direction(table, "direction");
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

    double FromFile(double value, bool isRotary) const
    {
        return isRotary && angle == AngleUnit::Degree ? ToRadians(value) : value;
    }

    Range ReadLimits(const TomlTable& table, bool isRotary) const
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
        const auto [low, high] = table.Numbers<2>(
            "limits", "[-300, 300], or unlimited = true for an axis without limits");
        if (low > high) {
            table.Refuse("limits", "the limits of " + table.What() +
                                       " are in the wrong order; write the lower one first");
        }
        return {FromFile(low, isRotary), FromFile(high, isRotary)};
    }

    double ReadInitial(const TomlTable& table, const AxisDescription& axis) const
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

    static int ReadWordSign(const TomlTable& table)
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

    void ReadMount(TomlTable& table)
    {
        table.RefuseKeysOtherThan({"name", "kind", "parent", "origin", "z_axis", "x_axis"});
        MountDescription mount;
        mount.name = table.Text("name", "\"spindle\"");
        table.SetWhat("mount " + Quoted(mount.name.value));
        mount.kind =
            table.Choice("kind", {"tool", "part"}) == 0 ? MountKind::Tool : MountKind::Part;
        mount.parent = table.Text("parent", "\"Z\"");
        mount.origin = table.Numbers<3>("origin", "[0, 0, 0]");
        mount.zAxis = Direction(table, "z_axis");
        mount.xAxis = Direction(table, "x_axis");
        if (!(std::fabs(Dot(mount.xAxis, mount.zAxis)) <= kPerpendicularTolerance)) {
            table.Refuse("x_axis", "x_axis of " + table.What() +
                                       " is not perpendicular to its z_axis; correct one of them");
        }
        machine.mounts.push_back(mount);
    }

    void ReadStream(const TomlTable& table)
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

} // namespace host
