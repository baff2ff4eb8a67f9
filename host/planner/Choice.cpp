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
constexpr std::uint16_t kNoParent = std::numeric_limits<std::uint16_t>::max();

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
    if (images.size() < 2) {
        return;
    }
    const double start = place.Start()[i];
    std::stable_sort(images.begin(), images.end(), [start](double a, double b) {
        return std::fabs(a - start) < std::fabs(b - start);
    });
}

/// Every combination of the images of all axes, the last axis varying fastest.
void MotionRules::AddStates(const CandidateTable& candidates, std::size_t point,
                            std::size_t candidate, StateList& states) const
{
    const std::size_t first = states.size();
    states.Resize(first + 1);
    MotionState& begun = states.At(first);
    begun.candidate = candidate;
    begun.branch = candidates.BranchAt(point, candidate);
    const double* const joints = candidates.JointsAt(point, candidate);
    begun.joints.assign(joints, joints + place.Axes().size());
    for (std::size_t i = 0; i < place.Axes().size() && states.size() > first; ++i) {
        FindImages(i, joints[i], states.images);
        Vary(states, first, i);
    }
    for (std::size_t i = first; i < states.size(); ++i) {
        states.At(i).image = i - first;
    }
}

/// Puts an axis on each of its images in each of the states from the first on.
void MotionRules::Vary(StateList& states, std::size_t first, std::size_t axis)
{
    constexpr std::size_t kMostStates = 64; // of a candidate
    const std::size_t images = states.images.size();
    if (images == 1) {
        for (std::size_t i = first; i < states.size(); ++i) {
            states.At(i).joints[axis] = states.images.front();
        }
        return;
    }
    const std::size_t count = std::min((states.size() - first) * images, kMostStates);
    states.Resize(std::max(states.size(), first + count));
    for (std::size_t i = count; i-- > 0;) { // from behind: what is still to be copied comes before
        states.At(first + i) = states.At(first + i / images);
        states.At(first + i).joints[axis] = states.images[i % images];
    }
    states.Resize(first + count);
}

void MotionRules::FindStates(const CandidateTable& candidates, std::size_t point,
                             StateList& states) const
{
    states.Resize(0);
    for (std::size_t c = 0; c < candidates.CountAt(point); ++c) {
        AddStates(candidates, point, c, states);
    }
}

void MotionRules::FindStates(const CandidateTable& candidates, std::size_t point,
                             std::size_t candidate, StateList& states) const
{
    states.Resize(0);
    AddStates(candidates, point, candidate, states);
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

void MotionSearch::GoOn()
{
    for (std::size_t point = ends.size(); point < candidates.EndPoint(); ++point) {
        TakePoint(point);
    }
}

void MotionSearch::TakePoint(std::size_t point)
{
    rules.FindStates(candidates, point, states);
    const Way way = before.empty() ? Way{} : rules.WayBetween(from, point);
    costs.clear();
    for (const MotionState& state : states) {
        Step step{kNoParent, static_cast<std::uint8_t>(state.candidate),
                  static_cast<std::uint8_t>(state.image)};
        MotionCost cost =
            BestTo(state, way, candidates.ParentAt(point, state.candidate), step.parent);
        cost.sum += rules.StandCost(state.joints);
        costs.push_back(cost);
        steps.push_back(step);
    }
    ends.push_back(steps.size());
    if (!states.empty()) {
        std::swap(before, states);
        std::swap(costsBefore, costs);
        from = point;
    }
}

/// @param continued the candidate of the point before that this state's continues
/// @param parent of the states before the one that the best way comes from
MotionCost MotionSearch::BestTo(const MotionState& state, const Way& way, int continued,
                                std::uint16_t& parent) const
{
    MotionCost best;
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
    return best;
}

ChosenStates MotionSearch::Best() const
{
    ChosenStates chosen;
    chosen.states.resize(ends.size());
    if (before.empty()) {
        return chosen;
    }
    const auto last = std::min_element(costsBefore.begin(), costsBefore.end());
    chosen.cost = *last;
    // Back along the parents, over the points that have states.
    auto state = static_cast<std::size_t>(last - costsBefore.begin());
    for (std::size_t point = from + 1; point-- > 0;) {
        const std::size_t begin = point == 0 ? 0 : ends[point - 1];
        if (ends[point] > begin) {
            const Step& step = steps[begin + state];
            chosen.states[point] = {step.candidate, step.image};
            state = step.parent;
        }
    }
    return chosen;
}

const MotionState& Choice::Remember(std::size_t point) const
{
    Remembered& last = remembered[point % remembered.size()];
    if (!last.state || last.point != point) {
        const ChosenState state = chosen.At(point);
        rules.FindStates(candidates, point, static_cast<std::size_t>(state.candidate), looked);
        last.point = point;
        last.state = looked[static_cast<std::size_t>(state.image)];
    }
    return *last.state;
}

std::optional<MotionState> Choice::StateAt(std::size_t point) const
{
    if (!chosen.HasState(point)) {
        return std::nullopt;
    }
    return Remember(point);
}

std::optional<std::size_t> Choice::PointBefore(std::size_t point) const
{
    while (point-- > chosen.firstPoint) {
        if (chosen.HasState(point)) {
            return point;
        }
    }
    return std::nullopt;
}

std::vector<JointValues> Choice::CandidatesAt(std::size_t point) const
{
    std::vector<JointValues> all;
    for (std::size_t i = 0; i < candidates.CountAt(point); ++i) {
        const double* const joints = candidates.JointsAt(point, i);
        all.emplace_back(joints, joints + candidates.NumAxes());
    }
    return all;
}

Passage Choice::PassageTo(std::size_t point) const
{
    const std::optional<std::size_t> from = PointBefore(point);
    if (!from) {
        return Passage::Straight;
    }
    const MotionState state = Remember(point);
    return rules.PassageOn(rules.KindBetween(*from, point), Remember(*from), state,
                           candidates.ParentAt(point, state.candidate));
}

} // namespace host
