#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "table/JointTable.h"
#include "table/JointTableReader.h"
#include "text/Numbers.h"
#include "toolpath/AptReader.h"
#include "verify/Verification.h"

namespace
{

using host::Finding;
using host::FindingKind;
using host::ShortestText;

const std::string kHeader = "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n";

/// On the mill a tool that its axes put at (X, Y, Z) of the machine stands at
///   Rz(-C) Rx(-A) (X, Y, Z + 120) - (0, 0, 20)
/// of the part, with the direction Rz(-C) (0, sin A, cos A). With A and C at 0 that is
/// (X, Y, Z + 100), and upright.
class Verification : public testing::Test
{
  protected:
    struct Result
    {
        host::VerificationReport report;
        std::vector<Finding> findings;

        /// The kinds that were found, each once, in the order of the kinds.
        std::vector<FindingKind> Kinds() const
        {
            std::vector<FindingKind> kinds;
            for (std::size_t i = 0; i < report.findings.size(); ++i) {
                if (report.findings[i] > 0) {
                    kinds.push_back(static_cast<FindingKind>(i));
                }
            }
            return kinds;
        }
        const Finding& First(FindingKind kind) const
        {
            const auto found =
                std::find_if(findings.begin(), findings.end(),
                             [kind](const Finding& finding) { return finding.kind == kind; });
            return found == findings.end() ? none : *found;
        }

        Finding none;
    };

    Result Verify(const std::string& path, const std::string& rows) const
    {
        std::istringstream pathText(path);
        const host::Toolpath toolpath = host::ReadApt(pathText, "part.cl", machine.length);
        std::istringstream tableText(rows.rfind("n,", 0) == 0 ? rows : kHeader + rows);
        const host::VerificationRequest request{machine, toolpath.operations, Tools(toolpath),
                                                tolerances, samples};
        host::JointTableReader reader(tableText, "joints.csv", request.Axes(), machine.length);
        Result result;
        host::ToolKinematics kinematics(machine, request.Axes());
        host::Verification verification(
            request, host::PathWindow(toolpath), kinematics,
            [&](const Finding& finding) { result.findings.push_back(finding); });
        host::TableRow row;
        while (reader.Next(row)) {
            verification.Take(row);
        }
        verification.Finish();
        result.report = verification.Report();
        EXPECT_EQ(result.report.Holds(), result.findings.empty());
        return result;
    }

    std::vector<host::SeatedTool> Tools(const host::Toolpath& toolpath) const
    {
        std::vector<host::SeatedTool> tools;
        for (const host::Operation& operation : toolpath.operations) {
            const bool isDrill = operation.name == "DRILL";
            tools.push_back({isDrill ? &machine.streams.back() : &machine.streams.front(),
                             toolLength.value_or(operation.toolLength.value_or(0.0))});
        }
        return tools;
    }

    host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(test::MillText(), "mill.toml"));
    host::Tolerances tolerances = host::DefaultTolerances(host::LengthUnit::Millimetre);
    int samples = 15;
    std::optional<double> toolLength; // nothing: the path's, or 0
};

using Kinds = std::vector<FindingKind>;

// Four points of which the first is a rapid, all with the tool upright.
const std::string kPath = "RAPID\n"
                          "GOTO/0,0,150,0,0,1\n"
                          "GOTO/0,0,100\n"
                          "GOTO/10,0,100\n"
                          "GOTO/10,20,100\n";
const std::string kRow1 = "1,2,0,0,50,0,0,0,0,1,rapid\n";
const std::string kRow2 = "2,3,0,0,0,0,0,0,0,1,\n";
const std::string kRow3 = "3,4,10,0,0,0,0,0,0,1,\n";
const std::string kRow4 = "4,5,10,20,0,0,0,0,0,1,\n";

TEST_F(Verification, HoldsForATableWithoutFault)
{
    const Result result = Verify(kPath, kRow1 + kRow2 + kRow3 + kRow4);
    EXPECT_EQ(result.Kinds(), Kinds{});
    EXPECT_EQ(result.report.points, 4U);
    EXPECT_EQ(result.report.rows, 4U);
    EXPECT_EQ(result.report.inserted, 0U);
    EXPECT_EQ(result.report.rewound, 0U);
    EXPECT_EQ(result.report.rapids, 0U); // there is no way to the first point
    EXPECT_NEAR(result.report.pointPosition.value, 0.0, 1e-12);
    EXPECT_NEAR(result.report.wayPosition.value, 0.0, 1e-12);
    EXPECT_EQ(result.report.wayPosition.tableLine > 0, true);
}

