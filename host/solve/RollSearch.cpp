#include "solve/RollSearch.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

#include "geometry/Units.h"

namespace host
{

namespace
{

constexpr std::size_t kMostGroups = 32;
constexpr std::size_t kMostSamples = 8;
constexpr std::size_t kMostWays = 8; // a six-axis arm has as many
constexpr std::size_t kStarts = 16;  // find 94 % of them
constexpr double kStep_deg = 15.0;
constexpr int kSteps = 24;
constexpr double kLittle = kPi;           // half a turn in all, the axes clear of their limits
constexpr double kWeightOfApproach = 0.1; // of the travel through the air to the first point
constexpr double kWorthTurning = 1.1;     // times as cheap

/// The angles, those that turn little first: 0, 15, -15, ... 180 degrees.
std::vector<double> Turns()
{
    std::vector<double> turns;
    for (int i = 0; i < kSteps; ++i) {
        const int steps = (i + 1) / 2;
        turns.push_back(ToRadians((i % 2 == 1 ? steps : -steps) * kStep_deg));
    }
    return turns;
}

/// Successive runs put together until there are few enough.
std::vector<Run> GroupsOf(const std::vector<Run>& runs)
{
    const std::size_t count = std::min(runs.size(), kMostGroups);
    std::vector<Run> groups;
    for (std::size_t i = 0; i < count; ++i) {
        groups.push_back(
            {runs[i * runs.size() / count].begin, runs[(i + 1) * runs.size() / count - 1].end});
    }
    return groups;
}

/// Up to a radian for an axis at its limit, nothing in the middle three quarters of its way.
double NearnessToLimits(const Axis& axis, double value)
{
    constexpr double kFree = 0.75;
    const double half = (axis.joint->GetHiBound() - axis.joint->GetLowBound()) / 2.0;
    if (!std::isfinite(half) || !(half > 0.0)) {
        return 0.0;
    }
    const double share = std::fabs(value - axis.joint->GetLowBound() - half) / half;
    return std::max(share - kFree, 0.0) / (1.0 - kFree);
}

} // namespace

RollSearch::RollSearch(const LoadedMachine& ofMachine, std::vector<const LoadedStream*> ofStreams,
                       std::vector<double> ofLengths, const SolverSettings& withSettings)
    : machine(ofMachine), streams(std::move(ofStreams)), toolLengths(std::move(ofLengths)),
      settings(withSettings)
{}

std::vector<Vec3> RollSearch::XAxes(const Toolpath& path, const ToolRoll& roll)
{
    std::vector<Vec3> xAxes = ToolXAxes(path, roll);
    double turn = 0.0;
    for (const Run& group : GroupsOf(RunsOf(path))) {
        if (const int operation = path.points[group.begin].operation; !IsSeated(operation)) {
            TakeSeat(operation);
        }
        turn = ChooseTurn(SamplesOf(path, group, xAxes), turn);
        for (std::size_t i = group.begin; i < group.end; ++i) {
            xAxes[i] = Turned(xAxes[i], path.points[i].direction, turn);
        }
    }
    return xAxes;
}

double RollSearch::ChooseTurn(const Samples& samples, double before)
{
    const Trial nothing{samples.at.size(), 0.0, joints};
    const Trial kept = Try(samples, before, nothing);
    if (kept.lost == 0 && kept.cost <= kLittle) {
        joints = kept.joints;
        return before;
    }
    Trial best = kept;
    double bestTurn = before;
    for (const double turn : Turns()) {
        Trial trial = Try(samples, turn, best);
        if (trial < best) {
            best = std::move(trial);
            bestTurn = turn;
        }
    }
    const bool isWorthTurning = kept.lost > best.lost || kept.cost > kWorthTurning * best.cost;
    joints = isWorthTurning ? best.joints : kept.joints;
    return isWorthTurning ? bestTurn : before;
}

RollSearch::Seat::Seat(const LoadedMachine& ofMachine, const LoadedStream& ofStream,
                       double ofLength, const SolverSettings& withSettings)
    : stream(&ofStream), toolLength(ofLength), solver(ofMachine, ofStream, withSettings),
      sampled(ofMachine, ofStream, withSettings, solver.Initial())
{}

bool RollSearch::IsSeated(int operation) const
{
    const auto index = static_cast<std::size_t>(operation);
    return seat && seat->stream == streams[index] && seat->toolLength == toolLengths[index];
}

void RollSearch::TakeSeat(int operation)
{
    const auto index = static_cast<std::size_t>(operation);
    streams[index]->SetToolLength(toolLengths[index]);
    seat = std::make_unique<Seat>(machine, *streams[index], toolLengths[index], settings);
    joints = seat->solver.Initial();
}

/// Points of a group spread over it, with its first tool.
RollSearch::Samples RollSearch::SamplesOf(const Toolpath& path, const Run& points,
                                          const std::vector<Vec3>& xAxes) const
{
    std::vector<std::size_t> seated;
    for (std::size_t i = points.begin; i < points.end; ++i) {
        if (IsSeated(path.points[i].operation)) {
            seated.push_back(i);
        }
    }
    const std::size_t count = std::min(seated.size(), kMostSamples);
    Samples samples;
    for (std::size_t k = 0; k < count; ++k) {
        const std::size_t i = seated[count > 1 ? k * (seated.size() - 1) / (count - 1) : 0];
        samples.at.push_back({path.points[i].position, path.points[i].direction});
        samples.xAxes.push_back(xAxes[i]);
    }
    return samples;
}

/// The best of the ways to stand at the first sample, followed through the others.
RollSearch::Trial RollSearch::Try(const Samples& samples, double turn, Trial best)
{
    std::vector<PathTarget> targets;
    for (std::size_t i = 0; i < samples.at.size(); ++i) {
        const Vec3 xAxis = Turned(samples.xAxes[i], samples.at[i].direction, turn);
        targets.push_back({samples.at[i], xAxis});
    }
    std::vector<JointValues> ways = seat->sampled.FindAll(targets.front(), joints, {true, kStarts});
    ways.resize(std::min(ways.size(), kMostWays));
    for (const JointValues& way : ways) {
        Trial trial{0, 0.0, joints};
        Move(trial, way, kWeightOfApproach);
        best = std::min(best, Follow(targets, std::move(trial), best));
    }
    return best;
}

RollSearch::Trial RollSearch::Follow(const std::vector<PathTarget>& targets, Trial trial,
                                     const Trial& best)
{
    for (std::size_t i = 1; i < targets.size() && trial < best; ++i) {
        JointValues next = trial.joints;
        if (seat->solver.Solve(targets[i], IkJoint::JtLimitAll, next)) {
            Move(trial, next, 1.0);
        } else {
            ++trial.lost;
        }
    }
    return trial;
}

void RollSearch::Move(Trial& trial, const JointValues& to, double weight) const
{
    const std::vector<const Axis*>& axes = seat->solver.Axes();
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->isRotary) {
            trial.cost += weight * std::fabs(to[i] - trial.joints[i]);
        }
        trial.cost += NearnessToLimits(*axes[i], to[i]);
    }
    trial.joints = to;
}

} // namespace host
