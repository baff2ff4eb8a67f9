#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "IkStream.h"
#include "machine/Rig.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

namespace
{

using test::BitsOf;
using test::ColumnOf;
using test::CountingBody;
using test::ExpectNear;
using test::Filter;
using test::FunctionJoint;
using test::MatrixOf;
using test::Recording;
using test::Rig;
using test::Values;
using Matrix = TNT::Array2D<double>;

constexpr double kOneDegree = 0.017453292519943278; // 3.14159265358979 / 180 [rad]
constexpr double kTenth = 0.1;                      // [length]
constexpr double kEpsilon = 2.220446049250313e-16;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

IkEndState Reference(IkStream& stream, Filter filter = test::kPositionOnly, bool toolOnly = false)
{
    return test::EndState(stream.SolveFK(toolOnly).GetCompleteState(), filter);
}

Matrix Full(IkStream& stream, const IkEndState& reference, bool toolOnly = false)
{
    Matrix jacobian;
    EXPECT_TRUE(stream.ComputeFullJacobian(reference, jacobian, toolOnly));
    return jacobian;
}

/// At the working values, which InitializeIkSolver or the test has set.
Matrix Partial(IkStream& stream, const IkEndState& reference, int includeRotary = 1,
               bool toolOnly = false)
{
    Matrix jacobian;
    EXPECT_TRUE(stream.ComputePartialJacobian(reference, jacobian, includeRotary, toolOnly));
    return jacobian;
}

std::pair<int, int> SizeOf(const Matrix& matrix)
{
    return {matrix.dim1(), matrix.dim2()};
}

/// A prism along y that carries a turn about z with its tip 100 out along x.
struct Lever : testing::Test
{
    Lever()
        : y(rig.Linear<Recording<IkJtPrism>>(rig.tool, IkJoint::JtPrimTransY)),
          c(rig.Rotary<Recording<IkJtRot>>(rig.tool, IkJoint::JtPrimRotZ)),
          tip(rig.Add<CountingBody>(rig.tool))
    {
        tip.SetOrigFrame(IkXformMat::Translate(100, 0, 0));
        rig.Connect();
        rig.stream.InitializeIkSolver(false);
    }

    void Forget()
    {
        y.asked.clear();
        c.asked.clear();
        tip.count = 0;
    }

    Rig rig;
    Recording<IkJtPrism>& y;
    Recording<IkJtRot>& c;
    CountingBody& tip;
};

// The turn's difference quotients over one degree d.
const double kSine = std::sin(kOneDegree) / kOneDegree;
const double kCosine = (std::cos(kOneDegree) - 1) / kOneDegree;

TEST_F(Lever, HasAColumnOfDifferenceQuotientsForEachJoint)
{
    const IkEndState reference = Reference(rig.stream, test::kEverything);
    for (const Matrix& jacobian : {Full(rig.stream, reference), Partial(rig.stream, reference)}) {
        ASSERT_EQ(SizeOf(jacobian), std::pair(12, 2));
        ExpectNear(ColumnOf(jacobian, 0), {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 1e-14);
        // Position, X axis (cos, sin), Y axis (-sin, cos), Z axis
        ExpectNear(ColumnOf(jacobian, 1),
                   {100 * kCosine, 100 * kSine, 0, kCosine, kSine, 0, -kSine, kCosine, 0, 0, 0, 0},
                   1e-11);
    }
}

TEST_F(Lever, HasRowsOnlyForWhatTheReferenceSelects)
{
    const IkEndState yAxis = Reference(rig.stream, {false, true, false, false});
    for (const Matrix& jacobian : {Full(rig.stream, yAxis), Partial(rig.stream, yAxis)}) {
        ASSERT_EQ(SizeOf(jacobian), std::pair(3, 2));
        ExpectNear(ColumnOf(jacobian, 1), {-kSine, kCosine, 0}, 1e-13);
    }
    const IkEndState nothing = Reference(rig.stream, test::kNothing);
    EXPECT_EQ(SizeOf(Full(rig.stream, nothing)), std::pair(0, 2));
    EXPECT_EQ(SizeOf(Partial(rig.stream, nothing)), std::pair(0, 2));
}

TEST_F(Lever, IsMovedByATenthOrByADegreeOneJointAtATime)
{
    y.SetCurValue(4);
    c.SetCurValue(1);
    rig.stream.InitializeIkSolver(false);
    const IkEndState reference = Reference(rig.stream);
    for (const bool isFull : {true, false}) {
        Forget();
        isFull ? Full(rig.stream, reference) : Partial(rig.stream, reference);
        EXPECT_EQ(y.asked, (Values{4 + kTenth, 4}));
        EXPECT_EQ(c.asked, (Values{1, 1 + kOneDegree}));
    }
}

TEST_F(Lever, IsTakenAtTheCurrentValuesInFullAndAtTheWorkingValuesInPart)
{
    y.SetCurValue(7); // the working values were taken at 0
    const IkEndState reference = Reference(rig.stream);
    Forget();
    Full(rig.stream, reference);
    EXPECT_EQ(y.asked, (Values{7 + kTenth, 7}));
    Forget();
    Partial(rig.stream, reference);
    EXPECT_EQ(y.asked, (Values{kTenth, 0}));
}

TEST_F(Lever, WritesNothingBack)
{
    const IkEndState reference = Reference(rig.stream);
    Full(rig.stream, reference);
    Partial(rig.stream, reference);
    EXPECT_EQ(rig.stream.GetJointStates().GetValVector(), (Values{0, 0}));
    EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), (Values{0, 0}));
}

