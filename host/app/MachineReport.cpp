#include "app/MachineReport.h"

#include <algorithm>

#include "geometry/Frame.h"
#include "text/Columns.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

std::string TripleText(const Vec3& values)
{
    return "(" + DecimalText(values[0]) + ", " + DecimalText(values[1]) + ", " +
           DecimalText(values[2]) + ")";
}

bool Has(const std::vector<std::size_t>& axes, std::size_t axis)
{
    return std::find(axes.begin(), axes.end(), axis) != axes.end();
}

} // namespace

MachineReport::MachineReport(const LoadedMachine& ofMachine, const ShownUnits& inUnits,
                             std::ostream& to)
    : machine(ofMachine), units(inUnits), out(to)
{}

void MachineReport::Print(const LoadedStream* only) const
{
    out << "machine    " << Quoted(machine.name) << "\n"
        << "file       " << machine.file << "\n"
        << "units      " << Symbol(units.length) << ", " << Symbol(units.angle) << "\n";
    PrintAxes();
    for (const LoadedStream& stream : machine.streams) {
        if (only == nullptr || only == &stream) {
            PrintStream(stream);
        }
    }
}

void MachineReport::PrintAxes() const
{
    out << "axes       " << machine.axes.size()
        << ", moving their own body like this for positive values (machine coordinates)\n";
    Columns columns;
    for (std::size_t i = 0; i < machine.axes.size(); ++i) {
        const Axis& axis = machine.axes[i];
        columns.Add(
            {axis.name, axis.isRotary ? "rotary" : "linear", MotionText(axis),
             LimitsText(axis, units) +
                 (axis.IsUnlimited() ? std::string() : " " + std::string(Symbol(axis, units))),
             "starts at " + DecimalText(Shown(axis, axis.initial, units)),
             "word " + std::string(axis.wordSign < 0 ? "-" : "") + axis.word, UsesOf(i)});
    }
    columns.Print(out, "  ");
}

std::string MachineReport::MotionText(const Axis& axis) const
{
    const std::string direction = TripleText(axis.direction);
    return axis.isRotary ? "about " + direction + " through " + TripleText(axis.point)
                         : "along " + direction;
}

std::string MachineReport::UsesOf(std::size_t axis) const
{
    std::string uses;
    const auto add = [&](const std::string& use, int id) {
        const std::string stream = machine.streams.size() > 1 ? " of " + std::to_string(id) : "";
        uses += (uses.empty() ? "carries the " : " and the ") + use + stream;
    };
    for (const LoadedStream& stream : machine.streams) {
        if (Has(stream.toolAxes, axis)) {
            add("tool", stream.id);
        }
        if (Has(stream.partAxes, axis)) {
            add("part", stream.id);
        }
    }
    return uses.empty() ? "in no stream: stays where it starts" : uses;
}

std::string MachineReport::ChainText(const std::vector<std::size_t>& axes,
                                     const std::string& end) const
{
    std::string text = "base";
    for (const std::size_t axis : axes) {
        text += " -> " + machine.axes[axis].name;
    }
    return text + " -> " + Quoted(end);
}

void MachineReport::PrintStream(const LoadedStream& stream) const
{
    constexpr int kPlaceDecimals = 4;
    constexpr int kDirectionDecimals = 6;
    machine.MoveToInitial();
    const IkXformMat partToTool = stream.stream->SolveFK(false).GetCompleteState();
    const auto triple = [](const Vec3& values, int decimals) {
        return FixedText(values[0], decimals) + "  " + FixedText(values[1], decimals) + "  " +
               FixedText(values[2], decimals);
    };
    out << "stream " << stream.id << "\n"
        << "  tool     " << ChainText(stream.toolAxes, stream.tool) << "\n"
        << "  part     " << ChainText(stream.partAxes, stream.part) << "\n"
        << "  start    tool's seat in part coordinates: "
        << triple(Column(partToTool, 3), kPlaceDecimals) << " " << Symbol(units.length)
        << ", direction " << triple(Column(partToTool, 2), kDirectionDecimals) << "\n";
}

} // namespace host
