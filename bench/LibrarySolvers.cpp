// The library as a host uses it.

#include <IkSolver.h>

#include "LibrarySolvers.h"

namespace bench
{

namespace
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
    void GoToStart() override { TakeValues(start); }
    void GoToAnswer() override { TakeValues(answer); }

  protected:
    IkJtStateVector from;

  private:
    void TakeValues(IkJtStateVector& of)
    {
        for (int i = 0; i < from.Size(); ++i) {
            from.GetState(i).SetValue(of.GetState(i).GetValue());
        }
    }
};

class StreamSolver : public SolverFromJoints
{
  public:
    StreamSolver(const Subject& ofSubject, const Task& task)
        : SolverFromJoints(ofSubject, task), stream(ofSubject.Stream())
    {}

    bool Solve(std::size_t target) override
    {
        return stream.SolveIK(targets[target], answer, false, IkJoint::JtLimitAll, false);
    }

  private:
    IkStream& stream;
};

class SolverObject : public SolverFromStates
{
  public:
    SolverObject(const Subject& ofSubject, const Task& task)
        : SolverFromStates(ofSubject, task), solver(&subject.Stream())
    {
        solver.SetStartingJtStates(&from);
    }

    bool Solve(std::size_t target) override
    {
        return solver.SolveIK(targets[target], answer, false, IkJoint::JtLimitAll, false);
    }

    void NeverConverge(int lastPass)
    {
        solver.SetConvergenceTolerance(-1.0);
        solver.SetMaxIterations(lastPass);
    }

  private:
    IkSolverPsuedoInverse solver;
};

/// Where its samples start hangs on where the joints stand.
class HybridSolver : public SolverFromJoints
{
  public:
    HybridSolver(const Subject& ofSubject, const Task& task)
        : SolverFromJoints(ofSubject, task), solver(&subject.Stream())
    {}

    bool Solve(std::size_t target) override
    {
        return solver.SolveIK(targets[target], answer, false, IkJoint::JtLimitAll, false);
    }

  private:
    IkSolverHybrid solver;
};

} // namespace

std::unique_ptr<PoseSolver> MakeStreamSolver(const Subject& subject, const Task& task)
{
    return std::make_unique<StreamSolver>(subject, task);
}

std::unique_ptr<PoseSolver> MakeSolverObject(const Subject& subject, const Task& task)
{
    return std::make_unique<SolverObject>(subject, task);
}

std::unique_ptr<PoseSolver> MakeHybridSolver(const Subject& subject, const Task& task)
{
    return std::make_unique<HybridSolver>(subject, task);
}

std::unique_ptr<PoseSolver> MakeUnendingSolver(const Subject& subject, const Task& task,
                                               int lastPass)
{
    auto solver = std::make_unique<SolverObject>(subject, task);
    solver->NeverConverge(lastPass);
    return solver;
}

} // namespace bench
