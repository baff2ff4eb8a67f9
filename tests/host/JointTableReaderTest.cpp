#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "table/JointTable.h"
#include "table/JointTableReader.h"
#include "text/InputError.h"

namespace
{

using host::TableRow;

const std::string kHeader = "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n";

class JointTableReader : public testing::Test
{
  protected:
    std::vector<TableRow> Read(const std::string& text) const
    {
        std::istringstream in(text);
        host::JointTableReader reader(in, "joints.csv", machine.AxesOf(machine.streams.front()),
                                      machine.length);
        std::vector<TableRow> rows;
        TableRow row;
        while (reader.Next(row)) {
            rows.push_back(row);
        }
        return rows;
    }

    /// What is wrong with a table, with its place.
    std::string FaultOf(const std::string& text) const
    {
        try {
            Read(text);
        } catch (const host::InputError& error) {
            return error.what();
        }
        return "nothing";
    }

    host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(test::MillText(), "mill.toml"));
};

TEST_F(JointTableReader, ReadsWhatStandsInARow)
{
    const std::vector<TableRow> rows = Read(kHeader + "1,7,0.1,-2.5,1e-3,-90,720,1.25e-05,3e-07,,\n"
                                                      "2,9,1,2,3,0,45,0,0,12,rapid|limit\n");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].tableLine, 2);
    EXPECT_EQ(rows[0].pathLine, 7);
    EXPECT_EQ(rows[0].motion.point, 0U);
    EXPECT_EQ(rows[0].motion.joints,
              (std::vector<double>{0.1, -2.5, 1e-3, -host::kPi / 2.0, 4.0 * host::kPi}));
    EXPECT_EQ(rows[0].motion.error.position, 1.25e-5);
    EXPECT_EQ(rows[0].motion.error.direction_deg, 3e-7);
    EXPECT_EQ(rows[0].motion.branch, 0);
    EXPECT_FALSE(rows[0].motion.flags.isRapid);
    EXPECT_EQ(rows[1].tableLine, 3);
    EXPECT_EQ(rows[1].pathLine, 9);
    EXPECT_EQ(rows[1].motion.point, 1U);
    EXPECT_EQ(rows[1].motion.branch, 12);
    EXPECT_TRUE(rows[1].motion.flags.isRapid);
    EXPECT_TRUE(rows[1].motion.flags.isAtLimit);
    EXPECT_FALSE(rows[1].motion.flags.isInserted);
}

TEST_F(JointTableReader, ReadsEveryFlagAndNoOther)
{
    const auto flagsOf = [this](const std::string& text) {
        const std::string values = text == "failed" ? ",,,,,,,," : "0,0,0,0,0,0,0,,";
        return Read(kHeader + "1,1," + values + text + "\n").front().motion.flags;
    };
    EXPECT_TRUE(flagsOf("rapid").isRapid);
    EXPECT_TRUE(flagsOf("inserted").isInserted);
    EXPECT_TRUE(flagsOf("flip").isFlip);
    EXPECT_TRUE(flagsOf("rewind").isRewind);
    EXPECT_TRUE(flagsOf("pole").isPole);
    EXPECT_TRUE(flagsOf("limit").isAtLimit);
    EXPECT_TRUE(flagsOf("failed").hasFailed);
    for (const std::string text : {"rapid", "inserted", "flip", "rewind", "pole", "limit"}) {
        const host::RowFlags flags = flagsOf(text);
        EXPECT_EQ(int{flags.isRapid} + int{flags.isInserted} + int{flags.isFlip} +
                      int{flags.isRewind} + int{flags.isPole} + int{flags.isAtLimit} +
                      int{flags.hasFailed},
                  1)
            << text;
    }
    const std::string row = kHeader + "1,1,0,0,0,0,0,0,0,,";
    EXPECT_EQ(FaultOf(row + "Rapid"),
              "joints.csv:2:20: \"Rapid\" is not a flag; they are rapid, inserted, flip, rewind, "
              "pole, limit, failed, with | between two");
    EXPECT_EQ(FaultOf(row + "rapid|"),
              "joints.csv:2:20: \"\" is not a flag; they are rapid, inserted, flip, rewind, pole, "
              "limit, failed, with | between two");
    EXPECT_EQ(FaultOf(row + "pole|limit|pole"),
              "joints.csv:2:20: the flag pole stands here twice; take one out");
}

