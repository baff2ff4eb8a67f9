#ifndef TRUNNION_HOST_TOOLPATH_MOVED_FRAME_H
#define TRUNNION_HOST_TOOLPATH_MOVED_FRAME_H

#include "geometry/Vec3.h"

namespace host
{

/// The frame in which a file gives its points, seen from the part. Its axes are at right angles
/// and have length 1.
struct MovedFrame
{
    Vec3 origin{}; //!< [length]
    Vec3 x{1.0, 0.0, 0.0};
    Vec3 y{0.0, 1.0, 0.0};
    Vec3 z{0.0, 0.0, 1.0};

    Vec3 Direction(const Vec3& inFrame) const
    {
        return inFrame[0] * x + inFrame[1] * y + inFrame[2] * z;
    }
    Vec3 Position(const Vec3& inFrame) const { return origin + Direction(inFrame); }
};

} // namespace host

#endif
