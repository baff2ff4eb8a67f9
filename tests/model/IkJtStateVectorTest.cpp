#include "IkJtState.h"

#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <type_traits>

#include <gtest/gtest.h>

#include "model/Contents.h"

namespace
{

using test::BitsOf;
using test::ContentsOf;
using test::States;
using test::StatesOf;
using Limits = IkJoint::JointLimitTypes;
using Values = std::vector<double>;
using Indices = std::vector<int>;

constexpr double kFullTurn = 6.28318530717958;
constexpr double kEpsilon = 2.220446049250313e-16;

/// A linear and two rotary joints, all with the range [-100, 100].
struct Joints
{
    IkJtPrism x{L"X"};
    IkJtRot b{L"B"};
    IkJtRot c{L"C"};

    Joints()
    {
        for (IkJoint* joint :
             {static_cast<IkJoint*>(&x), static_cast<IkJoint*>(&b), static_cast<IkJoint*>(&c)}) {
            joint->SetBounds(-100, 100);
        }
    }

    IkJtStateVector At(double vx, double vb, double vc)
    {
        return StatesOf({{&x, vx}, {&b, vb}, {&c, vc}});
    }
};

Indices IndicesFrom(const IkJtStateVector& states,
                    void (IkJtStateVector::*get)(std::vector<int>&) const)
{
    Indices indices{99, 98}; // cleared first
    (states.*get)(indices);
    return indices;
}

TEST(JtStateVector, MarksAMissingStateByAFixedNumber)
{
    EXPECT_EQ(IkJtStateVector::NoStateExist(), -9999999.0);
    static_assert(std::has_virtual_destructor_v<IkJtStateVector>);
}

TEST(JtStateVector, StartsEmpty)
{
    const IkJtStateVector states;
    double value = 7;
    const IkJtRot joint;
    EXPECT_EQ(states.Size(), 0);
    EXPECT_EQ(states.FindStateByJointPtr(&joint), -1);
    EXPECT_FALSE(states.FindValFromPtr(&joint, value));
    EXPECT_EQ(value, 7);
    EXPECT_EQ(states.FindStateByUserPtr(nullptr), -1);
    EXPECT_EQ(states.GetValArray1D().dim(), 0);
    EXPECT_EQ(states.GetValVector(), Values());
    EXPECT_EQ(states.GetNameVector(), std::vector<std::wstring>());
}

TEST(JtStateVector, KeepsStatesInTheOrderAdded)
{
    Joints j;
    IkJtStateVector states = j.At(1, -0.0, 3);
    EXPECT_EQ(states.Size(), 3);
    EXPECT_EQ(ContentsOf(states), (States{{&j.x, 1}, {&j.b, -0.0}, {&j.c, 3}}));
    EXPECT_EQ(BitsOf(states), (std::vector<std::uint64_t>{BitsOf(1.0), BitsOf(-0.0), BitsOf(3.0)}));
    EXPECT_EQ(states.GetNameVector(), (std::vector<std::wstring>{L"X", L"B", L"C"}));
    const TNT::Array1D<double> array = states.GetValArray1D();
    EXPECT_EQ(Values(&array[0], &array[0] + array.dim()), (Values{1, 0, 3}));
    EXPECT_EQ(states.FindStateByJointPtr(&j.x), 0);
    EXPECT_EQ(states.FindStateByJointPtr(&j.c), 2);
    double value = 0;
    EXPECT_TRUE(states.FindValFromPtr(&j.c, value));
    EXPECT_EQ(value, 3);
}

TEST(JtStateVector, CopiesAreIndependent)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    IkJtStateVector copy(states);
    IkJtStateVector assigned;
    EXPECT_EQ(&(assigned = states), &assigned);
    const IkJtStateVector& same = assigned;
    assigned = same;
    states.GetState(0).SetValue(9);
    states.Reset();
    for (const IkJtStateVector* v : {&copy, &assigned}) {
        EXPECT_EQ(ContentsOf(*v), (States{{&j.x, 1}, {&j.b, 2}, {&j.c, 3}}));
        EXPECT_EQ(v->FindStateByJointPtr(&j.c), 2);
    }
    EXPECT_EQ(states.Size(), 0);
    EXPECT_EQ(states.FindStateByJointPtr(&j.c), -1);
}

TEST(JtStateVector, AddsASecondStateOfAJointAndFindsTheNewer)
{
    Joints j;
    IkJtStateVector states = StatesOf({{&j.x, 1}, {&j.x, 2}});
    EXPECT_EQ(states.Size(), 2);
    EXPECT_EQ(states.FindStateByJointPtr(&j.x), 1);
    double value = 0;
    EXPECT_TRUE(states.FindValFromPtr(&j.x, value));
    EXPECT_EQ(value, 2);
}

