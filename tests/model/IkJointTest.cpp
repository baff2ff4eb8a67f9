#include "IkJoint.h"

#include <functional>
#include <memory>
#include <type_traits>

#include <gtest/gtest.h>

#include "geometry/Matrices.h"
#include "model/Contents.h"

namespace
{

using test::BitsOf;
using test::ContentsOf;
using test::JointMotion;
using test::JointRange;
using test::MapPoint;
using test::MotionOf;
using test::RangeOf;
using Primitive = IkJoint::JtPrimitives;

constexpr double kFullTurn = 6.28318530717958;
constexpr double kHalfPi = 1.5707963267948966;
double* const kCurrentValue = nullptr;

const JointMotion kNoMotion{0, {}, false, 0.0};

TNT::Vector<double> Axis(double x, double y, double z)
{
    TNT::Vector<double> axis(3);
    axis[0] = x;
    axis[1] = y;
    axis[2] = z;
    return axis;
}

/// A joint of which everything differs from its default.
template <class Joint>
std::unique_ptr<Joint> FilledIn(IkNode& parent, IkNode& child, int& hostObject)
{
    auto joint = std::make_unique<Joint>(L"joint");
    joint->SetType(L"type");
    joint->SetOrigFrame(IkXformMat::Translate(1, 0, 0));
    joint->SetRelFrame(IkXformMat::Translate(2, 0, 0));
    joint->SetWorldFrame(IkXformMat::Translate(3, 0, 0));
    joint->SetParent(&parent);
    joint->AddChild(&child);
    joint->SetUserData(&hostObject);
    joint->SetIsLocked(true);
    joint->SetCurValue(0.5);
    joint->SetBounds(-4, 9);
    joint->SetJtPrimitive(IkJoint::JtPrimRotArbitrary);
    joint->SetArbitraryAxis(Axis(1, 2, 3));
    joint->SetDirectionReversed(true);
    joint->SetInitialValue(0.25);
    joint->SetDirty(false);
    return joint;
}

const JointRange kFilledInRange{true, 0.5, -4.0, 9.0};
const JointMotion kFilledInMotion{8, {1, 2, 3}, true, 0.25};

TEST(Joint, EnumsKeepTheirNumbers)
{
    EXPECT_EQ(IkJoint::JtPrimNone, 0);
    EXPECT_EQ(IkJoint::JtPrimTransX, 1);
    EXPECT_EQ(IkJoint::JtPrimTransY, 2);
    EXPECT_EQ(IkJoint::JtPrimTransZ, 3);
    EXPECT_EQ(IkJoint::JtPrimTransArbitrary, 4);
    EXPECT_EQ(IkJoint::JtPrimRotX, 5);
    EXPECT_EQ(IkJoint::JtPrimRotY, 6);
    EXPECT_EQ(IkJoint::JtPrimRotZ, 7);
    EXPECT_EQ(IkJoint::JtPrimRotArbitrary, 8);
    EXPECT_EQ(IkJoint::JtLimitNone, 0);
    EXPECT_EQ(IkJoint::JtLimitLinear, 1);
    EXPECT_EQ(IkJoint::JtLimitRotary, 2);
    EXPECT_EQ(IkJoint::JtLimitAll, 3);
    static_assert(std::is_same_v<std::underlying_type_t<Primitive>, int>);
    static_assert(std::is_same_v<std::underlying_type_t<IkJoint::JointLimitTypes>, int>);
}

template <class Joint>
void ExpectDefaults(int primitive, double low, double high)
{
    for (const auto& joint : {std::make_unique<Joint>(), std::make_unique<Joint>(L"named")}) {
        EXPECT_EQ(RangeOf(*joint), (JointRange{false, 0.0, low, high}));
        EXPECT_EQ(MotionOf(*joint), (JointMotion{primitive, {}, false, 0.0}));
        EXPECT_TRUE(joint->IsJoint());
    }
    EXPECT_EQ(ContentsOf(Joint()), ContentsOf(IkNode()));
    EXPECT_EQ(ContentsOf(Joint(L"named")), ContentsOf(IkNode(L"named")));
    EXPECT_EQ(sizeof(Joint), sizeof(IkJoint)); // the kinds add no members
}

TEST(Joint, StartsUnlockedAtZeroWithTheRangeOfItsKind)
{
    ExpectDefaults<IkJoint>(0, -1.0, 1.0);
    ExpectDefaults<IkJtRot>(7, -kFullTurn, kFullTurn);
}

TEST(Joint, APrismsDefaultRangeIsInverted)
{
    ExpectDefaults<IkJtPrism>(1, 1.0, -1.0);
}

TEST(Joint, TheDefaultFullTurnIsShortOfTwoPi)
{
    const IkJtRot joint;
    EXPECT_EQ(joint.GetHiBound(), 6.28318530717958);
    EXPECT_LT(joint.GetHiBound(), 2 * 3.141592653589793);
    EXPECT_TRUE(joint.IsRotary());
    EXPECT_FALSE(joint.IsArbitraryAxisUsed());
}

TEST(Joint, ACopyTakesTheNodeTheRangeAndTheLockButNotTheMotion)
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    const auto joint = FilledIn<IkJoint>(parent, child, hostObject);
    const IkJoint copy(*joint);
    EXPECT_EQ(RangeOf(copy), kFilledInRange);
    EXPECT_EQ(MotionOf(copy), kNoMotion);
    EXPECT_TRUE(copy.IsDirty());
    joint->SetDirty(true); // to compare the rest
    EXPECT_EQ(ContentsOf(copy), ContentsOf(*joint));
}

