#ifndef TRUNNION_MACHINE_ITERATION_H
#define TRUNNION_MACHINE_ITERATION_H

#include "IkEndState.h"
#include "IkJtState.h"

namespace trunnion
{

/// The last step goes unlimited; `result` then lists the joints that it left outside their bounds.
inline void ApplyLastStep(IkJtStateVector& states, TNT::Array2D<double>& step,
                          IkJtStateVector& result)
{
    result.Reset();
    states.AppendValues(step, false);
    std::vector<int> outside;
    states.GetOutOfBoundIndices(outside);
    for (const int index : outside) {
        result.AddState(states.GetState(index));
    }
}

/// The iteration of every solve. A pass evaluates the pose, measures it, and unless it is good
/// enough takes a step; passes before the last one respect the joints' ranges.
///
/// `Stages` supplies what differs between a stream and a solver object: the working states, the
/// stages of a pass, the tolerance, and the number of the last pass, which is read afresh each
/// time.
template <class Stages>
bool Iterate(Stages& stages, IkEndState& target, IkJtStateVector& result,
             IkJoint::JointLimitTypes limitType)
{
    // Outlive a pass: a stage that computes nothing leaves the previous one's result in force.
    TNT::Array2D<double> jacobian;
    TNT::Array2D<double> step;
    for (int pass = 0; pass <= stages.LastPass(); ++pass) {
        IkEndState working = stages.ForwardKinematics();
        working.CopyFilter(target);
        const double error = stages.Objective(working, target);
        if (error <= stages.Tolerance()) {
            result = stages.States();
            return true;
        }
        stages.Jacobian(working, jacobian, pass);
        stages.Step(target, working, jacobian, step);
        if (pass < stages.LastPass()) {
            stages.States().AppendValues(step, limitType);
        } else if (pass == stages.LastPass()) {
            ApplyLastStep(stages.States(), step, result);
        }
    }
    return false;
}

} // namespace trunnion

#endif
