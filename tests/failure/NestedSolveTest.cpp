// Nodes of a host's own class that change the stream when they are asked in the middle of a solve
// of it, or solve it again: nothing is read or written out of range, and the outer solve goes on
// with what it finds. Built with a sanitizer these tests also fail where it does not.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "IkSolver.h"

namespace
{

/// Slides along x, and does something else when it is asked for the n-th time.
class Meddler : public IkJtPrism
{
  public:
    using IkJtPrism::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        if (asked++ == meddlesAt) {
            meddle();
        }
        return IkJtPrism::GetXformMat(states);
    }
    bool IsJoint() const override
    {
        if (questions++ == answersAt) {
            meddle();
        }
        return true;
    }

    std::function<void()> meddle;
    int meddlesAt{-1};
    int answersAt{-1};
    int asked{0};
    mutable int questions{0};
};

constexpr int kMoreJoints = 22; // with 12 rows, more than a Jacobian keeps in itself

/// x and y slide; `more` is not in the stream at first. There is a target at (3, 4, 0).
struct Rig
{
    Rig()
    {
        y.SetJtPrimitive(IkJoint::JtPrimTransY);
        tool.AddNode(&x);
        tool.AddNode(&y);
        stream.AddChain(&tool);
        for (int i = 0; i < kMoreJoints; ++i) {
            joints.push_back(std::make_unique<IkJtPrism>());
            more.AddNode(joints.back().get());
            joints.back()->SetBounds(-100, 100);
        }
        x.SetBounds(-100, 100);
        y.SetBounds(-100, 100);
        target.SetCompleteState(IkXformMat::Translate(3, 4, 0));
    }

    bool SolveStream(IkJtStateVector& result)
    {
        return stream.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    }
    bool SolveBy(IkSolver& solver, IkJtStateVector& result)
    {
        solver.SetStreamPtr(&stream);
        return solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    }

    Meddler x;
    IkJtPrism y;
    std::vector<std::unique_ptr<IkJtPrism>> joints;
    IkChain tool;
    IkChain more;
    IkStream stream;
    IkEndState target;
    IkSolverPsuedoInverse psuedo;
    IkSolverHybrid hybrid;
};

using Solve = std::function<bool(Rig&, IkJtStateVector&)>;
using Meddle = std::function<void(Rig&)>;

struct NamedSolve
{
    std::string name;
    Solve solve;
};

std::vector<NamedSolve> AllSolves()
{
    return {
        {"stream", [](Rig& rig, IkJtStateVector& result) { return rig.SolveStream(result); }},
        {"psuedo inverse",
         [](Rig& rig, IkJtStateVector& result) { return rig.SolveBy(rig.psuedo, result); }},
        {"hybrid",
         [](Rig& rig, IkJtStateVector& result) { return rig.SolveBy(rig.hybrid, result); }},
    };
}

/// Where the tool stands in the part for an answer.
void ExpectAtTarget(Rig& rig, IkJtStateVector& answer, const std::string& what)
{
    const IkXformMat pose =
        rig.stream.SolveFK(answer, false, nullptr, nullptr, false).GetCompleteState();
    EXPECT_NEAR(pose[0][3], 3.0, 1e-3) << what;
    EXPECT_NEAR(pose[1][3], 4.0, 1e-3) << what;
}

/// Meddles at every asking of a solve that there is, one after the other. Returns how many there
/// are.
int MeddleEverywhere(const NamedSolve& outer, const Meddle& meddle, int Meddler::*at,
                     const std::function<void(Rig&, bool, IkJtStateVector&, int)>& check)
{
    int n = 0;
    for (bool hasMeddled = true; hasMeddled && n < 1000; ++n) {
        Rig rig;
        hasMeddled = false;
        rig.x.meddle = [&rig, &meddle, &hasMeddled] {
            hasMeddled = true;
            meddle(rig);
        };
        rig.x.asked = 0;
        rig.x.questions = 0;
        rig.x.*at = n;
        IkJtStateVector result;
        const bool isSolved = outer.solve(rig, result);
        check(rig, isSolved, result, n);
    }
    return n;
}

} // namespace