template <class Joint>
void ExpectWholeAssignment()
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    const auto joint = FilledIn<Joint>(parent, child, hostObject);
    Joint assigned;
    EXPECT_EQ(&(assigned = *joint), &assigned);
    EXPECT_EQ(RangeOf(assigned), kFilledInRange);
    EXPECT_EQ(MotionOf(assigned), kFilledInMotion);
    EXPECT_EQ(ContentsOf(assigned), ContentsOf(*joint));

    const Joint& same = *joint;
    *joint = same;
    EXPECT_EQ(RangeOf(*joint), kFilledInRange);
    EXPECT_EQ(MotionOf(*joint), kFilledInMotion);

    *joint = Joint(); // over an axis that has elements
    EXPECT_EQ(MotionOf(*joint), MotionOf(Joint()));
}

TEST(Joint, AssignmentCopiesEveryMember)
{
    ExpectWholeAssignment<IkJoint>();
    ExpectWholeAssignment<IkJtPrism>();
    ExpectWholeAssignment<IkJtRot>();
}

template <class Joint>
void ExpectCopyExchangesBounds()
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    const auto joint = FilledIn<Joint>(parent, child, hostObject);
    const Joint copy(*joint);
    EXPECT_EQ(RangeOf(copy), (JointRange{false, 0.0, 9.0, -4.0}));
    EXPECT_EQ(MotionOf(copy), (JointMotion{8, {}, false, 0.0}));
    EXPECT_EQ(ContentsOf(copy), ContentsOf(IkNode())); // name "NA", identity frames, no relatives

    const Joint copyOfCopy(copy);
    EXPECT_EQ(RangeOf(copyOfCopy), (JointRange{false, 0.0, -4.0, 9.0}));
}

TEST(Joint, ACopyOfAKindIsANewJointWithTheBoundsExchanged)
{
    ExpectCopyExchangesBounds<IkJtPrism>();
    ExpectCopyExchangesBounds<IkJtRot>();

    const IkJtPrism prism;
    EXPECT_EQ(RangeOf(IkJtPrism(prism)), (JointRange{false, 0.0, -1.0, 1.0}));
    const IkJtRot rot;
    EXPECT_EQ(RangeOf(IkJtRot(rot)), (JointRange{false, 0.0, kFullTurn, -kFullTurn}));
}

TEST(Joint, InitializeResetsAllButTheAxisAndDoesNotMarkDirty)
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    const auto joint = FilledIn<IkJoint>(parent, child, hostObject);
    const auto node = ContentsOf(*joint);
    joint->Initialize();
    EXPECT_EQ(RangeOf(*joint), (JointRange{false, 0.0, -1.0, 1.0}));
    EXPECT_EQ(MotionOf(*joint), (JointMotion{0, {1, 2, 3}, false, 0.0}));
    EXPECT_EQ(ContentsOf(*joint), node);
    EXPECT_FALSE(joint->IsDirty());
}