// Points -------------------------------------------------------------------------------------

TEST_F(Verification, FindsADigitThatWasChanged)
{
    const Result result = Verify(kPath, kRow1 + kRow2 + "3,4,10.02,0,0,0,0,0,0,1,\n" + kRow4);
    // The way past the point ends 0.02 beyond it, and the next one begins there.
    EXPECT_EQ(result.Kinds(), (Kinds{FindingKind::Point, FindingKind::Way, FindingKind::Error}));
    const Finding& off = result.First(FindingKind::Point);
    EXPECT_EQ(off.tableLine, 4);
    EXPECT_EQ(off.pathLine, 4);
    EXPECT_EQ(off.sentence, "the tool is off point 3 by 0.02 mm and 0 deg");
    EXPECT_EQ(result.First(FindingKind::Error).sentence,
              "this row says that it is off by 0 mm and 0 deg, and its axis values leave 0.02 mm "
              "and 0 deg");
    EXPECT_NEAR(result.report.pointPosition.value, 0.02, 1e-12);
    EXPECT_EQ(result.report.pointPosition.tableLine, 4);
    EXPECT_EQ(result.report.pointPosition.pathLine, 4);
}

TEST_F(Verification, TakesPointsWithinTheTolerances)
{
    tolerances = {0.03, 0.5};
    EXPECT_EQ(Verify(kPath, kRow1 + kRow2 + "3,4,10.02,0,0,0,0,0.02,0,1,\n" + kRow4).Kinds(),
              Kinds{});
    tolerances = {0.0199, 0.5};
    EXPECT_EQ(Verify(kPath, kRow1 + kRow2 + "3,4,10.02,0,0,0,0,0.02,0,1,\n" + kRow4).Kinds(),
              Kinds{FindingKind::Point});
}

TEST_F(Verification, FindsADirectionThatIsOff)
{
    // Leaning by 0.1 degrees about the A axis moves the tool, 120 above it, unless Y and Z make up
    // for that: (0, 120 sin 0.1, 120 cos 0.1 - 120).
    const double angle = host::ToRadians(0.1);
    const std::string row = "2,3,0," + ShortestText(-120.0 * std::sin(angle)) + "," +
                            ShortestText(120.0 * std::cos(angle) - 120.0) + ",0.1,0,0,0.1,1,\n";
    const Result result = Verify("RAPID\nGOTO/0,0,150,0,0,1\nGOTO/0,0,100\n", kRow1 + row);
    EXPECT_EQ(result.report.CountOf(FindingKind::Point), 1U);
    EXPECT_NEAR(result.report.pointPosition.value, 0.0, 1e-9);
    EXPECT_NEAR(result.report.pointDirection_deg.value, 0.1, 1e-9);
    EXPECT_EQ(result.report.pointDirection_deg.tableLine, 3);
    tolerances.angle_deg = 0.11;
    EXPECT_EQ(Verify("RAPID\nGOTO/0,0,150,0,0,1\nRAPID\nGOTO/0,0,100\n",
                     kRow1 + "2,4" + row.substr(3, row.size() - 4) + "rapid\n")
                  .Kinds(),
              Kinds{});
}

TEST_F(Verification, FindsAxesOutsideTheirLimits)
{
    const std::string path = "RAPID\nGOTO/0,0,150,0,0,1\nRAPID\nGOTO/300,0,150\n";
    EXPECT_EQ(Verify(path, kRow1 + "2,4,300,0,50,0,0,0,0,,rapid|limit\n").Kinds(), Kinds{});
    const std::string beyond = "RAPID\nGOTO/0,0,150,0,0,1\nRAPID\nGOTO/300.25,0,150\n";
    const Result result = Verify(beyond, kRow1 + "2,4,300.25,0,50,0,0,0,0,,rapid\n");
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Limit});
    EXPECT_EQ(result.First(FindingKind::Limit).tableLine, 3);
    EXPECT_EQ(result.First(FindingKind::Limit).sentence,
              "X 300.25 mm is outside its limits -300 to 300");
}

