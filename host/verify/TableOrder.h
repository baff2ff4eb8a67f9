#ifndef TRUNNION_HOST_VERIFY_TABLE_ORDER_H
#define TRUNNION_HOST_VERIFY_TABLE_ORDER_H

#include <cstddef>
#include <functional>
#include <string>

#include "table/TableRow.h"
#include "toolpath/PathWindow.h"
#include "verify/VerificationReport.h"

namespace host
{

using FindingTaker = std::function<void(const Finding&)>;

/// What a row is to the toolpath.
enum class RowRole {
    Point,    //!< the row of its point
    Inserted, //!< on the way to it
    Rewind,   //!< the tool is pulled back
    Failed,   //!< its point is not reached
    None      //!< it stands out of place
};

/// Whether every point has its row, in order, and whether they agree on lines and rapids.
class TableOrder
{
  public:
    TableOrder(const PathWindow& ofPath, FindingTaker toFindings);

    /// As though the rows up to that of this point had been taken.
    void GoOnBehind(std::size_t point) { next = point + 1; }
    RowRole Take(const TableRow& row);
    /// Behind the last row.
    void Finish() const;
    /// Whether points before the row that was taken last have no row.
    bool HasSkipped() const { return hasSkipped; }

  private:
    RowRole RoleOf(const TableRow& row);
    void SkipTo(const TableRow& row);
    void CheckRapid(const TableRow& row) const;
    void Find(FindingKind kind, const TableRow& row, const std::string& sentence) const;

    PathWindow path;
    FindingTaker takeFinding;
    std::size_t next{0}; // the first point that has not had its row
    bool hasSkipped{false};
};

} // namespace host

#endif
