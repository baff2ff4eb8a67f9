#include "PlainPasses.h"

#include "plain/PlainSolve.h"

namespace bench
{

namespace
{

IkEndState WorkingState(const IkStream& stream, IkJtStateVector& states, const IkEndState& target)
{
    IkEndState working;
    working.SetCompleteState(IkXformMat(plain::Pose(stream, states, false)));
    working.CopyFilter(target);
    return working;
}

} // namespace

bool PlainIterate(IkStream& stream, IkJtStateVector& states, const IkEndState& target,
                  const IterationRules& rules, const PassObserver& pass)
{
    plain::Fields fields = plain::Initialize(stream, false);
    fields.states = states;
    for (int number = 0; number <= rules.lastPass; ++number) {
        const IkEndState working = WorkingState(stream, fields.states, target);
        if (plain::Objective(working, target, rules.directionTolerance) <= rules.tolerance) {
            states = fields.states;
            return true;
        }
        const TNT::Array2D<double> jacobian =
            plain::PartialJacobian(stream, fields, working, number, false);
        pass(jacobian);
        plain::Column step = plain::PseudoInversePartialStep(fields, target, working, jacobian);
        if (number < rules.lastPass) {
            fields.states.AppendValues(step, IkJoint::JtLimitAll);
        } else {
            fields.states.AppendValues(step, false);
        }
    }
    states = fields.states;
    return false;
}

} // namespace bench
