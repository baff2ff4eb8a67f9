#include "verify/Verification.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <utility>

#include "geometry/Units.h"
#include "text/Numbers.h"

namespace host
{

namespace
{

// What a value may lose on its way through a text in degrees.
constexpr double kRounding = 1e-9; //!< [length] or [rad]

// By how much a row's own errors may be wrong, in tolerances: as much as a table that was rounded
// to a few decimals may be.
constexpr double kErrorShare = 0.01;

Deviation AsDeviation(const PoseError& error)
{
    return {error.position, ToRadians(error.direction_deg)};
}

Deviation DeviationFromPlace(const CutterLocation& place, const CutterLocation& tool)
{
    return {Length(tool.position - place.position), AngleBetween(tool.direction, place.direction)};
}

Largest ValueAt(const TableRow& row, double value)
{
    return {value, row.tableLine, row.pathLine};
}

std::string NumberOf(const TableRow& row)
{
    return std::to_string(row.motion.point + 1);
}

} // namespace

std::vector<const Axis*> VerificationRequest::Axes() const
{
    std::set<std::size_t> moved;
    for (const SeatedTool& tool : tools) {
        moved.insert(tool.stream->axes.begin(), tool.stream->axes.end());
    }
    std::vector<const Axis*> axes;
    std::transform(moved.begin(), moved.end(), std::back_inserter(axes),
                   [this](std::size_t index) { return &machine.axes[index]; });
    return axes;
}

Verification::Verification(const VerificationRequest& ofUser, const PathWindow& ofPath,
                           ToolKinematics& ofAxes, FindingTaker toFindings)
    : request(ofUser),
      path(ofPath), tolerance{request.tolerances.linear, ToRadians(request.tolerances.angle_deg)},
      takeFinding(std::move(toFindings)), units{request.machine.length, AngleUnit::Degree},
      kinematics(ofAxes), axes(kinematics.Axes()),
      order(path, [this](const Finding& finding) { Add(finding); })
{
    report.points = path.NumPoints();
}

void Verification::GoOnBehind(const TableRow& row)
{
    order.GoOnBehind(row.motion.point);
    pull.reset();
    way.reset(); // was the way to that point
    if (row.motion.flags.hasFailed) {
        stand.reset();
    } else {
        StandAt(row);
    }
    hasNothingOpen = true;
}

void Verification::TakeVerified(const VerifiedRows& rows, const TableRow& last)
{
    report.Add(rows.report);
    for (const Finding& finding : rows.findings) {
        takeFinding(finding);
    }
    GoOnBehind(last);
}

void Verification::Take(const TableRow& row)
{
    ++report.rows;
    const RowRole role = order.Take(row);
    if (role != RowRole::Rewind) {
        EndPull();
    }
    if (order.HasSkipped()) {
        Interrupt();
    }
    switch (role) {
    case RowRole::Point:
    case RowRole::Inserted:
        TakeOnWay(row, role);
        break;
    case RowRole::Rewind:
        TakeRewind(row);
        break;
    case RowRole::Failed:
    case RowRole::None:
        Interrupt();
        break;
    }
    hasNothingOpen = role == RowRole::Point || role == RowRole::Failed;
}

void Verification::Finish()
{
    EndPull();
    order.Finish();
}

// The way to a point -------------------------------------------------------------------------

void Verification::TakeOnWay(const TableRow& row, RowRole role)
{
    BeginWay(row.motion.point);
    kinematics.Seat(ToolOf(row.motion.point));
    CheckLimits(row);
    const CutterLocation tool = kinematics.ToolAt(row.motion.joints);
    if (way->kind == WayKind::Straight) {
        CheckTurns(row);
        FollowWay(row, role);
    }
    if (role == RowRole::Inserted) {
        ++report.inserted;
        CheckInserted(row, tool);
    } else {
        CheckPoint(row, tool);
        CountWay();
    }
    StandAt(row);
}

void Verification::BeginWay(std::size_t point)
{
    if (way && way->point == point) {
        return;
    }
    const WayKind kind = KindOfWay(point);
    way = Way{point, kind, LocationAt(point == 0 ? 0 : point - 1), LocationAt(point), {}, false};
}

Verification::WayKind Verification::KindOfWay(std::size_t point) const
{
    if (point == 0) {
        return WayKind::First;
    }
    if (path[point].isRapid) {
        return WayKind::Rapid;
    }
    if (!stand) {
        return WayKind::Interrupted;
    }
    const auto numberAt = [this](std::size_t at) {
        return request.operations[static_cast<std::size_t>(path[at].operation)].toolNumber;
    };
    // Another tool may be as long as the one before.
    const bool isSame = stand->tool == ToolOf(point) && numberAt(point - 1) == numberAt(point);
    return isSame ? WayKind::Straight : WayKind::ToolChange;
}

void Verification::CountWay()
{
    report.rapids += way->kind == WayKind::Rapid ? 1 : 0;
    report.toolChanges += way->kind == WayKind::ToolChange ? 1 : 0;
    report.interrupted += way->kind == WayKind::Interrupted ? 1 : 0;
}

/// Looks at the tool all the way from the row before, and at the row itself when it is an inserted
/// one.
void Verification::FollowWay(const TableRow& row, RowRole role)
{
    const Deviation worst = WorstOnTheWay(row, [&](const CutterLocation& tool, bool isRow) {
        const Deviation deviation =
            DeviationFrom(way->from, way->to, tool, tolerance.position, tolerance.direction);
        if (Worst(deviation) <= 1.0) {
            CheckProgress(row, tool);
        }
        if (isRow && role == RowRole::Point) {
            return Deviation{};
        }
        report.wayPosition.Raise(ValueAt(row, deviation.position));
        report.wayDirection_deg.Raise(ValueAt(row, ToDegrees(deviation.direction)));
        return deviation;
    });
    if (Worst(worst) > 1.0) {
        Find(FindingKind::Way, row,
             "between the row before and this one the tool strays by " + Text(worst) +
                 " from the straight way to point " + NumberOf(row));
    }
}

/// On the way the tool is as far from the beginning as it has been, but for what two deviations
/// within the tolerances may make.
void Verification::CheckProgress(const TableRow& row, const CutterLocation& tool)
{
    const Deviation come = DeviationFromPlace(way->from, tool);
    const Deviation back{way->farthest.position - come.position,
                         way->farthest.direction - come.direction};
    way->farthest = {std::max(way->farthest.position, come.position),
                     std::max(way->farthest.direction, come.direction)};
    if (Worst(back) > 2.0 && !way->hasGoneBack) {
        way->hasGoneBack = true;
        Find(FindingKind::Back, row,
             "between the row before and this one the tool goes back on its way to point " +
                 NumberOf(row));
    }
}

void Verification::CheckPoint(const TableRow& row, const CutterLocation& tool)
{
    const Deviation deviation = DeviationFromPlace(way->to, tool);
    report.pointPosition.Raise(ValueAt(row, deviation.position));
    report.pointDirection_deg.Raise(ValueAt(row, ToDegrees(deviation.direction)));
    if (Worst(deviation) > 1.0) {
        Find(FindingKind::Point, row,
             "the tool is off point " + NumberOf(row) + " by " + Text(deviation));
    }
    const Deviation own = AsDeviation(row.motion.error);
    if (Worst({std::fabs(own.position - deviation.position),
               std::fabs(own.direction - deviation.direction)}) > kErrorShare) {
        FindWrongError(row, deviation);
    }
}

/// An inserted row does not say which place of the way it is for; there has to be one that its own
/// errors fit.
void Verification::CheckInserted(const TableRow& row, const CutterLocation& tool)
{
    if (way->kind != WayKind::Straight) {
        return;
    }
    const Deviation own = AsDeviation(row.motion.error);
    const Deviation allowed{own.position + kErrorShare * tolerance.position,
                            own.direction + kErrorShare * tolerance.direction};
    const Deviation deviation =
        DeviationFrom(way->from, way->to, tool, allowed.position, allowed.direction);
    if (deviation.position > allowed.position || deviation.direction > allowed.direction) {
        FindWrongError(row, deviation);
    }
}

// Rewinds ------------------------------------------------------------------------------------

void Verification::TakeRewind(const TableRow& row)
{
    ++report.rewound;
    kinematics.Seat(ToolOf(row.motion.point));
    CheckLimits(row);
    if (!stand) {
        Find(FindingKind::Rewind, row,
             "no row before this one says where the tool is pulled back from");
    } else {
        if (!pull) {
            const CutterLocation foot = kinematics.ToolAt(stand->joints);
            pull = Pull{foot, stand->error, foot, false, {}};
        }
        FollowPull(row);
    }
    StandAt(row);
}

/// Between two rows at which the tool is out it may be anywhere; otherwise it keeps to its line.
void Verification::FollowPull(const TableRow& row)
{
    const CutterLocation tool = kinematics.ToolAt(row.motion.joints);
    const bool isOut = OutOf(tool) > tolerance.position;
    Deviation worst = DeviationFromPull(tool);
    if (!pull->isOut || !isOut) {
        CheckTurns(row);
        worst = WorstOnTheWay(row, [this](const CutterLocation& place, bool /*isRow*/) {
            return DeviationFromPull(place);
        });
    }
    if (Worst(worst) > 1.0) {
        Find(FindingKind::Rewind, row,
             "between the row before and this one the tool strays by " + Text(worst) +
                 " from the line along which it is pulled back");
    }
    CheckPulledErrors(row, tool);
    pull->tool = tool;
    pull->isOut = isOut;
    pull->last = row;
}

/// The place that a row of a rewind is for is on the line through the place that the row at its
/// foot was for.
void Verification::CheckPulledErrors(const TableRow& row, const CutterLocation& tool)
{
    const Vec3 place = pull->foot.position + OutOf(tool) * pull->foot.direction;
    const Deviation deviation = DeviationFromPlace({place, pull->foot.direction}, tool);
    const Deviation own = AsDeviation(row.motion.error);
    const Deviation ofFoot = AsDeviation(pull->error);
    if (Worst({deviation.position - own.position - ofFoot.position,
               deviation.direction - own.direction - ofFoot.direction}) > kErrorShare) {
        FindWrongError(row, deviation);
    }
}

void Verification::EndPull()
{
    if (!pull) {
        return;
    }
    const Deviation left = DeviationFromPlace(pull->foot, pull->tool);
    if (Worst(left) > 1.0) {
        Find(FindingKind::Rewind, pull->last,
             "the rewind ends " + Text(left) + " away from where the tool was pulled back");
    }
    pull.reset();
}

/// How far the tool is out [length]; behind its foot less than 0.
double Verification::OutOf(const CutterLocation& tool) const
{
    return Dot(tool.position - pull->foot.position, pull->foot.direction);
}

Deviation Verification::DeviationFromPull(const CutterLocation& tool) const
{
    const double out = std::max(0.0, OutOf(tool));
    const Vec3 place = pull->foot.position + out * pull->foot.direction;
    return DeviationFromPlace({place, pull->foot.direction}, tool);
}

// Rows of every kind -------------------------------------------------------------------------

void Verification::CheckLimits(const TableRow& row)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const double value = row.motion.joints[i];
        if (value < axes[i]->joint->GetLowBound() - kRounding ||
            value > axes[i]->joint->GetHiBound() + kRounding) {
            Find(FindingKind::Limit, row,
                 ValueText(*axes[i], value, units) + " is outside its " +
                     LimitsText(*axes[i], units));
        }
    }
}

