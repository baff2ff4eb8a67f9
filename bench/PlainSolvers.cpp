#include "PlainSolvers.h"

#include "plain/PlainSolvers.h"

namespace bench
{

namespace
{

/// What solvers over the plain formulation's states have in common.
class PlainStateSolver : public PoseSolver
{
  public:
    PlainStateSolver(const Subject& ofSubject, const Task& task)
        : subject(ofSubject), start(subject.States(task.start)),
          targets(task.targets.begin(), task.targets.end())
    {}

    JointValues Answer() override
    {
        JointValues values;
        for (int i = 0; i < answer.Size(); ++i) {
            values.push_back(answer.Value(i));
        }
        return values;
    }

  protected:
    const Subject& subject;
    plain::States start;
    std::vector<plain::EndState> targets;
    plain::States answer;
};

/// Starts from where the machine's joints stand.
class PlainFromJoints : public PlainStateSolver
{
  public:
    using PlainStateSolver::PlainStateSolver;

    void GoTo(const JointValues& joints) override { plain::Commit(subject.States(joints)); }
    void GoToStart() override { plain::Commit(start); }
    void GoToAnswer() override { plain::Commit(answer); }
};

class PlainStreamSolver : public PlainFromJoints
{
  public:
    using PlainFromJoints::PlainFromJoints;

    bool Solve(std::size_t target) override
    {
        plain::Fields fields;
        return plain::SolveIK(subject.Stream(), targets[target], answer, false, IkJoint::JtLimitAll,
                              false, fields);
    }
};

class PlainHybridSolver : public PlainFromJoints
{
  public:
    PlainHybridSolver(const Subject& ofSubject, const Task& task)
        : PlainFromJoints(ofSubject, task), solver(ofSubject.Stream())
    {}

    bool Solve(std::size_t target) override
    {
        return solver.SolveIK(targets[target], answer, false, IkJoint::JtLimitAll, false);
    }

  protected:
    plain::HybridSolver solver;
};

class HybridObserver : public PlainHybridSolver
{
  public:
    HybridObserver(const Subject& ofSubject, const Task& task, PassObserver atPass)
        : PlainHybridSolver(ofSubject, task), pass(std::move(atPass))
    {}

    bool Solve(std::size_t target) override
    {
        PlainHybridSolver::Solve(target);
        bool isSolved = false;
        for (const plain::Sample& sample : solver.Samples()) {
            plain::States states = sample.start;
            const bool isMet =
                IterateObserved(subject.Stream(), states, targets[target], kSampleCriteria, pass);
            if (isMet && !isSolved) {
                answer = states;
            }
            isSolved = isSolved || isMet;
        }
        return isSolved;
    }

  private:
    PassObserver pass;
};

class PlainSolverObject : public PlainStateSolver
{
  public:
    PlainSolverObject(const Subject& ofSubject, const Task& task)
        : PlainStateSolver(ofSubject, task), solver(ofSubject.Stream())
    {
        solver.SetStart(start);
    }

    void GoTo(const JointValues& joints) override { solver.SetStart(subject.States(joints)); }
    void GoToStart() override { solver.SetStart(start); }
    void GoToAnswer() override { solver.SetStart(answer); }
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
    plain::PseudoInverseSolver solver;
};

class Observer : public PlainStateSolver
{
  public:
    Observer(const Subject& ofSubject, const Task& task, const plain::Criteria& withCriteria,
             PassObserver atPass)
        : PlainStateSolver(ofSubject, task), from(start), criteria(withCriteria),
          pass(std::move(atPass))
    {}

    void GoTo(const JointValues& joints) override { from = subject.States(joints); }
    void GoToStart() override { from = start; }
    void GoToAnswer() override { from = answer; }
    bool Solve(std::size_t target) override
    {
        answer = from;
        return IterateObserved(subject.Stream(), answer, targets[target], criteria, pass);
    }

  private:
    plain::States from;
    plain::Criteria criteria;
    PassObserver pass;
};

} // namespace

std::unique_ptr<PoseSolver> MakePlainStreamSolver(const Subject& subject, const Task& task)
{
    return std::make_unique<PlainStreamSolver>(subject, task);
}

std::unique_ptr<PoseSolver> MakePlainSolverObject(const Subject& subject, const Task& task)
{
    return std::make_unique<PlainSolverObject>(subject, task);
}

std::unique_ptr<PoseSolver> MakePlainHybridSolver(const Subject& subject, const Task& task)
{
    return std::make_unique<PlainHybridSolver>(subject, task);
}

std::unique_ptr<PoseSolver> MakePlainUnendingSolver(const Subject& subject, const Task& task,
                                                    int lastPass)
{
    auto solver = std::make_unique<PlainSolverObject>(subject, task);
    solver->NeverConverge(lastPass);
    return solver;
}

std::unique_ptr<PoseSolver> MakeObserver(const Subject& subject, const Task& task,
                                         const plain::Criteria& criteria, PassObserver pass)
{
    return std::make_unique<Observer>(subject, task, criteria, std::move(pass));
}

std::unique_ptr<PoseSolver> MakeHybridObserver(const Subject& subject, const Task& task,
                                               PassObserver pass)
{
    return std::make_unique<HybridObserver>(subject, task, std::move(pass));
}

} // namespace bench
