#include "app/BranchesCommand.h"

#include <algorithm>
#include <array>
#include <iomanip>

#include "geometry/Frame.h"
#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "solve/Branches.h"
#include "solve/Unreached.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr int kNameWidth = 12;
constexpr int kLimitsWidth = 24;
constexpr int kValueWidth = 14;
constexpr std::size_t kMostBranches =
    8; // a six-axis arm has as many; with axes to spare there is no end

[[noreturn]] void Refuse(const std::string& fault)
{
    throw InputError("branches",
                     fault + "; give the pose as x y z i j k, the tool's position and direction");
}

ToolPoint PointFrom(const std::vector<std::string>& words)
{
    std::array<double, 6> numbers{};
    if (words.size() != numbers.size()) {
        Refuse("a pose has six numbers");
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto number = ParseNumber(words[i]);
        if (!number) {
            Refuse(Quoted(words[i]) + " is not a number");
        }
        numbers[i] = *number;
    }
    const auto direction = Normalised({numbers[3], numbers[4], numbers[5]});
    if (!direction) {
        Refuse("the tool direction has no length");
    }
    ToolPoint point;
    point.position = {numbers[0], numbers[1], numbers[2]};
    point.direction = *direction;
    return point;
}

/// A table with a column for each solution and a row for each axis.
class BranchTable
{
  public:
    BranchTable(std::ostream& to, const Branches& ofBranches, const ShownUnits& inUnits)
        : out(to), branches(ofBranches), units(inUnits),
          count(std::min(branches.found.size(), kMostBranches))
    {}

    void Print(const std::vector<const Axis*>& axes)
    {
        Begin("", "");
        for (std::size_t i = 0; i < count; ++i) {
            out << std::right << std::setw(kValueWidth) << i + 1;
        }
        out << "\n";
        for (std::size_t i = 0; i < axes.size(); ++i) {
            const Axis& axis = *axes[i];
            Row(axis.name + " " + std::string(Symbol(axis, units)), LimitsText(axis, units),
                [&](const Branch& branch) { return ValueIn(axis, branch.joints[i]); });
        }
        Row("off by", std::string(Symbol(units.length)),
            [](const Branch& branch) { return RoundedText(branch.error.position); });
        Row("off by", "deg",
            [](const Branch& branch) { return RoundedText(branch.error.direction_deg); });
    }

  private:
    /// A value beyond its limits carries a mark.
    std::string ValueIn(const Axis& axis, double value) const
    {
        const bool isInside =
            value >= axis.joint->GetLowBound() && value <= axis.joint->GetHiBound();
        return (isInside ? "" : "! ") + DecimalText(Shown(axis, value, units));
    }

    void Begin(const std::string& name, const std::string& limits)
    {
        out << std::left << std::setw(kNameWidth) << name << std::setw(kLimitsWidth) << limits;
    }

    template <class TextOf>
    void Row(const std::string& name, const std::string& limits, const TextOf& textOf)
    {
        Begin(name, limits);
        for (std::size_t i = 0; i < count; ++i) {
            out << std::right << std::setw(kValueWidth) << textOf(branches.found[i]);
        }
        out << "\n";
    }

    std::ostream& out;
    const Branches& branches;
    ShownUnits units;
    std::size_t count;
};

/// What the table is about.
void PrintHeading(std::ostream& out, int stream, const Branches& branches)
{
    out << "stream " << stream << ": " << branches.found.size() << " of " << branches.starts
        << " starts lead to distinct solutions";
    if (branches.found.size() > kMostBranches) {
        out << "; the first " << kMostBranches << " of them";
    }
    out << "\n";
    if (branches.xAxis) {
        out << "the pose leaves the turn of the tool about itself open; here its x axis is";
        for (const double number : *branches.xAxis) {
            out << " " << DecimalText(number);
        }
        out << "\n";
    }
}

} // namespace

ExitCode ListBranches(const BranchesOptions& options, std::ostream& out, std::ostream& err)
{
    LoadedMachine machine = LoadMachine(options.machine.file, options.machine.links);
    const LoadedStream& stream = machine.StreamWithId(options.machine.stream);
    const ShownUnits units{machine.length,
                           options.inRadians ? AngleUnit::Radian : AngleUnit::Degree};
    const ToolPoint point = PointFrom(options.pose);
    const Branches branches = FindBranches(
        machine, stream, point, options.ignoresLimits ? IkJoint::JtLimitNone : IkJoint::JtLimitAll);
    if (branches.found.empty()) {
        err << "no solution from " << branches.starts
            << (branches.starts == 1 ? " start: " : " starts: ")
            << Sentence(Diagnose(machine, stream, point), units) << "\n";
        return kExitPointsFailed;
    }
    PrintHeading(out, stream.id, branches);
    BranchTable(out, branches, units).Print(machine.AxesOf(stream));
    return kExitOk;
}

} // namespace host
