// What stays the same when a machine, its values or the limits of a solve are exchanged for equal
// ones.

#include <array>
#include <vector>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "properties/EveryMachine.h"
#include "support/Bits.h"
#include "support/Repeat.h"

using test::BitsOf;
using test::EveryMachine;
using test::PoseAt;
using test::Random;
using test::RandomJointValues;
using test::StartNear;

namespace
{

constexpr double kFullTurn = 6.283185307179586; // [rad]

// Frames reach some 1000 mm; a product of ten of them is known to 1e-12 of that.
constexpr double kRounding = 1e-9; // [mm], and for entries of rotations

void ExpectNear(const IkXformMat& a, const IkXformMat& b)
{
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            ASSERT_NEAR(a[i][j], b[i][j], kRounding);
        }
    }
}

} // namespace

TEST_P(EveryMachine, TheInverseOfEveryFrameUndoesIt)
{
    test::Repeat(200, 41, [this](Random& random) {
        IkJtStateVector states = fixture.States(RandomJointValues(fixture, random));
        for (const IkChain* chain : {fixture.toolChain.get(), fixture.partChain.get()}) {
            const IkXformMat frame = chain->GetXformMat(states);
            const IkXformMat inverse = frame.QuickInvert();
            ExpectNear(frame * inverse, IkXformMat());
            ExpectNear(inverse * frame, IkXformMat());
            ExpectNear(inverse.QuickInvert(), frame);
            IkXformMat inPlace(frame);
            inPlace.QuickInvertThis();
            ASSERT_EQ(BitsOf(inPlace), BitsOf(inverse));
        }
    });
}

TEST_P(EveryMachine, SeenFromTheToolThePartStandsTheOtherWayRound)
{
    IkStream exchanged;
    exchanged.AddChain(fixture.partChain.get());
    exchanged.AddChain(fixture.toolChain.get());
    test::Repeat(200, 42, [&](Random& random) {
        IkJtStateVector states = fixture.States(RandomJointValues(fixture, random));
        const IkXformMat partToTool =
            stream.SolveFK(states, false, nullptr, nullptr, false).GetCompleteState();
        const IkXformMat toolToPart =
            exchanged.SolveFK(states, false, nullptr, nullptr, false).GetCompleteState();
        ExpectNear(partToTool * toolToPart, IkXformMat());
    });
}

TEST_P(EveryMachine, WholeTurnsChangeNoPose)
{
    test::Repeat(200, 43, [this](Random& random) {
        std::vector<double> values = RandomJointValues(fixture, random);
        const IkXformMat pose = PoseAt(fixture, values).GetCompleteState();
        for (std::size_t i = 0; i < values.size(); ++i) {
            const int turns = random.Below(7) - 3;
            values[i] += fixture.joints[i]->IsRotary() ? turns * kFullTurn : 0.0;
        }
        ExpectNear(PoseAt(fixture, values).GetCompleteState(), pose);
    });
}

TEST_P(EveryMachine, SolvesFromWholeTurnsAwayEndWholeTurnsAway)
{
    long tried = 0;
    long followed = 0;
    test::Repeat(100, 44, [&](Random& random) {
        const std::vector<double> wanted = RandomJointValues(fixture, random);
        IkEndState target = PoseAt(fixture, wanted);
        if (fixture.name == "SixAxisArm") { // the whole orientation, else the roll is left open
            std::array<bool, 4> filter{true, true, true, true};
            target.SetFilter(filter.data());
        }
        std::vector<double> start = StartNear(fixture, wanted, random);
        fixture.SetJoints(start);
        IkJtStateVector first;
        if (!stream.SolveIK(target, first, false, IkJoint::JtLimitNone, false)) {
            return;
        }
        for (std::size_t i = 0; i < start.size(); ++i) {
            start[i] += fixture.joints[i]->IsRotary() ? (random.Below(3) - 1) * kFullTurn : 0.0;
        }
        fixture.SetJoints(start);
        ++tried;
        IkJtStateVector second;
        if (!stream.SolveIK(target, second, false, IkJoint::JtLimitNone, false)) {
            return; // beside a pole the last bit of a sine decides
        }
        ++followed;
        // Both are met to the tolerance: 1e-4 mm and 0.001 deg each.
        const IkEndState a = PoseAt(fixture, first.GetValVector());
        const IkEndState b = PoseAt(fixture, second.GetValVector());
        ASSERT_LE(test::Distance(a, b), 2e-4);
        ASSERT_LE(test::Angle(a, b), 2 * 1.746e-5);
    });
    const double wantedShare = fixture.name == "SixAxisArm" ? 0.98 : 0.999;
    EXPECT_GE(static_cast<double>(followed), wantedShare * static_cast<double>(tried));
}

TEST_P(EveryMachine, MorePassesNeverTurnASuccessIntoAFailure)
{
    test::Repeat(60, 45, [this](Random& random) {
        IkEndState target = PoseAt(fixture, RandomJointValues(fixture, random));
        fixture.SetJoints(RandomJointValues(fixture, random));
        const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
        bool hasSucceeded = false;
        IkJtStateVector found;
        for (int passes = 1; passes <= 96; passes += 1 + passes / 8) {
            IkSolverPsuedoInverse solver(&stream);
            solver.SetMaxIterations(passes);
            IkJtStateVector result;
            const bool isSolved = solver.SolveIK(target, result, false, limits, false);
            ASSERT_TRUE(isSolved || !hasSucceeded) << passes;
            if (hasSucceeded) { // the passes before are the same, and it ends with the same one
                ASSERT_EQ(BitsOf(result), BitsOf(found)) << passes;
            }
            if (isSolved) {
                hasSucceeded = true;
                found = result;
            }
        }
    });
}

TEST_P(EveryMachine, LocksOfEitherKindGiveTheSameSolve)
{
    test::Repeat(60, 46, [this](Random& random) {
        const std::vector<double> start = RandomJointValues(fixture, random);
        IkEndState target = PoseAt(fixture, StartNear(fixture, start, random));
        fixture.SetJoints(start);
        const auto held =
            static_cast<std::size_t>(random.Below(static_cast<int>(fixture.joints.size())));
        IkJtStateVector byJoint;
        fixture.joints[held]->SetIsLocked(true);
        const bool isSolved = stream.SolveIK(target, byJoint, false, IkJoint::JtLimitAll, false);
        fixture.joints[held]->SetIsLocked(false);
        IkJtStateVector byStream;
        ASSERT_TRUE(stream.SetLocalLock(fixture.joints[held], true));
        ASSERT_EQ(stream.SolveIK(target, byStream, false, IkJoint::JtLimitAll, false), isSolved);
        stream.ResetAllLocalLocks();
        ASSERT_EQ(BitsOf(byJoint), BitsOf(byStream));
    });
}
