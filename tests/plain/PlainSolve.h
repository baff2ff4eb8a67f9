#ifndef TRUNNION_TESTS_PLAIN_PLAIN_SOLVE_H
#define TRUNNION_TESTS_PLAIN_PLAIN_SOLVE_H

#include "plain/PlainSteps.h"

// The solve written down plainly: every product a TNT product, every term a matrix, nothing reused.
// The library is held against it bit for bit, whatever it does to be fast.
namespace plain
{

/// What a stream's solve and a solver object's differ in.
struct Criteria
{
    int lastPass{60};
    double tolerance{1e-8}; // [length^2] plus [deg^2]
    double directionTolerance{kStreamDirectionTolerance};
};

/// The iteration from the values in `fields`. `error` receives that of the latest pass.
bool Iterate(const IkStream& stream, const EndState& target, States& result, bool toolOnly,
             IkJoint::JointLimitTypes limitType, const Criteria& criteria, Fields& fields,
             double& error);

/// The stream's solve. `fields` receives the working values, converged or not.
bool SolveIK(const IkStream& stream, const EndState& target, States& result, bool toolOnly,
             IkJoint::JointLimitTypes limitType, bool lockRotary, Fields& fields);

} // namespace plain

#endif
