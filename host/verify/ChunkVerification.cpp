#include "verify/ChunkVerification.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>

#include "text/Bytes.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "toolpath/PathBytes.h"

namespace host
{

namespace
{

/// The point of a line, by its first cell alone; nothing for a line that is no row of the path.
std::optional<std::size_t> PointOf(std::string_view line, const PathWindow& path)
{
    const std::optional<int> number = ParseCount(line.substr(0, line.find(',')));
    if (!number || *number < 1 || static_cast<std::size_t>(*number) > path.NumPoints()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(*number) - 1;
}

/// Whether the path tells all about a point that it is asked for the row of.
bool Covers(const PathWindow& path, std::size_t point)
{
    return point >= path.NumPoints() || (path.Has(point) && (point == 0 || path.Has(point - 1)));
}

bool TakeFinding(ByteReader& bytes, Finding& finding)
{
    return bytes.Take(finding.kind) && bytes.Take(finding.tableLine) &&
           bytes.Take(finding.pathLine) && bytes.TakeText(finding.sentence);
}

} // namespace

ChunkVerification::ChunkVerification(const VerificationRequest& ofUser, const TableColumns& ofTable,
                                     ToolKinematics& ofAxes, std::size_t toKeep)
    : request(ofUser), columns(ofTable), kinematics(ofAxes), numKept(toKeep)
{}

std::optional<VerifiedRows> ChunkVerification::Verify(const TableChunk& chunk,
                                                      const PathWindow& path)
{
    VerifiedRows rows;
    std::array<std::size_t, kFindingNames.size()> found{};
    Verification verification(request, path, kinematics, [&](const Finding& finding) {
        if (++found[static_cast<std::size_t>(finding.kind)] <= numKept) {
            rows.findings.push_back(finding);
        }
    });
    try {
        if (!TakeRows(chunk, path, verification)) {
            return std::nullopt;
        }
    } catch (const InputError&) {
        return std::nullopt; // met again by the rank that may speak of it
    }
    rows.report = verification.Report();
    return rows;
}

bool ChunkVerification::TakeRows(const TableChunk& chunk, const PathWindow& path,
                                 Verification& verification)
{
    if (chunk.numLines == 0) {
        return false;
    }
    TableRow row;
    if (!chunk.before.empty()) {
        columns.Read(chunk.Before(), row);
        if (!LeavesNothingOpen(row.motion.flags) || !path.Has(row.motion.point)) {
            return false;
        }
        verification.GoOnBehind(row);
    }
    const bool areTaken = chunk.ForEach([&](TableLine line) {
        columns.Read(line, row);
        if (!Covers(path, row.motion.point)) {
            return false;
        }
        verification.Take(row);
        return true;
    });
    return areTaken && verification.HasNothingOpen();
}

/// With the points from the one before the chunk's first row to that of its last. Empty where that
/// is more than the rows have use for.
std::string ChunkVerification::QuestionOf(const TableChunk& chunk, const PathWindow& path)
{
    constexpr std::size_t kFew = 100; // points that may lack their row
    const std::optional<std::size_t> before =
        chunk.before.empty() ? 0 : PointOf(chunk.before, path);
    const std::optional<std::size_t> last =
        chunk.numLines == 0 ? std::nullopt : PointOf(chunk.Last().text, path);
    if (!before || !last || *last < *before || *last - *before > chunk.numLines + kFew) {
        return {};
    }
    ByteWriter bytes;
    Put(bytes, chunk);
    Put(bytes, PartOf(path, std::max<std::size_t>(*before, 1) - 1, *last + 1));
    return bytes.Take();
}

std::string ChunkVerification::Answer(std::string_view question)
{
    ByteReader reader(question);
    TableChunk chunk;
    PathPart part;
    std::optional<VerifiedRows> rows;
    try {
        if (Take(reader, chunk) && Take(reader, part)) {
            rows = Verify(chunk, part.Window());
        }
    } catch (const std::exception&) {
        rows.reset(); // the leader meets with the same, or has the memory
    }
    ByteWriter bytes;
    if (rows) {
        bytes.Put(rows->report);
        bytes.Put(static_cast<std::uint64_t>(rows->findings.size()));
        for (const Finding& finding : rows->findings) {
            bytes.Put(finding.kind);
            bytes.Put(finding.tableLine);
            bytes.Put(finding.pathLine);
            bytes.PutText(finding.sentence);
        }
    }
    return bytes.Take();
}

std::optional<VerifiedRows> ChunkVerification::Unpack(std::string_view answer)
{
    ByteReader reader(answer);
    VerifiedRows rows;
    if (!reader.Take(rows.report) || !reader.TakeEach(rows.findings, TakeFinding)) {
        return std::nullopt;
    }
    return rows;
}

} // namespace host