void Verification::CheckTurns(const TableRow& row)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const double turn = std::fabs(row.motion.joints[i] - stand->joints[i]);
        if (axes[i]->isRotary && turn > kPi + kRounding) {
            Find(FindingKind::Turn, row,
                 axes[i]->name + " turns by " + DecimalText(ToDegrees(turn)) +
                     " deg between the row before and this one");
        }
    }
}

Deviation Verification::WorstOnTheWay(const TableRow& row, const DeviationAt& deviationAt)
{
    const int parts = request.samples + 1;
    std::vector<double> joints(axes.size());
    Deviation worst;
    for (int part = 1; part <= parts; ++part) {
        const double share = static_cast<double>(part) / parts;
        for (std::size_t i = 0; i < joints.size(); ++i) {
            const double from = stand->joints[i];
            joints[i] = from + share * (row.motion.joints[i] - from);
        }
        const Deviation deviation = deviationAt(kinematics.ToolAt(joints), part == parts);
        if (Worst(deviation) > Worst(worst)) {
            worst = deviation;
        }
    }
    return worst;
}

void Verification::StandAt(const TableRow& row)
{
    stand = Stand{row.motion.joints, row.motion.error, ToolOf(row.motion.point)};
}

/// What follows does not go on from a row that was checked.
void Verification::Interrupt()
{
    stand.reset();
    if (way && way->kind == WayKind::Straight) {
        way->kind = WayKind::Interrupted;
    }
}

