#ifndef TRUNNION_BENCH_PLAIN_SOLVERS_H
#define TRUNNION_BENCH_PLAIN_SOLVERS_H

#include <memory>

#include "PlainPasses.h"
#include "PoseSolver.h"

namespace bench
{

std::unique_ptr<PoseSolver> MakePlainStreamSolver(const Subject& subject, const Task& task);
/// Follows any rules, pass by pass; calls `pass` with the Jacobian of each.
std::unique_ptr<PoseSolver> MakePlainIteration(const Subject& subject, const Task& task,
                                               const IterationRules& rules, PassObserver pass);
/// Samples as the hybrid solver does from the task's start.
std::unique_ptr<PoseSolver> MakePlainHybrid(const Subject& subject, const Task& task,
                                            PassObserver pass);

} // namespace bench

#endif