template <class Joint>
void ExpectInitializeResetsPrimitiveAndBounds(int primitive, double low, double high)
{
    IkNode parent;
    IkNode child;
    int hostObject = 0;
    const auto joint = FilledIn<Joint>(parent, child, hostObject);
    joint->Initialize();
    EXPECT_EQ(RangeOf(*joint), (JointRange{true, 0.5, low, high}));
    EXPECT_EQ(MotionOf(*joint), (JointMotion{primitive, {1, 2, 3}, true, 0.25}));
    EXPECT_TRUE(joint->IsDirty()); // by the setters
}

TEST(Joint, InitializeOfAKindResetsPrimitiveAndBoundsAlone)
{
    ExpectInitializeResetsPrimitiveAndBounds<IkJtPrism>(1, 1.0, -1.0);
    ExpectInitializeResetsPrimitiveAndBounds<IkJtRot>(7, -kFullTurn, kFullTurn);
}

TEST(Joint, SettersOfRangeValueLockAndPrimitiveMarkItDirty)
{
    struct Case
    {
        const char* what;
        std::function<void(IkJoint&)> set;
        bool marksDirty;
    };
    const std::vector<Case> cases{
        {"SetCurValue", [](IkJoint& j) { j.SetCurValue(0.0); }, true},
        {"SetBounds", [](IkJoint& j) { j.SetBounds(-1.0, 1.0); }, true},
        {"SetIsLocked", [](IkJoint& j) { j.SetIsLocked(false); }, true},
        {"SetJtPrimitive", [](IkJoint& j) { j.SetJtPrimitive(IkJoint::JtPrimNone); }, true},
        {"SetDirectionReversed", [](IkJoint& j) { j.SetDirectionReversed(true); }, false},
        {"SetInitialValue", [](IkJoint& j) { j.SetInitialValue(3.0); }, false},
        {"SetArbitraryAxis", [](IkJoint& j) { j.SetArbitraryAxis(Axis(0, 0, 1)); }, false},
    };
    for (const Case& c : cases) {
        IkJoint joint;
        joint.SetDirty(false);
        c.set(joint);
        EXPECT_EQ(joint.IsDirty(), c.marksDirty) << c.what;
    }
}

TEST(Joint, StoresValuesAndBoundsWithoutChecks)
{
    IkJoint joint;
    joint.SetCurValue(1e9);
    EXPECT_EQ(RangeOf(joint), (JointRange{false, 1e9, -1.0, 1.0}));
    joint.SetBounds(5, -5);
    EXPECT_EQ(RangeOf(joint), (JointRange{false, 1e9, 5.0, -5.0}));
}

TEST(Joint, HandsOutACopyOfItsAxis)
{
    IkJoint joint;
    joint.SetArbitraryAxis(Axis(1, 2, 3));
    joint.GetArbitraryAxis()[0] = 9.0;
    EXPECT_EQ(MotionOf(joint), (JointMotion{0, {1, 2, 3}, false, 0.0}));
}

TEST(Joint, PrimitivesFiveToEightAreRotaryAndFourAndEightUseTheAxis)
{
    IkJtPrism joint;
    for (const int primitive : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 1000}) {
        joint.SetJtPrimitive(static_cast<Primitive>(primitive));
        EXPECT_EQ(joint.GetJtPrimitive(), primitive);
        EXPECT_EQ(joint.IsRotary(), primitive >= 5 && primitive <= 8) << primitive;
        EXPECT_EQ(joint.IsArbitraryAxisUsed(), primitive == 4 || primitive == 8) << primitive;
    }
}

