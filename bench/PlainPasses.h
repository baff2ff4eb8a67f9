#ifndef TRUNNION_BENCH_PLAIN_PASSES_H
#define TRUNNION_BENCH_PLAIN_PASSES_H

#include <functional>

#include "plain/PlainSolve.h"

namespace bench
{

// What differs between the solves of a stream, of a solver object and of a hybrid solver's sample.
inline constexpr plain::Criteria kStreamCriteria{};
inline constexpr plain::Criteria kSolverCriteria{60, 1e-12, plain::kSolverDirectionTolerance};
inline constexpr plain::Criteria kSampleCriteria{10, 1e-12, plain::kSolverDirectionTolerance};

/// As many passes as `lastPass` + 1 says.
inline constexpr plain::Criteria Unending(int lastPass)
{
    return {lastPass, -1.0, plain::kSolverDirectionTolerance};
}

using PassObserver = std::function<void(const plain::Array& jacobian)>;

/// plain::Iterate on all free joints within all limits, from `states`, where it leaves the answer;
/// calls `pass` with the Jacobian of each pass.
bool IterateObserved(const IkStream& stream, plain::States& states, const plain::EndState& target,
                     const plain::Criteria& criteria, const PassObserver& pass);

} // namespace bench

#endif
