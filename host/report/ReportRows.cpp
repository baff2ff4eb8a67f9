#include "report/ReportRows.h"

#include <algorithm>
#include <array>
#include <utility>

#include "machine/AxisText.h"

namespace host
{

namespace
{

constexpr int kAngleDecimals = 6; // [deg]
constexpr int kDirectionDecimals = 9;
constexpr int kErrorDecimals = 9; // [length] or [deg]
constexpr int kFeedDecimals = 4;

/// A flag and what it adds to the number of all.
struct FlagNumber
{
    bool RowFlags::*member;
    int number;
};

constexpr std::array kFlagNumbers{
    FlagNumber{&RowFlags::isRapid, 1},    FlagNumber{&RowFlags::hasFailed, 2},
    FlagNumber{&RowFlags::isInserted, 4}, FlagNumber{&RowFlags::isFlip, 8},
    FlagNumber{&RowFlags::isRewind, 16},  FlagNumber{&RowFlags::isPole, 32},
    FlagNumber{&RowFlags::isAtLimit, 64}};

int NumberOf(const RowFlags& flags)
{
    int number = 0;
    for (const FlagNumber& flag : kFlagNumbers) {
        number += flags.*flag.member ? flag.number : 0;
    }
    return number;
}

double FeedPerMinute(const ToolPoint& point)
{
    return point.feed && point.feed->per == FeedPer::Minute ? point.feed->value : 0.0;
}

} // namespace

ReportRows::ReportRows(std::vector<const Axis*> ofAxes, const Toolpath& ofPath, LengthUnit inLength)
    : axes(std::move(ofAxes)), path(ofPath), joints(axes.size(), 0.0)
{
    constexpr int kMillimetreDecimals = 6;
    constexpr int kInchDecimals = 7;
    const int lengthDecimals = inLength == LengthUnit::Inch ? kInchDecimals : kMillimetreDecimals;
    const auto add = [this](std::string name, int decimals) {
        columns.push_back({std::move(name), ColumnEncoder(decimals)});
    };
    for (std::size_t i = 0; i < axes.size(); ++i) {
        add("joint" + std::to_string(i), axes[i]->isRotary ? kAngleDecimals : lengthDecimals);
    }
    for (const char* const name : {"x", "y", "z"}) {
        add(name, lengthDecimals);
    }
    for (const char* const name : {"i", "j", "k"}) {
        add(name, kDirectionDecimals);
    }
    for (const char* const name : {"point", "line", "flags", "branch"}) {
        add(name, 0);
    }
    add("positionError", kErrorDecimals);
    add("directionError", kErrorDecimals);
    add("feed", kFeedDecimals);
}

void ReportRows::Add(const MotionRow& row)
{
    if (!row.flags.hasFailed) {
        NoteReached(row);
    }
    const ToolPoint& point = path.points[row.point];
    std::vector<double> values = joints; // in the order of the columns
    values.insert(values.end(), row.asked.position.begin(), row.asked.position.end());
    values.insert(values.end(), row.asked.direction.begin(), row.asked.direction.end());
    values.push_back(static_cast<double>(row.point));
    values.push_back(point.line);
    values.push_back(NumberOf(row.flags));
    values.push_back(row.branch);
    values.push_back(row.error.position);
    values.push_back(row.error.direction_deg);
    values.push_back(FeedPerMinute(point));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].column.Add(values[i]);
    }
    if (row.point >= firstRows.size()) {
        firstRows.resize(row.point + 1, count);
    }
    ++count;
}

void ReportRows::NoteReached(const MotionRow& row)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        joints[i] = Shown(*axes[i], row.joints[i], {});
    }
    if (reached.empty()) {
        for (const double joint : joints) {
            reached.push_back({joint, joint});
        }
    }
    for (std::size_t i = 0; i < axes.size(); ++i) {
        reached[i].low = std::min(reached[i].low, joints[i]);
        reached[i].high = std::max(reached[i].high, joints[i]);
    }
}

std::size_t ReportRows::FirstRowOf(std::size_t point) const
{
    return point < firstRows.size() ? firstRows[point] : count;
}

std::optional<ReportedRange> ReportRows::ReachedBy(std::size_t axis) const
{
    return reached.empty() ? std::nullopt : std::optional(reached[axis]);
}

} // namespace host
