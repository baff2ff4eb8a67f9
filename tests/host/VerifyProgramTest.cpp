// trunnion verify, run as a user runs it.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "Paths.h"
#include "Process.h"
#include "TempFolder.h"

namespace
{

using test::Outcome;

// With A and C at 0 the tool's end is at (X, Y, Z + 100) of the part.
constexpr const char* kPath = "UNITS/MM\n"
                              "RAPID\n"
                              "GOTO/0,0,150,0,0,1\n"
                              "FEDRAT/500,MMPM\n"
                              "GOTO/0,0,100\n"
                              "GOTO/20,0,100\n";
constexpr const char* kHeader =
    "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n";
constexpr const char* kStart = "1,3,0,0,50,0,0,0,0,1,rapid\n"
                               "2,5,0,0,0,0,0,0,0,1,\n";

class VerifyProgram : public testing::Test
{
  protected:
    VerifyProgram()
    {
        folder.Write("mill.toml", test::MillText());
        folder.Write("part.cl", kPath);
    }

    Outcome Verify(const std::string& rows, const std::vector<std::string>& options = {}) const
    {
        folder.Write("joints.csv", kHeader + rows);
        std::vector<std::string> arguments{test::kProgram, "verify", "mill.toml", "part.cl",
                                           "joints.csv"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return test::Process(arguments, folder.Path()).Wait();
    }

    static std::string WithoutTime(const std::string& out)
    {
        return out.substr(0, out.find("time       "));
    }

    test::TempFolder folder;
};

TEST_F(VerifyProgram, SaysThatATableHolds)
{
    const Outcome outcome = Verify(std::string(kStart) + "3,6,5,0.25,0,0,0,0.25,0,1,inserted\n" +
                                       "3,6,20,0.125,0,0,0,0.125,0,1,\n",
                                   {"--linear-tol", "0.5", "--angle-tol", "2", "--samples", "9"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(WithoutTime(outcome.out),
              "points     3\n"
              "rows       4: 1 inserted, 0 of rewinds\n"
              "at points  off by at most 0.125 mm, at joints.csv:5 (part.cl:6)\n"
              "           off by at most 0 deg, at joints.csv:2 (part.cl:3)\n"
              "between    off by at most 0.25 mm, at joints.csv:4 (part.cl:6)\n"
              "           off by at most 0 deg, at joints.csv:3 (part.cl:5)\n"
              "not held   to the straight line: 0 rapids, 0 tool changes, 0 ways from an unknown "
              "place\n"
              "verdict    holds within 0.5 mm and 2 deg\n");
}

TEST_F(VerifyProgram, NamesWhatDoesNotHold)
{
    const Outcome outcome = Verify("1,3,0,0,50,0,0,0,0,1,rapid\n"
                                   "2,5,,,,,,,,,failed\n"
                                   "3,7,20.25,0,0,0,0,0.25,0,1,\n");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err,
              "joints.csv:3: point 2 has failed (part.cl:5)\n"
              "joints.csv:4: the toolpath has point 3 on line 6, and this row says 7 (part.cl:7)\n"
              "joints.csv:4: the tool is off point 3 by 0.25 mm and 0 deg (part.cl:7)\n");
    EXPECT_EQ(WithoutTime(outcome.out),
              "points     3\n"
              "rows       3: 0 inserted, 0 of rewinds\n"
              "at points  off by at most 0.25 mm, at joints.csv:4 (part.cl:7)\n"
              "           off by at most 0 deg, at joints.csv:2 (part.cl:3)\n"
              "not held   to the straight line: 0 rapids, 0 tool changes, 1 ways from an unknown "
              "place\n"
              "found      failed points: 1\n"
              "found      wrong lines: 1\n"
              "found      rows off their point: 1\n"
              "verdict    does not hold within 0.01 mm and 0.05 deg\n");
}

TEST_F(VerifyProgram, NamesPointsThatHaveNoRowAtTheEnd)
{
    const Outcome outcome = Verify(kStart);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "joints.csv: the table ends without a row of point 3 (part.cl:6)\n");
}

TEST_F(VerifyProgram, CountsWhatItDoesNotList)
{
    std::string rows = std::string(kStart) + "3,6,20,0,0,0,0,0,0,1,\n";
    for (int i = 0; i < 30; ++i) {
        rows += "4,9,20,0,0,0,0,0,0,1,\n";
    }
    const Outcome outcome = Verify(rows);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 11);
    const std::string last = "joints.csv:15: more of this kind are only counted\n";
    ASSERT_GE(outcome.err.size(), last.size());
    EXPECT_EQ(outcome.err.substr(outcome.err.size() - last.size()), last);
    EXPECT_NE(outcome.out.find("found      rows out of place: 30\n"), std::string::npos);
}

TEST_F(VerifyProgram, UsesTheTolerancesOfTheUnit)
{
    folder.Write("mill.toml", test::MillWith(3, "length = \"inch\""));
    folder.Write("part.cl", "UNITS/INCHES\nRAPID\nGOTO/0,0,150,0,0,1\n");
    folder.Write("joints.csv",
                 "n,line,X_inch,Y_inch,Z_inch,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n"
                 "1,3,0.0006,0,50,0,0,0.0006,0,1,rapid\n");
    const std::vector<std::string> command{test::kProgram, "verify", "mill.toml", "part.cl",
                                           "joints.csv"};
    const Outcome outcome = test::Process(command, folder.Path()).Wait();
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err,
              "joints.csv:2: the tool is off point 1 by 0.0006 inch and 0 deg (part.cl:3)\n");
    EXPECT_NE(outcome.out.find("does not hold within 0.0005 inch and 0.05 deg\n"),
              std::string::npos)
        << outcome.out;
}

