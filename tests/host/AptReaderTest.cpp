#include <cmath>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "text/InputError.h"
#include "toolpath/AptReader.h"

namespace
{

using host::LengthUnit;
using host::Toolpath;
using host::ToolPoint;
using host::Vec3;

Toolpath Read(const std::string& text, LengthUnit unit = LengthUnit::Millimetre)
{
    std::istringstream in(text);
    return host::ReadApt(in, "part.cl", unit);
}

ToolPoint OnlyPoint(const std::string& text)
{
    const Toolpath path = Read(text);
    EXPECT_EQ(path.points.size(), 1U);
    return path.points.at(0);
}

std::string FaultOf(const std::string& text)
{
    try {
        Read(text);
        return "not refused";
    } catch (const host::InputError& error) {
        return error.what();
    }
}

void ExpectVec(const Vec3& actual, const Vec3& expected)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_DOUBLE_EQ(actual[i], expected[i]) << "component " << i;
    }
}

// GOTO ---------------------------------------------------------------------------------------

TEST(AptReader, TakesPositionAndToolVector)
{
    const ToolPoint point =
        OnlyPoint("GOTO/108.4843,-280.0770,-19.5434,0.0,0.6,0.8 $$ a comment\n");
    ExpectVec(point.position, {108.4843, -280.0770, -19.5434});
    ExpectVec(point.direction, {0, 0.6, 0.8});
    EXPECT_EQ(point.line, 1);
    EXPECT_FALSE(point.isRapid);
    EXPECT_FALSE(point.feed.has_value());
}

TEST(AptReader, AllowsBlanksAroundSlashAndCommas)
{
    const ToolPoint point =
        OnlyPoint("  GOTO  /   10.00000,\t20.00000 ,  30.00000, 0.0, 0.0, 1.0 ");
    ExpectVec(point.position, {10, 20, 30});
    ExpectVec(point.direction, {0, 0, 1});
}

TEST(AptReader, ReadsNumbersInAllTheirSpellings)
{
    ExpectVec(OnlyPoint("GOTO/+1.5,-.25,3.").position, {1.5, -0.25, 3});
    ExpectVec(OnlyPoint("GOTO/1E2,1.5e-3,+2.0E+01").position, {100, 0.0015, 20});
}

TEST(AptReader, IsBlindToCase)
{
    const Toolpath path = Read("units/inches\nMultax/On\nrapid\ngoto/1,0,0\nfini\n");
    ASSERT_EQ(path.points.size(), 1U);
    EXPECT_TRUE(path.points[0].isRapid);
    ExpectVec(path.points[0].position, {25.4, 0, 0});
}

TEST(AptReader, NormalisesTheToolVector)
{
    ExpectVec(OnlyPoint("GOTO/0,0,0,0,3,4").direction, {0, 0.6, 0.8});
    const Vec3 rounded = OnlyPoint("GOTO/0,0,0,0.380709,-0.921682,0.074586").direction;
    EXPECT_NEAR(std::hypot(rounded[0], rounded[1], rounded[2]), 1.0, 1e-15);
    EXPECT_NEAR(rounded[0], 0.380709, 1e-6);
}

TEST(AptReader, KeepsTheToolVectorUntilTheNext)
{
    const Toolpath path = Read("GOTO/0,0,0,1,0,0\nGOTO/1,0,0\nGOTO/2,0,0,0,1,0\nGOTO/3,0,0\n");
    ASSERT_EQ(path.points.size(), 4U);
    ExpectVec(path.points[1].direction, {1, 0, 0});
    ExpectVec(path.points[3].direction, {0, 1, 0});
}

TEST(AptReader, StandsTheToolUprightBeforeAnyVector)
{
    ExpectVec(OnlyPoint("GOTO/1,2,3").direction, {0, 0, 1});
}

// RAPID, FEDRAT, UNITS, MULTAX ---------------------------------------------------------------

