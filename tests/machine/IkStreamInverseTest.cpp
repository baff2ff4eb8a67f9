#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "IkStream.h"
#include "machine/Rig.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

namespace
{

using test::BitsOf;
using test::CountingBody;
using test::EndState;
using test::ExpectNear;
using test::Filter;
using test::kPositionAndZ;
using test::kPositionOnly;
using test::MatrixOf;
using test::PositionOf;
using test::Recording;
using test::Rig;
using test::Values;
using Flags = std::vector<bool>;
using Indices = std::vector<int>;
using Names = std::vector<std::wstring>;

constexpr double kOneDegree = 0.017453292519943278;
constexpr double kEighthTurn = 0.7853981633974475; // 45 * 3.14159265358979 / 180
constexpr double kFullTurn = 6.28318530717958;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTight = 1e-9;

// --- start of a solve ---

TEST(SolveStart, FillsTheWorkingFields)
{
    struct Row
    {
        bool lockRotary;
        Flags locked;
        Indices free;
    };
    // X Y Z C A: Y is locked by itself, C in the stream.
    const std::vector<Row> rows{
        {false, {false, true, false, true, false}, {0, 2, 4}},
        {true, {false, true, false, true, true}, {0, 2}},
    };
    const test::Fixture mill = test::HeadHeadMill();
    IkStream& stream = *mill.stream;
    mill.SetJoints({1, 2, 3, 0.4, 0.5});
    mill.Joint(L"Y").SetIsLocked(true);
    stream.SetLocalLock(&mill.Joint(L"C"), true);
    EXPECT_EQ(stream.MaxAngleStep, 2578.310078088707);
    for (const Row& row : rows) { // the second replaces what the first has left
        stream.InitializeIkSolver(row.lockRotary);
        EXPECT_EQ(stream.MaxAngleStep, kEighthTurn);
        EXPECT_EQ(stream.SolverJtStates.GetValVector(), (Values{1, 2, 3, 0.4, 0.5}));
        EXPECT_EQ(stream.SolverJtStates.GetNameVector(), (Names{L"X", L"Y", L"Z", L"C", L"A"}));
        EXPECT_EQ(stream.LockedFlags, row.locked);
        EXPECT_EQ(stream.RotaryFlags, (Flags{false, false, false, true, true}));
        EXPECT_EQ(stream.RotaryJointIndices, (Indices{3, 4}));
        EXPECT_EQ(stream.FreeJointIndices, row.free);
    }
}

TEST(SolveStart, CountsAJointUnknownToTheLocalLocksAsFree)
{
    Rig rig;
    rig.Connect();
    rig.Linear(rig.tool, IkJoint::JtPrimTransX); // after its chain was added
    rig.stream.InitializeIkSolver(false);
    EXPECT_EQ(rig.stream.LockedFlags, Flags{false});
    EXPECT_EQ(rig.stream.FreeJointIndices, Indices{0});
}

TEST(SolveStart, CountsAStateWithoutJointAsLocked)
{
    Rig rig;
    rig.Add<test::FalseJoint>(rig.tool);
    rig.Linear(rig.tool, IkJoint::JtPrimRotX); // rotary by its primitive
    rig.Connect();
    rig.stream.InitializeIkSolver(false);
    EXPECT_EQ(rig.stream.LockedFlags, (Flags{true, false}));
    EXPECT_EQ(rig.stream.RotaryFlags, (Flags{false, true}));
    EXPECT_EQ(rig.stream.FreeJointIndices, Indices{1});
}

// --- objective ---

/// A pose whose Z axis is any three numbers.
IkEndState WithZAxis(double x, double y, double z)
{
    IkEndState state;
    Values vector{0, 0, 0, x, y, z};
    EXPECT_TRUE(state.SetVector(6, vector.data()));
    return state;
}

double Objective(const IkEndState& current, const IkEndState& target)
{
    IkStream stream;
    std::vector<double> components{4, 5};
    double error = -1;
    EXPECT_TRUE(stream.ObjectiveFcn(current, target, components, error));
    EXPECT_EQ(components, (Values{4, 5})); // not touched
    return error;
}

TEST(Objective, SumsSquaredLengthsAndSquaredDegreesOfWhatTheFilterSelects)
{
    IkXformMat tilted = IkXformMat::Translate(1, -2, 2); // 9 away
    tilted.RotXThis(0.1);                                // Y and Z axis 0.1 off, X axis not
    const double tilt = 0.1 * 180 / 3.14159265358979;
    struct Row
    {
        Filter filter;
        double error;
    };
    const std::vector<Row> rows{
        {test::kNothing, 0},
        {kPositionOnly, 9},
        {kPositionAndZ, 9 + tilt * tilt},
        {{true, false, false, true}, 9},
        {{true, true, false, true}, 9 + tilt * tilt},
        {test::kEverything, 9 + 2 * tilt * tilt},
        // Without the position the directions come first.
        {{true, false, false, false}, 0},
        {{false, true, false, false}, tilt * tilt},
        {{false, false, true, false}, tilt * tilt},
        {{true, true, true, false}, 2 * tilt * tilt},
    };
    for (const Row& row : rows) {
        const IkEndState home = EndState(IkXformMat(), row.filter);
        const IkEndState away = EndState(tilted, row.filter);
        EXPECT_NEAR(Objective(home, away), row.error, kTight);
        EXPECT_NEAR(Objective(away, home), row.error, kTight);
    }
}

TEST(Objective, MeasuresAnglesInDegreesOfATruncatedPi)
{
    const IkEndState up = WithZAxis(0, 0, 1);
    const double right = std::acos(0.0) * 180 / 3.14159265358979;
    EXPECT_EQ(Objective(WithZAxis(1, 0, 0), up), right * right);
    EXPECT_NEAR(right * right, 8100, kTight);
    EXPECT_NEAR(Objective(WithZAxis(0, 0, -1), up), 32400, kTight); // opposite
    EXPECT_EQ(Objective(WithZAxis(0, 0, -2), up), 32400);           // cosine below -1
    EXPECT_EQ(Objective(WithZAxis(0, 0, 2), up), 0);                // cosine above 1
}

TEST(Objective, CountsDirectionsWithinItsToleranceAsMet)
{
    const IkEndState up = WithZAxis(0, 0, 1);
    EXPECT_EQ(Objective(WithZAxis(0, 0, 1), up), 0);
    EXPECT_EQ(Objective(WithZAxis(0, 0, 1 - 1.522e-10), up), 0);
    const double angle = std::acos(1 - 1.524e-10) * 180 / 3.14159265358979;
    EXPECT_EQ(Objective(WithZAxis(0, 0, 1 - 1.524e-10), up), angle * angle);
    EXPECT_GT(angle, 1e-3);
}

TEST(Objective, OfANanIsANan)
{
    EXPECT_TRUE(
        std::isnan(Objective(WithZAxis(0, 0, 1), EndState(IkXformMat::Translate(kNan, 0, 0)))));
    IkXformMat pose;
    pose[2][2] = kNan;
    EXPECT_TRUE(std::isnan(Objective(EndState(pose), IkEndState())));
}

TEST(Objective, OfDifferentFiltersThrowsAWideText)
{
    IkStream stream;
    std::vector<double> components;
    double error = 0;
    std::wstring thrown;
    try {
        stream.ObjectiveFcn(EndState(IkXformMat(), kPositionOnly), IkEndState(), components, error);
    } catch (const wchar_t* text) {
        thrown = text;
    }
    EXPECT_EQ(thrown, L"Filters of rhs and lhs must match.");
}

// --- solving ---

struct Options
{
    IkJoint::JointLimitTypes limits{IkJoint::JtLimitAll};
    bool toolOnly{false};
    bool lockRotary{false};
};

struct Answer
{
    bool isSolved;
    Values values;
    Names names;
};

/// Solves from the joints' current values, and checks what no solve may change.
Answer Solve(IkStream& stream, const IkEndState& target, Options options = {})
{
    IkJtStateVector result;
    result.AddState(IkJtState(static_cast<IkJoint*>(nullptr), 99)); // is replaced
    const auto jointsBefore = BitsOf(stream.GetJointStates());
    IkEndState given(target);
    const bool isSolved =
        stream.SolveIK(given, result, options.toolOnly, options.limits, options.lockRotary);
    EXPECT_EQ(BitsOf(stream.GetJointStates()), jointsBefore);
    EXPECT_EQ(BitsOf(given.GetCompleteState()), BitsOf(target.GetCompleteState()));
    EXPECT_EQ(given.VectSize(), target.VectSize());
    EXPECT_EQ(stream.MaxAngleStep, kEighthTurn);
    return {isSolved, result.GetValVector(), result.GetNameVector()};
}

IkEndState At(double x, double y, double z, Filter filter = kPositionOnly)
{
    return EndState(IkXformMat::Translate(x, y, z), filter);
}

/// Prisms along x, y and z and a tip that counts evaluations.
struct Gantry : testing::Test
{
    Gantry()
        : x(rig.Linear(rig.tool, IkJoint::JtPrimTransX)),
          y(rig.Linear(rig.tool, IkJoint::JtPrimTransY)),
          z(rig.Linear(rig.tool, IkJoint::JtPrimTransZ)), tip(rig.Add<CountingBody>(rig.tool))
    {
        x.SetName(L"X");
        y.SetName(L"Y");
        z.SetName(L"Z");
        rig.Connect();
    }