TEST_F(JointTableReader, ReadsFailedRowsWithoutValues)
{
    const std::vector<TableRow> rows =
        Read(kHeader + "1,1,1,2,3,4,5,6,7,8,\n" + "2,6,,,,,,,,,rapid|failed\n");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_TRUE(rows[1].motion.flags.hasFailed);
    EXPECT_TRUE(rows[1].motion.joints.empty());
    EXPECT_EQ(rows[1].motion.error.position, 0.0);
    EXPECT_EQ(rows[1].motion.branch, 0);
    EXPECT_EQ(FaultOf(kHeader + "2,6,,,3,,,,,,failed\n"),
              "joints.csv:2:7: a row that has failed has no values; take this one or the flag out");
    EXPECT_EQ(FaultOf(kHeader + "2,6,,,,,,,,1,failed\n"),
              "joints.csv:2:12: a row that has failed has no values; take this one or the flag "
              "out");
    EXPECT_EQ(FaultOf(kHeader + "2,6,1,,3,0,0,0,0,,\n"),
              "joints.csv:2:7: the value is missing; only a row that is flagged failed has none");
}

TEST_F(JointTableReader, ReadsBackWhatTheTableWrites)
{
    for (const host::AngleUnit angle : {host::AngleUnit::Degree, host::AngleUnit::Radian}) {
        const host::JointTable table(machine.AxesOf(machine.streams.front()),
                                     {machine.length, angle});
        host::MotionRow row;
        row.point = 40000;
        row.joints = {0.1, -1.0 / 3.0, 1e-300, -0.7, 123.456};
        row.error = {1.0 / 7.0, 5e-324};
        row.branch = 3;
        row.flags.isInserted = true;
        row.flags.isPole = true;
        const std::string text = table.Header() + table.Row(row, 52000);
        const TableRow read = Read(text).front();
        EXPECT_EQ(read.pathLine, 52000);
        EXPECT_EQ(table.Row(read.motion, read.pathLine), table.Row(row, 52000));
        EXPECT_EQ(read.motion.error.position, row.error.position);
        EXPECT_EQ(read.motion.error.direction_deg, row.error.direction_deg);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(read.motion.joints[i], row.joints[i]);
        }
        // Degrees are a division and a multiplication away.
        const double slack = angle == host::AngleUnit::Degree ? 1e-13 : 0.0;
        EXPECT_NEAR(read.motion.joints[3], row.joints[3], slack);
        EXPECT_NEAR(read.motion.joints[4], row.joints[4], slack);
    }
}

TEST_F(JointTableReader, TakesAxesInAnyOrderAndEitherAngle)
{
    const TableRow row = Read("n,line,C_rad,Z_mm,Y_mm,A_deg,X_mm,pos_err,dir_err_deg,branch,flags\n"
                              "1,1,1.5,3,2,180,1,0,0,,\r\n")
                             .front();
    EXPECT_EQ(row.motion.joints, (std::vector<double>{1, 2, 3, host::kPi, 1.5}));
}

TEST_F(JointTableReader, TakesAxesWhoseNamesHaveUnderscores)
{
    machine.axes[0].name = "X";
    machine.axes[1].name = "X_mm";
    machine.axes[2].name = "_";
    const TableRow row =
        Read("n,line,X_mm,X_mm_mm,__mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n"
             "1,1,1,2,3,0,0,0,0,,\n")
            .front();
    EXPECT_EQ(row.motion.joints, (std::vector<double>{1, 2, 3, 0, 0}));
}

TEST_F(JointTableReader, RefusesUnitsThatAreNotTheAxis)
{
    const auto faultWith = [this](const std::string& x, const std::string& a) {
        return FaultOf("n,line," + x + ",Y_mm,Z_mm," + a +
                       ",C_deg,pos_err,dir_err_deg,branch,flags\n");
    };
    EXPECT_EQ(faultWith("X_mm", "A_rad"), "nothing");
    EXPECT_EQ(faultWith("X_inch", "A_deg"),
              "joints.csv:1:8: \"X_inch\" has the wrong unit; axis X is in mm");
    EXPECT_EQ(faultWith("X_deg", "A_deg"),
              "joints.csv:1:8: \"X_deg\" has the wrong unit; axis X is in mm");
    EXPECT_EQ(faultWith("X", "A_deg"), "joints.csv:1:8: \"X\" has the wrong unit; axis X is in mm");
    EXPECT_EQ(faultWith("X_mm", "A_mm"),
              "joints.csv:1:23: \"A_mm\" has the wrong unit; axis A is in deg or rad");
    machine = host::AssembleMachine(
        host::ReadMachine(test::MillWith(3, "length = \"inch\""), "mill.toml"));
    EXPECT_EQ(faultWith("X_mm", "A_deg"),
              "joints.csv:1:8: \"X_mm\" has the wrong unit; axis X is in inch");
}

