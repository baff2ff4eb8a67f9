#include "verify/SharedVerification.h"

#include <limits>
#include <map>
#include <utility>

#include "text/InputError.h"

namespace host
{

SharedVerification::SharedVerification(Verification& ofAll, ChunkVerification& byChunks,
                                       const TableColumns& ofTable, const PathWindow& ofWhole,
                                       PointTaker toPoints)
    : whole(ofAll), parts(byChunks), columns(ofTable), path(ofWhole), takePoint(std::move(toPoints))
{}

void SharedVerification::Run(TableCutter& cutter, WorkLeader& leader)
{
    // How many chunks there are shows when the table is at its end: tasks behind that are nothing.
    std::map<std::size_t, TableChunk> chunks;
    bool isAtEnd = false;
    using Result = std::optional<VerifiedRows>;
    SharedWork<Result> work;
    work.end = std::numeric_limits<std::size_t>::max();
    work.mayGoOn = [&] { return !isAtEnd || !chunks.empty(); };
    work.prepare = [&](std::size_t task) {
        TableChunk chunk;
        isAtEnd = isAtEnd || !cutter.Next(chunk);
        if (!isAtEnd) {
            chunks.emplace(task, std::move(chunk));
        }
    };
    work.question = [&](std::size_t task) {
        const auto chunk = chunks.find(task);
        return chunk == chunks.end() ? std::string()
                                     : ChunkVerification::QuestionOf(chunk->second, path);
    };
    work.work = [&](std::size_t task) {
        const auto chunk = chunks.find(task);
        return chunk == chunks.end() ? std::nullopt : parts.Verify(chunk->second, path);
    };
    work.unpack = [](std::size_t /*task*/, std::string_view answer) {
        return ChunkVerification::Unpack(answer);
    };
    work.take = [&](std::size_t task, const Result& result) {
        if (const auto chunk = chunks.find(task); chunk != chunks.end()) {
            TakeChunk(chunk->second, result);
            chunks.erase(chunk);
        }
    };
    leader.Run(work);
}

/// What was verified on its own counts where the rows before end as was taken for granted.
void SharedVerification::TakeChunk(const TableChunk& chunk,
                                   const std::optional<VerifiedRows>& verified)
{
    if (!verified || !whole.HasNothingOpen()) {
        TakeRows(chunk);
    } else {
        columns.Read(chunk.Last(), row);
        whole.TakeVerified(*verified, row);
        takePoint(row.motion.point);
    }
    if (chunk.fault) {
        throw InputError(*chunk.fault);
    }
}

void SharedVerification::TakeRows(const TableChunk& chunk)
{
    chunk.ForEach([this](TableLine line) {
        columns.Read(line, row);
        whole.Take(row);
        takePoint(row.motion.point);
        return true;
    });
}

} // namespace host
