#include "planner/MotionBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "machine/AxisText.h"
#include "planner/JointSpace.h"
#include "solve/Unreached.h"
#include "text/Numbers.h"

namespace host
{

namespace
{

constexpr int kNoBranch = 0;             // at the pole the branches are one
constexpr double kLargeTurn = kPi / 2.0; // of one axis on the way between two points

/// The values nearest to their ranges, whole turns being free, and what lies outside them.
std::vector<ExceededAxis> Exceeded(const std::vector<const Axis*>& axes, JointValues& joints)
{
    std::vector<ExceededAxis> exceeded;
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const double low = axes[i]->joint->GetLowBound();
        const double high = axes[i]->joint->GetHiBound();
        if (axes[i]->isRotary && !axes[i]->IsUnlimited()) {
            joints[i] = NearestImage(joints[i], (low + high) / 2.0);
        }
        if (!IsWithinLimits(*axes[i], joints[i])) {
            exceeded.push_back({axes[i], joints[i]});
            joints[i] = std::clamp(joints[i], low, high);
        }
    }
    return exceeded;
}

} // namespace

MotionBuilder::MotionBuilder(Workplace& at, const ChosenMotion& ofMotion, RowTaker toRows,
                             EventTaker toEvents, Purpose ofBuilding)
    : place(at), choice(ofMotion), purpose(ofBuilding), linearisation(at),
      takeRow(std::move(toRows)), takeEvent(std::move(toEvents))
{
    now.current = at.Start();
    now.isAtLimit.assign(now.current.size(), 0);
}

void MotionBuilder::Build(std::size_t point)
{
    if (point >= now.poleEnd) {
        ForgetPole();
    }
    if (const std::optional<MotionState> state = choice.StateAt(point)) {
        const Passage passage = choice.PassageTo(point);
        if (now.isFollowed && passage != Passage::Straight && !Swing(point, *state, passage)) {
            return;
        }
        BuildPoint(point, OnNearestTurns(place.Axes(), state->joints, now.current), state->branch);
    } else if (place.IsAtPole(place.PointAt(point).direction)) {
        if (const std::optional<JointValues> joints = StandAtPole(point)) {
            BuildPoint(point, *joints, kNoBranch);
        }
    } else {
        Fail(point, WhyNot(point, choice.CandidatesAt(point)));
    }
}

void MotionBuilder::BuildPoint(std::size_t point, JointValues joints, int branch)
{
    const CutterLocation asked = place.Targets().LocationAt(point);
    if (!place.SettleWithinLimits(point, asked, joints)) {
        Fail(point, "the axes reach it only just beyond their limits; widen them or move the part");
        return;
    }
    const JointValues before = now.current;
    if (!LeadTo(point, joints)) {
        return;
    }
    NotePole(point);
    MotionRow row;
    row.point = point;
    row.asked = asked;
    row.branch = branch;
    row.flags.isRapid = place.PointAt(point).isRapid;
    row.flags.isFlip = NoteSwing(point, before, joints, branch);
    row.joints = std::move(joints);
    now.stands = point;
    now.isFollowed = true;
    now.branch = branch == kNoBranch ? now.branch : branch;
    Emit(std::move(row));
}

/// Emits the rows on the straight way to a point. False, and the point has failed, where the axes
/// cannot keep to it.
/// @param joints at the point; the turns of the free axis may become others
bool MotionBuilder::LeadTo(std::size_t point, JointValues& joints)
{
    if (purpose == Purpose::Forecast || !place.Options().insertsRows || !now.isFollowed ||
        place.IsFreeWay(point)) {
        return true;
    }
    std::vector<WayStation> stations;
    Linearisation::Outcome outcome = linearisation.Insert(point, now.current, joints, stations);
    if (outcome != Linearisation::Outcome::Kept &&
        InsertOtherWay(point, joints, stations) == Linearisation::Outcome::Kept) {
        outcome = Linearisation::Outcome::Kept;
    }
    switch (outcome) {
    case Linearisation::Outcome::Kept:
        break;
    case Linearisation::Outcome::OutOfReach:
        Fail(point, "a place on the straight way to it is not reached; put points on a way around");
        return false;
    case Linearisation::Outcome::OutOfLimits:
        Fail(point, "on the straight way to it an axis leaves its limits; put points on a way "
                    "around, or move the part");
        return false;
    case Linearisation::Outcome::Unsteady:
        Fail(point, "the axes cannot keep the tool within the tolerances on the straight way to "
                    "it; allow wider ones");
        return false;
    }
    for (WayStation& station : stations) {
        MotionRow row;
        row.point = point;
        row.joints = std::move(station.joints);
        row.asked = place.Targets().Towards(point, station.share).at;
        row.branch = station.isAtPole ? kNoBranch : BranchAt(row.joints);
        row.flags.isInserted = true;
        Emit(std::move(row));
    }
    return true;
}

