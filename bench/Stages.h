#ifndef TRUNNION_BENCH_STAGES_H
#define TRUNNION_BENCH_STAGES_H

#include <functional>

#include "Subject.h"

// Stages of a solve, each ready to be run again and again.
namespace bench
{

/// Forward kinematics at each of `joints` once.
std::function<void()> LibraryForward(const Subject& subject,
                                     const std::vector<JointValues>& joints);
std::function<void()> PlainForward(const Subject& subject, const std::vector<JointValues>& joints);

/// The Jacobian of the free joints at home, `count` times.
std::function<void()> LibraryJacobian(const Subject& subject, int count);
std::function<void()> PlainJacobian(const Subject& subject, int count);

} // namespace bench

#endif
