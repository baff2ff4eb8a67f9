#ifndef TRUNNION_HOST_MOTION_MOTION_ROW_H
#define TRUNNION_HOST_MOTION_MOTION_ROW_H

#include <cstddef>
#include <vector>

#include "geometry/CutterLocation.h"
#include "solve/PoseError.h"

namespace host
{

/// What there is to know about a row besides its numbers. Several hold at once.
struct RowFlags
{
    bool isRapid{false};    //!< the axes travel to it as fast as they can
    bool hasFailed{false};  //!< the point is not reached; the row has no joint values
    bool isInserted{false}; //!< between two points, to keep the tool near the straight line
    bool isFlip{false};     //!< a rotary axis swings to another branch on the way to it
    bool isRewind{false};   //!< part of unwinding an axis away from the part
    bool isPole{false};     //!< the tool is so near the pole that a rotary axis is nearly free
    bool isAtLimit{false};  //!< an axis stands at its limit
};

/// Where the axes stand at one moment of the motion. Between two rows they move evenly.
struct MotionRow
{
    std::size_t point{0};       //!< index of the point at which it stands or to which it leads
    std::vector<double> joints; //!< in the order of the table's axes [length] or [rad]
    CutterLocation asked;       //!< of the tool in part coordinates
    PoseError error;            //!< what forward kinematics leaves of `asked`
    int branch{0};              //!< from 1; 0 where there is none
    RowFlags flags;
};

} // namespace host

#endif
