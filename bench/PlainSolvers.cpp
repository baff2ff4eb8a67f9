#include "PlainSolvers.h"

#include "LibrarySolvers.h"
#include "StateSolvers.h"
#include "plain/PlainSolve.h"

namespace bench
{

namespace
{

class PlainStreamSolver : public SolverFromJoints
{
  public:
    using SolverFromJoints::SolverFromJoints;

    bool Solve(std::size_t target) override
    {
        plain::Fields fields;
        return plain::SolveIK(subject.Stream(), targets[target], answer, false, IkJoint::JtLimitAll,
                              false, fields);
    }
};

class PlainIteration : public SolverFromStates
{
  public:
    PlainIteration(const Subject& ofSubject, const Task& task, const IterationRules& withRules,
                   PassObserver atPass)
        : SolverFromStates(ofSubject, task), rules(withRules), pass(std::move(atPass))
    {}

    bool Solve(std::size_t target) override
    {
        answer = from;
        return PlainIterate(subject.Stream(), answer, targets[target], rules, pass);
    }

  private:
    IterationRules rules;
    PassObserver pass;
};

class PlainHybrid : public StateSolver
{
  public:
    PlainHybrid(const Subject& ofSubject, const Task& task, PassObserver atPass)
        : StateSolver(ofSubject, task), starts(HybridStarts(ofSubject, task)),
          pass(std::move(atPass))
    {}

    void GoTo(const JointValues& /*joints*/) override {}
    void GoToStart() override {}
    void GoToAnswer() override {}
    bool Solve(std::size_t target) override
    {
        bool isSolved = false;
        for (IkJtStateVector states : starts) {
            const bool isMet =
                PlainIterate(subject.Stream(), states, targets[target], kSampleRules, pass);
            if (isMet && !isSolved) {
                answer = states;
            }
            isSolved = isSolved || isMet;
        }
        return isSolved;
    }

  private:
    std::vector<IkJtStateVector> starts;
    PassObserver pass;
};

} // namespace

std::unique_ptr<PoseSolver> MakePlainStreamSolver(const Subject& subject, const Task& task)
{
    return std::make_unique<PlainStreamSolver>(subject, task);
}

std::unique_ptr<PoseSolver> MakePlainIteration(const Subject& subject, const Task& task,
                                               const IterationRules& rules, PassObserver pass)
{
    return std::make_unique<PlainIteration>(subject, task, rules, std::move(pass));
}

std::unique_ptr<PoseSolver> MakePlainHybrid(const Subject& subject, const Task& task,
                                            PassObserver pass)
{
    return std::make_unique<PlainHybrid>(subject, task, std::move(pass));
}

} // namespace bench