/// The shorter way around is not always the one along the path: not where the tool turns over, and
/// not with a head whose axes are no right angle apart.
Linearisation::Outcome MotionBuilder::InsertOtherWay(std::size_t point, JointValues& joints,
                                                     std::vector<WayStation>& stations)
{
    constexpr double kShortWay = kPi / 2.0;
    if (!place.Pair() || CountsTurns(*place.Axes()[place.Pair()->FirstAxis()])) {
        return Linearisation::Outcome::Unsteady;
    }
    const std::size_t first = place.Pair()->FirstAxis();
    const double turn = joints[first] - now.current[first];
    if (std::fabs(turn) < kShortWay) {
        return Linearisation::Outcome::Unsteady;
    }
    JointValues other = joints;
    other[first] += turn > 0.0 ? -kTurn : kTurn;
    stations.clear();
    const Linearisation::Outcome outcome =
        linearisation.Insert(point, now.current, other, stations);
    if (outcome == Linearisation::Outcome::Kept) {
        joints = std::move(other);
    }
    return outcome;
}

/// On the way between two points.
int MotionBuilder::BranchAt(const JointValues& joints) const
{
    const std::optional<RotaryPair>& pair = place.Pair();
    return pair ? pair->BranchOf(joints[pair->SecondAxis()]) : now.branch;
}

void MotionBuilder::Fail(std::size_t point, const std::string& sentence)
{
    Report(EventKind::Failed, point, sentence);
    now.isFollowed = false;
    MotionRow row;
    row.point = point;
    row.asked = place.Targets().LocationAt(point);
    row.flags.isRapid = place.PointAt(point).isRapid;
    row.flags.hasFailed = true;
    takeRow(row);
}

/// @param beyondLimits what would reach it, if limits were not
std::string MotionBuilder::WhyNot(std::size_t point, const std::vector<JointValues>& beyondLimits)
{
    const ShownUnits units{place.Machine().length, AngleUnit::Degree};
    std::optional<Unreached> least;
    double nearest = 0.0;
    PointSolver& solver = place.SolverAt(point);
    for (JointValues joints : beyondLimits) {
        Unreached unreached;
        unreached.cause = Unreached::Cause::Limits;
        unreached.exceeded = Exceeded(place.Axes(), joints);
        unreached.remaining = solver.ErrorAt(joints, place.Targets().LocationAt(point));
        const double travel = RotaryTravel(place.Axes(), now.current,
                                           NearestImages(place.Axes(), joints, now.current));
        if (!least || unreached.exceeded.size() < least->exceeded.size() ||
            (unreached.exceeded.size() == least->exceeded.size() && travel < nearest)) {
            least = std::move(unreached);
            nearest = travel;
        }
    }
    if (!least) {
        place.Machine().MoveToInitial();
        least = Diagnose(place.Machine(), solver.Stream(), place.PointAt(point));
    }
    return Sentence(*least, units);
}

/// Behind its last point nothing of a stretch at the pole counts any more.
void MotionBuilder::ForgetPole()
{
    now.poleBegin = 0;
    now.poleEnd = 0;
    now.poleTurns.clear();
}

/// Spreads the turn of the free axis over the points of a stretch at the pole, evenly along the way
/// from the point before it to the one behind it; a turn that can be made at a rapid is made there.
void MotionBuilder::PlanPole(std::size_t point)
{
    const std::size_t axis = place.Pair()->FirstAxis();
    now.poleBegin = point;
    now.poleEnd = point;
    std::optional<std::size_t> rapid;
    std::vector<double> way; // up to each point of the stretch and the one behind it [length]
    double length = 0.0;
    for (; now.poleEnd < choice.EndPoint(); ++now.poleEnd) {
        const ToolPoint& next = place.PointAt(now.poleEnd);
        if (now.poleEnd > 0) {
            length += Length(next.position - place.PointAt(now.poleEnd - 1).position);
        }
        way.push_back(length);
        if (!rapid && now.poleEnd > 0 && place.IsFreeWay(now.poleEnd)) {
            rapid = now.poleEnd;
        }
        if (!place.IsAtPole(next.direction)) {
            break;
        }
    }
    const std::optional<MotionState> behind =
        now.poleEnd < choice.EndPoint() ? choice.StateAt(now.poleEnd) : std::nullopt;
    const double before = now.current[axis];
    const double after =
        behind ? OnNearestTurns(place.Axes(), behind->joints, now.current)[axis] : before;
    const double begin = now.stands ? before : after;
    now.poleTurns.clear();
    for (std::size_t i = now.poleBegin; i < now.poleEnd; ++i) {
        const double share = length > 0.0 ? way[i - now.poleBegin] / length : 0.0;
        now.poleTurns.push_back(rapid ? (i < *rapid ? begin : after)
                                      : begin + share * (after - begin));
    }
}