TEST(JtStateVector, AddsStatesThatLiveInItself)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    for (int i = 0; i < 50; ++i) { // over several reallocations
        states.AddState(states.GetState(i));
    }
    EXPECT_EQ(states.Size(), 53);
    const States contents = ContentsOf(states);
    for (std::size_t i = 3; i < contents.size(); ++i) {
        EXPECT_EQ(contents[i], contents[i - 3]);
    }
    EXPECT_EQ(states.FindStateByJointPtr(&j.c), 50);
}

TEST(JtStateVector, DeletesTheFirstStateAndRenumbersNoOther)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    IkJtState ofX(&j.x, 55); // its value does not matter
    states.DelState(ofX);
    EXPECT_EQ(ContentsOf(states), (States{{&j.b, 2}, {&j.c, 3}}));
    EXPECT_EQ(states.FindStateByJointPtr(&j.x), -1);
    EXPECT_EQ(states.FindStateByJointPtr(&j.b), 1); // as stored: C stands there now
    EXPECT_EQ(states.FindStateByJointPtr(&j.c), 2); // as stored: nothing stands there
    double value = 7;
    EXPECT_TRUE(states.FindValFromPtr(&j.b, value));
    EXPECT_EQ(value, 3);
    value = 7;
    EXPECT_FALSE(states.FindValFromPtr(&j.c, value));
    EXPECT_EQ(value, 7);
}

TEST(JtStateVector, DeletingAnyLaterStateOnlyForgetsItsJoint)
{
    Joints j;
    for (IkJoint* joint : {&j.b, &j.c}) {
        IkJtStateVector states = j.At(1, 2, 3);
        IkJtState state(joint);
        states.DelState(state);
        EXPECT_EQ(ContentsOf(states), ContentsOf(j.At(1, 2, 3)));
        EXPECT_EQ(states.FindStateByJointPtr(joint), -1);
        double value = 0;
        EXPECT_FALSE(states.FindValFromPtr(joint, value));
        EXPECT_EQ(states.FindStateByJointPtr(&j.x), 0);
    }
}

TEST(JtStateVector, DeletesOneOfTwoStatesOfAJoint)
{
    Joints j;
    IkJtStateVector states = StatesOf({{&j.x, 1}, {&j.x, 2}, {&j.b, 3}});
    IkJtState ofX(&j.x);
    states.DelState(ofX);
    EXPECT_EQ(ContentsOf(states), (States{{&j.x, 2}, {&j.b, 3}}));
    EXPECT_EQ(states.FindStateByJointPtr(&j.x), -1);
    states.DelState(ofX); // is first again, though not in the look-up
    EXPECT_EQ(ContentsOf(states), (States{{&j.b, 3}}));
}

TEST(JtStateVector, DeletesAStateThatLivesInItself)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    states.DelState(states.GetState(0));
    EXPECT_EQ(ContentsOf(states), (States{{&j.b, 2}, {&j.c, 3}}));
    EXPECT_EQ(states.FindStateByJointPtr(&j.x), -1);
    states.DelState(states.GetState(1));
    EXPECT_EQ(states.Size(), 2);
    EXPECT_EQ(states.FindStateByJointPtr(&j.c), -1);
}

TEST(JtStateVector, DeletesNothingFromAnEmptyVectorOrOfAnUnknownJoint)
{
    Joints j;
    IkJtState ofC(&j.c);
    IkJtState ofNone;
    IkJtStateVector empty;
    empty.DelState(ofC);
    empty.DelState(ofNone);
    EXPECT_EQ(empty.Size(), 0);
    IkJtStateVector states = StatesOf({{&j.x, 1}, {&j.b, 2}});
    states.DelState(ofC);
    states.DelState(ofNone);
    EXPECT_EQ(ContentsOf(states), (States{{&j.x, 1}, {&j.b, 2}}));
    EXPECT_EQ(states.FindStateByJointPtr(&j.b), 1);
}

TEST(JtStateVector, GivesAccessToItsStates)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    states.GetState(1).SetValue(20);
    IkJtState copy;
    EXPECT_TRUE(states.GetStateCopy(1, copy));
    EXPECT_EQ(copy.GetJoint(), &j.b);
    EXPECT_EQ(copy.GetValue(), 20);
    copy.SetValue(99);
    EXPECT_EQ(states.GetState(1).GetValue(), 20);
}

TEST(JtStateVector, HasNoStateOutOfRange)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    const int far = std::numeric_limits<int>::max();
    for (const int index : {-1, 3, 100, far, std::numeric_limits<int>::min()}) {
        IkJtState copy(&j.x, 5);
        EXPECT_FALSE(states.GetStateCopy(index, copy));
        EXPECT_EQ(copy.GetJoint(), &j.x);
        EXPECT_EQ(copy.GetValue(), 5);

        IkJtState& scratch = states.GetState(index);
        EXPECT_EQ(scratch.GetJoint(), nullptr);
        EXPECT_EQ(scratch.GetValue(), 0.0);
        scratch = IkJtState(&j.c, 77); // is gone the next time
    }
    EXPECT_EQ(ContentsOf(states), ContentsOf(j.At(1, 2, 3)));
    EXPECT_EQ(IkJtStateVector().GetState(0).GetJoint(), nullptr);
}

