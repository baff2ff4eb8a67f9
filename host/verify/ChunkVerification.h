#ifndef TRUNNION_HOST_VERIFY_CHUNK_VERIFICATION_H
#define TRUNNION_HOST_VERIFY_CHUNK_VERIFICATION_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "table/TableChunk.h"
#include "table/TableColumns.h"
#include "toolpath/PathWindow.h"
#include "verify/ToolKinematics.h"
#include "verify/Verification.h"
#include "verify/VerificationReport.h"

namespace host
{

/// Verifies chunks of a table out of the midst of it, as any rank can. What it takes for granted is
/// that the line before a chunk is the row of its point; who asks for a chunk has to know whether
/// it was.
class ChunkVerification
{
  public:
    /// The request and the kinematics outlive it.
    /// @param toKeep how many findings of each kind are kept of a chunk; all are counted
    ChunkVerification(const VerificationRequest& ofUser, const TableColumns& ofTable,
                      ToolKinematics& ofAxes, std::size_t toKeep);

    /// Nothing for a chunk that cannot be judged by itself: without lines, where a line is no row,
    /// a row is of a point away from the others, or the last row leaves something open.
    std::optional<VerifiedRows> Verify(const TableChunk& chunk, const PathWindow& path);

    /// The same from rank to rank.
    static std::string QuestionOf(const TableChunk& chunk, const PathWindow& path);
    std::string Answer(std::string_view question);
    static std::optional<VerifiedRows> Unpack(std::string_view answer);

  private:
    bool TakeRows(const TableChunk& chunk, const PathWindow& path, Verification& verification);

    const VerificationRequest& request;
    TableColumns columns;
    ToolKinematics& kinematics;
    std::size_t numKept;
};

} // namespace host

#endif
