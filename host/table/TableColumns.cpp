#include "table/TableColumns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "table/RowFlagNames.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr double kLargestNumber = 1e12; // its square is still finite

// The columns around those of the axes.
constexpr std::array<std::string_view, 2> kFirst{"n", "line"};
constexpr std::array<std::string_view, 4> kLast{"pos_err", "dir_err_deg", "branch", "flags"};
constexpr std::size_t kOthers = kFirst.size() + kLast.size();

std::string ColumnName(const Axis& axis, const ShownUnits& units)
{
    return axis.name + "_" + std::string(Symbol(axis, units));
}

std::string NamesOfFlags()
{
    std::string names;
    for (const RowFlagName& flag : kRowFlagNames) {
        names += (names.empty() ? "" : ", ") + std::string(flag.name);
    }
    return names;
}

} // namespace

TableColumns::TableColumns(std::string inFile, std::vector<const Axis*> ofAxes, LengthUnit inLength,
                           TableLine header)
    : file(std::move(inFile)), axes(std::move(ofAxes)), length(inLength), headerText(header.text)
{
    Split(header);
    ReadHeader();
}

void TableColumns::Read(TableLine from, TableRow& row)
{
    Split(from);
    const std::size_t wanted = columns.size() + kOthers;
    if (cells.size() != wanted) {
        Refuse(cells[std::min(cells.size() - 1, wanted)],
               "this row has " + std::to_string(cells.size()) +
                   (cells.size() == 1 ? " cell" : " cells") + " and the header has " +
                   std::to_string(wanted) + "; correct it");
    }
    row.tableLine = line.number;
    row.motion.point = static_cast<std::size_t>(Count(cells[0], "the number of a point")) - 1;
    row.pathLine = Count(cells[1], "a line of the toolpath");
    row.motion.flags = Flags(cells.back());
    ReadValues(row.motion);
}

void TableColumns::ReadHeader()
{
    const auto expect = [this](std::size_t index, std::string_view name) {
        if (index >= cells.size() || cells[index].text != name) {
            Refuse(cells[std::min(index, cells.size() - 1)],
                   "a joint table begins with the columns n,line and ends with pos_err,"
                   "dir_err_deg,branch,flags; is this one?");
        }
    };
    const std::size_t end = std::max(cells.size(), kOthers) - kLast.size();
    for (std::size_t i = 0; i < kFirst.size(); ++i) {
        expect(i, kFirst[i]);
    }
    for (std::size_t i = 0; i < kLast.size(); ++i) {
        expect(end + i, kLast[i]);
    }
    for (std::size_t i = kFirst.size(); i < end; ++i) {
        columns.push_back(ColumnOf(cells[i]));
    }
    for (const Axis* axis : axes) {
        if (std::none_of(columns.begin(), columns.end(),
                         [axis](const AxisColumn& column) { return column.axis == axis; })) {
            Refuse(cells[end], "the column " + ColumnName(*axis, {length, AngleUnit::Degree}) +
                                   " is missing; the axes are " + AxisNames());
        }
    }
}

TableColumns::AxisColumn TableColumns::ColumnOf(const Cell& cell) const
{
    const std::string_view name = cell.text.substr(0, cell.text.rfind('_'));
    const auto found = std::find_if(axes.begin(), axes.end(),
                                    [name](const Axis* axis) { return axis->name == name; });
    if (found == axes.end()) {
        Refuse(cell, Quoted(cell.text) + " is no axis with its unit, as in X_mm; the axes are " +
                         AxisNames());
    }
    const Axis& axis = **found;
    if (std::any_of(columns.begin(), columns.end(),
                    [&axis](const AxisColumn& column) { return column.axis == &axis; })) {
        Refuse(cell, "axis " + axis.name + " has a column before this one; take one of them out");
    }
    for (const AngleUnit angle : {AngleUnit::Degree, AngleUnit::Radian}) {
        const ShownUnits units{length, angle};
        if (cell.text == ColumnName(axis, units)) {
            return {&axis, static_cast<std::size_t>(found - axes.begin()), units};
        }
    }
    Refuse(cell, Quoted(cell.text) + " has the wrong unit; axis " + axis.name + " is in " +
                     (axis.isRotary ? "deg or rad" : std::string(Symbol(length))));
}