TEST_F(VerifyProgram, SeatsTheToolThatIsGiven)
{
    const std::string rows = "1,3,0,0,70,0,0,0,0,1,rapid\n"
                             "2,5,0,0,20,0,0,0,0,1,\n"
                             "3,6,20,0,20,0,0,0,0,1,\n";
    EXPECT_EQ(Verify(rows, {"--tool-length", "20"}).code, 0);
    EXPECT_EQ(Verify(rows).code, 1);
}

TEST_F(VerifyProgram, ReadsTheFormatThatIsGiven)
{
    folder.Write("part.cl", "x,y,z,i,j,k,rapid\n0,0,150,0,0,1,1\n0,0,100,0,0,1,0\n");
    const std::string rows = "1,2,0,0,50,0,0,0,0,1,rapid\n2,3,0,0,0,0,0,0,0,1,\n";
    EXPECT_EQ(Verify(rows, {"--format", "csv"}).code, 0);
    EXPECT_EQ(Verify(rows).code, 2);
}

TEST_F(VerifyProgram, StopsAtATableThatIsNone)
{
    const Outcome outcome = Verify("1,3,0,0,5O,0,0,0,0,1,rapid\n");
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "joints.csv:2:9: \"5O\" is not a number; write it like 12.5 or -1.0E-3\n");
}

TEST_F(VerifyProgram, AnswersWrongUsageWithTwo)
{
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{"--linear-tol", "0"},
                                               {"--linear-tol", "nan"},
                                               {"--linear-tol", "0,1"},
                                               {"--angle-tol", "-1"},
                                               {"--angle-tol", "inf"},
                                               {"--tool-length", "-1"},
                                               {"--samples", "-1"},
                                               {"--samples", "1001"},
                                               {"--stream", "2"},
                                               {"more"}}) {
        const Outcome outcome = Verify(kStart, options);
        EXPECT_EQ(outcome.code, 2) << options.back();
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    const Outcome outcome =
        test::Process({test::kProgram, "verify", "mill.toml", "part.cl"}, folder.Path()).Wait();
    EXPECT_EQ(outcome.code, 2);
}

TEST_F(VerifyProgram, ChecksWhatSolveWrites)
{
    // From point to point on a line, so that no rows are needed between.
    folder.Write("mill.toml", test::MillWith(33, "limits = [-120, 30]\ninitial = -30"));
    folder.Write("part.cl", "GOTO/0,0,50,0,-0.5,0.8660254\nGOTO/0,0,0\nGOTO/10,0,0\n");
    ASSERT_EQ(test::Process({test::kProgram, "solve", "mill.toml", "part.cl", "-o", "joints.csv"},
                            folder.Path())
                  .Wait()
                  .code,
              0);
    const Outcome outcome =
        test::Process({test::kProgram, "verify", "mill.toml", "part.cl", "joints.csv"},
                      folder.Path())
            .Wait();
    EXPECT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_EQ(outcome.err, "");
}

} // namespace
