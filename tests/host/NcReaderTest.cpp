#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/InputError.h"
#include "toolpath/NcReader.h"

namespace
{

using host::LengthUnit;
using host::Toolpath;
using host::ToolPoint;
using host::Vec3;
using Names = std::vector<std::string>;

constexpr const char* kStart = "G43.5 G0 X0 Y0 Z0 I0 J0 K1\n"; // line 1 of many tests below

Toolpath Read(const std::string& text, LengthUnit unit = LengthUnit::Millimetre)
{
    std::istringstream in(text);
    return host::ReadNc(in, "part.nc", unit);
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

/// What is wrong with a block behind a good one.
std::string FaultBehind(const std::string& block)
{
    return FaultOf(kStart + block + "\n");
}

void ExpectVec(const Vec3& actual, const Vec3& expected)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-13) << "component " << i;
    }
}

void ExpectPoint(const ToolPoint& point, const Vec3& position, const Vec3& direction)
{
    ExpectVec(point.position, position);
    ExpectVec(point.direction, direction);
}

// Moves --------------------------------------------------------------------------------------

TEST(NcReader, TakesAProgramAsPostProcessorsWriteIt)
{
    const Toolpath path = Read("%\n"
                               "O1234 (BLADE)\n"
                               "N10 G21 G17 G40 G49 G80 G90 G94\n"
                               "N20 T5 M6 (BALL 6)\n"
                               "N30 G54 S12000 M3\n"
                               "N40 G0 X-20. Y-10.\n"
                               "N50 G43.5 H5 Z100. I0. J0. K1.0 M8\n"
                               "N60 X-20.0Y-10.0Z12.0000I0.173648J0.K0.984808\n"
                               "N70 G1 Z10. F300. ; down\n"
                               "N80 X-15.5\n"
                               "N90 M5 M9\n"
                               "N100 M30\n"
                               "%\n"
                               "G2 X9\n");
    ASSERT_EQ(path.points.size(), 4U);
    const double tilt = std::hypot(0.173648, 0.984808);
    const Vec3 leaning{0.173648 / tilt, 0, 0.984808 / tilt};
    ExpectPoint(path.points[0], {-20, -10, 100}, {0, 0, 1});
    ExpectPoint(path.points[1], {-20, -10, 12}, leaning);
    ExpectPoint(path.points[2], {-20, -10, 10}, leaning);
    ExpectPoint(path.points[3], {-15.5, -10, 10}, leaning);
    EXPECT_EQ(path.points[0].line, 7);
    EXPECT_EQ(path.points[3].line, 10);
    EXPECT_TRUE(path.points[1].isRapid);
    EXPECT_FALSE(path.points[2].isRapid);
    EXPECT_FALSE(path.points[1].feed.has_value());
    EXPECT_EQ(path.points[3].feed.value().value, 300);
    EXPECT_EQ(path.points[3].feed.value().per, host::FeedPer::Minute);
    ASSERT_EQ(path.operations.size(), 1U);
    EXPECT_EQ(path.operations[0].toolNumber, 5);
    EXPECT_EQ(path.operations[0].line, 4);
    EXPECT_FALSE(path.operations[0].toolLength.has_value());
    EXPECT_EQ(path.warnings,
              (Names{"part.nc:6:8: warning: rapids on which not all of X, Y, Z are known are left "
                     "out, 1 in all and the first of them here; the path begins behind them"}));
}

TEST(NcReader, IsBlindToCaseAndBlanks)
{
    const Toolpath path = Read("g01x1y 2.5Z\t-3i0 j3 k 4f100\n");
    ASSERT_EQ(path.points.size(), 1U);
    ExpectPoint(path.points[0], {1, 2.5, -3}, {0, 0.6, 0.8});
    EXPECT_EQ(path.points[0].feed.value().value, 100);
}

