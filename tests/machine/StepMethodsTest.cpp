#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "IkStream.h"
#include "machine/Rig.h"
#include "support/Bits.h"

namespace
{

using test::BitsOf;
using test::ColumnOf;
using test::Diagonal;
using test::EndState;
using test::ExpectNear;
using test::MatrixOf;
using test::Rig;
using test::Values;
using Matrix = TNT::Array2D<double>;
using Method = Matrix (IkStream::*)(const IkEndState&, const IkEndState&, Matrix&);

constexpr double kEighthTurn = 0.7853981633974475; // 45 * 3.14159265358979 / 180 [rad]
constexpr double kRounding = 1e-13;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

const Method kPseudo = &IkStream::CalcDThetaPsuedoInverse;
const Method kDamped = &IkStream::CalcDThetaDLS;
const Method kPseudoPartial = &IkStream::CalcDThetaPsuedoInversePartial;
const Method kDampedPartial = &IkStream::CalcDThetaDLSPartial;
const Method kSelective = &IkStream::CalcDThetaSDLSPartial;
const std::vector<Method> kFullMethods{kPseudo, kDamped};
const std::vector<Method> kPartialMethods{kPseudoPartial, kDampedPartial, kSelective};
const std::vector<Method> kAllMethods{kPseudo, kDamped, kPseudoPartial, kDampedPartial, kSelective};

/// A stream of linear (L) and rotary (R) joints, ready to step; those in `locked` are not free.
struct StepRig : Rig
{
    explicit StepRig(const std::string& kinds, const std::vector<std::size_t>& locked = {})
    {
        for (const char kind : kinds) {
            if (kind == 'L') {
                joints.push_back(&Linear(tool, IkJoint::JtPrimTransX));
            } else {
                joints.push_back(&Rotary(tool, IkJoint::JtPrimRotZ));
            }
        }
        for (const std::size_t index : locked) {
            joints[index]->SetIsLocked(true);
        }
        Connect();
        stream.InitializeIkSolver(false);
    }

    Matrix StepOf(Method method, Matrix jacobian, const Values& error)
    {
        const IkEndState target =
            EndState(IkXformMat::Translate(error[0], error[1], error[2]), test::kPositionOnly);
        const auto before = BitsOf(jacobian);
        Matrix step = std::invoke(method, stream, target,
                                  EndState(IkXformMat(), test::kPositionOnly), jacobian);
        EXPECT_EQ(BitsOf(jacobian), before); // read only
        EXPECT_EQ(step.dim2(), 1);
        return step;
    }

    Values Step(Method method, const Matrix& jacobian, const Values& error)
    {
        return ColumnOf(StepOf(method, jacobian, error));
    }

