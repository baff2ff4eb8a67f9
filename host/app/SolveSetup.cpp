#include "app/SolveSetup.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "app/Operations.h"
#include "machine/AxisText.h"
#include "solve/RollSearch.h"
#include "solve/ToolRoll.h"
#include "table/JointTable.h"
#include "text/Fingerprint.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

/// The least direction error that the solver sees: below it a direction counts as met [deg].
constexpr double kLeastAngle_deg = 0.001;

Axis& AxisNamed(LoadedMachine& machine, const std::string& option, const std::string& name)
{
    const auto axis = std::find_if(machine.axes.begin(), machine.axes.end(),
                                   [&](const Axis& one) { return one.name == name; });
    if (axis == machine.axes.end()) {
        std::string names;
        for (const Axis& one : machine.axes) {
            names += (names.empty() ? "" : ", ") + one.name;
        }
        throw InputError(option, "there is no axis " + Quoted(name) + "; the machine has " + names);
    }
    return *axis;
}

bool IsSecondWord(const std::string& option, const std::string& word, const char* first,
                  const char* second)
{
    if (word != first && word != second) {
        throw InputError(option, Quoted(word) + " is not known; give " + first + " or " + second);
    }
    return word == second;
}

double Positive(const std::string& option, double value)
{
    if (!(value > 0.0) || !std::isfinite(value)) {
        throw InputError(option, RoundedText(value) + " is not greater than 0; correct it");
    }
    return value;
}

double NotNegative(const std::string& option, double value)
{
    if (!(value >= 0.0) || !std::isfinite(value)) {
        throw InputError(option, RoundedText(value) + " is below 0; correct it");
    }
    return value;
}

std::optional<AxisPreference> PreferenceFrom(const std::string& text, LoadedMachine& machine)
{
    if (text.empty()) {
        return std::nullopt;
    }
    const char sign = text.back();
    if (text.size() < 2 || (sign != '+' && sign != '-')) {
        throw InputError("--prefer", Quoted(text) + " is no axis with a sign; write for instance "
                                                    "A+ or A-");
    }
    return AxisPreference{&AxisNamed(machine, "--prefer", text.substr(0, text.size() - 1)),
                          sign == '+'};
}

CostWeights Checked(const CostWeights& weights)
{
    NotNegative("--weight-travel", weights.travel);
    NotNegative("--weight-limits", weights.limits);
    NotNegative("--weight-pole", weights.pole);
    NotNegative("--weight-preference", weights.preference);
    return weights;
}

PlanOptions PlanFrom(const SolveOptions& options, LoadedMachine& machine)
{
    constexpr double kMostCone_deg = 45.0;
    constexpr double kRetract_mm = 50.0;
    constexpr double kRetract_inch = 2.0;
    PlanOptions plan;
    plan.tolerances.linear = Positive(
        "--linear-tol", options.linearTolerance.value_or(DefaultTolerances(machine.length).linear));
    plan.tolerances.angle_deg = Positive("--angle-tol", options.angleTolerance_deg);
    plan.insertsRows = !options.pointsOnly;
    plan.poleCone = ToRadians(NotNegative("--pole-cone", options.poleCone_deg));
    if (options.poleCone_deg > kMostCone_deg) {
        throw InputError("--pole-cone", RoundedText(options.poleCone_deg) +
                                            " deg is no cone around the pole any more; give at "
                                            "most 45");
    }
    plan.start = IsSecondWord("--start", options.start, "home", "free") ? StartPolicy::Free
                                                                        : StartPolicy::Home;
    plan.weights = Checked(options.weights);
    plan.preference = PreferenceFrom(options.prefer, machine);
    const auto retractsFor = [](const std::string& option, const std::string& word) {
        return IsSecondWord(option, word, "rapids", "retract") ? RetractPolicy::Retract
                                                               : RetractPolicy::Refuse;
    };
    plan.rewind = retractsFor("--rewind", options.rewind);
    plan.branchChange = retractsFor("--branch-change", options.branchChange);
    plan.retract = Positive(
        "--retract",
        options.retract.value_or(machine.length == LengthUnit::Inch ? kRetract_inch : kRetract_mm));
    return plan;
}

SolverSettings SettingsFrom(const SolveOptions& options)
{
    constexpr int kMostIterations = 100000;
    if (options.maxIterations < 1 || options.maxIterations > kMostIterations) {
        throw InputError("--max-iterations", std::to_string(options.maxIterations) +
                                                 " is not between 1 and 100000; correct it");
    }
    return {Positive("--tolerance", options.tolerance), options.maxIterations};
}

void WarnOfAngles(const SolveOptions& options, std::ostream& warnings)
{
    if (options.angleTolerance_deg < kLeastAngle_deg ||
        options.tolerance < SolverSettings{}.tolerance) {
        warnings << "warning: the solver takes a direction as met within 0.001 deg, whatever the "
                    "tolerance; a closer one is not promised\n";
    }
}

