#include "table/TableChunk.h"

namespace host
{

namespace
{

// Where rows are long, a chunk has fewer of them.
constexpr std::size_t kUsualBytes = 256UL * 1024;
// How many times larger a chunk may get in search of a place to cut.
constexpr std::size_t kPatience = 16;

/// Looks at the end of a line only. What it makes of a line that is no row does not matter.
bool SeemsToLeaveNothingOpen(std::string_view line)
{
    const std::string_view flags = line.substr(line.rfind(',') + 1);
    const auto has = [flags](std::string_view name) {
        return flags.find(name) != std::string_view::npos;
    };
    return has("failed") || (!has("inserted") && !has("rewind"));
}

} // namespace

TableLine TableChunk::Last() const
{
    const std::string_view all = std::string_view(lines).substr(0, lines.size() - 1);
    return {all.substr(all.rfind('\n') + 1), firstLine + static_cast<int>(numLines) - 1};
}

void Put(ByteWriter& bytes, const TableChunk& chunk)
{
    bytes.PutText(chunk.before);
    bytes.PutText(chunk.lines);
    bytes.Put(chunk.firstLine);
    bytes.Put(static_cast<std::uint64_t>(chunk.numLines));
}

bool Take(ByteReader& bytes, TableChunk& chunk)
{
    std::uint64_t numLines = 0;
    const bool isThere = bytes.TakeText(chunk.before) && bytes.TakeText(chunk.lines) &&
                         bytes.Take(chunk.firstLine) && bytes.Take(numLines);
    chunk.numLines = numLines;
    return isThere;
}

bool LeavesNothingOpen(const RowFlags& flags)
{
    return flags.hasFailed || (!flags.isInserted && !flags.isRewind);
}

bool TableCutter::Next(TableChunk& chunk)
{
    chunk = {};
    chunk.before = before;
    chunk.firstLine = lines.Number() + 1;
    try {
        while (!isAtEnd && !IsEnough(chunk)) {
            isAtEnd = !lines.Next();
            if (!isAtEnd) {
                chunk.lines.append(lines.Line()).push_back('\n');
                ++chunk.numLines;
            }
        }
    } catch (const InputError& error) {
        chunk.fault = error;
        isAtEnd = true;
    }
    if (chunk.numLines > 0) {
        before = chunk.Last().text;
    }
    return chunk.numLines > 0 || chunk.fault;
}

bool TableCutter::IsEnough(const TableChunk& chunk) const
{
    const bool isUsual = chunk.numLines >= usualRows || chunk.lines.size() >= kUsualBytes;
    const bool isLarge =
        chunk.numLines >= kPatience * usualRows || chunk.lines.size() >= kPatience * kUsualBytes;
    return isLarge || (isUsual && SeemsToLeaveNothingOpen(lines.Line()));
}

} // namespace host