TEST(AptReader, TakesRapidForTheNextGotoOnly)
{
    const Toolpath path = Read("RAPID\nFEDRAT/100,MMPM\nGOTO/0,0,0\nGOTO/1,0,0\n");
    ASSERT_EQ(path.points.size(), 2U);
    EXPECT_TRUE(path.points[0].isRapid);
    EXPECT_FALSE(path.points[1].isRapid);
}

void ExpectFeed(const std::string& text, LengthUnit unit, double value, host::FeedPer per)
{
    const Toolpath path = Read(text + "\nGOTO/0,0,0\n", unit);
    ASSERT_TRUE(path.points.back().feed.has_value()) << text;
    EXPECT_DOUBLE_EQ(path.points.back().feed->value, value) << text;
    EXPECT_EQ(path.points.back().feed->per, per) << text;
}

TEST(AptReader, TakesTheFeedInEitherOrderAndCarriesItsUnitOver)
{
    constexpr auto kMm = LengthUnit::Millimetre;
    ExpectFeed("FEDRAT/300,MMPM", kMm, 300, host::FeedPer::Minute);
    ExpectFeed("FEDRAT/MMPM,250.0", kMm, 250, host::FeedPer::Minute);
    ExpectFeed("FEDRAT/0.2,MMPR\nFEDRAT/0.3", kMm, 0.3, host::FeedPer::Revolution);
    ExpectFeed("FEDRAT/10,IPM\nFEDRAT/20", kMm, 508, host::FeedPer::Minute);
    ExpectFeed("FEDRAT/254,MMPM", LengthUnit::Inch, 10, host::FeedPer::Minute);
    ExpectFeed("FEDRAT/10,IPR", LengthUnit::Inch, 10, host::FeedPer::Revolution);
    ExpectFeed("FEDRAT/80", kMm, 80, host::FeedPer::Minute);
    ExpectFeed("UNITS/INCH\nFEDRAT/2,PERMIN", kMm, 50.8, host::FeedPer::Minute);
    ExpectFeed("UNITS/INCH\nFEDRAT/PERREV,0.01", kMm, 0.254, host::FeedPer::Revolution);
}

TEST(AptReader, ConvertsTheFilesUnitToTheMachines)
{
    ExpectVec(Read("UNITS/INCH\nGOTO/1,2,-3").points[0].position, {25.4, 50.8, -76.2});
    ExpectVec(Read("UNITS/MM\nGOTO/25.4,0,0", LengthUnit::Inch).points[0].position, {1, 0, 0});
    ExpectVec(Read("UNITS/INCHES\nGOTO/1,2,3", LengthUnit::Inch).points[0].position, {1, 2, 3});
    ExpectVec(Read("GOTO/1,2,3", LengthUnit::Inch).points[0].position, {1, 2, 3});
}

TEST(AptReader, ChangesTheUnitFromItsStatementOn)
{
    const Toolpath path = Read("GOTO/1,0,0\nUNITS/INCH\nGOTO/1,0,0\nUNITS/MM\nGOTO/1,0,0\n");
    EXPECT_DOUBLE_EQ(path.points[0].position[0], 1.0);
    EXPECT_DOUBLE_EQ(path.points[1].position[0], 25.4);
    EXPECT_DOUBLE_EQ(path.points[2].position[0], 1.0);
}

TEST(AptReader, IgnoresVectorsAfterMultaxOffWithOneWarning)
{
    const Toolpath path =
        Read("MULTAX\nGOTO/0,0,0,1,0,0\nMULTAX/OFF\nGOTO/1,0,0,0,1,0\nGOTO/2,0,0\n"
             "GOTO/3,0,0,0,1,0\nMULTAX/ON\nGOTO/4,0,0,0,1,0\n");
    ASSERT_EQ(path.points.size(), 5U);
    for (std::size_t i = 0; i < 4; ++i) {
        ExpectVec(path.points[i].direction, {1, 0, 0});
    }
    ExpectVec(path.points[4].direction, {0, 1, 0});
    ASSERT_EQ(path.warnings.size(), 1U);
    EXPECT_EQ(path.warnings[0],
              "part.cl:4:12: warning: tool vectors after MULTAX/OFF are ignored, 2 in all and the "
              "first of them here; put MULTAX/ON before them if they count");
}

