#include "app/SummaryJson.h"

#include <nlohmann/json.hpp>

namespace host
{

namespace
{

using Json = nlohmann::ordered_json;

template <class Items, class ItemJson>
Json ArrayOf(const Items& items, const ItemJson& itemJson)
{
    Json array = Json::array();
    for (const auto& item : items) {
        array.push_back(itemJson(item));
    }
    return array;
}

Json FileJson(const ReportedFile& file)
{
    return {{"file", file.path}, {"sha256", file.sha256}};
}

Json OptionsJson(const std::vector<ReportedOption>& options)
{
    Json object = Json::object();
    for (const ReportedOption& option : options) {
        object[option.name] =
            std::visit([](const auto& value) { return Json(value); }, option.value);
    }
    return object;
}

Json CountsJson(const ReportedCounts& counts)
{
    return {{"points", counts.points},
            {"converged", counts.converged},
            {"failed", counts.failed},
            {"rows", counts.rows},
            {"inserted", counts.inserted}};
}

Json ErrorJson(const std::optional<ReportedError>& error, const std::string& unit)
{
    return error ? Json{{"value", error->value}, {"unit", unit}, {"line", error->line}} : Json();
}

Json RangeJson(const std::optional<ReportedRange>& range)
{
    return range ? Json::array({range->low, range->high}) : Json();
}

Json AxisJson(const ReportedAxis& axis)
{
    return {{"name", axis.name},
            {"type", axis.isRotary ? "rotary" : "linear"},
            {"word", axis.word},
            {"word_sign", axis.wordSign},
            {"unit", axis.unit},
            {"limits", RangeJson(axis.limits)},
            {"reached", RangeJson(axis.reached)}};
}

Json EventJson(const Event& event)
{
    return {{"kind", Name(event.kind)},
            {"n", event.point + 1},
            {"line", event.line},
            {"sentence", event.sentence}};
}

Json SharingJson(const ReportedSharing& sharing)
{
    return {{"count", sharing.ranks},
            {"tasks", sharing.tasks},
            {"tasks_of_rank_0", sharing.leaderTasks},
            {"task_seconds_of_rank_0", sharing.leaderTaskSeconds},
            {"wait_seconds_of_rank_0", sharing.leaderWaitSeconds},
            {"sent_bytes", sharing.sentBytes},
            {"received_bytes", sharing.receivedBytes}};
}

} // namespace

std::string ToJson(const RunReport& report)
{
    Json machine = FileJson(report.machine);
    machine["name"] = report.machineName;
    Json json{
        {"program", {{"name", "trunnion"}, {"version", report.version}}},
        {"command", report.command},
        {"machine", machine},
        {"toolpath", FileJson(report.toolpath)},
        {"outputs", ArrayOf(report.outputs,
                            [](const ReportedOutput& output) {
                                return Json{{"kind", output.kind}, {"file", output.path}};
                            })},
        {"units", {{"length", report.lengthUnit}, {"angle", report.angleUnit}}},
        {"streams",
         ArrayOf(report.streams,
                 [](const ReportedStream& stream) {
                     return Json{{"id", stream.id}, {"tool", stream.tool}, {"part", stream.part}};
                 })},
        {"options", OptionsJson(report.options)},
        {"counts", CountsJson(report.counts)},
        {"worst_position", ErrorJson(report.position, report.lengthUnit)},
        {"worst_direction", ErrorJson(report.direction_deg, "deg")},
        {"axes", ArrayOf(report.axes, AxisJson)},
        {"events", ArrayOf(report.events, EventJson)},
        {"seconds", report.seconds}};
    if (report.sharing) {
        json["ranks"] = SharingJson(*report.sharing);
    }
    constexpr int kIndent = 2;
    return json.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace host