    Rig rig;
    IkJtPrism& x;
    IkJtPrism& y;
    IkJtPrism& z;
    CountingBody& tip;
};

/// The tip 100 out on an arm that turns about z.
struct Arm : testing::Test
{
    Arm() : c(rig.Rotary<Recording<IkJtRot>>(rig.tool, IkJoint::JtPrimRotZ))
    {
        rig.Body(rig.tool, IkXformMat::Translate(100, 0, 0));
        rig.Connect();
    }

    static IkEndState TipAt(double angle)
    {
        return At(100 * std::cos(angle), 100 * std::sin(angle), 0);
    }

    Rig rig;
    Recording<IkJtRot>& c;
};
constexpr double kArmTolerance = 1.1e-6; // a solved tip is at most 1e-4 off, over 100 [rad]

TEST_F(Gantry, AtTheTargetAlreadyEndsAfterOneEvaluation)
{
    const Values start{1.5, -2.25, 3.125};
    IkJtStateVector states = rig.stream.GetJointStates();
    states.SetValVector(start);
    states.CommitValuesToJoints();
    const Answer answer = Solve(rig.stream, At(1.5, -2.25, 3.125, kPositionAndZ));
    EXPECT_TRUE(answer.isSolved);
    EXPECT_EQ(answer.values, start);
    EXPECT_EQ(answer.names, (Names{L"X", L"Y", L"Z"}));
    EXPECT_EQ(tip.count, 1);
}

TEST_F(Gantry, WithinTheToleranceIsAtTheTarget)
{
    // A squared distance of 1e-8 at most: at 0.99e-4 the start is good enough, at 1.01e-4 not.
    EXPECT_EQ(Solve(rig.stream, At(0.99e-4, 0, 0)).values, (Values{0, 0, 0}));
    EXPECT_NEAR(Solve(rig.stream, At(1.01e-4, 0, 0)).values[0], 1.01e-4, 1e-12);
}

TEST_F(Gantry, WithNothingSelectedSucceedsAtOnce)
{
    const Answer answer = Solve(rig.stream, At(500, kNan, kInfinity, test::kNothing));
    EXPECT_TRUE(answer.isSolved);
    EXPECT_EQ(answer.values, (Values{0, 0, 0}));
    EXPECT_EQ(tip.count, 1);
}

TEST_F(Gantry, ReachesATargetInOneStep)
{
    const Answer answer = Solve(rig.stream, At(30, -40, 50, kPositionAndZ));
    EXPECT_TRUE(answer.isSolved);
    ExpectNear(answer.values, {30, -40, 50}, kTight);
    EXPECT_EQ(tip.count, 5); // pose and three columns, then the pose that is good enough
    EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), answer.values);
}