std::optional<JointValues> MotionBuilder::StandAtPole(std::size_t point)
{
    if (now.poleTurns.empty()) {
        PlanPole(point);
    }
    JointValues joints = now.current;
    const double first = now.poleTurns[point - now.poleBegin];
    const CutterLocation asked = place.Targets().LocationAt(point);
    if (place.SolveAtPole(point, asked, first, joints) && AreWithinLimits(place.Axes(), joints)) {
        return joints;
    }
    joints[place.Pair()->FirstAxis()] = first;
    joints[place.Pair()->SecondAxis()] = place.Pair()->NearestSecond(asked.direction, first);
    const bool isReached =
        place.SolverAt(point).Solve(place.Targets().At(point), IkJoint::JtLimitNone, joints);
    Fail(point,
         WhyNot(point, isReached ? std::vector<JointValues>{joints} : std::vector<JointValues>{}));
    return std::nullopt;
}

/// Swings the axes with the tool pulled back at the last point, so that the way to `point` can be
/// gone in the branch and on the turns of `state`. False, and the point has failed, where that is
/// not wanted or not possible.
bool MotionBuilder::Swing(std::size_t point, const MotionState& state, Passage passage)
{
    const bool isRewind = passage == Passage::Rewind;
    const EventKind kind = isRewind ? EventKind::Rewind : EventKind::Flip;
    const PlanOptions& options = place.Options();
    if ((isRewind ? options.rewind : options.branchChange) == RetractPolicy::Refuse) {
        Fail(point,
             isRewind
                 ? "an axis has run out of turns here, and there is no rapid at which it could "
                   "have been turned back; allow --rewind retract, or put a rapid before"
                 : "from here on this branch does not keep to the limits, and there is no rapid at "
                   "which it could have been changed; allow --branch-change retract, or put a "
                   "rapid before");
        return false;
    }
    const std::size_t from = *now.stands;
    const CutterLocation foot = place.Targets().LocationAt(from);
    const CutterLocation back{foot.position + options.retract * foot.direction, foot.direction};
    const std::optional<JointValues> there = OnBranchOf(state, from);
    JointValues pulled = now.current;
    JointValues swung = there.value_or(now.current);
    if (!there || !place.SolverAt(from).SolveLinear(back.position, pulled) ||
        !place.SolverAt(from).SolveLinear(back.position, swung) ||
        !AreWithinLimits(place.Axes(), pulled) || !AreWithinLimits(place.Axes(), swung)) {
        Fail(point, "an axis has to swing before it, and there is no room within the limits to "
                    "pull the tool back for that; change --retract, or put a rapid before");
        return false;
    }
    Report(kind, from,
           "the tool is pulled back by " + DecimalText(options.retract) +
               (isRewind ? ", an axis is turned back by whole turns, and the tool returns"
                         : ", the axes swing to branch " + std::to_string(state.branch) +
                               ", and the tool returns"));
    const std::vector<std::pair<JointValues, CutterLocation>> stands3{
        {pulled, back}, {swung, back}, {*there, foot}};
    for (const auto& [joints, asked] : stands3) {
        MotionRow row;
        row.point = from;
        row.joints = joints;
        row.asked = asked;
        row.branch = &joints == &stands3.front().first ? now.branch : state.branch;
        row.flags.isRewind = true;
        row.flags.isFlip = !isRewind;
        Emit(std::move(row));
    }
    now.branch = state.branch;
    return true;
}

