#include "machine/Jacobian.h"

#include <cmath>

#include "IkStream.h"
#include "geometry/Angles.h"
#include "model/Indexing.h"

namespace trunnion
{

namespace
{

constexpr double kLinearPerturbation = 0.1; // [length]

/// Fills one column with the derivative after the state `index` of `states`, which holds its value
/// again afterwards.
void DifferentiateColumn(IkStream& stream, IkJtStateVector& states, int index, bool isRotary,
                         const IkEndState& reference, bool toolOnly, TNT::Array2D<double>& jacobian,
                         int column)
{
    IkJtState& state = states.GetState(index);
    const double value = state.GetValue();
    double d = isRotary ? kOneDegree : kLinearPerturbation;
    if (value + d > state.GetJoint()->GetHiBound()) {
        d = -d; // the lower bound is not asked
    }
    state.SetValue(value + d);
    IkEndState perturbed = stream.SolveFK(states, false, nullptr, nullptr, toolOnly);
    state.SetValue(value);

    perturbed.CopyFilter(reference);
    const TNT::Array1D<double> difference = perturbed.Diff(reference);
    for (int row = 0; row < jacobian.dim1(); ++row) {
        const double quotient = difference[row] / d;
        jacobian[row][column] = std::fabs(quotient) > kTinyValue ? quotient : 0.0; // NaN gives 0
    }
}

} // namespace

bool FullJacobian(IkStream& stream, const IkEndState& reference, TNT::Array2D<double>& jacobian,
                  bool toolOnly)
{
    IkJtStateVector states = stream.GetJointStates();
    TNT::Array2D<double> built(reference.VectSize(), states.Size(), 0.0);
    for (int j = 0; j < states.Size(); ++j) {
        IkJoint* joint = states.GetState(j).GetJoint();
        bool isLocked = true; // a state without joint cannot be moved
        if (!stream.GetJointLockStatus(joint, IkStream::GlobalOrLocalLock, isLocked)) {
            return false;
        }
        if (!isLocked) {
            DifferentiateColumn(stream, states, j, joint->IsRotary(), reference, toolOnly, built,
                                j);
        }
    }
    jacobian = built;
    return true;
}

void PartialJacobian(IkStream& stream, const SolveFields& fields, const IkEndState& reference,
                     TNT::Array2D<double>& jacobian, bool includeRotary, bool toolOnly)
{
    IkJtStateVector states = fields.states;
    TNT::Array2D<double> built(reference.VectSize(), Count(fields.freeIndices), 0.0);
    for (int k = 0; k < Count(fields.freeIndices); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        const bool isRotary = fields.rotaryFlags[ToIndex(index)];
        if (includeRotary || !isRotary) {
            DifferentiateColumn(stream, states, index, isRotary, reference, toolOnly, built, k);
        }
    }
    jacobian = built;
}

} // namespace trunnion
