#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ArmWays.h"
#include "MillText.h"
#include "geometry/Frame.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/Branches.h"
#include "solve/SampledSolver.h"
#include "support/LoadedFixture.h"

namespace
{

using host::Branch;

constexpr double kDegree = 3.14159265358979323846 / 180.0; // [rad]

/// The mill with a tool that leans by `tilt` towards -y over the point (0, 0, 50) of the table.
///
/// The table turned by A about its axis 120 below machine zero, and by C about z, sees the tool
/// along (sin C sin A, cos C sin A, cos A): towards -y for A = -tilt and C = 0, and for A = tilt
/// half a turn of C away. The point is 70 above the A axis and on the C axis: it stands at Y = -70
/// sin A and Z = 70 cos A - 120.
class LeaningTool : public testing::Test
{
  protected:
    host::Branches At(double tilt_deg, IkJoint::JointLimitTypes limits)
    {
        host::ToolPoint point;
        point.position = {0.0, 0.0, 50.0};
        point.direction = {0.0, -std::sin(tilt_deg * kDegree), std::cos(tilt_deg * kDegree)};
        return host::FindBranches(machine, machine.streams.front(), point, limits);
    }

    /// Checks each branch against the closed form and returns its A, in whole degrees.
    static std::set<int> CheckedTilts(const host::Branches& branches, double tilt_deg)
    {
        std::set<int> tilts;
        for (const Branch& branch : branches.found) {
            const double a = branch.joints.at(3);
            const double c = branch.joints.at(4);
            EXPECT_NEAR(std::fabs(a), tilt_deg * kDegree, 1e-6);
            EXPECT_NEAR(std::cos(c), a < 0.0 ? 1.0 : -1.0, 1e-6);
            EXPECT_NEAR(branch.joints.at(0), 0.0, 1e-5);
            EXPECT_NEAR(branch.joints.at(1), -70.0 * std::sin(a), 1e-5);
            EXPECT_NEAR(branch.joints.at(2), 70.0 * std::cos(a) - 120.0, 1e-5);
            EXPECT_LE(branch.error.position, 1e-6); // the square root of the tolerance 1e-12
            EXPECT_LE(branch.error.direction_deg, 1e-3);
            tilts.insert(static_cast<int>(std::lround(a / kDegree)));
        }
        return tilts;
    }

    host::LoadedMachine machine{
        host::AssembleMachine(host::ReadMachine(test::MillText(), "mill.toml"))};
};

TEST_F(LeaningTool, IsReachedByTiltingEitherWay)
{
    const host::Branches branches = At(20.0, IkJoint::JtLimitAll);
    EXPECT_EQ(CheckedTilts(branches, 20.0), (std::set<int>{-20, 20}));
    EXPECT_GE(branches.starts, branches.found.size());
}

TEST_F(LeaningTool, IsReachedOneWayWhereALimitStandsInTheOther)
{
    EXPECT_EQ(CheckedTilts(At(40.0, IkJoint::JtLimitAll), 40.0), std::set<int>{-40});
    EXPECT_EQ(CheckedTilts(At(40.0, IkJoint::JtLimitNone), 40.0), (std::set<int>{-40, 40}));
}

TEST_F(LeaningTool, LeavesTheJointsWhereTheyStood)
{
    At(20.0, IkJoint::JtLimitAll);
    for (const host::Axis& axis : machine.axes) {
        EXPECT_EQ(axis.joint->GetCurValue(), 0.0);
    }
}

TEST(BranchesOfAnArm, AreAllThatLieWithinTheLimitsWithTheToolTurnedToX)
{
    const host::LoadedMachine machine = test::Loaded(test::SixAxisArm());
    host::PointSolver solver(machine, machine.streams.front(), {});
    for (const host::JointValues& there :
         {host::JointValues{0.4, 0.3, 0.9, 0.6, 0.4, -0.5}, {1.1, -0.3, -1.2, 0.7, -1.1, 1.6}}) {
        const host::CutterLocation tool = solver.ToolAt(there);
        host::ToolPoint point;
        point.position = tool.position;
        point.direction = tool.direction;
        const host::Branches branches =
            host::FindBranches(machine, machine.streams.front(), point, IkJoint::JtLimitAll);
        // What of x is across the tool, which is far from x.
        ASSERT_LT(std::fabs(tool.direction[0]), 0.9);
        const host::Vec3& d = tool.direction;
        const auto xAxis = host::Normalised({1 - d[0] * d[0], -d[0] * d[1], -d[0] * d[2]});
        ASSERT_TRUE(xAxis && branches.xAxis);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR((*branches.xAxis)[i], (*xAxis)[i], 1e-12);
        }
        const std::vector<host::JointValues> ways =
            test::WaysWithinLimits(solver.Axes(), {tool, *xAxis});
        EXPECT_GE(ways.size(), 2U);
        EXPECT_EQ(branches.found.size(), ways.size());
        for (const host::JointValues& way : ways) {
            EXPECT_TRUE(std::any_of(
                branches.found.begin(), branches.found.end(), [&](const Branch& branch) {
                    return host::AreSameSolution(solver.Axes(), branch.joints, way);
                }));
        }
        EXPECT_EQ(branches.starts, 257U);
    }
}

} // namespace
