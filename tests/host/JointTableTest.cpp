#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "table/JointTable.h"

namespace
{

using host::AngleUnit;
using host::LengthUnit;

host::LoadedMachine Load(const std::string& text)
{
    return host::AssembleMachine(host::ReadMachine(text, "mill.toml"));
}

host::JointTable TableOf(const host::LoadedMachine& machine, AngleUnit angle)
{
    return {machine.AxesOf(machine.streams.front()), {machine.length, angle}};
}

host::MotionRow RowAt(std::size_t point, const std::vector<double>& joints,
                      const host::PoseError& error = {})
{
    host::MotionRow row;
    row.point = point;
    row.joints = joints;
    row.error = error;
    return row;
}

TEST(JointTable, NamesItsColumnsWithTheirUnits)
{
    const host::LoadedMachine machine = Load(test::MillText());
    EXPECT_EQ(TableOf(machine, AngleUnit::Degree).Header(),
              "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n");
    EXPECT_EQ(TableOf(machine, AngleUnit::Radian).Header(),
              "n,line,X_mm,Y_mm,Z_mm,A_rad,C_rad,pos_err,dir_err_deg,branch,flags\n");
    EXPECT_EQ(TableOf(Load(test::MillWith(3, "length = \"inch\"")), AngleUnit::Degree).Header(),
              "n,line,X_inch,Y_inch,Z_inch,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n");
}

TEST(JointTable, LeavesOutAxesThatTheStreamDoesNotMove)
{
    const host::LoadedMachine machine = Load(test::MillWith(22, "parent = \"base\""));
    EXPECT_EQ(TableOf(machine, AngleUnit::Degree).Header(),
              "n,line,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n");
}

TEST(JointTable, WritesNumbersThatReadBackAsTheSame)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const host::MotionRow row = RowAt(0, {0.1, -2.5, 1.0 / 3.0, -0.5, 0.0}, {1.25e-5, 3e-7});
    EXPECT_EQ(TableOf(machine, AngleUnit::Radian).Row(row, 17),
              "1,17,0.1,-2.5,0.3333333333333333,-0.5,0,1.25e-05,3e-07,,\n");
}

TEST(JointTable, TurnsRotaryJointsIntoDegreesAndLeavesLengths)
{
    const host::LoadedMachine machine = Load(test::MillText());
    // pi/2 and a quarter of pi as the nearest doubles; both come out exact.
    const host::MotionRow row = RowAt(1, {90.0, 0.0, 0.0, -1.5707963267948966, 0.7853981633974483});
    EXPECT_EQ(TableOf(machine, AngleUnit::Degree).Row(row, 3), "2,3,90,0,0,-90,45,0,0,,\n");
}

TEST(JointTable, ShowsTheAxesThatItIsMadeOfInTheirOrder)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const host::JointTable table({&machine.axes[4], &machine.axes[0]},
                                 {machine.length, AngleUnit::Radian});
    EXPECT_EQ(table.Header(), "n,line,C_rad,X_mm,pos_err,dir_err_deg,branch,flags\n");
    EXPECT_EQ(table.Row(RowAt(0, {1.5, 20}), 1), "1,1,1.5,20,0,0,,\n");
}

TEST(JointTable, NumbersPointsAndBranchesFromOne)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const host::JointTable table = TableOf(machine, AngleUnit::Degree);
    host::MotionRow row = RowAt(40000, {1, 2, 3, 0, 0});
    EXPECT_EQ(table.Row(row, 52000), "40001,52000,1,2,3,0,0,0,0,,\n");
    row.branch = 2;
    EXPECT_EQ(table.Row(row, 52000), "40001,52000,1,2,3,0,0,0,0,2,\n");
}

TEST(JointTable, ListsFlagsInAFixedOrder)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const host::JointTable table = TableOf(machine, AngleUnit::Degree);
    const auto flagsOf = [&](const host::RowFlags& flags) {
        host::MotionRow row = RowAt(0, {1, 2, 3, 0, 0});
        row.flags = flags;
        const std::string text = table.Row(row, 5);
        const std::string others = "1,5,1,2,3,0,0,0,0,,";
        EXPECT_EQ(text.substr(0, others.size()), others);
        return text.substr(others.size());
    };
    host::RowFlags flags;
    EXPECT_EQ(flagsOf(flags), "\n");
    flags.isAtLimit = true;
    EXPECT_EQ(flagsOf(flags), "limit\n");
    flags.isPole = true;
    EXPECT_EQ(flagsOf(flags), "pole|limit\n");
    flags.isRewind = true;
    EXPECT_EQ(flagsOf(flags), "rewind|pole|limit\n");
    flags.isFlip = true;
    EXPECT_EQ(flagsOf(flags), "flip|rewind|pole|limit\n");
    flags.isInserted = true;
    EXPECT_EQ(flagsOf(flags), "inserted|flip|rewind|pole|limit\n");
    flags.isRapid = true;
    EXPECT_EQ(flagsOf(flags), "rapid|inserted|flip|rewind|pole|limit\n");
}

TEST(JointTable, LeavesTheCellsOfAFailedRowEmpty)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const host::JointTable table = TableOf(machine, AngleUnit::Degree);
    host::MotionRow row = RowAt(1, {}, {0.5, 0.5});
    row.branch = 1;
    row.flags.hasFailed = true;
    EXPECT_EQ(table.Row(row, 6), "2,6,,,,,,,,,failed\n");
    row.flags.isRapid = true;
    EXPECT_EQ(table.Row(row, 7), "2,7,,,,,,,,,rapid|failed\n");
}

} // namespace