TEST(AptReader, HasNothingToWarnOfOtherwise)
{
    EXPECT_TRUE(Read("MULTAX/OFF\nGOTO/1,0,0\n").warnings.empty());
}

// The text -----------------------------------------------------------------------------------

TEST(AptReader, JoinsContinuedLines)
{
    const Toolpath path = Read("GOTO/1,2, $\n  3,0,$ $$ the vector follows\n0,1\nGOTO/4,5,6\n");
    ASSERT_EQ(path.points.size(), 2U);
    ExpectVec(path.points[0].position, {1, 2, 3});
    ExpectVec(path.points[0].direction, {0, 0, 1});
    EXPECT_EQ(path.points[0].line, 1);
    EXPECT_EQ(path.points[1].line, 4);
}

TEST(AptReader, PassesOverWhatMovesNothing)
{
    const Toolpath path =
        Read("$$ made by hand\n\n   \nPARTNO/'BLADE'\nPARTNO BLADE 12/3\nPPRINT HELLO, WORLD\n"
             "REMARK/anything, 1/2\nMACHIN/MILL,1\nTOOL PATH/NAME,TOOL,FLAT_TOOL\n"
             "Tool  Path/N\nTLDATA/MILL,10.0,0.0,50.0,0.0,0.0\nLOADTL/1\nSPINDL/5000,CLW\n"
             "COOLNT/ON\nCUTTER/10\nINTOL/0.01\nOUTTOL/0.01\nTOLER/.01\nPAINT/PATH\nSELECTL/1\n"
             "OPNAME/A\nDELAY/2\nGOTO/1,2,3\nSTOP\nOPSTOP\nEND-OF-PATH\nEND\nFINI\n");
    ASSERT_EQ(path.points.size(), 1U);
    EXPECT_EQ(path.points[0].line, 23);
}

TEST(AptReader, StopsReadingAtFini)
{
    EXPECT_EQ(Read("GOTO/1,2,3\nFINI\nCIRCLE/1,2,3\n").points.size(), 1U);
}

TEST(AptReader, TakesEitherLineEndAndAMissingLastOne)
{
    EXPECT_EQ(Read("UNITS/MM\r\nGOTO/1,2,3\r\nGOTO/4,5,6").points.size(), 2U);
    ExpectVec(Read("GOTO/1,2,$\r\n3\r\n").points[0].position, {1, 2, 3});
}

TEST(AptReader, PassesOverAByteOrderMark)
{
    EXPECT_EQ(Read("\xEF\xBB\xBFGOTO/1,2,3\n").points.size(), 1U);
}

TEST(AptReader, TakesTheLongestLineAndTheMostLinesThatItAllows)
{
    const std::string line = "GOTO/1,2,3" + std::string(4096 - 10, ' ');
    EXPECT_EQ(Read(line + "\nGOTO/1,2,3").points.size(), 2U);
    EXPECT_EQ(Read(line + "\r\nGOTO/1,2,3").points.size(), 2U);
    std::string statement = "GOTO/1,2,";
    for (int i = 0; i < 99; ++i) {
        statement += "$\n";
    }
    EXPECT_EQ(Read(statement + "3\n").points.size(), 1U);
}

// What is wrong with a file ------------------------------------------------------------------