TEST(JacobianStep, IsTurnedBackBeforeTheUpperBoundAndOnlyThere)
{
    struct Row
    {
        bool isRotary;
        double value, low, high, moved;
    };
    const double d = kOneDegree;
    const std::vector<Row> rows{
        {false, 0, -1, 1, kTenth},
        {false, 0, -1, kTenth, kTenth}, // exactly at the bound is within
        {false, 0, -1, std::nextafter(kTenth, 0), -kTenth},
        {false, 5, -1, 5, 5 - kTenth},
        {false, 7, -1, 5, 7 - kTenth},         // beyond it already
        {false, -1000, -1, 1, -1000 + kTenth}, // the lower bound is not asked
        {false, -1, -1, -1, -1 - kTenth},
        {false, 0, 1, -1, -kTenth}, // a prism's own, inverted range
        {false, 0, kNan, kNan, kTenth},
        {false, 0, -kInfinity, kInfinity, kTenth},
        {false, 0, -kInfinity, -kInfinity, -kTenth},
        {true, 0, -1, 1, d},
        {true, 0, -1, d, d},
        {true, 0, -1, std::nextafter(d, 0), -d},
        {true, 2, -1, 2, 2 - d},
        {true, -9, -1, 1, -9 + d},
        {true, 0, 1, -1, -d},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.isRotary << " " << row.value << " " << row.high);
        Rig rig;
        IkJoint* joint = nullptr;
        Values* asked = nullptr;
        if (row.isRotary) {
            auto& rot = rig.Rotary<Recording<IkJtRot>>(rig.tool, IkJoint::JtPrimRotZ);
            joint = &rot;
            asked = &rot.asked;
        } else {
            auto& prism = rig.Linear<Recording<IkJtPrism>>(rig.tool, IkJoint::JtPrimTransX);
            joint = &prism;
            asked = &prism.asked;
        }
        rig.Connect();
        joint->SetBounds(row.low, row.high);
        joint->SetCurValue(row.value);
        rig.stream.InitializeIkSolver(false);
        const Filter xAxisAndPosition{true, false, false, true};
        const IkEndState reference = Reference(rig.stream, xAxisAndPosition);
        asked->clear();
        const Matrix full = Full(rig.stream, reference);
        const Matrix partial = Partial(rig.stream, reference);
        EXPECT_EQ(*asked, (Values{row.moved, row.moved}));
        EXPECT_EQ(BitsOf(full), BitsOf(partial));
        // A derivative either way: 1 along x, or the X axis turning towards its normal.
        const double v = row.value;
        if (row.isRotary) {
            EXPECT_NEAR(full[4][0], std::cos(v), 0.01);
        } else {
            EXPECT_NEAR(full[0][0], 1, 1e-11);
        }
        EXPECT_EQ(BitsOf(full[2][0]), BitsOf(0.0)); // also where 0 is divided by a negative step
    }
}

