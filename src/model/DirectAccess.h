#ifndef TRUNNION_MODEL_DIRECT_ACCESS_H
#define TRUNNION_MODEL_DIRECT_ACCESS_H

#include <algorithm>

#include "IkChain.h"
#include "IkEndState.h"
#include "IkJoint.h"
#include "model/Indexing.h"

namespace trunnion
{

/// What evaluations read and write in place, where the interface makes copies.
struct DirectAccess
{
    /// The sixteen elements, row by row; good until the frame is set anew.
    static const double* OrigFrame(const IkNode& node) { return node.originalFrame[0]; }
    static const double* WorldFrame(const IkNode& node) { return node.worldFrame[0]; }

    static IkJoint::JtPrimitives Primitive(const IkJoint& joint) { return joint.primitive; }
    static double CurrentValue(const IkJoint& joint) { return joint.currentValue; }
    static double InitialValue(const IkJoint& joint) { return joint.initialValue; }
    static bool IsReversed(const IkJoint& joint) { return joint.directionReversed; }

    static const std::vector<IkNode*>& Nodes(const IkChain& chain) { return chain.nodes; }

    /// `index` is in range.
    static double& Value(IkJtStateVector& states, int index)
    {
        return states.states[ToIndex(index)].value;
    }

    /// Cannot fail, where an assignment can.
    static void Swap(IkJtStateVector& a, IkJtStateVector& b) noexcept
    {
        a.states.swap(b.states);
        a.jointIndex.swap(b.jointIndex);
    }

    /// Sets the upper three rows of the pose.
    static void SetPose(IkEndState& state, const double* rows)
    {
        std::copy_n(rows, 12, state.pose[0]);
    }
};

} // namespace trunnion

#endif