TEST_F(Gantry, GivesUpAfterSixtyOnePasses)
{
    // No prism tilts the tool: each of 61 passes evaluates the pose and three columns.
    IkXformMat tilted = IkXformMat::Translate(10, 0, 0);
    tilted.RotXThis(1);
    const Answer answer = Solve(rig.stream, EndState(tilted));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.values, Values{}); // everything ended within its bounds
    EXPECT_EQ(tip.count, 61 * (1 + 3));
    EXPECT_NEAR(rig.stream.SolverJtStates.GetState(0).GetValue(), 10, kTight);

    tip.count = 0;
    rig.stream.SetLocalLock(&x, true); // one column less
    Solve(rig.stream, EndState(tilted));
    EXPECT_EQ(tip.count, 61 * (1 + 2));
}

TEST(SolveOfAFiveAxisMachine, EvaluatesRotaryColumnsFromTheSecondPassOn)
{
    Rig rig;
    for (const auto primitive :
         {IkJoint::JtPrimTransX, IkJoint::JtPrimTransY, IkJoint::JtPrimTransZ}) {
        rig.Linear(rig.tool, primitive).SetBounds(-10, 10);
    }
    rig.Rotary(rig.tool, IkJoint::JtPrimRotZ);
    rig.Rotary(rig.tool, IkJoint::JtPrimRotX).SetCurValue(0.5);
    auto& tip = rig.Add<CountingBody>(rig.tool);
    auto& table = rig.Add<CountingBody>(rig.part);
    rig.Connect();
    const IkEndState target = At(5000, 0, 0, kPositionAndZ);
    EXPECT_FALSE(Solve(rig.stream, target).isSolved);
    const int evaluations = 61 + 3 + 60 * 5;
    EXPECT_EQ(tip.count, evaluations);
    EXPECT_EQ(table.count, evaluations);

    tip.count = table.count = 0;
    EXPECT_FALSE(Solve(rig.stream, target, {IkJoint::JtLimitAll, true, false}).isSolved);
    EXPECT_EQ(tip.count, evaluations);
    EXPECT_EQ(table.count, 0); // the part is not asked where only the tool counts

    tip.count = 0;
    EXPECT_FALSE(Solve(rig.stream, target, {IkJoint::JtLimitAll, false, true}).isSolved);
    EXPECT_EQ(tip.count, 61 * (1 + 3)); // rotary joints are not free at all
}