TEST(JtStateVector, FindsTheLastStateWithAUserPointer)
{
    Joints j;
    int mark = 0;
    j.x.SetUserData(&mark);
    j.c.SetUserData(&mark);
    const IkJtStateVector states = j.At(1, 2, 3);
    EXPECT_EQ(states.FindStateByUserPtr(&mark), 2);
    EXPECT_EQ(states.FindStateByUserPtr(nullptr), 1); // B has none
    EXPECT_EQ(states.FindStateByUserPtr(&states), -1);
}

TEST(JtStateVector, SetsOneValueAStateOrNone)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    EXPECT_TRUE(states.SetValVector({4, 5, 1e9}));
    EXPECT_EQ(ContentsOf(states), (States{{&j.x, 4}, {&j.b, 5}, {&j.c, 1e9}}));
    for (const Values& wrong : {Values{}, Values{7, 7}, Values{7, 7, 7, 7}}) {
        EXPECT_FALSE(states.SetValVector(wrong));
        EXPECT_EQ(states.GetValVector(), (Values{4, 5, 1e9}));
    }
    EXPECT_TRUE(IkJtStateVector().SetValVector({}));
}

TEST(JtStateVector, ListsLinearAndRotaryStatesByTheKindOfTheirJoints)
{
    Joints j;
    IkJoint plain;
    j.b.SetJtPrimitive(IkJoint::JtPrimTransX); // the primitive does not make it linear
    j.x.SetJtPrimitive(IkJoint::JtPrimRotX);
    plain.SetJtPrimitive(IkJoint::JtPrimRotZ);
    const IkJtStateVector states =
        StatesOf({{&j.b, 0}, {&j.x, 0}, {&plain, 0}, {nullptr, 0}, {&j.c, 0}, {&j.x, 0}});
    EXPECT_EQ(IndicesFrom(states, &IkJtStateVector::GetLinearStateIndices), (Indices{1, 5}));
    EXPECT_EQ(IndicesFrom(states, &IkJtStateVector::GetRotaryStateIndices), (Indices{0, 4}));
}

TEST(JtStateVector, ListsStatesStrictlyOutOfTheirBounds)
{
    Joints j;
    j.x.SetBounds(-1, 1);
    const auto isOut = [&j](double value) {
        const IkJtStateVector states = j.At(value, 0, -100);
        const Indices indices = IndicesFrom(states, &IkJtStateVector::GetOutOfBoundIndices);
        EXPECT_TRUE(indices.empty() || indices == Indices{0});
        return !indices.empty();
    };
    EXPECT_FALSE(isOut(1));
    EXPECT_FALSE(isOut(-1));
    EXPECT_TRUE(isOut(std::nextafter(1, 2)));
    EXPECT_TRUE(isOut(std::nextafter(-1, -2)));
    const IkJtStateVector all = j.At(5, -101, 101);
    EXPECT_EQ(IndicesFrom(all, &IkJtStateVector::GetOutOfBoundIndices), (Indices{0, 1, 2}));
}

TEST(JtStateVector, APrismWithItsDefaultRangeIsAlwaysOutOfBounds)
{
    IkJtPrism prism; // low 1, high -1
    for (const double value : {-5.0, -1.0, 0.0, 1.0, 5.0}) {
        const IkJtStateVector states = StatesOf({{&prism, value}});
        EXPECT_EQ(IndicesFrom(states, &IkJtStateVector::GetOutOfBoundIndices), Indices{0});
    }
}

TEST(JtStateVector, NeverFindsAParallelLinearJoint)
{
    IkBody base;
    IkJtPrism prism;
    base.AddChild(&prism);
    IkJtRot rot;
    IkJtStateVector states = StatesOf({{&prism, 0}, {&rot, 0}});
    std::vector<double> direction{1, 0, 0};
    for (const int primitive : {0, 1, 2, 3, 4, 5}) {
        prism.SetJtPrimitive(static_cast<IkJoint::JtPrimitives>(primitive));
        for (std::size_t axis = 0; axis < 3; ++axis) {
            direction = {0, 0, 0};
            direction[axis] = 1;
            EXPECT_EQ(states.GetIndexofParallelLinJointState(direction.data()), -1);
        }
    }
    EXPECT_EQ(states.GetIndexofParallelLinJointState(nullptr), -1);
    EXPECT_EQ(IkJtStateVector().GetIndexofParallelLinJointState(direction.data()), -1);
    EXPECT_EQ(StatesOf({{&rot, 0}}).GetIndexofParallelLinJointState(direction.data()), -1);
    base.SetOrigFrame(IkXformMat::Translate(std::numeric_limits<double>::infinity(), 0, 0));
    EXPECT_EQ(states.GetIndexofParallelLinJointState(direction.data()), -1);
}

