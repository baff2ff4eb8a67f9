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

using test::Answer;
using test::At;
using test::BitsOf;
using test::Calls;
using test::EndState;
using test::Gantry;
using test::kEighthTurn;
using test::kPositionAndZ;
using test::MatrixOf;
using test::Recorder;
using test::Rig;
using test::Solve;
using test::StatesOf;
using test::Values;
using Flags = std::vector<bool>;
using Indices = std::vector<int>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// --- fields and accessors ---

TEST(IkSolver, StartsWithoutStreamAndWithTheDefaultSettings)
{
    IkStream stream;
    const IkSolver withoutStream;
    const IkSolver withStream(&stream);
    EXPECT_EQ(withoutStream.GetStreamPtr(), nullptr);
    EXPECT_EQ(withStream.GetStreamPtr(), &stream);
    for (const IkSolver& solver : {withoutStream, withStream}) {
        EXPECT_EQ(solver.GetMaxIterations(), 60);
        EXPECT_EQ(solver.GetConvergenceTolerance(), 1e-12);
        EXPECT_EQ(solver.GetCurErrorval(), 0.0);
        EXPECT_EQ(solver.GetStartStates(), nullptr);
        EXPECT_EQ(solver.SolverJtStates.Size(), 0);
        EXPECT_TRUE(solver.LockedFlags.empty() && solver.RotaryFlags.empty() &&
                    solver.RotaryJointIndices.empty() && solver.FreeJointIndices.empty());
        EXPECT_EQ(solver.MaxAngleStep, 0.0);
    }
}

TEST(IkSolver, KeepsWhatItIsGiven)
{
    IkStream stream;
    IkSolver solver;
    solver.SetStreamPtr(&stream);
    solver.SetMaxIterations(-7);
    solver.SetConvergenceTolerance(0.5);
    EXPECT_EQ(solver.GetStreamPtr(), &stream);
    EXPECT_EQ(solver.GetMaxIterations(), -7);
    EXPECT_EQ(solver.GetConvergenceTolerance(), 0.5);
}

/// A solver after a solve: no field has its default. X is free, Y locked, C rotary.
struct Used
{
    Used()
    {
        rig.Linear(rig.tool, IkJoint::JtPrimTransX);
        rig.Linear(rig.tool, IkJoint::JtPrimTransY).SetIsLocked(true);
        rig.Rotary(rig.tool, IkJoint::JtPrimRotZ);
        rig.Connect();
        start = StatesOf(rig.stream, {1, 2, 0.5});
        solver.SetStreamPtr(&rig.stream);
        EXPECT_TRUE(solver.SetStartingJtStates(&start));
        solver.SetMaxIterations(3);
        solver.SetConvergenceTolerance(1e-3);
        EXPECT_FALSE(Solve(solver, At(1, 2, 3)).isSolved);
    }

    Rig rig;
    IkJtStateVector start;
    IkSolver solver;
};

void ExpectSettings(const IkSolver& solver, const Used& used)
{
    EXPECT_EQ(solver.GetStreamPtr(), &used.rig.stream);
    EXPECT_EQ(solver.GetMaxIterations(), 3);
    EXPECT_EQ(solver.GetConvergenceTolerance(), 1e-3);
    EXPECT_EQ(solver.GetCurErrorval(), 9.0); // 3 away along z
    EXPECT_EQ(solver.GetStartStates(), &used.start);
}

void ExpectWorkingFields(const IkSolver& solver)
{
    EXPECT_EQ(solver.SolverJtStates.GetValVector(), (Values{1, 2, 0.5}));
    EXPECT_EQ(solver.LockedFlags, (Flags{false, true, false}));
    EXPECT_EQ(solver.RotaryFlags, (Flags{false, false, true}));
    EXPECT_EQ(solver.RotaryJointIndices, Indices{2});
    EXPECT_EQ(solver.FreeJointIndices, (Indices{0, 2}));
    EXPECT_EQ(solver.MaxAngleStep, kEighthTurn);
}

TEST(IkSolver, KeepsItsWorkingFieldsAfterASolve)
{
    const Used used;
    ExpectSettings(used.solver, used);
    ExpectWorkingFields(used.solver);
}