TEST_F(Gantry, LeavesTheLastStepUnlimitedAndListsWhatItTookOutOfBounds)
{
    x.SetBounds(-400, 400);
    const Answer answer = Solve(rig.stream, At(1000, 20, 0));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.names, Names{L"X"});
    ExpectNear(answer.values, {1000}, kTight); // at the target, but no longer tested
    ExpectNear(rig.stream.SolverJtStates.GetValVector(), {1000, 20, 0}, kTight);
}

TEST_F(Gantry, RespectsLinearBoundsOnlyWhereAsked)
{
    x.SetBounds(-5, 5);
    for (const auto& [limits, isSolved] :
         {std::pair(IkJoint::JtLimitNone, true), std::pair(IkJoint::JtLimitLinear, false),
          std::pair(IkJoint::JtLimitRotary, true), std::pair(IkJoint::JtLimitAll, false)}) {
        const Answer answer = Solve(rig.stream, At(20, 0, 0), {limits});
        EXPECT_EQ(answer.isSolved, isSolved) << limits;
        EXPECT_EQ(answer.values.size(), isSolved ? 3U : 1U) << limits;
        EXPECT_NEAR(answer.values[0], 20, kTight) << limits;
    }
}

TEST_F(Arm, RespectsRotaryBoundsOnlyWhereAsked)
{
    c.SetBounds(-0.5, 0.5);
    for (const auto& [limits, isSolved] :
         {std::pair(IkJoint::JtLimitNone, true), std::pair(IkJoint::JtLimitLinear, true),
          std::pair(IkJoint::JtLimitRotary, false), std::pair(IkJoint::JtLimitAll, false)}) {
        const Answer answer = Solve(rig.stream, TipAt(1.2), {limits});
        EXPECT_EQ(answer.isSolved, isSolved) << limits;
        ASSERT_EQ(answer.values.size(), 1U);
        // The last step starts from the bound, about the sine of what is missing.
        EXPECT_NEAR(answer.values[0], isSolved ? 1.2 : 0.5 + std::sin(0.7),
                    isSolved ? kArmTolerance : 0.01)
            << limits;
    }
}

TEST_F(Arm, WrapsAJointOverAFullTurn)
{
    struct Row
    {
        double low, start, goal;
        IkJoint::JointLimitTypes limits;
        double reached;
    };
    const std::vector<Row> rows{
        {-kFullTurn, 6.2, 6.5, IkJoint::JtLimitAll, 6.5 - kFullTurn},
        {-kFullTurn, 6.2, 6.5, IkJoint::JtLimitNone, 6.5},
        {-kFullTurn, -6.2, -6.5, IkJoint::JtLimitAll, kFullTurn - (6.5 - kFullTurn)},
        {0, 0.1, -0.3, IkJoint::JtLimitRotary, kFullTurn - 0.3},
        {0, 0.1, -0.3, IkJoint::JtLimitLinear, -0.3},
    };
    for (const Row& row : rows) {
        c.SetBounds(row.low, kFullTurn);
        c.SetCurValue(row.start);
        const Answer answer = Solve(rig.stream, TipAt(row.goal), {row.limits});
        EXPECT_TRUE(answer.isSolved);
        ExpectNear(answer.values, {row.reached}, kArmTolerance);
    }
}

TEST_F(Arm, TurnsByAnEighthAtMost)
{
    Solve(rig.stream, TipAt(1.5)); // the first step would be sin(1.5), nearly 1
    ASSERT_GE(c.asked.size(), 4U);
    // The first pass only looks; the second differentiates and steps; the third starts there.
    EXPECT_EQ(Values(c.asked.begin(), c.asked.begin() + 4),
              (Values{0, 0, kOneDegree, kEighthTurn}));
}

