#include "app/PathReport.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/Columns.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr Vec3 kPartZ{0.0, 0.0, 1.0};

std::string CountText(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string_view TextOf(ToolpathFormat format)
{
    switch (format) {
    case ToolpathFormat::Csv:
        return "table (CSV)";
    case ToolpathFormat::Nc:
        return "NC program with tool vectors";
    case ToolpathFormat::Apt:
        break;
    }
    return "cutter locations (APT)";
}

std::size_t RapidsIn(const std::vector<ToolPoint>& points)
{
    return static_cast<std::size_t>(std::count_if(
        points.begin(), points.end(), [](const ToolPoint& point) { return point.isRapid; }));
}

/// The range of what `valueOf` gives for the points; there is at least one.
template <class ValueOf>
std::pair<double, double> RangeOf(const std::vector<ToolPoint>& points, const ValueOf& valueOf)
{
    std::pair range{valueOf(points.front()), valueOf(points.front())};
    for (const ToolPoint& point : points) {
        const double value = valueOf(point);
        range = {std::min(range.first, value), std::max(range.second, value)};
    }
    return range;
}

std::string ListText(const std::vector<double>& ascending)
{
    constexpr std::size_t kMostListed = 8;
    if (ascending.size() > kMostListed) {
        return std::to_string(ascending.size()) + " from " + DecimalText(ascending.front()) +
               " to " + DecimalText(ascending.back());
    }
    std::string text;
    for (const double value : ascending) {
        text += (text.empty() ? "" : ", ") + DecimalText(value);
    }
    return text;
}

} // namespace

PathReport::PathReport(const Toolpath& ofPath, const ShownUnits& inUnits, std::ostream& to)
    : path(ofPath), units(inUnits), out(to)
{}

void PathReport::Print(ToolpathFormat format) const
{
    out << "toolpath   " << path.file << "\n"
        << "format     " << TextOf(format) << "\n"
        << "points     " << path.points.size() << ", " << RapidsIn(path.points) << " at rapid\n";
    PrintExtents();
    PrintTilt();
    PrintFeeds();
    PrintOperations();
    if (!path.warnings.empty()) {
        out << "warnings   " << path.warnings.size() << "\n";
    }
}

void PathReport::PrintExtents() const
{
    constexpr std::array kNames{"x", "y", "z"};
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        const auto [low, high] =
            RangeOf(path.points, [i](const ToolPoint& point) { return point.position[i]; });
        out << kNames[i] << "          " << DecimalText(low) << " to " << DecimalText(high) << " "
            << Symbol(units.length) << "\n";
    }
}

void PathReport::PrintTilt() const
{
    const auto [low, high] = RangeOf(
        path.points, [](const ToolPoint& point) { return AngleBetween(point.direction, kPartZ); });
    const auto shown = [this](double angle) {
        return DecimalText(units.angle == AngleUnit::Degree ? ToDegrees(angle) : angle);
    };
    out << "tilt       " << shown(low) << " to " << shown(high) << " " << Symbol(units.angle)
        << " from the part's z\n";
}

void PathReport::PrintFeeds() const
{
    std::set<std::pair<FeedPer, double>> feeds;
    std::size_t without = 0;
    for (const ToolPoint& point : path.points) {
        if (point.feed) {
            feeds.emplace(point.feed->per, point.feed->value);
        } else if (!point.isRapid) {
            ++without;
        }
    }
    for (const FeedPer per : {FeedPer::Minute, FeedPer::Revolution}) {
        std::vector<double> values;
        for (const auto& [itsPer, value] : feeds) {
            if (itsPer == per) {
                values.push_back(value);
            }
        }
        if (values.empty()) {
            continue;
        }
        out << "feeds      " << ListText(values) << " " << Symbol(units.length)
            << (per == FeedPer::Minute ? "/min" : "/rev") << "\n";
    }
    if (without > 0) {
        out << "feeds      " << CountText(without, "point")
            << " neither at rapid nor with a feed\n";
    }
}

void PathReport::PrintOperations() const
{
    struct Counts
    {
        std::size_t points{0};
        std::size_t rapids{0};
    };
    std::vector<Counts> counts(path.operations.size());
    for (const ToolPoint& point : path.points) {
        Counts& its = counts[static_cast<std::size_t>(point.operation)];
        ++its.points;
        its.rapids += point.isRapid ? 1 : 0;
    }
    out << "operations " << path.operations.size() << "\n";
    Columns columns;
    for (std::size_t i = 0; i < path.operations.size(); ++i) {
        const Operation& operation = path.operations[i];
        columns.Add(
            {std::to_string(i + 1),
             operation.name.empty() ? "without name" : Quoted(operation.name),
             operation.toolNumber ? "tool " + std::to_string(*operation.toolNumber) : "no tool",
             operation.toolLength ? "length " + DecimalText(*operation.toolLength) + " " +
                                        std::string(Symbol(units.length))
                                  : "no length",
             CountText(counts[i].points, "point"), std::to_string(counts[i].rapids) + " at rapid",
             "from line " + std::to_string(operation.line)});
    }
    columns.Print(out, "  ");
}

} // namespace host