TEST(IkSolver, CopiesTheSettingsWithoutTheWorkingFields)
{
    const Used used;
    const IkSolver copy(used.solver);
    ExpectSettings(copy, used);
    EXPECT_EQ(copy.SolverJtStates.Size(), 0);
    EXPECT_TRUE(copy.LockedFlags.empty() && copy.RotaryFlags.empty() &&
                copy.RotaryJointIndices.empty() && copy.FreeJointIndices.empty());
    EXPECT_EQ(copy.MaxAngleStep, 0.0);
}

TEST(IkSolver, AssignsEveryField)
{
    Used used;
    IkSolver other;
    EXPECT_EQ(&(other = used.solver), &other);
    ExpectSettings(other, used);
    ExpectWorkingFields(other);
    const IkSolver& self = used.solver;
    used.solver = self;
    ExpectSettings(used.solver, used);
    ExpectWorkingFields(used.solver);
}

TEST(IkSolver, IsNotChangedByResetNorByADump)
{
    Used used;
    used.solver.Reset();
    used.solver.TraceDump();
    ExpectSettings(used.solver, used);
    ExpectWorkingFields(used.solver);
    IkSolver().TraceDump();
    used.solver.SetStreamPtr(nullptr);
    used.solver.TraceDump(); // states without a stream
    ExpectWorkingFields(used.solver);
}

// --- start states ---

TEST(StartStates, MustHoldTheStreamsJointsInItsOrder)
{
    Gantry gantry;
    Gantry foreign;
    IkJtStateVector good = StatesOf(gantry.stream, {7, kNan, -1e9}); // whatever the values
    IkJtStateVector also = gantry.stream.GetJointStates();
    IkJtStateVector swapped;
    for (IkJoint* joint : {&gantry.y, &gantry.x, &gantry.z}) {
        swapped.AddState(IkJtState(joint));
    }
    IkJtStateVector less;
    less.AddState(IkJtState(&gantry.x));
    IkJtStateVector more = good;
    more.AddState(IkJtState(&foreign.x));
    IkJtStateVector other = foreign.stream.GetJointStates();
    IkJtStateVector none;

    IkSolver solver(&gantry.stream);
    ASSERT_TRUE(solver.SetStartingJtStates(&good));
    for (IkJtStateVector* bad : {&swapped, &less, &more, &other, &none}) {
        EXPECT_FALSE(solver.SetStartingJtStates(bad));
        EXPECT_EQ(solver.GetStartStates(), &good);
    }
    EXPECT_TRUE(solver.SetStartingJtStates(&also));
    EXPECT_EQ(solver.GetStartStates(), &also);
    EXPECT_TRUE(solver.SetStartingJtStates(nullptr));
    EXPECT_EQ(solver.GetStartStates(), nullptr);
}

TEST(StartStates, WithoutStreamAreRefused)
{
    IkJtStateVector none;
    IkSolver solver;
    EXPECT_FALSE(solver.SetStartingJtStates(&none));
    EXPECT_TRUE(solver.SetStartingJtStates(nullptr));
}

TEST(StartStates, AreWhereASolveStarts)
{
    Gantry gantry;
    gantry.x.SetCurValue(5);
    IkJtStateVector start = StatesOf(gantry.stream, {1, 2, 3});
    IkSolver solver(&gantry.stream);
    solver.SetStartingJtStates(&start);
    const Answer atStart = Solve(solver, At(1, 2, 3));
    EXPECT_TRUE(atStart.isSolved);
    EXPECT_EQ(atStart.values, (Values{1, 2, 3}));
    EXPECT_EQ(gantry.x.GetCurValue(), 5);

    start.GetState(0).SetValue(4); // read when the solve starts
    EXPECT_EQ(Solve(solver, At(4, 2, 3)).values, (Values{4, 2, 3}));
    solver.SetStartingJtStates(nullptr);
    EXPECT_EQ(Solve(solver, At(5, 0, 0)).values, (Values{5, 0, 0}));
    EXPECT_EQ(start.GetValVector(), (Values{4, 2, 3}));
}

TEST(StartStates, AreNotTouchedBySolvingAway)
{
    Gantry gantry;
    IkJtStateVector start = StatesOf(gantry.stream, {1, 2, 3});
    IkSolverPsuedoInverse solver(&gantry.stream);
    solver.SetStartingJtStates(&start);
    EXPECT_TRUE(Solve(solver, At(10, 20, 30)).isSolved);
    EXPECT_EQ(start.GetValVector(), (Values{1, 2, 3}));
    EXPECT_EQ(gantry.stream.GetJointStates().GetValVector(), (Values{0, 0, 0}));
}

