#include "post/BlockFeed.h"

#include <algorithm>

namespace host
{

namespace
{

/// A word may change its last digit although its axis hardly moves.
bool IsTurning(const BlockTravel& travel)
{
    return travel.turn_deg > travel.degreeDigit;
}

/// The way of the linear axes for each unit of the tool's end while no rotary axis turns: 1, unless
/// the linear axes are not square to each other.
double Stretch(const BlockTravel& travel)
{
    const bool canTell = std::min(travel.tip, travel.linear) > travel.lengthDigit;
    return canTell ? travel.linear / travel.tip : 1.0;
}

double MinutesOf(const Feed& programmed, const BlockTravel& travel, const Dialect& dialect)
{
    const double turning = travel.turn_deg / dialect.feed.rotaryRate_deg;
    if (programmed.per == FeedPer::Revolution) {
        return turning;
    }
    // Two linear axes may move against each other under a tool's end at rest.
    const double way = IsTurning(travel) ? travel.tip : std::max(travel.tip, travel.linear);
    return std::max(way / programmed.value, turning);
}

double TimedFeed(const Feed& programmed, const BlockTravel& travel, const Dialect& dialect)
{
    const double minutes = MinutesOf(programmed, travel, dialect);
    const bool isInverse = dialect.feed.mode == FeedMode::InverseTime;
    const double words = travel.wordsLinear > 0.0 ? travel.wordsLinear : travel.wordsTurn_deg;
    const double value = (isInverse ? 1.0 : words) / minutes;
    return std::min(value, dialect.feed.largest); // infinite where only rounding moves a word
}

/// The programmed feed is what the control takes F for.
bool SaysProgrammedFeed(const BlockTravel& travel, const Dialect& dialect)
{
    return travel.wordsLinear > 0.0 && (dialect.tcp || !IsTurning(travel));
}

} // namespace

std::optional<BlockFeed> FeedOf(const Feed& programmed, const BlockTravel& travel,
                                const Dialect& dialect)
{
    const bool isTimed = programmed.per == FeedPer::Minute
                             ? dialect.feed.mode == FeedMode::InverseTime
                             : travel.wordsLinear == 0.0;
    if (!isTimed && SaysProgrammedFeed(travel, dialect)) {
        const double stretch = dialect.tcp ? 1.0 : Stretch(travel);
        return BlockFeed{programmed.per,
                         std::min(stretch * programmed.value, dialect.feed.largest)};
    }
    if (!isTimed && programmed.per == FeedPer::Revolution) {
        return std::nullopt;
    }
    return BlockFeed{FeedPer::Minute, TimedFeed(programmed, travel, dialect)};
}

} // namespace host
