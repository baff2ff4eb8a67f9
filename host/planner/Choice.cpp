#include "planner/Choice.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "planner/JointSpace.h"

namespace host
{

namespace
{

constexpr double kSameTurn = 1e-6;  // [rad], between values that differ by rounding alone
constexpr double kZoneShare = 0.05; // of a range, next to a limit, in which nearness costs
constexpr std::int32_t kNone = -1;

/// The values of an axis, whole turns apart, that its limits allow.
std::vector<double> Images(const Axis& axis, double value)
{
    if (!axis.isRotary || axis.IsUnlimited()) {
        return IsWithinLimits(axis, value) ? std::vector<double>{value} : std::vector<double>{};
    }
    constexpr std::size_t kMostImages = 8;
    std::vector<double> images;
    for (double image = BaseImage(axis, value);
         IsWithinLimits(axis, image) && images.size() < kMostImages; image += kTurn) {
        images.push_back(image);
    }
    return images;
}

/// Every combination of the images of all axes, the last axis varying fastest.
std::vector<JointValues> AllImages(const std::vector<const Axis*>& axes, const JointValues& joints)
{
    constexpr std::size_t kMostStates = 64;
    std::vector<JointValues> all{{}};
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const std::vector<double> images = Images(*axes[i], joints[i]);
        std::vector<JointValues> extended;
        for (const JointValues& begun : all) {
            for (const double image : images) {
                if (extended.size() < kMostStates) {
                    extended.push_back(begun);
                    extended.back().push_back(image);
                }
            }
        }
        all = std::move(extended);
    }
    return all;
}

} // namespace

std::vector<MotionState> MotionRules::StatesAt(const CandidateTable& candidates,
                                               std::size_t point) const
{
    std::vector<MotionState> states;
    for (std::size_t c = 0; c < candidates.CountAt(point); ++c) {
        const int branch = candidates.BranchAt(point, c);
        for (JointValues& joints : AllImages(place.Axes(), candidates.JointsAt(point, c))) {
            states.push_back({c, branch, std::move(joints)});
        }
    }
    return states;
}

WayKind MotionRules::WayBetween(std::size_t from, std::size_t to) const
{
    for (std::size_t point = from + 1; point <= to; ++point) {
        if (place.PointAt(point).isRapid) {
            return WayKind::Rapid;
        }
        if (point < to && !place.IsAtPole(place.PointAt(point).direction)) {
            return WayKind::Rapid; // that point is not reached
        }
    }
    const bool isOverPole = from + 1 < to || place.PassesPole(place.PointAt(from).direction,
                                                              place.PointAt(to).direction);
    return isOverPole ? WayKind::Pole : WayKind::Cut;
}

double MotionRules::Turn(std::size_t i, double from, double to) const
{
    return place.Axes()[i]->IsUnlimited() ? NearestImage(to - from, 0.0) : to - from;
}

bool MotionRules::IsWay(WayKind kind, const MotionState& from, const MotionState& to,
                        int parent) const
{
    if (kind == WayKind::Rapid) {
        return true;
    }
    if (!place.Pair() && parent != static_cast<int>(from.candidate)) {
        return false;
    }
    if (place.Pair() && kind == WayKind::Cut && from.branch != to.branch) {
        return false;
    }
    for (std::size_t i = 0; i < place.Axes().size(); ++i) {
        const bool isFree = kind == WayKind::Pole && i == place.Pair()->FirstAxis();
        if (place.Axes()[i]->isRotary && !isFree &&
            std::fabs(Turn(i, from.joints[i], to.joints[i])) > kPi + kSameTurn) {
            return false;
        }
    }
    return true;
}

double MotionRules::TravelCost(WayKind kind, std::size_t from, std::size_t to,
                               const JointValues& start, const JointValues& end) const
{
    const CostWeights& weights = place.Options().weights;
    const bool isInCone =
        kind != WayKind::Rapid && place.Pair() &&
        (kind == WayKind::Pole || place.IsInPoleCone(place.PointAt(from).direction) ||
         place.IsInPoleCone(place.PointAt(to).direction));
    double cost = 0.0;
    for (std::size_t i = 0; i < start.size(); ++i) {
        if (place.Axes()[i]->isRotary) {
            const double turn = std::fabs(Turn(i, start[i], end[i]));
            cost += weights.travel * turn;
            if (isInCone && i == place.Pair()->FirstAxis()) {
                cost += weights.pole * turn;
            }
        }
    }
    return cost;
}