std::string TableColumns::AxisNames() const
{
    std::string names;
    for (const Axis* axis : axes) {
        names += (names.empty() ? "" : ", ") + axis->name;
    }
    return names;
}

/// Takes a line apart.
void TableColumns::Split(TableLine from)
{
    line = from;
    cells.clear();
    std::size_t begin = 0;
    for (std::size_t comma = 0; comma != std::string_view::npos; begin = comma + 1) {
        comma = line.text.find(',', begin);
        cells.push_back({line.text.substr(begin, comma - begin), static_cast<int>(begin) + 1});
    }
}

void TableColumns::ReadValues(MotionRow& motion) const
{
    const Cell* const values = &cells[kFirst.size()];
    const std::size_t count = columns.size() + kLast.size() - 1;
    if (motion.flags.hasFailed) {
        const Cell* const filled = std::find_if(
            values, values + count, [](const Cell& cell) { return !cell.text.empty(); });
        if (filled != values + count) {
            Refuse(*filled, "a row that has failed has no values; take this one or the flag out");
        }
        motion.joints.clear();
        motion.error = {};
        motion.branch = 0;
        return;
    }
    motion.joints.resize(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const AxisColumn& column = columns[i];
        motion.joints[column.joint] = FromShown(*column.axis, Number(values[i]), column.units);
    }
    motion.error = {Error(values[columns.size()]), Error(values[columns.size() + 1])};
    const Cell& branch = values[columns.size() + 2];
    motion.branch = branch.text.empty() ? 0 : Count(branch, "a branch");
}

/// A number from 1; `what` says of what.
int TableColumns::Count(const Cell& cell, const std::string& what) const
{
    const auto number = ParseCount(cell.text);
    if (!number || *number < 1) {
        Refuse(cell, Quoted(cell.text) + " is not " + what + "; they are counted from 1");
    }
    return *number;
}

double TableColumns::Number(const Cell& cell) const
{
    if (cell.text.empty()) {
        Refuse(cell, "the value is missing; only a row that is flagged failed has none");
    }
    const auto number = ParseNumber(cell.text);
    if (!number) {
        Refuse(cell, Quoted(cell.text) + " is not a number; write it like 12.5 or -1.0E-3");
    }
    if (std::fabs(*number) > kLargestNumber) {
        Refuse(cell, Quoted(cell.text) + " is beyond any machine; correct it");
    }
    return *number;
}

double TableColumns::Error(const Cell& cell) const
{
    const double error = Number(cell);
    if (error < 0.0) {
        Refuse(cell, Quoted(cell.text) + " is negative, and an error is not; correct it");
    }
    return error;
}

RowFlags TableColumns::Flags(const Cell& cell) const
{
    RowFlags flags;
    std::size_t from = cell.text.empty() ? std::string_view::npos : 0;
    while (from != std::string_view::npos) {
        const std::size_t bar = cell.text.find('|', from);
        const std::string_view name = cell.text.substr(from, bar - from);
        const auto* const flag =
            std::find_if(kRowFlagNames.begin(), kRowFlagNames.end(),
                         [name](const RowFlagName& one) { return one.name == name; });
        if (flag == kRowFlagNames.end()) {
            Refuse(cell, Quoted(name) + " is not a flag; they are " + NamesOfFlags() +
                             ", with | between two");
        }
        if (flags.*(flag->member)) {
            Refuse(cell, "the flag " + std::string(name) + " stands here twice; take one out");
        }
        flags.*(flag->member) = true;
        from = bar == std::string_view::npos ? bar : bar + 1;
    }
    return flags;
}

void TableColumns::Refuse(const Cell& cell, const std::string& sentence) const
{
    throw InputError(file, {line.number, cell.column}, sentence);
}

} // namespace host
