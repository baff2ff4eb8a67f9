#include "machine/Jacobian.h"

#include <cmath>

#include "IkStream.h"
#include "geometry/Angles.h"
#include "machine/Arrays.h"
#include "model/DirectAccess.h"
#include "model/Indexing.h"

namespace trunnion
{

namespace
{

constexpr double kLinearPerturbation = 0.1; // [length]

/// Fills one column with the derivative after the state `index` of `states`, which holds its value
/// again afterwards.
void DifferentiateColumn(KinematicLoop& loop, IkJtStateVector& states, int index, bool isRotary,
                         const Reference& reference, JointMatrix& jacobian, int column)
{
    const IkJoint& joint = *states.GetState(index).GetJoint();
    const double value = DirectAccess::Value(states, index);
    double d = isRotary ? kOneDegree : kLinearPerturbation;
    if (value + d > joint.GetHiBound()) {
        d = -d; // the lower bound is not asked
    }
    DirectAccess::Value(states, index) = value + d;
    Affine pose; // NOLINT(*-member-init)
    loop.PoseMoved(states, index, pose);
    DirectAccess::Value(states, index) = value;

    const int rows = jacobian.Rows();
    const int stride = jacobian.Cols();
    double* entry = jacobian[0] + column;
    for (int row = 0; row < rows; ++row, entry += stride) {
        const double moved = pose.e[reference.entries.offsets[row]];
        const double quotient = (moved - reference.vector.e[row]) / d;
        *entry = std::fabs(quotient) > kTinyValue ? quotient : 0.0; // NaN gives 0
    }
}

} // namespace

Reference ReferenceOf(const IkEndState& state)
{
    Reference reference; // NOLINT(*-member-init)
    reference.entries = EntriesOf(FilterOf(state));
    ToEndVector(state, reference.vector);
    return reference;
}

bool FullJacobian(IkStream& stream, const Reference& reference, JointMatrix& jacobian,
                  bool toolOnly)
{
    IkJtStateVector states = stream.GetJointStates();
    KinematicLoop loop(stream, toolOnly);
    loop.Settle(states);
    loop.Prepare(states);
    JointMatrix built;
    built.Resize(reference.vector.size, states.Size());
    built.Fill(0.0);
    for (int j = 0; j < states.Size(); ++j) {
        IkJoint* joint = states.GetState(j).GetJoint();
        bool isLocked = true; // a state without joint cannot be moved
        if (!stream.GetJointLockStatus(joint, IkStream::GlobalOrLocalLock, isLocked)) {
            return false;
        }
        if (!isLocked) {
            DifferentiateColumn(loop, states, j, joint->IsRotary(), reference, built, j);
        }
    }
    jacobian.Assign(built);
    return true;
}

void PartialJacobian(KinematicLoop& loop, const SolveFields& fields, const Reference& reference,
                     JointMatrix& jacobian, bool includeRotary)
{
    // Nodes that are asked may see the vector: they get a copy to look at.
    IkJtStateVector copy;
    IkJtStateVector& states = loop.IsSettled() ? fields.states : (copy = fields.states);
    jacobian.Resize(reference.vector.size, Count(fields.freeIndices));
    jacobian.Fill(0.0);
    for (int k = 0; k < Count(fields.freeIndices); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        const bool isRotary = fields.rotaryFlags[ToIndex(index)];
        if (includeRotary || !isRotary) {
            DifferentiateColumn(loop, states, index, isRotary, reference, jacobian, k);
        }
    }
}

TNT::Array2D<double> PartialJacobian(IkStream& stream, const SolveFields& fields,
                                     const IkEndState& reference, bool includeRotary, bool toolOnly)
{
    KinematicLoop loop(stream, toolOnly);
    loop.Settle(fields.states);
    loop.Prepare(fields.states);
    JointMatrix jacobian;
    PartialJacobian(loop, fields, ReferenceOf(reference), jacobian, includeRotary);
    return ToArray(jacobian);
}

} // namespace trunnion
