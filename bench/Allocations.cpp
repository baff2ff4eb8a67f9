#include "Allocations.h"

#include <algorithm>
#include <functional>
#include <optional>
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

constexpr int kTargets = 20;

/// One converged solve.
struct Solve
{
    int passes{0};
    long taken{0};
    long byJama{0};
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
            const plain::Array tall = Tall(jacobian);
            solve.byJama += AllocationsIn([&tall] { Decompose(tall); });
        });
        IkJtStateVector result;
        bool isSolved = false;
        solve.taken = AllocationsIn([&] { isSolved = library(target, result); });
        IkJtStateVector copy;
        solve.byResult = AllocationsIn([&] { copy = result; });
        if (isSolved) {
            solves.push_back(solve);
        }
    }
    return solves;
}

long MostBeyond(const std::vector<Solve>& solves)
{
    const auto most =
        std::max_element(solves.begin(), solves.end(),
                         [](const Solve& a, const Solve& b) { return a.Beyond() < b.Beyond(); });
    return most->Beyond();
}

/// From the shortest solve to each longer one; nothing when all are of one length.
std::optional<double> MostBeyondInPass(const std::vector<Solve>& solves)
{
    const auto shortest =
        std::min_element(solves.begin(), solves.end(),
                         [](const Solve& a, const Solve& b) { return a.passes < b.passes; });
    std::optional<double> most;
    for (const Solve& solve : solves) {
        if (solve.passes > shortest->passes) {
            const auto more = static_cast<double>(solve.Beyond() - shortest->Beyond());
            const double inEach = more / (solve.passes - shortest->passes);
            most = std::max(most.value_or(inEach), inEach);
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

Allocations Count(const char* operation, const Subject& subject, const plain::Criteria& criteria,
                  const SolveCall& library)
{
    const Task task = ColdTask(subject, kTargets);
    SolvesOf(subject, task, library, criteria); // whatever is taken once and kept
    const std::vector<Solve> solves = SolvesOf(subject, task, library, criteria);
    if (solves.empty()) {
        throw std::runtime_error(subject.name + ": no solve converges");
    }
    const std::optional<double> inPass = MostBeyondInPass(solves);
    if (!inPass) {
        throw std::runtime_error(subject.name + ": all solves take as many passes");
    }
    return {operation, subject.name, AverageInDecomposition(solves), MostBeyond(solves), *inPass};
}

} // namespace

Allocations StreamAllocations(const Subject& subject)
{
    subject.States(subject.home).CommitValuesToJoints();
    return Count("stream", subject, kStreamCriteria,
                 [&stream = subject.Stream()](IkEndState& target, IkJtStateVector& result) {
                     return stream.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
                 });
}

Allocations ObjectAllocations(const Subject& subject)
{
    IkJtStateVector start = subject.States(subject.home);
    IkSolverPsuedoInverse solver(&subject.Stream());
    solver.SetStartingJtStates(&start);
    return Count("object", subject, kSolverCriteria,
                 [&solver](IkEndState& target, IkJtStateVector& result) {
                     return solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
                 });
}

} // namespace bench
