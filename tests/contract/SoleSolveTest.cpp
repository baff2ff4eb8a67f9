// The contract of threads: solves take turns in the whole process, and a stream is used by one
// thread at a time. A debug build stops where a host breaks it. The overlaps here are certain: a
// node starts the other thread in the middle of a call and waits for it.

#include <functional>
#include <thread>

#include <gtest/gtest.h>

#include "IkSolver.h"

namespace
{

/// Does something else whenever it is asked.
class Busy : public IkJtPrism
{
  public:
    using IkJtPrism::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        if (meanwhile) {
            const std::function<void()> once = std::move(meanwhile);
            meanwhile = nullptr;
            once();
        }
        return IkJtPrism::GetXformMat(states);
    }

    std::function<void()> meanwhile;
};

/// One joint along x, and a target 5 ahead.
struct Rig
{
    Rig()
    {
        joint.SetBounds(-100, 100);
        chain.AddNode(&joint);
        stream.AddChain(&chain);
        target.SetCompleteState(IkXformMat::Translate(5, 0, 0));
    }

    bool Solve()
    {
        IkJtStateVector result;
        return stream.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    }
    template <class Solver>
    bool SolveBy()
    {
        Solver solver(&stream);
        IkJtStateVector result;
        return solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    }

    Busy joint;
    IkChain chain;
    IkStream stream;
    IkEndState target;
};

void OnAnotherThread(const std::function<void()>& run)
{
    std::thread(run).join();
}

class SoleSolve : public testing::Test
{
  protected:
    Rig one;
    Rig other;
};

/// Stops are there to be seen in debug builds only.
class SoleSolveDeathTest : public SoleSolve
{
  protected:
    void SetUp() override
    {
#ifdef NDEBUG
        GTEST_SKIP() << "builds with NDEBUG do not check it";
#endif
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }
};

} // namespace

TEST_F(SoleSolveDeathTest, TwoStreamsAtOnce)
{
    one.joint.meanwhile = [this] { OnAnotherThread([this] { other.Solve(); }); };
    EXPECT_DEATH(one.Solve(), "two solves overlap in time");
}

TEST_F(SoleSolveDeathTest, AStreamDuringASolverObjectsSolve)
{
    one.joint.meanwhile = [this] { OnAnotherThread([this] { other.Solve(); }); };
    EXPECT_DEATH(one.SolveBy<IkSolverPsuedoInverse>(), "two solves overlap in time");
}

TEST_F(SoleSolveDeathTest, ASolverObjectDuringAHybridSolve)
{
    one.joint.meanwhile = [this] {
        OnAnotherThread([this] { other.SolveBy<IkSolverPsuedoInverse>(); });
    };
    EXPECT_DEATH(one.SolveBy<IkSolverHybrid>(), "two solves overlap in time");
}

TEST_F(SoleSolveDeathTest, AHybridSolveDuringAStreams)
{
    one.joint.meanwhile = [this] { OnAnotherThread([this] { other.SolveBy<IkSolverHybrid>(); }); };
    EXPECT_DEATH(one.Solve(), "two solves overlap in time");
}

TEST_F(SoleSolveDeathTest, AnEvaluationOfTheStreamThatIsSolved)
{
    one.joint.meanwhile = [this] { OnAnotherThread([this] { one.stream.SolveFK(false); }); };
    EXPECT_DEATH(one.Solve(), "one stream is used by two threads at once");
}

TEST_F(SoleSolveDeathTest, TwoEvaluationsOfOneStream)
{
    one.joint.meanwhile = [this] { OnAnotherThread([this] { one.stream.SolveFK(false); }); };
    EXPECT_DEATH(one.stream.SolveFK(false), "one stream is used by two threads at once");
}

TEST_F(SoleSolve, SolvesOfTheSameThreadMayNest)
{
    int inner = 0;
    one.joint.meanwhile = [this, &inner] {
        inner += other.Solve() ? 1 : 0;
        inner += other.SolveBy<IkSolverPsuedoInverse>() ? 1 : 0;
        inner += other.SolveBy<IkSolverHybrid>() ? 1 : 0;
        one.stream.SolveFK(false);
    };
    EXPECT_TRUE(one.Solve());
    EXPECT_EQ(inner, 3);
}

TEST_F(SoleSolve, AnotherStreamMayBeEvaluatedMeanwhile)
{
    IkEndState pose;
    one.joint.meanwhile = [this, &pose] {
        OnAnotherThread([this, &pose] {
            other.joint.SetCurValue(7);
            pose = other.stream.SolveFK(false);
        });
    };
    EXPECT_TRUE(one.Solve());
    EXPECT_EQ(pose.GetCompleteState()[0][3], 7.0);
}

TEST_F(SoleSolve, ThreadsMayTakeTurns)
{
    int solved = 0;
    for (int turn = 0; turn < 4; ++turn) {
        OnAnotherThread([this, &solved] { solved += one.Solve() ? 1 : 0; });
        solved += one.SolveBy<IkSolverHybrid>() ? 1 : 0;
    }
    EXPECT_EQ(solved, 8);
}

TEST_F(SoleSolve, ASolveThatIsBrokenOffIsOver)
{
    one.joint.meanwhile = [] { throw 1; };
    EXPECT_THROW(one.Solve(), int);
    bool isSolved = false;
    OnAnotherThread([this, &isSolved] { isSolved = other.Solve(); });
    EXPECT_TRUE(isSolved);
}
