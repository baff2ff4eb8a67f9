#ifndef TRUNNION_HOST_POST_BLOCK_FEED_H
#define TRUNNION_HOST_POST_BLOCK_FEED_H

#include <optional>

#include "post/Dialect.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// What moves in a block.
struct BlockTravel
{
    double tip{0.0};           //!< of the tool's end on the part [length]
    double linear{0.0};        //!< of the linear axes together [length]
    double turn_deg{0.0};      //!< of the rotary axis that turns farthest
    double wordsLinear{0.0};   //!< of the words that are not rotary, together [length]
    double wordsTurn_deg{0.0}; //!< of those that are, together
    double lengthDigit{0.0};   //!< the last digit of a word [length]
    double degreeDigit{0.0};   //!< of a rotary one [deg]
};

struct BlockFeed
{
    FeedPer per{FeedPer::Minute};
    double value{0.0}; //!< what F says
};

/// The F of a block.
///
/// A block takes as long as the tool's end needs at the programmed feed, and no less than its
/// rotary axes need at the dialect's rotary rate, which alone counts where the end rests. F of
/// inverse time is one over that. Per minute F is the way of the linear words over that time, as if
/// the rotary axes stood still, and of the rotary words where no others change. With tool centre
/// point control F is the programmed feed wherever the end moves.
///
/// Per revolution F is the programmed feed, and per minute only where the end rests. Nothing where
/// the control would take it for something else: without tool centre point control while rotary
/// axes turn.
std::optional<BlockFeed> FeedOf(const Feed& programmed, const BlockTravel& travel,
                                const Dialect& dialect);

} // namespace host

#endif
