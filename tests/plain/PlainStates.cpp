#include "plain/PlainStates.h"

#include <cmath>

namespace plain
{

namespace
{

constexpr double kFullTurn = 6.28318530717958;
constexpr double kSmallestStep = 2.220446049250313e-16;

double Wrapped(double x, double low, double high)
{
    if (x > high) {
        return std::fmod(x, high);
    }
    return x < low ? high - std::fmod(-x, high) : x;
}

double Clamped(double x, double low, double high)
{
    if (x > high) {
        return high;
    }
    return x < low ? low : x;
}

double IntoRange(double x, const IkJoint& joint, const Limits& limits)
{
    const bool isRotary = IsRotary(joint);
    if (!(isRotary ? limits.ofRotary : limits.ofLinear)) {
        return x;
    }
    const double low = joint.GetLowBound();
    const double high = joint.GetHiBound();
    const bool isFullTurn = high == kFullTurn && (low == 0.0 || low == -kFullTurn);
    const bool mayWrap = isRotary || limits.wrapLinear;
    return isFullTurn && mayWrap ? Wrapped(x, low, high) : Clamped(x, low, high);
}

} // namespace

States::States(const IkJtStateVector& handed)
{
    bool isAsAdded = true;
    for (int i = 0; i < handed.Size(); ++i) {
        IkJtState state;
        handed.GetStateCopy(i, state);
        Add(state.GetJoint(), state.GetValue());
    }
    for (auto entry = places.begin(); entry != places.end();) {
        const int place = handed.FindStateByJointPtr(entry->first);
        isAsAdded = isAsAdded && place == entry->second;
        entry->second = place;
        entry = place < 0 ? places.erase(entry) : std::next(entry);
    }
    if (!isAsAdded) {
        original = std::make_shared<const IkJtStateVector>(handed);
    }
}

void States::Add(IkJoint* joint, double value)
{
    entries.push_back({joint, value});
    places[joint] = Size() - 1;
}

int States::Place(const IkJoint* joint) const
{
    const auto place = places.find(joint);
    return place == places.end() ? -1 : place->second;
}

IkJtStateVector States::ToLibrary() const
{
    IkJtStateVector states;
    if (original != nullptr) {
        states = *original;
    } else {
        for (const Entry& entry : entries) {
            states.AddState(IkJtState(entry.joint));
        }
    }
    for (int i = 0; i < Size(); ++i) {
        states.GetState(i).SetValue(Value(i));
    }
    return states;
}

void States::TakeValues(IkJtStateVector& from)
{
    for (int i = 0; i < Size(); ++i) {
        SetValue(i, from.GetState(i).GetValue());
    }
}

bool IsRotary(const IkJoint& joint)
{
    const int primitive = joint.GetJtPrimitive();
    return primitive >= IkJoint::JtPrimRotX && primitive <= IkJoint::JtPrimRotArbitrary;
}

States JointStates(const IkStream& stream)
{
    States states;
    for (int c = 0; c < stream.NumChains(); ++c) {
        IkChain* chain = nullptr;
        stream.GetChain(c, &chain);
        for (int i = 0; i < chain->Size(); ++i) {
            IkNode* node = chain->GetAt(i);
            if (!node->IsJoint()) {
                continue;
            }
            auto* joint = dynamic_cast<IkJoint*>(node);
            if (states.Place(joint) < 0) {
                states.Add(joint, joint == nullptr ? 0.0 : joint->GetCurValue());
            }
        }
    }
    return states;
}

Limits LimitsOf(IkJoint::JointLimitTypes limitType)
{
    return {(limitType & IkJoint::JtLimitLinear) != 0, (limitType & IkJoint::JtLimitRotary) != 0,
            false};
}

Limits LimitsOf(bool applied)
{
    return {applied, applied, true};
}

void Append(States& states, const Array& step, const Limits& limits)
{
    const bool isRow = step.dim1() == 1;
    const int count = isRow ? step.dim2() : step.dim1();
    if ((!isRow && step.dim2() != 1) || count != states.Size()) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        const double delta = isRow ? step[0][i] : step[i][0];
        if (std::fabs(delta) < kSmallestStep) {
            continue;
        }
        const double x = states.Value(i) + delta;
        const IkJoint* joint = states.Joint(i);
        states.SetValue(i, joint == nullptr ? x : IntoRange(x, *joint, limits));
    }
}

States OutOfBounds(const States& states)
{
    States outside;
    for (int i = 0; i < states.Size(); ++i) {
        IkJoint* joint = states.Joint(i);
        if (joint != nullptr &&
            (states.Value(i) > joint->GetHiBound() || states.Value(i) < joint->GetLowBound())) {
            outside.Add(joint, states.Value(i));
        }
    }
    return outside;
}

void Commit(const States& states)
{
    for (int i = 0; i < states.Size() && states.Joint(i) != nullptr; ++i) {
        states.Joint(i)->SetCurValue(states.Value(i));
    }
}

} // namespace plain