TEST(SolvePass, TheFirstMovesOnlyLinearJoints)
{
    Rig rig;
    auto& y = rig.Linear<Recording<IkJtPrism>>(rig.tool, IkJoint::JtPrimTransY);
    auto& c = rig.Rotary<Recording<IkJtRot>>(rig.tool, IkJoint::JtPrimRotZ);
    rig.Body(rig.tool, IkXformMat::Translate(100, 0, 0));
    rig.Connect();
    Solve(rig.stream, At(95, 30, 0));
    // Pose and one column, then pose and two columns: the turn rests until the second pass has
    // differentiated it, while the prism has made its step of 30 by then.
    ASSERT_GE(c.asked.size(), 5U);
    EXPECT_EQ(Values(c.asked.begin(), c.asked.begin() + 5), (Values{0, 0, 0, 0, kOneDegree}));
    ExpectNear(Values(y.asked.begin(), y.asked.begin() + 3), {0, 0.1, 30}, kTight);
}

TEST(SolveLocks, HoldAJointWhoeverLocksIt)
{
    for (const bool isOwn : {true, false}) {
        Rig rig;
        auto& held = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
        rig.Linear(rig.tool, IkJoint::JtPrimTransX);
        rig.Connect();
        held.SetCurValue(3);
        // Both free, each takes half of what is missing.
        ExpectNear(Solve(rig.stream, At(13, 0, 0)).values, {8, 5}, kTight);
        isOwn ? held.SetIsLocked(true) : void(rig.stream.SetLocalLock(&held, true));
        const Answer answer = Solve(rig.stream, At(13, 0, 0));
        EXPECT_TRUE(answer.isSolved);
        ExpectNear(answer.values, {3, 10}, kTight); // the held one is listed all the same
        EXPECT_EQ(answer.values[0], 3);
    }
}

TEST(SolveLocks, OfAllRotaryJointsLeaveThemAtTheirStartValues)
{
    const test::Fixture mill = test::HeadHeadMill();
    mill.SetJoints({0, 0, 0, 0.3, 0.4});
    IkXformMat pose = mill.stream->SolveFK(false).GetCompleteState();
    pose[0][3] += 25;
    const Options locked{IkJoint::JtLimitAll, false, true};
    const Answer answer = Solve(*mill.stream, EndState(pose), locked);
    EXPECT_TRUE(answer.isSolved);
    ExpectNear(answer.values, {25, 0, 0, 0.3, 0.4}, kTight);
    EXPECT_EQ(Values(answer.values.begin() + 3, answer.values.end()), (Values{0.3, 0.4}));

    pose.RotXThis(0.2);
    EXPECT_FALSE(Solve(*mill.stream, EndState(pose), locked).isSolved);
    EXPECT_TRUE(Solve(*mill.stream, EndState(pose)).isSolved);
}

TEST(SolveLocks, OfEveryJointSolveOnlyWhatIsReachedAlready)
{
    Rig rig;
    auto& x = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Rotary(rig.tool, IkJoint::JtPrimRotZ).SetIsLocked(true);
    x.SetIsLocked(true);
    x.SetCurValue(7);
    rig.Connect();
    EXPECT_EQ(Solve(rig.stream, At(7, 0, 0)).values, (Values{7, 0}));
    Answer answer = Solve(rig.stream, At(8, 0, 0));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.values, Values{});
    x.SetBounds(-1, 1); // out of them all along
    answer = Solve(rig.stream, At(8, 0, 0));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.values, Values{7});
}

TEST(SolveToolOnly, TakesTheTargetInMachineCoordinates)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Linear(rig.part, IkJoint::JtPrimTransX).SetCurValue(2);
    rig.Connect();
    // The pose starts at -2 in part coordinates and at 0 in the machine's.
    ExpectNear(Solve(rig.stream, At(10, 0, 0)).values, {6, -4}, kTight);
    const Answer answer = Solve(rig.stream, At(10, 0, 0), {IkJoint::JtLimitAll, true, false});
    ExpectNear(answer.values, {10, 2}, kTight);
    EXPECT_EQ(answer.values[1], 2);
}