TEST(JtStateVector, ComparesJointsByPlaceAndValuesWithinTheirTolerances)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    struct Case
    {
        const char* what;
        IkJtStateVector other;
        double linearTol, rotaryTol;
        int expected;
    };
    const std::vector<Case> cases{
        {"equal", j.At(1, 2, 3), 0, 0, 0},
        {"linear at its tolerance", j.At(1.5, 2, 3), 0.5, 0, 0},
        {"linear below its value", j.At(0.5, 2, 3), 0.5, 0, 0},
        {"linear beyond", j.At(1.5, 2, 3), 0.25, 9, 1},
        {"rotary at its tolerance", j.At(1, 1.5, 3.5), 0, 0.5, 0},
        {"rotary beyond", j.At(1, 2, 3.5), 9, 0.25, 1},
        {"negative tolerance", j.At(1, 2, 3), -1, 0, 1},
        {"other order", StatesOf({{&j.b, 2}, {&j.x, 1}, {&j.c, 3}}), 9, 9, 1},
        {"other joint", StatesOf({{&j.x, 1}, {&j.b, 2}, {&j.b, 3}}), 9, 9, 1},
        {"fewer", StatesOf({{&j.x, 1}, {&j.b, 2}}), 9, 9, 1},
        {"none", IkJtStateVector(), 9, 9, 1},
    };
    for (const Case& c : cases) {
        IkJtStateVector other = c.other;
        EXPECT_EQ(states.Compare(other, c.linearTol, c.rotaryTol), c.expected) << c.what;
        EXPECT_EQ(other.Compare(states, c.linearTol, c.rotaryTol), c.expected) << c.what;
    }
    IkJtStateVector empty;
    EXPECT_EQ(IkJtStateVector().Compare(empty, 0, 0), 0);
}

TEST(JtStateVector, CountsAJointAsRotaryByItsPrimitiveWhenComparing)
{
    Joints j;
    j.x.SetJtPrimitive(IkJoint::JtPrimRotX);
    IkJtStateVector other = StatesOf({{&j.x, 1.5}});
    EXPECT_EQ(StatesOf({{&j.x, 1}}).Compare(other, 0, 0.5), 0);
    EXPECT_EQ(StatesOf({{&j.x, 1}}).Compare(other, 0.5, 0), 1);
}

TEST(JtStateVector, CommitsValuesToJointsUpToAMissingOne)
{
    Joints j;
    EXPECT_TRUE(j.At(1, 2, 1e9).CommitValuesToJoints()); // no range check
    EXPECT_EQ(j.x.GetCurValue(), 1);
    EXPECT_EQ(j.b.GetCurValue(), 2);
    EXPECT_EQ(j.c.GetCurValue(), 1e9);
    EXPECT_FALSE(StatesOf({{&j.x, 5}, {nullptr, 6}, {&j.b, 7}}).CommitValuesToJoints());
    EXPECT_EQ(j.x.GetCurValue(), 5);
    EXPECT_EQ(j.b.GetCurValue(), 2);
    EXPECT_TRUE(IkJtStateVector().CommitValuesToJoints());
}

TEST(JtStateVector, ChangesJointsOnlyByCommitting)
{
    Joints j;
    j.x.SetCurValue(0.5);
    j.x.SetDirty(false);
    IkJtStateVector states = j.At(1, 2, 3);
    Values deltas{1, 1, 1};
    states.AppendValues(3, deltas.data(), true);
    states.Reset();
    EXPECT_EQ(j.x.GetCurValue(), 0.5);
    EXPECT_FALSE(j.x.IsDirty());
}

/// The value of one joint after one change, by the overload for limit types.
double Changed(IkJoint& joint, double value, double delta, Limits limits, bool add = true)
{
    IkJtStateVector states = StatesOf({{&joint, value}});
    states.ChangeValues(1, &delta, limits, add);
    return states.GetState(0).GetValue();
}

/// The same by the bool overload.
double ChangedByFlag(IkJoint& joint, double value, double delta, bool applyLimits, bool add = true)
{
    IkJtStateVector states = StatesOf({{&joint, value}});
    states.ChangeValues(1, &delta, applyLimits, add);
    return states.GetState(0).GetValue();
}

struct ChangeCase
{
    const char* what;
    double low, high, value, delta, expected;
};

