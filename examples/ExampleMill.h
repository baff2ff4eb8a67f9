#ifndef TRUNNION_EXAMPLES_EXAMPLE_MILL_H
#define TRUNNION_EXAMPLES_EXAMPLE_MILL_H

#include <Ik.h>

/// The mill of the examples. Lengths are millimetres, angles radians.
///
///   base -- X -- Y -- Z -- spindle                    tool side, its nose at machine zero
///     '---- A (about x) -- C (about z) -- table       part side, turning about machine zero
class ExampleMill
{
  public:
    ExampleMill()
    {
        auto* base = new IkBody(L"base");
        machine.SetBaseNode(base); // the machine owns the tree from here on
        Hang(base, &x, IkJoint::JtPrimTransX, -500, 500);
        Hang(&x, &y, IkJoint::JtPrimTransY, -500, 500);
        Hang(&y, &z, IkJoint::JtPrimTransZ, -500, 500);
        Hang(base, &a, IkJoint::JtPrimRotX, -2, 2);
        Hang(&a, &c, IkJoint::JtPrimRotZ, -6.28318530717958, 6.28318530717958);
        toolChain.FillFromBase2Node(&z);
        partChain.FillFromBase2Node(&c);
        stream.AddChain(&toolChain);
        stream.AddChain(&partChain);
        machine.AddStream(&stream);
    }

    /// A tool at (`x`, 20, 10) of the part that leans by half a radian. Its position and direction
    /// count.
    static IkEndState LeaningTool(double x)
    {
        IkXformMat partToTool = IkXformMat::Translate(x, 20, 10);
        partToTool.RotZThis(0.7);
        partToTool.RotXThis(0.5);
        IkEndState target;
        target.SetCompleteState(partToTool);
        return target;
    }

    // Owned by the machine, which deletes them: hence references to objects on the heap.
    IkJtPrism& x{*new IkJtPrism(L"X")};
    IkJtPrism& y{*new IkJtPrism(L"Y")};
    IkJtPrism& z{*new IkJtPrism(L"Z")};
    IkJtRot& a{*new IkJtRot(L"A")};
    IkJtRot& c{*new IkJtRot(L"C")};
    IkStream& stream{*new IkStream};

  private:
    static void Hang(IkNode* parent, IkJoint* joint, IkJoint::JtPrimitives primitive, double low,
                     double high)
    {
        joint->SetJtPrimitive(primitive);
        joint->SetBounds(low, high);
        parent->AddChild(joint);
    }

    IkChain toolChain; // chains stay the host's, so they live beside the machine
    IkChain partChain;
    IkMachine machine;
};

#endif
