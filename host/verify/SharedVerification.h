#ifndef TRUNNION_HOST_VERIFY_SHARED_VERIFICATION_H
#define TRUNNION_HOST_VERIFY_SHARED_VERIFICATION_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "ranks/SharedWork.h"
#include "table/TableChunk.h"
#include "table/TableColumns.h"
#include "toolpath/PathWindow.h"
#include "verify/ChunkVerification.h"
#include "verify/Verification.h"

namespace host
{

/// Verifies a table with the help of other ranks, on the leader. It comes to the same as a
/// verification that takes the rows one after the other.
class SharedVerification
{
  public:
    /// Told the point of each row that has been taken, or of the last of many.
    using PointTaker = std::function<void(std::size_t point)>;

    /// @param ofAll takes the whole table
    /// @param byChunks this rank's share
    SharedVerification(Verification& ofAll, ChunkVerification& byChunks,
                       const TableColumns& ofTable, const PathWindow& ofWhole, PointTaker toPoints);

    /// Takes all rows. Throws InputError, behind the rows before, for a line that is none.
    void Run(TableCutter& cutter, WorkLeader& leader);

  private:
    void TakeChunk(const TableChunk& chunk, const std::optional<VerifiedRows>& verified);
    void TakeRows(const TableChunk& chunk);

    Verification& whole;
    ChunkVerification& parts;
    TableColumns columns;
    PathWindow path;
    PointTaker takePoint;
    TableRow row;
};

} // namespace host

#endif
