#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "GcodeReader.h"
#include "MillText.h"
#include "MotionRows.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "post/GcodeWriter.h"
#include "support/Random.h"
#include "text/InputError.h"

namespace
{

using host::Dialect;
using host::Feed;
using host::FeedPer;
using host::LoadedMachine;
using host::MotionRow;
using host::operator+;
using host::operator-;
using host::operator*;
using host::ToDegrees;
using host::ToRadians;

LoadedMachine Load(const std::string& text)
{
    return host::AssembleMachine(host::ReadMachine(text, "mill.toml"));
}

/// A path of one operation; its points' places do not matter, only the rows' do.
host::Toolpath PathOf(std::size_t points, Feed feed)
{
    host::Toolpath path;
    path.file = "jobs/part.cl";
    path.operations.emplace_back();
    path.operations[0].name = "FACE";
    path.operations[0].line = 2;
    path.operations[0].toolNumber = 3;
    for (std::size_t i = 0; i < points; ++i) {
        host::ToolPoint point;
        point.line = 10 + static_cast<int>(i);
        point.feed = feed;
        path.points.push_back(point);
    }
    return path;
}

std::string Write(const Dialect& dialect, const LoadedMachine& machine, const host::Toolpath& path,
                  const std::vector<MotionRow>& rows)
{
    host::GcodeWriter writer(dialect, machine, machine.AxesOf(machine.streams.front()), path);
    std::string text = writer.Begin();
    for (const MotionRow& row : rows) {
        text += writer.Row(row);
    }
    return text + writer.End();
}

/// What stands between the headers and the footers of the bundled dialects.
std::string Body(const std::string& program)
{
    const std::string header = "G54\n";
    const std::size_t begin = program.find(header) + header.size();
    return program.substr(begin, program.rfind("G94\nM5\n") - begin);
}

class GcodeWriter : public testing::Test
{
  protected:
    MotionRow Row(std::size_t point, std::vector<double> joints_deg) const
    {
        joints_deg[3] = ToRadians(joints_deg[3]);
        joints_deg[4] = ToRadians(joints_deg[4]);
        return test::RowAt(machine, point, std::move(joints_deg));
    }
    MotionRow RapidRow(std::size_t point, std::vector<double> joints_deg) const
    {
        MotionRow row = Row(point, std::move(joints_deg));
        row.flags.isRapid = true;
        return row;
    }
    MotionRow RewindRow(std::size_t point, std::vector<double> joints_deg) const
    {
        MotionRow row = Row(point, std::move(joints_deg));
        row.flags.isRewind = true;
        return row;
    }
    std::string Fault(const Dialect& dialect, const host::Toolpath& path,
                      const std::vector<MotionRow>& rows) const
    {
        try {
            Write(dialect, machine, path, rows);
        } catch (const host::InputError& error) {
            return error.what();
        }
        return "no error";
    }