TEST(NcReader, MakesAPointOfEachBlockThatMovesOrTurnsTheTool)
{
    const Toolpath path =
        Read(std::string(kStart) + "G1 F100\nI0 J1 K0\nX0\nS500\n\n(X1)\n;X2\nZ1\n");
    ASSERT_EQ(path.points.size(), 4U);
    ExpectPoint(path.points[1], {0, 0, 0}, {0, 1, 0});
    ExpectPoint(path.points[2], {0, 0, 0}, {0, 1, 0});
    ExpectPoint(path.points[3], {0, 0, 1}, {0, 1, 0});
    EXPECT_EQ(path.points[3].line, 9);
}

TEST(NcReader, StandsTheToolUprightBeforeAnyVector)
{
    ExpectPoint(Read("G1 X1 Y2 Z3\n").points.at(0), {1, 2, 3}, {0, 0, 1});
}

TEST(NcReader, WantsWholeVectors)
{
    // Here nothing depends on whether what is not given stays or becomes 0.
    const Toolpath path = Read("G1 X1 Y2 Z3 I1 K1\nI3 K4\nJ2 I0 K0\nJ-1\n");
    ASSERT_EQ(path.points.size(), 4U);
    ExpectVec(path.points[1].direction, {0.6, 0, 0.8});
    ExpectVec(path.points[3].direction, {0, -1, 0});
    EXPECT_EQ(FaultBehind("I0.1 J0.2"),
              "part.nc:2:1: the tool vector lacks K; give I, J and K together");
    EXPECT_EQ(FaultBehind("I1 J1 K1\nX1 J2 K1"),
              "part.nc:3:4: the tool vector lacks I; give I, J and K together");
    EXPECT_EQ(FaultBehind("I0 J0 K0."),
              "part.nc:2:1: the tool vector has no length; give its direction as i,j,k");
}

TEST(NcReader, WantsToKnowHowToMove)
{
    EXPECT_EQ(FaultOf("G90\nF100 X1 Y1 Z1\n"),
              "part.nc:2:6: neither G0 nor G1 was given before this move; put one of them here");
}

// Modes --------------------------------------------------------------------------------------

TEST(NcReader, ConvertsTheFilesUnitToTheMachines)
{
    Toolpath path = Read("G20 G0 X1 Y2 Z-3\nG1 F10 X2\nG21 Y1 F10\n");
    ASSERT_EQ(path.points.size(), 3U);
    ExpectVec(path.points[0].position, {25.4, 50.8, -76.2});
    EXPECT_EQ(path.points[1].feed.value().value, 254);
    ExpectVec(path.points[2].position, {50.8, 1, -76.2});
    EXPECT_EQ(path.points[2].feed.value().value, 10);
    ExpectVec(Read("G21 G0 X25.4 Y0 Z0\n", LengthUnit::Inch).points.at(0).position, {1, 0, 0});
    ExpectVec(Read("G0 X25.4 Y0 Z0\n", LengthUnit::Inch).points.at(0).position, {25.4, 0, 0});
}

TEST(NcReader, TakesFeedsPerMinuteAndPerRevolution)
{
    const Toolpath path = Read("G0 X0 Y0 Z0\nG1 X1 F100\nG95 X2\nX3 F0.2\nG95 X4\nG94 X5\n");
    ASSERT_EQ(path.points.size(), 6U);
    EXPECT_EQ(path.points[1].feed.value().value, 100);
    EXPECT_FALSE(path.points[2].feed.has_value()); // 100 meant millimetres a minute
    EXPECT_EQ(path.points[3].feed.value().value, 0.2);
    EXPECT_EQ(path.points[3].feed.value().per, host::FeedPer::Revolution);
    EXPECT_EQ(path.points[4].feed.value().value, 0.2);
    EXPECT_FALSE(path.points[5].feed.has_value());
    EXPECT_EQ(FaultBehind("G1 X1 F0"), "part.nc:2:7: a feed is greater than 0; correct it");
}