// With h the module's full turn: x above the range gives fmod(x, h), below it h - fmod(-x, h).
TEST(JtStateVectorLimits, WrapARotaryJointOverAFullTurn)
{
    const double h = kFullTurn;
    const std::vector<ChangeCase> cases{
        {"inside", 0, h, 1, 2, 3},
        {"above", 0, h, 6, 1, 7 - h},
        {"just above", 0, h, 6.25, 0.0625, 6.3125 - h},
        {"turns above", 0, h, 0, 20, std::fmod(20, h)},
        {"two turns exactly", 0, h, h, h, 0},
        {"the high bound stays", 0, h, 0, h, h},
        {"the low bound stays", 0, h, 1, -1, 0},
        {"below", 0, h, 0.2, -0.5, h - (0.5 - 0.2)},
        {"turns below", 0, h, 0, -20, h - std::fmod(20, h)},
        {"a turn below exactly", 0, h, 0, -h, h},
        {"low bound -0", -0.0, h, 6, 1, 7 - h},
        {"both ways: inside", -h, h, 0, -6, -6},
        {"both ways: above", -h, h, 6, 1, 7 - h},
        {"both ways: below", -h, h, -6, -1, h - (7 - h)},
        {"both ways: at the low bound", -h, h, 0, -h, -h},
    };
    for (const ChangeCase& c : cases) {
        IkJtRot rot;
        rot.SetBounds(c.low, c.high);
        for (const Limits limits : {IkJoint::JtLimitRotary, IkJoint::JtLimitAll}) {
            EXPECT_EQ(Changed(rot, c.value, c.delta, limits), c.expected) << c.what;
            EXPECT_EQ(Changed(rot, c.value, -c.delta, limits, false), c.expected) << c.what;
        }
        EXPECT_EQ(ChangedByFlag(rot, c.value, c.delta, true), c.expected) << c.what;
        EXPECT_EQ(ChangedByFlag(rot, c.value, -c.delta, true, false), c.expected) << c.what;
    }
}

TEST(JtStateVectorLimits, ClampToAnyOtherRange)
{
    const double h = kFullTurn;
    const double twoPi = 6.283185307179586;
    const std::vector<ChangeCase> cases{
        {"inside", -3.14, 3.14, 1, 1.5, 2.5},
        {"above", -3.14, 3.14, 3, 1, 3.14},
        {"below", -3.14, 3.14, -3, -1, -3.14},
        {"exact two pi is not the full turn", 0, twoPi, 6, 1, twoPi},
        {"nor is minus two pi", -twoPi, h, 6, 1, h},
        {"low bound off 0", 1e-9, h, 6, 1, h},
        {"high bound next to it", 0, std::nextafter(h, 7), 6, 1, std::nextafter(h, 7)},
        {"from outside to farther outside", -1, 1, 5, 1, 1},
        {"from outside to inside", -1, 1, 5, -4.5, 0.5},
        {"from one side to the other", -1, 1, 5, -10, -1},
        {"inverted: above the high bound", 1, -1, 0, 0.5, -1},
        {"inverted: above both", 1, -1, 0, 5, -1},
        {"inverted: below both", 1, -1, 0, -5, 1},
        {"no width", 2, 2, 0, 1, 2},
        {"infinite", -INFINITY, INFINITY, 1e300, 1e300, 2e300},
    };
    for (const ChangeCase& c : cases) {
        IkJtRot rot;
        IkJtPrism prism;
        for (IkJoint* joint : {static_cast<IkJoint*>(&rot), static_cast<IkJoint*>(&prism)}) {
            joint->SetBounds(c.low, c.high);
            EXPECT_EQ(Changed(*joint, c.value, c.delta, IkJoint::JtLimitAll), c.expected) << c.what;
            EXPECT_EQ(Changed(*joint, c.value, -c.delta, IkJoint::JtLimitAll, false), c.expected)
                << c.what;
            EXPECT_EQ(ChangedByFlag(*joint, c.value, c.delta, true), c.expected) << c.what;
        }
    }
}

TEST(JtStateVectorLimits, WrapALinearJointInTheBoolOverloadAlone)
{
    IkJtPrism prism;
    prism.SetBounds(0, kFullTurn);
    EXPECT_EQ(Changed(prism, 6, 1, IkJoint::JtLimitAll), kFullTurn);
    EXPECT_EQ(Changed(prism, 6, 1, IkJoint::JtLimitLinear), kFullTurn);
    EXPECT_EQ(Changed(prism, 1, -2, IkJoint::JtLimitAll), 0);
    EXPECT_EQ(ChangedByFlag(prism, 6, 1, true), 7 - kFullTurn);
    EXPECT_EQ(ChangedByFlag(prism, 1, -2, true), kFullTurn - 1);
}

TEST(JtStateVectorLimits, ActOnTheJointsOfTheChosenType)
{
    IkJtPrism linear;
    IkJtRot rotary;
    linear.SetBounds(-1, 1);
    rotary.SetBounds(-1, 1);
    struct Case
    {
        int limits;
        double linear, rotary;
    };
    for (const Case& c : {Case{0, 5, 5}, Case{1, 1, 5}, Case{2, 5, 1}, Case{3, 1, 1}}) {
        const Limits limits = static_cast<Limits>(c.limits);
        EXPECT_EQ(Changed(linear, 0, 5, limits), c.linear) << c.limits;
        EXPECT_EQ(Changed(rotary, 0, 5, limits), c.rotary) << c.limits;
    }
    EXPECT_EQ(ChangedByFlag(linear, 0, 5, false), 5);
    EXPECT_EQ(ChangedByFlag(rotary, 0, 5, false), 5);
    EXPECT_EQ(ChangedByFlag(linear, 0, 5, true), 1);
    EXPECT_EQ(ChangedByFlag(rotary, 0, 5, true), 1);
}

