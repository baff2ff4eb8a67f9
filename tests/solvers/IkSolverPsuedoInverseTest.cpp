#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "plain/PlainSolve.h"
#include "solvers/Solvers.h"
#include "support/Bits.h"
#include "support/Fixtures.h"
#include "support/RandomMachine.h"
#include "support/Repeat.h"

namespace
{

using test::At;
using test::BitsOf;
using test::ColumnOf;
using test::Gantry;
using test::kEighthTurn;
using test::MatrixOf;
using test::Random;
using test::Rig;
using test::Solve;
using test::StatesOf;
using test::Values;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(IkSolverPsuedoInverse, IsASolverWithNothingOfItsOwn)
{
    static_assert(sizeof(IkSolverPsuedoInverse) == sizeof(IkSolver));
    Gantry gantry;
    EXPECT_EQ(IkSolverPsuedoInverse().GetStreamPtr(), nullptr);
    IkSolverPsuedoInverse solver(&gantry.stream);
    solver.SetMaxIterations(3);
    solver.SetConvergenceTolerance(1e-3);
    Solve(solver, At(4, 5, 6));

    const IkSolver& asBase = solver;
    const IkSolverPsuedoInverse copy(solver);
    const IkSolverPsuedoInverse ofBase(asBase);
    for (const IkSolverPsuedoInverse* made : {&copy, &ofBase}) {
        EXPECT_EQ(made->GetStreamPtr(), &gantry.stream);
        EXPECT_EQ(made->GetMaxIterations(), 3);
        EXPECT_EQ(made->GetConvergenceTolerance(), 1e-3);
        EXPECT_EQ(made->GetCurErrorval(), solver.GetCurErrorval());
        EXPECT_EQ(made->SolverJtStates.Size(), 0);
        EXPECT_EQ(made->MaxAngleStep, 0.0);
    }
    IkSolverPsuedoInverse assigned;
    EXPECT_EQ(&(assigned = solver), &assigned);
    EXPECT_EQ(assigned.GetMaxIterations(), 3);
    EXPECT_EQ(BitsOf(assigned.SolverJtStates), BitsOf(solver.SolverJtStates));
    EXPECT_EQ(assigned.FreeJointIndices, solver.FreeJointIndices);
}

TEST(IkSolverPsuedoInverse, MadeOfAPlainSolverMoves)
{
    Gantry gantry;
    IkSolver plainSolver(&gantry.stream);
    EXPECT_FALSE(Solve(plainSolver, At(30, -40, 50)).isSolved);
    IkSolverPsuedoInverse solver(plainSolver);
    const test::Answer answer = Solve(solver, At(30, -40, 50));
    EXPECT_TRUE(answer.isSolved);
    test::ExpectNear(answer.values, {30, -40, 50}, 1e-6); // squared 1e-12
    EXPECT_LE(solver.GetCurErrorval(), 1e-12);
}

// --- the step ---

/// X and Z linear, C and A rotary; Z held.
struct Mixed : Rig
{
    Mixed()
    {
        Linear(tool, IkJoint::JtPrimTransX);
        Rotary(tool, IkJoint::JtPrimRotZ);
        Linear(tool, IkJoint::JtPrimTransZ).SetIsLocked(true);
        Rotary(tool, IkJoint::JtPrimRotX);
        Connect();
    }
};

Values StepOf(IkSolver& solver, const IkEndState& target, TNT::Array2D<double> jacobian)
{
    const TNT::Array2D<double> step = solver.CalcDTheta(target, At(0, 0, 0), jacobian);
    EXPECT_TRUE(step.dim1() == solver.SolverJtStates.Size() && step.dim2() == 1);
    return ColumnOf(step);
}

TEST(PsuedoInverseStep, LimitsRotaryRowsAndNoOthers)
{
    // The Jacobian of the three free joints is 1, so the raw step is the error itself.
    Mixed rig;
    IkSolverPsuedoInverse solver(&rig.stream);
    solver.Initialize(false);
    const TNT::Array2D<double> one = test::Diagonal({1, 1, 1});
    EXPECT_EQ(StepOf(solver, At(50, 2, -2), one), (Values{50, kEighthTurn, 0, -kEighthTurn}));
    EXPECT_EQ(StepOf(solver, At(-50, 0.5, -0.5), one), (Values{-50, 0.5, 0, -0.5}));
    EXPECT_EQ(StepOf(solver, At(0, kEighthTurn, 0), one), (Values{0, kEighthTurn, 0, 0}));
    solver.MaxAngleStep = 0.25; // the solver's own field is the limit
    EXPECT_EQ(StepOf(solver, At(1, 2, -2), one), (Values{1, 0.25, 0, -0.25}));
}

TEST(PsuedoInverseStep, SkipsSmallSingularValuesAndGoesOn)
{
    Mixed rig;
    test::WithSvd<IkSolverPsuedoInverse> solver(&rig.stream);
    solver.Initialize(false);
    solver.u = solver.v = test::Diagonal({1, 1, 1});
    solver.s = TNT::Array1D<double>(3, 0.5);
    struct Row
    {
        double second;
        int rank;
        Values step;
    };
    for (const Row& row : std::vector<Row>{
             {1e-10, 3, {2e-3, 0, 0, 4e-3}}, // at the cut-off it is skipped, the third is not
             {1.5e-10, 3, {2e-3, kEighthTurn, 0, 4e-3}}, // 1e-3 over it, limited
             {kNan, 3, {2e-3, 0, 0, 4e-3}},
             {0.25, 2, {2e-3, 4e-3, 0, 0}}, // no further than the rank
             {0.25, 0, {0, 0, 0, 0}},
             {0.25, -1, {0, 0, 0, 0}},
         }) {
        solver.s[1] = row.second;
        solver.rank = row.rank;
        EXPECT_EQ(StepOf(solver, At(1e-3, 1e-3, 2e-3), test::Diagonal({9, 9, 9})), row.step);
    }
}

TEST(PsuedoInverseStep, OfASolverNeverInitialisedIsZero)
{
    Gantry gantry;
    IkSolverPsuedoInverse solver(&gantry.stream);
    TNT::Array2D<double> jacobian = test::Diagonal({1, 1, 1});
    const TNT::Array2D<double> none = solver.CalcDTheta(At(1, 2, 3), At(0, 0, 0), jacobian);
    EXPECT_EQ(none.dim1(), 0);
    solver.SolverJtStates = gantry.stream.GetJointStates(); // states, but no free joints
    EXPECT_EQ(StepOf(solver, At(1, 2, 3), jacobian), (Values{0, 0, 0}));
}

TEST(PsuedoInverseStep, OfAnInfiniteOrUndefinedJacobianIsZero)
{
    Gantry gantry;
    IkSolverPsuedoInverse solver(&gantry.stream);
    solver.Initialize(false);
    for (const double entry : {kNan, kInfinity, 0.0}) {
        EXPECT_EQ(StepOf(solver, At(1, 2, 3), TNT::Array2D<double>(3, 3, entry)),
                  (Values{0, 0, 0}));
    }
}

TEST(PsuedoInverseStep, IsThePlainOneBitForBit)
{
    test::Repeat(500, 72, [](Random& random) {
        const test::Fixture machine = test::RandomMachine(random);
        IkStream& stream = *machine.stream;
        const IkEndState target = test::RandomTarget(machine, random);
        const bool lockRotary = random.OneIn(8);
        IkSolverPsuedoInverse solver(&stream);
        solver.Initialize(lockRotary);
        const plain::Fields fields = plain::Initialize(stream, lockRotary);
        IkEndState current = stream.SolveFK(false);
        current.CopyFilter(target);
        TNT::Array2D<double> jacobian;
        solver.ComputePartialJacobian(current, jacobian, 1, false);
        ASSERT_EQ(BitsOf(solver.CalcDTheta(target, current, jacobian)),
                  BitsOf(plain::PseudoInversePartialStep(fields, target, current, jacobian)));
    });
}

// --- stages that give odd shapes ---

TNT::Array2D<double> RandomShape(Random& random)
{
    TNT::Array2D<double> matrix(random.Below(9), random.Below(9));
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            matrix[i][j] = random.Between(-1, 1);
        }
    }
    return matrix;
}

