#ifndef TRUNNION_BENCH_POSE_SOLVER_H
#define TRUNNION_BENCH_POSE_SOLVER_H

#include <cstddef>

#include "Poses.h"

namespace bench
{

/// Solves the targets of a task one at a time.
class PoseSolver
{
  public:
    PoseSolver() = default;
    PoseSolver(const PoseSolver&) = delete;
    PoseSolver& operator=(const PoseSolver&) = delete;
    virtual ~PoseSolver() = default;

    virtual void GoTo(const JointValues& joints) = 0; //!< the next solve starts from here
    virtual void GoToStart() = 0;                     //!< the same, where the task starts
    virtual void GoToAnswer() = 0;                    //!< the same, at the last answer
    virtual bool Solve(std::size_t target) = 0;
    virtual JointValues Answer() = 0; //!< of the last solve
};

/// Solves a task; calls `after(target, isSolved)` after each solve. A path goes on from a witness
/// where a solve has failed.
template <class After>
void SolveAll(const Task& task, PoseSolver& solver, const After& after)
{
    solver.GoToStart();
    for (std::size_t i = 0; i < task.targets.size(); ++i) {
        const bool isSolved = solver.Solve(i);
        after(i, isSolved);
        if (!task.isPath) {
            continue; // a solve moves nothing by itself
        }
        if (isSolved) {
            solver.GoToAnswer();
        } else {
            solver.GoTo(task.witnesses[i]);
        }
    }
}

} // namespace bench

#endif
