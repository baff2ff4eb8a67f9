// Which joint values reach a pose? Solves one, commits it, and shows what a failure looks like.

#include <cstdio>

#include "ExampleMill.h"

int main()
{
    ExampleMill mill;
    mill.a.SetCurValue(0.1); // at A = 0 turning C does not turn the tool: start beside that

    IkEndState target = ExampleMill::LeaningTool(30);
    IkJtStateVector answer;
    if (!mill.stream.SolveIK(target, answer, false, IkJoint::JtLimitAll, false)) {
        std::puts("not reached");
        return 1;
    }
    answer.CommitValuesToJoints(); // a solve never moves the joints by itself
    std::printf("reached at X %.3f  Y %.3f  Z %.3f  A %.3f  C %.3f\n", mill.x.GetCurValue(),
                mill.y.GetCurValue(), mill.z.GetCurValue(), mill.a.GetCurValue(),
                mill.c.GetCurValue());

    // The last step of a failed solve goes without limits, so that the answer can say which joints
    // the target would drive out of them.
    target = ExampleMill::LeaningTool(900);
    const bool isReached = mill.stream.SolveIK(target, answer, false, IkJoint::JtLimitAll, false);
    std::printf("%s, 870 further out:", isReached ? "reached" : "not reached");
    for (int i = 0; i < answer.Size(); ++i) {
        std::printf(" %ls is beyond its limits", answer.GetState(i).GetJoint()->GetName().c_str());
    }
    std::puts("");
    return 0;
}
