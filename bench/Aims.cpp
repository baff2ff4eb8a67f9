#include "Aims.h"

#include <algorithm>
#include <optional>

namespace bench
{

namespace
{

/// A ratio of two contenders over some operations and machines.
struct RatioAim
{
    const char* text;
    std::vector<std::string> operations;
    std::vector<Kind> kinds;
    const char* over;
    const char* under;
    bool isUpperBound;
    double bound;
};

const std::vector<RatioAim>& RatioAims()
{
    const std::vector<Kind> five{Kind::FiveAxes};
    static const std::vector<RatioAim> all{
        {"warm stream solve over its decompositions, five axes",
         {kStreamWarm},
         five,
         kLibrary,
         kJama,
         true,
         1.5},
        {"cold stream solve over its decompositions, five axes",
         {kStreamCold},
         five,
         kLibrary,
         kJama,
         true,
         1.5},
        {"solver object over its decompositions, warm and cold, five axes",
         {kObjectWarm, kObjectCold},
         five,
         kLibrary,
         kJama,
         true,
         1.5},
        {"hybrid solve over the decompositions of its samples, five axes",
         {kHybrid},
         five,
         kLibrary,
         kJama,
         true,
         1.6},
        {"plain formulation over stream solve, five axes and arm",
         {kStreamWarm, kStreamCold},
         {Kind::FiveAxes, Kind::Arm},
         kPlain,
         kLibrary,
         false,
         7.0},
        {"plain formulation over stream solve, three axes and nine joints",
         {kStreamWarm, kStreamCold},
         {Kind::ThreeAxes, Kind::NineJoints},
         kPlain,
         kLibrary,
         false,
         10.0},
        {"plain formulation over forward kinematics, all machines",
         {kForward},
         {Kind::ThreeAxes, Kind::FiveAxes, Kind::Arm, Kind::NineJoints},
         kPlain,
         kLibrary,
         false,
         8.0},
        {"warm stream solve over KDL's NR_JL, five axes",
         {kStreamWarm},
         five,
         kLibrary,
         kKdlNewton,
         true,
         0.65},
        {"warm stream solve over KDL's LMA, five axes",
         {kStreamWarm},
         five,
         kLibrary,
         kKdlMarquardt,
         true,
         0.2},
        {"warm stream solve over KDL's NR_JL, six-axis arm",
         {kStreamWarm},
         {Kind::Arm},
         kLibrary,
         kKdlNewton,
         true,
         1.3},
    };
    return all;
}

template <class List, class Entry>
bool Contains(const List& list, const Entry& entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

/// Keeps the worse of what an aim has and of what is measured elsewhere.
void Worsen(std::optional<Aim>& aim, const Aim& found)
{
    if (!aim ||
        (found.isUpperBound ? found.measured > aim->measured : found.measured < aim->measured)) {
        aim = found;
    }
}

std::optional<Aim> WorstOf(const RatioAim& ratio, const std::vector<SceneTimes>& scenes)
{
    std::optional<Aim> worst;
    for (const auto& [scene, times] : scenes) {
        const std::optional<double> measured = times.MedianRatio(ratio.over, ratio.under);
        if (measured && Contains(ratio.operations, scene.operation) &&
            Contains(ratio.kinds, scene.subject->kind)) {
            Worsen(worst, {ratio.text, ratio.isUpperBound, ratio.bound, *measured,
                           scene.operation + " " + scene.subject->name});
        }
    }
    return worst;
}

std::optional<Aim> WorstInPass(const std::vector<Allocations>& allocations)
{
    std::optional<Aim> worst;
    for (const Allocations& at : allocations) {
        Worsen(worst, {"heap allocations in a pass beyond the decomposition's", true, 0.0,
                       at.beyondInPass, at.operation + " " + at.machine});
    }
    return worst;
}

std::optional<Aim> WorstInSolve(const std::vector<Allocations>& allocations)
{
    std::optional<Aim> worst;
    for (const Allocations& at : allocations) {
        Worsen(worst,
               {"heap allocations in a solve beyond the decompositions' and the result's", true,
                10.0, static_cast<double>(at.beyondInSolve), at.operation + " " + at.machine});
    }
    return worst;
}

/// A cost that is linear in joints times nodes stays what it is per joint and node, or falls.
std::optional<Aim> WorstGrowth(const std::vector<Growth>& growth)
{
    constexpr int kFirst = 6; // joints; below, what a pass costs at all counts for much
    constexpr double kMost = 1.25;
    const auto first = std::find_if(growth.begin(), growth.end(),
                                    [](const Growth& at) { return at.joints == kFirst; });
    std::optional<Aim> worst;
    for (auto at = first; at != growth.end(); ++at) {
        Worsen(worst, {"pass without its decomposition, by joint and node, over that of six joints",
                       true, kMost, at->perJointAndNode / first->perJointAndNode,
                       std::to_string(at->joints) + " joints"});
    }
    return worst;
}

} // namespace

std::vector<Aim> AimsOf(const Measurements& measurements)
{
    std::vector<std::optional<Aim>> all;
    for (const RatioAim& ratio : RatioAims()) {
        all.push_back(WorstOf(ratio, measurements.scenes));
    }
    all.push_back(WorstInPass(measurements.allocations));
    all.push_back(WorstInSolve(measurements.allocations));
    all.push_back(WorstGrowth(measurements.growth));
    std::vector<Aim> aims;
    for (const std::optional<Aim>& aim : all) {
        if (aim) {
            aims.push_back(*aim);
        }
    }
    return aims;
}

} // namespace bench