/// The axes at a point in the branch, and on the turns, that they have at the next.
std::optional<JointValues> MotionBuilder::OnBranchOf(const MotionState& state, std::size_t point)
{
    const PathTarget target = place.Targets().At(point);
    JointValues joints = state.joints;
    if (place.Pair()) {
        const RotaryPair& pair = *place.Pair();
        for (const RotaryPair::Angles& angles : pair.Directing(target.at.direction)) {
            if (pair.BranchOf(angles.second) == state.branch) {
                joints[pair.FirstAxis()] = angles.first;
                joints[pair.SecondAxis()] = angles.second;
            }
        }
    }
    if (!place.SolverAt(point).Solve(target, place.SolveLimits(), joints)) {
        return std::nullopt;
    }
    joints = NearestImages(place.Axes(), std::move(joints), state.joints);
    if (!place.SettleWithinLimits(point, target.at, joints)) {
        return std::nullopt;
    }
    return OnNearestTurns(place.Axes(), std::move(joints), now.current);
}

void MotionBuilder::Emit(MotionRow row)
{
    if (purpose == Purpose::Motion) {
        row.error = place.SolverAt(row.point).ErrorAt(row.joints, row.asked);
    }
    row.flags.isPole = place.IsInPoleCone(row.asked.direction);
    NoteLimits(row);
    now.current = row.joints;
    takeRow(row);
}

void MotionBuilder::NoteLimits(MotionRow& row)
{
    const ShownUnits units{place.Machine().length, AngleUnit::Degree};
    for (std::size_t i = 0; i < row.joints.size(); ++i) {
        const Axis& axis = *place.Axes()[i];
        const double slack = axis.isRotary ? kRotarySlack : kLinearSlack;
        const bool isThere = row.joints[i] <= axis.joint->GetLowBound() + slack ||
                             row.joints[i] >= axis.joint->GetHiBound() - slack;
        if (isThere && now.isAtLimit[i] == 0) {
            Report(EventKind::Limit, row.point,
                   ValueText(axis, row.joints[i], units) + " is at its limit (" +
                       LimitsText(axis, units) + ")");
        }
        now.isAtLimit[i] = isThere ? 1 : 0;
        row.flags.isAtLimit = row.flags.isAtLimit || isThere;
    }
}

void MotionBuilder::NotePole(std::size_t point)
{
    const Vec3 direction = place.PointAt(point).direction;
    const bool isThere = place.IsInPoleCone(direction);
    const bool isPassed = now.isFollowed && !place.IsFreeWay(point) && place.Pair() &&
                          place.Pair()->PassesPole(place.PointAt(point - 1).direction, direction,
                                                   place.Options().poleCone);
    if ((isThere || isPassed) && !now.isInCone) {
        Report(EventKind::Pole, point,
               "the tool comes within " + DecimalText(ToDegrees(place.Options().poleCone)) +
                   " deg of the pole of " + place.Axes()[place.Pair()->FirstAxis()]->name);
    }
    now.isInCone = isThere;
    now.isNearPole = isThere || isPassed;
}

/// Reports what swings on the way to a point; true when that is worth a flag.
bool MotionBuilder::NoteSwing(std::size_t point, const JointValues& before,
                              const JointValues& joints, int branch)
{
    if (!now.stands) {
        return false;
    }
    const bool isRapid = place.IsFreeWay(point);
    const bool isFree = isRapid || !now.isFollowed;
    const std::string way = isRapid  ? " on the rapid to it"
                            : isFree ? " past what is not reached"
                                     : " on the way to it";
    if (branch != kNoBranch && now.branch != kNoBranch && branch != now.branch) {
        Report(isFree ? EventKind::Flip : EventKind::Pole, point,
               isFree ? "the axes swing to branch " + std::to_string(branch) + way
                      : "the tool passes over the pole to branch " + std::to_string(branch));
        return isFree;
    }
    bool isLarge = false;
    for (std::size_t i = 0; i < joints.size(); ++i) {
        const Axis& axis = *place.Axes()[i];
        const double turn = std::fabs(joints[i] - before[i]);
        if (!axis.isRotary) {
            continue;
        }
        const std::string turns = axis.name + " turns by " + DecimalText(ToDegrees(turn)) + " deg";
        if (isFree && !axis.IsUnlimited() && turn > kPi) {
            Report(EventKind::Rewind, point, turns + way);
        } else if (!isFree && turn > kLargeTurn) {
            Report(now.isNearPole ? EventKind::Pole : EventKind::Flip, point, turns + way);
            isLarge = !now.isNearPole;
        }
    }
    return isLarge;
}

void MotionBuilder::Report(EventKind kind, std::size_t point, const std::string& sentence)
{
    takeEvent({kind, point, place.PointAt(point).line, sentence});
}

} // namespace host