TEST(SolveOrientation, WorksWithThePositionNotSelected)
{
    Rig rig;
    auto& c = rig.Rotary(rig.tool, IkJoint::JtPrimRotZ);
    auto& a = rig.Rotary(rig.tool, IkJoint::JtPrimRotX);
    rig.Connect();
    c.SetCurValue(0.3);
    a.SetCurValue(0.8);
    IkXformMat pose = rig.stream.SolveFK(false).GetCompleteState();
    pose.TranslateThis(1000, 2000, 3000); // not looked at
    c.SetCurValue(0);
    a.SetCurValue(0.5);
    for (const Filter& filter :
         {Filter{false, false, true, false}, Filter{true, true, true, false}}) {
        const Answer answer = Solve(rig.stream, EndState(pose, filter));
        EXPECT_TRUE(answer.isSolved);
        // Directions are met to 1e-4 degrees.
        ExpectNear(answer.values, {0.3, 0.8}, 1e-5);
    }
}

TEST(SolveOfEveryFixture, FindsANearTarget)
{
    struct Row
    {
        test::FixtureMaker make;
        Values start, goal;
        Filter filter;
    };
    const std::vector<Row> rows{
        {test::ThreeAxisMill, {0, 0, 0}, {100, -200, -300}, kPositionAndZ},
        {test::TableTableMill, {0, 0, 0, -0.5, 0.3}, {80, -60, 20, -0.9, 0.7}, kPositionAndZ},
        {test::HeadTableMill, {0, 0, 0.5, 0, 0.3}, {60, -50, 0.8, 40, 0.6}, kPositionAndZ},
        {test::HeadHeadMill, {0, 0, 0, 0.3, 0.5}, {90, 70, -50, 0.6, 0.8}, kPositionAndZ},
        {test::SixAxisArm, {0, 0, 0, 0.2, 0.4, 0}, {.2, .1, -.1, .3, .5, .2}, test::kEverything},
        {test::MillTurn, {0, 100, 0, 0.5, 0.2}, {50, 180, 20, 0.8, 0.5}, kPositionAndZ},
    };
    for (const Row& row : rows) {
        const test::Fixture fixture = row.make();
        SCOPED_TRACE(fixture.name);
        IkJtStateVector goal = fixture.States(row.goal);
        const IkEndState target = EndState(
            fixture.stream->SolveFK(goal, false, nullptr, nullptr, false).GetCompleteState(),
            row.filter);
        fixture.SetJoints(row.start);
        const Answer answer = Solve(*fixture.stream, target);
        ASSERT_TRUE(answer.isSolved);
        IkJtStateVector solved = fixture.States(answer.values);
        const IkXformMat reached =
            fixture.stream->SolveFK(solved, false, nullptr, nullptr, false).GetCompleteState();
        // Met to 1e-4 of length and 1e-4 degrees.
        ExpectNear(PositionOf(reached), PositionOf(target.GetCompleteState()), 1e-4);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(reached[i][2], target.GetCompleteState()[i][2], 2e-6);
        }
    }
}

TEST_F(Arm, SolvesAlikeWheneverAsked)
{
    const Answer first = Solve(rig.stream, TipAt(1.1));
    Solve(rig.stream, At(0, 0, 500)); // fails and leaves its working fields behind
    IkEndState target = TipAt(1.1);
    rig.stream.TraceDump();
    EXPECT_EQ(Solve(rig.stream, target).values, first.values);
    IkStream copy(rig.stream);
    EXPECT_EQ(Solve(copy, target).values, first.values);
}

TEST_F(Gantry, ReturnsTheResultInTheShortForm)
{
    x.SetBounds(-5, 5);
    IkEndState target = At(20, 1, 0);
    const IkJtStateVector solved = rig.stream.SolveIK(target, false, IkJoint::JtLimitNone);
    ExpectNear(solved.GetValVector(), {20, 1, 0}, kTight);
    const IkJtStateVector failed = rig.stream.SolveIK(target, false, IkJoint::JtLimitAll);
    EXPECT_EQ(failed.GetNameVector(), Names{L"X"}); // fewer than the stream has: a failure
    ExpectNear(failed.GetValVector(), {20}, kTight);
}

TEST(SolveShortForm, LeavesRotaryJointsFree)
{
    Rig rig;
    rig.Rotary(rig.tool, IkJoint::JtPrimRotZ);
    rig.Body(rig.tool, IkXformMat::Translate(100, 0, 0));
    rig.Connect();
    IkEndState target = Arm::TipAt(0.5);
    ExpectNear(rig.stream.SolveIK(target, false, IkJoint::JtLimitAll).GetValVector(), {0.5},
               kArmTolerance);
}

// --- special machines and values ---

