#include "report/PageData.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include <nlohmann/json.hpp>

#include "geometry/Frame.h"
#include "machine/AxisText.h"

namespace host
{

namespace
{

using Json = nlohmann::ordered_json;

template <class Items, class ItemJson>
Json ListOf(const Items& items, const ItemJson& itemJson)
{
    Json list = Json::array();
    for (const auto& item : items) {
        list.push_back(itemJson(item));
    }
    return list;
}

/// Nothing becomes null.
template <class Value>
Json OptionalJson(const std::optional<Value>& value)
{
    return value ? Json(*value) : Json();
}

int ParentJson(const std::optional<std::size_t>& parent)
{
    constexpr int kBase = -1;
    return parent ? static_cast<int>(*parent) : kBase;
}

// The machine -------------------------------------------------------------------------------------

Json BoundJson(const Axis& axis, double bound)
{
    return std::isfinite(bound) ? Json(Shown(axis, bound, {})) : Json();
}

Json AxisJson(const Axis& axis)
{
    return {{"name", axis.name},
            {"parent", ParentJson(axis.parent)},
            {"type", axis.isRotary ? "rotary" : "linear"},
            {"direction", axis.direction},
            {"point", axis.point},
            {"limits", Json::array({BoundJson(axis, axis.joint->GetLowBound()),
                                    BoundJson(axis, axis.joint->GetHiBound())})},
            {"initial", Shown(axis, axis.initial, {})},
            {"word", axis.word},
            {"wordSign", axis.wordSign}};
}

Json MountJson(const Mount& mount)
{
    return {{"name", mount.name},
            {"kind", mount.kind == MountKind::Tool ? "tool" : "part"},
            {"parent", ParentJson(mount.parent)},
            {"origin", Column(mount.frame, 3)},
            {"zAxis", Column(mount.frame, 2)},
            {"xAxis", Column(mount.frame, 0)}};
}

std::string_view Name(Shape shape)
{
    switch (shape) {
    case Shape::Box:
        return "box";
    case Shape::Cylinder:
        return "cylinder";
    case Shape::Sphere:
        break;
    }
    return "sphere";
}

Json VisualJson(const Visual& visual)
{
    return {{"parent", ParentJson(visual.parent)}, {"name", visual.name},
            {"shape", Name(visual.shape)},         {"size", visual.size},
            {"origin", Column(visual.frame, 3)},   {"xAxis", Column(visual.frame, 0)},
            {"zAxis", Column(visual.frame, 2)},    {"color", OptionalJson(visual.color)}};
}

Json StreamJson(const LoadedStream& stream)
{
    return {{"id", stream.id}, {"tool", stream.tool}, {"part", stream.part}};
}

Json MachineJson(const ShownMachine& shown)
{
    const LoadedMachine& machine = shown.machine;
    return {{"name", machine.name},
            {"file", shown.file.path},
            {"sha256", shown.file.sha256},
            {"lengthUnit", machine.length == LengthUnit::Inch ? "in" : "mm"},
            {"axes", ListOf(machine.axes, AxisJson)},
            {"mounts", ListOf(machine.mounts, MountJson)},
            {"streams", ListOf(machine.streams, StreamJson)},
            {"visuals", ListOf(machine.visuals, VisualJson)}};
}

// The run -----------------------------------------------------------------------------------------

Json OptionJson(const ReportedOption& option)
{
    return {{"name", option.name},
            {"value", std::visit([](const auto& value) { return Json(value); }, option.value)}};
}

Json OutputJson(const ReportedOutput& output)
{
    return {{"kind", output.kind}, {"path", output.path}};
}

Json CountsJson(const ReportedCounts& counts)
{
    return {{"points", counts.points},
            {"converged", counts.converged},
            {"failed", counts.failed},
            {"rows", counts.rows},
            {"inserted", counts.inserted}};
}

Json WorstJson(const std::optional<ReportedError>& worst)
{
    return worst ? Json{{"value", worst->value}, {"line", worst->line}} : Json();
}

/// What depends on both a report and its rows.
class RunPart
{
  public:
    RunPart(const LoadedMachine& ofMachine, const ShownRun& run)
        : machine(ofMachine), report(run.report), rows(run.rows)
    {}