TEST_F(Verification, TakesALimitThatLostADigitInDegrees)
{
    // A just beyond its upper limit, by less than its text in degrees may be off. With X = Y = 0
    // and Z = -20 the tool is at (0, 100 sin A, 100 cos A - 20) of the part.
    const double high = machine.axes[3].joint->GetHiBound();
    const std::string shown = ShortestText(host::ToDegrees(std::nextafter(high, 1.0)));
    const double sine = std::sin(high);
    const double cosine = std::cos(high);
    const std::string path = "RAPID\nGOTO/0," + ShortestText(100.0 * sine) + "," +
                             ShortestText(100.0 * cosine - 20.0) + ",0," + ShortestText(sine) +
                             "," + ShortestText(cosine) + "\n";
    EXPECT_EQ(Verify(path, "1,2,0,0,-20," + shown + ",0,0,0,,rapid|limit\n").Kinds(), Kinds{});
    EXPECT_EQ(Verify(path, "1,2,0,0,-20,30.0001,0,0,0,,rapid|limit\n").Kinds(),
              (Kinds{FindingKind::Limit, FindingKind::Error}));
}

TEST_F(Verification, FindsFailedPoints)
{
    const Result result = Verify(kPath, kRow1 + kRow2 + "3,4,,,,,,,,,failed\n" + kRow4);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Failed});
    EXPECT_EQ(result.First(FindingKind::Failed).tableLine, 4);
    EXPECT_EQ(result.First(FindingKind::Failed).pathLine, 4);
    EXPECT_EQ(result.First(FindingKind::Failed).sentence, "point 3 has failed");
    EXPECT_EQ(result.report.interrupted, 1U); // the way to point 4
}

// Order --------------------------------------------------------------------------------------

TEST_F(Verification, FindsMissingRows)
{
    const Result inside = Verify(kPath, kRow1 + kRow4);
    EXPECT_EQ(inside.Kinds(), Kinds{FindingKind::Missing});
    ASSERT_EQ(inside.findings.size(), 2U);
    EXPECT_EQ(inside.findings[0].tableLine, 3);
    EXPECT_EQ(inside.findings[0].sentence, "point 2 has no row before this one of point 4");
    EXPECT_EQ(inside.findings[1].sentence, "point 3 has no row before this one of point 4");
    EXPECT_EQ(inside.report.interrupted, 1U);

    const Result atTheEnd = Verify(kPath, kRow1 + kRow2 + kRow3);
    EXPECT_EQ(atTheEnd.Kinds(), Kinds{FindingKind::Missing});
    EXPECT_EQ(atTheEnd.findings[0].tableLine, 0);
    EXPECT_EQ(atTheEnd.findings[0].pathLine, 5);
    EXPECT_EQ(atTheEnd.findings[0].sentence, "the table ends without a row of point 4");

    EXPECT_EQ(Verify(kPath, "").report.CountOf(FindingKind::Missing), 4U);
}

TEST_F(Verification, FindsRowsThatChangedPlaces)
{
    const Result result = Verify(kPath, kRow1 + kRow3 + kRow2 + kRow4);
    EXPECT_EQ(result.Kinds(), (Kinds{FindingKind::Missing, FindingKind::Extra}));
    EXPECT_EQ(result.First(FindingKind::Missing).sentence,
              "point 2 has no row before this one of point 3");
    EXPECT_EQ(result.First(FindingKind::Extra).tableLine, 4);
    EXPECT_EQ(result.First(FindingKind::Extra).sentence,
              "this row is of point 2, and point 3 has had its row before it");
}

TEST_F(Verification, FindsMoreRowsThanPoints)
{
    const Result twice = Verify(kPath, kRow1 + kRow2 + kRow3 + kRow3 + kRow4);
    EXPECT_EQ(twice.Kinds(), Kinds{FindingKind::Extra});
    EXPECT_EQ(twice.First(FindingKind::Extra).tableLine, 5);
    const Result beyond = Verify(kPath, kRow1 + kRow2 + kRow3 + kRow4 + "5,6,10,20,0,0,0,0,0,1,\n");
    EXPECT_EQ(beyond.Kinds(), Kinds{FindingKind::Extra});
    EXPECT_EQ(beyond.First(FindingKind::Extra).sentence,
              "this row is of point 5, and the toolpath ends with point 4");
}