TEST(PsuedoInverseStep, TakesNoMoreOfADecompositionThanThereIs)
{
    test::Repeat(2000, 73, [](Random& random) {
        Mixed rig;
        test::WithSvd<IkSolverPsuedoInverse> solver(&rig.stream);
        solver.Initialize(random.OneIn(2));
        solver.u = RandomShape(random);
        solver.v = RandomShape(random);
        solver.s = TNT::Array1D<double>(random.Below(9), 0.5);
        solver.rank = random.Below(20) - 5;
        const Values step = StepOf(solver, At(1, 2, 3), TNT::Array2D<double>(3, 3, 1.0));
        ASSERT_EQ(step[2], 0.0);
        for (const std::size_t rotary : {1U, 3U}) {
            ASSERT_LE(std::fabs(step[rotary]), kEighthTurn);
        }
    });
}

TEST(PsuedoInverseStep, TakesAJacobianOfAnyShape)
{
    test::Repeat(500, 74, [](Random& random) {
        Mixed rig;
        test::WithJacobian<IkSolverPsuedoInverse> solver(&rig.stream);
        solver.replacement = RandomShape(random);
        solver.SetMaxIterations(5);
        solver.SetConvergenceTolerance(-1); // never good enough
        ASSERT_FALSE(Solve(solver, At(1, 2, 3)).isSolved);
        ASSERT_EQ(solver.SolverJtStates.Size(), 4);
        ASSERT_EQ(solver.SolverJtStates.GetState(2).GetValue(), 0.0); // locked
    });
}