// --- start of a solve ---

TEST(SolverInitialize, FillsTheFieldsAsTheStreamDoes)
{
    for (const test::NamedFixture& named : test::AllFixtures()) {
        const test::Fixture machine = named.make();
        machine.joints[1]->SetIsLocked(true);
        machine.stream->SetLocalLock(machine.joints[2], true);
        for (const bool lockRotary : {true, false}) {
            IkSolver solver(machine.stream);
            solver.Initialize(lockRotary);
            machine.stream->InitializeIkSolver(lockRotary);
            EXPECT_EQ(BitsOf(solver.SolverJtStates), BitsOf(machine.stream->SolverJtStates));
            EXPECT_EQ(solver.LockedFlags, machine.stream->LockedFlags);
            EXPECT_TRUE(solver.LockedFlags[1] && solver.LockedFlags[2]);
            EXPECT_EQ(solver.RotaryFlags, machine.stream->RotaryFlags);
            EXPECT_EQ(solver.RotaryJointIndices, machine.stream->RotaryJointIndices);
            EXPECT_EQ(solver.FreeJointIndices, machine.stream->FreeJointIndices);
            EXPECT_EQ(solver.MaxAngleStep, kEighthTurn);
        }
    }
}

// --- objective ---

/// A pose whose Z axis is (0, 0, z).
IkEndState WithZ(double z)
{
    IkXformMat pose;
    pose[2][2] = z;
    return EndState(pose);
}

double Objective(const IkEndState& current, const IkEndState& target)
{
    IkSolver solver;
    std::vector<double> components{4, 5};
    double error = -1;
    EXPECT_TRUE(solver.ObjectiveFcn(current, target, components, error));
    EXPECT_EQ(components, (Values{4, 5}));
    EXPECT_EQ(solver.GetCurErrorval(), 0.0); // only a solve sets it
    return error;
}

double StreamObjective(const IkEndState& current, const IkEndState& target)
{
    IkStream stream;
    std::vector<double> components;
    double error = -1;
    stream.ObjectiveFcn(current, target, components, error);
    return error;
}

TEST(SolverObjective, CountsDirectionsWithinItsOwnToleranceAsMet)
{
    const IkEndState up = WithZ(1);
    EXPECT_EQ(Objective(WithZ(1 - 1.529e-10), up), 0.0);
    const double angle = std::acos(1 - 1.531e-10) * 180 / 3.14159265358979;
    EXPECT_EQ(Objective(WithZ(1 - 1.531e-10), up), angle * angle);
    // Between the two tolerances the stream still counts what the solver object does not.
    EXPECT_EQ(Objective(WithZ(1 - 1.525e-10), up), 0.0);
    EXPECT_GT(StreamObjective(WithZ(1 - 1.525e-10), up), 1e-6);
    EXPECT_NEAR(Objective(WithZ(-1), up), 32400, 1e-9); // 180 * 180
    EXPECT_EQ(Objective(WithZ(-1.5), up), 32400.0);
    EXPECT_EQ(Objective(WithZ(1.5), up), 0.0);
}

TEST(SolverObjective, IsTheStreamsElsewhere)
{
    IkXformMat away = IkXformMat::Translate(1, -2, 2); // 9 in squares
    away.RotXThis(0.1);
    for (int bits = 0; bits < 16; ++bits) {
        const test::Filter filter{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0,
                                  (bits & 8) != 0};
        const IkEndState target = EndState(IkXformMat(), filter);
        const IkEndState current = EndState(away, filter);
        EXPECT_EQ(BitsOf(Objective(current, target)), BitsOf(StreamObjective(current, target)));
        // y and z are 0.1 off, x is not
        const double tilt = 0.1 * 180 / 3.14159265358979;
        const double expected =
            (filter[3] ? 9 : 0) + ((filter[1] ? 1 : 0) + (filter[2] ? 1 : 0)) * tilt * tilt;
        EXPECT_NEAR(Objective(current, target), expected, 1e-10) << bits;
    }
}

// --- Jacobians ---