    std::vector<IkJoint*> joints;
};

/// w times e for one damped term with singular value s.
double Damped(double s, double e)
{
    return s / (s * s + 1.21) * e;
}

TEST(Step, IsTheErrorOverTheSingularValues)
{
    StepRig rig("LLL");
    const Matrix jacobian = Diagonal({2, 4, 0.5});
    const Values error{2, -8, 1};
    const Values divided{1, -2, 2};
    const Values damped{Damped(2, 2), Damped(4, -8), Damped(0.5, 1)};
    ExpectNear(rig.Step(kPseudo, jacobian, error), divided, kRounding);
    ExpectNear(rig.Step(kPseudoPartial, jacobian, error), divided, kRounding);
    ExpectNear(rig.Step(kSelective, jacobian, error), divided, kRounding);
    ExpectNear(rig.Step(kDamped, jacobian, error), damped, kRounding);
}

TEST(Step, LimitsRotaryJointsAndNeverLinearOnes)
{
    StepRig rig("RRL");
    const Matrix jacobian = Diagonal({1, 1, 1});
    for (const auto& [turn, limited] :
         {std::pair(1.0, kEighthTurn), std::pair(-1.0, -kEighthTurn),
          std::pair(kEighthTurn, kEighthTurn), std::pair(0.75, 0.75), std::pair(-0.75, -0.75)}) {
        const Values error{turn, -turn, 50};
        const Values expected{limited, -limited, 50};
        EXPECT_EQ(rig.Step(kPseudo, jacobian, error), expected);
        EXPECT_EQ(rig.Step(kPseudoPartial, jacobian, error), expected);
        // One over 1 + 1.21 is left of each.
        ExpectNear(rig.Step(kDamped, jacobian, {2.21 * turn, -2.21 * turn, 2.21 * 50}), expected,
                   kRounding);
    }
    EXPECT_EQ(rig.Step(kDamped, jacobian, {2.5, -2.5, 0}), (Values{kEighthTurn, -kEighthTurn, 0}));
}

TEST(Step, TakesItsLimitFromTheStreamInPartAndFromAConstantInFull)
{
    StepRig rig("RRL");
    rig.stream.MaxAngleStep = 0.1;
    const Matrix jacobian = Diagonal({1, 1, 1});
    const Values error{3, -0.5, 50};
    EXPECT_EQ(rig.Step(kPseudoPartial, jacobian, error), (Values{0.1, -0.1, 50}));
    EXPECT_EQ(rig.Step(kPseudo, jacobian, error), (Values{kEighthTurn, -0.5, 50}));
    EXPECT_EQ(rig.Step(kDamped, jacobian, error)[0], kEighthTurn);
    EXPECT_EQ(rig.Step(kDampedPartial, jacobian, error)[0], 0.1);
}

TEST(Step, PassesANanThroughTheLimit)
{
    StepRig rig("RLR", {2});
    const Matrix full = Diagonal({1, 1, 1});
    const Matrix partial = MatrixOf({{1, 0}, {0, 1}, {0, 0}});
    for (const Method method : kFullMethods) {
        const Values step = rig.Step(method, full, {kNan, 0, 0});
        EXPECT_TRUE(std::isnan(step[0]) && std::isnan(step[1]));
        EXPECT_EQ(step[2], 0); // locked
    }
    const Values step = rig.Step(kPseudoPartial, partial, {kNan, 0, 0});
    EXPECT_TRUE(std::isnan(step[0]) && std::isnan(step[1]));
    EXPECT_EQ(step[2], 0);
}

// --- singular values left out ---

TEST(Step, SkipsASingularValueAtTheCutOffInThePseudoInverseOnly)
{
    const double atCutOff = 1e-10;
    const double above = std::nextafter(atCutOff, 1);
    const double below = std::nextafter(atCutOff, 0);
    struct Row
    {
        Method method;
        double singular;
        bool isUsed;
    };
    const std::vector<Row> rows{
        {kPseudo, atCutOff, false},        {kPseudo, above, true},
        {kPseudoPartial, atCutOff, false}, {kPseudoPartial, above, true},
        {kSelective, atCutOff, true},      {kSelective, below, false},
    };
    StepRig rig("LLL");
    for (const Row& row : rows) {
        Matrix jacobian = Diagonal({1, row.singular, 1});
        Matrix u;
        Matrix v;
        TNT::Array1D<double> s;
        int rank = 0;
        rig.stream.SafeSVDCalc(jacobian, u, v, s, rank);
        ASSERT_EQ(s[2], row.singular);
        ASSERT_EQ(rank, 3);
        const Values step = rig.Step(row.method, jacobian, {7, 5 * row.singular, 9});
        ExpectNear(step, {7, row.isUsed ? 5.0 : 0.0, 9}, kRounding);
    }
    // Damping needs no cut-off: 1e-10 / 1.21 is left of the error.
    const Matrix jacobian = Diagonal({1, atCutOff, 1});
    ExpectNear(rig.Step(kDamped, jacobian, {0, 1e10, 0}), {0, 1 / 1.21, 0}, kRounding);
}

TEST(Step, LeavesOutWhatIsBeyondTheRank)
{
    StepRig rig("LLL");
    // s = 2 with u = v = (1, 1, 0) / sqrt(2): of the error (2, 4, 9), v u' e = (3, 3, 0)
    const Matrix jacobian = MatrixOf({{1, 1, 0}, {1, 1, 0}, {0, 0, 0}});
    const Values error{2, 4, 9};
    for (const Method method : {kPseudo, kPseudoPartial, kSelective}) {
        ExpectNear(rig.Step(method, jacobian, error), {1.5, 1.5, 0}, kRounding);
    }
    ExpectNear(rig.Step(kDamped, jacobian, error), {Damped(2, 3), Damped(2, 3), 0}, kRounding);
    for (const Method method : kAllMethods) {
        EXPECT_EQ(rig.Step(method, Matrix(3, 3, 0.0), error), (Values{0, 0, 0}));
    }
    // 1e-9 is beyond every cut-off, but negligible beside 1e8: 3 * 1e8 * 2.2e-16 is more.
    for (const Method method : {kPseudo, kPseudoPartial, kSelective, kDamped}) {
        const Values step = rig.Step(method, Diagonal({1e8, 1e-9, 1e8}), {3e8, 1e9, 4e8});
        ExpectNear(step, {3, 0, 4}, kRounding);
    }
}

// --- more joints than error components ---

TEST(Step, OfAWideJacobianIsTheSmallestThatDoes)
{
    StepRig rig("LLLL");
    for (const double scale : {1.0, 0.1, 1e-6}) {
        const Matrix jacobian =
            MatrixOf({{scale, 0, 0, scale}, {0, scale, 0, 0}, {0, 0, scale, 0}});
        const Values error{2 * scale, 3 * scale, 4 * scale};
        // J' (J J')^-1 e with J J' = scale^2 diag(2, 1, 1)
        for (const Method method : {kPseudo, kPseudoPartial, kSelective}) {
            ExpectNear(rig.Step(method, jacobian, error), {1, 3, 4, 1}, kRounding);
        }
    }
    // J' (J J' + 1.21)^-1 e
    ExpectNear(rig.Step(kDamped, MatrixOf({{1, 0, 0, 1}, {0, 1, 0, 0}, {0, 0, 1, 0}}), {2, 3, 4}),
               {2 / 3.21, 3 / 2.21, 4 / 2.21, 2 / 3.21}, kRounding);
}

TEST(Step, OfAWideJacobianIsWhatTheDecompositionOfItsTransposeGives)
{
    StepRig rig("LLLLL");
    const std::vector<std::vector<Values>> transposes{
        {{1, 0, 2}, {0, 1, 0}, {3, 0, 1}, {0, 2, 0}, {1, 1, 1}},
        {{.5, .1, 0}, {.2, .4, .1}, {0, .3, .6}, {.1, 0, .2}, {.7, .1, .3}},
        {{1, 2, 0}, {2, 4, 0}, {3, 6, 0}, {0, 0, .5}, {0, 0, .25}}, // rank 2
    };
    const Values error{1, -2, 0.5};
    for (const auto& rows : transposes) {
        Matrix tall = MatrixOf(rows);
        Matrix wide(3, 5);
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 5; ++j) {
                wide[i][j] = tall[j][i];
            }
        }
        Matrix u;
        Matrix v;
        TNT::Array1D<double> s;
        int rank = 0;
        rig.stream.SafeSVDCalc(tall, u, v, s, rank); // tall = u s v', so wide = v s u'
        Values expected(5, 0.0);
        for (int i = 0; i < rank; ++i) {
            const double along = v[0][i] * error[0] + v[1][i] * error[1] + v[2][i] * error[2];
            for (int k = 0; k < 5; ++k) {
                expected[static_cast<std::size_t>(k)] += u[k][i] * along / s[i];
            }
        }
        ExpectNear(rig.Step(kPseudo, wide, error), expected, kRounding);
        ExpectNear(rig.Step(kPseudoPartial, wide, error), expected, kRounding);
    }
}