TEST_F(Verification, FindsAnInsertedRowBeforeTheFirstPoint)
{
    const Result result =
        Verify(kPath, "1,2,0,0,80,0,0,0,0,1,rapid|inserted\n" + kRow1 + kRow2 + kRow3 + kRow4);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Extra});
    EXPECT_EQ(result.First(FindingKind::Extra).sentence,
              "there is no way to the first point to insert a row in");
}

TEST_F(Verification, FindsLinesThatDoNotAgree)
{
    const Result result = Verify(kPath, kRow1 + kRow2 + "3,5,10,0,0,0,0,0,0,1,\n" + kRow4);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Line});
    EXPECT_EQ(result.First(FindingKind::Line).sentence,
              "the toolpath has point 3 on line 4, and this row says 5");
}

TEST_F(Verification, FindsRapidsThatDoNotAgree)
{
    const Result result =
        Verify(kPath, "1,2,0,0,50,0,0,0,0,1,\n" + kRow2 + "3,4,10,0,0,0,0,0,0,1,rapid\n" + kRow4);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Rapid});
    ASSERT_EQ(result.findings.size(), 2U);
    EXPECT_EQ(result.findings[0].sentence,
              "the toolpath goes to point 1 as a rapid, and this row is not flagged as one");
    EXPECT_EQ(result.findings[1].sentence,
              "the toolpath goes to point 3 at a feed, and this row is flagged as a rapid");
}

// The way between points ---------------------------------------------------------------------

// Both points are 10 from the C axis, a quarter turn apart. The straight way between them comes as
// near to the axis as 10 / sqrt 2.
const std::string kChord = "RAPID\nGOTO/10,0,100,0,0,1\nGOTO/0,-10,100\n";
const std::string kChordStart = "1,2,10,0,0,0,0,0,0,1,rapid\n";
const std::string kChordEnd = "2,3,10,0,0,0,90,0,0,1,\n";

/// Rows on that straight way, `step` degrees of C apart. At C the tool has to be 10 / sqrt 2 /
/// cos(45 degrees - C) from the axis.
std::string ChordRows(int step)
{
    std::string rows;
    for (int c = step; c < 90; c += step) {
        const double x = 10.0 / std::sqrt(2.0) / std::cos(host::ToRadians(45.0 - c));
        rows += "2,3," + ShortestText(x) + ",0,0,0," + std::to_string(c) + ",0,0,1,inserted\n";
    }
    return rows;
}

TEST_F(Verification, FindsAnArcWhereAStraightLineIsAskedFor)
{
    const Result result = Verify(kChord, kChordStart + kChordEnd);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Way});
    // The arc's height over its chord: 10 (1 - cos 45).
    EXPECT_NEAR(result.report.wayPosition.value, 2.9289321881345, 1e-10);
    EXPECT_EQ(result.report.wayPosition.tableLine, 3);
    EXPECT_EQ(result.First(FindingKind::Way).tableLine, 3);
    EXPECT_EQ(result.First(FindingKind::Way).sentence,
              "between the row before and this one the tool strays by 2.92893 mm and 0 deg from "
              "the straight way to point 2");
}

TEST_F(Verification, HoldsWhereEnoughRowsAreInserted)
{
    // Between two rows X is evenly spread, and strays from h / cos(C - 45) by at most the square of
    // the step times the second derivative over 8: near the ends 3 sqrt 2 h = 30 per rad^2, which
    // makes 30 / 8 * (1 degree)^2 = 0.00114 across the axis, and 1 / sqrt 2 of it across the way.
    const Result result = Verify(kChord, kChordStart + ChordRows(1) + kChordEnd);
    EXPECT_EQ(result.Kinds(), Kinds{});
    EXPECT_EQ(result.report.inserted, 89U);
    EXPECT_EQ(result.report.rows, 91U);
    EXPECT_NEAR(result.report.wayPosition.value, 0.00114 / std::sqrt(2.0), 0.0001);
}

TEST_F(Verification, FindsRowsThatAreTooFarApart)
{
    // As above with steps of 5 degrees: 25 times as much, 0.02 across the way.
    const Result result = Verify(kChord, kChordStart + ChordRows(5) + kChordEnd);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Way});
    EXPECT_NEAR(result.report.wayPosition.value, 0.02, 0.003);
    tolerances.linear = 0.03;
    EXPECT_EQ(Verify(kChord, kChordStart + ChordRows(5) + kChordEnd).Kinds(), Kinds{});
}

