#include "planner/Linearisation.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "planner/JointSpace.h"

namespace host
{

namespace
{

constexpr int kMostHalvings = 24;
constexpr std::size_t kMostStations = 20000;  // between two points
constexpr double kPoleStep = ToRadians(10.0); // of the free axis between two rows in the pole cone
/// Deviations are looked at in a few places of each row's way; this share of the tolerance leaves
/// room for what lies between them.
constexpr double kShareOfTolerance = 0.8;

JointValues Mixed(const JointValues& from, const JointValues& to, double share)
{
    JointValues mixed = from;
    for (std::size_t i = 0; i < mixed.size(); ++i) {
        mixed[i] += share * (to[i] - from[i]);
    }
    return mixed;
}

} // namespace

Linearisation::Outcome Linearisation::Insert(std::size_t point, const JointValues& start,
                                             const JointValues& end,
                                             std::vector<WayStation>& stations)
{
    towards = point;
    found = &stations;
    return Halve({0.0, start, false}, {1.0, end, false}, 0);
}

Linearisation::Outcome Linearisation::Halve(const WayStation& from, const WayStation& to, int depth)
{
    if (IsTurnSpread(from, to) && IsNear(from, to)) {
        return Outcome::Kept;
    }
    if (depth == kMostHalvings || found->size() == kMostStations) {
        return Outcome::Unsteady;
    }
    WayStation middle{(from.share + to.share) / 2.0, {}, false};
    if (const Outcome outcome = StandBetween(from, to, middle); outcome != Outcome::Kept) {
        return outcome;
    }
    if (const Outcome outcome = Halve(from, middle, depth + 1); outcome != Outcome::Kept) {
        return outcome;
    }
    found->push_back(middle);
    return Halve(middle, to, depth + 1);
}

/// Whether the tool keeps to the way while the axes move evenly. The middle strays most where the
/// way is smooth; the quarters are looked at too where that is not plain.
bool Linearisation::IsNear(const WayStation& from, const WayStation& to)
{
    constexpr double kPlainlyNear = 0.3;
    constexpr double kPlainTurn = ToRadians(5.0);
    const CutterLocation start = place.Targets().LocationAt(towards - 1);
    const CutterLocation end = place.Targets().LocationAt(towards);
    const double linear = kShareOfTolerance * place.Options().tolerances.linear;
    const double angle = kShareOfTolerance * ToRadians(place.Options().tolerances.angle_deg);
    PointSolver& solver = place.SolverAt(towards);
    const auto strays = [&](double share) {
        const CutterLocation tool = solver.ToolAt(Mixed(from.joints, to.joints, share));
        const Deviation deviation = DeviationFrom(start, end, tool, linear, angle);
        return std::max(deviation.position / linear, deviation.direction / angle);
    };
    const double inTheMiddle = strays(0.5);
    if (inTheMiddle > 1.0) {
        return false;
    }
    if (inTheMiddle <= kPlainlyNear &&
        RotaryTravel(place.Axes(), from.joints, to.joints) <= kPlainTurn) {
        return true;
    }
    return strays(0.25) <= 1.0 && strays(0.75) <= 1.0;
}

/// In the pole cone the free axis turns by small steps alone, whether the tool would stray or not.
bool Linearisation::IsTurnSpread(const WayStation& from, const WayStation& to) const
{
    if (!place.Pair()) {
        return true;
    }
    const std::size_t first = place.Pair()->FirstAxis();
    return std::fabs(to.joints[first] - from.joints[first]) <= kPoleStep ||
           !(place.IsInPoleCone(place.Targets().Towards(towards, from.share).at.direction) ||
             place.IsInPoleCone(place.Targets().Towards(towards, to.share).at.direction));
}

Linearisation::Outcome Linearisation::StandBetween(const WayStation& from, const WayStation& to,
                                                   WayStation& middle)
{
    const PathTarget target = place.Targets().Towards(towards, middle.share);
    middle.joints = Mixed(from.joints, to.joints, 0.5);
    middle.isAtPole = IsHeldAtPole(from, to, target.at.direction);
    const bool isSolved =
        middle.isAtPole ? place.SolveAtPole(towards, target.at,
                                            middle.joints[place.Pair()->FirstAxis()], middle.joints)
                        : SolveBetween(target, from.joints, to.joints, middle.joints);
    if (!isSolved) {
        return Outcome::OutOfReach;
    }
    return place.SettleWithinLimits(towards, target.at, middle.joints) ? Outcome::Kept
                                                                       : Outcome::OutOfLimits;
}

/// Whether the free axis may stand anywhere between its neighbours. Where these are close together
/// the pole reaches a little farther, so that a turn that begins at its rim is not squeezed into
/// the last bit of way outside.
bool Linearisation::IsHeldAtPole(const WayStation& from, const WayStation& to,
                                 const Vec3& direction) const
{
    constexpr double kRim = 1.5;
    if (!place.Pair()) {
        return false;
    }
    const double angle = place.Pair()->AngleToPole(direction);
    const Vec3 before = place.Targets().Towards(towards, from.share).at.direction;
    const Vec3 after = place.Targets().Towards(towards, to.share).at.direction;
    return angle <= place.HoldAngle() ||
           (angle <= kRim * place.HoldAngle() && AngleBetween(before, after) <= place.HoldAngle());
}

bool Linearisation::SolveBetween(const PathTarget& target, const JointValues& from,
                                 const JointValues& to, JointValues& joints)
{
    if (place.Pair()) {
        return SolvePairBetween(target, from, to, joints);
    }
    const JointValues middle = joints;
    if (!place.SolverAt(towards).Solve(target, place.SolveLimits(), joints)) {
        return false;
    }
    joints = NearestImages(place.Axes(), std::move(joints), middle);
    // A place between two neighbours is not much farther from them than they are from each other.
    constexpr double kDetour = 3.0;
    constexpr double kAnyway = ToRadians(1.0);
    return RotaryTravel(place.Axes(), from, joints) + RotaryTravel(place.Axes(), joints, to) <=
           kDetour * RotaryTravel(place.Axes(), from, to) + kAnyway;
}

/// On the branch of both ends where they share one; between two branches, on the one with the
/// shorter way.
bool Linearisation::SolvePairBetween(const PathTarget& target, const JointValues& from,
                                     const JointValues& to, JointValues& joints)
{
    const RotaryPair& pair = *place.Pair();
    const std::size_t first = pair.FirstAxis();
    const std::size_t second = pair.SecondAxis();
    const int branchBefore = pair.BranchOf(from[second]);
    const int branchAfter = pair.BranchOf(to[second]);
    std::optional<JointValues> best;
    double shortest = 0.0;
    for (const RotaryPair::Angles& angles : pair.Directing(target.at.direction)) {
        JointValues start = joints;
        start[first] = NearestImage(angles.first, joints[first]);
        start[second] = NearestImage(angles.second, joints[second]);
        const int branch = pair.BranchOf(angles.second);
        if (branchBefore == branchAfter && branch != branchBefore) {
            continue;
        }
        const double travel =
            RotaryTravel(place.Axes(), from, start) + RotaryTravel(place.Axes(), start, to);
        if (!best || travel < shortest) {
            best = std::move(start);
            shortest = travel;
        }
    }
    if (!best || !place.SolverAt(towards).Solve(target, place.SolveLimits(), *best)) {
        return false;
    }
    joints = NearestImages(place.Axes(), std::move(*best), joints);
    return true;
}

} // namespace host