TEST(JtStateVectorLimits, CountAJointAsRotaryByItsPrimitive)
{
    IkJtPrism turned;
    turned.SetJtPrimitive(IkJoint::JtPrimRotArbitrary);
    turned.SetBounds(0, kFullTurn);
    EXPECT_EQ(Changed(turned, 6, 1, IkJoint::JtLimitRotary), 7 - kFullTurn);
    EXPECT_EQ(Changed(turned, 6, 1, IkJoint::JtLimitLinear), 7);
}

TEST(JtStateVectorChange, LeavesAStateAloneBelowTheEpsilon)
{
    IkJtPrism prism;
    prism.SetBounds(-1, 1);
    for (const double delta :
         {0.0, -0.0, 1e-17, -1e-17, std::nextafter(kEpsilon, 0), -std::nextafter(kEpsilon, 0)}) {
        EXPECT_EQ(Changed(prism, 5, delta, IkJoint::JtLimitAll), 5) << delta; // stays outside
        EXPECT_EQ(ChangedByFlag(prism, 0, delta, true), 0) << delta;
    }
    for (const double delta : {kEpsilon, -kEpsilon, 1e-15}) {
        EXPECT_EQ(Changed(prism, 5, delta, IkJoint::JtLimitAll), 1) << delta;
        EXPECT_EQ(ChangedByFlag(prism, 0, delta, true), delta);
    }
}

TEST(JtStateVectorChange, IgnoresACountThatIsNotItsSizeAndAMissingArray)
{
    Joints j;
    Values deltas(8, 1.0);
    for (const int count : {-1, 0, 1, 2, 4, 8}) {
        IkJtStateVector states = j.At(1, 2, 3);
        states.ChangeValues(count, deltas.data(), IkJoint::JtLimitAll, true);
        states.ChangeValues(count, deltas.data(), true, true);
        EXPECT_EQ(states.GetValVector(), (Values{1, 2, 3})) << count;
    }
    IkJtStateVector states = j.At(1, 2, 3);
    states.ChangeValues(3, nullptr, IkJoint::JtLimitAll, true);
    states.ChangeValues(3, nullptr, true, true);
    EXPECT_EQ(states.GetValVector(), (Values{1, 2, 3}));
    IkJtStateVector empty;
    empty.ChangeValues(0, deltas.data(), IkJoint::JtLimitAll, true);
    EXPECT_EQ(empty.Size(), 0);
}

TEST(JtStateVectorChange, GivesAStateWithoutJointNoLimits)
{
    IkJtStateVector states = StatesOf({{nullptr, 1}});
    double delta = 1e9;
    states.ChangeValues(1, &delta, IkJoint::JtLimitAll, true);
    states.ChangeValues(1, &delta, true, true);
    EXPECT_EQ(states.GetValVector(), Values{2e9 + 1});
}

/// Every form in which deltas are handed over.
struct Form
{
    const char* what;
    bool isColumn;
    std::function<void(IkJtStateVector&, Values&, Limits, bool add)> byType;
    std::function<void(IkJtStateVector&, Values&, bool applyLimits, bool add)> byFlag;
};

/// One lambda for both overloads of a form: `limits` is a limit type or a flag.
template <class Apply>
Form FormOf(const char* what, bool isColumn, const Apply& apply)
{
    return {what, isColumn, apply, apply};
}

int CountOf(const Values& values)
{
    return static_cast<int>(values.size());
}

template <class Array, class LimitRule>
void ApplyArray(IkJtStateVector& states, Array array, LimitRule limits, bool add)
{
    if (add) {
        states.AppendValues(array, limits);
    } else {
        states.SubtractValues(array, limits);
    }
}

const std::vector<Form> kForms{
    FormOf("pointer", false,
           [](IkJtStateVector& states, Values& d, auto limits, bool add) {
               if (add) {
                   states.AppendValues(CountOf(d), d.data(), limits);
               } else {
                   states.SubtractValues(CountOf(d), d.data(), limits);
               }
           }),
    FormOf("array", false,
           [](IkJtStateVector& states, Values& d, auto limits, bool add) {
               ApplyArray(states, TNT::Array1D<double>(CountOf(d), d.data()), limits, add);
           }),
    FormOf("row", false,
           [](IkJtStateVector& states, Values& d, auto limits, bool add) {
               ApplyArray(states, TNT::Array2D<double>(1, CountOf(d), d.data()), limits, add);
           }),
    FormOf("column", true,
           [](IkJtStateVector& states, Values& d, auto limits, bool add) {
               ApplyArray(states, TNT::Array2D<double>(CountOf(d), 1, d.data()), limits, add);
           }),
};