TEST(SolverJacobian, IsThePlainOneOfTheSolversOwnFields)
{
    test::Repeat(500, 71, [](test::Random& random) {
        const test::Fixture machine = test::RandomMachine(random);
        IkStream& stream = *machine.stream;
        const IkEndState target = test::RandomTarget(machine, random);
        const bool lockRotary = random.OneIn(5);
        const bool toolOnly = random.OneIn(3);
        const int includeRotary = random.Below(3);
        IkSolver solver(&stream);
        solver.Initialize(lockRotary);
        const plain::Fields fields = plain::Initialize(stream, lockRotary);
        IkEndState reference =
            stream.SolveFK(solver.SolverJtStates, false, nullptr, nullptr, toolOnly);
        reference.CopyFilter(target);
        TNT::Array2D<double> jacobian;
        ASSERT_TRUE(solver.ComputePartialJacobian(reference, jacobian, includeRotary, toolOnly));
        ASSERT_EQ(BitsOf(jacobian), BitsOf(plain::PartialJacobian(stream, fields, reference,
                                                                  includeRotary, toolOnly)));
        ASSERT_TRUE(solver.ComputeFullJacobian(reference, jacobian, toolOnly));
        TNT::Array2D<double> expected;
        ASSERT_TRUE(plain::FullJacobian(stream, reference, toolOnly, expected));
        ASSERT_EQ(BitsOf(jacobian), BitsOf(expected));
    });
}

TEST(SolverJacobian, OfAllJointsNeedsEachLockToBeKnown)
{
    Rig rig;
    rig.Connect();
    auto& late = rig.Linear(rig.tool, IkJoint::JtPrimTransX); // unknown to the local locks
    IkSolver solver(&rig.stream);
    TNT::Array2D<double> jacobian(1, 1, 42.0);
    EXPECT_FALSE(solver.ComputeFullJacobian(At(0, 0, 0), jacobian, false));
    EXPECT_EQ(jacobian[0][0], 42.0);
    late.SetIsLocked(true);
    EXPECT_TRUE(solver.ComputeFullJacobian(At(0, 0, 0), jacobian, false));
    EXPECT_EQ(test::ColumnOf(jacobian), (Values{0, 0, 0}));
}

TEST(SolverJacobian, OfChosenColumnsFollowsTheFieldsNotTheStream)
{
    Gantry gantry;
    IkSolver solver(&gantry.stream);
    solver.Initialize(false);
    solver.FreeJointIndices = {2, 0};
    solver.RotaryFlags = {true, false, false};
    const IkEndState home = At(0, 0, 0);
    TNT::Array2D<double> jacobian;
    solver.ComputePartialJacobian(home, jacobian, 0, false);
    ASSERT_EQ(jacobian.dim2(), 2);
    test::ExpectNear(test::ColumnOf(jacobian, 0), {0, 0, 1}, 1e-12);
    EXPECT_EQ(test::ColumnOf(jacobian, 1), (Values{0, 0, 0})); // flagged rotary: left out
    solver.ComputePartialJacobian(home, jacobian, 5, false);
    test::ExpectNear(test::ColumnOf(jacobian, 1), {1, 0, 0}, 1e-12);
}

TEST(SolverStages, WithoutStreamComputeNothing)
{
    IkSolver solver;
    solver.Initialize(true);
    TNT::Array2D<double> jacobian(1, 1, 42.0);
    EXPECT_FALSE(solver.ComputeFullJacobian(At(0, 0, 0), jacobian, false));
    solver.ComputePartialJacobian(At(0, 0, 0), jacobian, 1, false);
    EXPECT_EQ(jacobian[0][0], 42.0);
    EXPECT_EQ(solver.SolverJtStates.Size(), 0);
}

TEST(SolverStages, DecomposeAsTheStreamDoes)
{
    for (auto& matrix : {MatrixOf({{1, 2, 3}, {4, 5, 6}}), MatrixOf({{1, 2}, {3, 4}, {5, 7}}),
                         MatrixOf({{1, kNan}}), TNT::Array2D<double>(3, 0)}) {
        TNT::Array2D<double> given(matrix);
        TNT::Array2D<double> u;
        TNT::Array2D<double> v;
        TNT::Array1D<double> s;
        int rank = -1;
        IkSolver().SafeSVDCalc(given, u, v, s, rank);
        const plain::Svd expected = plain::Decompose(matrix);
        EXPECT_EQ(rank, expected.rank);
        for (int i = 0; i < rank; ++i) {
            EXPECT_EQ(BitsOf(s[i]), BitsOf(expected.s[i]));
        }
        EXPECT_EQ(BitsOf(u), BitsOf(expected.u));
        EXPECT_EQ(BitsOf(v), BitsOf(expected.v));
    }
}