// --- the full methods' joints ---

TEST(FullStep, StopsJointsByTheirOwnLockAndIgnoresTheStreams)
{
    StepRig rig("LRL", {0});
    rig.stream.SetLocalLock(rig.joints[1], true);
    rig.stream.SetLocalLock(rig.joints[2], true);
    const Matrix jacobian = Diagonal({1, 1, 1});
    EXPECT_EQ(rig.Step(kPseudo, jacobian, {3, 0.5, 4}), (Values{0, 0.5, 4}));
    const Values damped = rig.Step(kDamped, jacobian, {3, 0.5, 4});
    ExpectNear(damped, {0, 0.5 / 2.21, 4 / 2.21}, kRounding);
    EXPECT_EQ(BitsOf(damped[0]), BitsOf(0.0));
}

TEST(FullStep, LooksAtTheJointsAndNotAtTheWorkingFields)
{
    StepRig rig("RL");
    rig.stream.SolverJtStates.Reset();
    rig.stream.FreeJointIndices.clear();
    rig.stream.RotaryFlags.clear();
    rig.joints[1]->SetIsLocked(true); // after the fields were made
    const Matrix jacobian = MatrixOf({{1, 0}, {0, 1}, {0, 0}});
    EXPECT_EQ(rig.Step(kPseudo, jacobian, {2, 5, 0}), (Values{kEighthTurn, 0}));
    EXPECT_EQ(rig.Step(kDamped, jacobian, {4, 5, 0}), (Values{kEighthTurn, 0}));
}