TEST(JtStateVectorChange, EveryFormAddsAndSubtractsUnderTheLimitsGiven)
{
    Joints j;
    j.x.SetBounds(-1, 1); // the others have room
    Values deltas{5, 0.5, -0.25};
    for (const Form& form : kForms) {
        for (const bool add : {true, false}) {
            const double sign = add ? 1 : -1;
            const Values limited{sign, sign * 0.5, sign * -0.25};
            const Values free{sign * 5, sign * 0.5, sign * -0.25};
            IkJtStateVector states = j.At(0, 0, 0);
            form.byType(states, deltas, IkJoint::JtLimitLinear, add);
            EXPECT_EQ(states.GetValVector(), limited) << form.what;
            states = j.At(0, 0, 0);
            form.byType(states, deltas, IkJoint::JtLimitRotary, add);
            EXPECT_EQ(states.GetValVector(), free) << form.what;
            states = j.At(0, 0, 0);
            form.byFlag(states, deltas, true, add);
            EXPECT_EQ(states.GetValVector(), limited) << form.what;
            states = j.At(0, 0, 0);
            form.byFlag(states, deltas, false, add);
            EXPECT_EQ(states.GetValVector(), free) << form.what;
        }
        EXPECT_EQ(deltas, (Values{5, 0.5, -0.25})) << form.what;
    }
}

TEST(JtStateVectorChange, TheFlagFormsWrapALinearJointAndTheTypeFormsDoNot)
{
    IkJtPrism prism;
    prism.SetBounds(0, kFullTurn);
    for (const Form& form : kForms) {
        for (const bool add : {true, false}) {
            Values delta{add ? 1.0 : -1.0};
            IkJtStateVector states = StatesOf({{&prism, 6}});
            form.byType(states, delta, IkJoint::JtLimitAll, add);
            EXPECT_EQ(states.GetValVector(), Values{kFullTurn}) << form.what;
            states = StatesOf({{&prism, 6}});
            form.byFlag(states, delta, true, add);
            EXPECT_EQ(states.GetValVector(), Values{7 - kFullTurn}) << form.what;
        }
    }
}

TEST(JtStateVectorChange, EveryFormIgnoresAWrongCount)
{
    Joints j;
    for (const Form& form : kForms) {
        for (const std::size_t count : {0U, 1U, 2U, 4U, 20U}) {
            Values deltas(count, 1.0);
            for (const bool add : {true, false}) {
                IkJtStateVector states = j.At(1, 2, 3);
                form.byType(states, deltas, IkJoint::JtLimitAll, add);
                form.byFlag(states, deltas, true, add);
                EXPECT_EQ(states.GetValVector(), (Values{1, 2, 3})) << form.what << " " << count;
            }
        }
    }
}

TEST(JtStateVectorChange, EveryFormTakesMoreThanSixteenJoints)
{
    for (const std::size_t count : {16U, 17U, 40U}) {
        std::vector<IkJtPrism> prisms(count);
        IkJtStateVector start;
        Values deltas;
        Values sums;
        for (IkJtPrism& prism : prisms) {
            const double number = static_cast<double>(deltas.size() + 1);
            start.AddState(IkJtState(&prism, 1000.0));
            deltas.push_back(number);
            sums.push_back(1000.0 + number);
        }
        for (const Form& form : kForms) {
            IkJtStateVector states = start;
            form.byType(states, deltas, IkJoint::JtLimitNone, true);
            EXPECT_EQ(states.GetValVector(), sums) << form.what;
            form.byType(states, deltas, IkJoint::JtLimitNone, false);
            EXPECT_EQ(states.GetValVector(), start.GetValVector()) << form.what;
            form.byFlag(states, deltas, false, true);
            EXPECT_EQ(states.GetValVector(), sums) << form.what;
            form.byFlag(states, deltas, false, false);
            EXPECT_EQ(states.GetValVector(), start.GetValVector()) << form.what;
        }
    }
}

TEST(JtStateVectorChange, IgnoresAnArrayOfSeveralRowsAndColumns)
{
    Joints j;
    for (const auto& [rows, cols] :
         {std::pair{2, 3}, std::pair{3, 2}, std::pair{3, 3}, std::pair{0, 0}, std::pair{3, 0}}) {
        for (const bool add : {true, false}) {
            IkJtStateVector states = j.At(1, 2, 3);
            const TNT::Array2D<double> array(rows, cols, 1.0);
            ApplyArray(states, array, IkJoint::JtLimitAll, add);
            ApplyArray(states, array, true, add);
            EXPECT_EQ(states.GetValVector(), (Values{1, 2, 3})) << rows << "x" << cols;
        }
    }
}

