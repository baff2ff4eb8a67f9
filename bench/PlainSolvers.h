#ifndef TRUNNION_BENCH_PLAIN_SOLVERS_H
#define TRUNNION_BENCH_PLAIN_SOLVERS_H

#include <memory>

#include "PlainPasses.h"
#include "PoseSolver.h"

namespace bench
{

std::unique_ptr<PoseSolver> MakePlainStreamSolver(const Subject& subject, const Task& task);
std::unique_ptr<PoseSolver> MakePlainSolverObject(const Subject& subject, const Task& task);
std::unique_ptr<PoseSolver> MakePlainHybridSolver(const Subject& subject, const Task& task);
/// The solver object in as many passes as `lastPass` + 1 says, whether it has converged or not.
std::unique_ptr<PoseSolver> MakePlainUnendingSolver(const Subject& subject, const Task& task,
                                                    int lastPass);

// The same solves once more, to see the Jacobians of their passes.
std::unique_ptr<PoseSolver> MakeObserver(const Subject& subject, const Task& task,
                                         const plain::Criteria& criteria, PassObserver pass);
std::unique_ptr<PoseSolver> MakeHybridObserver(const Subject& subject, const Task& task,
                                               PassObserver pass);

} // namespace bench

#endif