TEST_F(Verification, LooksAtRowsAloneWithoutSamples)
{
    samples = 0;
    EXPECT_EQ(Verify(kChord, kChordStart + kChordEnd).Kinds(), Kinds{});
    const std::string row = "2,3,7.1,0,0,0,45,0,0,1,inserted\n";
    EXPECT_EQ(Verify(kChord, kChordStart + row + kChordEnd).Kinds(),
              (Kinds{FindingKind::Way, FindingKind::Error}));
}

TEST_F(Verification, FindsAnInsertedRowThatIsOffTheWay)
{
    const std::string path = "RAPID\nGOTO/0,0,100,0,0,1\nGOTO/20,0,100\n";
    const std::string start = "1,2,0,0,0,0,0,0,0,1,rapid\n";
    const std::string end = "2,3,20,0,0,0,0,0,0,1,\n";
    EXPECT_EQ(Verify(path, start + "2,3,5,0.009,0,0,0,0.009,0,1,inserted\n" + end).Kinds(),
              Kinds{});
    const Result result = Verify(path, start + "2,3,5,0.011,0,0,0,0.011,0,1,inserted\n" + end);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Way});
    EXPECT_NEAR(result.report.wayPosition.value, 0.011, 1e-12);
    EXPECT_EQ(result.report.wayPosition.tableLine, 3);
}

TEST_F(Verification, DoesNotHoldRapidsToTheLine)
{
    const Result result = Verify("RAPID\nGOTO/10,0,100,0,0,1\nRAPID\nGOTO/0,-10,100\n",
                                 kChordStart + "2,4,30,0,0,0,10,0,0,1,rapid|inserted\n" +
                                     "2,4,10,0,0,0,90,0,0,1,rapid\n");
    EXPECT_EQ(result.Kinds(), Kinds{});
    EXPECT_EQ(result.report.rapids, 1U);
    EXPECT_EQ(result.report.wayPosition.tableLine, 0);
}

TEST_F(Verification, FindsAToolThatGoesBack)
{
    const std::string path = "RAPID\nGOTO/0,0,100,0,0,1\nGOTO/20,0,100\n";
    const std::string start = "1,2,0,0,0,0,0,0,0,1,rapid\n";
    const std::string end = "2,3,20,0,0,0,0,0,0,1,\n";
    const std::string five = "2,3,5,0,0,0,0,0,0,1,inserted\n";
    const std::string six = "2,3,6,0,0,0,0,0,0,1,inserted\n";
    EXPECT_EQ(Verify(path, start + five + six + end).Kinds(), Kinds{});
    const Result result = Verify(path, start + six + five + end);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Back});
    EXPECT_EQ(result.First(FindingKind::Back).tableLine, 4);
    EXPECT_EQ(result.First(FindingKind::Back).sentence,
              "between the row before and this one the tool goes back on its way to point 2");
}

TEST_F(Verification, FindsATurnThatTheToolDoesNotFeel)
{
    // On the C axis the tool does not move while the part turns under it.
    const std::string path = "RAPID\nGOTO/0,0,150,0,0,1\nGOTO/0,0,100\n";
    EXPECT_EQ(Verify(path, kRow1 + "2,3,0,0,0,0,180,0,0,1,\n").Kinds(), Kinds{});
    const Result result = Verify(path, kRow1 + "2,3,0,0,0,0,-360,0,0,1,\n");
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Turn});
    EXPECT_EQ(result.First(FindingKind::Turn).sentence,
              "C turns by 360 deg between the row before and this one");
}

TEST_F(Verification, FindsAFlipWithoutRows)
{
    // A at -30 with C at 0, and A at 30 with C at 180, give the same direction. A point at y of the
    // machine and 120 + Z above the A axis is seen at y cos 30 - (120 + Z) sin 30 along the part's
    // y, and at y sin 30 + (120 + Z) cos 30 - 20 along z; the other way with y of opposite sign.
    const std::string path = "RAPID\nGOTO/0,0,80,0,-0.5,0.866025403784\nGOTO/1,0,80\n";
    const double y = 100.0 * 0.5;
    const double z = 100.0 * std::sqrt(0.75) - 120.0;
    const auto row = [&](const std::string& begin, double sign, double x) {
        return begin + ShortestText(sign * x) + "," + ShortestText(sign * y) + "," +
               ShortestText(z) + "," + ShortestText(-sign * 30.0) + "," +
               (sign > 0.0 ? "0" : "180");
    };
    const std::string start = row("1,2,", 1.0, 0.0) + ",0,0,1,rapid\n";
    EXPECT_EQ(Verify(path, start + row("2,3,", 1.0, 1.0) + ",0,0,1,\n").Kinds(), Kinds{});
    const Result result = Verify(path, start + row("2,3,", -1.0, 1.0) + ",0,0,2,flip\n");
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Way});
    // Half way A and C are at 0 and 90: the tool is upright, 30 degrees off.
    EXPECT_GE(result.report.wayDirection_deg.value, 30.0 - 1e-9);
    EXPECT_EQ(result.report.wayDirection_deg.tableLine, 3);
}