TEST(AptReader, StopsAtStatementsThatMayMoveTheTool)
{
    const std::string reason = " is not understood, and it may move the tool; have the points "
                               "written as GOTO, or take it out if it moves nothing";
    EXPECT_EQ(FaultOf("GOTO/0,0,0\n CIRCLE/1,2,3,4\n"), "part.cl:2:2: \"CIRCLE\"" + reason);
    for (const std::string word : {"CYCLE", "MSYS", "MOVARC", "GODLTA", "FROM", "TRANS", "INSERT",
                                   "TOOL PATHS", "RAPIDS", "PARTNOX", "END OF PATH"}) {
        EXPECT_EQ(FaultOf(word + "/1,2,3\n"), "part.cl:1:1: \"" + word + "\"" + reason);
    }
    EXPECT_EQ(FaultOf("cycle/off\n"), "part.cl:1:1: \"CYCLE\"" + reason);
}

TEST(AptReader, ShowsStrangeWordsShortAndWithoutControlCharacters)
{
    const std::string fault = FaultOf("\x1B[31m" + std::string(1000, 'x') + "\n");
    EXPECT_EQ(fault.rfind("part.cl:1:1: \"?[31M" + std::string(55, 'X') + "...\" is not", 0), 0U)
        << fault;
}

TEST(AptReader, RefusesAStatementWithoutWord)
{
    EXPECT_EQ(FaultOf("  /1,2,3\n"),
              "part.cl:1:3: a statement begins with a word, as in GOTO/x,y,z; add it");
}

TEST(AptReader, RefusesAGotoWithAnotherCountOfNumbers)
{
    const std::string rule = " numbers; it takes x,y,z or x,y,z,i,j,k";
    EXPECT_EQ(FaultOf("GOTO\n"), "part.cl:1:1: GOTO has 0" + rule);
    EXPECT_EQ(FaultOf("UNITS/MM\n GOTO/1,2\n"), "part.cl:2:2: GOTO has 2" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,3,4\n"), "part.cl:1:1: GOTO has 4" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,3,0,0,1,7\n"), "part.cl:1:1: GOTO has 7" + rule);
}

TEST(AptReader, RefusesWhatIsNoNumberWhereItStands)
{
    const std::string rule = " is not a number; write it like 12.5 or -1.0E-3";
    EXPECT_EQ(FaultOf("GOTO/1,2,x\n"), "part.cl:1:10: \"X\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1, ,3\n"), "part.cl:1:8: \"\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2 2,3\n"), "part.cl:1:8: \"2 2\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,1D3\n"), "part.cl:1:10: \"1D3\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,+-3\n"), "part.cl:1:10: \"+-3\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,nan\n"), "part.cl:1:10: \"NAN\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,inf\n"), "part.cl:1:10: \"INF\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,1e999\n"), "part.cl:1:10: \"1E999\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,0x10\n"), "part.cl:1:10: \"0X10\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2$3,4\n"), "part.cl:1:8: \"2$3\"" + rule);
    EXPECT_EQ(FaultOf("GOTO/1,2,3,0,0,q\n"), "part.cl:1:16: \"Q\"" + rule);
    EXPECT_EQ(FaultOf("FEDRAT/fast,MMPM\n"), "part.cl:1:8: \"FAST\"" + rule);
}

TEST(AptReader, PointsIntoTheRightLineOfAContinuedStatement)
{
    EXPECT_EQ(FaultOf("GOTO/1,$\n$\n 2, bad\n").substr(0, 12), "part.cl:3:5:");
}

TEST(AptReader, RefusesNumbersBeyondAnyMachine)
{
    EXPECT_EQ(FaultOf("GOTO/1,2,1e13\n"),
              "part.cl:1:10: \"1E13\" is beyond any machine; correct it");
}

TEST(AptReader, RefusesAToolVectorWithoutLength)
{
    const std::string fault = "the tool vector has no length; give its direction as i,j,k";
    EXPECT_EQ(FaultOf("GOTO/1,2,3,0,0.0,-0\n"), "part.cl:1:12: " + fault);
    EXPECT_EQ(FaultOf("MULTAX/OFF\nGOTO/1,2,3,0,0,0\n"), "part.cl:2:12: " + fault);
}

