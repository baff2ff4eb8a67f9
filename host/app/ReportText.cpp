#include "app/ReportText.h"

#include "text/Numbers.h"

namespace host
{

namespace
{

std::string RangeText(const ReportedRange& range)
{
    return DecimalText(range.low) + " to " + DecimalText(range.high);
}

void PrintWorst(const char* head, const ReportedError& worst, const std::string& unit,
                const std::string& pathFile, std::ostream& out)
{
    out << head << "off by at most " << RoundedText(worst.value) << " " << unit << ", at "
        << pathFile << ":" << worst.line << "\n";
}

void PrintAxis(const ReportedAxis& axis, std::ostream& out)
{
    out << "axis       " << axis.name << " " << RangeText(*axis.reached) << " " << axis.unit << " ("
        << (axis.limits ? "limits " + RangeText(*axis.limits) : "unlimited") << ")\n";
}

/// Failed points are told of as they come; here stands the rest, as far as anyone reads it.
void PrintEvents(const RunReport& report, std::ostream& out)
{
    constexpr std::size_t kMostShown = 12;
    std::size_t count = 0;
    for (const Event& event : report.events) {
        if (event.kind == EventKind::Failed || count++ >= kMostShown) {
            continue;
        }
        std::string name = Name(event.kind);
        name.resize(11, ' ');
        out << name << report.toolpath.path << ":" << event.line << ": " << event.sentence << "\n";
    }
    if (count > kMostShown) {
        out << "events     " << count - kMostShown
            << " more; --summary FILE writes down all of them\n";
    }
}

} // namespace

void PrintReport(const RunReport& report, std::ostream& out)
{
    const ReportedCounts& counts = report.counts;
    out << "points     " << counts.points << ": " << counts.converged << " converged, "
        << counts.failed << " failed\n";
    if (counts.rows > 0) {
        out << "rows       " << counts.rows << ", " << counts.inserted
            << " of them inserted between points\n";
    }
    if (report.position) {
        PrintWorst("position   ", *report.position, report.lengthUnit, report.toolpath.path, out);
    }
    if (report.direction_deg) {
        PrintWorst("direction  ", *report.direction_deg, "deg", report.toolpath.path, out);
    }
    for (const ReportedAxis& axis : report.axes) {
        if (axis.reached) {
            PrintAxis(axis, out);
        }
    }
    PrintEvents(report, out);
    out << "time       " << FixedText(report.seconds, 2) << " s\n";
}

} // namespace host