// What rows say of themselves ----------------------------------------------------------------

TEST_F(Verification, FindsErrorsThatAreMadeUp)
{
    // A hundredth of the tolerances is 0.0001 mm and 0.0005 degrees.
    const auto kindsWith = [this](const std::string& errors) {
        return Verify(kPath, kRow1 + kRow2 + "3,4,10.005,0,0,0,0," + errors + ",1,\n" + kRow4)
            .Kinds();
    };
    EXPECT_EQ(kindsWith("0.005,0"), Kinds{});
    EXPECT_EQ(kindsWith("0.00505,0.0004"), Kinds{});
    EXPECT_EQ(kindsWith("0,0"), Kinds{FindingKind::Error});
    EXPECT_EQ(kindsWith("0.0052,0"), Kinds{FindingKind::Error});
    EXPECT_EQ(kindsWith("0.005,0.0006"), Kinds{FindingKind::Error});
}

TEST_F(Verification, FindsErrorsOfInsertedRowsThatAreTooSmall)
{
    const std::string path = "RAPID\nGOTO/0,0,100,0,0,1\nGOTO/20,0,100\n";
    const auto verify = [&](const std::string& error) {
        return Verify(path, "1,2,0,0,0,0,0,0,0,1,rapid\n2,3,5,0.009,0,0,0," + error +
                                ",0,1,inserted\n2,3,20,0,0,0,0,0,0,1,\n");
    };
    EXPECT_EQ(verify("0.009").Kinds(), Kinds{});
    EXPECT_EQ(verify("0.02").Kinds(), Kinds{}); // off a place that is farther away
    const Result result = verify("0.001");
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Error});
    EXPECT_EQ(result.First(FindingKind::Error).sentence,
              "this row says that it is off by 0.001 mm and 0 deg, and its axis values leave 0.009 "
              "mm and 0 deg");
}

// Rewinds ------------------------------------------------------------------------------------

/// A is at -30, so that the tool leans on the part, and Z pulls it back along itself. The points
/// are those of FindsAFlipWithoutRows.
class VerificationOfRewinds : public Verification
{
  protected:
    static std::string Row(const std::string& begin, double x, double out, double c,
                           const std::string& flags)
    {
        return begin + ShortestText(x) + ",50," +
               ShortestText(100.0 * std::sqrt(0.75) - 120.0 + out) + ",-30," + ShortestText(c) +
               ",0,0,1," + flags + "\n";
    }

    Result VerifyWith(const std::string& rewind, double cBehind) const
    {
        return Verify("RAPID\nGOTO/0,0,80,0,-0.5,0.866025403784\nGOTO/1,0,80\nGOTO/2,0,80\n",
                      Row("1,2,", 0, 0, 0, "rapid") + Row("2,3,", 1, 0, 0, "") + rewind +
                          Row("3,4,", 2, 0, cBehind, ""));
    }
};

TEST_F(VerificationOfRewinds, HoldForATurnOutsideThePart)
{
    for (const std::string number : {"2,3,", "3,4,"}) {
        const Result result =
            VerifyWith(Row(number, 1, 50, 0, "rewind") + Row(number, 1, 50, 360, "rewind") +
                           Row(number, 1, 0, 360, "rewind"),
                       360);
        EXPECT_EQ(result.Kinds(), Kinds{});
        EXPECT_EQ(result.report.rewound, 3U);
        EXPECT_EQ(result.report.rows, 6U);
    }
}

TEST_F(VerificationOfRewinds, HoldInTheMiddleOfAWay)
{
    const Result result =
        VerifyWith(Row("3,4,", 1.5, 0, 0, "inserted") + Row("3,4,", 1.5, 50, 0, "rewind") +
                       Row("3,4,", 1.5, 50, -720, "rewind") + Row("3,4,", 1.5, 0, -720, "rewind"),
                   -720);
    EXPECT_EQ(result.Kinds(), Kinds{});
}

