#include "planner/MotionStretch.h"

#include <cstdint>

namespace host
{

std::optional<MotionStretch::Steps> MotionStretch::Of(const ChosenMotion& whole, std::size_t begin,
                                                      std::size_t end)
{
    if (begin == 0) {
        return std::nullopt;
    }
    Steps steps;
    steps.begin = begin;
    for (std::size_t point = begin - 1; point < end; ++point) {
        std::optional<MotionState> state = whole.StateAt(point);
        if (!state) {
            return std::nullopt;
        }
        steps.states.push_back(std::move(*state));
        if (point >= begin) {
            steps.passages.push_back(whole.PassageTo(point));
        }
    }
    return steps;
}

std::optional<MotionState> MotionStretch::StateAt(std::size_t point) const
{
    return steps.states[point + 1 - steps.begin];
}

Passage MotionStretch::PassageTo(std::size_t point) const
{
    return steps.passages[point - steps.begin];
}

BuiltStretch BuildStretch(Workplace& place, const ChosenMotion& motion, const MotionStand& start,
                          std::size_t begin, std::size_t end)
{
    BuiltStretch built;
    built.start = start;
    MotionBuilder builder(
        place, motion, [&](const MotionRow& row) { built.rows.push_back(row); },
        [&](const Event& event) {
            built.events.push_back({built.rows.size(), event});
        });
    builder.SetStand(start);
    for (std::size_t point = begin; point < end; ++point) {
        builder.Build(point);
    }
    built.end = builder.Stand();
    return built;
}

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

bool AreSame(const MotionStand& a, const MotionStand& b)
{
    ByteWriter first;
    ByteWriter second;
    Put(first, a);
    Put(second, b);
    return first.Bytes() == second.Bytes();
}

void Put(ByteWriter& bytes, const MotionStretch::Steps& steps)
{
    bytes.Put(static_cast<std::uint64_t>(steps.begin));
    bytes.PutAll(steps.passages);
    for (const MotionState& state : steps.states) {
        bytes.Put(static_cast<std::uint64_t>(state.candidate));
        bytes.Put(state.branch);
        bytes.PutAll(state.joints);
    }
}

bool Take(ByteReader& bytes, MotionStretch::Steps& steps)
{
    std::uint64_t begin = 0;
    if (!bytes.Take(begin) || !bytes.TakeAll(steps.passages)) {
        return false;
    }
    steps.begin = begin;
    steps.states.resize(steps.passages.size() + 1);
    for (MotionState& state : steps.states) {
        std::uint64_t candidate = 0;
        if (!bytes.Take(candidate) || !bytes.Take(state.branch) || !bytes.TakeAll(state.joints)) {
            return false;
        }
        state.candidate = candidate;
    }
    return true;
}

void Put(ByteWriter& bytes, const BuiltStretch& built)
{
    Put(bytes, built.end);
    bytes.Put(static_cast<std::uint64_t>(built.rows.size()));
    for (const MotionRow& row : built.rows) {
        bytes.Put(static_cast<std::uint64_t>(row.point));
        bytes.PutAll(row.joints);
        bytes.Put(row.asked);
        bytes.Put(row.error);
        bytes.Put(row.branch);
        bytes.Put(row.flags);
    }
    bytes.Put(static_cast<std::uint64_t>(built.events.size()));
    for (const BuiltStretch::Happening& happening : built.events) {
        bytes.Put(static_cast<std::uint64_t>(happening.behindRows));
        bytes.Put(happening.event.kind);
        bytes.Put(static_cast<std::uint64_t>(happening.event.point));
        bytes.Put(happening.event.line);
        bytes.PutText(happening.event.sentence);
    }
}

namespace
{

bool TakeRow(ByteReader& bytes, MotionRow& row)
{
    std::uint64_t point = 0;
    const bool isWhole = bytes.Take(point) && bytes.TakeAll(row.joints) && bytes.Take(row.asked) &&
                         bytes.Take(row.error) && bytes.Take(row.branch) && bytes.Take(row.flags);
    row.point = point;
    return isWhole;
}

bool TakeHappening(ByteReader& bytes, BuiltStretch::Happening& happening)
{
    std::uint64_t behindRows = 0;
    std::uint64_t point = 0;
    const bool isWhole = bytes.Take(behindRows) && bytes.Take(happening.event.kind) &&
                         bytes.Take(point) && bytes.Take(happening.event.line) &&
                         bytes.TakeText(happening.event.sentence);
    happening.behindRows = behindRows;
    happening.event.point = point;
    return isWhole;
}

} // namespace

bool Take(ByteReader& bytes, BuiltStretch& built)
{
    return Take(bytes, built.end) && bytes.TakeEach(built.rows, TakeRow) &&
           bytes.TakeEach(built.events, TakeHappening);
}

} // namespace host
