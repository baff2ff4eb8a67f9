#include <chrono>
#include <sstream>

#include <gtest/gtest.h>

#include "MillText.h"
#include "app/Summary.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"

namespace
{

host::MotionRow RowWith(const std::vector<double>& joints, const host::PoseError& error)
{
    host::MotionRow row;
    row.joints = joints;
    row.error = error;
    return row;
}

host::MotionRow FailedRow()
{
    host::MotionRow row;
    row.flags.hasFailed = true;
    return row;
}

class Summary : public testing::Test
{
  protected:
    // Z and its two rotary axes alone: a short report.
    Summary()
        : machine(host::AssembleMachine(
              host::ReadMachine(test::MillWith(22, "parent = \"base\""), "mill.toml"))),
          summary(machine.AxesOf(machine.streams.front()), host::ShownUnits{})
    {}

    std::string Text() const
    {
        std::ostringstream out;
        summary.Print(out, "part.cl", std::chrono::milliseconds(1250));
        return out.str();
    }

    host::LoadedMachine machine;
    host::Summary summary;
};

TEST_F(Summary, GivesTheWorstErrorsWithTheirLinesAndTheRangesOfTheAxes)
{
    summary.Add(RowWith({10, -0.5, 0}, {1e-6, 3e-5}), 4);
    summary.Add(RowWith({30, -0.25, 7}, {2.5e-5, 1e-5}), 5);
    summary.Add(RowWith({-20, -1, 3}, {1e-5, 4e-5}), 6);
    summary.Add(RowWith({0, -0.5, 3}, {1e-5, 4e-5}), 7);
    // -1 rad is -57.29578 degrees, a quarter of it -14.32394; 7 rad are 401.07046.
    EXPECT_EQ(Text(), "points     4: 4 converged, 0 failed\n"
                      "rows       4, 0 of them inserted between points\n"
                      "position   off by at most 2.5e-05 mm, at part.cl:5\n"
                      "direction  off by at most 4e-05 deg, at part.cl:6\n"
                      "axis       Z -20 to 30 mm (limits -400 to 400)\n"
                      "axis       A -57.2958 to -14.3239 deg (limits -120 to 30)\n"
                      "axis       C 0 to 401.0705 deg (unlimited)\n"
                      "time       1.25 s\n");
    EXPECT_FALSE(summary.HasFailures());
}

TEST_F(Summary, CountsFailedPointsAndLeavesThemOutOfTheRest)
{
    summary.Add(FailedRow(), 4);
    EXPECT_EQ(Text(), "points     1: 0 converged, 1 failed\ntime       1.25 s\n");
    summary.Add(RowWith({10, 0, 0}, {1e-6, 0}), 5);
    EXPECT_EQ(Text().substr(0, 36), "points     2: 1 converged, 1 failed\n");
    EXPECT_NE(Text().find("axis       Z 10 to 10 mm"), std::string::npos);
    EXPECT_TRUE(summary.HasFailures());
}

} // namespace