    LoadedMachine machine{Load(test::MillText())};
    const Dialect inverseTime{host::LoadDialect("inverse-time")};
    const Dialect perMinute{host::LoadDialect("per-minute")};
    const Dialect tcp{host::LoadDialect("tcp")};
    const Feed k300{300.0, FeedPer::Minute};
};

// Whole programs ----------------------------------------------------------------------------

TEST_F(GcodeWriter, WritesAxisPositionsInInverseTime)
{
    // 30 mm and 50 mm at 300 mm/min: 1/10 and 1/6 min.
    EXPECT_EQ(Write(inverseTime, machine, PathOf(3, k300),
                    {RapidRow(0, {10, 20, 30, 0, 0}), Row(1, {10, 20, 0, 0, 0}),
                     Row(2, {40, 60, 0, 0, 0})}),
              "%\n"
              "(part for Mill)\n"
              "G21 G17 G40 G49 G80 G90\n"
              "G54\n"
              "(FACE)\n"
              "T3 M6\n"
              "G0 X10.0000 Y20.0000 Z30.0000 A0.0000 C0.0000\n"
              "G93 G1 Z0.0000 F10.000\n"
              "X40.0000 Y60.0000 F6.000\n"
              "G94\n"
              "M5\n"
              "M30\n"
              "%\n");
}

TEST_F(GcodeWriter, WritesAxisPositionsWithAFeedPerMinute)
{
    // The C axis turns by 90 degrees under the tool's end 10 mm beside it, which goes the straight
    // 10 sqrt(2) mm in 0.0471405 min: 1909.188 degrees per minute.
    EXPECT_EQ(Body(Write(perMinute, machine, PathOf(4, k300),
                         {RapidRow(0, {10, 0, 30, 0, 0}), Row(1, {10, 0, 0, 0, 0}),
                          Row(2, {10, 0, 0, 0, 90}), Row(3, {5, 0, 0, 0, 90})})),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X10.0000 Y0.0000 Z30.0000 A0.0000 C0.0000\n"
              "G94 G1 Z0.0000 F300.000\n"
              "C90.0000 F1909.188\n"
              "X5.0000 F300.000\n");
}

TEST_F(GcodeWriter, WritesTheToolsEndUnderTcp)
{
    // The table, turned by 90 degrees, has its own x along the machine's y: the tool's end at
    // machine x = 10 stands at -10 of the part's y. The part's zero is 100 below the machine's.
    EXPECT_EQ(Body(Write(tcp, machine, PathOf(4, k300),
                         {RapidRow(0, {10, 0, 30, 0, 0}), Row(1, {10, 0, 0, 0, 0}),
                          Row(2, {10, 0, 0, 0, 90}), Row(3, {5, 0, 0, 0, 90})})),
              "(FACE)\n"
              "T3 M6\n"
              "G43.4 H3\n"
              "G0 X10.0000 Y0.0000 Z130.0000 A0.0000 C0.0000\n"
              "G94 G1 Z100.0000 F300.000\n"
              "X0.0000 Y-10.0000 C90.0000\n"
              "Y-5.0000\n"
              "G49\n");
}

TEST_F(GcodeWriter, UnwindsByARapidTurnAtTheRetractedPlace)
{
    const std::vector<MotionRow> rows{RapidRow(0, {0, 0, 30, 0, 350}),
                                      RewindRow(1, {0, 0, 80, 0, 350}),
                                      RewindRow(1, {0, 0, 80, 0, -10}),
                                      RewindRow(1, {0, 0, 30, 0, -10}), Row(1, {0, 0, 15, 0, -10})};
    EXPECT_EQ(Body(Write(inverseTime, machine, PathOf(2, k300), rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X0.0000 Y0.0000 Z30.0000 A0.0000 C350.0000\n"
              "G93 G1 Z80.0000 F6.000\n"
              "G0 C-10.0000\n"
              "G1 Z30.0000 F6.000\n"
              "Z15.0000 F20.000\n");
    EXPECT_EQ(Body(Write(tcp, machine, PathOf(2, k300), rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G43.4 H3\n"
              "G0 X0.0000 Y0.0000 Z130.0000 A0.0000 C350.0000\n"
              "G94 G1 Z180.0000 F300.000\n"
              "G49\n"
              "G0 A0.0000 C-10.0000\n"
              "G43.4 H3\n"
              "G94 G1 X0.0000 Y0.0000 Z130.0000 A0.0000 C-10.0000 F300.000\n"
              "Z115.0000\n"
              "G49\n");
}

TEST_F(GcodeWriter, SwingsToAnotherBranchAtTheRetractedPlace)
{
    // From A 20, C 0 to A -20, C 180, the tool's end in the part's zero: that is 20 above the A
    // axis, at (0, -20 sin A, 20 cos A - 120), wherever C stands.
    const double y = 20.0 * std::sin(ToRadians(20));
    const double z = 20.0 * std::cos(ToRadians(20)) - 120.0;
    const MotionRow here = Row(0, {0, -y, z, 20, 0});
    const auto pulledBack = [&](const MotionRow& row) {
        MotionRow pulled = row;
        pulled.joints[2] += 50.0;
        pulled.asked.position = row.asked.position + 50.0 * row.asked.direction;
        pulled.flags.isRewind = true;
        return pulled;
    };
    MotionRow swung = Row(0, {0, y, z, -20, 180});
    swung.flags.isRewind = true;
    const std::vector<MotionRow> rows{here, pulledBack(here), pulledBack(swung), swung};
    EXPECT_EQ(Body(Write(inverseTime, machine, PathOf(1, k300), rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X0.0000 Y-6.8404 Z-101.2061 A20.0000 C0.0000\n"
              "G93 G1 Z-51.2061 F6.000\n"
              "G0 Y6.8404 A-20.0000 C180.0000\n"
              "G1 Z-101.2061 F6.000\n");
    // Under tool centre point control its end rests while C turns by 180 degrees in 1/20 min; 40
    // and 180 are 184.3909 together.
    EXPECT_EQ(Body(Write(tcp, machine, PathOf(1, k300), rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G43.4 H3\n"
              "G0 X0.0000 Y0.0000 Z0.0000 A20.0000 C0.0000\n"
              "G94 G1 Y17.1010 Z46.9846 F300.000\n"
              "A-20.0000 C180.0000 F3687.818\n"
              "Y0.0000 Z0.0000 F300.000\n"
              "G49\n");
}

TEST_F(GcodeWriter, GoesBackAndForthRapidlyWhereARapidPointIsRewound)
{
    host::Toolpath path = PathOf(2, k300);
    path.points[0].isRapid = true;
    path.points[0].feed.reset();
    EXPECT_EQ(Body(Write(inverseTime, machine, path,
                         {RapidRow(0, {0, 0, 30, 0, 350}), RewindRow(0, {0, 0, 80, 0, 350}),
                          RewindRow(0, {0, 0, 80, 0, -10}), RewindRow(0, {0, 0, 30, 0, -10})})),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X0.0000 Y0.0000 Z30.0000 A0.0000 C350.0000\n"
              "Z80.0000\n"
              "C-10.0000\n"
              "Z30.0000\n");
}

TEST_F(GcodeWriter, TurnsWithoutLinearWordsEvenWhereAllAreRepeated)
{
    Dialect dialect = tcp;
    dialect.isModal = false;
    const std::string body =
        Body(Write(dialect, machine, PathOf(2, k300),
                   {RapidRow(0, {0, 0, 30, 0, 350}), RewindRow(1, {0, 0, 80, 0, 350}),
                    RewindRow(1, {0, 0, 80, 0, -10})}));
    EXPECT_NE(body.find("G49\nG0 A0.0000 C-10.0000\nG43.4 H3\n"), std::string::npos) << body;
}

TEST_F(GcodeWriter, ChangesToolsWhereTheNumberChanges)
{
    host::Toolpath path = PathOf(5, k300);
    const auto begin = [&path](const std::string& name, int number, std::size_t point) {
        host::Operation operation;
        operation.name = name;
        operation.toolNumber = number;
        path.operations.push_back(operation);
        for (std::size_t i = point; i < path.points.size(); ++i) {
            path.points[i].operation = static_cast<int>(path.operations.size()) - 1;
        }
    };
    begin("", 3, 1);
    begin("SLOT (2x)", 3, 2);
    begin("DRILL", 12, 3);
    const std::vector<MotionRow> rows{RapidRow(0, {10, 0, 30, 0, 0}), Row(1, {10, 0, 0, 0, 0}),
                                      Row(2, {40, 0, 0, 0, 0}), Row(3, {40, 0, 0, 0, 0}),
                                      Row(4, {40, 0, 30, 0, 0})};
    // Where the tool change leaves the axes is not known: a whole rapid block leads from there.
    EXPECT_EQ(Body(Write(inverseTime, machine, path, rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X10.0000 Y0.0000 Z30.0000 A0.0000 C0.0000\n"
              "G93 G1 Z0.0000 F10.000\n"
              "(SLOT [2x])\n"
              "X40.0000 F10.000\n"
              "(DRILL)\n"
              "T12 M6\n"
              "G0 X40.0000 Y0.0000 Z0.0000 A0.0000 C0.0000\n"
              "G93 G1 Z30.0000 F10.000\n");
    EXPECT_EQ(Body(Write(tcp, machine, path, rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G43.4 H3\n"
              "G0 X10.0000 Y0.0000 Z130.0000 A0.0000 C0.0000\n"
              "G94 G1 Z100.0000 F300.000\n"
              "(SLOT [2x])\n"
              "X40.0000\n"
              "(DRILL)\n"
              "G49\n"
              "T12 M6\n"
              "G43.4 H12\n"
              "G0 X40.0000 Y0.0000 Z100.0000 A0.0000 C0.0000\n"
              "G94 G1 Z130.0000 F300.000\n"
              "G49\n");
}

TEST_F(GcodeWriter, FollowsItsDialectInEveryWord)
{
    Dialect dialect = perMinute;
    dialect.decimals = {2, 3, 1, 0, false};
    dialect.mm = "G71";
    dialect.rapid = "G00";
    dialect.linear = "G01";
    dialect.isModal = false;
    dialect.comment = host::CommentStyle::Semicolon;
    dialect.lineNumbers = host::LineNumbers{5, 5, 15};
    dialect.header = {"{unit}", "; {program} {machine} {operation} T{tool}"};
    dialect.footer = {"M2"};
    dialect.toolChange = {"T{tool}", "M6"};
    EXPECT_EQ(Write(dialect, machine, PathOf(3, k300),
                    {RapidRow(0, {10, 20, 30, 0, 0}), Row(1, {10.125, 20, 0, 0, 0}),
                     Row(2, {40, 20, 0, 0, 0})}),
              "G71\n"
              "; part Mill FACE T3\n"
              "; FACE\n"
              "N5 T3\n"
              "N10 M6\n"
              "N15 G00 X10. Y20. Z30. A0. C0.\n"
              "N5 G94 G01 X10.13 Y20. Z0. A0. C0. F300\n"
              "N10 G01 X40. Y20. Z0. A0. C0. F300\n"
              "M2\n");
}

TEST_F(GcodeWriter, HasAWordAndDecimalsForInches)
{
    const LoadedMachine inches = Load(test::MillWith(3, "length = \"inch\""));
    const std::string program =
        Write(inverseTime, inches, PathOf(1, k300), {test::RowAt(inches, 0, {0.5, 0, 0, 0, 0})});
    EXPECT_NE(program.find("G20 G17"), std::string::npos);
    EXPECT_NE(program.find("G0 X0.50000 Y0.00000 Z0.00000 A0.0000 C0.0000\n"), std::string::npos);
}

// Single rules ------------------------------------------------------------------------------

TEST_F(GcodeWriter, GoesRapidlyToTheFirstRowBecauseItsWayIsNotKnown)
{
    EXPECT_EQ(Body(Write(inverseTime, machine, PathOf(1, k300), {Row(0, {10, 0, 0, 0, 0})})),
              "(FACE)\nT3 M6\nG0 X10.0000 Y0.0000 Z0.0000 A0.0000 C0.0000\n");
}

TEST_F(GcodeWriter, GivesTheWayOfARowWithoutAWordToTheNextBlock)
{
    // 0.00004 mm are less than half the last decimal; the block after them is 0.001 mm long.
    EXPECT_EQ(Body(Write(inverseTime, machine, PathOf(3, {60.0, FeedPer::Minute}),
                         {RapidRow(0, {10, 0, 0, 0, 0}), Row(1, {10.00004, 0, 0, 0, 0}),
                          Row(2, {10.001, 0, 0, 0, 0})})),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X10.0000 Y0.0000 Z0.0000 A0.0000 C0.0000\n"
              "G93 G1 X10.0010 F60000.000\n");
}

TEST_F(GcodeWriter, TurnsUnderAnEndAtRestAtTheRotaryRate)
{
    // On the C axis the tool's end does not move: 90 degrees at 3600 per minute.
    const std::vector<MotionRow> rows{RapidRow(0, {0, 0, 0, 0, 0}), Row(1, {0, 0, 0, 0, 90})};
    EXPECT_NE(Write(inverseTime, machine, PathOf(2, k300), rows).find("G93 G1 C90.0000 F40.000\n"),
              std::string::npos);
    EXPECT_NE(Write(perMinute, machine, PathOf(2, k300), rows).find("G94 G1 C90.0000 F3600.000\n"),
              std::string::npos);
    EXPECT_NE(Write(tcp, machine, PathOf(2, k300), rows).find("G94 G1 C90.0000 F3600.000\n"),
              std::string::npos);
}

TEST_F(GcodeWriter, TakesFeedsPerRevolutionWhereTheDialectHasAWordForThem)
{
    const host::Toolpath path = PathOf(4, {0.2, FeedPer::Revolution});
    const std::vector<MotionRow> rows{RapidRow(0, {0, 0, 30, 0, 0}), Row(1, {0, 0, 0, 0, 0}),
                                      Row(2, {0, 0, 0, 0, 90}), Row(3, {0, 0, 10, 0, 90})};
    EXPECT_EQ(Body(Write(perMinute, machine, path, rows)),
              "(FACE)\n"
              "T3 M6\n"
              "G0 X0.0000 Y0.0000 Z30.0000 A0.0000 C0.0000\n"
              "G95 G1 Z0.0000 F0.200\n"
              "G94 C90.0000 F3600.000\n"
              "G95 Z10.0000 F0.200\n");
    Dialect slow = perMinute;
    slow.feed.rotaryRate_deg = 0.2; // F says the same in both modes, and has to be said again
    EXPECT_NE(Write(slow, machine, path, rows).find("G94 C90.0000 F0.200\nG95 Z10.0000 F0.200\n"),
              std::string::npos);
    EXPECT_EQ(Fault(inverseTime, path, rows),
              "jobs/part.cl:11:1: the feed at this point is per revolution, for which dialect "
              "\"inverse-time\" has no word; give it per minute");
    EXPECT_EQ(Fault(perMinute, path, {rows[0], Row(1, {9, 0, 30, 0, 40})}),
              "jobs/part.cl:11:1: the feed on the way to this point is per revolution while rotary "
              "axes turn, which a control does not keep on the part; give it per minute");
}

TEST_F(GcodeWriter, RefusesAMotionWithPointsThatAreNotReached)
{
    MotionRow failed;
    failed.point = 1;
    failed.flags.hasFailed = true;
    EXPECT_EQ(Fault(inverseTime, PathOf(2, k300), {RapidRow(0, {0, 0, 30, 0, 0}), failed}),
              "jobs/part.cl:11:1: this point is not reached, and a program that leaves points out "
              "is not written; have it reached, or take it out of the toolpath");
}

TEST_F(GcodeWriter, RefusesARowWithoutAFeed)
{
    host::Toolpath path = PathOf(3, k300);
    path.points[1].feed.reset();
    const std::vector<MotionRow> rows{RapidRow(0, {0, 0, 30, 0, 0}), Row(1, {0, 0, 0, 0, 0})};
    EXPECT_EQ(Fault(tcp, path, rows),
              "jobs/part.cl:11:1: no feed holds at this point, which is not rapid; give one before "
              "it (FEDRAT in an APT file, a column f in a CSV file)");
    path.points[1].isRapid = true;
    EXPECT_EQ(Fault(tcp, path, {rows[0], RapidRow(1, {0, 0, 0, 0, 0})}), "no error");
}

TEST_F(GcodeWriter, RefusesAPathThatItCannotWriteBeforeItsFirstRow)
{
    const std::string none = "no error";
    host::Toolpath path = PathOf(3, k300);
    path.points[0].feed.reset(); // the way to it is rapid
    EXPECT_EQ(Fault(tcp, path, {}), none);
    path.points[2].feed.reset();
    EXPECT_EQ(Fault(tcp, path, {}).substr(0, 38), "jobs/part.cl:12:1: no feed holds at th");
    path = PathOf(3, {0.2, FeedPer::Revolution});
    EXPECT_EQ(Fault(tcp, path, {}), none);
    EXPECT_NE(Fault(inverseTime, path, {}), none);
    path = PathOf(3, k300);
    path.operations[0].toolNumber.reset();
    EXPECT_EQ(Fault(inverseTime, path, {}), none);
    EXPECT_NE(Fault(tcp, path, {}), none);
}

TEST_F(GcodeWriter, RefusesAFeedThatRoundsToNothing)
{
    // 30 mm at 0.01 mm/min: 1/3000, less than half a thousandth.
    EXPECT_EQ(Fault(inverseTime, PathOf(2, {0.01, FeedPer::Minute}),
                    {RapidRow(0, {0, 0, 30, 0, 0}), Row(1, {0, 0, 0, 0, 0})}),
              "jobs/part.cl:11:1: F on the way to this point would be 0 with 3 decimals; take a "
              "dialect with more of them for the feed");
}

TEST_F(GcodeWriter, RefusesALineWithTheToolsNumberWhereThereIsNone)
{
    host::Toolpath path = PathOf(1, k300);
    path.operations[0].toolNumber.reset();
    const std::vector<MotionRow> rows{RapidRow(0, {0, 0, 30, 0, 0})};
    EXPECT_EQ(Fault(tcp, path, rows),
              "jobs/part.cl:2:1: dialect \"tcp\" writes the tool's number, and none is given here; "
              "give it (LOADTL/1 in an APT file), or write the number in place of {tool} in a "
              "dialect of your own");
    // Axis positions hold with whatever tool there is.
    EXPECT_EQ(Body(Write(inverseTime, machine, path, rows)),
              "(FACE)\nG0 X0.0000 Y0.0000 Z30.0000 A0.0000 C0.0000\n");
}

// Read back ---------------------------------------------------------------------------------

struct Motion
{
    std::vector<MotionRow> rows;
    std::vector<double> minutes; //!< of each row but the first, by the rules of the dialect
};

/// A walk of small steps through the mill's whole range: linear axes, rotary axes or both at once.
Motion Walk(const LoadedMachine& machine, double feed, double rotaryRate_deg)
{
    test::Random random(20);
    std::vector<double> joints{0, 0, 0, -0.5, 0};
    Motion motion;
    motion.rows.push_back(test::RowAt(machine, 0, joints));
    for (std::size_t point = 1; point < 400; ++point) {
        const int kind = random.Below(3);
        double turn = 0.0;
        for (std::size_t i = 0; i < joints.size(); ++i) {
            const bool isRotary = i >= 3;
            if (kind == (isRotary ? 0 : 1)) {
                continue;
            }
            const double before = joints[i];
            joints[i] += isRotary ? random.Between(-0.1, 0.1) : random.Between(-2, 2);
            joints[3] = std::clamp(joints[3], ToRadians(-120), ToRadians(30));
            turn = isRotary ? std::max(turn, ToDegrees(std::fabs(joints[i] - before))) : turn;
        }
        motion.rows.push_back(test::RowAt(machine, point, joints));
        const double way =
            host::Length(motion.rows[point].asked.position - motion.rows[point - 1].asked.position);
        motion.minutes.push_back(std::max(way / feed, turn / rotaryRate_deg));
    }
    return motion;
}

constexpr double kHalfDigit = 0.5e-4 + 1e-9;

std::vector<test::GcodeBlock> BlocksOf(const Dialect& dialect, const LoadedMachine& machine,
                                       const Motion& motion, double feed)
{
    return test::ReadGcode(
        Write(dialect, machine, PathOf(motion.rows.size(), {feed, FeedPer::Minute}), motion.rows));
}

void ExpectJoints(const test::GcodeBlock& block, const MotionRow& row, double signOfC)
{
    EXPECT_NEAR(block.place.at("X"), row.joints[0], kHalfDigit);
    EXPECT_NEAR(block.place.at("Y"), row.joints[1], kHalfDigit);
    EXPECT_NEAR(block.place.at("Z"), row.joints[2], kHalfDigit);
    EXPECT_NEAR(block.place.at("A"), ToDegrees(row.joints[3]), kHalfDigit);
    EXPECT_NEAR(signOfC * block.place.at("C"), ToDegrees(row.joints[4]), kHalfDigit);
}

/// F is rounded to three decimals.
void ExpectDuration(const test::GcodeBlock& block, double minutes)
{
    EXPECT_NEAR(block.duration, minutes, minutes * 0.51e-3 / block.feed + 1e-12);
}

TEST_F(GcodeWriter, IsReadBackAsTheRowsInInverseTime)
{
    const Motion motion = Walk(machine, 700, 3600);
    const auto blocks = BlocksOf(inverseTime, machine, motion, 700);
    ASSERT_EQ(blocks.size(), motion.rows.size());
    double read = 0.0;
    double wanted = 0.0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ExpectJoints(blocks[i], motion.rows[i], 1.0);
        EXPECT_EQ(blocks[i].isRapid, i == 0);
        if (i > 0) {
            EXPECT_EQ(blocks[i].feedMode, 93);
            ExpectDuration(blocks[i], motion.minutes[i - 1]);
            read += blocks[i].duration;
            wanted += motion.minutes[i - 1];
        }
    }
    EXPECT_NEAR(read, wanted, 1e-5 * wanted);
}

TEST_F(GcodeWriter, IsReadBackAsTheRowsPerMinute)
{
    const Motion motion = Walk(machine, 700, 3600);
    const auto blocks = BlocksOf(perMinute, machine, motion, 700);
    ASSERT_EQ(blocks.size(), motion.rows.size());
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ExpectJoints(blocks[i], motion.rows[i], 1.0);
        if (i == 0) {
            continue;
        }
        EXPECT_EQ(blocks[i].feedMode, 94);
        if (motion.rows[i].joints[4] == motion.rows[i - 1].joints[4]) {
            EXPECT_EQ(blocks[i].feed, 700.0); // no rotary axis turns; the words are rounded instead
            EXPECT_NEAR(blocks[i].duration, motion.minutes[i - 1], 2e-4 / 700.0);
        } else {
            ExpectDuration(blocks[i], motion.minutes[i - 1]);
        }
    }
}

TEST_F(GcodeWriter, IsReadBackAsTheRowsUnderTcp)
{
    const Motion motion = Walk(machine, 700, 3600);
    const auto blocks = BlocksOf(tcp, machine, motion, 700);
    ASSERT_EQ(blocks.size(), motion.rows.size());
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const MotionRow& row = motion.rows[i];
        EXPECT_TRUE(blocks[i].isTcpOn);
        EXPECT_NEAR(blocks[i].place.at("X"), row.asked.position[0], kHalfDigit);
        EXPECT_NEAR(blocks[i].place.at("Y"), row.asked.position[1], kHalfDigit);
        EXPECT_NEAR(blocks[i].place.at("Z"), row.asked.position[2], kHalfDigit);
        EXPECT_NEAR(blocks[i].place.at("A"), ToDegrees(row.joints[3]), kHalfDigit);
        EXPECT_NEAR(blocks[i].place.at("C"), ToDegrees(row.joints[4]), kHalfDigit);
        EXPECT_EQ(blocks[i].feed, i == 0 ? 0.0 : 700.0);
    }
}

TEST_F(GcodeWriter, TurnsAWordAgainstItsAxisWhereTheMachineSaysSo)
{
    const LoadedMachine signedMill = Load(test::MillWith(41, "unlimited = true\nword_sign = -1"));
    const Motion motion = Walk(signedMill, 700, 3600);
    const auto blocks = BlocksOf(inverseTime, signedMill, motion, 700);
    ASSERT_EQ(blocks.size(), motion.rows.size());
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ExpectJoints(blocks[i], motion.rows[i], -1.0);
    }
}

TEST_F(GcodeWriter, SaysTheSameWithAndWithoutRepeatedWords)
{
    const Motion motion = Walk(machine, 700, 3600);
    for (const Dialect& modal : {inverseTime, perMinute, tcp}) {
        Dialect repeating = modal;
        repeating.isModal = false;
        const auto left = BlocksOf(modal, machine, motion, 700);
        const auto right = BlocksOf(repeating, machine, motion, 700);
        ASSERT_EQ(left.size(), right.size());
        for (std::size_t i = 0; i < left.size(); ++i) {
            EXPECT_EQ(left[i].place, right[i].place);
            EXPECT_EQ(left[i].duration, right[i].duration);
        }
    }
}

TEST_F(GcodeWriter, WritesLongWordsThatReadBack)
{
    const LoadedMachine robot = Load(test::MillWith(41, "unlimited = true\nword = \"joint5\""));
    Dialect dialect = inverseTime;
    dialect.takesLongWords = true;
    const auto blocks = test::ReadGcode(
        Write(dialect, robot, PathOf(1, k300), {test::RowAt(robot, 0, {1, 2, 3, 0, 0.1})}));
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_NEAR(blocks[0].place.at("joint5="), 5.729578, kHalfDigit);
}

} // namespace
