#include "machine/Jacobian.h"

#include <algorithm>
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
constexpr int kOffsetEntry = 3;             // of a pose: where a position stands, if it counts

double Derivative(double moved, double reference, double d)
{
    const double quotient = (moved - reference) / d;
    return std::fabs(quotient) > kTinyValue ? quotient : 0.0; // NaN gives 0
}

/// Whether the reference is the loop's own last pose.
bool IsLastPose(const KinematicLoop& loop, const Reference& reference)
{
    const double* pose = loop.LastPose().e;
    bool isSame = loop.IsSettled();
    for (int i = 0; i < reference.vector.size; ++i) {
        isSame = isSame && pose[reference.entries.offsets[i]] == reference.vector.e[i];
    }
    return isSame;
}

/// Differentiates the end-state vector column by column.
class Differentiation
{
  public:
    Differentiation(KinematicLoop& ofLoop, IkJtStateVector& atStates, const Reference& from,
                    JointMatrix& into)
        : loop(ofLoop), states(atStates), reference(from), jacobian(into),
          isFromLastPose(IsLastPose(ofLoop, from)),
          hasOffset(from.entries.size > 0 && from.entries.offsets[0] == kOffsetEntry)
    {
        jacobian.Fill(0.0);
    }

    /// Fills one column with the derivative after the state at `index`, which holds its value again
    /// afterwards.
    void FillColumn(int column, int index, bool isRotary)
    {
        const IkJoint& joint = *states.GetState(index).GetJoint();
        const double value = DirectAccess::Value(states, index);
        double d = isRotary ? kOneDegree : kLinearPerturbation;
        if (value + d > joint.GetHiBound()) {
            d = -d; // the lower bound is not asked
        }
        double offset[3];
        if (isFromLastPose && loop.TryOffsetSlid(index, value + d, offset)) {
            // Directions stay, so their derivatives are the zeros that stand there.
            Fill(
                column, hasOffset ? 3 : 0, [&](int row) { return offset[row]; }, d);
            return;
        }
        DirectAccess::Value(states, index) = value + d;
        Affine pose; // NOLINT(*-member-init)
        loop.PoseMoved(states, index, pose);
        DirectAccess::Value(states, index) = value;
        Fill(
            column, jacobian.Rows(),
            [&](int row) { return pose.e[reference.entries.offsets[row]]; }, d);
    }

  private:
    template <class Moved>
    void Fill(int column, int rows, const Moved& moved, double d)
    {
        double* entry = jacobian[0] + column;
        for (int row = 0; row < rows; ++row, entry += jacobian.Cols()) {
            *entry = Derivative(moved(row), reference.vector.e[row], d);
        }
    }

    KinematicLoop& loop;
    IkJtStateVector& states;
    const Reference& reference;
    JointMatrix& jacobian;
    bool isFromLastPose;
    bool hasOffset;
};

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
    Differentiation differentiation(loop, states, reference, built);
    for (int j = 0; j < states.Size(); ++j) {
        IkJoint* joint = states.GetState(j).GetJoint();
        bool isLocked = true; // a state without joint cannot be moved
        if (!stream.GetJointLockStatus(joint, IkStream::GlobalOrLocalLock, isLocked)) {
            return false;
        }
        if (!isLocked) {
            differentiation.FillColumn(j, j, joint->IsRotary());
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
    Differentiation differentiation(loop, states, reference, jacobian);
    // A node that is asked may solve with other joints meanwhile: then there are others free.
    for (int k = 0; k < std::min(jacobian.Cols(), Count(fields.freeIndices)); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        if (!IsStateIndex(fields, index) || states.GetState(index).GetJoint() == nullptr) {
            continue;
        }
        const bool isRotary = fields.rotaryFlags[ToIndex(index)];
        if (includeRotary || !isRotary) {
            differentiation.FillColumn(k, index, isRotary);
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