TEST(JacobianEntry, IsZeroUpToTheDoubleEpsilonAndForANan)
{
    struct Row
    {
        double moved; // position at the moved value; 0 before
        double entry;
    };
    // A tenth times a power of two, divided by a tenth, is that power exactly.
    const double atEpsilon = kTenth * kEpsilon;
    const double beyond = std::nextafter(atEpsilon, 1);
    const std::vector<Row> rows{
        {1e-18, 0},
        {-1e-18, 0},
        {atEpsilon, 0},
        {-atEpsilon, 0},
        {beyond, beyond / kTenth},
        {3e-17, 3e-17 / kTenth},
        {-3e-17, -3e-17 / kTenth},
        {kNan, 0},
        {kInfinity, kInfinity},
        {-kInfinity, -kInfinity},
        {kTenth, 1},
    };
    ASSERT_EQ(atEpsilon / kTenth, kEpsilon);
    ASSERT_GT(beyond / kTenth, kEpsilon);
    for (const Row& row : rows) {
        Rig rig;
        rig.Add<FunctionJoint>(rig.tool, [moved = row.moved](double v) {
            return IkXformMat::Translate(v == 0 ? 0 : moved, 0, 0);
        });
        rig.Connect();
        rig.stream.InitializeIkSolver(false);
        const IkEndState reference = Reference(rig.stream, test::kPositionOnly, true);
        EXPECT_EQ(BitsOf(Full(rig.stream, reference, true)[0][0]), BitsOf(row.entry)) << row.moved;
        EXPECT_EQ(BitsOf(Partial(rig.stream, reference, 1, true)[0][0]), BitsOf(row.entry))
            << row.moved;
    }
}

TEST(JacobianFlag, IsHandedOnToForwardKinematics)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Linear(rig.part, IkJoint::JtPrimTransX);
    rig.Connect();
    rig.stream.InitializeIkSolver(false);
    for (const bool toolOnly : {false, true}) {
        const IkEndState reference = Reference(rig.stream, test::kPositionOnly, toolOnly);
        const double ofPart = toolOnly ? 0 : -1; // the part's motion, seen from the part
        for (const Matrix& jacobian :
             {Full(rig.stream, reference, toolOnly), Partial(rig.stream, reference, 1, toolOnly)}) {
            ExpectNear({jacobian[0][0], jacobian[0][1]}, {1, ofPart}, 1e-14);
        }
    }
}

TEST(Jacobian, WithoutJointsHasNoColumns)
{
    IkStream stream;
    stream.InitializeIkSolver(false);
    EXPECT_EQ(SizeOf(Full(stream, IkEndState())), std::pair(6, 0));
    EXPECT_EQ(SizeOf(Partial(stream, IkEndState())), std::pair(6, 0));
}

// --- the full Jacobian ---

TEST_F(Lever, InFullHasZeroColumnsForLockedJoints)
{
    const IkEndState reference = Reference(rig.stream);
    y.SetIsLocked(true);
    Forget();
    Matrix jacobian = Full(rig.stream, reference);
    EXPECT_EQ(ColumnOf(jacobian, 0), (Values{0, 0, 0}));
    EXPECT_NE(ColumnOf(jacobian, 1), (Values{0, 0, 0}));
    EXPECT_EQ(tip.count, 1);

    rig.stream.SetLocalLock(&c, true);
    Forget();
    jacobian = Full(rig.stream, reference); // all locked
    ASSERT_EQ(SizeOf(jacobian), std::pair(3, 2));
    EXPECT_EQ(BitsOf(jacobian), BitsOf(Matrix(3, 2, 0.0)));
    EXPECT_EQ(tip.count, 0);
}

TEST_F(Lever, InFullFailsOnAFreeJointThatIsUnknownToTheLocalLocks)
{
    IkJoint& late = rig.Linear(rig.tool, IkJoint::JtPrimTransX); // after its chain was added
    const IkEndState reference = Reference(rig.stream);
    const Matrix previous = MatrixOf({{1, 2}, {3, 4}});
    Matrix jacobian = previous;
    EXPECT_FALSE(rig.stream.ComputeFullJacobian(reference, jacobian, false));
    EXPECT_EQ(SizeOf(jacobian), std::pair(2, 2));
    EXPECT_EQ(BitsOf(jacobian), BitsOf(previous));

    late.SetIsLocked(true); // its own lock answers without the stream's
    jacobian = Full(rig.stream, reference);
    EXPECT_EQ(ColumnOf(jacobian, 2), (Values{0, 0, 0}));

    late.SetIsLocked(false);
    rig.stream.InitializeIkSolver(false);
    EXPECT_EQ(SizeOf(Partial(rig.stream, reference)), std::pair(3, 3)); // asks for no lock
}

