#ifndef TRUNNION_HOST_GEOMETRY_FRAME_H
#define TRUNNION_HOST_GEOMETRY_FRAME_H

#include <IkXformMat.h>

#include "geometry/Vec3.h"

namespace host
{

/// The frame with this origin and z axis whose x axis is the part of `xHint` across z. `zAxis` has
/// length 1; `xHint` is not along it.
IkXformMat FrameOf(const Vec3& origin, const Vec3& xHint, const Vec3& zAxis);

/// As above where the turn about z does not matter: always the same one for the same z axis.
IkXformMat FrameOf(const Vec3& origin, const Vec3& zAxis);

/// The first three rows of a column: 0 to 2 the axes, 3 the origin.
Vec3 Column(const IkXformMat& frame, int column);

} // namespace host

#endif
