#ifndef TRUNNION_TESTS_MODEL_CONTENTS_H
#define TRUNNION_TESTS_MODEL_CONTENTS_H

#include <initializer_list>
#include <tuple>
#include <utility>
#include <vector>

#include "IkJoint.h"
#include "IkJtState.h"
#include "support/Bits.h"

// What a host can see of an object, as values that compare and print.
namespace test
{

/// Name, type, original, relative and world frame, children, parent, user data, dirty.
inline auto ContentsOf(const IkNode& node)
{
    return std::make_tuple(node.GetName(), node.GetType(), BitsOf(node.GetOrigFrame()),
                           BitsOf(node.GetRelFrame()), BitsOf(node.GetWorldFrame()),
                           node.GetKidList(), node.GetParentPtr(), node.GetUserData(),
                           node.IsDirty());
}

/// Locked, current value, low and high bound.
using JointRange = std::tuple<bool, double, double, double>;
inline JointRange RangeOf(const IkJoint& joint)
{
    return {joint.IsLocked(), joint.GetCurValue(), joint.GetLowBound(), joint.GetHiBound()};
}

/// Primitive, axis, direction reversed, initial value.
using JointMotion = std::tuple<int, std::vector<double>, bool, double>;
inline JointMotion MotionOf(const IkJoint& joint)
{
    const TNT::Vector<double> axis = joint.GetArbitraryAxis();
    return {joint.GetJtPrimitive(), std::vector<double>(axis.begin(), axis.end()),
            joint.IsDirectionReversed(), joint.GetInitialValue()};
}

inline IkJtStateVector StatesOf(std::initializer_list<std::pair<IkJoint*, double>> states)
{
    IkJtStateVector vector;
    for (const auto& [joint, value] : states) {
        vector.AddState(IkJtState(joint, value));
    }
    return vector;
}

/// The joints and values in order.
using States = std::vector<std::pair<IkJoint*, double>>;
inline States ContentsOf(const IkJtStateVector& vector)
{
    States states;
    IkJtState state;
    while (vector.GetStateCopy(static_cast<int>(states.size()), state)) {
        states.emplace_back(state.GetJoint(), state.GetValue());
    }
    return states;
}

} // namespace test

#endif
