#include "plain/PlainSolve.h"

namespace plain
{

bool Iterate(const IkStream& stream, const EndState& target, States& result, bool toolOnly,
             IkJoint::JointLimitTypes limitType, const Criteria& criteria, Fields& fields,
             double& error)
{
    for (int pass = 0; pass <= criteria.lastPass; ++pass) {
        const EndState working(Pose(stream, fields.states, toolOnly), target.filter);
        error = Objective(working, target, criteria.directionTolerance);
        if (error <= criteria.tolerance) {
            result = fields.states;
            return true;
        }
        const Array jacobian = PartialJacobian(stream, fields, working, pass, toolOnly);
        const Column step = PseudoInversePartialStep(fields, target, working, jacobian);
        if (pass < criteria.lastPass) {
            Append(fields.states, step, LimitsOf(limitType));
        } else {
            Append(fields.states, step, LimitsOf(false));
            result = OutOfBounds(fields.states);
        }
    }
    return false;
}

bool SolveIK(const IkStream& stream, const EndState& target, States& result, bool toolOnly,
             IkJoint::JointLimitTypes limitType, bool lockRotary, Fields& fields)
{
    fields = Initialize(stream, lockRotary);
    double error = 0.0;
    return Iterate(stream, target, result, toolOnly, limitType, Criteria(), fields, error);
}

} // namespace plain
