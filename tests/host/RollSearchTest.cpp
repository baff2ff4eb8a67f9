#include <algorithm>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "ArmText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "solve/RollSearch.h"

namespace
{

using host::PointSolver;
using host::Toolpath;
using host::ToolPoint;
using host::ToolRoll;
using host::Vec3;

void ExpectNear(const Vec3& vector, const Vec3& expected)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(vector[i], expected[i], 1e-12) << "component " << i;
    }
}

/// An arm whose J6 turns by no more than 60 degrees either way, so that not every turn of the tool
/// about itself is within its reach.
///
/// With the tool pointing down J5 bends the wrist by a quarter of a turn, which brings the x axis
/// of the tool from up to along the arm's own plane: at J6 = 0 it points straight away from J1's
/// axis. With J4 and J5 turned over J6 would be half a turn away, outside its limits.
class SearchedRoll : public testing::Test
{
  protected:
    SearchedRoll() { path.operations.resize(1); }

    void Add(const Vec3& position, bool isRapid, int operation = 0)
    {
        ToolPoint point;
        point.position = position;
        point.direction = {0, 0, 1};
        point.isRapid = isRapid;
        point.operation = operation;
        path.points.push_back(point);
    }

    /// A stroke along y, 100 mm either way, at this height above the bench.
    void AddStroke(double height, int operation = 0)
    {
        for (int i = -10; i <= 10; ++i) {
            Add({0.0, 10.0 * i, height}, i == -10, operation);
        }
    }

    std::vector<Vec3> Search(const Vec3& reference, const std::vector<double>& lengths)
    {
        host::RollSearch search(
            machine, std::vector<const host::LoadedStream*>(lengths.size(), &machine.streams[0]),
            lengths, {});
        return search.XAxes(path, {ToolRoll::Policy::Search, reference});
    }

    bool IsReached(std::size_t point, const Vec3& xAxis)
    {
        PointSolver solver(machine, machine.streams[0], {});
        host::SampledSolver sampled(machine, machine.streams[0], {}, solver.Initial());
        const ToolPoint& at = path.points[point];
        return sampled.FindFirst({{at.position, at.direction}, xAxis}, solver.Initial())
            .has_value();
    }

    host::LoadedMachine machine{
        host::AssembleMachine(host::ReadMachine(test::ArmText("-60, 60"), "arm.toml"))};
    Toolpath path;
};

TEST_F(SearchedRoll, TurnsTheToolToWhereTheArmReaches)
{
    // Along y J6 would have to stand at 90 degrees. The turn with the least travel from zero, and
    // away from the limits, is back to x: there J6 goes from 7 to -7 degrees, as J1 does.
    AddStroke(100);
    EXPECT_FALSE(IsReached(10, {0, 1, 0}));
    const std::vector<Vec3> axes = Search({0, 1, 0}, {0.0});
    ASSERT_EQ(axes.size(), path.points.size());
    for (std::size_t i = 0; i < axes.size(); ++i) {
        ExpectNear(axes[i], {1, 0, 0});
        EXPECT_TRUE(IsReached(i, axes[i]));
    }
}

TEST_F(SearchedRoll, LeavesTheToolAtTheReferenceWhereItIsBest)
{
    AddStroke(100);
    for (const Vec3& axis : Search({1, 0, 0}, {0.0})) {
        ExpectNear(axis, {1, 0, 0});
    }
}

TEST_F(SearchedRoll, LeavesTheToolAtTheReferenceWhereNothingIsReached)
{
    AddStroke(5000);
    for (const Vec3& axis : Search({0, 1, 0}, {0.0})) {
        ExpectNear(axis, {0, 1, 0});
    }
}

TEST_F(SearchedRoll, IsOneAngleForEachRun)
{
    // Far to the left the arm turns J1 by 80 degrees; the tool has to go along.
    AddStroke(100);
    for (int i = 0; i <= 10; ++i) {
        Add({-700.0, 550.0 + 10.0 * i, 100.0}, i == 0); // from 100 out and 550 aside
    }
    const std::vector<Vec3> axes = Search({1, 0, 0}, {0.0});
    for (std::size_t i = 0; i < 21; ++i) {
        ExpectNear(axes[i], {1, 0, 0});
    }
    EXPECT_FALSE(IsReached(21, {1, 0, 0}));
    for (std::size_t i = 21; i < axes.size(); ++i) {
        ExpectNear(axes[i], axes[21]);
        EXPECT_TRUE(IsReached(i, axes[i]));
    }
}

TEST_F(SearchedRoll, CountsWithTheToolOfEachOperation)
{
    // From J2 the arm reaches 450 + 423 mm. The stroke is 500 under the bench: without a tool the
    // wrist has to come 650 out and 720 down, 970 mm away; with 400 mm of tool 725 mm away.
    path.operations.resize(2);
    AddStroke(-500, 0);
    AddStroke(-500, 1);
    const std::vector<Vec3> axes = Search({0, 1, 0}, {0.0, 400.0});
    for (std::size_t i = 0; i < 21; ++i) {
        ExpectNear(axes[i], {0, 1, 0});
        ExpectNear(axes[i + 21], {1, 0, 0});
    }
}

TEST_F(SearchedRoll, TakesManyRunsTogether)
{
    for (int i = 0; i < 40; ++i) {
        AddStroke(100.0 + i);
    }
    const std::vector<Vec3> axes = Search({0, 1, 0}, {0.0});
    for (const Vec3& axis : axes) {
        ExpectNear(axis, {1, 0, 0});
    }
    EXPECT_EQ(Search({0, 1, 0}, {0.0}), axes);
}

} // namespace
