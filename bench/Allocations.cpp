#include "Allocations.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <vector>

#include <IkSolver.h>

#include "Decompositions.h"
#include "PlainPasses.h"
#include "Poses.h"
#include "allocations/CountedNew.h"

using test::AllocationsIn;

namespace bench
{

namespace
{

/// One converged solve.
struct Solve
{
    int passes{0};
    long taken{0};
    long byJama{0}; //!< the matrices that it is handed among them
    long byResult{0};

    long Beyond() const { return taken - byJama - byResult; }
};

using SolveCall = std::function<bool(IkEndState& target, IkJtStateVector& result)>;

/// Solves each target with `library`, and with the plain formulation for the passes.
std::vector<Solve> SolvesOf(const Subject& subject, const Task& task, const SolveCall& library,
                            const plain::Criteria& criteria)
{
    std::vector<Solve> solves;
    for (IkEndState target : task.targets) {
        Solve solve;
        plain::States states = subject.States(task.start);
        IterateObserved(subject.Stream(), states, target, criteria, [&solve](const auto& jacobian) {
            ++solve.passes;
            solve.byJama += AllocationsIn([&jacobian] { Decompose(Tall(jacobian)); });
        });
        IkJtStateVector result;
        bool isSolved = false;
        solve.taken = AllocationsIn([&] { isSolved = library(target, result); });
        solve.byResult = AllocationsIn([&result] { const IkJtStateVector copy = result; });
        if (isSolved) {
            solves.push_back(solve);
        }
    }
    return solves;
}

long MostBeyond(const std::vector<Solve>& solves)
{
    long most = 0;
    for (const Solve& solve : solves) {
        most = std::max(most, solve.Beyond());
    }
    return most;
}

/// Between each solve and the shortest one.
double MostBeyondInPass(const std::vector<Solve>& solves)
{
    const auto shortest =
        std::min_element(solves.begin(), solves.end(),
                         [](const Solve& a, const Solve& b) { return a.passes < b.passes; });
    double most = 0.0;
    for (const Solve& solve : solves) {
        if (solve.passes > shortest->passes) {
            const auto more = static_cast<double>(solve.Beyond() - shortest->Beyond());
            most = std::max(most, more / (solve.passes - shortest->passes));
        }
    }
    return most;
}

double AverageInDecomposition(const std::vector<Solve>& solves)
{
    long taken = 0;
    long passes = 0;
    for (const Solve& solve : solves) {
        taken += solve.byJama;
        passes += solve.passes;
    }
    return passes == 0 ? 0.0 : static_cast<double>(taken) / static_cast<double>(passes);
}

Allocations Count(const char* operation, const Subject& subject, int targets,
                  const plain::Criteria& criteria, const SolveCall& library)
{
    const Task task = ColdTask(subject, targets);
    SolvesOf(subject, task, library, criteria); // whatever is taken once and kept
    const std::vector<Solve> solves = SolvesOf(subject, task, library, criteria);
    if (solves.empty()) {
        throw std::runtime_error(subject.name + ": no solve converges");
    }
    return {operation, subject.name, AverageInDecomposition(solves), MostBeyond(solves),
            MostBeyondInPass(solves)};
}

} // namespace

Allocations StreamAllocations(const Subject& subject, int targets)
{
    subject.States(subject.home).CommitValuesToJoints();
    return Count("stream", subject, targets, kStreamCriteria,
                 [&stream = subject.Stream()](IkEndState& target, IkJtStateVector& result) {
                     return stream.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
                 });
}

Allocations ObjectAllocations(const Subject& subject, int targets)
{
    IkJtStateVector start = subject.States(subject.home);
    IkSolverPsuedoInverse solver(&subject.Stream());
    solver.SetStartingJtStates(&start);
    return Count("object", subject, targets, kSolverCriteria,
                 [&solver](IkEndState& target, IkJtStateVector& result) {
                     return solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
                 });
}

} // namespace bench