/// The policy for the turn about the tool; nothing where it is to stay open.
std::optional<ToolRoll> RollFrom(const SolveOptions& options)
{
    const std::map<std::string, ToolRoll::Policy> policies{{"fixed", ToolRoll::Policy::Fixed},
                                                           {"feed", ToolRoll::Policy::Feed},
                                                           {"search", ToolRoll::Policy::Search}};
    if (options.toolRoll == "open") {
        return std::nullopt;
    }
    const auto policy = policies.find(options.toolRoll);
    if (policy == policies.end()) {
        throw InputError("--tool-roll", Quoted(options.toolRoll) +
                                            " is not known; give fixed, feed, search or open");
    }
    const std::vector<double>& given = options.rollReference;
    const auto reference =
        given.size() == 3 ? Normalised({given[0], given[1], given[2]}) : std::nullopt;
    if (!reference) {
        throw InputError("--tool-roll-reference",
                         "this is no direction; give it as x,y,z in part coordinates");
    }
    return ToolRoll{policy->second, *reference};
}

/// The tool's x axes, where a stream leaves the turn about the tool open and the user does not want
/// it so.
std::vector<Vec3> XAxesFor(const SolveOptions& options, const PlanRequest& request)
{
    const std::optional<ToolRoll> roll = RollFrom(options);
    const bool isOpen = std::any_of(
        request.streams.begin(), request.streams.end(), [&](const LoadedStream* stream) {
            return HasOpenRoll(PointSolver(request.machine, *stream, request.settings));
        });
    if (!roll || !isOpen) {
        return {};
    }
    if (roll->policy == ToolRoll::Policy::Search) {
        return RollSearch(request.machine, request.streams, request.toolLengths, request.settings)
            .XAxes(request.path, *roll);
    }
    return ToolXAxes(request.path, *roll);
}

} // namespace

void LockAxes(LoadedMachine& machine, const std::vector<std::string>& locks, bool inRadians)
{
    const ShownUnits units{machine.length, inRadians ? AngleUnit::Radian : AngleUnit::Degree};
    for (const std::string& lock : locks) {
        const Assignment assignment = SplitAssignment("--lock", lock);
        Axis& axis = AxisNamed(machine, "--lock", assignment.name);
        const auto shown = ParseNumber(assignment.value);
        if (!shown) {
            throw InputError("--lock", Quoted(assignment.value) + " is not a number; write "
                                                                  "NAME=VALUE");
        }
        const double value = FromShown(axis, *shown, units);
        if (value < axis.joint->GetLowBound() || value > axis.joint->GetHiBound()) {
            throw InputError("--lock", ValueText(axis, value, units) + " is outside its " +
                                           LimitsText(axis, units) + "; hold it within them");
        }
        axis.initial = value;
        axis.joint->SetIsLocked(true);
    }
    machine.MoveToInitial();
}

PlanRequest RequestWithoutPoints(const SolveOptions& options, LoadedMachine& machine,
                                 const Toolpath& path)
{
    LockAxes(machine, options.locks, options.inRadians);
    PlanRequest request{
        machine,
        path,
        StreamsOf({options.machine.stream, options.operationStreams}, machine, path),
        ToolLengthsOf(options.toolLength, path),
        {},
        PlanFrom(options, machine),
        SettingsFrom(options)};
    const ShownUnits units{machine.length,
                           options.inRadians ? AngleUnit::Radian : AngleUnit::Degree};
    request.rowText = [table = JointTable(request.Axes(), units)](const MotionRow& row, int line,
                                                                  std::string& text) {
        table.AppendRow(row, line, text);
    };
    return request;
}

PlanRequest RequestFrom(const SolveOptions& options, LoadedMachine& machine, const Toolpath& path,
                        std::ostream& warnings)
{
    PlanRequest request = RequestWithoutPoints(options, machine, path);
    WarnOfAngles(options, warnings);
    request.toolXAxes = XAxesFor(options, request);
    return request;
}

std::string RunFingerprint(const SolveOptions& options, const SourceDigests& sources)
{
    const auto numberOf = [](const std::optional<double>& value) {
        return value ? ShortestText(*value) : std::string("-");
    };
    Fingerprint print;
    print.Add(options.version);
    print.Add(sources.machine);
    print.Add(options.machine.links.tool.value_or(""));
    print.Add(options.machine.links.part.value_or(""));
    print.Add(sources.toolpath);
    print.Add(options.machine.stream ? std::to_string(*options.machine.stream) : "-");
    for (const std::string& text : options.operationStreams) {
        print.Add(text);
    }
    for (const std::string& text : options.locks) {
        print.Add(text);
    }
    print.Add(options.inRadians ? "rad" : "deg");
    print.Add(numberOf(options.toolLength));
    print.Add(ShortestText(options.tolerance));
    print.Add(std::to_string(options.maxIterations));
    print.Add(options.toolRoll);
    for (const double coordinate : options.rollReference) {
        print.Add(ShortestText(coordinate));
    }
    // The angle tolerance and the cone say where the pole begins.
    print.Add(ShortestText(options.angleTolerance_deg));
    print.Add(ShortestText(options.poleCone_deg));
    return print.Hex();
}

} // namespace host
