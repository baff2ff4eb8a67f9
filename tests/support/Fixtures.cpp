#include "support/Fixtures.h"

#include <stdexcept>

namespace test
{

namespace
{

constexpr double kHalfTurn = 3.141592653589793;

/// Builds a machine branch by branch; the machine takes the nodes over.
class Builder
{
  public:
    explicit Builder(const std::string& name)
    {
        fixture.name = name;
        fixture.machine = std::make_unique<IkMachine>();
        base = new IkBody(L"base");
        fixture.machine->SetBaseNode(base);
    }

    IkNode* Base() { return base; }

    IkNode* Body(IkNode* parent, const std::wstring& name, const IkXformMat& frame)
    {
        auto* body = new IkBody(name);
        body->SetOrigFrame(frame);
        parent->AddChild(body);
        return body;
    }

    IkNode* Prism(IkNode* parent, const std::wstring& name, IkJoint::JtPrimitives primitive,
                  double low, double high)
    {
        return Place(parent, new IkJtPrism(name), primitive, IkXformMat(), low, high);
    }

    IkNode* Rot(IkNode* parent, const std::wstring& name, IkJoint::JtPrimitives primitive,
                const IkXformMat& frame, double low, double high)
    {
        return Place(parent, new IkJtRot(name), primitive, frame, low, high);
    }

    /// Joints that carry the part move the other way for a positive value.
    static IkNode* Reversed(IkNode* joint)
    {
        dynamic_cast<IkJoint&>(*joint).SetDirectionReversed(true);
        return joint;
    }

    Fixture Finish(IkNode* tool, IkNode* part)
    {
        fixture.toolChain = std::make_unique<IkChain>();
        fixture.toolChain->FillFromBase2Node(tool);
        fixture.partChain = std::make_unique<IkChain>();
        fixture.partChain->FillFromBase2Node(part);
        fixture.stream = new IkStream;
        fixture.stream->SetId(1);
        fixture.stream->AddChain(fixture.toolChain.get());
        fixture.stream->AddChain(fixture.partChain.get());
        fixture.machine->AddStream(fixture.stream);
        IkJtStateVector states = fixture.stream->GetJointStates();
        for (int i = 0; i < states.Size(); ++i) {
            fixture.joints.push_back(states.GetState(i).GetJoint());
        }
        return std::move(fixture);
    }

  private:
    static IkNode* Place(IkNode* parent, IkJoint* joint, IkJoint::JtPrimitives primitive,
                         const IkXformMat& frame, double low, double high)
    {
        joint->SetJtPrimitive(primitive);
        joint->SetOrigFrame(frame);
        joint->SetBounds(low, high);
        parent->AddChild(joint);
        return joint;
    }

