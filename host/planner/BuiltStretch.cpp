#include "planner/BuiltStretch.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace host
{

namespace
{

void Put(ByteWriter& bytes, const MotionStand& stand)
{
    bytes.PutAll(stand.current);
    bytes.Put(stand.stands.has_value());
    bytes.Put(static_cast<std::uint64_t>(stand.stands.value_or(0)));
    bytes.Put(stand.branch);
    bytes.Put(stand.isFollowed);
    bytes.Put(stand.isInCone);
    bytes.Put(stand.isNearPole);
    bytes.PutAll(stand.isAtLimit);
    bytes.Put(static_cast<std::uint64_t>(stand.poleBegin));
    bytes.Put(static_cast<std::uint64_t>(stand.poleEnd));
    bytes.PutAll(stand.poleTurns);
}

bool Take(ByteReader& bytes, MotionStand& stand)
{
    bool hasStood = false;
    std::uint64_t stands = 0;
    std::uint64_t poleBegin = 0;
    std::uint64_t poleEnd = 0;
    if (!bytes.TakeAll(stand.current) || !bytes.Take(hasStood) || !bytes.Take(stands) ||
        !bytes.Take(stand.branch) || !bytes.Take(stand.isFollowed) || !bytes.Take(stand.isInCone) ||
        !bytes.Take(stand.isNearPole) || !bytes.TakeAll(stand.isAtLimit) ||
        !bytes.Take(poleBegin) || !bytes.Take(poleEnd) || !bytes.TakeAll(stand.poleTurns)) {
        return false;
    }
    stand.stands = hasStood ? std::optional<std::size_t>(stands) : std::nullopt;
    stand.poleBegin = poleBegin;
    stand.poleEnd = poleEnd;
    return true;
}

void Put(ByteWriter& bytes, const Event& event)
{
    bytes.Put(event.kind);
    bytes.Put(static_cast<std::uint64_t>(event.point));
    bytes.Put(event.line);
    bytes.PutText(event.sentence);
}

bool TakeEvent(ByteReader& bytes, Event& event)
{
    std::uint64_t point = 0;
    const bool isWhole = bytes.Take(event.kind) && bytes.Take(point) && bytes.Take(event.line) &&
                         bytes.TakeText(event.sentence);
    event.point = point;
    return isWhole;
}

} // namespace

BuiltStretch BuildStretch(Workplace& place, const ChosenMotion& motion, const MotionStand& start,
                          std::size_t begin, std::size_t end, RowMaker maker,
                          const RowText& rowText)
{
    BuiltStretch built;
    built.start = start;
    ByteWriter rows;
    constexpr std::size_t kUsualRow = 192; // bytes, as such and as text
    rows.Reserve((end - begin) * kUsualRow);
    built.text.reserve((end - begin) * kUsualRow);
    std::size_t count = 0;
    const auto takeRow = [&](const MotionRow& row) {
        const MotionRow& made = maker.Made(row);
        Put(rows, made);
        ++count;
        if (rowText) {
            rowText(made, place.PointAt(row.point).line, built.text);
        }
    };
    const auto takeEvent = [&](Event event) {
        event.point += maker.FirstPoint();
        built.events.push_back(std::move(event));
        built.behindRows.push_back(count);
    };
    MotionBuilder builder(place, motion, takeRow, takeEvent);
    builder.SetStand(start);
    for (std::size_t point = begin; point < end; ++point) {
        builder.Build(point);
    }
    built.end = builder.Stand();
    built.rows = rows.Take();
    return built;
}

bool AreSame(const MotionStand& a, const MotionStand& b)
{
    ByteWriter first;
    ByteWriter second;
    Put(first, a);
    Put(second, b);
    return first.Bytes() == second.Bytes();
}

void Put(ByteWriter& bytes, const MotionRow& row)
{
    bytes.Put(static_cast<std::uint64_t>(row.point));
    bytes.PutAll(row.joints);
    bytes.Put(row.asked);
    bytes.Put(row.error);
    bytes.Put(row.branch);
    bytes.Put(row.flags);
}

bool Take(ByteReader& bytes, MotionRow& row)
{
    std::uint64_t point = 0;
    const bool isWhole = bytes.Take(point) && bytes.TakeAll(row.joints) && bytes.Take(row.asked) &&
                         bytes.Take(row.error) && bytes.Take(row.branch) && bytes.Take(row.flags);
    row.point = point;
    return isWhole;
}

void Put(ByteWriter& bytes, const BuiltStretch& built)
{
    constexpr std::size_t kUsualRest = 1024;
    bytes.Reserve(built.rows.size() + built.text.size() + kUsualRest);
    Put(bytes, built.start);
    Put(bytes, built.end);
    bytes.PutText(built.rows);
    bytes.PutText(built.text);
    bytes.Put(static_cast<std::uint64_t>(built.events.size()));
    for (const Event& event : built.events) {
        Put(bytes, event);
    }
    bytes.PutAll(built.behindRows);
}

bool Take(ByteReader& bytes, BuiltStretch& built)
{
    return Take(bytes, built.start) && Take(bytes, built.end) && bytes.TakeText(built.rows) &&
           bytes.TakeText(built.text) && bytes.TakeEach(built.events, TakeEvent) &&
           bytes.TakeAll(built.behindRows) && built.behindRows.size() == built.events.size();
}

} // namespace host
