#include <sstream>

#include <gtest/gtest.h>

#include "MillText.h"
#include "app/ReportText.h"
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
        host::RunReport report = Report();
        report.toolpath.path = "part.cl";
        report.seconds = 1.25;
        std::ostringstream out;
        PrintReport(report, out);
        return out.str();
    }
    host::RunReport Report() const
    {
        host::RunReport report;
        summary.FillIn(report);
        return report;
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

TEST_F(Summary, CountsInsertedRowsAndThoseOfARewindApartFromPoints)
{
    host::MotionRow inserted = RowWith({2, 0, 0}, {1e-6, 0});
    inserted.flags.isInserted = true;
    host::MotionRow rewind = RowWith({3, 0, 0}, {2e-6, 0});
    rewind.flags.isRewind = true;
    summary.Add(RowWith({1, 0, 0}, {0, 0}), 4);
    summary.Add(inserted, 5);
    summary.Add(inserted, 5);
    summary.Add(rewind, 5);
    summary.Add(RowWith({4, 0, 0}, {0, 0}), 5);
    const host::ReportedCounts counts = Report().counts;
    EXPECT_EQ(counts.points, 2U);
    EXPECT_EQ(counts.converged, 2U);
    EXPECT_EQ(counts.failed, 0U);
    EXPECT_EQ(counts.rows, 5U);
    EXPECT_EQ(counts.inserted, 2U);
    EXPECT_EQ(Report().position->value, 2e-6); // what is not a point counts too
}

TEST_F(Summary, SaysOfEachAxisWhatItsWordIs)
{
    const host::LoadedMachine words = host::AssembleMachine(host::ReadMachine(
        test::MillWith(41, "unlimited = true\nword = \"B\"\nword_sign = -1"), "mill.toml"));
    host::RunReport report;
    host::Summary(words.AxesOf(words.streams.front()),
                  {host::LengthUnit::Millimetre, host::AngleUnit::Radian})
        .FillIn(report);
    EXPECT_EQ(report.lengthUnit, "mm");
    EXPECT_EQ(report.angleUnit, "rad");
    ASSERT_EQ(report.axes.size(), 5U);
    EXPECT_EQ(report.axes[4].name, "C");
    EXPECT_TRUE(report.axes[4].isRotary);
    EXPECT_EQ(report.axes[4].word, "B");
    EXPECT_EQ(report.axes[4].wordSign, -1);
    EXPECT_EQ(report.axes[4].unit, "rad");
    EXPECT_FALSE(report.axes[4].limits.has_value());
    EXPECT_EQ(report.axes[0].word, "X");
    EXPECT_EQ(report.axes[0].wordSign, 1);
    EXPECT_EQ(report.axes[0].limits->low, -300.0);
    EXPECT_EQ(report.axes[0].limits->high, 300.0);
    EXPECT_FALSE(report.axes[0].reached.has_value()); // there was no row
    EXPECT_FALSE(report.position.has_value());
}

TEST_F(Summary, PrintsItsFirstEventsAndHowManyMoreThereAre)
{
    for (int i = 1; i <= 13; ++i) {
        summary.Add(host::Event{host::EventKind::Flip, 0, i, "A swings"});
        summary.Add(host::Event{host::EventKind::Failed, 0, i, "it is told of already"});
    }
    EXPECT_NE(Text().find("flip       part.cl:12: A swings\n"
                          "events     1 more; --summary FILE writes down all of them\n"),
              std::string::npos);
    EXPECT_EQ(Text().find("told of"), std::string::npos);
    EXPECT_EQ(Report().events.size(), 26U);
}

} // namespace