TEST(NcReader, MakesAFeedOfInverseTime)
{
    // 5 long, twice a minute; then 3 long, ten times a minute.
    const Toolpath path = Read(std::string(kStart) + "G93 G1 X3 Y4 F2\nZ3 I0 J1 K0 F10\nG0 Z9\n");
    ASSERT_EQ(path.points.size(), 4U);
    EXPECT_DOUBLE_EQ(path.points[1].feed.value().value, 10);
    EXPECT_DOUBLE_EQ(path.points[2].feed.value().value, 30);
    EXPECT_EQ(path.points[2].feed.value().per, host::FeedPer::Minute);
    // The length counts in the machine's unit.
    EXPECT_DOUBLE_EQ(Read("G20 G93 G0 X0 Y0 Z0\nG1 X1 F2\n").points.at(1).feed.value().value, 50.8);
}

TEST(NcReader, RefusesInverseTimeThatSaysNothing)
{
    EXPECT_EQ(FaultBehind("G93 G1 X1"),
              "part.nc:2:8: under G93 each G1 has an F of its own; add it");
    EXPECT_EQ(FaultBehind("G93 G1 X1 F2\nX2"),
              "part.nc:3:1: under G93 each G1 has an F of its own; add it");
    EXPECT_EQ(FaultBehind("G93 G1 I1 J0 K0 F2"),
              "part.nc:2:17: this move has a time, but no length and so no feed; have it written "
              "under G94");
    EXPECT_EQ(FaultOf("G93 G1 X1 Y0 Z0 F2\n"),
              "part.nc:1:17: the time of this move says nothing of its feed, since where it comes "
              "from is not known; begin with a G0");
    EXPECT_EQ(FaultBehind("G93 G1 X1 F-2"), "part.nc:2:11: a feed is greater than 0; correct it");
}

TEST(NcReader, PassesOverWhatMovesNothing)
{
    const std::string block = "G9 G15 G17 G21 G40 G54 G61 G69 G80 G90 G91.1 G94 G97 S1 D3 H4 M19\n";
    const Toolpath path = Read(block + kStart +
                               "G18\nG19\nG90.1\nG61.1\nG64 P0.01 Q0.005\n"
                               "G4 P2\nG4 X2.5\nG04 F3\nG4 U1 M9\nM1\nG1 Z1\n");
    ASSERT_EQ(path.points.size(), 2U);
    ExpectPoint(path.points[1], {0, 0, 1}, {0, 0, 1});
    EXPECT_FALSE(path.points[1].feed.has_value());
    EXPECT_TRUE(path.warnings.empty());
}

TEST(NcReader, TakesTheToolLengthOfAnUprightTool)
{
    const Toolpath path = Read("G49 G0 X1 Y2\nG43 H1 Z3\nG1 Z1\nG43.5 H1 Z0 I1 J0 K0\n");
    ASSERT_EQ(path.points.size(), 3U);
    ExpectPoint(path.points[0], {1, 2, 3}, {0, 0, 1});
    ExpectPoint(path.points[2], {1, 2, 0}, {1, 0, 0});
}

TEST(NcReader, RefusesCoordinatesThatAreNotThoseOfTheToolsEnd)
{
    EXPECT_EQ(FaultBehind("G49\nG0 Z100"),
              "part.nc:3:4: under G49 the coordinates are not those of the tool's end; put G43.5 "
              "before this move, or the end of the program");
    EXPECT_EQ(FaultBehind("G1 I1 J0 K1\nG43 H1\nX5"),
              "part.nc:4:1: under G43 the coordinates are those of an upright tool, and the tool "
              "leans; put G43.5 before this move");
    EXPECT_EQ(FaultBehind("G43 H1\n I1 J0 K1"),
              "part.nc:3:2: I J K are a tool vector under G43.5 only; put it before them");
    EXPECT_EQ(FaultBehind("G49 I1 J0 K1"),
              "part.nc:2:5: I J K are a tool vector under G43.5 only; put it before them");
    const std::string unknown = "not all of X, Y, Z of the tool's end are known here; give all of "
                                "them in this block";
    EXPECT_EQ(FaultOf("G1 X1 Y1\n"), "part.nc:1:4: " + unknown);
    // Z of the spindle; X and Y of a spindle that leans.
    EXPECT_EQ(FaultOf("G49 G0 X1 Y1 Z1\nG43.5 G1 X2\n"), "part.nc:2:10: " + unknown);
    EXPECT_EQ(FaultOf("G0 X1 Y1\nG43.5 G1 Z1 I1 J0 K1\n"), "part.nc:2:10: " + unknown);
}

