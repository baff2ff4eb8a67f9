#ifndef TRUNNION_MACHINE_STEP_METHODS_H
#define TRUNNION_MACHINE_STEP_METHODS_H

#include "IkJtState.h"
#include "geometry/SmallMatrix.h"
#include "machine/SafeSvd.h"
#include "machine/SolveFields.h"
#include "model/EndVector.h"

// Least-squares joint steps from J dtheta = e with the decomposition J = U diag(s) V', in two
// halves: a sum over singular values, and what becomes of it per joint. Symbols as in Buss and Kim,
// "Selectively damped least squares for inverse kinematics" (2005). e is the end-state error;
// entries of a step are [length] or [rad].
namespace trunnion
{

/// e of a pass; empty where the filters differ in size.
EndVector ErrorOf(const IkEndState& target, const IkEndState& current);

// --- sums over singular values, `size` entries ---

/// Pseudo-inverse: the sum of v_i u_i' (e / s_i) over s_i > 1e-10.
void PseudoInverseSum(const Decomposition& svd, const EndVector& e, int size, JointRow& step);

/// Damped least squares with lambda = 1.1: the sum of s_i / (s_i^2 + lambda^2) v_i u_i' e.
void DampedSum(const Decomposition& svd, const EndVector& e, int size, JointRow& step);

/// Selectively damped least squares over the free joints; each term is damped softly by how far it
/// would turn the rotary ones. `jacobian` has one column a free joint.
void SelectivelyDampedSum(const Decomposition& svd, const EndVector& e, const JointMatrix& jacobian,
                          const SolveFields& fields, JointRow& step);

// --- what becomes of a sum over all joints ---

/// Stops joints that are locked by themselves and limits rotary entries to an eighth of a turn.
void LimitFullStep(IkJtStateVector states, JointRow& step);

// --- what becomes of a sum over the free joints: one entry a joint, 0 for those not free ---

/// Limits rotary entries to the maximum angle step.
void ExpandLimited(const JointRow& freeStep, const SolveFields& fields, JointRow& step);

/// As above with rows and free joints mixed up. `rank` is that of the decomposition.
void ExpandDamped(const JointRow& freeStep, const SolveFields& fields, int rank, JointRow& step);

/// Linear entries as they are, rotary ones 0.
void ExpandSelectivelyDamped(const JointRow& freeStep, const SolveFields& fields, JointRow& step);

/// The step of the method in use, shared by streams and solver objects: pseudo-inverse over the
/// free joints, rotary entries limited.
void PseudoInversePartialStep(const Decomposition& svd, const EndVector& e,
                              const SolveFields& fields, JointRow& step);

/// Free joints of a solve: the columns of a partial Jacobian.
int FreeCount(const SolveFields& fields);

} // namespace trunnion

#endif
