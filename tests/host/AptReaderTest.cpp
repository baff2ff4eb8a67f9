#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/Units.h"
#include "text/InputError.h"
#include "text/Numbers.h"
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

// Where the tool starts ----------------------------------------------------------------------

TEST(AptReader, TakesTheVectorOfFromButNoPoint)
{
    const Toolpath path = Read("RAPID\nFROM/0,0,100,0,3,4\nGOTO/1,2,3\n");
    ASSERT_EQ(path.points.size(), 1U);
    ExpectVec(path.points[0].position, {1, 2, 3});
    ExpectVec(path.points[0].direction, {0, 0.6, 0.8});
    EXPECT_TRUE(path.points[0].isRapid);
    EXPECT_EQ(Read("GOTO/1,2,3\nLOADTL/2\nFROM/0,0,100\nGOTO/1,2,3\n").points.size(), 2U);
}

TEST(AptReader, RefusesAStartOnTheWay)
{
    EXPECT_EQ(FaultOf("GOTO/1,2,3\nFROM/0,0,100\n"),
              "part.cl:2:1: FROM tells where the tool starts, and here it is under way; make it a "
              "GOTO if the tool moves there");
    EXPECT_EQ(FaultOf("FROM/0,0\n"),
              "part.cl:1:1: FROM has 2 numbers; it takes x,y,z or x,y,z,i,j,k");
}

// Operations ---------------------------------------------------------------------------------

using Names = std::vector<std::string>;

/// "name tool length @line +firstPoint" of each operation, with - for what is not known.
Names Operations(const std::string& text, LengthUnit unit = LengthUnit::Millimetre)
{
    const Toolpath path = Read(text, unit);
    Names all;
    for (const host::Operation& operation : path.operations) {
        all.push_back(operation.name + " " +
                      (operation.toolNumber ? std::to_string(*operation.toolNumber) : "-") + " " +
                      (operation.toolLength ? host::ShortestText(*operation.toolLength) : "-") +
                      " @" + std::to_string(operation.line) + " +" +
                      std::to_string(operation.firstPoint));
    }
    return all;
}

/// The operation of each point.
std::vector<int> OperationOfPoints(const std::string& text)
{
    const Toolpath path = Read(text);
    std::vector<int> all;
    std::transform(path.points.begin(), path.points.end(), std::back_inserter(all),
                   [](const ToolPoint& point) { return point.operation; });
    return all;
}

TEST(AptReader, HasOneOperationWithoutNameWhereNoneIsGiven)
{
    EXPECT_EQ(Operations("UNITS/MM\n\nGOTO/1,2,3\nGOTO/1,2,3\n"), (Names{" - - @3 +0"}));
}

TEST(AptReader, BeginsAnOperationAtEachToolPath)
{
    const std::string text = "TOOL PATH/Rough 1,TOOL,MILL_10\nGOTO/1,2,3\nGOTO/1,2,3\n"
                             "END-OF-PATH\ntool  path/'Finish',TOOL,BALL_6\nGOTO/1,2,3\n";
    EXPECT_EQ(Operations(text), (Names{"Rough 1 - - @1 +0", "Finish - - @5 +2"}));
    EXPECT_EQ(OperationOfPoints(text), (std::vector<int>{0, 0, 1}));
}

TEST(AptReader, TakesWhatStandsBeforeTheFirstPointForOneOperation)
{
    const std::string tool = "LOADTL/3\n";
    const std::string name = "TOOL PATH/A,TOOL,T\n";
    const std::string data = "TLDATA/MILL,10.0,0.0,50.0,0.0,0.0\n";
    const std::string points = "GOTO/1,2,3\n";
    const Names one{"A 3 50 @1 +0"};
    EXPECT_EQ(Operations(tool + name + data + points), one);
    EXPECT_EQ(Operations(name + data + tool + points), one);
    EXPECT_EQ(Operations(data + tool + name + points), one);
    const Names two{" - - @1 +0", "A 3 50 @2 +1"};
    EXPECT_EQ(Operations(points + tool + name + data + points), two);
    EXPECT_EQ(Operations(points + name + data + tool + points), two);
    EXPECT_EQ(Operations(points + data + tool + name + points), two);
}

TEST(AptReader, KeepsNoOperationWithoutPoints)
{
    EXPECT_EQ(Operations("TOOL PATH/A\nEND-OF-PATH\nTOOL PATH/B\nTOOL PATH/C\nGOTO/1,2,3\n"
                         "LOADTL/1\nTOOL PATH/D\nEND-OF-PATH\nLOADTL/2\n"),
              (Names{"C - - @4 +0"}));
}

