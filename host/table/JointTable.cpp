#include "table/JointTable.h"

#include <utility>

#include "text/Numbers.h"

namespace host
{

namespace
{

std::string Flags(bool isRapid, bool hasFailed)
{
    std::string flags = isRapid ? "rapid" : "";
    if (hasFailed) {
        flags += flags.empty() ? "failed" : "|failed";
    }
    return flags;
}

} // namespace

JointTable::JointTable(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits)
    : axes(std::move(ofAxes)), units(inUnits)
{}

std::string JointTable::Header() const
{
    std::string header = "n,line,";
    for (const Axis* axis : axes) {
        header += axis->name + "_" + std::string(Symbol(*axis, units)) + ",";
    }
    return header + "pos_err,dir_err_deg,branch,flags\n";
}

std::string JointTable::Row(std::size_t number, const ToolPoint& point,
                            const std::optional<Reached>& reached) const
{
    std::string row = std::to_string(number) + "," + std::to_string(point.line) + ",";
    for (std::size_t i = 0; i < axes.size(); ++i) {
        row += (reached ? ShortestText(Shown(*axes[i], reached->joints[i], units)) : "") + ",";
    }
    row += (reached ? ShortestText(reached->error.position) : "") + ",";
    row += (reached ? ShortestText(reached->error.direction_deg) : "") + ",";
    row += ","; // a solve from the point before does not say on which branch it ends
    return row + Flags(point.isRapid, !reached) + "\n";
}

} // namespace host
