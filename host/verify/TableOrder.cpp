#include "verify/TableOrder.h"

#include <utility>

namespace host
{

namespace
{

std::string NumberOf(std::size_t point)
{
    return std::to_string(point + 1);
}

} // namespace

TableOrder::TableOrder(const PathWindow& ofPath, FindingTaker toFindings)
    : path(ofPath), takeFinding(std::move(toFindings))
{}

RowRole TableOrder::Take(const TableRow& row)
{
    hasSkipped = false;
    const std::size_t point = row.motion.point;
    if (point >= path.NumPoints()) {
        Find(FindingKind::Extra, row,
             "this row is of point " + NumberOf(point) + ", and the toolpath ends with point " +
                 std::to_string(path.NumPoints()));
        return RowRole::None;
    }
    if (row.pathLine != path[point].line) {
        Find(FindingKind::Line, row,
             "the toolpath has point " + NumberOf(point) + " on line " +
                 std::to_string(path[point].line) + ", and this row says " +
                 std::to_string(row.pathLine));
    }
    return RoleOf(row);
}

RowRole TableOrder::RoleOf(const TableRow& row)
{
    const std::size_t point = row.motion.point;
    const RowFlags& flags = row.motion.flags;
    if (flags.isRewind && !flags.hasFailed && (point == next || point + 1 == next)) {
        return RowRole::Rewind;
    }
    if (point < next) {
        Find(FindingKind::Extra, row,
             "this row is of point " + NumberOf(point) + ", and point " + NumberOf(next - 1) +
                 " has had its row before it");
        return RowRole::None;
    }
    SkipTo(row);
    CheckRapid(row);
    if (flags.isInserted && !flags.hasFailed) {
        if (point == 0) {
            Find(FindingKind::Extra, row, "there is no way to the first point to insert a row in");
        }
        return point == 0 ? RowRole::None : RowRole::Inserted;
    }
    next = point + 1;
    if (flags.hasFailed) {
        Find(FindingKind::Failed, row, "point " + NumberOf(point) + " has failed");
        return RowRole::Failed;
    }
    return RowRole::Point;
}

void TableOrder::SkipTo(const TableRow& row)
{
    const std::size_t point = row.motion.point;
    hasSkipped = next < point;
    for (; next < point; ++next) {
        Find(FindingKind::Missing, row,
             "point " + NumberOf(next) + " has no row before this one of point " + NumberOf(point));
    }
}

void TableOrder::CheckRapid(const TableRow& row) const
{
    const bool isRapid = path[row.motion.point].isRapid;
    if (row.motion.flags.isRapid != isRapid) {
        Find(FindingKind::Rapid, row,
             "the toolpath goes to point " + NumberOf(row.motion.point) +
                 (isRapid ? " as a rapid, and this row is not flagged as one"
                          : " at a feed, and this row is flagged as a rapid"));
    }
}

void TableOrder::Finish() const
{
    for (std::size_t point = next; point < path.NumPoints(); ++point) {
        takeFinding({FindingKind::Missing, 0, path[point].line,
                     "the table ends without a row of point " + NumberOf(point)});
    }
}

void TableOrder::Find(FindingKind kind, const TableRow& row, const std::string& sentence) const
{
    takeFinding({kind, row.tableLine, row.pathLine, sentence});
}

} // namespace host