TEST_F(JointTableReader, RefusesAxesThatAreNotTheStreams)
{
    const std::string end = ",pos_err,dir_err_deg,branch,flags\n";
    EXPECT_EQ(FaultOf("n,line,X_mm,Y_mm,Z_mm,A_deg,B_deg,C_deg" + end),
              "joints.csv:1:29: \"B_deg\" is no axis with its unit, as in X_mm; the axes are X, "
              "Y, Z, A, C");
    EXPECT_EQ(FaultOf("n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg," + end),
              "joints.csv:1:35: \"\" is no axis with its unit, as in X_mm; the axes are X, Y, Z, "
              "A, C");
    EXPECT_EQ(FaultOf("n,line,X_mm,Y_mm,A_deg,Z_mm,X_mm,C_deg" + end),
              "joints.csv:1:29: axis X has a column before this one; take one of them out");
    EXPECT_EQ(FaultOf("n,line,X_mm,Y_mm,Z_mm,A_deg" + end),
              "joints.csv:1:29: the column C_deg is missing; the axes are X, Y, Z, A, C");
    // X and Y stand still in this one.
    machine =
        host::AssembleMachine(host::ReadMachine(test::MillWith(22, "parent = \"base\""), "m"));
    EXPECT_EQ(FaultOf("n,line,X_mm,Z_mm,A_deg,C_deg" + end),
              "joints.csv:1:8: \"X_mm\" is no axis with its unit, as in X_mm; the axes are Z, A, "
              "C");
}

TEST_F(JointTableReader, RefusesWhatIsNoTableAtAll)
{
    const std::string rest = ": a joint table begins with the columns n,line and ends with pos_err,"
                             "dir_err_deg,branch,flags; is this one?";
    EXPECT_EQ(FaultOf(""), "joints.csv: this file is empty; a joint table begins with the names of "
                           "its columns");
    EXPECT_EQ(FaultOf("\n"), "joints.csv:1:1" + rest);
    EXPECT_EQ(FaultOf("n\n"), "joints.csv:1:1" + rest);
    EXPECT_EQ(FaultOf("n,line\n"), "joints.csv:1:3" + rest);
    EXPECT_EQ(FaultOf("GOTO/1,2,3\n"), "joints.csv:1:1" + rest);
    EXPECT_EQ(FaultOf("n,lines,X_mm,pos_err,dir_err_deg,branch,flags\n"), "joints.csv:1:3" + rest);
    EXPECT_EQ(FaultOf("n,line,X_mm,pos_err,dir_err,branch,flags\n"), "joints.csv:1:21" + rest);
    EXPECT_EQ(FaultOf("n,line,pos_err,dir_err_deg,flags\n"), "joints.csv:1:28" + rest);
    EXPECT_EQ(FaultOf(kHeader.substr(0, kHeader.size() - 1) + ",\n"), "joints.csv:1:43" + rest);
}

TEST_F(JointTableReader, RefusesCellsThatAreMissingOrTooMany)
{
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,0,0,0,\n"),
              "joints.csv:2:19: this row has 10 cells and the header has 11; correct it");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,0,0,0,,\n2,3,0,0,0,0,0,0,0,,,\n"),
              "joints.csv:3:21: this row has 12 cells and the header has 11; correct it");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,0,0,0,,\n\n"),
              "joints.csv:3:1: this row has 1 cell and the header has 11; correct it");
}

TEST_F(JointTableReader, RefusesCellsThatAreNoNumbers)
{
    EXPECT_EQ(FaultOf(kHeader + "0,1,0,0,0,0,0,0,0,,\n"),
              "joints.csv:2:1: \"0\" is not the number of a point; they are counted from 1");
    EXPECT_EQ(FaultOf(kHeader + "1.5,1,0,0,0,0,0,0,0,,\n"),
              "joints.csv:2:1: \"1.5\" is not the number of a point; they are counted from 1");
    EXPECT_EQ(FaultOf(kHeader + "1,-4,0,0,0,0,0,0,0,,\n"),
              "joints.csv:2:3: \"-4\" is not a line of the toolpath; they are counted from 1");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,O,0,0,0,0,,\n"),
              "joints.csv:2:9: \"O\" is not a number; write it like 12.5 or -1.0E-3");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,nan,0,0,0,,\n"),
              "joints.csv:2:11: \"nan\" is not a number; write it like 12.5 or -1.0E-3");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,2e12,0,0,,\n"),
              "joints.csv:2:13: \"2e12\" is beyond any machine; correct it");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,0,-1e-9,0,,\n"),
              "joints.csv:2:15: \"-1e-9\" is negative, and an error is not; correct it");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,0,0,,,\n"),
              "joints.csv:2:17: the value is missing; only a row that is flagged failed has none");
    EXPECT_EQ(FaultOf(kHeader + "1,1,0,0,0,0,0,0,0,0,\n"),
              "joints.csv:2:19: \"0\" is not a branch; they are counted from 1");
}

TEST_F(JointTableReader, RefusesALineThatIsTooLong)
{
    const std::string fault = FaultOf(kHeader + std::string(70000, '1') + ",1,0,0,0,0,0,0,0,,\n");
    EXPECT_EQ(fault, "joints.csv:2:65537: this line is longer than 65536 characters; break it up");
}

} // namespace