TEST(AptReader, BeginsAnOperationAtEachToolThatIsLoadedOnTheWay)
{
    EXPECT_EQ(Operations("LOADTL/1\nGOTO/1,2,3\nLOADTL/2,ADJUST,2\nGOTO/1,2,3\n"
                         "Load/Tool,7,ADJUST,7\nGOTO/1,2,3\n"),
              (Names{" 1 - @1 +0", " 2 - @3 +1", " 7 - @5 +2"}));
    EXPECT_EQ(Operations("TOOL PATH/A\nLOADTL/1\nGOTO/1,2,3\nLOADTL/2\nGOTO/1,2,3\n"),
              (Names{"A 1 - @1 +0", "A 2 - @4 +1"}));
}

TEST(AptReader, EndsAnOperationAtEndOfPath)
{
    EXPECT_EQ(Operations("TOOL PATH/A\nLOADTL/1\nGOTO/1,2,3\nEND-OF-PATH\nRAPID\nGOTO/1,2,3\n"),
              (Names{"A 1 - @1 +0", " 1 - @6 +1"}));
}

TEST(AptReader, KeepsTheLengthOfTheToolUntilTheNext)
{
    EXPECT_EQ(Operations("TLDATA/MILL,10,0,50,0,0\nGOTO/1,2,3\nTOOL PATH/A\nGOTO/1,2,3\n"
                         "TLDATA/MILL,8,0,50.0,0,0\nGOTO/1,2,3\n"
                         "TLDATA/MILL,8,0,60,0,0\nGOTO/1,2,3\n"),
              (Names{" - 50 @1 +0", "A - 50 @3 +1", "A - 60 @7 +3"}));
}

TEST(AptReader, ConvertsTheLengthOfTheTool)
{
    EXPECT_EQ(Operations("UNITS/INCH\nTLDATA/mill,0.5,0,4\nGOTO/1,2,3\n"),
              (Names{" - 101.6 @2 +0"}));
    EXPECT_EQ(Operations("UNITS/MM\nTLDATA/MILL,12,0,50.8\nGOTO/1,2,3\n", LengthUnit::Inch),
              (Names{" - 2 @2 +0"}));
}

TEST(AptReader, LeavesTheLengthUnknownForOtherFormsOfToolData)
{
    const std::string text = "TLDATA/MILL,10,0,50\nGOTO/1,2,3\nTLDATA/DRILL,10,118,60,0,0\n"
                             "GOTO/1,2,3\nTLDATA/TURN,INSERT,4\nGOTO/1,2,3\n TLDATA/MILL,10,0\n"
                             "GOTO/1,2,3\n";
    EXPECT_EQ(Operations(text), (Names{" - 50 @1 +0", " - - @3 +1"}));
    EXPECT_EQ(Read(text).warnings,
              (Names{"part.cl:3:1: warning: TLDATA of other forms than MILL,d,r,length tell no "
                     "tool length, 3 in all and the first of them here; the operations from there "
                     "on have none"}));
}

TEST(AptReader, WarnsOfAToolWhoseLengthIsThatOfTheToolBefore)
{
    const std::string text = "TLDATA/MILL,10,0,50\nLOADTL/1\nGOTO/1,2,3\nLOADTL/1\nGOTO/1,2,3\n"
                             "LOADTL/2\nGOTO/1,2,3\nTLDATA/MILL,8,0,50\nLOADTL/3\nGOTO/1,2,3\n";
    EXPECT_EQ(Operations(text),
              (Names{" 1 50 @1 +0", " 1 50 @4 +1", " 2 50 @6 +2", " 3 50 @9 +3"}));
    EXPECT_EQ(Read(text).warnings,
              (Names{"part.cl:6:1: warning: tools are loaded without TLDATA for them, 1 in all and "
                     "the first of them here; they are taken to be as long as the tool before"}));
}

TEST(AptReader, RefusesToolsWithoutNumberOrLength)
{
    const std::string rule = " is not a tool's number; write a whole one like 12";
    EXPECT_EQ(FaultOf("LOADTL\n"), "part.cl:1:1: LOADTL has no number; write the tool's");
    EXPECT_EQ(FaultOf("LOADTL/ 1.5\n"), "part.cl:1:9: \"1.5\"" + rule);
    EXPECT_EQ(FaultOf("LOADTL/-1\n"), "part.cl:1:8: \"-1\"" + rule);
    EXPECT_EQ(FaultOf("LOADTL/99999999999\n"), "part.cl:1:8: \"99999999999\"" + rule);
    EXPECT_EQ(FaultOf("LOAD/TOOL,T1\n"), "part.cl:1:11: \"T1\"" + rule);
    EXPECT_EQ(FaultOf("LOAD/TOOL\n"), "part.cl:1:1: LOAD has no number; write the tool's");
    EXPECT_EQ(FaultOf("LOAD/WIRE,1\n"),
              "part.cl:1:6: LOAD takes TOOL and its number; correct this statement");
    EXPECT_EQ(FaultOf("TLDATA/MILL,10,0,0\n"),
              "part.cl:1:18: the length of a tool is greater than 0; correct it");
    EXPECT_EQ(FaultOf("TLDATA/MILL,10,0,5O\n").substr(0, 23), "part.cl:1:18: \"5O\" is n");
}

