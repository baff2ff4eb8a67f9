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

Aim Measured(const RatioAim& ratio, const std::vector<SceneTimes>& scenes)
{
    Aim aim(ratio.text, ratio.isUpperBound, ratio.bound);
    for (const auto& [scene, times] : scenes) {
        const std::optional<double> measured = times.MedianRatio(ratio.over, ratio.under);
        if (measured && Contains(ratio.operations, scene.operation) &&
            Contains(ratio.kinds, scene.subject->kind)) {
            aim.Take(*measured, scene.operation + " " + scene.subject->name);
        }
    }
    return aim;
}

Aim InPass(const std::vector<Allocations>& allocations)
{
    Aim aim("heap allocations in a pass beyond the decomposition's", true, 0.0);
    for (const Allocations& at : allocations) {
        aim.Take(at.beyondInPass, at.operation + " " + at.machine);
    }
    return aim;
}

Aim InSolve(const std::vector<Allocations>& allocations)
{
    Aim aim("heap allocations in a solve beyond the decompositions' and the result's", true, 10.0);
    for (const Allocations& at : allocations) {
        aim.Take(static_cast<double>(at.beyondInSolve), at.operation + " " + at.machine);
    }
    return aim;
}

/// A cost that is linear in joints times nodes stays what it is by joint and node, or falls.
Aim InGrowth(const std::vector<Growth>& growth)
{
    constexpr int kFirst = 6; // joints; below, what a pass costs at all counts for much
    constexpr double kMost = 1.25;
    const auto first = std::find_if(growth.begin(), growth.end(),
                                    [](const Growth& at) { return at.joints == kFirst; });
    Aim aim("pass without its decomposition, by joint and node, over that of six joints", true,
            kMost);
    for (const Growth& at : growth) {
        if (at.joints > kFirst) {
            aim.Take(at.perJointAndNode / first->perJointAndNode,
                     std::to_string(at.joints) + " joints");
        }
    }
    return aim;
}

} // namespace

void Aim::Take(double measured, const std::string& place)
{
    if (!IsMeasured() || IsBetter(measured, best)) {
        best = measured;
    }
    if (!IsMeasured() || IsBetter(worst, measured)) {
        worst = measured;
        worstPlace = place;
    }
}

std::vector<Aim> AimsOf(const Measurements& measurements)
{
    std::vector<Aim> aims;
    for (const RatioAim& ratio : RatioAims()) {
        aims.push_back(Measured(ratio, measurements.scenes));
    }
    aims.push_back(InPass(measurements.allocations));
    aims.push_back(InSolve(measurements.allocations));
    aims.push_back(InGrowth(measurements.growth));
    aims.erase(
        std::remove_if(aims.begin(), aims.end(), [](const Aim& aim) { return !aim.IsMeasured(); }),
        aims.end());
    return aims;
}

} // namespace bench