TEST(NcReader, TakesOneWorkOffsetForThePart)
{
    EXPECT_EQ(Read("G54\nG55\nG0 X0 Y0 Z0\nG56\nG55\nX1\n").points.size(), 2U);
    EXPECT_EQ(Read("G0 X0 Y0 Z0\nG54 X1\n").points.size(), 2U);
    const std::string other = "this coordinate is in another work offset than those before; have "
                              "the path written in one";
    EXPECT_EQ(FaultBehind("G55 X1"), "part.nc:2:5: " + other);
    EXPECT_EQ(FaultOf("G59.1 G0 X0 Y0\nG59.2 Z1\n"), "part.nc:2:7: " + other);
}

// Tools --------------------------------------------------------------------------------------

/// "tool @line +firstPoint" of each operation.
Names Operations(const std::string& text)
{
    const Toolpath path = Read(text);
    Names all;
    for (const host::Operation& operation : path.operations) {
        all.push_back((operation.toolNumber ? std::to_string(*operation.toolNumber) : "-") + " @" +
                      std::to_string(operation.line) + " +" + std::to_string(operation.firstPoint));
    }
    return all;
}

TEST(NcReader, BeginsAnOperationAtEachChangeOfTool)
{
    const std::string text = "T1 M6\nG0 X0 Y0 Z0\nT2\nG1 Z1\nM6\nG0 X1 Y1 Z1\nM06 T3\nT4\nM6\nM3\n"
                             "G0 X1 Y1 Z1\nT7 M6\n";
    EXPECT_EQ(Operations(text), (Names{"1 @1 +0", "2 @5 +2", "4 @9 +3"}));
    std::vector<int> ofPoints;
    for (const ToolPoint& point : Read(text).points) {
        ofPoints.push_back(point.operation);
    }
    EXPECT_EQ(ofPoints, (std::vector<int>{0, 0, 1, 2}));
}

TEST(NcReader, TakesTForAChangeInAProgramWithoutM6)
{
    EXPECT_EQ(Operations("T0101\nG0 X0 Y0 Z0\nG1 Z1\nT0202 S100\nG1 Z2\n"),
              (Names{"101 @1 +0", "202 @4 +2"}));
}

TEST(NcReader, HasAnOperationForMovesBeforeTheFirstTool)
{
    EXPECT_EQ(Operations("G21\nG0 X0 Y0 Z0\n"), (Names{"- @2 +0"}));
    EXPECT_EQ(Operations("G0 X0 Y0 Z0\nT3 M6\nG0 X0 Y0 Z0\n"), (Names{"- @1 +0", "3 @2 +1"}));
    EXPECT_EQ(Operations("M6\nG0 X0 Y0 Z0\n"), (Names{"- @1 +0"}));
}

TEST(NcReader, WantsThePlaceAgainAfterAChangeOfTool)
{
    EXPECT_EQ(FaultBehind("T2 M6\nG1 Z5"),
              "part.nc:3:4: not all of X, Y, Z of the tool's end are known here; give all of them "
              "in this block");
    const Toolpath path = Read(std::string(kStart) + "T2 M6\nG0 X5 Y5\nZ7\n");
    ASSERT_EQ(path.points.size(), 2U);
    ExpectVec(path.points[1].position, {5, 5, 7});
    EXPECT_EQ(path.warnings.size(), 1U);
    // Under inverse time a move from there has no length.
    EXPECT_EQ(FaultBehind("T2 M6\nG93 G1 X1 Y1 Z1 F1").substr(0, 31),
              "part.nc:3:17: the time of this ");
}

