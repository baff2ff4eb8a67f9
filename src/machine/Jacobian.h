#ifndef TRUNNION_MACHINE_JACOBIAN_H
#define TRUNNION_MACHINE_JACOBIAN_H

#include "IkEndState.h"
#include "machine/SolveFields.h"

class IkStream;

// Jacobians by one-sided differences through the stream's own forward kinematics. Rows follow the
// reference's end-state vector, entries are per [length] or per [rad]. A joint is moved up by 0.1
// or one degree, or down by as much when that would pass its upper bound.
namespace trunnion
{

/// One column a joint of the stream, at the joints' current values; locked joints give zeros.
/// False, with `jacobian` untouched, when an unlocked joint is unknown to the stream's local locks.
bool FullJacobian(IkStream& stream, const IkEndState& reference, TNT::Array2D<double>& jacobian,
                  bool toolOnly);

/// One column a free joint, at the working values; rotary ones are zero without `includeRotary`.
void PartialJacobian(IkStream& stream, const SolveFields& fields, const IkEndState& reference,
                     TNT::Array2D<double>& jacobian, bool includeRotary, bool toolOnly);

} // namespace trunnion

#endif