const SeatedTool& Verification::ToolOf(std::size_t point) const
{
    return request.tools[static_cast<std::size_t>(path[point].operation)];
}

CutterLocation Verification::LocationAt(std::size_t point) const
{
    return {path[point].position, path[point].direction};
}

/// The larger of both, in tolerances.
double Verification::Worst(const Deviation& deviation) const
{
    return std::max(deviation.position / tolerance.position,
                    deviation.direction / tolerance.direction);
}

std::string Verification::Text(const Deviation& deviation) const
{
    const auto text = [](double value) { return value < kRounding ? "0" : RoundedText(value); };
    return text(deviation.position) + " " + std::string(Symbol(units.length)) + " and " +
           text(ToDegrees(deviation.direction)) + " deg";
}

void Verification::FindWrongError(const TableRow& row, const Deviation& deviation)
{
    Find(FindingKind::Error, row,
         "this row says that it is off by " + Text(AsDeviation(row.motion.error)) +
             ", and its axis values leave " + Text(deviation));
}

void Verification::Find(FindingKind kind, const TableRow& row, const std::string& sentence)
{
    Add({kind, row.tableLine, row.pathLine, sentence});
}

void Verification::Add(const Finding& finding)
{
    ++report.findings[static_cast<std::size_t>(finding.kind)];
    takeFinding(finding);
}

} // namespace host
