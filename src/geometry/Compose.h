#ifndef TRUNNION_GEOMETRY_COMPOSE_H
#define TRUNNION_GEOMETRY_COMPOSE_H

#include "IkXformMat.h"

namespace trunnion
{

/// a * b of two 4x4 transforms, each element summed from 0 over the columns of `a` in order, which
/// is the matrix product of IkXformMat to the last bit. Elements that a factor of another shape
/// lacks count as 0, so that a host's own node class cannot make a product read out of range.
IkXformMat Compose(const IkXformMat& a, const IkXformMat& b);

} // namespace trunnion

#endif