TEST(FullStep, HoldsAStateWithoutJoint)
{
    Rig rig;
    rig.Add<test::FalseJoint>(rig.tool);
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    const IkEndState target = EndState(IkXformMat::Translate(3, 4, 0), test::kPositionOnly);
    Matrix jacobian = MatrixOf({{1, 0}, {0, 1}, {0, 0}});
    const IkEndState current = EndState(IkXformMat(), test::kPositionOnly);
    EXPECT_EQ(ColumnOf(rig.stream.CalcDThetaPsuedoInverse(target, current, jacobian)),
              (Values{0, 4}));
}

// --- the partial methods' joints ---

TEST(PartialStep, HasARowForEveryJointAndMovesOnlyTheFreeOnes)
{
    StepRig rig("LRLR", {0, 3});
    const Matrix jacobian = MatrixOf({{1, 0}, {0, 2}, {0, 0}});
    EXPECT_EQ(rig.Step(kPseudoPartial, jacobian, {3, 8, 0}), (Values{0, kEighthTurn, 4, 0}));
    EXPECT_EQ(rig.Step(kSelective, jacobian, {3, 8, 0}), (Values{0, 0, 4, 0}));
}

TEST(PartialStep, FollowsTheFreeListAndTheStoredFlags)
{
    StepRig rig("LRL");
    rig.stream.FreeJointIndices = {2, 1};
    rig.stream.RotaryFlags = {false, false, true};
    const Matrix jacobian = MatrixOf({{1, 0}, {0, 1}, {0, 0}});
    EXPECT_EQ(rig.Step(kPseudoPartial, jacobian, {3, 8, 0}), (Values{0, 8, kEighthTurn}));
}

TEST(PartialStep, OfTheSelectivelyDampedMethodNeverTurnsARotaryJointAndDampsNoLinearOne)
{
    StepRig rig("RLRL");
    const Matrix jacobian = MatrixOf({{1, 0, 0, 1}, {0, 1, 0, 0}, {0, 0, 1, 0}});
    for (const double size : {1e-3, 1.0, 1e3}) {
        // The smallest solution, as in the wide case above, without its rotary rows 0 and 2
        const Values step = rig.Step(kSelective, jacobian, {2 * size, 3 * size, 4 * size});
        EXPECT_EQ(BitsOf(step[0]), BitsOf(0.0));
        EXPECT_EQ(BitsOf(step[2]), BitsOf(0.0));
        ExpectNear({step[1] / size, step[3] / size}, {3, 1}, kRounding);
    }
}

