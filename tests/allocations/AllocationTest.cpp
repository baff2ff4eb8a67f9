// How often the library goes to the heap: in one evaluation of a pose, in a pass of a solve, and in
// a whole solve.

#include <algorithm>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "allocations/CountedNew.h"
#include "support/Fixtures.h"

using test::AllocationsIn;
using test::Fixture;

namespace
{

// What is allowed, on any of the fixtures. Lowered when the library comes to need less.
constexpr long kInForwardKinematics = 3; // the matrix of the pose that it returns
constexpr long kInDecomposition = 36;    // as a stage, which hands arrays out
constexpr long kInPass = 22;             // its decomposition
constexpr long kInSolveBesides = 5;      // its passes and its result

IkEndState TargetNear(const Fixture& fixture, double turn, double way)
{
    IkJtStateVector states = fixture.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        state.SetValue(state.GetValue() + (state.GetJoint()->IsRotary() ? turn : way));
    }
    return fixture.stream->SolveFK(states, false, nullptr, nullptr, false);
}

/// Out of every fixture's reach.
IkEndState FarTarget(const Fixture& fixture)
{
    IkEndState target = TargetNear(fixture, 0.0, 0.0);
    target.SetCompleteState(IkXformMat::Translate(1e6, 2e6, 3e6));
    return target;
}

/// What a solve takes from the heap and how many passes step.
struct Cost
{
    bool isSolved;
    long allocations;
    int steps;
};

Cost CostOf(IkSolver& solver, IkEndState target, int maxIterations)
{
    solver.SetMaxIterations(maxIterations);
    Cost cost{};
    for (int round = 0; round < 2; ++round) { // the second is warm
        IkJtStateVector result;
        cost.allocations = AllocationsIn([&] {
            cost.isSolved = solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
        });
    }
    cost.steps = maxIterations + (cost.isSolved ? 0 : 1);
    return cost;
}

/// Of the solve whose last allowed iteration is the one that it needs.
Cost CostOfSolve(IkSolver& solver, const IkEndState& target)
{
    int iterations = 0;
    Cost cost = CostOf(solver, target, iterations);
    while (!cost.isSolved && iterations < 60) {
        cost = CostOf(solver, target, ++iterations);
    }
    return cost;
}

/// What taking the answer over costs.
long AllocationsOfResult(const Fixture& fixture)
{
    const IkJtStateVector states = fixture.stream->GetJointStates();
    IkJtStateVector result;
    return AllocationsIn([&] { result = states; });
}

/// One more in a solve that has `iterations` of them and fails.
long AllocationsOfPass(const Fixture& fixture, int iterations)
{
    IkSolverPsuedoInverse solver(fixture.stream);
    const IkEndState target = FarTarget(fixture);
    const Cost fewer = CostOf(solver, target, iterations);
    const Cost more = CostOf(solver, target, iterations + 1);
    EXPECT_FALSE(fewer.isSolved || more.isSolved);
    return more.allocations - fewer.allocations;
}

TNT::Array2D<double> FirstJacobian(const Fixture& fixture)
{
    IkSolverPsuedoInverse solver(fixture.stream);
    solver.Initialize(false);
    TNT::Array2D<double> jacobian;
    solver.ComputePartialJacobian(fixture.stream->SolveFK(false), jacobian, 1, false);
    return jacobian;
}

template <class Body>
void OnEveryFixture(const Body& body)
{
    for (const test::NamedFixture& named : test::AllFixtures()) {
        SCOPED_TRACE(named.name);
        body(named.make());
    }
}

} // namespace

TEST(Allocations, OfForwardKinematics)
{
    OnEveryFixture([](const Fixture& fixture) {
        IkJtStateVector states = fixture.stream->GetJointStates();
        const auto solve = [&] { fixture.stream->SolveFK(states, false, nullptr, nullptr, false); };
        solve();
        EXPECT_LE(AllocationsIn(solve), kInForwardKinematics);
    });
}

TEST(Allocations, OfADecomposition)
{
    OnEveryFixture([](const Fixture& fixture) {
        TNT::Array2D<double> jacobian = FirstJacobian(fixture);
        IkSolverPsuedoInverse solver(fixture.stream);
        TNT::Array2D<double> u;
        TNT::Array2D<double> v;
        TNT::Array1D<double> s;
        int rank = 0;
        const auto decompose = [&] { solver.SafeSVDCalc(jacobian, u, v, s, rank); };
        decompose();
        EXPECT_LE(AllocationsIn(decompose), kInDecomposition);
        EXPECT_GT(rank, 0);
    });
}

TEST(Allocations, OfAPass)
{
    OnEveryFixture([](const Fixture& fixture) {
        for (const int iterations : {5, 20}) {
            EXPECT_LE(AllocationsOfPass(fixture, iterations), kInPass);
        }
    });
}

TEST(Allocations, OfASolve)
{
    OnEveryFixture([](const Fixture& fixture) {
        IkSolverPsuedoInverse solver(fixture.stream);
        const Cost cost = CostOfSolve(solver, TargetNear(fixture, 0.1, 10.0));
        ASSERT_TRUE(cost.isSolved);
        ASSERT_GT(cost.steps, 0);
        EXPECT_LE(cost.allocations - AllocationsOfResult(fixture),
                  cost.steps * AllocationsOfPass(fixture, 5) + kInSolveBesides);
    });
}

TEST(Allocations, OfAStreamsSolve)
{
    OnEveryFixture([](const Fixture& fixture) {
        constexpr int kPasses = 61; // of a stream's solve that fails
        IkEndState target = FarTarget(fixture);
        IkJtStateVector result;
        const auto solve = [&] {
            ASSERT_FALSE(
                fixture.stream->SolveIK(target, result, false, IkJoint::JtLimitAll, false));
        };
        solve();
        EXPECT_LE(AllocationsIn(solve) - AllocationsOfResult(fixture),
                  kPasses * AllocationsOfPass(fixture, 5) + kInSolveBesides);
    });
}
