#ifndef TRUNNION_BENCH_LIBRARY_SOLVERS_H
#define TRUNNION_BENCH_LIBRARY_SOLVERS_H

#include <memory>

#include "PoseSolver.h"

namespace bench
{

std::unique_ptr<PoseSolver> MakeStreamSolver(const Subject& subject, const Task& task);
std::unique_ptr<PoseSolver> MakeSolverObject(const Subject& subject, const Task& task);
std::unique_ptr<PoseSolver> MakeHybridSolver(const Subject& subject, const Task& task);
/// The solver object in as many passes as `lastPass` + 1 says, whether it has converged or not.
std::unique_ptr<PoseSolver> MakeUnendingSolver(const Subject& subject, const Task& task,
                                               int lastPass);

} // namespace bench

#endif