// Joint 0 is locked, so joint 1 is free joint 0: what is limited lands in the row of the free
// joint's number, and everything else writes the entry of free joint number rank.
TEST(PartialStep, OfTheDampedMethodMixesJointsAndFreeJoints)
{
    struct Row
    {
        Matrix jacobian;
        Values error;
        Values expected;
    };
    const Matrix rank1 = MatrixOf({{1, 1, 1}, {0, 0, 0}, {0, 0, 0}}); // s = sqrt(3): p = e / 4.21
    const Matrix rank2 = MatrixOf({{1, 0, 0}, {0, 1, 1}, {0, 0, 0}}); // p = e1 / 2.21, e2 / 3.21
    const std::vector<Row> rows{
        // p = (.1, .1, .1): each time entry 1 goes to its joint, 2
        {rank1, {0.421, 0, 0}, {0, 0, 0.1, 0}},
        // p = (1, 1, 1): the turns are limited in rows 0 and 1, the slide writes entry 1 unlimited
        {rank1, {4.21, 0, 0}, {kEighthTurn, kEighthTurn, 1, 0}},
        {rank1, {-4.21, 0, 0}, {-kEighthTurn, -kEighthTurn, -1, 0}},
        // p = (.1, 10, 10): the second turn is limited, the others write entry 2
        {rank2, {0.221, 32.1, 0}, {0, kEighthTurn, 0, 10}},
        // p = (1, .5, 3) of full rank: there is no entry 3
        {Diagonal({1, 1, 1}), {2.21, 1.105, 6.63}, {kEighthTurn, 0, 0, 0}},
        {Matrix(3, 3, 0.0), {1, 2, 3}, {0, 0, 0, 0}},
    };
    StepRig rig("LRRL", {0});
    for (const Row& row : rows) {
        ExpectNear(rig.Step(kDampedPartial, row.jacobian, row.error), row.expected, kRounding);
    }
}

// --- nothing to step with ---

TEST(Step, WithoutColumnsHasNoRowsInFullAndZerosInPart)
{
    StepRig rig("LR", {0, 1});
    for (const Method method : kFullMethods) {
        EXPECT_EQ(rig.StepOf(method, Matrix(3, 0), {1, 2, 3}).dim1(), 0);
        EXPECT_EQ(rig.StepOf(method, Matrix(), {1, 2, 3}).dim1(), 0);
    }
    for (const Method method : kPartialMethods) {
        EXPECT_EQ(rig.Step(method, Matrix(3, 0), {1, 2, 3}), (Values{0, 0}));
    }
}

TEST(Step, OfAJacobianThatCannotBeDecomposedIsZero)
{
    StepRig rig("LRL");
    for (const double bad : {kNan, std::numeric_limits<double>::infinity()}) {
        for (const Method method : kAllMethods) {
            EXPECT_EQ(rig.Step(method, Diagonal({1, bad, 1}), {1, 2, 3}), (Values{0, 0, 0}));
        }
    }
}

TEST(Step, TowardsATargetOfAnotherFilterIsZero)
{
    StepRig rig("LLL");
    const IkEndState target = EndState(IkXformMat::Translate(1, 2, 3), test::kPositionAndZ);
    Matrix jacobian = Diagonal({1, 1, 1});
    for (const Method method : kAllMethods) {
        const IkEndState current = EndState(IkXformMat(), test::kPositionOnly);
        EXPECT_EQ(ColumnOf(std::invoke(method, rig.stream, target, current, jacobian)),
                  (Values{0, 0, 0}));
    }
}

TEST(Step, CoversMoreJointsThanAColumnBuffer)
{
    StepRig rig(std::string(20, 'L'));
    Matrix jacobian(3, 20, 0.0);
    for (int j = 0; j < 20; ++j) {
        jacobian[j % 2][j] = 1; // ten joints along x, ten along y
    }
    Values expected;
    for (int j = 0; j < 20; ++j) {
        expected.push_back(j % 2 == 0 ? 3 : 5); // each a tenth
    }
    for (const Method method : {kPseudo, kPseudoPartial, kSelective}) {
        ExpectNear(rig.Step(method, jacobian, {30, 50, 9}), expected, kRounding);
    }
}

} // namespace
