#include "table/JointTable.h"

#include <utility>

#include "table/RowFlagNames.h"
#include "text/Numbers.h"

namespace host
{

namespace
{

void AppendFlags(const RowFlags& flags, std::string& text)
{
    bool isFirst = true;
    for (const RowFlagName& flag : kRowFlagNames) {
        if (flags.*flag.member) {
            text += isFirst ? "" : "|";
            text += flag.name;
            isFirst = false;
        }
    }
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

std::string JointTable::Row(const MotionRow& row, int line) const
{
    std::string text;
    AppendRow(row, line, text);
    return text;
}

void JointTable::AppendRow(const MotionRow& row, int line, std::string& text) const
{
    const bool hasValues = !row.flags.hasFailed;
    text += std::to_string(row.point + 1) + "," + std::to_string(line) + ",";
    for (std::size_t i = 0; i < axes.size(); ++i) {
        text += (hasValues ? ShortestText(Shown(*axes[i], row.joints[i], units)) : "") + ",";
    }
    text += (hasValues ? ShortestText(row.error.position) : "") + ",";
    text += (hasValues ? ShortestText(row.error.direction_deg) : "") + ",";
    text += (hasValues && row.branch > 0 ? std::to_string(row.branch) : "") + ",";
    AppendFlags(row.flags, text);
    text += "\n";
}

} // namespace host