TEST(AptReader, ShowsNamesWithoutControlCharacters)
{
    EXPECT_EQ(Read("TOOL PATH/a\x1B[31m\xC3\xA4,TOOL\nGOTO/1,2,3\n").operations.at(0).name,
              "a?[31m\xC3\xA4");
}

// MSYS ---------------------------------------------------------------------------------------

TEST(AptReader, TakesPointsAndVectorsInTheFrameOfMsys)
{
    // i = y, j = z, so i x j = x: (1, 2, 3) there is 1 y + 2 z + 3 x from the origin.
    const Toolpath path =
        Read("GOTO/1,2,3,0,0.6,0.8\nMSYS/10,20,30,0,1,0,0,0,1\nGOTO/1,2,3,0,0.6,0.8\n"
             "MSYS/0,0,0,1,0,0,0,1,0\nGOTO/1,2,3,0,0.6,0.8\n");
    ASSERT_EQ(path.points.size(), 3U);
    ExpectVec(path.points[1].position, {13, 21, 32});
    ExpectVec(path.points[1].direction, {0.8, 0, 0.6});
    ExpectVec(path.points[2].position, {1, 2, 3});
    ExpectVec(path.points[2].direction, {0, 0.6, 0.8});
}

TEST(AptReader, ConvertsTheOriginOfMsys)
{
    ExpectVec(Read("UNITS/INCH\nMSYS/1,0,0,0,1,0,0,0,1\nGOTO/1,2,3\n").points[0].position,
              {101.6, 25.4, 50.8});
}

TEST(AptReader, StraightensTheRoundedAxesOfMsys)
{
    // Turned by 30 degrees about z, rounded to four digits and 0.0005 out of square.
    const double c = std::cos(host::kPi / 6.0);
    const Toolpath path =
        Read("MSYS/0,0,0,0.8660,0.5000,0,-0.5004,0.8657,0\nGOTO/0,1,0,0,0,1\nGOTO/1,0,0\n");
    const Vec3 y = path.points.at(0).position;
    const Vec3 x = path.points.at(1).position;
    EXPECT_NEAR(x[0], c, 1e-4);
    EXPECT_NEAR(x[1], 0.5, 1e-4);
    EXPECT_NEAR(host::Dot(x, y), 0.0, 1e-15);
    EXPECT_NEAR(host::Length(y), 1.0, 1e-15);
    EXPECT_NEAR(host::Length(x), 1.0, 1e-15);
}

TEST(AptReader, StandsTheToolUprightInMsysBeforeAnyVector)
{
    const Toolpath path = Read("MSYS/0,0,0,0,1,0,0,0,1\nGOTO/0,0,0\nMSYS/0,0,0,0,0,1,1,0,0\n"
                               "GOTO/0,0,0\n");
    ExpectVec(path.points.at(0).direction, {1, 0, 0});
    ExpectVec(path.points.at(1).direction, {0, 1, 0});
}

TEST(AptReader, WantsTheToolVectorAgainAfterATurnOfMsys)
{
    EXPECT_EQ(FaultOf("GOTO/0,0,0,1,0,0\nMSYS/0,0,0,0,1,0,0,0,1\nGOTO/1,0,0\n"),
              "part.cl:3:1: the tool vector was given before MSYS turned the axes; give it again "
              "here");
    // About the tool itself, and there and back, no turn matters.
    const Toolpath path = Read("GOTO/0,0,0,0,0,1\nMSYS/0,0,5,0,1,0,-1,0,0\nGOTO/1,0,0\n"
                               "MSYS/0,0,0,0,1,0,0,0,1\nMSYS/0,0,0,1,0,0,0,1,0\nGOTO/1,0,0\n");
    ASSERT_EQ(path.points.size(), 3U);
    ExpectVec(path.points[1].position, {0, 1, 5});
    ExpectVec(path.points[1].direction, {0, 0, 1});
    ExpectVec(path.points[2].direction, {0, 0, 1});
}