double MotionRules::StandCost(const JointValues& joints) const
{
    const PlanOptions& options = place.Options();
    double cost = 0.0;
    for (std::size_t i = 0; i < joints.size(); ++i) {
        const IkJoint& joint = *place.Axes()[i]->joint;
        const double zone = kZoneShare * (joint.GetHiBound() - joint.GetLowBound());
        if (std::isfinite(zone) && zone > 0.0) {
            const double margin =
                std::min(joints[i] - joint.GetLowBound(), joint.GetHiBound() - joints[i]);
            const double depth = std::clamp(1.0 - margin / zone, 0.0, 1.0);
            cost += options.weights.limits * depth * depth;
        }
        if (options.preference && options.preference->axis == place.Axes()[i]) {
            const double side = options.preference->isPositive ? joints[i] : -joints[i];
            cost += side < -kSameTurn ? options.weights.preference : 0.0;
        }
    }
    return cost;
}

double MotionRules::StartCost(const JointValues& first) const
{
    if (place.Options().start == StartPolicy::Free) {
        return 0.0;
    }
    double cost = 0.0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        if (place.Axes()[i]->isRotary) {
            cost += place.Options().weights.travel * std::fabs(Turn(i, place.Start()[i], first[i]));
        }
    }
    return cost;
}

Choice::Choice(const Workplace& place, const CandidateTable& table)
    : rules(place), candidates(table), chosen(table.NumDone(), kNone)
{
    Run();
}

void Choice::Run()
{
    constexpr std::uint16_t kNoParent = std::numeric_limits<std::uint16_t>::max();
    std::vector<std::uint16_t> parents; // of all states of all points, one after another
    std::vector<std::size_t> ends(chosen.size());
    std::vector<MotionState> before;
    std::vector<MotionCost> costsBefore;
    std::size_t from = 0;
    for (std::size_t point = 0; point < chosen.size(); ++point) {
        std::vector<MotionState> states = rules.StatesAt(candidates, point);
        std::vector<MotionCost> costs;
        const WayKind kind = before.empty() ? WayKind::Rapid : rules.WayBetween(from, point);
        for (const MotionState& state : states) {
            MotionCost best;
            std::uint16_t parent = kNoParent;
            if (before.empty()) {
                best.sum = rules.StartCost(state.joints);
            }
            for (std::size_t i = 0; i < before.size(); ++i) {
                const bool isWay = rules.IsWay(kind, before[i], state,
                                               candidates.ParentAt(point, state.candidate));
                const MotionCost cost{costsBefore[i].breaks + (isWay ? 0U : 1U),
                                      costsBefore[i].sum + rules.TravelCost(kind, from, point,
                                                                            before[i].joints,
                                                                            state.joints)};
                if (parent == kNoParent || cost < best) {
                    best = cost;
                    parent = static_cast<std::uint16_t>(i);
                }
            }
            best.sum += rules.StandCost(state.joints);
            costs.push_back(best);
            parents.push_back(parent);
        }
        ends[point] = parents.size();
        if (!states.empty()) {
            before = std::move(states);
            costsBefore = std::move(costs);
            from = point;
        }
    }
    if (before.empty()) {
        return;
    }
    const auto last = std::min_element(costsBefore.begin(), costsBefore.end());
    total = *last;
    // Back along the parents, over the points that have states.
    auto state = static_cast<std::int32_t>(last - costsBefore.begin());
    for (std::size_t point = from + 1; point-- > 0;) {
        const std::size_t begin = point == 0 ? 0 : ends[point - 1];
        if (ends[point] > begin) {
            chosen[point] = state;
            const std::uint16_t parent = parents[begin + static_cast<std::size_t>(state)];
            state = parent == kNoParent ? kNone : parent;
        }
    }
}

std::optional<MotionState> Choice::StateAt(std::size_t point) const
{
    if (chosen[point] == kNone) {
        return std::nullopt;
    }
    return rules.StatesAt(candidates, point)[static_cast<std::size_t>(chosen[point])];
}

std::optional<std::size_t> Choice::PointBefore(std::size_t point) const
{
    while (point-- > 0) {
        if (chosen[point] != kNone) {
            return point;
        }
    }
    return std::nullopt;
}

bool Choice::BreaksBefore(std::size_t point) const
{
    const std::optional<std::size_t> from = PointBefore(point);
    if (!from) {
        return false;
    }
    const MotionState state = *StateAt(point);
    return !rules.IsWay(rules.WayBetween(*from, point), *StateAt(*from), state,
                        candidates.ParentAt(point, state.candidate));
}

} // namespace host
