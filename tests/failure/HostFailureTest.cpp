// A host's own code that throws out of a solve: the exception passes through as it is, and the next
// solve gives what it would have given without it.

#include <functional>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "failure/FailingNew.h"
#include "support/Bits.h"

namespace
{

/// Does something to its surroundings the first time that it is asked.
class Meddler : public IkJtPrism
{
  public:
    using IkJtPrism::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        if (meddle) {
            const std::function<void()> once = std::move(meddle);
            meddle = nullptr;
            once();
        }
        return IkJtPrism::GetXformMat(states);
    }
    bool UpdateFrames() override
    {
        if (meddle) {
            meddle();
        }
        return IkJtPrism::UpdateFrames();
    }

    std::function<void()> meddle;
};

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

TEST(HostFailure, ANodeThatLengthensTheChainThatIsEvaluated)
{
    Meddler meddler;
    IkChain chain;
    chain.AddNode(&meddler);
    // Enough to make the list of nodes move.
    std::vector<IkBody> more(100);
    more.back().SetOrigFrame(IkXformMat::Translate(0, 0, 7));
    meddler.meddle = [&chain, &more] {
        for (IkBody& body : more) {
            chain.AddNode(&body);
        }
    };
    IkJtStateVector states;
    EXPECT_EQ(chain.GetXformMat(states)[2][3], 7.0); // what is added is taken along
    EXPECT_EQ(chain.Size(), 101);
}

TEST(HostFailure, ANodeThatAddsToTheTreeThatIsUpdated)
{
    Meddler meddler;
    IkBody root;
    root.AddChild(&meddler);
    std::vector<IkBody> more(100);
    meddler.meddle = [&root, &more] {
        for (IkBody& body : more) {
            root.AddChild(&body);
        }
    };
    root.UpdateFrames();
    EXPECT_FALSE(more.back().IsDirty());
}

TEST(HostFailure, ANodeThatEmptiesTheStreamThatIsEvaluated)
{
    Meddler meddler;
    meddler.SetOrigFrame(IkXformMat::Translate(1, 2, 3));
    IkBody table;
    IkChain tool;
    IkChain part;
    tool.AddNode(&meddler);
    part.AddNode(&table);
    IkStream stream;
    stream.AddChain(&tool);
    stream.AddChain(&part);
    meddler.meddle = [&stream] { stream.Reset(); };
    // Without a part chain the pose is the tool's.
    EXPECT_EQ(stream.SolveFK(false).GetCompleteState()[1][3], 2.0);
    EXPECT_EQ(stream.NumChains(), 0);
}

TEST(HostFailure, ANodeThatEmptiesTheStreamThatIsSolved)
{
    Rig rig;
    Meddler meddler;
    rig.tool.AddNode(&meddler);
    meddler.meddle = [&rig] { rig.stream.Reset(); };
    rig.target.SetCompleteState(IkXformMat::Translate(1e6, 0, 0));
    EXPECT_FALSE(SolveByStream(rig));
    EXPECT_EQ(rig.stream.NumChains(), 0);
}
