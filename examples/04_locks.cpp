// Holding joints: by their own lock, by a lock of one stream, or all rotary ones for one solve.

#include <cstdio>

#include "ExampleMill.h"

namespace
{

void Solve(const char* what, ExampleMill& mill, IkEndState target, bool lockRotary)
{
    IkJtStateVector answer;
    const bool isReached =
        mill.stream.SolveIK(target, answer, false, IkJoint::JtLimitAll, lockRotary);
    std::printf("%-28s %s", what, isReached ? "reached at" : "not reached");
    for (int i = 0; isReached && i < answer.Size(); ++i) {
        std::printf(" %ls %.3f", answer.GetState(i).GetJoint()->GetName().c_str(),
                    answer.GetState(i).GetValue());
    }
    std::puts("");
}

} // namespace

int main()
{
    ExampleMill mill;
    mill.a.SetCurValue(0.3);
    mill.c.SetCurValue(0.2);

    // A position alone: three numbers for five joints, so that some may be held.
    IkEndState target;
    bool positionOnly[] = {false, false, false, true};
    target.SetFilter(positionOnly);
    target.SetCompleteState(IkXformMat::Translate(30, 20, 10));

    Solve("nothing held:", mill, target, false);
    mill.x.SetIsLocked(true); // in every solve
    Solve("X held by its own lock:", mill, target, false);
    mill.x.SetIsLocked(false);
    mill.stream.SetLocalLock(&mill.c, true); // in this stream's solves
    Solve("C held by the stream:", mill, target, false);
    mill.stream.ResetAllLocalLocks();
    Solve("all rotary joints held:", mill, target, true); // in this solve
    mill.x.SetIsLocked(true);
    Solve("those and X held:", mill, target, true);
    return 0;
}
