// A host of its own: two slides carry a turning head. Where must they stand for the tool's tip?

#include <cstdio>

#include <Ik.h>

int main()
{
    auto* base = new IkBody(L"base");
    auto* x = new IkJtPrism(L"X");
    auto* z = new IkJtPrism(L"Z");
    auto* b = new IkJtRot(L"B");
    auto* tool = new IkBody(L"tool");
    x->SetJtPrimitive(IkJoint::JtPrimTransX);
    z->SetJtPrimitive(IkJoint::JtPrimTransZ);
    b->SetJtPrimitive(IkJoint::JtPrimRotY);
    x->SetBounds(-200, 200); // [mm]
    z->SetBounds(-200, 200);
    b->SetBounds(-1.5, 1.5);                               // [rad]
    tool->SetOrigFrame(IkXformMat::Translate(0, 0, -100)); // its tip, below the head's axis
    base->AddChild(x);
    x->AddChild(z);
    z->AddChild(b);
    b->AddChild(tool);
    IkMachine machine; // owns the tree and the stream
    machine.SetBaseNode(base);
    IkChain chain;
    chain.FillFromBase2Node(tool);
    auto* stream = new IkStream;
    stream->AddChain(&chain);
    machine.AddStream(stream);

    IkXformMat pose = IkXformMat::Translate(50, 0, -75);
    pose.RotYThis(0.6435011087932844); // sine 0.6, cosine 0.8
    IkEndState target;
    target.SetCompleteState(pose);
    IkJtStateVector answer;
    if (!stream->SolveIK(target, answer, true, IkJoint::JtLimitAll, false)) {
        std::puts("not reached");
        return 1;
    }
    answer.CommitValuesToJoints(); // a solve never moves the joints by itself
    std::printf("X %.3f mm, Z %.3f mm, B %.3f rad\n", x->GetCurValue(), z->GetCurValue(),
                b->GetCurValue());
    return 0;
}
