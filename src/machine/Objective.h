#ifndef TRUNNION_MACHINE_OBJECTIVE_H
#define TRUNNION_MACHINE_OBJECTIVE_H

#include "model/EndVector.h"

namespace trunnion
{

/// Squared position error [length^2] plus squared angles [deg^2] between the axes that the target's
/// filter selects. Directions whose cosine is within `directionTolerance` of 1 count as met.
double PoseError(const EndVector& current, const EndVector& target, bool hasPosition,
                 double directionTolerance);

/// The same of two end states; throws as IkEndState::Diff does when their filters differ.
double PoseError(const IkEndState& current, const IkEndState& target, double directionTolerance);

} // namespace trunnion

#endif