TEST_F(VerificationOfRewinds, AreFoundWhereTheToolIsNotPulledBack)
{
    const Result result = VerifyWith(Row("2,3,", 1, 0, 360, "rewind"), 360);
    // A full turn of the part about C takes the tool from the point and back to it.
    EXPECT_EQ(result.Kinds(), (Kinds{FindingKind::Turn, FindingKind::Rewind}));
    EXPECT_EQ(result.First(FindingKind::Turn).tableLine, 4);
    EXPECT_EQ(result.First(FindingKind::Rewind).tableLine, 4);
}

TEST_F(VerificationOfRewinds, AreFoundWhereTheToolGoesIntoThePart)
{
    const Result result =
        VerifyWith(Row("2,3,", 1, -20, 0, "rewind") + Row("2,3,", 1, 0, 0, "rewind"), 0);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Rewind});
    EXPECT_EQ(result.First(FindingKind::Rewind).sentence,
              "between the row before and this one the tool strays by 20 mm and 0 deg from the "
              "line along which it is pulled back");
}

TEST_F(VerificationOfRewinds, AreFoundWhereTheToolLeavesItsLine)
{
    const Result aside =
        VerifyWith(Row("2,3,", 1.5, 50, 0, "rewind") + Row("2,3,", 1, 0, 0, "rewind"), 0);
    EXPECT_EQ(aside.Kinds(), (Kinds{FindingKind::Rewind, FindingKind::Error}));
    EXPECT_EQ(aside.First(FindingKind::Rewind).sentence,
              "between the row before and this one the tool strays by 0.5 mm and 0 deg from the "
              "line along which it is pulled back");
    // A turn of C on the way out, which the place that is reached does not show.
    const Result turning =
        VerifyWith(Row("2,3,", 1, 50, 360, "rewind") + Row("2,3,", 1, 0, 360, "rewind"), 360);
    EXPECT_EQ(turning.Kinds(), (Kinds{FindingKind::Turn, FindingKind::Rewind}));
}

TEST_F(VerificationOfRewinds, AreFoundWhereTheToolDoesNotComeBack)
{
    const Result result =
        VerifyWith(Row("2,3,", 1, 50, 0, "rewind") + Row("2,3,", 1, 50, 360, "rewind"), 360);
    EXPECT_EQ(result.report.CountOf(FindingKind::Rewind), 1U);
    EXPECT_EQ(result.First(FindingKind::Rewind).tableLine, 5);
    EXPECT_EQ(result.First(FindingKind::Rewind).sentence,
              "the rewind ends 50 mm and 0 deg away from where the tool was pulled back");

    // At the end of the table too.
    const Result atTheEnd = Verify("RAPID\nGOTO/0,0,80,0,-0.5,0.866025403784\n",
                                   Row("1,2,", 0, 0, 0, "rapid") + Row("1,2,", 0, 50, 0, "rewind"));
    EXPECT_EQ(atTheEnd.Kinds(), Kinds{FindingKind::Rewind});
}

TEST_F(VerificationOfRewinds, AreFoundWhereNothingIsKnownOfTheirBeginning)
{
    const Result result = Verify("RAPID\nGOTO/0,0,80,0,-0.5,0.866025403784\n",
                                 Row("1,2,", 0, 50, 0, "rewind") + Row("1,2,", 0, 0, 0, "rapid"));
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Rewind});
    EXPECT_EQ(result.First(FindingKind::Rewind).sentence,
              "no row before this one says where the tool is pulled back from");
}

TEST_F(VerificationOfRewinds, AreFoundAwayFromTheirPoint)
{
    const Result result = VerifyWith(Row("1,2,", 1, 50, 0, "rewind"), 0);
    EXPECT_EQ(result.Kinds(), Kinds{FindingKind::Extra});
    EXPECT_EQ(result.First(FindingKind::Extra).sentence,
              "this row is of point 1, and point 2 has had its row before it");
}

// Tools --------------------------------------------------------------------------------------

