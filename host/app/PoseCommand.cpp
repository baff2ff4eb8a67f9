#include "app/PoseCommand.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "geometry/Frame.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

std::string AxisNames(const LoadedMachine& machine)
{
    std::string names;
    for (const Axis& axis : machine.axes) {
        names += (names.empty() ? "" : ", ") + axis.name;
    }
    return names;
}

/// Moves the axes to the values named on the command line.
class AxisSetter
{
  public:
    AxisSetter(const LoadedMachine& ofMachine, const ShownUnits& inUnits, std::ostream& warnings)
        : machine(ofMachine), units(inUnits), err(warnings)
    {}

    void Set(const std::string& word)
    {
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const auto axis = std::find_if(machine.axes.begin(), machine.axes.end(),
                                       [&](const Axis& one) { return one.name == name; });
        if (equals == std::string::npos || axis == machine.axes.end()) {
            Refuse(word, "is no axis with its value");
        }
        const auto shown = ParseNumber(std::string_view(word).substr(equals + 1));
        if (!shown) {
            Refuse(word, "has no number behind the =");
        }
        if (!taken.insert(name).second) {
            Refuse(word, "sets an axis that was set before");
        }
        const double value = FromShown(*axis, *shown, units);
        if (value < axis->joint->GetLowBound() || value > axis->joint->GetHiBound()) {
            err << "warning: " << ValueText(*axis, value, units) << " is outside its "
                << LimitsText(*axis, units) << "\n";
        }
        axis->joint->SetCurValue(value);
    }

  private:
    [[noreturn]] void Refuse(const std::string& word, const std::string& fault) const
    {
        throw InputError(machine.file, Quoted(word) + " " + fault +
                                           "; write NAME=VALUE once for each of the axes " +
                                           AxisNames(machine) + " as needed");
    }

    const LoadedMachine& machine;
    ShownUnits units;
    std::ostream& err;
    std::set<std::string> taken;
};

std::string TripleText(const Vec3& values, const std::array<std::string_view, 3>& letters,
                       int decimals)
{
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        text +=
            (i == 0 ? "" : "  ") + std::string(letters[i]) + " " + FixedText(values[i], decimals);
    }
    return text;
}

} // namespace

ExitCode Pose(const PoseOptions& options, std::ostream& out, std::ostream& err)
{
    LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const LoadedStream& stream = machine.StreamWithId(options.machine.stream);
    const ShownUnits units{machine.length,
                           options.inRadians ? AngleUnit::Radian : AngleUnit::Degree};
    AxisSetter setter(machine, units, err);
    for (const std::string& word : options.values) {
        setter.Set(word);
    }
    const IkXformMat partToTool = stream.stream->SolveFK(false).GetCompleteState();

    constexpr int kPositionDecimals = 6;
    constexpr int kDirectionDecimals = 9;
    constexpr std::array<std::string_view, 3> kPlace{"x", "y", "z"};
    constexpr std::array<std::string_view, 3> kCosines{"i", "j", "k"};
    out << "stream " << stream.id << ": tool " << Quoted(stream.tool) << " in coordinates of part "
        << Quoted(stream.part) << "\n"
        << "position   " << TripleText(Column(partToTool, 3), kPlace, kPositionDecimals) << " "
        << Symbol(units.length) << "\n"
        << "direction  " << TripleText(Column(partToTool, 2), kCosines, kDirectionDecimals) << "\n"
        << "x axis     " << TripleText(Column(partToTool, 0), kCosines, kDirectionDecimals) << "\n";
    return kExitOk;
}

} // namespace host
