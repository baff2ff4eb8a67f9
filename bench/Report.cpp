#include "Report.h"

#include <algorithm>
#include <string>

#include <nlohmann/json.hpp>

#include "Aims.h"
#include "text/Numbers.h"

namespace bench
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr double kMicro = 1e6;
constexpr double kNano = 1e9;

const std::vector<std::string>& Operations()
{
    static const std::vector<std::string> all{kForward,    kJacobian,   kPass,       kStreamCold,
                                              kStreamWarm, kObjectCold, kObjectWarm, kHybrid};
    return all;
}

std::string Text(std::optional<double> number, int digits)
{
    return number ? host::FixedText(*number, digits) : "-";
}

std::string SolvedText(const Scene& scene, const char* name)
{
    const Contender* contender = scene.Find(name);
    return contender == nullptr || !contender->solved
               ? "-"
               : host::FixedText(100.0 * *contender->solved, 0) + " %";
}

void PrintRow(std::ostream& out, const std::vector<std::string>& cells)
{
    for (const std::string& cell : cells) {
        out << "| " << cell << " ";
    }
    out << "|\n";
}

void PrintHead(std::ostream& out, const std::vector<std::string>& cells)
{
    PrintRow(out, cells);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        out << "|---";
    }
    out << "|\n";
}

void PrintAims(const std::vector<Aim>& aims, std::ostream& out)
{
    PrintHead(out, {"ratio", "aim", "best", "worst", "met", "the worst is"});
    for (const Aim& aim : aims) {
        PrintRow(out, {aim.Text(),
                       (aim.IsUpperBound() ? "<= " : ">= ") + host::ShortestText(aim.Bound()),
                       host::FixedText(aim.Best(), 2), host::FixedText(aim.Worst(), 2),
                       aim.IsMet() ? "yes" : "no", aim.WorstPlace()});
    }
}

void PrintScene(const SceneTimes& at, std::ostream& out)
{
    const auto& [scene, times] = at;
    PrintRow(out, {scene.operation, scene.subject->name, Text(*times.Median(kLibrary) * kMicro, 2),
                   Text(times.MedianRatio(kLibrary, kJama), 2),
                   Text(times.MedianRatio(kPlain, kLibrary), 2),
                   Text(times.MedianRatio(kLibrary, kKdlNewton), 2),
                   Text(times.MedianRatio(kLibrary, kKdlMarquardt), 2), SolvedText(scene, kLibrary),
                   SolvedText(scene, kKdlNewton), SolvedText(scene, kKdlMarquardt)});
}

void PrintScenes(const std::vector<SceneTimes>& scenes, std::ostream& out)
{
    PrintHead(out, {"operation", "machine", "library [us]", "over its decompositions",
                    "plain over library", "over KDL NR_JL", "over KDL LMA", "solved", "KDL NR_JL",
                    "KDL LMA"});
    for (const std::string& operation : Operations()) {
        for (const SceneTimes& at : scenes) {
            if (at.scene.operation == operation) {
                PrintScene(at, out);
            }
        }
    }
}

void PrintGrowth(const std::vector<Growth>& growth, std::ostream& out)
{
    PrintHead(out, {"joints", "nodes", "pass [us]", "its decomposition [us]",
                    "the rest by joint and node [ns]"});
    for (const Growth& at : growth) {
        PrintRow(out, {std::to_string(at.joints), std::to_string(at.nodes),
                       host::FixedText(at.pass * kMicro, 2),
                       host::FixedText(at.decomposition * kMicro, 2),
                       host::FixedText(at.perJointAndNode * kNano, 1)});
    }
}

void PrintAllocations(const std::vector<Allocations>& allocations, std::ostream& out)
{
    PrintHead(out, {"heap allocations", "machine", "in a decomposition", "beyond in a pass",
                    "beyond in a solve"});
    for (const Allocations& at : allocations) {
        PrintRow(out, {at.operation, at.machine, host::FixedText(at.inDecomposition, 1),
                       host::FixedText(at.beyondInPass, 1), std::to_string(at.beyondInSolve)});
    }
}

Json SceneJson(const SceneTimes& at)
{
    Json contenders = Json::array();
    for (const Contender& contender : at.scene.contenders) {
        Json entry{{"name", contender.name},
                   {"nanoseconds", *at.times.Median(contender.name) * kNano},
                   {"over_library", *at.times.MedianRatio(contender.name, kLibrary)}};
        if (contender.solved) {
            entry["solved"] = *contender.solved;
        }
        contenders.push_back(entry);
    }
    return {{"operation", at.scene.operation},
            {"machine", at.scene.subject->name},
            {"rounds", at.times.Rounds()},
            {"contenders", contenders}};
}

Json AimJson(const Aim& aim)
{
    return {{"aim", aim.Text()},  {aim.IsUpperBound() ? "at_most" : "at_least", aim.Bound()},
            {"best", aim.Best()}, {"worst", aim.Worst()},
            {"met", aim.IsMet()}, {"worst_at", aim.WorstPlace()}};
}

Json GrowthJson(const Growth& at)
{
    return {{"joints", at.joints},
            {"nodes", at.nodes},
            {"nanoseconds", at.pass * kNano},
            {"decomposition_nanoseconds", at.decomposition * kNano},
            {"rest_by_joint_and_node_nanoseconds", at.perJointAndNode * kNano}};
}

Json AllocationsJson(const Allocations& at)
{
    return {{"operation", at.operation},
            {"machine", at.machine},
            {"in_decomposition", at.inDecomposition},
            {"beyond_in_pass", at.beyondInPass},
            {"beyond_in_solve", at.beyondInSolve}};
}

template <class List, class ToJson>
Json ArrayOf(const List& list, const ToJson& toJson)
{
    Json array = Json::array();
    std::transform(list.begin(), list.end(), std::back_inserter(array), toJson);
    return array;
}

} // namespace

void PrintReport(const Measurements& measurements, std::ostream& out)
{
    PrintAims(AimsOf(measurements), out);
    out << "\n";
    PrintScenes(measurements.scenes, out);
    out << "\n";
    PrintGrowth(measurements.growth, out);
    out << "\n";
    PrintAllocations(measurements.allocations, out);
}

void WriteJson(const Measurements& measurements, std::ostream& out)
{
    const Json all{{"aims", ArrayOf(AimsOf(measurements), AimJson)},
                   {"scenes", ArrayOf(measurements.scenes, SceneJson)},
                   {"growth", ArrayOf(measurements.growth, GrowthJson)},
                   {"allocations", ArrayOf(measurements.allocations, AllocationsJson)}};
    out << all.dump(2) << "\n";
}

} // namespace bench