TEST(Joint, MapsPointsByValueLessInitialValue)
{
    IkJtRot rot;
    rot.SetInitialValue(0.5);
    double value = 0.5 + kHalfPi;
    EXPECT_NEAR(MapPoint(rot.GetXformMat(&value), {1, 0, 0})[1], 1.0, 1e-15);
    rot.SetDirectionReversed(true);
    EXPECT_NEAR(MapPoint(rot.GetXformMat(&value), {1, 0, 0})[1], -1.0, 1e-15);

    IkJtPrism prism;
    prism.SetJtPrimitive(IkJoint::JtPrimTransZ);
    prism.SetOrigFrame(IkXformMat::RotX(kHalfPi));
    prism.SetInitialValue(4);
    value = 10;
    EXPECT_EQ(BitsOf(prism.GetXformMat(&value)),
              BitsOf(IkXformMat::RotX(kHalfPi) * IkXformMat::Translate(0, 0, 6)));
}

/// What a primitive moves by a displacement; nothing for those that give no motion.
struct Motion
{
    Primitive primitive;
    std::function<IkXformMat(double)> by;
};

const std::vector<Motion> kLinearMotions{
    {IkJoint::JtPrimTransX, [](double d) { return IkXformMat::Translate(d, 0, 0); }},
    {IkJoint::JtPrimTransY, [](double d) { return IkXformMat::Translate(0, d, 0); }},
    {IkJoint::JtPrimTransZ, [](double d) { return IkXformMat::Translate(0, 0, d); }},
};
const std::vector<Motion> kRotaryMotions{
    {IkJoint::JtPrimRotX, [](double d) { return IkXformMat::RotX(d); }},
    {IkJoint::JtPrimRotY, [](double d) { return IkXformMat::RotY(d); }},
    {IkJoint::JtPrimRotZ, [](double d) { return IkXformMat::RotZ(d); }},
};

void ExpectMotions(IkJoint& joint, const std::vector<Motion>& motions)
{
    test::Random random(6);
    for (int i = 0; i < 200; ++i) {
        const IkXformMat original = test::RandomRigid(random);
        const double initial = random.OneIn(3) ? 0.0 : random.Between(-3, 3);
        double value = random.OneIn(3) ? initial : random.Between(-10, 10);
        const bool isReversed = random.OneIn(2);
        joint.SetOrigFrame(original);
        joint.SetInitialValue(initial);
        joint.SetDirectionReversed(isReversed);
        joint.SetCurValue(value);
        joint.SetRelFrame(test::RandomRigid(random));
        joint.SetWorldFrame(test::RandomRigid(random));
        joint.SetDirty(false);

        const double displacement = isReversed ? (value - initial) * -1.0 : value - initial;
        for (const Motion& motion : motions) {
            joint.SetJtPrimitive(motion.primitive);
            joint.SetDirty(false);
            const auto expected = BitsOf(original * motion.by(displacement));
            ASSERT_EQ(BitsOf(joint.GetXformMat(kCurrentValue)), expected);
            joint.SetCurValue(77);
            joint.SetDirty(false);
            ASSERT_EQ(BitsOf(joint.GetXformMat(&value)), expected);
            ASSERT_FALSE(joint.IsDirty());
            ASSERT_EQ(joint.GetCurValue(), 77);
            joint.SetCurValue(value);
        }
    }
}

TEST(Joint, MovesOnTheRightOfItsOriginalFrameByTheSignedDisplacement)
{
    IkJtPrism prism;
    ExpectMotions(prism, kLinearMotions);
    IkJtRot rot;
    ExpectMotions(rot, kRotaryMotions);
}

// -0.0 as a displacement vanishes in the sums of the product, which start from 0.
TEST(Joint, StandsExactlyAtItsOriginalFrameAtItsInitialValue)
{
    IkJtPrism prism;
    IkJtRot rot;
    for (IkJoint* joint : {static_cast<IkJoint*>(&prism), static_cast<IkJoint*>(&rot)}) {
        joint->SetInitialValue(0.75);
        joint->SetCurValue(0.75);
        joint->SetDirectionReversed(true);
        EXPECT_EQ(BitsOf(joint->GetXformMat(kCurrentValue)), BitsOf(IkXformMat()));
    }
}

