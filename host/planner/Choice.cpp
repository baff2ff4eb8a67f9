#include "planner/Choice.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "planner/JointSpace.h"

namespace host
{

namespace
{

constexpr double kSameTurn = 1e-6;  // [rad], between values that differ by rounding alone
constexpr double kZoneShare = 0.05; // of a range, next to a limit, in which nearness costs
constexpr std::int32_t kNone = -1;

} // namespace

MotionRules::MotionRules(const Workplace& at) : place(at)
{
    for (std::size_t i = 0; i < place.Axes().size(); ++i) {
        if (place.Axes()[i]->isRotary) {
            rotary.push_back({i, CountsTurns(*place.Axes()[i])});
        }
    }
}

/// The values of an axis, whole turns apart, that its limits allow, those nearest to the start
/// first.
void MotionRules::FindImages(std::size_t i, double value, std::vector<double>& images) const
{
    const Axis& axis = *place.Axes()[i];
    images.clear();
    if (!axis.isRotary || !CountsTurns(axis)) {
        if (axis.isRotary || IsWithinLimits(axis, value)) {
            images.push_back(value);
        }
        return;
    }
    for (double image = BaseImage(axis, value); IsWithinLimits(axis, image); image += kTurn) {
        images.push_back(image);
    }
    const double start = place.Start()[i];
    std::stable_sort(images.begin(), images.end(), [start](double a, double b) {
        return std::fabs(a - start) < std::fabs(b - start);
    });
}

/// Every combination of the images of all axes, the last axis varying fastest.
std::vector<JointValues> MotionRules::AllImages(JointValues joints) const
{
    constexpr std::size_t kMostStates = 64;
    const std::size_t count = joints.size();
    std::vector<JointValues> all{std::move(joints)};
    std::vector<double> images;
    for (std::size_t i = 0; i < count && !all.empty(); ++i) {
        FindImages(i, all.front()[i], images);
        if (images.size() == 1) {
            for (JointValues& begun : all) {
                begun[i] = images.front();
            }
            continue;
        }
        std::vector<JointValues> extended;
        for (const JointValues& begun : all) {
            for (const double image : images) {
                if (extended.size() < kMostStates) {
                    extended.push_back(begun);
                    extended.back()[i] = image;
                }
            }
        }
        all = std::move(extended);
    }
    return all;
}

std::vector<MotionState> MotionRules::StatesAt(const CandidateTable& candidates,
                                               std::size_t point) const
{
    std::vector<MotionState> states;
    for (std::size_t c = 0; c < candidates.CountAt(point); ++c) {
        const int branch = candidates.BranchAt(point, c);
        for (JointValues& joints : AllImages(candidates.JointsAt(point, c))) {
            states.push_back({c, branch, std::move(joints)});
        }
    }
    return states;
}

Way MotionRules::WayBetween(std::size_t from, std::size_t to) const
{
    Way way;
    way.kind = KindBetween(from, to);
    way.isInCone =
        way.kind == WayKind::Pole ||
        (way.kind == WayKind::Cut && (place.IsInPoleCone(place.PointAt(from).direction) ||
                                      place.IsInPoleCone(place.PointAt(to).direction)));
    return way;
}

WayKind MotionRules::KindBetween(std::size_t from, std::size_t to) const
{
    for (std::size_t point = from + 1; point <= to; ++point) {
        if (place.IsFreeWay(point)) {
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

/// By how much an axis turns: the short way where turns do not count [rad].
double MotionRules::Turn(const RotaryAxis& axis, const JointValues& from, const JointValues& to)
{
    const double turn = to[axis.index] - from[axis.index];
    return axis.countsTurns ? turn : NearestImage(turn, 0.0);
}

Passage MotionRules::PassageOn(WayKind kind, const MotionState& from, const MotionState& to,
                               int parent) const
{
    if (kind == WayKind::Rapid) {
        return Passage::Straight;
    }
    const bool isOverPole = kind == WayKind::Pole;
    const bool isSameBranch =
        place.Pair() ? from.branch == to.branch : parent == static_cast<int>(from.candidate);
    if (!isSameBranch && !isOverPole) {
        return Passage::Flip;
    }
    const bool isShort = std::all_of(rotary.begin(), rotary.end(), [&](const RotaryAxis& axis) {
        const bool isFree = isOverPole && axis.index == place.Pair()->FirstAxis();
        return isFree || std::fabs(Turn(axis, from.joints, to.joints)) <= kPi + kSameTurn;
    });
    if (isShort) {
        return Passage::Straight;
    }
    return isSameBranch ? Passage::Rewind : Passage::Flip;
}

/// The axes turn back before the tool goes on: to where they stand at `from` on the turns of `to`.
bool MotionRules::HasRoomToTurnBack(const MotionState& from, const MotionState& to) const
{
    return std::all_of(rotary.begin(), rotary.end(), [&](const RotaryAxis& axis) {
        return !axis.countsTurns ||
               IsWithinLimits(*place.Axes()[axis.index],
                              NearestImage(from.joints[axis.index], to.joints[axis.index]));
    });
}

bool MotionRules::IsRefused(Passage passage, const MotionState& from, const MotionState& to) const
{
    const PlanOptions& options = place.Options();
    if (passage == Passage::Rewind) {
        return options.rewind == RetractPolicy::Refuse || !HasRoomToTurnBack(from, to);
    }
    return passage == Passage::Flip && options.branchChange == RetractPolicy::Refuse;
}

double MotionRules::TravelCost(const Way& way, const JointValues& start,
                               const JointValues& end) const
{
    const CostWeights& weights = place.Options().weights;
    double cost = 0.0;
    for (const RotaryAxis& axis : rotary) {
        const double turn = std::fabs(Turn(axis, start, end));
        cost += weights.travel * turn;
        if (way.isInCone && axis.index == place.Pair()->FirstAxis()) {
            cost += weights.pole * turn;
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
    return TravelCost({}, place.Start(), first);
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
        const Way way = before.empty() ? Way{} : rules.WayBetween(from, point);
        for (const MotionState& state : states) {
            MotionCost best;
            std::uint16_t parent = kNoParent;
            const int continued = candidates.ParentAt(point, state.candidate);
            if (before.empty()) {
                best.sum = rules.StartCost(state.joints);
            }
            for (std::size_t i = 0; i < before.size(); ++i) {
                if (parent != kNoParent && !(costsBefore[i] < best)) {
                    continue; // the way there only adds to it
                }
                const Passage passage = rules.PassageOn(way.kind, before[i], state, continued);
                MotionCost cost = costsBefore[i];
                cost.refused += rules.IsRefused(passage, before[i], state) ? 1U : 0U;
                cost.breaks += passage == Passage::Straight ? 0U : 1U;
                cost.sum += rules.TravelCost(way, before[i].joints, state.joints);
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
    Remembered& last = remembered[point % remembered.size()];
    if (!last.state || last.point != point) {
        last.point = point;
        last.state = rules.StatesAt(candidates, point)[static_cast<std::size_t>(chosen[point])];
    }
    return last.state;
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

std::vector<JointValues> Choice::CandidatesAt(std::size_t point) const
{
    std::vector<JointValues> all;
    for (std::size_t i = 0; i < candidates.CountAt(point); ++i) {
        all.push_back(candidates.JointsAt(point, i));
    }
    return all;
}

Passage Choice::PassageTo(std::size_t point) const
{
    const std::optional<std::size_t> from = PointBefore(point);
    if (!from) {
        return Passage::Straight;
    }
    const MotionState state = *StateAt(point);
    return rules.PassageOn(rules.WayBetween(*from, point).kind, *StateAt(*from), state,
                           candidates.ParentAt(point, state.candidate));
}

} // namespace host
