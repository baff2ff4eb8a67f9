#include "IkJoint.h"

#include "IkJtState.h"
#include "geometry/Angles.h"
#include "geometry/Compose.h"
#include "model/Indexing.h"

template class TNT::Vector<double>;

IkJoint::IkJoint() = default;
IkJoint::IkJoint(const std::wstring& newName) : IkNode(newName) {}

IkJoint::IkJoint(const IkJoint& other)
    : IkNode(other), locked(other.locked), currentValue(other.currentValue),
      highBound(other.highBound), lowBound(other.lowBound)
{}

IkJoint& IkJoint::operator=(const IkJoint& other)
{
    // What may fail goes first: a joint is never half another one.
    std::vector<double> newAxis = other.arbitraryAxis;
    IkNode::operator=(other);
    locked = other.locked;
    currentValue = other.currentValue;
    highBound = other.highBound;
    lowBound = other.lowBound;
    primitive = other.primitive;
    arbitraryAxis.swap(newAxis);
    directionReversed = other.directionReversed;
    initialValue = other.initialValue;
    return *this;
}

IkJoint::~IkJoint() = default;

void IkJoint::Initialize()
{
    locked = false;
    currentValue = 0.0;
    highBound = 1.0;
    lowBound = -1.0;
    primitive = JtPrimNone;
    directionReversed = false;
    initialValue = 0.0;
}

IkXformMat IkJoint::GetXformMat(IkJtStateVector& states)
{
    double value = 0.0;
    if (!states.FindValFromPtr(this, value)) {
        value = currentValue;
    }
    return GetXformMat(&value);
}

IkXformMat IkJoint::GetXformMat(double* /*value*/)
{
    return GetOrigFrame();
}

bool IkJoint::IsJoint() const
{
    return true;
}

void IkJoint::TraceDump(const wchar_t* label) const
{
    IkNode::TraceDump(label);
}

double IkJoint::Displacement(const double* value) const
{
    const double displacement = (value == nullptr ? currentValue : *value) - initialValue;
    return directionReversed ? displacement * -1.0 : displacement;
}

double IkJoint::GetCurValue() const
{
    return currentValue;
}

void IkJoint::SetCurValue(double value)
{
    currentValue = value;
    SetDirty(true);
}

double IkJoint::GetLowBound() const
{
    return lowBound;
}
double IkJoint::GetHiBound() const
{
    return highBound;
}

void IkJoint::SetBounds(double low, double high)
{
    lowBound = low;
    highBound = high;
    SetDirty(true);
}

double IkJoint::GetInitialValue() const
{
    return initialValue;
}
void IkJoint::SetInitialValue(double value)
{
    initialValue = value;
}

bool IkJoint::IsLocked() const
{
    return locked;
}

void IkJoint::SetIsLocked(bool isLocked)
{
    locked = isLocked;
    SetDirty(true);
}

IkJoint::JtPrimitives IkJoint::GetJtPrimitive() const
{
    return primitive;
}

void IkJoint::SetJtPrimitive(JtPrimitives newPrimitive)
{
    primitive = newPrimitive;
    SetDirty(true);
}

bool IkJoint::IsDirectionReversed() const
{
    return directionReversed;
}
void IkJoint::SetDirectionReversed(bool reversed)
{
    directionReversed = reversed;
}

TNT::Vector<double> IkJoint::GetArbitraryAxis() const
{
    return {trunnion::Count(arbitraryAxis), arbitraryAxis.data()};
}
void IkJoint::SetArbitraryAxis(const TNT::Vector<double>& axis)
{
    // Not kept as a TNT vector, which forgets its elements but not its size where it finds no room
    // for new ones.
    arbitraryAxis.assign(axis.begin(), axis.end());
}

bool IkJoint::IsArbitraryAxisUsed() const
{
    return primitive == JtPrimTransArbitrary || primitive == JtPrimRotArbitrary;
}

bool IkJoint::IsRotary() const
{
    return primitive >= JtPrimRotX && primitive <= JtPrimRotArbitrary;
}

IkJtPrism::IkJtPrism()
{
    Initialize();
}
IkJtPrism::IkJtPrism(const std::wstring& newName) : IkJoint(newName)
{
    Initialize();
}

// Kept on purpose, here and in IkJtRot: a copy is a new joint whose bounds are exchanged.
IkJtPrism::IkJtPrism(const IkJtPrism& other) // NOLINT(bugprone-copy-constructor-init)
    : IkJoint()
{
    SetJtPrimitive(other.GetJtPrimitive());
    SetBounds(other.GetHiBound(), other.GetLowBound());
}

IkJtPrism& IkJtPrism::operator=(const IkJtPrism& other) = default;

IkJtPrism::~IkJtPrism() = default;

void IkJtPrism::Initialize()
{
    SetJtPrimitive(JtPrimTransX);
    SetBounds(1.0, -1.0); // inverted on purpose: hosts set a range or do without limits
}

IkXformMat IkJtPrism::GetXformMat(double* value)
{
    const double d = Displacement(value);
    switch (GetJtPrimitive()) {
    case JtPrimTransX:
        return trunnion::Compose(GetOrigFrame(), IkXformMat::Translate(d, 0, 0));
    case JtPrimTransY:
        return trunnion::Compose(GetOrigFrame(), IkXformMat::Translate(0, d, 0));
    case JtPrimTransZ:
        return trunnion::Compose(GetOrigFrame(), IkXformMat::Translate(0, 0, d));
    default:
        return {}; // the identity, not the original frame
    }
}

IkJtRot::IkJtRot()
{
    Initialize();
}
IkJtRot::IkJtRot(const std::wstring& newName) : IkJoint(newName)
{
    Initialize();
}

IkJtRot::IkJtRot(const IkJtRot& other) // NOLINT(bugprone-copy-constructor-init)
    : IkJoint()
{
    SetJtPrimitive(other.GetJtPrimitive());
    SetBounds(other.GetHiBound(), other.GetLowBound());
}

IkJtRot& IkJtRot::operator=(const IkJtRot& other) = default;

IkJtRot::~IkJtRot() = default;

void IkJtRot::Initialize()
{
    SetJtPrimitive(JtPrimRotZ);
    SetBounds(-trunnion::kFullTurn, trunnion::kFullTurn);
}

IkXformMat IkJtRot::GetXformMat(double* value)
{
    const double d = Displacement(value);
    switch (GetJtPrimitive()) {
    case JtPrimRotX:
        return trunnion::Compose(GetOrigFrame(), IkXformMat::RotX(d));
    case JtPrimRotY:
        return trunnion::Compose(GetOrigFrame(), IkXformMat::RotY(d));
    case JtPrimRotZ:
        return trunnion::Compose(GetOrigFrame(), IkXformMat::RotZ(d));
    default:
        return {};
    }
}