TEST(AptReader, RefusesOtherFeeds)
{
    const std::string rule =
        " does not belong here; FEDRAT takes one number and one of MMPM, MMPR, "
        "IPM, IPR, PERMIN, PERREV";
    EXPECT_EQ(FaultOf("FEDRAT\n"),
              "part.cl:1:1: FEDRAT has no number; write it as FEDRAT/300,MMPM");
    EXPECT_EQ(FaultOf("FEDRAT/MMPM\n"),
              "part.cl:1:1: FEDRAT has no number; write it as FEDRAT/300,MMPM");
    EXPECT_EQ(FaultOf("FEDRAT/1,FPM\n"), "part.cl:1:10: \"FPM\"" + rule);
    EXPECT_EQ(FaultOf("FEDRAT/1,2\n"), "part.cl:1:10: \"2\"" + rule);
    EXPECT_EQ(FaultOf("FEDRAT/MMPM,1,IPM\n"), "part.cl:1:15: \"IPM\"" + rule);
    EXPECT_EQ(FaultOf("FEDRAT/0,MMPM\n"), "part.cl:1:8: a feed is greater than 0; correct it");
    EXPECT_EQ(FaultOf("FEDRAT/MMPM,-5\n"), "part.cl:1:13: a feed is greater than 0; correct it");
}

TEST(AptReader, RefusesOtherUnitsAndModes)
{
    const std::string end = "; correct this statement";
    EXPECT_EQ(FaultOf("UNITS/CM\n"), "part.cl:1:7: UNITS takes MM, INCH or INCHES" + end);
    EXPECT_EQ(FaultOf("UNITS\n"), "part.cl:1:1: UNITS takes MM, INCH or INCHES" + end);
    EXPECT_EQ(FaultOf("UNITS/MM,INCH\n"), "part.cl:1:7: UNITS takes MM, INCH or INCHES" + end);
    EXPECT_EQ(FaultOf("MULTAX/MAYBE\n"), "part.cl:1:8: MULTAX takes ON or OFF" + end);
    EXPECT_EQ(FaultOf("RAPID/1\n"), "part.cl:1:7: RAPID stands alone" + end);
}

TEST(AptReader, RefusesAFileWithoutPoints)
{
    const std::string fault =
        "part.cl:1:1: there is no GOTO in this file, so there is nothing to do; is "
        "it a cutter-location file?";
    EXPECT_EQ(FaultOf(""), fault);
    EXPECT_EQ(FaultOf("PARTNO/X\nFINI\nGOTO/1,2,3\n"), fault);
}

TEST(AptReader, RefusesDamagedText)
{
    EXPECT_EQ(FaultOf(std::string("GOTO/1,2,3\nGO\0TO/1,2,3\n", 23)),
              "part.cl:2:3: there is a NUL byte here; this is not a text file, or it is damaged");
    EXPECT_EQ(FaultOf("GOTO/1,2,3\nGOTO/4,5,$"),
              "part.cl:2:10: the file ends after a $ that announces another line; it may have been "
              "cut off");
}

TEST(AptReader, RefusesLinesAndStatementsWithoutEnd)
{
    EXPECT_EQ(FaultOf("GOTO/1,2,3\n" + std::string(4097, 'X') + "\n"),
              "part.cl:2:4097: this line is longer than 4096 characters; break it up");
    EXPECT_EQ(FaultOf(std::string(100000, 'X')),
              "part.cl:1:4097: this line is longer than 4096 characters; break it up");
    std::string statement;
    for (int i = 0; i < 101; ++i) {
        statement += "PPRINT/A $\n";
    }
    EXPECT_EQ(FaultOf(statement),
              "part.cl:101:1: this statement runs over more than 100 lines; is a "
              "$ at the end of a line meant?");
}

} // namespace
