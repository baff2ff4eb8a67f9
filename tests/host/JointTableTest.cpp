#include <string>

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

host::ToolPoint PointOnLine(int line, bool isRapid)
{
    host::ToolPoint point;
    point.line = line;
    point.isRapid = isRapid;
    return point;
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
    const host::Reached reached{{0.1, -2.5, 1.0 / 3.0, -0.5, 0.0}, {1.25e-5, 3e-7}};
    EXPECT_EQ(TableOf(machine, AngleUnit::Radian).Row(1, PointOnLine(17, false), reached),
              "1,17,0.1,-2.5,0.3333333333333333,-0.5,0,1.25e-05,3e-07,,\n");
}

TEST(JointTable, TurnsRotaryJointsIntoDegreesAndLeavesLengths)
{
    const host::LoadedMachine machine = Load(test::MillText());
    // pi/2 and a quarter of pi as the nearest doubles; both come out exact.
    const host::Reached reached{{90.0, 0.0, 0.0, -1.5707963267948966, 0.7853981633974483},
                                {0.0, 0.0}};
    EXPECT_EQ(TableOf(machine, AngleUnit::Degree).Row(2, PointOnLine(3, false), reached),
              "2,3,90,0,0,-90,45,0,0,,\n");
}

TEST(JointTable, FlagsRapidAndFailedPoints)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const host::JointTable table = TableOf(machine, AngleUnit::Degree);
    const host::Reached reached{{1, 2, 3, 0, 0}, {0.0, 0.0}};
    EXPECT_EQ(table.Row(1, PointOnLine(5, true), reached), "1,5,1,2,3,0,0,0,0,,rapid\n");
    EXPECT_EQ(table.Row(2, PointOnLine(6, false), std::nullopt), "2,6,,,,,,,,,failed\n");
    EXPECT_EQ(table.Row(3, PointOnLine(7, true), std::nullopt), "3,7,,,,,,,,,rapid|failed\n");
}

} // namespace
