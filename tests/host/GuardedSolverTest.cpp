#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "ArmText.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/GuardedSolver.h"
#include "solve/PointSolver.h"
#include "support/Fixtures.h"
#include "support/Random.h"

namespace
{

using test::Fixture;
using test::Random;

/// Counts the passes of its solves.
class Watched : public host::GuardedSolver
{
  public:
    using GuardedSolver::GuardedSolver;
    int passes{0};

  private:
    bool ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                int includeRotary, bool fkFlag) override
    {
        ++passes;
        return GuardedSolver::ComputePartialJacobian(reference, jacobian, includeRotary, fkFlag);
    }
};

class GuardedArm : public testing::Test
{
  protected:
    IkEndState PoseAt(const std::vector<double>& joints)
    {
        IkJtStateVector states = arm.States(joints);
        return arm.stream->SolveFK(states, false, nullptr, nullptr, false);
    }

    static IkEndState WholeOrientation(IkEndState pose)
    {
        std::array<bool, 4> all{true, true, true, true};
        pose.SetFilter(all.data());
        return pose;
    }

    /// How many of 200 poses with the turn about the tool left open are reached from within 0.1
    /// rad.
    int CountReached(IkSolver& solver)
    {
        Random random(3);
        int reached = 0;
        for (int i = 0; i < 200; ++i) {
            std::vector<double> joints;
            for (const IkJoint* joint : arm.joints) {
                joints.push_back(random.Between(joint->GetLowBound(), joint->GetHiBound()));
            }
            IkEndState target = PoseAt(joints);
            for (double& joint : joints) {
                joint += random.Between(-0.1, 0.1);
            }
            IkJtStateVector start = arm.States(joints);
            solver.SetStartingJtStates(&start);
            IkJtStateVector result;
            reached += solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false) ? 1 : 0;
        }
        return reached;
    }

    const Fixture arm = test::SixAxisArm();
};

TEST_F(GuardedArm, IsNotLedAstrayByTheTurnAboutTheTool)
{
    // Five numbers fix a position and a direction, so that one of the six singular values is a
    // leftover of the differences. Only where the tool is in line with J6 is it zero.
    IkXformMat leaning = IkXformMat::Translate(80, 0, 0);
    leaning.RotYThis(1.0);
    arm.toolChain->GetAt(arm.toolChain->Size() - 1)->SetOrigFrame(leaning);
    IkSolverPsuedoInverse unguarded(arm.stream);
    EXPECT_LT(CountReached(unguarded), 100);
    host::GuardedSolver solver(arm.stream, 60);
    EXPECT_GE(CountReached(solver), 198);
}

TEST_F(GuardedArm, GivesUpAfterItsPassesWhereItIsFarOff)
{
    IkXformMat pose = IkXformMat::Translate(5000, 0, 0); // the arm is 1.1 m long
    IkEndState target;
    target.SetCompleteState(pose);
    IkJtStateVector start = arm.States({0.1, 0.2, 0.3, 0.4, 0.5, 0.6});
    IkJtStateVector result;
    Watched solver(arm.stream, 60);
    solver.SetStartingJtStates(&start);
    EXPECT_FALSE(solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false));
    EXPECT_EQ(solver.passes, 61);
    solver.passes = 0;
    solver.GiveUpAfter(10);
    EXPECT_FALSE(solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false));
    EXPECT_EQ(solver.passes, 11); // passes count from 0
    solver.passes = 0;
    solver.GiveUpAfter(0);
    EXPECT_FALSE(solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false));
    EXPECT_EQ(solver.passes, 61);
}

TEST_F(GuardedArm, GoesOnWhereItIsNear)
{
    // From 0.1 rad away some passes are needed to 1e-12, but after two it is within 1 mm.
    IkEndState target = WholeOrientation(PoseAt({0.4, -0.9, 1.2, 0.6, 1.0, -0.5}));
    IkJtStateVector start = arm.States({0.41, -0.91, 1.21, 0.61, 1.01, -0.51});
    IkJtStateVector result;
    Watched solver(arm.stream, 60);
    solver.SetStartingJtStates(&start);
    solver.GiveUpAfter(2);
    EXPECT_TRUE(solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false));
    EXPECT_GT(solver.passes, 3);
}

TEST(GuardedArmAtATable, GoesOnWithTheOtherJointsWhereOneStandsAtItsLimit)
{
    // Half round the middle of a table that soon is at its limit, the tool leaning outwards by 20
    // degrees: five numbers for seven joints, and then for six. The table turns against the tool,
    // to keep it in front of the arm.
    const host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(test::ArmText("-360, 360", "-10, 5"), "arm.toml"));
    host::PointSolver solver(machine, machine.streams.front(), {});
    host::JointValues joints{0, 0.2, 0.6, 0, 0.8, 0, 0};
    const double lean = host::ToRadians(20);
    for (int degrees = 0; degrees <= 180; degrees += 3) {
        const double c = std::cos(host::ToRadians(degrees));
        const double s = std::sin(host::ToRadians(degrees));
        const host::PathTarget target{{{150.0 * c, 150.0 * s, 50.0},
                                       {std::sin(lean) * c, std::sin(lean) * s, std::cos(lean)}},
                                      std::nullopt};
        ASSERT_TRUE(solver.Solve(target, IkJoint::JtLimitAll, joints)) << degrees << " degrees";
        EXPECT_LE(solver.ErrorAt(joints, target.at).position, 1e-6);
        for (std::size_t i = 0; i < joints.size(); ++i) {
            EXPECT_GE(joints[i], machine.axes[i].joint->GetLowBound());
            EXPECT_LE(joints[i], machine.axes[i].joint->GetHiBound());
        }
        if (degrees >= 90) {
            EXPECT_NEAR(joints.back(), host::ToRadians(-10), 1e-3) << degrees << " degrees";
        }
    }
}

} // namespace
