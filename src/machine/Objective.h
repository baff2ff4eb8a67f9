#ifndef TRUNNION_MACHINE_OBJECTIVE_H
#define TRUNNION_MACHINE_OBJECTIVE_H

#include "IkEndState.h"

namespace trunnion
{

/// Squared position error [length^2] plus squared angles [deg^2] between the axes that the target's
/// filter selects. Directions whose cosine is within `directionTolerance` of 1 count as met.
double PoseError(const IkEndState& current, const IkEndState& target, double directionTolerance);

} // namespace trunnion

#endif
