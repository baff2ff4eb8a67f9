#ifndef TRUNNION_MACHINE_JACOBIAN_H
#define TRUNNION_MACHINE_JACOBIAN_H

#include "geometry/SmallMatrix.h"
#include "machine/KinematicLoop.h"
#include "machine/SolveFields.h"
#include "model/EndVector.h"

// Jacobians by one-sided differences through the stream's own forward kinematics. Rows follow the
// reference's end-state vector, entries are per [length] or per [rad]. A joint is moved up by 0.1
// or one degree, or down by as much when that would pass its upper bound.
namespace trunnion
{

/// Where the differences start from: an end-state vector and where its entries stand in a pose.
struct Reference
{
    EndVector vector;
    EndEntries entries;
};

Reference ReferenceOf(const IkEndState& state);

/// One column a joint of the stream, at the joints' current values; locked joints give zeros.
/// False, with `jacobian` untouched, when an unlocked joint is unknown to the stream's local locks.
bool FullJacobian(IkStream& stream, const Reference& reference, JointMatrix& jacobian,
                  bool toolOnly);

/// One column a free joint, at the working values; rotary ones are zero without `includeRotary`.
/// `loop` is prepared for the working values.
void PartialJacobian(KinematicLoop& loop, const SolveFields& fields, const Reference& reference,
                     JointMatrix& jacobian, bool includeRotary);

/// The same as one call, in an array.
TNT::Array2D<double> PartialJacobian(IkStream& stream, const SolveFields& fields,
                                     const IkEndState& reference, bool includeRotary,
                                     bool toolOnly);

} // namespace trunnion

#endif