TEST(SolverStages, OfTheBaseStepNowhere)
{
    Gantry gantry;
    IkSolver solver(&gantry.stream);
    solver.Initialize(false);
    TNT::Array2D<double> jacobian = test::Diagonal({1, 1, 1});
    const TNT::Array2D<double> step = solver.CalcDTheta(At(1, 0, 0), At(0, 0, 0), jacobian);
    EXPECT_EQ(step.dim1(), 0);
    EXPECT_EQ(step.dim2(), 0);
}

TEST(SolverClampSearch, LocksFreeJointsThatAStepTakesOutOfTheirBounds)
{
    Gantry gantry;
    for (IkJoint* joint : {&gantry.x, &gantry.y, &gantry.z}) {
        joint->SetBounds(-1, 1);
    }
    struct Row
    {
        Values start, step;
        Flags locked;
    };
    const std::vector<Row> rows{
        {{0, 0, 0}, {1, -1, 1.5}, {false, false, true}}, // onto the bound is inside
        {{0, 0, 0}, {-1.25, 1.25, 0}, {true, true, false}},
        {{2, -2, 2}, {1e-10, 0.99e-10, -0.5}, {true, false, true}}, // 1e-10 counts, less does not
        {{0, 0, 0}, {kNan, 0, 0}, {false, false, false}},
    };
    for (const Row& row : rows) {
        IkJtStateVector start = StatesOf(gantry.stream, row.start);
        IkSolver solver(&gantry.stream);
        solver.SetStartingJtStates(&start);
        solver.Initialize(false);
        TNT::Array2D<double> step = MatrixOf({{row.step[0]}, {row.step[1]}, {row.step[2]}});
        solver.JointClampSearch(step);
        EXPECT_EQ(solver.LockedFlags, row.locked);
        Indices free;
        for (int i = 0; i < 3; ++i) {
            if (!row.locked[static_cast<std::size_t>(i)]) {
                free.push_back(i);
            }
        }
        EXPECT_EQ(solver.FreeJointIndices, free);
        EXPECT_EQ(solver.SolverJtStates.GetValVector(), row.start);
    }
}

TEST(SolverClampSearch, TakesAStepOfAnyShape)
{
    Gantry gantry;
    gantry.x.SetBounds(0, 0);
    for (auto step : {TNT::Array2D<double>(), TNT::Array2D<double>(3, 0),
                      TNT::Array2D<double>(9, 1, 0.0), TNT::Array2D<double>(0, 2)}) {
        IkSolver solver(&gantry.stream);
        solver.JointClampSearch(step); // not initialised either
        solver.Initialize(false);
        solver.JointClampSearch(step);
        EXPECT_EQ(solver.FreeJointIndices, (Indices{0, 1, 2}));
    }
}

// --- solving with the base ---

TEST(PlainSolver, MeasuresAndDoesNotMove)
{
    Gantry gantry;
    gantry.x.SetCurValue(2000); // beyond its bound
    Recorder<IkSolver> solver(&gantry.stream);
    solver.SetMaxIterations(4);
    const Answer answer = Solve(solver, At(2000, 3, 4));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.values, Values{2000}); // what is out of range at the end
    EXPECT_EQ(solver.measured.size(), 5U);  // one more than the limit
    EXPECT_EQ(solver.GetCurErrorval(), 25.0);
    EXPECT_EQ(gantry.tip.count, 5 * (1 + 3)); // the pose and three columns a pass
    EXPECT_EQ(solver.SolverJtStates.GetValVector(), (Values{2000, 0, 0}));
}

TEST(PlainSolver, WithinItsToleranceIsAtTheTarget)
{
    struct Row
    {
        double away, tolerance;
        bool isSolved;
    };
    for (const Row& row : std::vector<Row>{
             {0.99e-6, 1e-12, true},
             {1.01e-6, 1e-12, false},
             {0.5, 0.25, true}, // exactly at the tolerance
             {0.5, 0.2499, false},
             {0, 0, true},
             {0, -1, false},
             {kNan, 1e300, false},
         }) {
        Gantry gantry;
        IkSolver solver(&gantry.stream);
        solver.SetMaxIterations(1);
        if (row.tolerance != 1e-12) {
            solver.SetConvergenceTolerance(row.tolerance);
        }
        const Answer answer = Solve(solver, At(row.away, 0, 0));
        EXPECT_EQ(answer.isSolved, row.isSolved) << row.away;
        EXPECT_EQ(answer.values, row.isSolved ? Values(3, 0.0) : Values()) << row.away;
    }
}