TEST(NcReader, RefusesToolsWithoutWholeNumber)
{
    EXPECT_EQ(FaultOf("T1.5 M6\n"),
              "part.nc:1:1: \"1.5\" is not a tool's number; write a whole one like 12");
}

// What ends a program ------------------------------------------------------------------------

TEST(NcReader, StopsAtTheEndOfTheProgram)
{
    for (const std::string end : {"M30\n", "M2\n", "M02 (end)\n", "%\n", " %_N_SUB_SPF\n"}) {
        EXPECT_EQ(Read(kStart + end + "O2000 G2\n").points.size(), 1U) << end;
    }
    EXPECT_EQ(Read(std::string("G0 X0 Y0 Z0 M30\nX1\n")).points.size(), 1U);
}

TEST(NcReader, RefusesAProgramWithoutMoves)
{
    const std::string fault =
        "part.nc:1:1: there is no move with X, Y and Z in this file, so there "
        "is nothing to do; is it an NC program with tool vectors?";
    EXPECT_EQ(FaultOf(""), fault);
    EXPECT_EQ(FaultOf("%\nG0 X1 Y1\nM30\nZ1\n"), fault);
}

// What is refused ----------------------------------------------------------------------------

TEST(NcReader, RefusesCodesThatMayMoveTheTool)
{
    const std::string end = " is not understood, and it may move the tool or change what "
                            "coordinates mean; have the path written in G0 and G1";
    for (const std::string code :
         {"G2",    "G03",   "G5.1",  "G10",   "G16",  "G28",   "G30", "G33",
          "G38.2", "G41",   "G42",   "G43.1", "G44",  "G50",   "G51", "G52",
          "G53",   "G53.1", "G54.1", "G65",   "G68",  "G68.2", "G73", "G81",
          "G92",   "G96",   "G98",   "G112",  "G0.5", "G1.05", "G-1", "G100000"}) {
        EXPECT_EQ(FaultBehind(" " + code + " X1"), "part.nc:2:2: " + code + end);
    }
    EXPECT_EQ(FaultBehind("G91"),
              "part.nc:2:1: G91 makes the coordinates steps; have them written for G90");
    EXPECT_EQ(FaultBehind("G43.4 H1"),
              "part.nc:2:1: under G43.4 the rotary axes say where the tool points, and this reader "
              "takes tool vectors; have them written as I J K under G43.5");
}

TEST(NcReader, RefusesWordsThatMayMoveTheTool)
{
    EXPECT_EQ(FaultBehind("X1 A30"),
              "part.nc:2:4: A30 turns an axis, and this reader takes tool vectors; have them "
              "written as I J K under G43.5");
    const std::string end =
        " is not understood, and it may move the tool; have the path written in "
        "X Y Z and I J K";
    for (const std::string word : {"U1", "V1", "W1", "R1", "Q1", "P1", "L1", "E1"}) {
        EXPECT_EQ(FaultBehind("X1 " + word), "part.nc:2:4: " + word + end);
    }
    EXPECT_EQ(FaultBehind("X1e5"), "part.nc:2:3: E5" + end);
    EXPECT_EQ(FaultBehind("G4 P1 Z5"),
              "part.nc:2:7: Z5 does not belong to G4; move it to a block of its own");
    EXPECT_EQ(FaultBehind("G4 G91 P1").substr(0, 16), "part.nc:2:4: G91");
    EXPECT_EQ(FaultBehind("G4 G1 P1"),
              "part.nc:2:1: a G4 stands alone in its block; move the other G words");
}