// The tool's end is so much lower as the tool is long.
const std::string kToolPath = "TOOL PATH/ONE,A\n"
                              "TLDATA/MILL,10,0,50,0,0\n"
                              "RAPID\n"
                              "GOTO/0,0,100,0,0,1\n"
                              "GOTO/10,0,100\n"
                              "TOOL PATH/TWO,B\n"
                              "TLDATA/MILL,10,0,80,0,0\n"
                              "GOTO/20,0,100\n"
                              "GOTO/30,0,100\n";

TEST_F(Verification, SeatsTheToolOfEachOperation)
{
    const std::string rows = "1,4,0,0,50,0,0,0,0,1,rapid\n2,5,10,0,50,0,0,0,0,1,\n"
                             "3,8,20,0,80,0,0,0,0,1,\n4,9,30,0,80,0,0,0,0,1,\n";
    const Result result = Verify(kToolPath, rows);
    EXPECT_EQ(result.Kinds(), Kinds{});
    EXPECT_EQ(result.report.toolChanges, 1U);

    toolLength = 50.0;
    const Result same = Verify(kToolPath, rows);
    EXPECT_EQ(same.report.CountOf(FindingKind::Point), 2U);
    EXPECT_EQ(same.First(FindingKind::Point).sentence,
              "the tool is off point 3 by 30 mm and 0 deg");
    EXPECT_EQ(same.report.toolChanges, 0U);
}

TEST_F(Verification, HoldsNoWayAfterAChangeToAToolAsLong)
{
    const auto changesWith = [this](const std::string& number) {
        const std::string path = "LOADTL/1\nTLDATA/MILL,10,0,50,0,0\nRAPID\nGOTO/0,0,100,0,0,1\n"
                                 "LOADTL/" +
                                 number + "\nTLDATA/MILL,10,0,50,0,0\nGOTO/10,0,100\n";
        const Result result = Verify(path, "1,4,0,0,50,0,0,0,0,1,rapid\n2,7,10,0,50,0,0,0,0,1,\n");
        EXPECT_EQ(result.Kinds(), Kinds{}) << number;
        return result.report.toolChanges;
    };
    EXPECT_EQ(changesWith("1"), 0U);
    EXPECT_EQ(changesWith("2"), 1U);
}

TEST_F(Verification, SeatsTheToolThatIsGiven)
{
    toolLength = 12.5;
    const Result result = Verify("RAPID\nGOTO/0,0,100,0,0,1\n", "1,2,0,0,12.5,0,0,0,0,1,rapid\n");
    EXPECT_EQ(result.Kinds(), Kinds{});
}

/// Beside the spindle is a drill, on a Z of its own, 50 along x.
std::string MillWithDrill()
{
    return test::MillText() + R"(
[[axis]]
name      = "W"
parent    = "Y"
type      = "linear"
direction = [0, 0, 1]
limits    = [-400, 400]

[[mount]]
name   = "drill"
kind   = "tool"
parent = "W"
origin = [50, 0, 0]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]

[[stream]]
id   = 2
tool = "drill"
part = "table"
)";
}

TEST_F(Verification, TakesEachOperationOnItsStream)
{
    machine = host::AssembleMachine(host::ReadMachine(MillWithDrill(), "mill.toml"));
    const std::string path = "TOOL PATH/FACE,A\nRAPID\nGOTO/0,0,150,0,0,1\nGOTO/0,0,100\n"
                             "TOOL PATH/DRILL,B\nGOTO/70,0,130\nGOTO/70,0,120\n";
    const std::string header =
        "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,W_mm,pos_err,dir_err_deg,branch,flags\n";
    const Result result = Verify(path, header + "1,3,0,0,50,0,0,0,0,0,,rapid\n"
                                                "2,4,0,0,0,0,0,0,0,0,,\n"
                                                "3,6,20,0,0,0,0,30,0,0,,\n"
                                                "4,7,20,0,0,0,0,20,0,0,,\n");
    EXPECT_EQ(result.Kinds(), Kinds{});
    EXPECT_EQ(result.report.toolChanges, 1U);
    // Z in the place of W.
    const Result wrong = Verify(path, header + "1,3,0,0,50,0,0,0,0,0,,rapid\n"
                                               "2,4,0,0,0,0,0,0,0,0,,\n"
                                               "3,6,20,0,30,0,0,0,0,0,,\n"
                                               "4,7,20,0,20,0,0,0,0,0,,\n");
    EXPECT_EQ(wrong.First(FindingKind::Point).sentence,
              "the tool is off point 3 by 30 mm and 0 deg");
}

} // namespace
