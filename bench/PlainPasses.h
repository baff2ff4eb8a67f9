#ifndef TRUNNION_BENCH_PLAIN_PASSES_H
#define TRUNNION_BENCH_PLAIN_PASSES_H

#include <functional>

#include <tnt/tnt_array2d.h>

#include "Poses.h"

namespace bench
{

/// What differs between the solves of a stream, of a solver object and of a hybrid solver's sample.
struct IterationRules
{
    double tolerance;          //!< [length^2] plus [deg^2]
    double directionTolerance; //!< of a cosine
    int lastPass;
};

inline constexpr IterationRules kStreamRules{1e-8, 1.523e-10, 60};
inline constexpr IterationRules kSolverRules{1e-12, 1.53e-10, 60};
inline constexpr IterationRules kSampleRules{1e-12, 1.53e-10, 10};

/// As many passes as `lastPass` + 1 says.
inline constexpr IterationRules TirelessRules(int lastPass)
{
    return {-1.0, 1.53e-10, lastPass};
}

using PassObserver = std::function<void(const TNT::Array2D<double>& jacobian)>;

/// A solve in the functions of the plain formulation, from `states`, where it leaves the answer.
/// Calls `pass` with the Jacobian of each pass.
bool PlainIterate(IkStream& stream, IkJtStateVector& states, const IkEndState& target,
                  const IterationRules& rules, const PassObserver& pass);

} // namespace bench

#endif
