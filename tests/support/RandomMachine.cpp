#include "support/RandomMachine.h"

#include <array>
#include <cmath>

namespace test
{

namespace
{

constexpr double kPi = 3.141592653589793;
constexpr double kFullTurn = 6.28318530717958; // as default rotary bounds have it

void SetRandomBounds(IkJoint& joint, Random& random, double reach)
{
    switch (random.Below(6)) {
    case 0:
        joint.SetBounds(reach, -reach); // inverted
        break;
    case 1:
        joint.SetBounds(joint.GetCurValue() - reach / 100, joint.GetCurValue() + reach / 100);
        break;
    case 2:
        joint.SetBounds(0.0, kFullTurn);
        break;
    case 3:
        joint.SetBounds(-kFullTurn, kFullTurn);
        break;
    default:
        joint.SetBounds(-reach, reach);
        break;
    }
}

IkJoint* RandomJoint(Random& random)
{
    const bool isRotary = random.OneIn(2);
    const double reach = isRotary ? kPi : 500.0;
    IkJoint* joint = isRotary ? static_cast<IkJoint*>(new IkJtRot(L"R"))
                              : static_cast<IkJoint*>(new IkJtPrism(L"P"));
    const int first = isRotary ? IkJoint::JtPrimRotX : IkJoint::JtPrimTransX;
    const int kinds = random.OneIn(20) ? 4 : 3; // the fourth is the arbitrary axis, without motion
    joint->SetJtPrimitive(static_cast<IkJoint::JtPrimitives>(first + random.Below(kinds)));
    joint->SetOrigFrame(random.OneIn(3) ? IkXformMat() : RandomFrame(random, 200));
    joint->SetCurValue(random.OneIn(5) ? random.OneOf({0.0, kPi / 2, -kPi / 2, kPi})
                                       : random.Between(-reach, reach) / 2);
    joint->SetInitialValue(random.OneIn(3) ? random.Between(-1, 1) : 0.0);
    joint->SetDirectionReversed(random.OneIn(3));
    joint->SetIsLocked(random.OneIn(8));
    SetRandomBounds(*joint, random, reach);
    return joint;
}

IkNode* RandomBranch(IkNode* from, Random& random)
{
    const int joints = 1 + random.Below(5);
    for (int i = 0; i < joints; ++i) {
        if (random.OneIn(3)) {
            auto* body = new IkBody(L"body");
            body->SetOrigFrame(RandomFrame(random, 300));
            from->AddChild(body);
            from = body;
        }
        IkJoint* joint = RandomJoint(random);
        from->AddChild(joint);
        from = joint;
    }
    return from;
}

} // namespace

IkXformMat RandomFrame(Random& random, double reach)
{
    // Drawn one by one: the order in which arguments are evaluated is each compiler's own.
    const double x = random.Between(-reach, reach);
    const double y = random.Between(-reach, reach);
    const double z = random.OneIn(4) ? 0.0 : random.Between(-reach, reach);
    IkXformMat frame = IkXformMat::Translate(x, y, z);
    if (!random.OneIn(3)) {
        frame.RotZThis(random.OneIn(4) ? kPi / 2 : random.Between(-kPi, kPi));
        frame.RotXThis(random.Between(-kPi, kPi));
    }
    return frame;
}

Fixture RandomMachine(Random& random)
{
    Fixture fixture;
    fixture.name = "random machine";
    fixture.machine = std::make_unique<IkMachine>();
    IkNode* base = new IkBody(L"base");
    fixture.machine->SetBaseNode(base);
    if (random.OneIn(4)) { // a joint below everything, shared by both chains
        IkJoint* shared = RandomJoint(random);
        base->AddChild(shared);
        base = shared;
    }
    fixture.toolChain = std::make_unique<IkChain>();
    fixture.toolChain->FillFromBase2Node(RandomBranch(base, random));
    fixture.partChain = std::make_unique<IkChain>();
    fixture.partChain->FillFromBase2Node(random.OneIn(4) ? base : RandomBranch(base, random));

    fixture.stream = new IkStream;
    fixture.machine->AddStream(fixture.stream);
    fixture.stream->AddChain(fixture.toolChain.get());
    if (!random.OneIn(10)) {
        fixture.stream->AddChain(fixture.partChain.get());
    }
    if (random.OneIn(3)) {
        const IkXformMat frame = RandomFrame(random, 200);
        fixture.stream->SetPartSpaceMatrix(frame, random.OneIn(3));
    }
    IkJtStateVector states = fixture.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        fixture.joints.push_back(states.GetState(i).GetJoint());
        if (random.OneIn(10)) {
            fixture.stream->SetLocalLock(states.GetState(i).GetJoint(), true);
        }
    }
    return fixture;
}

IkEndState RandomTarget(const Fixture& fixture, Random& random)
{
    IkJtStateVector states = fixture.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        const double reach = state.GetJoint()->IsRotary() ? 0.4 : 60.0;
        state.SetValue(state.GetValue() + random.Between(-reach, reach));
    }
    IkEndState target = fixture.stream->SolveFK(states, false, nullptr, nullptr, false);
    if (random.OneIn(2)) {
        std::array<bool, 4> filter{random.OneIn(2), random.OneIn(2), random.OneIn(2),
                                   !random.OneIn(6)};
        target.SetFilter(filter.data());
    }
    return target;
}

} // namespace test
