#ifndef TRUNNION_BENCH_STATE_SOLVERS_H
#define TRUNNION_BENCH_STATE_SOLVERS_H

#include "PoseSolver.h"

namespace bench
{

/// What solvers over the library's joint states have in common.
class StateSolver : public PoseSolver
{
  public:
    StateSolver(const Subject& ofSubject, const Task& task)
        : subject(ofSubject), start(subject.States(task.start)), targets(task.targets)
    {}

    JointValues Answer() override { return answer.GetValVector(); }

  protected:
    const Subject& subject;
    IkJtStateVector start;
    std::vector<IkEndState> targets;
    IkJtStateVector answer;
};

/// Starts from where the machine's joints stand.
class SolverFromJoints : public StateSolver
{
  public:
    using StateSolver::StateSolver;

    void GoTo(const JointValues& joints) override { subject.States(joints).CommitValuesToJoints(); }
    void GoToStart() override { start.CommitValuesToJoints(); }
    void GoToAnswer() override { answer.CommitValuesToJoints(); }
};

/// Starts from states of its own.
class SolverFromStates : public StateSolver
{
  public:
    SolverFromStates(const Subject& ofSubject, const Task& task)
        : StateSolver(ofSubject, task), from(start)
    {}

    void GoTo(const JointValues& joints) override { from = subject.States(joints); }
    void GoToStart() override { from = start; }
    void GoToAnswer() override { from = answer; }

  protected:
    IkJtStateVector from;
};

} // namespace bench

#endif
