#include "IkJtState.h"

#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/Bits.h"

namespace
{

using test::BitsOf;

void ExpectState(const IkJtState& state, const IkJoint* joint, double value)
{
    EXPECT_EQ(state.GetJoint(), joint);
    EXPECT_EQ(BitsOf(state.GetValue()), BitsOf(value));
}

TEST(JtState, PairsAJointWithAValue)
{
    static_assert(std::has_virtual_destructor_v<IkJtState>);
    IkJtRot rot;
    rot.SetCurValue(0.5);
    ExpectState(IkJtState(), nullptr, 0.0);
    ExpectState(IkJtState(&rot), &rot, 0.5);
    ExpectState(IkJtState(static_cast<IkJoint*>(&rot)), &rot, 0.5);
    ExpectState(IkJtState(&rot, -0.0), &rot, -0.0);
    ExpectState(IkJtState(nullptr, 3.0), nullptr, 3.0);
}

TEST(JtState, TakesANodeAsAJointOnlyWhereItIsOne)
{
    class NotReallyAJoint : public IkBody
    {
      public:
        bool IsJoint() const override { return true; }
    };
    class HiddenJoint : public IkJoint
    {
      public:
        bool IsJoint() const override { return false; }
    };
    IkJtPrism prism;
    prism.SetCurValue(12.5);
    IkBody body;
    NotReallyAJoint notReally;
    HiddenJoint hidden;
    hidden.SetCurValue(5);
    ExpectState(IkJtState(static_cast<IkNode*>(&prism)), &prism, 12.5);
    ExpectState(IkJtState(static_cast<IkNode*>(&body)), nullptr, 0.0);
    ExpectState(IkJtState(static_cast<IkNode*>(&notReally)), nullptr, 0.0);
    ExpectState(IkJtState(static_cast<IkNode*>(&hidden)), nullptr, 0.0);
}

TEST(JtState, OfANullPointerIsEmpty)
{
    ExpectState(IkJtState(static_cast<IkJoint*>(nullptr)), nullptr, 0.0);
    ExpectState(IkJtState(static_cast<IkNode*>(nullptr)), nullptr, 0.0);
}

TEST(JtState, DoesNotFollowTheJointAfterwards)
{
    IkJtPrism prism;
    IkJtState state(&prism);
    prism.SetCurValue(4);
    ExpectState(state, &prism, 0.0);
    state.SetValue(1e9); // no range check
    ExpectState(state, &prism, 1e9);
    EXPECT_EQ(prism.GetCurValue(), 4);
}

TEST(JtState, CopiesBothFields)
{
    IkJtPrism prism;
    const IkJtState state(&prism, 2.5);
    ExpectState(IkJtState(state), &prism, 2.5);
    IkJtState assigned;
    EXPECT_EQ(&(assigned = state), &assigned);
    ExpectState(assigned, &prism, 2.5);
}

TEST(JtState, ComparesValuesAloneAndExactly)
{
    struct Case
    {
        double a, b;
        bool isEqual, isLess;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Case> cases{
        {1.0, 1.0, true, false},  {1.0, 1.0 + 2.3e-16, false, true}, {2.0, 1.0, false, false},
        {0.0, -0.0, true, false}, {nan, nan, false, false},
    };
    IkJtPrism prism;
    IkJtRot rot;
    for (const Case& c : cases) {
        const IkJtState a(&prism, c.a);
        const IkJtState b(&rot, c.b); // another joint: not looked at
        EXPECT_EQ(a == b, c.isEqual) << c.a << " " << c.b;
        EXPECT_EQ(a < b, c.isLess) << c.a << " " << c.b;
    }
}

} // namespace
