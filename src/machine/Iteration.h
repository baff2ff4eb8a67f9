#ifndef TRUNNION_MACHINE_ITERATION_H
#define TRUNNION_MACHINE_ITERATION_H

#include <vector>

#include "IkJtState.h"

namespace trunnion
{

/// The last step goes unlimited; `result` then lists the joints that it left outside their bounds.
template <class Stages>
void TakeLastStep(Stages& stages, IkJtStateVector& result)
{
    result.Reset();
    stages.TakeStep(false);
    std::vector<int> outside;
    stages.States().GetOutOfBoundIndices(outside);
    for (const int index : outside) {
        result.AddState(stages.States().GetState(index));
    }
}

/// The iteration of every solve. A pass evaluates the pose, measures it, and unless it is good
/// enough takes a step; passes before the last one respect the joints' ranges.
///
/// `Stages` supplies what differs: the working states, the stages of a pass, the tolerance, and the
/// number of the last pass, which is read afresh each time.
template <class Stages>
bool Iterate(Stages& stages, IkJtStateVector& result, IkJoint::JointLimitTypes limitType)
{
    if (stages.LastPass() < 0) {
        return false;
    }
    for (int pass = 0;; ++pass) { // never past the last number that there is
        if (stages.Error() <= stages.Tolerance()) {
            result = stages.States();
            return true;
        }
        stages.Jacobian(pass);
        stages.Step();
        if (pass < stages.LastPass()) {
            stages.TakeStep(limitType);
        } else if (pass == stages.LastPass()) {
            TakeLastStep(stages, result);
        }
        if (pass >= stages.LastPass()) {
            return false;
        }
    }
}

} // namespace trunnion

#endif