TEST(PlainSolver, WithoutStreamFailsAndLeavesTheResult)
{
    IkSolver base;
    IkSolverPsuedoInverse psuedo;
    IkSolverHybrid hybrid;
    for (IkSolver* solver : std::vector<IkSolver*>{&base, &psuedo, &hybrid}) {
        const Answer answer = Solve(*solver, At(0, 0, 0));
        EXPECT_FALSE(answer.isSolved);
        EXPECT_EQ(answer.values, Values{99});
        IkEndState target;
        EXPECT_EQ(solver->SolveIK(target, false, IkJoint::JtLimitAll).Size(), 0);
    }
}

TEST(PlainSolver, OfAnEmptyStreamMeasuresTheDefaultPose)
{
    IkStream stream;
    IkSolver solver(&stream);
    EXPECT_TRUE(Solve(solver, At(0, 0, 0)).isSolved);
    EXPECT_FALSE(Solve(solver, At(1, 0, 0)).isSolved);
    IkSolverPsuedoInverse moving(&stream);
    EXPECT_FALSE(Solve(moving, At(1, 0, 0)).isSolved);
}

TEST(PlainSolver, WithNothingSelectedSucceedsAtOnce)
{
    Gantry gantry;
    Recorder<IkSolver> solver(&gantry.stream);
    EXPECT_TRUE(Solve(solver, At(kNan, 500, 0, test::kNothing)).isSolved);
    EXPECT_EQ(solver.measured.size(), 1U);
}

TEST(PlainSolver, MeasuresTheToolInPartOrMachineCoordinates)
{
    // The part stands 10 along x, so the tool at 0 is at -10 in part coordinates.
    Gantry gantry;
    gantry.Body(gantry.part, IkXformMat::Translate(10, 0, 0));
    IkSolver solver(&gantry.stream);
    IkJtStateVector result;
    IkEndState inPart = At(-10, 0, 0);
    IkEndState inMachine = At(0, 0, 0);
    EXPECT_TRUE(solver.SolveIK(inPart, result, false, IkJoint::JtLimitAll, false));
    EXPECT_TRUE(solver.SolveIK(inMachine, result, true, IkJoint::JtLimitAll, false));
    EXPECT_FALSE(solver.SolveIK(inPart, result, true, IkJoint::JtLimitAll, false));
}

// --- the stages of a solve ---

TEST(SolverCalls, OfASolveComeInOrderWithTheirArguments)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Rotary(rig.tool, IkJoint::JtPrimRotZ).SetCurValue(0.5);
    rig.Connect();
    for (const bool flag : {false, true}) {
        Recorder<IkSolverPsuedoInverse> solver(&rig.stream);
        solver.SetMaxIterations(1);
        IkEndState target = At(0, 1, 0, kPositionAndZ); // out of reach
        IkJtStateVector result;
        solver.SolveIK(target, result, flag, IkJoint::JtLimitLinear, flag);
        const std::string f = flag ? "1" : "0";
        const std::string columns = flag ? "1" : "2"; // the rotary joint held
        EXPECT_EQ(solver.calls,
                  (Calls{"SolveIK " + f + "1" + f, "Initialize " + f, "Objective",
                         "PartialJacobian 0" + f, "Step 6x" + columns, "Svd", "Objective",
                         "PartialJacobian 1" + f, "Step 6x" + columns, "Svd"}));
        EXPECT_EQ(solver.targets, std::vector<const IkEndState*>(4, &target));
        ASSERT_EQ(solver.measured.size(), 2U);
        EXPECT_EQ(solver.measured[0].VectSize(), 6); // measured by the target's filter
        EXPECT_EQ(BitsOf(solver.measured[0].GetCompleteState()),
                  BitsOf(rig.stream.SolveFK(flag).GetCompleteState()));
    }
}

TEST(SolverCalls, OfTheShortFormGoThroughTheLongOne)
{
    Gantry gantry;
    Recorder<IkSolver> solver(&gantry.stream);
    IkEndState home = At(0, 0, 0);
    EXPECT_EQ(solver.SolveIK(home, true, IkJoint::JtLimitRotary).Size(), 3);
    EXPECT_EQ(solver.calls, (Calls{"SolveIK", "SolveIK 120", "Initialize 0", "Objective"}));
    solver.SetMaxIterations(0);
    IkEndState away = At(1, 0, 0);
    EXPECT_EQ(solver.SolveIK(away, false, IkJoint::JtLimitAll).Size(), 0);
}