TEST(NcReader, RefusesCallsAndCalculations)
{
    const std::string calls = " is not understood; have calls and subprograms written out";
    for (const std::string code : {"M97", "M98", "M99", "M198", "M3.5", "M-1", "M10000"}) {
        EXPECT_EQ(FaultBehind(code), "part.nc:2:1: " + code + calls);
    }
    const std::string word = " does not begin a word like X12.5; have variables, calculations and "
                             "calls written out as plain words";
    EXPECT_EQ(FaultBehind("#1=5"), "part.nc:2:1: \"#\"" + word);
    EXPECT_EQ(FaultBehind("X1 [2]"), "part.nc:2:4: \"[\"" + word);
    EXPECT_EQ(FaultBehind("X1 2"), "part.nc:2:4: \"2\"" + word);
    EXPECT_EQ(FaultBehind("X1 )"), "part.nc:2:4: \")\"" + word);
    EXPECT_EQ(FaultBehind("X1 %"), "part.nc:2:4: \"%\"" + word);
    EXPECT_EQ(FaultBehind("X#2"), "part.nc:2:1: X is to be followed by a number like 12.5 or -1; "
                                  "what stands there is \"#\"");
    EXPECT_EQ(FaultBehind("X"), "part.nc:2:1: X is to be followed by a number like 12.5 or -1; "
                                "what stands there is \"\"");
    EXPECT_EQ(FaultBehind("X1.2.3").substr(0, 30), "part.nc:2:1: X is to be follow");
    EXPECT_EQ(FaultBehind("X1-2").substr(0, 30), "part.nc:2:1: X is to be follow");
    EXPECT_EQ(FaultBehind("Xinf").substr(0, 30), "part.nc:2:1: X is to be follow");
    EXPECT_EQ(FaultBehind("o100 sub").substr(0, 30), "part.nc:2:6: S is to be follow");
    EXPECT_EQ(
        FaultBehind("O2000"),
        "part.nc:2:1: O2000 is understood as the number of the program only, alone and before "
        "the first move; have calls and subprograms written out");
    EXPECT_EQ(FaultOf("O100 S5\n").substr(0, 33), "part.nc:1:1: O100 is understood a");
}

TEST(NcReader, RefusesBlocksThatAreRunAtWill)
{
    EXPECT_EQ(FaultBehind("N5 /X1"),
              "part.nc:2:4: whether a block behind a / is run is for the operator to say; take the "
              "/ out, or the block");
}

TEST(NcReader, RefusesWordsThatContradictEachOther)
{
    EXPECT_EQ(FaultBehind("X1 Y2 x3"),
              "part.nc:2:7: this block has a second X; take one of them out");
    for (const std::string pair :
         {"G0 G1", "G21 G20", "G43 G49", "G54 G55", "G93 G94", "G17 G18"}) {
        EXPECT_EQ(FaultBehind(pair),
                  "part.nc:2:" + std::to_string(pair.find(' ') + 2) + ": " +
                      pair.substr(pair.find(' ') + 1) +
                      " does not go together with another G word of this block; take one of them "
                      "out");
    }
}

TEST(NcReader, RefusesCommentsWithoutEnd)
{
    const std::string end = "this comment has no ) of its own on its line; add it";
    EXPECT_EQ(FaultBehind("X1 (one"), "part.nc:2:4: " + end);
    EXPECT_EQ(FaultBehind("(one (two) X1)"), "part.nc:2:1: " + end);
    EXPECT_EQ(Read(std::string(kStart) + "X1 (one; two) Y2 ; (three\n").points.at(1).position,
              (Vec3{1, 2, 0}));
}

TEST(NcReader, RefusesNumbersAndLinesBeyondTheirBounds)
{
    EXPECT_EQ(FaultBehind("X2000000000000"),
              "part.nc:2:2: \"2000000000000\" is beyond any machine; correct it");
    EXPECT_EQ(FaultBehind(std::string(4097, ' ')),
              "part.nc:2:4097: this line is longer than 4096 characters; break it up");
    EXPECT_EQ(FaultBehind(std::string("X1\0", 3)),
              "part.nc:2:3: there is a NUL byte here; this is not a text file, or it is damaged");
}

} // namespace