TEST(AptReader, RefusesOtherFrames)
{
    EXPECT_EQ(FaultOf("MSYS/0,0,0,1,0,0\n"),
              "part.cl:1:1: MSYS has 6 numbers; it takes an origin and two axes, "
              "x,y,z,i1,j1,k1,i2,j2,k2");
    const std::string length = "an axis of MSYS is a direction of length 1; correct it";
    EXPECT_EQ(FaultOf("MSYS/0,0,0,0,0,0,0,1,0\n"), "part.cl:1:12: " + length);
    EXPECT_EQ(FaultOf("MSYS/0,0,0,1,0,0,0,1.002,0\n"), "part.cl:1:18: " + length);
    const std::string square = "the two axes of MSYS are not at right angles; correct them";
    EXPECT_EQ(FaultOf("MSYS/0,0,0,1,0,0,1,0,0\n"), "part.cl:1:18: " + square);
    EXPECT_EQ(FaultOf("MSYS/0,0,0,1,0,0,0.002,1,0\n"), "part.cl:1:18: " + square);
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
             "OPNAME/A\nDELAY/2\nGOTO/1,2,3\nAUXFUN/8\nSEQNO/ON\nLEADER/50\nTITLE/X\nTPRINT/T1\n"
             "LINTOL/0.01\nMCHTOL/0.01\nSTOP\nOPSTOP\nEND-OF-PATH\nEND\nFINI\n");
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
    for (const std::string word :
         {"MOVARC", "GODLTA", "GOHOME", "INSERT", "ROTATE", "ROTABL", "COPY", "PREFUN", "RETRCT",
          "CLEARP", "TOOL PATHS", "PARTNOX", "PPRINTS", "END OF PATH", "UNLOAD", "TURRET"}) {
        EXPECT_EQ(FaultOf(word + "/1,2,3\n"), "part.cl:1:1: \"" + word + "\"" + reason);
    }
}

TEST(AptReader, PassesOverFormsOfMovingWordsThatMoveNothing)
{
    EXPECT_EQ(Read("CYCLE/OFF\ncycle/nomore\nCUTCOM/OFF\nTRACUT/NOMORE\nSELECT/TOOL,4\n"
                   "ORIGIN/0,0.0,-0\nTRANS/0,0,0\nGOTO/1,2,3\n")
                  .points.size(),
              1U);
    const std::string end = " is understood, other forms may change the tool's way; have the "
                            "points written as GOTO";
    EXPECT_EQ(FaultOf("CYCLE/DRILL,5\n"), "part.cl:1:1: only CYCLE/NOMORE or CYCLE/OFF" + end);
    EXPECT_EQ(FaultOf("CYCLE/OFF,5\n"), "part.cl:1:1: only CYCLE/NOMORE or CYCLE/OFF" + end);
    EXPECT_EQ(FaultOf("CYCLE\n"), "part.cl:1:1: only CYCLE/NOMORE or CYCLE/OFF" + end);
    EXPECT_EQ(FaultOf("GOTO/1,2,3\n CUTCOM/LEFT\n"), "part.cl:2:2: only CUTCOM/OFF" + end);
    EXPECT_EQ(FaultOf("TRACUT/1,0,0,0\n"), "part.cl:1:1: only TRACUT/NOMORE" + end);
    EXPECT_EQ(FaultOf("SELECT/HEAD,2\n"), "part.cl:1:1: only SELECT/TOOL" + end);
}

TEST(AptReader, RefusesToShiftTheCoordinatesUnseen)
{
    const std::string end = " shifts the coordinates, which is not understood; have the points "
                            "written in part coordinates, or shift them by MSYS";
    EXPECT_EQ(FaultOf("ORIGIN/0,0,1\n"), "part.cl:1:1: ORIGIN" + end);
    EXPECT_EQ(FaultOf("GOTO/1,2,3\nTRANS/1,0,0\n"), "part.cl:2:1: TRANS" + end);
    EXPECT_EQ(FaultOf("TRANS/0,0\n"), "part.cl:1:1: TRANS" + end);
    EXPECT_EQ(FaultOf("TRANS/x,0,0\n"), "part.cl:1:1: TRANS" + end);
}

TEST(AptReader, RefusesALineThatATextSwallows)
{
    EXPECT_EQ(FaultOf("PPRINT/COSTS 5 $\n\nGOTO/1,2,3\n"),
              "part.cl:2:1: this line is taken for text, since the one before ends in a $; take "
              "the $ out, or put the text on one line");
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
    EXPECT_EQ(FaultOf("GOTO/1,2$\n3,4\n"), "part.cl:1:8: \"2 3\"" + rule);
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
    EXPECT_EQ(FaultOf("GOTO/1,2,3,1e-17,0,0\n"), "part.cl:1:12: " + fault);
    EXPECT_EQ(Read("GOTO/1,2,3,0.0001,0,0\n").points.size(), 1U);
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
