// A host's own code that throws out of a solve: the exception passes through as it is, and the next
// solve gives what it would have given without it.

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "failure/FailingNew.h"
#include "support/Bits.h"

namespace
{

/// Throws when it is asked for the n-th time.
class Quitter : public IkJtRot
{
  public:
    using IkJtRot::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        if (asked++ == throwsAt) {
            throw std::runtime_error("asked once too often");
        }
        return IkJtRot::GetXformMat(states);
    }

    int asked{0};
    int throwsAt{-1};
};

/// x and y slide, and a table turns under them.
struct Rig
{
    Rig()
    {
        y.SetJtPrimitive(IkJoint::JtPrimTransY);
        for (IkJoint* slide : {&x, &y}) {
            slide->SetBounds(-100, 100);
            tool.AddNode(slide);
        }
        part.AddNode(&table);
        stream.AddChain(&tool);
        stream.AddChain(&part);
        target.SetCompleteState(IkXformMat::Translate(3, 4, 0));
    }

    IkJtPrism x;
    IkJtPrism y;
    Quitter table;
    IkChain tool;
    IkChain part;
    IkStream stream;
    IkEndState target;
    IkJtStateVector result;
};

bool SolveByStream(Rig& rig)
{
    return rig.stream.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
}

bool SolveByObject(Rig& rig)
{
    IkSolverHybrid solver(&rig.stream);
    return solver.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
}

} // namespace

TEST(HostFailure, ANodeThatThrowsInTheMiddleOfASolve)
{
    for (bool (*solve)(Rig&) : {SolveByStream, SolveByObject}) {
        Rig undisturbed;
        ASSERT_TRUE(solve(undisturbed));
        ASSERT_GT(undisturbed.table.asked, 3);
        for (int n = 0; n < undisturbed.table.asked; ++n) {
            const long inUse = test::BlocksInUse();
            {
                Rig rig;
                rig.table.throwsAt = n;
                ASSERT_THROW(solve(rig), std::runtime_error) << "question " << n;
                rig.table.throwsAt = -1;
                ASSERT_TRUE(solve(rig));
                ASSERT_EQ(test::BitsOf(rig.result), test::BitsOf(undisturbed.result))
                    << "after question " << n;
            }
            ASSERT_EQ(test::BlocksInUse(), inUse) << "question " << n;
        }
    }
}