TEST(SolveOfHostNodes, MovesAJointOfTheHostsOwnKind)
{
    Rig rig;
    rig.Add<test::FunctionJoint>(rig.tool,
                                 [](double v) { return IkXformMat::Translate(2 * v, v, 0); });
    rig.Connect();
    const Answer answer = Solve(rig.stream, At(10, 5, 0));
    EXPECT_TRUE(answer.isSolved);
    ExpectNear(answer.values, {5}, kTight);
}

TEST(SolveOfHostNodes, LeavesAStateWithoutJointAlone)
{
    Rig rig;
    rig.Add<test::FalseJoint>(rig.tool);
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    ExpectNear(Solve(rig.stream, At(10, 0, 0)).values, {0, 10}, kTight);
    EXPECT_FALSE(Solve(rig.stream, At(10, 5, 0)).isSolved);
}

TEST(SolveOfFurtherChains, LeavesTheirJointsWhereTheyAre)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    IkChain third;
    rig.Linear(third, IkJoint::JtPrimTransX).SetCurValue(4);
    rig.Connect();
    rig.stream.AddChain(&third);
    ExpectNear(Solve(rig.stream, At(10, 0, 0)).values, {10, 4}, kTight);
}

TEST(SolveOfAChainThatGrew, MovesAJointUnknownToTheLocalLocks)
{
    Rig rig;
    rig.Connect();
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    ExpectNear(Solve(rig.stream, At(10, 0, 0)).values, {10}, kTight);
}

TEST(SolveWithoutJoints, StandsAtTheDefaultPose)
{
    Rig bodies;
    bodies.Body(bodies.tool, IkXformMat::Translate(10, 0, 0));
    bodies.Connect();
    IkStream empty;
    for (IkStream* stream : {&empty, &bodies.stream}) {
        EXPECT_TRUE(Solve(*stream, At(0, 0, 0, kPositionAndZ)).isSolved);
        const Answer answer = Solve(*stream, At(10, 0, 0));
        EXPECT_FALSE(answer.isSolved);
        EXPECT_EQ(answer.values, Values{});
    }
}

TEST(SolveOfManyJoints, StepsThemAll)
{
    Rig rig;
    Values expected;
    for (int i = 0; i < 20; ++i) { // 8 along x, 6 along y, 6 along z share the way evenly
        const int axis = i < 8 ? 0 : i < 14 ? 1 : 2;
        rig.Linear(rig.tool, static_cast<IkJoint::JtPrimitives>(IkJoint::JtPrimTransX + axis));
        expected.push_back(Values{80. / 8, 60. / 6, 30. / 6}[static_cast<std::size_t>(axis)]);
    }
    rig.Connect();
    const Answer answer = Solve(rig.stream, At(80, 60, 30));
    EXPECT_TRUE(answer.isSolved);
    ExpectNear(answer.values, expected, kTight);
    IkXformMat tilted;
    tilted.RotXThis(1);
    EXPECT_FALSE(Solve(rig.stream, EndState(tilted)).isSolved);
}

TEST(SolveWithinInvertedBounds, FailsAndListsEveryPrismWithItsDefaultRange)
{
    Rig rig;
    for (const auto primitive : {IkJoint::JtPrimTransX, IkJoint::JtPrimTransY}) {
        rig.Linear(rig.tool, primitive).SetBounds(1, -1);
    }
    rig.Connect();
    // Held at -1, the last step goes to 5; y need not move, and 0 lies below its low bound of 1.
    const Answer answer = Solve(rig.stream, At(5, 0, 0));
    EXPECT_FALSE(answer.isSolved);
    ExpectNear(answer.values, {5, 0}, kTight);
    EXPECT_TRUE(Solve(rig.stream, At(5, 0, 0), {IkJoint::JtLimitNone}).isSolved);
}

TEST_F(Arm, WithinInvertedBoundsFailsWhereTheyCount)
{
    c.SetBounds(1, -1);
    const Answer answer = Solve(rig.stream, TipAt(0.5));
    EXPECT_FALSE(answer.isSolved);
    ExpectNear(answer.values, {-1 + kEighthTurn}, kTight); // a last, unlimited turn from -1
    EXPECT_TRUE(Solve(rig.stream, TipAt(0.5), {IkJoint::JtLimitLinear}).isSolved);
}

TEST(SolveTowardsNoNumber, FailsWithoutCrashOrHang)
{
    for (const double bad : {kNan, kInfinity, -kInfinity}) {
        for (const bool isTurned : {false, true}) {
            SCOPED_TRACE(testing::Message() << bad << isTurned);
            const test::Fixture mill = test::TableTableMill();
            IkXformMat pose = IkXformMat::Translate(0, 0, 300);
            pose[isTurned ? 1 : 0][isTurned ? 2 : 3] = bad;
            for (const auto limits : {IkJoint::JtLimitNone, IkJoint::JtLimitAll}) {
                EXPECT_FALSE(Solve(*mill.stream, EndState(pose), {limits}).isSolved);
            }
        }
    }
}