TEST(NestedSolve, OfTheSameStreamLeavesTheOuterOneAnAnswer)
{
    for (const NamedSolve& outer : AllSolves()) {
        for (const NamedSolve& inner : AllSolves()) {
            const std::string what = inner.name + " in " + outer.name;
            const int times = MeddleEverywhere(
                outer,
                [&inner, &what](Rig& rig) {
                    IkJtStateVector result;
                    EXPECT_TRUE(inner.solve(rig, result)) << what;
                    EXPECT_EQ(result.Size(), 2) << what;
                },
                &Meddler::meddlesAt,
                [&what](Rig& rig, bool isSolved, IkJtStateVector& result, int /*n*/) {
                    EXPECT_TRUE(isSolved) << what;
                    EXPECT_EQ(result.Size(), 2) << what;
                    ExpectAtTarget(rig, result, what);
                });
            EXPECT_GE(times, 4) << what; // the pose, a column each, the pose again
        }
    }
}

TEST(NestedSolve, AfterAChainHasJoinedTheStream)
{
    for (const NamedSolve& outer : AllSolves()) {
        for (const NamedSolve& inner : AllSolves()) {
            const std::string what = inner.name + " in " + outer.name;
            MeddleEverywhere(
                outer,
                [&inner, &what](Rig& rig) {
                    rig.stream.AddChain(&rig.more);
                    IkJtStateVector result;
                    EXPECT_TRUE(inner.solve(rig, result)) << what;
                    EXPECT_EQ(result.Size(), 2 + kMoreJoints) << what;
                },
                &Meddler::meddlesAt,
                [&what](Rig& rig, bool isSolved, IkJtStateVector& result, int n) {
                    if (isSolved) {
                        ExpectAtTarget(rig, result, what + " at " + std::to_string(n));
                    }
                });
        }
    }
}

TEST(NestedSolve, AJointAskedWhetherItIsOneMaySolve)
{
    for (const NamedSolve& outer : AllSolves()) {
        for (const NamedSolve& inner : AllSolves()) {
            for (const bool isJoined : {false, true}) {
                const std::string what = inner.name + " in " + outer.name;
                MeddleEverywhere(
                    outer,
                    [&inner, isJoined](Rig& rig) {
                        if (isJoined) {
                            rig.stream.AddChain(&rig.more);
                        }
                        IkJtStateVector result;
                        inner.solve(rig, result);
                    },
                    &Meddler::answersAt,
                    [&what](Rig& rig, bool isSolved, IkJtStateVector& result, int n) {
                        if (isSolved) {
                            ExpectAtTarget(rig, result, what + " at " + std::to_string(n));
                        }
                    });
            }
        }
    }
}

TEST(NestedSolve, AChainThatJoinsDuringASolveCountsFromTheNextOne)
{
    for (const NamedSolve& outer : AllSolves()) {
        MeddleEverywhere(
            outer, [](Rig& rig) { rig.stream.AddChain(&rig.more); }, &Meddler::meddlesAt,
            [&outer](Rig& rig, bool isSolved, IkJtStateVector& result, int n) {
                const std::string what = outer.name + " at " + std::to_string(n);
                if (rig.stream.NumChains() == 1) {
                    return; // asked less often than that
                }
                EXPECT_TRUE(isSolved) << what;
                ExpectAtTarget(rig, result, what);
                IkJtStateVector next;
                EXPECT_TRUE(outer.solve(rig, next)) << what;
                EXPECT_EQ(next.Size(), 2 + kMoreJoints) << what;
                ExpectAtTarget(rig, next, what);
            });
    }
}

TEST(NestedSolve, AStreamThatLosesItsChainsHasNothingToSolve)
{
    for (const NamedSolve& outer : AllSolves()) {
        for (const NamedSolve& inner : AllSolves()) {
            MeddleEverywhere(
                outer,
                [&inner](Rig& rig) {
                    rig.stream.Reset();
                    IkJtStateVector result;
                    EXPECT_FALSE(inner.solve(rig, result));
                    EXPECT_EQ(result.Size(), 0);
                },
                &Meddler::meddlesAt,
                [&outer, &inner](Rig&, bool isSolved, IkJtStateVector& result, int n) {
                    const std::string what =
                        inner.name + " in " + outer.name + " at " + std::to_string(n);
                    // Solved where the last pose was on the way already; a stream's own solve has
                    // no joints left to list then.
                    if (isSolved && result.Size() > 0) {
                        ASSERT_EQ(result.Size(), 2) << what;
                        EXPECT_NEAR(result.GetState(0).GetValue(), 3.0, 1e-3) << what;
                        EXPECT_NEAR(result.GetState(1).GetValue(), 4.0, 1e-3) << what;
                    } else {
                        EXPECT_EQ(result.Size(), 0) << what;
                    }
                });
        }
    }
}
