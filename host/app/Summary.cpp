#include "app/Summary.h"

#include <algorithm>
#include <utility>

#include "text/Numbers.h"

namespace host
{

Summary::Summary(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits)
    : axes(std::move(ofAxes)), units(inUnits)
{}

void Summary::Add(const MotionRow& row, int line)
{
    if (row.flags.hasFailed) {
        ++failed;
        return;
    }
    if (rows++ == 0) {
        for (const double value : row.joints) {
            spans.push_back({value, value});
        }
    }
    for (std::size_t i = 0; i < spans.size(); ++i) {
        spans[i].low = std::min(spans[i].low, row.joints[i]);
        spans[i].high = std::max(spans[i].high, row.joints[i]);
    }
    if (row.flags.isInserted) {
        ++inserted;
    } else if (!row.flags.isRewind) {
        ++converged;
    }
    Note(position, row.error.position, line);
    Note(direction, row.error.direction_deg, line);
}

void Summary::Note(Worst& worst, double value, int line)
{
    if (value > worst.value) {
        worst = {value, line};
    }
}

void Summary::Print(std::ostream& out, const std::string& pathFile,
                    std::chrono::duration<double> time) const
{
    out << "points     " << converged + failed << ": " << converged << " converged, " << failed
        << " failed\n";
    if (rows > 0) {
        out << "rows       " << rows << ", " << inserted << " of them inserted between points\n";
        PrintWorst(out, pathFile);
        PrintAxes(out);
    }
    PrintEvents(out, pathFile);
    out << "time       " << FixedText(time.count(), 2) << " s\n";
}

void Summary::PrintWorst(std::ostream& out, const std::string& pathFile) const
{
    out << "position   off by at most " << RoundedText(position.value) << " "
        << Symbol(units.length) << ", at " << pathFile << ":" << position.line << "\n"
        << "direction  off by at most " << RoundedText(direction.value) << " deg, at " << pathFile
        << ":" << direction.line << "\n";
}

void Summary::PrintAxes(std::ostream& out) const
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        out << "axis       " << axes[i]->name << " "
            << DecimalText(Shown(*axes[i], spans[i].low, units)) << " to "
            << DecimalText(Shown(*axes[i], spans[i].high, units)) << " " << Symbol(*axes[i], units)
            << " (" << LimitsText(*axes[i], units) << ")\n";
    }
}

/// Failed points are told of as they come; here stands the rest, as far as anyone reads it.
void Summary::PrintEvents(std::ostream& out, const std::string& pathFile) const
{
    constexpr std::size_t kMostShown = 12;
    std::size_t count = 0;
    for (const Event& event : events) {
        if (event.kind == EventKind::Failed || count++ >= kMostShown) {
            continue;
        }
        std::string name = Name(event.kind);
        name.resize(11, ' ');
        out << name << pathFile << ":" << event.line << ": " << event.sentence << "\n";
    }
    if (count > kMostShown) {
        out << "events     " << count - kMostShown
            << " more; --summary FILE writes down all of them\n";
    }
}

} // namespace host