TEST(SolverWithOneStageReplaced, StartsAsItsInitializeSays)
{
    Gantry gantry;
    test::WithInitialize<IkSolverPsuedoInverse> solver(&gantry.stream);
    solver.after = [](auto& self) {
        self.FreeJointIndices = {1};
        self.SolverJtStates.GetState(0).SetValue(7);
    };
    solver.SetMaxIterations(2);
    EXPECT_FALSE(Solve(solver, At(10, 20, 30)).isSolved);
    test::ExpectNear(solver.SolverJtStates.GetValVector(), {7, 20, 0}, 1e-9);
    EXPECT_TRUE(Solve(solver, At(7, 20, 0)).isSolved);
}

TEST(SolverWithOneStageReplaced, ConvergesAsItsObjectiveSays)
{
    Gantry gantry;
    test::WithObjective<IkSolver> solver(&gantry.stream);
    solver.replacement = [](double& error) {
        error = 1e-13;
        return false; // not looked at
    };
    EXPECT_TRUE(Solve(solver, At(500, 0, 0)).isSolved);
    EXPECT_EQ(solver.GetCurErrorval(), 1e-13);
}

TEST(SolverWithOneStageReplaced, StepsAsItsJacobianSays)
{
    // A slope twice the true one halves what is missing with each of two passes.
    Gantry gantry;
    test::WithJacobian<IkSolverPsuedoInverse> solver(&gantry.stream);
    solver.replacement = test::Diagonal({2, 2, 2});
    solver.SetMaxIterations(1);
    EXPECT_FALSE(Solve(solver, At(8, 16, -4)).isSolved);
    test::ExpectNear(solver.SolverJtStates.GetValVector(), {6, 12, -3}, 1e-12);
}

TEST(SolverWithOneStageReplaced, StepsAsItsStepSays)
{
    Gantry gantry;
    test::WithStep<Recorder<IkSolver>> solver(&gantry.stream);
    solver.replacement = MatrixOf({{1}, {0}, {-0.5}});
    EXPECT_EQ(Solve(solver, At(5, 0, -2.5)).values, (Values{5, 0, -2.5}));
    EXPECT_EQ(solver.measured.size(), 6U);
}

TEST(SolverWithOneStageReplaced, StepsAsItsDecompositionSays)
{
    // A decomposition that says diag(4, 4, 4): a quarter of the way each pass.
    Gantry gantry;
    test::WithSvd<IkSolverPsuedoInverse> solver(&gantry.stream);
    solver.u = solver.v = test::Diagonal({1, 1, 1});
    solver.s = TNT::Array1D<double>(3, 4.0);
    solver.rank = 3;
    solver.SetMaxIterations(0);
    Solve(solver, At(8, 16, -4));
    EXPECT_EQ(solver.SolverJtStates.GetValVector(), (Values{2, 4, -1}));
    solver.rank = 0;
    Solve(solver, At(8, 16, -4));
    EXPECT_EQ(solver.SolverJtStates.GetValVector(), (Values{0, 0, 0}));
}

TEST(SolverWithOneStageReplaced, TakesStepsOfAnyShape)
{
    // 1 is added where there is one entry a joint in a row or a column.
    struct Row
    {
        int rows, columns;
        bool counts;
    };
    for (const Row& row : std::vector<Row>{{0, 0, false},
                                           {3, 1, true},
                                           {1, 3, true},
                                           {2, 1, false},
                                           {4, 1, false},
                                           {40, 1, false},
                                           {3, 0, false},
                                           {0, 3, false},
                                           {1, 0, false},
                                           {3, 3, false}}) {
        Gantry gantry;
        test::WithStep<IkSolver> solver(&gantry.stream);
        solver.replacement = TNT::Array2D<double>(row.rows, row.columns, 1.0);
        solver.SetMaxIterations(1);
        EXPECT_FALSE(Solve(solver, At(500, 0, 0)).isSolved);
        EXPECT_EQ(solver.SolverJtStates.GetValVector(), Values(3, row.counts ? 2.0 : 0.0))
            << row.rows << "x" << row.columns;
    }
}

