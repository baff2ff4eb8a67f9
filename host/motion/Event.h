#ifndef TRUNNION_HOST_MOTION_EVENT_H
#define TRUNNION_HOST_MOTION_EVENT_H

#include <cstddef>
#include <string>

namespace host
{

enum class EventKind {
    Flip,   //!< a rotary axis swings to another branch
    Rewind, //!< an axis is turned back by whole turns
    Pole,   //!< the path enters the pole cone
    Limit,  //!< an axis comes to its limit
    Failed  //!< a point, or the way to it, is not reached
};

/// Something in the motion that whoever runs it has to know.
struct Event
{
    EventKind kind{EventKind::Failed};
    std::size_t point{0}; //!< index into Toolpath::points
    int line{0};          //!< of the toolpath file
    std::string sentence; //!< without the place, capital or full stop
};

constexpr const char* Name(EventKind kind)
{
    switch (kind) {
    case EventKind::Flip:
        return "flip";
    case EventKind::Rewind:
        return "rewind";
    case EventKind::Pole:
        return "pole";
    case EventKind::Limit:
        return "limit";
    case EventKind::Failed:
        break;
    }
    return "failed";
}

} // namespace host

#endif