TEST(Joint, GivesTheIdentityForAPrimitiveThatIsNotItsKinds)
{
    IkJtPrism prism;
    IkJtRot rot;
    double value = 0.5;
    for (const int primitive : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9}) {
        for (IkJoint* joint : {static_cast<IkJoint*>(&prism), static_cast<IkJoint*>(&rot)}) {
            joint->SetOrigFrame(IkXformMat::Translate(1, 2, 3));
            joint->SetArbitraryAxis(Axis(0, 0, 1));
            joint->SetJtPrimitive(static_cast<Primitive>(primitive));
            const bool moves = joint == &prism ? primitive >= 1 && primitive <= 3
                                               : primitive >= 5 && primitive <= 7;
            EXPECT_EQ(BitsOf(joint->GetXformMat(&value)) == BitsOf(IkXformMat()), !moves)
                << primitive;
        }
    }
}

TEST(Joint, OfNeitherKindDoesNotMove)
{
    IkJoint joint;
    joint.SetOrigFrame(IkXformMat::Translate(1, 2, 3));
    joint.SetInitialValue(9);
    double value = 0.5;
    IkJtStateVector states = test::StatesOf({{&joint, 4.0}});
    for (const int primitive : {-1, 0, 1, 4, 7, 8, 9}) {
        joint.SetJtPrimitive(static_cast<Primitive>(primitive));
        for (const IkXformMat& m : {joint.GetXformMat(&value), joint.GetXformMat(kCurrentValue),
                                    joint.GetXformMat(states)}) {
            EXPECT_EQ(BitsOf(m), BitsOf(IkXformMat::Translate(1, 2, 3)));
        }
    }
}

TEST(Joint, TakesItsValueFromAStateVectorThatHoldsIt)
{
    IkJtPrism x(L"X");
    IkJtRot c(L"C");
    x.SetCurValue(1);
    c.SetCurValue(0.1);
    IkJtStateVector states = test::StatesOf({{&x, 25.0}});
    EXPECT_EQ(BitsOf(x.GetXformMat(states)), BitsOf(IkXformMat::Translate(25, 0, 0)));
    EXPECT_EQ(BitsOf(c.GetXformMat(states)), BitsOf(c.GetXformMat(kCurrentValue)));

    states.AddState(IkJtState(&x, 30.0)); // the newer state counts
    EXPECT_EQ(BitsOf(x.GetXformMat(states)), BitsOf(IkXformMat::Translate(30, 0, 0)));
    EXPECT_EQ(x.GetCurValue(), 1);
}

// Deleting the first of X, Y, Z leaves Y stored at 1, where Z now is, and Z at 2, where nothing is.
TEST(Joint, TakesItsValueByTheStoredIndexAfterADeletion)
{
    IkJtPrism x(L"X");
    IkJtPrism y(L"Y");
    IkJtPrism z(L"Z");
    z.SetCurValue(-7);
    IkJtStateVector states = test::StatesOf({{&x, 10.0}, {&y, 20.0}, {&z, 30.0}});
    states.DelState(states.GetState(0));
    EXPECT_EQ(x.GetXformMat(states)[0][3], 0.0);
    EXPECT_EQ(y.GetXformMat(states)[0][3], 30.0);
    EXPECT_EQ(z.GetXformMat(states)[0][3], -7.0);
}

TEST(Joint, HandsTheStatesValueToTheKindsOwnRule)
{
    class HostJoint : public IkJoint
    {
      public:
        using IkJoint::GetXformMat;
        IkXformMat GetXformMat(double* value) override
        {
            return IkXformMat::Translate(value == nullptr ? -1.0 : 2 * *value, 0, 0);
        }
    };
    HostJoint joint;
    joint.SetCurValue(4);
    IkJtStateVector states;
    EXPECT_EQ(joint.GetXformMat(states)[0][3], 8.0); // its current value, by address
    states = test::StatesOf({{&joint, 5.0}});
    EXPECT_EQ(joint.GetXformMat(states)[0][3], 10.0);
}

TEST(Joint, UpdatesItsFramesAsANode)
{
    IkJtRot joint;
    IkJtPrism child;
    joint.AddChild(&child);
    joint.SetCurValue(1);
    EXPECT_TRUE(joint.UpdateFrames());
    EXPECT_FALSE(joint.IsDirty());
    EXPECT_FALSE(child.IsDirty());
    EXPECT_EQ(BitsOf(joint.GetWorldFrame()), BitsOf(IkXformMat()));
}

} // namespace
