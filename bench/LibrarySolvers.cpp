// The library as a host uses it.

#include <IkSolver.h>

#include "LibrarySolvers.h"
#include "StateSolvers.h"

namespace bench
{

namespace
{

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

std::unique_ptr<PoseSolver> MakeTirelessSolver(const Subject& subject, const Task& task,
                                               int lastPass)
{
    auto solver = std::make_unique<SolverObject>(subject, task);
    solver->NeverConverge(lastPass);
    return solver;
}

std::vector<IkJtStateVector> HybridStarts(const Subject& subject, const Task& task)
{
    subject.States(task.start).CommitValuesToJoints();
    IkSolverHybrid solver(&subject.Stream());
    IkEndState target = task.targets.front();
    IkJtStateVector answer;
    solver.SolveIK(target, answer, false, IkJoint::JtLimitAll, false);
    std::vector<IkJtStateVector> starts;
    for (const IkSolverSampleItem& item : solver.GetSampleList()) {
        starts.push_back(item.startStates);
    }
    return starts;
}

} // namespace bench
