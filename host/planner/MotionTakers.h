#ifndef TRUNNION_HOST_PLANNER_MOTION_TAKERS_H
#define TRUNNION_HOST_PLANNER_MOTION_TAKERS_H

#include <cstddef>
#include <functional>
#include <string_view>

#include "planner/MotionBuilder.h"

namespace host
{

/// Look at every row and event, in the order of the motion; false ends the building.
struct MotionTakers
{
    MotionBuilder::RowTaker row;
    MotionBuilder::EventTaker event;
    std::function<bool(std::size_t point)> mayGoOn; //!< before each point
    /// Takes the text of rows in their order, of one or of many.
    std::function<void(std::string_view text)> text{};
};

} // namespace host

#endif
