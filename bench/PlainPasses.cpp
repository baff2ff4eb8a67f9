#include "PlainPasses.h"

namespace bench
{

bool IterateObserved(const IkStream& stream, plain::States& states, const plain::EndState& target,
                     const plain::Criteria& criteria, const PassObserver& pass)
{
    plain::Fields fields = plain::Initialize(stream, states, false);
    bool isMet = false;
    for (int number = 0; number <= criteria.lastPass; ++number) {
        const plain::EndState working(plain::Pose(stream, fields.states, false), target.filter);
        isMet =
            plain::Objective(working, target, criteria.directionTolerance) <= criteria.tolerance;
        if (isMet) {
            break;
        }
        const plain::Array jacobian =
            plain::PartialJacobian(stream, fields, working, number, false);
        pass(jacobian);
        const bool isLast = number == criteria.lastPass;
        plain::Append(fields.states,
                      plain::PseudoInversePartialStep(fields, target, working, jacobian),
                      isLast ? plain::LimitsOf(false) : plain::LimitsOf(IkJoint::JtLimitAll));
    }
    states = fields.states;
    return isMet;
}

} // namespace bench
