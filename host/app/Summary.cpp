#include "app/Summary.h"

#include <algorithm>
#include <utility>

namespace host
{

namespace
{

void Note(std::optional<ReportedError>& worst, double value, int line)
{
    if (!worst || value > worst->value) {
        worst = ReportedError{value, line};
    }
}

} // namespace

Summary::Summary(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits)
    : axes(std::move(ofAxes)), units(inUnits)
{}

void Summary::Add(const MotionRow& row, int line)
{
    if (row.flags.hasFailed) {
        ++counts.points;
        ++counts.failed;
        return;
    }
    if (counts.rows++ == 0) {
        for (const double value : row.joints) {
            spans.push_back({value, value});
        }
    }
    for (std::size_t i = 0; i < spans.size(); ++i) {
        spans[i].low = std::min(spans[i].low, row.joints[i]);
        spans[i].high = std::max(spans[i].high, row.joints[i]);
    }
    if (row.flags.isInserted) {
        ++counts.inserted;
    } else if (!row.flags.isRewind) {
        ++counts.points;
        ++counts.converged;
    }
    Note(position, row.error.position, line);
    Note(direction_deg, row.error.direction_deg, line);
}

void Summary::FillIn(RunReport& report) const
{
    report.lengthUnit = Symbol(units.length);
    report.angleUnit = Symbol(units.angle);
    report.counts = counts;
    report.position = position;
    report.direction_deg = direction_deg;
    report.axes.clear();
    for (std::size_t i = 0; i < axes.size(); ++i) {
        report.axes.push_back(AxisAt(i));
    }
    report.events = events;
}

ReportedAxis Summary::AxisAt(std::size_t index) const
{
    const Axis& axis = *axes[index];
    const auto shown = [&](double low, double high) {
        return ReportedRange{Shown(axis, low, units), Shown(axis, high, units)};
    };
    ReportedAxis reported;
    reported.name = axis.name;
    reported.isRotary = axis.isRotary;
    reported.word = axis.word;
    reported.wordSign = axis.wordSign;
    reported.unit = Symbol(axis, units);
    if (!axis.IsUnlimited()) {
        reported.limits = shown(axis.joint->GetLowBound(), axis.joint->GetHiBound());
    }
    if (!spans.empty()) {
        reported.reached = shown(spans[index].low, spans[index].high);
    }
    return reported;
}

} // namespace host