// --- against the stream's own solve ---

/// Sees whether a pose came between the two tolerances of a direction, where a stream and a solver
/// object measure differently.
struct Watching : IkSolverPsuedoInverse
{
    using IkSolverPsuedoInverse::IkSolverPsuedoInverse;
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override
    {
        double ofStream = 0;
        GetStreamPtr()->ObjectiveFcn(current, target, components, ofStream);
        const bool answer = IkSolverPsuedoInverse::ObjectiveFcn(current, target, components, error);
        differs = differs || BitsOf(ofStream) != BitsOf(error);
        return answer;
    }
    bool differs{false};
};

struct Count
{
    int compared{0};
    int solved{0};
};

void ExpectTheStreamsBits(const test::Fixture& machine, const IkEndState& target, Random& random,
                          Count& count)
{
    IkStream& stream = *machine.stream;
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    const bool toolOnly = random.OneIn(5);
    const bool lockRotary = random.OneIn(10);
    IkEndState given(target);
    Watching solver(&stream);
    solver.SetConvergenceTolerance(1e-8);
    IkJtStateVector result;
    const bool isSolved = solver.SolveIK(given, result, toolOnly, limits, lockRotary);
    if (solver.differs) {
        return;
    }
    IkJtStateVector ofStream;
    ASSERT_EQ(isSolved, stream.SolveIK(given, ofStream, toolOnly, limits, lockRotary));
    ASSERT_EQ(BitsOf(result), BitsOf(ofStream));
    ASSERT_EQ(result.GetNameVector(), ofStream.GetNameVector());
    ASSERT_EQ(BitsOf(solver.SolverJtStates), BitsOf(stream.SolverJtStates));
    ASSERT_EQ(solver.LockedFlags, stream.LockedFlags);
    ASSERT_EQ(solver.RotaryFlags, stream.RotaryFlags);
    ASSERT_EQ(solver.RotaryJointIndices, stream.RotaryJointIndices);
    ASSERT_EQ(solver.FreeJointIndices, stream.FreeJointIndices);

    plain::States ofPlain;
    plain::Fields fields;
    ASSERT_EQ(isSolved,
              plain::SolveIK(stream, given, ofPlain, toolOnly, limits, lockRotary, fields));
    ASSERT_EQ(BitsOf(result), BitsOf(ofPlain.ToLibrary()));
    ASSERT_EQ(BitsOf(solver.SolverJtStates), BitsOf(fields.states.ToLibrary()));
    ++count.compared;
    count.solved += isSolved ? 1 : 0;
}