TEST_F(Gantry, TowardsAHugeTargetFails)
{
    const Answer answer = Solve(rig.stream, At(1e300, 0, 0));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.names, Names{L"X"});
    EXPECT_NEAR(answer.values[0] / 1e300, 1, kTight);
}

TEST_F(Gantry, FromNoNumberFailsAndListsOnlyWhatIsBeyondABound)
{
    x.SetCurValue(kNan);
    Answer answer = Solve(rig.stream, At(1, 2, 3));
    EXPECT_FALSE(answer.isSolved);
    EXPECT_EQ(answer.names, Names{}); // a NaN lies neither above nor below
    for (const double beyond : {kInfinity, -kInfinity}) {
        x.SetCurValue(beyond);
        answer = Solve(rig.stream, At(1, 2, 3));
        EXPECT_FALSE(answer.isSolved);
        EXPECT_EQ(answer.names, Names{L"X"});
        EXPECT_EQ(answer.values, Values{beyond});
    }
}

// --- clamp search ---

TEST(ClampSearch, LocksFreeJointsThatAStepWouldTakeOutOfBounds)
{
    struct Row
    {
        double step;
        bool isLocked;
    };
    const std::vector<Row> rows{
        {5, false},     // to the bound exactly
        {5.001, true},  //
        {-15, false},   //
        {-15.5, true},  //
        {9e-11, false}, //
        {1e-10, false}, // big enough to look at, and within
        {kNan, false},  //
        {kInfinity, true},
    };
    for (const Row& row : rows) {
        Rig rig;
        for (int i = 0; i < 3; ++i) {
            auto& joint = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
            joint.SetBounds(-10, 10);
            joint.SetCurValue(5);
        }
        rig.Connect();
        rig.stream.InitializeIkSolver(false);
        auto step = MatrixOf({{0}, {row.step}, {0}});
        rig.stream.JointClampSearch(step);
        EXPECT_EQ(rig.stream.LockedFlags, (Flags{false, row.isLocked, false})) << row.step;
        EXPECT_EQ(rig.stream.FreeJointIndices, row.isLocked ? (Indices{0, 2}) : (Indices{0, 1, 2}))
            << row.step;
        EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), (Values{5, 5, 5}));
    }
}

TEST(ClampSearch, IgnoresTinyStepsOfAJointOutOfBounds)
{
    for (const auto& [step, isLocked] :
         {std::pair(9.9e-11, false), std::pair(1e-10, true), std::pair(-1e-10, true)}) {
        Rig rig;
        auto& joint = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
        joint.SetBounds(-10, 10);
        joint.SetCurValue(20);
        rig.Connect();
        rig.stream.InitializeIkSolver(false);
        auto column = MatrixOf({{step}});
        rig.stream.JointClampSearch(column);
        EXPECT_EQ(rig.stream.LockedFlags, Flags{isLocked}) << step;
    }
}

TEST(ClampSearch, PassesOverLockedJointsAndRemovesOnlyTheFirstMention)
{
    Rig rig;
    auto& held = rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    held.SetIsLocked(true);
    rig.stream.InitializeIkSolver(false);
    rig.stream.FreeJointIndices = {0, 1, 1};
    auto step = MatrixOf({{5000}, {5000}});
    rig.stream.JointClampSearch(step);
    EXPECT_EQ(rig.stream.LockedFlags, (Flags{true, true}));
    EXPECT_EQ(rig.stream.FreeJointIndices, (Indices{0, 1}));
}

TEST(ClampSearch, TakesAStepThatIsTooShort)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    rig.stream.InitializeIkSolver(false);
    for (auto step : {TNT::Array2D<double>(), MatrixOf({{5000}}), TNT::Array2D<double>(2, 0)}) {
        rig.stream.JointClampSearch(step);
    }
    EXPECT_EQ(rig.stream.LockedFlags, (Flags{true, false}));
}

TEST(SolverStatus, DumpsWithoutATrace)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Add<test::FalseJoint>(rig.tool);
    rig.Connect();
    rig.stream.InitializeIkSolver(false);
    rig.stream.SolverStatusTraceDump();
    EXPECT_EQ(rig.stream.LockedFlags, (Flags{false, true}));
    EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), (Values{0, 0}));
}

} // namespace