TEST(JtStateVectorMerge, SumAppendsTheJointsThatTheLeftLacks)
{
    Joints j;
    const IkJtStateVector left = StatesOf({{&j.x, 1}, {&j.b, 2}});
    const IkJtStateVector right = StatesOf({{&j.b, 20}, {&j.c, 30}, {&j.x, 10}});
    const States expected{{&j.x, 1}, {&j.b, 2}, {&j.c, 30}};
    const IkJtStateVector sum = left + right;
    EXPECT_EQ(ContentsOf(sum), expected);
    EXPECT_EQ(sum.FindStateByJointPtr(&j.c), 2);
    EXPECT_EQ(left.Size(), 2);
    IkJtStateVector assigned = left;
    EXPECT_EQ(&(assigned += right), &assigned);
    EXPECT_EQ(ContentsOf(assigned), expected);
    EXPECT_EQ(ContentsOf(IkJtStateVector() + right), ContentsOf(right));
    EXPECT_EQ(ContentsOf(left + IkJtStateVector()), ContentsOf(left));
}

TEST(JtStateVectorMerge, SumLooksJointsUpInTheLeftAsItWasOrAsItChanges)
{
    Joints j;
    const IkJtStateVector left = StatesOf({{&j.x, 1}});
    const IkJtStateVector twice = StatesOf({{&j.c, 3}, {&j.c, 4}});
    EXPECT_EQ(ContentsOf(left + twice), (States{{&j.x, 1}, {&j.c, 3}, {&j.c, 4}}));
    IkJtStateVector assigned = left;
    assigned += twice;
    EXPECT_EQ(ContentsOf(assigned), (States{{&j.x, 1}, {&j.c, 3}}));
}

TEST(JtStateVectorMerge, DifferenceKeepsTheJointsThatBothHold)
{
    Joints j;
    const IkJtStateVector left = j.At(1, 2, 3);
    const IkJtStateVector right = StatesOf({{&j.x, 10}, {&j.c, 30}});
    EXPECT_EQ(ContentsOf(left - right), ContentsOf(left));
    EXPECT_EQ((left - right).FindStateByJointPtr(&j.x), 0);
    IkJtStateVector assigned = left;
    EXPECT_EQ(&(assigned -= right), &assigned);
    EXPECT_EQ(ContentsOf(assigned), ContentsOf(left));
    EXPECT_EQ(assigned.FindStateByJointPtr(&j.x), 0);
    EXPECT_EQ(ContentsOf(IkJtStateVector() - right), States());
}

// A state whose joint the look-up has forgotten: the second of two, after one was deleted.
TEST(JtStateVectorMerge, DifferenceRemovesAFirstStateThatTheLookUpDoesNotKnow)
{
    Joints j;
    IkJtStateVector left = StatesOf({{&j.x, 1}, {&j.x, 2}, {&j.b, 3}});
    left.DelState(left.GetState(0));
    ASSERT_EQ(ContentsOf(left), (States{{&j.x, 2}, {&j.b, 3}}));
    const IkJtStateVector right = StatesOf({{&j.c, 0}, {&j.x, 0}, {&j.b, 0}});
    EXPECT_EQ(ContentsOf(left - right), (States{{&j.b, 3}}));
    EXPECT_EQ(left.Size(), 2);
    left -= right;
    EXPECT_EQ(ContentsOf(left), (States{{&j.b, 3}}));
}

TEST(JtStateVectorMerge, MayTakeTheVectorItself)
{
    Joints j;
    IkJtStateVector states = j.At(1, 2, 3);
    const IkJtStateVector& same = states;
    states += same;
    states -= same;
    EXPECT_EQ(ContentsOf(states), ContentsOf(j.At(1, 2, 3)));

    IkJtState ofB(&j.b);
    states.DelState(ofB); // stays, but is unknown
    states += same;
    EXPECT_EQ(ContentsOf(states), (States{{&j.x, 1}, {&j.b, 2}, {&j.c, 3}, {&j.b, 2}}));

    IkJtStateVector unknown = StatesOf({{&j.x, 1}, {&j.x, 2}});
    unknown.DelState(unknown.GetState(0));
    const IkJtStateVector& sameUnknown = unknown;
    unknown -= sameUnknown;
    EXPECT_EQ(unknown.Size(), 0);
}

TEST(JtStateVector, CopesWithStatesWithoutJoint)
{
    Joints j;
    IkJtStateVector states = StatesOf({{&j.x, 500}, {nullptr, 500}});
    EXPECT_EQ(states.GetNameVector(), (std::vector<std::wstring>{L"X", L""}));
    EXPECT_EQ(IndicesFrom(states, &IkJtStateVector::GetOutOfBoundIndices), Indices{0});
    EXPECT_EQ(states.FindStateByUserPtr(nullptr), 0);
    EXPECT_EQ(states.FindStateByJointPtr(nullptr), 1);
    EXPECT_EQ(states.GetIndexofParallelLinJointState(nullptr), -1);
    IkJtStateVector other = states;
    EXPECT_EQ(states.Compare(other, 0, 0), 0);
    states.DelState(states.GetState(1));
    EXPECT_EQ(states.Size(), 2);
    EXPECT_EQ(states.FindStateByJointPtr(nullptr), -1);
}

} // namespace