TEST_F(Lever, InFullIsTheDifferenceToAReferenceTakenElsewhere)
{
    const IkEndState reference =
        test::EndState(IkXformMat::Translate(100, 10, 0), test::kPositionOnly);
    // The joints stand at 0: y is moved to 0.1, 9.9 short of the reference.
    ExpectNear(ColumnOf(Full(rig.stream, reference), 0), {0, -99, 0}, 1e-11);
}

TEST(FullJacobian, HoldsAStateWithoutJoint)
{
    Rig rig;
    rig.Add<test::FalseJoint>(rig.tool);
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    for (const bool toolOnly : {false, true}) {
        const Matrix jacobian = Full(rig.stream, Reference(rig.stream), toolOnly);
        EXPECT_EQ(ColumnOf(jacobian, 0), (Values{0, 0, 0}));
        ExpectNear(ColumnOf(jacobian, 1), {1, 0, 0}, 1e-14);
    }
}

// --- the partial Jacobian ---

TEST_F(Lever, InPartLeavesRotaryColumnsZeroOnRequestWithoutEvaluatingThem)
{
    const IkEndState reference = Reference(rig.stream);
    Forget();
    const Matrix without = Partial(rig.stream, reference, 0);
    EXPECT_EQ(tip.count, 1);
    ExpectNear(ColumnOf(without, 0), {0, 1, 0}, 1e-14);
    EXPECT_EQ(ColumnOf(without, 1), (Values{0, 0, 0}));
    for (const int includeRotary : {1, 60, -1}) {
        Forget();
        EXPECT_NE(ColumnOf(Partial(rig.stream, reference, includeRotary), 1), (Values{0, 0, 0}));
        EXPECT_EQ(tip.count, 2);
    }
}

TEST_F(Lever, InPartHasAColumnForEachEntryOfTheFreeListInItsOrder)
{
    const IkEndState reference = Reference(rig.stream);
    const Matrix both = Partial(rig.stream, reference);
    rig.stream.FreeJointIndices = {1, 0};
    const Matrix exchanged = Partial(rig.stream, reference);
    EXPECT_EQ(ColumnOf(exchanged, 0), ColumnOf(both, 1));
    EXPECT_EQ(ColumnOf(exchanged, 1), ColumnOf(both, 0));
    rig.stream.FreeJointIndices = {1};
    EXPECT_EQ(ColumnOf(Partial(rig.stream, reference)), ColumnOf(both, 1));
    rig.stream.FreeJointIndices = {};
    EXPECT_EQ(SizeOf(Partial(rig.stream, reference)), std::pair(3, 0));
}

TEST_F(Lever, InPartGoesByTheStoredFlagsNotByTheJoint)
{
    rig.stream.RotaryFlags = {true, false};
    const IkEndState reference = Reference(rig.stream);
    Forget();
    Partial(rig.stream, reference);
    EXPECT_EQ(y.asked, (Values{kOneDegree, 0}));
    EXPECT_EQ(c.asked, (Values{0, kTenth}));
    Forget();
    Partial(rig.stream, reference, 0);
    EXPECT_EQ(y.asked, Values{0});
    EXPECT_EQ(c.asked, Values{kTenth});
}

TEST_F(Lever, InPartKeepsLockedJointsThatAreListedAsFree)
{
    y.SetIsLocked(true); // after the list was made
    rig.stream.SetLocalLock(&c, true);
    const IkEndState reference = Reference(rig.stream);
    const Matrix jacobian = Partial(rig.stream, reference);
    ExpectNear(ColumnOf(jacobian, 0), {0, 1, 0}, 1e-14);
    EXPECT_NE(ColumnOf(jacobian, 1), (Values{0, 0, 0}));
}

TEST(Jacobian, OfEveryMachineIsTheSameInFullAndInPartWhenNothingIsLocked)
{
    for (const auto& named : test::AllFixtures()) {
        const test::Fixture fixture = named.make();
        fixture.stream->InitializeIkSolver(false);
        const IkEndState reference = Reference(*fixture.stream, test::kPositionAndZ);
        EXPECT_EQ(BitsOf(Full(*fixture.stream, reference)),
                  BitsOf(Partial(*fixture.stream, reference)))
            << named.name;
    }
}

} // namespace
