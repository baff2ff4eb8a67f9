#ifndef TRUNNION_MODEL_CHAIN_JOINTS_H
#define TRUNNION_MODEL_CHAIN_JOINTS_H

#include "IkChain.h"
#include "model/DirectAccess.h"

namespace trunnion
{

/// Appends those joints of the chain, at their current values, that `states` does not hold.
inline void MergeJointStates(const IkChain& chain, IkJtStateVector& states)
{
    for (int i = 0; i < chain.Size(); ++i) { // a host's node may change the chain when asked
        IkNode* node = DirectAccess::Nodes(chain)[ToIndex(i)];
        if (!node->IsJoint()) {
            continue;
        }
        const IkJtState state(node);
        if (states.FindStateByJointPtr(state.GetJoint()) < 0) {
            states.AddState(state);
        }
    }
}

} // namespace trunnion

#endif
