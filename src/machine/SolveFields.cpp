#include "machine/SolveFields.h"

#include <algorithm>
#include <cmath>

#include "IkStream.h"
#include "geometry/Angles.h"
#include "model/ChainJoints.h"
#include "model/DirectAccess.h"
#include "model/Indexing.h"

namespace trunnion
{

namespace
{

constexpr double kSmallestClampedStep = 1e-10;

bool IsHeld(const IkStream& stream, IkJoint* joint)
{
    bool isLocked = true; // a state without joint cannot be moved
    stream.GetJointLockStatus(joint, IkStream::GlobalOrLocalLock, isLocked);
    return isLocked;
}

} // namespace

void CopiedFields::MoveInto(const SolveFields& fields) noexcept
{
    DirectAccess::Swap(states, fields.states);
    lockedFlags.swap(fields.lockedFlags);
    rotaryFlags.swap(fields.rotaryFlags);
    rotaryIndices.swap(fields.rotaryIndices);
    freeIndices.swap(fields.freeIndices);
    fields.maxAngleStep = maxAngleStep;
}

void CollectJointStates(const IkStream& stream, IkJtStateVector& states)
{
    states.Reset();
    IkChain* chain = nullptr;
    for (int i = 0; stream.GetChain(i, &chain); ++i) {
        MergeJointStates(*chain, states);
    }
}

void ClearIndices(const SolveFields& fields)
{
    fields.lockedFlags.clear();
    fields.rotaryFlags.clear();
    fields.rotaryIndices.clear();
    fields.freeIndices.clear();
}

void InitializeFields(const SolveFields& fields, const IkStream& stream, bool lockRotary)
{
    const auto count = ToIndex(fields.states.Size());
    fields.maxAngleStep = kEighthTurn;
    ClearIndices(fields);
    fields.rotaryIndices.reserve(count);
    fields.freeIndices.reserve(count);
    fields.lockedFlags.reserve(count);
    fields.rotaryFlags.reserve(count);
    for (int i = 0; i < fields.states.Size(); ++i) {
        IkJoint* joint = fields.states.GetState(i).GetJoint();
        const bool isRotary = joint != nullptr && joint->IsJoint() && joint->IsRotary();
        if (i >= fields.states.Size() || Count(fields.rotaryFlags) != i) {
            return; // asked whether it is one, the joint has started a solve, which filled them
        }
        const bool isLocked = IsHeld(stream, joint) || (isRotary && lockRotary);
        fields.lockedFlags.push_back(isLocked);
        fields.rotaryFlags.push_back(isRotary);
        if (isRotary) {
            fields.rotaryIndices.push_back(i);
        }
        if (!isLocked) {
            fields.freeIndices.push_back(i);
        }
    }
}

bool IsStateIndex(const SolveFields& fields, int index)
{
    return IsInRange(index, fields.rotaryFlags) && index < fields.states.Size();
}

void LockJointsLeavingBounds(const SolveFields& fields, const TNT::Array2D<double>& step)
{
    const int count = std::min(
        {fields.states.Size(), step.dim2() > 0 ? step.dim1() : 0, Count(fields.lockedFlags)});
    for (int i = 0; i < count; ++i) {
        const IkJtState& state = fields.states.GetState(i);
        const IkJoint* joint = state.GetJoint();
        if (joint == nullptr || fields.lockedFlags[ToIndex(i)] ||
            std::fabs(step[i][0]) < kSmallestClampedStep) {
            continue;
        }
        const double x = state.GetValue() + step[i][0];
        if (x < joint->GetLowBound() || x > joint->GetHiBound()) {
            fields.lockedFlags[ToIndex(i)] = true;
            const auto found = std::find(fields.freeIndices.begin(), fields.freeIndices.end(), i);
            if (found != fields.freeIndices.end()) {
                fields.freeIndices.erase(found);
            }
        }
    }
}

} // namespace trunnion
