#ifndef TRUNNION_MACHINE_STEP_METHODS_H
#define TRUNNION_MACHINE_STEP_METHODS_H

#include "IkJtState.h"
#include "machine/SafeSvd.h"
#include "machine/SolveFields.h"

// Least-squares joint steps from J dtheta = e with the decomposition J = U diag(s) V', in two
// halves: a sum over singular values, and what becomes of it per joint. Symbols as in Buss and Kim,
// "Selectively damped least squares for inverse kinematics" (2005). All steps are one column; e is
// the end-state error as a column, entries of a step are [length] or [rad].
namespace trunnion
{

using Column = TNT::Array2D<double>;

// --- sums over singular values, `size` rows ---

/// Pseudo-inverse: the sum of v_i u_i' (e / s_i) over s_i > 1e-10.
Column PseudoInverseSum(const Decomposition& svd, const Column& e, int size);

/// Damped least squares with lambda = 1.1: the sum of s_i / (s_i^2 + lambda^2) v_i u_i' e.
Column DampedSum(const Decomposition& svd, const Column& e, int size);

/// Selectively damped least squares over the free joints; each term is damped softly by how far it
/// would turn the rotary ones. `jacobian` has one column a free joint.
Column SelectivelyDampedSum(const Decomposition& svd, const Column& e,
                            const TNT::Array2D<double>& jacobian, const SolveFields& fields);

// --- what becomes of a sum over all joints ---

/// Stops joints that are locked by themselves and limits rotary rows to an eighth of a turn.
Column LimitFullStep(Column step, IkJtStateVector states);

// --- what becomes of a sum over the free joints: one row a joint, 0 for those not free ---

/// Limits rotary rows to the maximum angle step.
Column ExpandLimited(const Column& freeStep, const SolveFields& fields);

/// As above with rows and free joints mixed up. `rank` is that of the decomposition.
Column ExpandDamped(const Column& freeStep, const SolveFields& fields, int rank);

/// Linear rows as they are, rotary rows 0.
Column ExpandSelectivelyDamped(const Column& freeStep, const SolveFields& fields);

/// The step of the method in use, shared by streams and solver objects: pseudo-inverse over the
/// free joints, rotary rows limited.
Column PseudoInversePartialStep(const Decomposition& svd, const Column& e,
                                const SolveFields& fields);

/// Free joints of a solve: the columns of a partial Jacobian.
int FreeCount(const SolveFields& fields);

} // namespace trunnion

#endif
