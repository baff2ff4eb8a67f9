#include "machine/LoopStages.h"

#include "machine/Objective.h"
#include "model/DirectAccess.h"

namespace trunnion
{

void CalculateStep(int method, const IkStream& stream, const SolveFields& fields,
                   const EndVector& e, const JointMatrix& jacobian, Decomposition& svd,
                   JointRow& step)
{
    JointRow sum;
    switch (method) {
    case 1:
        SafeSvd(jacobian, svd);
        PseudoInverseSum(svd, e, jacobian.Cols(), step);
        LimitFullStep(stream.GetJointStates(), step);
        break;
    case 2:
        SafeSvd(jacobian, svd);
        DampedSum(svd, e, jacobian.Cols(), step);
        LimitFullStep(stream.GetJointStates(), step);
        break;
    case 4:
        SafeSvd(jacobian, svd);
        PseudoInversePartialStep(svd, e, fields, step);
        break;
    case 5:
        SafeSvd(jacobian, svd);
        SelectivelyDampedSum(svd, e, jacobian, fields, sum);
        ExpandSelectivelyDamped(sum, fields, step);
        break;
    case 6:
        SafeSvd(jacobian, svd);
        DampedSum(svd, e, FreeCount(fields), sum);
        ExpandDamped(sum, fields, svd.rank, step);
        break;
    default:
        break; // kept on purpose: the previous step is taken again
    }
}

void TraceObjective(const IkEndState& current, const IkEndState& target)
{
    target.TraceDump(L"TargetState>");
    current.TraceDump(L"CurState>");
}

LoopStages::LoopStages(IkStream& ofStream, const SolveFields& withFields,
                       const IkEndState& forTarget, bool withToolOnly, int stepMethod,
                       const SolveRules& withRules, double lastError)
    : stream(ofStream), fields(withFields), target(forTarget), toolOnly(withToolOnly),
      method(stepMethod), rules(withRules), error(lastError), loop(ofStream, withToolOnly)
{
    loop.Settle(fields.states);
}

double LoopStages::Error()
{
    Affine pose; // NOLINT(*-member-init)
    loop.Pose(fields.states, pose);
    const Filter filter = FilterOf(target);
    working.entries = EntriesOf(filter);
    ToEndVector(pose.e, working.entries, working.vector);
    ToEndVector(target.GetCompleteState()[0], working.entries, wanted);
    if (rules.isTraced) {
        IkEndState current;
        DirectAccess::SetPose(current, pose.e);
        current.CopyFilter(target);
        TraceObjective(current, target);
    }
    error = PoseError(working.vector, wanted, filter[3], rules.directionTolerance);
    return error;
}

void LoopStages::Jacobian(int pass)
{
    const bool isPartial = method >= 4 && method <= 6;
    if (isPartial) {
        // Kept on purpose: the pass number decides, so that on the first pass rotary joints rest.
        PartialJacobian(loop, fields, working, jacobian, pass != 0);
    } else {
        FullJacobian(stream, working, jacobian, toolOnly);
    }
}

void LoopStages::Step()
{
    EndVector e; // NOLINT(*-member-init)
    e.size = wanted.size;
    for (int i = 0; i < e.size; ++i) {
        e.e[i] = wanted.e[i] - working.vector.e[i];
    }
    CalculateStep(method, stream, fields, e, jacobian, svd, step);
}

void LoopStages::TakeStep(IkJoint::JointLimitTypes limitType)
{
    fields.states.AppendValues(step.Cols(), step[0], limitType);
}

void LoopStages::TakeStep(bool applyLimits)
{
    fields.states.AppendValues(step.Cols(), step[0], applyLimits);
}

} // namespace trunnion