    Fixture fixture;
    IkNode* base;
};

} // namespace

IkJoint& Fixture::Joint(const std::wstring& wanted) const
{
    for (IkJoint* joint : joints) {
        if (joint->GetName() == wanted) {
            return *joint;
        }
    }
    throw std::logic_error("no such joint in " + name);
}

IkJtStateVector Fixture::States(const std::vector<double>& values) const
{
    IkJtStateVector states = stream->GetJointStates();
    if (!states.SetValVector(values)) {
        throw std::logic_error("wrong number of values for " + name);
    }
    return states;
}

void Fixture::SetJoints(const std::vector<double>& values) const
{
    States(values).CommitValuesToJoints();
}

std::vector<double> Fixture::JointValues() const
{
    return stream->GetJointStates().GetValVector();
}

//   base ── X ── Y ── Z ── spindle (nose at (0, 0, 400))       tool chain: X Y Z
//     └──── table (at the origin)                               part chain: no joints
Fixture ThreeAxisMill()
{
    Builder b("ThreeAxisMill");
    IkNode* x = b.Prism(b.Base(), L"X", IkJoint::JtPrimTransX, -400, 400);
    IkNode* y = b.Prism(x, L"Y", IkJoint::JtPrimTransY, -300, 300);
    IkNode* z = b.Prism(y, L"Z", IkJoint::JtPrimTransZ, -350, 50);
    IkNode* spindle = b.Body(z, L"spindle", IkXformMat::Translate(0, 0, 400));
    IkNode* table = b.Body(b.Base(), L"table", IkXformMat());
    return b.Finish(spindle, table);
}

//   base ── X ── Y ── Z ── spindle (nose at (0, 0, 500))       tool chain: X Y Z
//     └──── A (about x, axis through (0, 0, 100))
//             └── C (about z) ── table (50 above the A axis)   part chain: A C
Fixture TableTableMill()
{
    Builder b("TableTableMill");
    IkNode* x = b.Prism(b.Base(), L"X", IkJoint::JtPrimTransX, -500, 500);
    IkNode* y = b.Prism(x, L"Y", IkJoint::JtPrimTransY, -500, 500);
    IkNode* z = b.Prism(y, L"Z", IkJoint::JtPrimTransZ, -600, 200);
    IkNode* spindle = b.Body(z, L"spindle", IkXformMat::Translate(0, 0, 500));
    IkNode* a =
        b.Rot(b.Base(), L"A", IkJoint::JtPrimRotX, IkXformMat::Translate(0, 0, 100), -2.1, 0.6);
    IkNode* c =
        b.Rot(a, L"C", IkJoint::JtPrimRotZ, IkXformMat(), -6.28318530717958, 6.28318530717958);
    IkNode* table = b.Body(c, L"table", IkXformMat::Translate(0, 0, 50));
    return b.Finish(spindle, table);
}

//   base ── Y ── Z ── B (about y, 200 above the tip) ── spindle (tip 200 below B)   tool: Y Z B
//     └──── X (carries the part: moves the other way) ── C (about z) ── table       part: X C
Fixture HeadTableMill()
{
    Builder b("HeadTableMill");
    IkNode* y = b.Prism(b.Base(), L"Y", IkJoint::JtPrimTransY, -500, 500);
    IkNode* z = b.Prism(y, L"Z", IkJoint::JtPrimTransZ, -300, 500);
    IkNode* head = b.Rot(z, L"B", IkJoint::JtPrimRotY, IkXformMat::Translate(0, 0, 500), -1.9, 1.9);
    IkNode* spindle = b.Body(head, L"spindle", IkXformMat::Translate(0, 0, -200));
    IkNode* x = Builder::Reversed(b.Prism(b.Base(), L"X", IkJoint::JtPrimTransX, -600, 600));
    IkNode* c =
        b.Rot(x, L"C", IkJoint::JtPrimRotZ, IkXformMat(), -6.28318530717958, 6.28318530717958);
    IkNode* table = b.Body(c, L"table", IkXformMat());
    return b.Finish(spindle, table);
}

//   base ── X ── Y ── Z ── C (about z) ── A (about x) ── spindle (tip 180 below A)  tool: X Y Z C A
//     └──── table                                                                   part: no joints
Fixture HeadHeadMill()
{
    Builder b("HeadHeadMill");
    IkNode* x = b.Prism(b.Base(), L"X", IkJoint::JtPrimTransX, -1500, 1500);
    IkNode* y = b.Prism(x, L"Y", IkJoint::JtPrimTransY, -1000, 1000);
    IkNode* z = b.Prism(y, L"Z", IkJoint::JtPrimTransZ, -800, 400);
    IkNode* c = b.Rot(z, L"C", IkJoint::JtPrimRotZ, IkXformMat::Translate(0, 0, 700),
                      -6.28318530717958, 6.28318530717958);
    IkNode* a = b.Rot(c, L"A", IkJoint::JtPrimRotX, IkXformMat(), -1.9, 1.9);
    IkNode* spindle = b.Body(a, L"spindle", IkXformMat::Translate(0, 0, -180));
    IkNode* table = b.Body(b.Base(), L"table", IkXformMat());
    return b.Finish(spindle, table);
}

//   base ── J1 (z) ── J2 (y, 350 out, 400 up) ── J3 (y, 450 up) ── J4 (x, 420 out) ── J5 (y)
//     │       └── J6 (x) ── flange (80 out)                                         tool: J1 … J6
//     └── bench (800 out in front of the arm)                                       part: no joints
Fixture SixAxisArm()
{
    Builder b("SixAxisArm");
    IkNode* j1 = b.Rot(b.Base(), L"J1", IkJoint::JtPrimRotZ, IkXformMat(), -2.9, 2.9);
    IkNode* j2 =
        b.Rot(j1, L"J2", IkJoint::JtPrimRotY, IkXformMat::Translate(150, 0, 400), -1.5, 2.0);
    IkNode* j3 = b.Rot(j2, L"J3", IkJoint::JtPrimRotY, IkXformMat::Translate(0, 0, 450), -2.0, 2.4);
    IkNode* j4 =
        b.Rot(j3, L"J4", IkJoint::JtPrimRotX, IkXformMat::Translate(420, 0, 50), -3.3, 3.3);
    IkNode* j5 = b.Rot(j4, L"J5", IkJoint::JtPrimRotY, IkXformMat(), -2.1, 2.1);
    IkNode* j6 =
        b.Rot(j5, L"J6", IkJoint::JtPrimRotX, IkXformMat(), -6.28318530717958, 6.28318530717958);
    IkXformMat flange = IkXformMat::Translate(80, 0, 0);
    flange.RotYThis(kHalfTurn / 2); // the tool axis z points out along the wrist
    IkNode* tool = b.Body(j6, L"flange", flange);
    IkNode* bench = b.Body(b.Base(), L"bench", IkXformMat::Translate(800, 0, 100));
    return b.Finish(tool, bench);
}

//   base ── Z ── X ── Y ── B (about y) ── spindle (tip 150 below B)     tool chain: Z X Y B
//     └──── C (the turning spindle, about z, 250 up) ── chuck           part chain: C
Fixture MillTurn()
{
    Builder b("MillTurn");
    IkNode* z = b.Prism(b.Base(), L"Z", IkJoint::JtPrimTransZ, -200, 1200);
    IkNode* x = b.Prism(z, L"X", IkJoint::JtPrimTransX, -50, 600);
    IkNode* y = b.Prism(x, L"Y", IkJoint::JtPrimTransY, -120, 120);
    IkNode* head = b.Rot(y, L"B", IkJoint::JtPrimRotY, IkXformMat::Translate(0, 0, 400), -2.0, 2.0);
    IkNode* spindle = b.Body(head, L"spindle", IkXformMat::Translate(0, 0, -150));
    IkNode* c = b.Rot(b.Base(), L"C", IkJoint::JtPrimRotZ, IkXformMat::Translate(0, 0, 250),
                      -6.28318530717958, 6.28318530717958);
    IkNode* chuck = b.Body(c, L"chuck", IkXformMat());
    return b.Finish(spindle, chuck);
}

} // namespace test
