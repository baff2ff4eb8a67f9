#include "app/Summary.h"

#include <algorithm>
#include <utility>

#include "text/Numbers.h"

namespace host
{

Summary::Summary(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits)
    : axes(std::move(ofAxes)), units(inUnits)
{}

void Summary::Add(const ToolPoint& point, const std::optional<Reached>& reached)
{
    if (!reached) {
        ++failed;
        return;
    }
    if (converged++ == 0) {
        for (const double value : reached->joints) {
            spans.push_back({value, value});
        }
    }
    for (std::size_t i = 0; i < spans.size(); ++i) {
        spans[i].low = std::min(spans[i].low, reached->joints[i]);
        spans[i].high = std::max(spans[i].high, reached->joints[i]);
    }
    Note(position, reached->error.position, point.line);
    Note(direction, reached->error.direction_deg, point.line);
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
    if (converged > 0) {
        PrintWorst(out, pathFile);
        PrintAxes(out);
    }
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

} // namespace host