    /// The columns of the rows are empty, and all that ends there comes last.
    Json WithoutColumns() const
    {
        const auto operationJson = [this](const ReportedOperation& operation) {
            return Json{{"name", operation.name},
                        {"line", operation.line},
                        {"firstRow", rows.FirstRowOf(operation.firstPoint)},
                        {"stream", operation.stream},
                        {"toolNumber", OptionalJson(operation.toolNumber)},
                        {"toolLength", operation.toolLength}};
        };
        const auto eventJson = [this](const Event& event) {
            return Json{{"kind", host::Name(event.kind)},
                        {"point", event.point},
                        {"line", event.line},
                        {"row", rows.FirstRowOf(event.point)},
                        {"sentence", event.sentence}};
        };
        return {
            {"toolpath", {{"file", report.toolpath.path}, {"sha256", report.toolpath.sha256}}},
            {"command", report.command},
            {"seconds", report.seconds},
            {"options", ListOf(report.options, OptionJson)},
            {"outputs", ListOf(report.outputs, OutputJson)},
            {"counts", CountsJson(report.counts)},
            {"worstPosition", WorstJson(report.position)},
            {"worstDirection", WorstJson(report.direction_deg)},
            {"ranges", RangesJson()},
            {"operations", ListOf(report.operations, operationJson)},
            {"events", ListOf(report.events, eventJson)},
            {"rows", {{"count", rows.Count()}, {"axes", AxesJson()}, {"columns", Json::object()}}}};
    }

  private:
    std::size_t IndexOf(std::size_t joint) const
    {
        return static_cast<std::size_t>(rows.Axes()[joint] - machine.axes.data());
    }

    Json AxesJson() const
    {
        Json list = Json::array();
        for (std::size_t i = 0; i < rows.Axes().size(); ++i) {
            list.push_back(IndexOf(i));
        }
        return list;
    }

    Json RangesJson() const
    {
        Json list = Json::array();
        for (std::size_t i = 0; i < rows.Axes().size(); ++i) {
            const auto reached = rows.ReachedBy(i);
            list.push_back(
                {{"axis", IndexOf(i)},
                 {"reached", reached ? Json::array({reached->low, reached->high}) : Json()}});
        }
        return list;
    }

    const LoadedMachine& machine;
    const RunReport& report;
    const ReportRows& rows;
};

// The text ----------------------------------------------------------------------------------------

/// In JSON "<" stands inside strings alone. Without it nothing ends the script or begins a comment.
std::string TextOf(const Json& json)
{
    const std::string plain = json.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string text;
    for (const char c : plain) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

void WriteColumn(const ReportRows::NamedColumn& named, const TextSink& sink)
{
    sink('"' + named.name + R"(":{"decimals":)" + std::to_string(named.column.Decimals()) +
         R"(,"data":")");
    WriteBase64(named.column.Bytes(), sink);
    sink("\"}");
}

} // namespace

void WritePageData(const ShownMachine& shown, const ShownRun* run, const TextSink& sink)
{
    constexpr int kFormat = 1;
    Json data{{"format", kFormat},
              {"kind", run == nullptr ? "machine" : "run"},
              {"version", shown.version},
              {"machine", MachineJson(shown)},
              {"run", nullptr}};
    if (run == nullptr) {
        sink(TextOf(data));
        return;
    }
    data["run"] = RunPart(shown.machine, *run).WithoutColumns();
    // The columns, which are large, are written one by one where they end.
    constexpr std::string_view kEnds = "}}}}"; // of columns, rows, run and all
    const std::string text = TextOf(data);
    sink(std::string_view(text).substr(0, text.size() - kEnds.size()));
    std::string_view separator;
    for (const ReportRows::NamedColumn& named : run->rows.Columns()) {
        sink(separator);
        WriteColumn(named, sink);
        separator = ",";
    }
    sink(kEnds);
}

} // namespace host
