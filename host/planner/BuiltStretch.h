#ifndef TRUNNION_HOST_PLANNER_BUILT_STRETCH_H
#define TRUNNION_HOST_PLANNER_BUILT_STRETCH_H

#include <cstddef>
#include <string>
#include <vector>

#include "motion/Event.h"
#include "motion/MotionRow.h"
#include "planner/Choice.h"
#include "planner/MotionBuilder.h"
#include "planner/RowMaker.h"
#include "planner/Workplace.h"
#include "text/Bytes.h"

namespace host
{

/// The motion through successive points, ready to be sent.
struct BuiltStretch
{
    MotionStand start; //!< that it was built from; empty where it was not built
    MotionStand end;
    std::string rows; //!< in bytes, one behind the other
    std::string text; //!< what a table says of them
    std::vector<Event> events;
    std::vector<std::size_t> behindRows; //!< of each event, how many rows come before it
};

BuiltStretch BuildStretch(Workplace& place, const ChosenMotion& motion, const MotionStand& start,
                          std::size_t begin, std::size_t end, RowMaker maker,
                          const RowText& rowText);

// As bytes, from rank to rank.
void Put(ByteWriter& bytes, const MotionRow& row);
bool Take(ByteReader& bytes, MotionRow& row);
void Put(ByteWriter& bytes, const BuiltStretch& built);
bool Take(ByteReader& bytes, BuiltStretch& built);

/// To the last bit.
bool AreSame(const MotionStand& a, const MotionStand& b);

} // namespace host

#endif
