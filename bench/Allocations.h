#ifndef TRUNNION_BENCH_ALLOCATIONS_H
#define TRUNNION_BENCH_ALLOCATIONS_H

#include <string>

#include "Subject.h"

namespace bench
{

/// What solves take from the heap: the converged ones of a cold task.
struct Allocations
{
    std::string operation;
    std::string machine;
    double inDecomposition{0.0}; //!< by JAMA, from a matrix that stands already; on average
    long beyondInSolve{0};       //!< the most beyond JAMA's and the result's own
    double beyondInPass{0.0};    //!< the most that a solve takes for each pass more than another
};

Allocations StreamAllocations(const Subject& subject);
Allocations ObjectAllocations(const Subject& subject);

} // namespace bench

#endif