TEST(PsuedoInverseSolve, GivesTheStreamsBitsOnEveryFixture)
{
    for (const test::NamedFixture& named : test::AllFixtures()) {
        const test::Fixture machine = named.make();
        Count count;
        test::Repeat(15, 75, [&](Random& random) {
            ExpectTheStreamsBits(machine, test::RandomTarget(machine, random), random, count);
        });
        EXPECT_GT(count.compared, 12) << named.name;
        EXPECT_GT(count.solved, 0) << named.name;
    }
}

TEST(PsuedoInverseSolve, GivesTheStreamsBitsOnRandomMachines)
{
    Count count;
    test::Repeat(200, 76, [&count](Random& random) {
        const test::Fixture machine = test::RandomMachine(random);
        ExpectTheStreamsBits(machine, test::RandomTarget(machine, random), random, count);
    });
    EXPECT_GT(count.compared, 190);
    EXPECT_GT(count.solved, 0);
    EXPECT_LT(count.solved, count.compared); // both outcomes are among the cases
}

TEST(PsuedoInverseSolve, StartsFromStartStatesAsFromTheJointsThemselves)
{
    for (const test::NamedFixture& named : test::AllFixtures()) {
        const test::Fixture machine = named.make();
        Random random(77);
        IkEndState target = test::RandomTarget(machine, random);
        IkJtStateVector start = machine.stream->GetJointStates();
        for (int i = 0; i < start.Size(); ++i) {
            start.GetState(i).SetValue(0.05 * (i + 1));
        }
        IkSolverPsuedoInverse solver(machine.stream);
        ASSERT_TRUE(solver.SetStartingJtStates(&start));
        IkJtStateVector fromStart;
        const bool isSolved = solver.SolveIK(target, fromStart, false, IkJoint::JtLimitAll, false);
        start.CommitValuesToJoints();
        IkSolverPsuedoInverse atJoints(machine.stream);
        IkJtStateVector fromJoints;
        EXPECT_EQ(isSolved,
                  atJoints.SolveIK(target, fromJoints, false, IkJoint::JtLimitAll, false));
        EXPECT_EQ(BitsOf(fromStart), BitsOf(fromJoints)) << named.name;
        EXPECT_EQ(BitsOf(solver.SolverJtStates), BitsOf(atJoints.SolverJtStates)) << named.name;
    }
}

TEST(PsuedoInverseSolve, HoldsRotaryJointsWhereAsked)
{
    const test::Fixture mill = test::TableTableMill();
    mill.SetJoints({1, 2, 3, -0.4, 0.7});
    IkJtStateVector states = mill.States({31, -22, 13, -0.4, 0.7});
    IkSolverPsuedoInverse solver(mill.stream);
    const IkEndState target = mill.stream->SolveFK(states, false, nullptr, nullptr, false);
    const test::Answer answer = Solve(solver, target, true);
    EXPECT_TRUE(answer.isSolved);
    test::ExpectNear(answer.values, {31, -22, 13, -0.4, 0.7}, 1.1e-6);
    EXPECT_EQ(answer.values[3], -0.4);
    EXPECT_EQ(answer.values[4], 0.7);
    EXPECT_EQ(mill.JointValues(), (Values{1, 2, 3, -0.4, 0.7}));
}

} // namespace