TEST(SolverWithOneStageReplaced, MayLoseItsStreamOnTheWay)
{
    Gantry gantry;
    test::WithObjective<IkSolverPsuedoInverse> solver(&gantry.stream);
    solver.replacement = [&solver](double&) {
        solver.SetStreamPtr(nullptr);
        return true;
    };
    EXPECT_FALSE(Solve(solver, At(500, 0, 0)).isSolved);
}

TEST(SolverWithOneStageReplaced, WithoutItsStreamItMeasuresTheDefaultPose)
{
    // The step takes the stream away. Before it the tool stands at the joints' 1, 0, 0.
    struct Leaving : IkSolverPsuedoInverse
    {
        using IkSolverPsuedoInverse::IkSolverPsuedoInverse;
        bool ObjectiveFcn(const IkEndState& current, const IkEndState&, std::vector<double>&,
                          double& error) override
        {
            measured.push_back(current.GetCompleteState()[0][3]);
            SetStreamPtr(nullptr);
            error = 1.0;
            return true;
        }
        Values measured;
    };
    Gantry gantry;
    IkJtStateVector start = gantry.stream.GetJointStates();
    start.GetState(0).SetValue(1);
    Leaving solver(&gantry.stream);
    ASSERT_TRUE(solver.SetStartingJtStates(&start));
    solver.SetMaxIterations(1);
    EXPECT_FALSE(Solve(solver, At(500, 0, 0)).isSolved);
    EXPECT_EQ(solver.measured, (Values{1, 0}));
}

// --- the budget ---

/// Steps by 1 along x a pass; `during` runs in every pass.
struct Walker : test::WithStep<IkSolver>
{
    explicit Walker(IkStream* stream) : WithStep(stream)
    {
        replacement = MatrixOf({{1}, {0}, {0}});
    }
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override
    {
        if (passes++ == changeAt) {
            SetMaxIterations(changeTo);
        }
        return IkSolver::ObjectiveFcn(current, target, components, error);
    }
    int passes{0};
    int changeAt{-1};
    int changeTo{0};
};

TEST(SolverBudget, IsReadAfreshInEveryPass)
{
    // X may reach 1.5: limited steps stop there, the last one goes 1 beyond.
    struct Row
    {
        int limit, changeAt, changeTo, passes;
        Values result; // 99 where untouched
    };
    for (const Row& row : std::vector<Row>{
             {0, -1, 0, 1, {}},    // the first pass is the last: to 1
             {1, -1, 0, 2, {2}},   // 1, then 2 unlimited
             {5, -1, 0, 6, {2.5}}, // 1, 1.5 four times, 2.5
             {-1, -1, 0, 0, {99}}, // no pass at all
             {-2147483647, -1, 0, 0, {99}},
             {2, 1, 8, 9, {2.5}}, // raised on the way
             {2, 2, 8, 9, {2.5}}, // raised in what would be the last pass
             {9, 4, 4, 5, {2.5}}, // lowered to the running pass: it is the last
             {9, 4, 5, 6, {2.5}},
             {9, 4, 3, 5, {99}}, // below the running pass
             {9, 4, -5, 5, {99}},
         }) {
        Gantry gantry;
        gantry.x.SetBounds(-1.5, 1.5);
        Walker solver(&gantry.stream);
        solver.SetMaxIterations(row.limit);
        solver.changeAt = row.changeAt;
        solver.changeTo = row.changeTo;
        const Answer answer = Solve(solver, At(500, 0, 0));
        EXPECT_FALSE(answer.isSolved);
        EXPECT_EQ(solver.passes, row.passes) << row.limit << " " << row.changeTo;
        EXPECT_EQ(answer.values, row.result) << row.limit << " " << row.changeTo;
    }
}

TEST(SolverBudget, OfNoneStillTestsTheStart)
{
    Gantry gantry;
    IkSolver solver(&gantry.stream);
    solver.SetMaxIterations(0);
    EXPECT_TRUE(Solve(solver, At(0, 0, 0)).isSolved);
    EXPECT_FALSE(Solve(solver, At(1, 0, 0)).isSolved);
    solver.SetMaxIterations(-1);
    EXPECT_FALSE(Solve(solver, At(0, 0, 0)).isSolved);
    EXPECT_EQ(solver.GetCurErrorval(), 1.0); // of the latest pass there was
    EXPECT_EQ(solver.SolverJtStates.Size(), 3);
}

} // namespace
