#include "plain/PlainStages.h"

#include <algorithm>
#include <cmath>

namespace plain
{

namespace
{

constexpr double kEpsilon = 2.220446049250313e-16;
constexpr double kOneDegree = 0.017453292519943278;

double AngleInDegrees(double cosine, double directionTolerance)
{
    if (cosine > 1) {
        return 0.0;
    }
    if (cosine < -1) {
        return 180.0;
    }
    if (std::fabs(1 - cosine) < directionTolerance) {
        return 0.0;
    }
    return std::acos(cosine) * 180 / 3.14159265358979;
}

void SetColumn(Array& jacobian, int column, const std::vector<double>& entries)
{
    for (int i = 0; i < jacobian.dim1(); ++i) {
        jacobian[i][column] = entries[static_cast<std::size_t>(i)];
    }
}

} // namespace

Fields Initialize(const IkStream& stream, bool lockRotary)
{
    return Initialize(stream, JointStates(stream), lockRotary);
}

Fields Initialize(const IkStream& stream, const States& start, bool lockRotary)
{
    Fields fields;
    fields.maxAngleStep = 45.0 * 3.14159265358979 / 180.0;
    fields.states = start;
    for (int i = 0; i < fields.states.Size(); ++i) {
        IkJoint* joint = fields.states.Joint(i);
        const bool isRotary = joint != nullptr && joint->IsJoint() && IsRotary(*joint);
        bool isLocked = joint == nullptr || joint->IsLocked();
        if (!isLocked) {
            stream.GetLocalLock(joint, isLocked);
        }
        isLocked = isLocked || (isRotary && lockRotary);
        fields.lockedFlags.push_back(isLocked);
        fields.rotaryFlags.push_back(isRotary);
        if (isRotary) {
            fields.rotaryIndices.push_back(i);
        }
        if (!isLocked) {
            fields.freeIndices.push_back(i);
        }
    }
    return fields;
}

bool IsRotaryFree(const Fields& fields, int k)
{
    const int index = fields.freeIndices[static_cast<std::size_t>(k)];
    return fields.rotaryFlags[static_cast<std::size_t>(index)];
}

void LockJointsLeavingBounds(Fields& fields, const Array& step)
{
    for (int i = 0; i < fields.states.Size() && i < step.dim1() && step.dim2() > 0; ++i) {
        const auto index = static_cast<std::size_t>(i);
        const IkJoint* joint = fields.states.Joint(i);
        if (joint == nullptr || fields.lockedFlags[index] || std::fabs(step[i][0]) < 1e-10) {
            continue;
        }
        const double x = fields.states.Value(i) + step[i][0];
        if (x < joint->GetLowBound() || x > joint->GetHiBound()) {
            fields.lockedFlags[index] = true;
            std::vector<int>& free = fields.freeIndices;
            free.erase(std::remove(free.begin(), free.end(), i), free.end());
        }
    }
}

double Objective(const EndState& current, const EndState& target, double directionTolerance)
{
    const TNT::Array1D<double> a = target.Vector();
    const TNT::Array1D<double> b = current.Vector();
    double error = 0.0;
    int entry = 0;
    for (; target.filter[3] && entry < 3; ++entry) {
        const double d = a[entry] - b[entry];
        error += d * d;
    }
    for (; entry < a.dim(); entry += 3) {
        double cosine = 0.0;
        for (int i = 0; i < 3; ++i) {
            cosine += a[entry + i] * b[entry + i];
        }
        const double angle = AngleInDegrees(cosine, directionTolerance);
        error += angle * angle;
    }
    return error;
}

std::vector<double> JacobianColumn(const IkStream& stream, States& states, int index, bool isRotary,
                                   const EndState& reference, bool toolOnly)
{
    const double value = states.Value(index);
    double d = isRotary ? kOneDegree : 0.1;
    if (value + d > states.Joint(index)->GetHiBound()) {
        d = -d;
    }
    states.SetValue(index, value + d);
    const EndState perturbed(Pose(stream, states, toolOnly), reference.filter);
    states.SetValue(index, value);

    const Array difference = Difference(perturbed, reference);
    std::vector<double> column;
    for (int i = 0; i < difference.dim1(); ++i) {
        const double quotient = difference[i][0] / d;
        column.push_back(std::fabs(quotient) > kEpsilon ? quotient : 0.0);
    }
    return column;
}

Array PartialJacobian(const IkStream& stream, const Fields& fields, const EndState& reference,
                      int includeRotary, bool toolOnly)
{
    States states = fields.states;
    const int n = static_cast<int>(fields.freeIndices.size());
    Array jacobian(reference.Size(), n, 0.0);
    for (int k = 0; k < n; ++k) {
        const bool isRotary = IsRotaryFree(fields, k);
        if (includeRotary != 0 || !isRotary) {
            const int index = fields.freeIndices[static_cast<std::size_t>(k)];
            SetColumn(jacobian, k,
                      JacobianColumn(stream, states, index, isRotary, reference, toolOnly));
        }
    }
    return jacobian;
}

bool FullJacobian(const IkStream& stream, const EndState& reference, bool toolOnly, Array& jacobian)
{
    States states = JointStates(stream);
    Array built(reference.Size(), states.Size(), 0.0);
    for (int j = 0; j < states.Size(); ++j) {
        IkJoint* joint = states.Joint(j);
        if (joint == nullptr || joint->IsLocked()) {
            continue;
        }
        bool isLocked = false;
        if (!stream.GetLocalLock(joint, isLocked)) {
            return false;
        }
        if (!isLocked) {
            SetColumn(built, j,
                      JacobianColumn(stream, states, j, IsRotary(*joint), reference, toolOnly));
        }
    }
    jacobian = built;
    return true;
}

} // namespace plain
