// What has to hold of the verification of any joint table.

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "mutated/Checks.h"
#include "mutated/PlainText.h"
#include "mutated/ReaderChecks.h"
#include "table/JointTableReader.h"
#include "toolpath/AptReader.h"
#include "verify/Verification.h"

namespace
{

using host::TableRow;

constexpr const char* kPath = "RAPID\n"
                              "GOTO/0,0,150,0,0,1\n"
                              "GOTO/0,0,100\n"
                              "GOTO/10,0,100\n"
                              "GOTO/10,20,100\n";

/// A row as it stands in the text.
struct PlainRow
{
    std::vector<std::string> cells;
    std::vector<std::string> columns;

    const std::string& Cell(const std::string& name) const
    {
        const auto found = std::find(columns.begin(), columns.end(), name);
        return cells.at(static_cast<std::size_t>(found - columns.begin()));
    }
    /// [mm] or [rad]
    double Joint(const std::string& axis) const
    {
        const auto has = [this](const std::string& name) {
            return std::find(columns.begin(), columns.end(), name) != columns.end();
        };
        if (has(axis + "_deg")) {
            return test::PlainNumber(Cell(axis + "_deg")) * std::acos(-1.0) / 180.0;
        }
        return test::PlainNumber(Cell(axis + (has(axis + "_rad") ? "_rad" : "_mm")));
    }
    bool Has(const std::string& flag) const
    {
        const std::vector<std::string> flags = test::SplitAt(Cell("flags"), '|');
        return std::find(flags.begin(), flags.end(), flag) != flags.end();
    }
};

std::vector<PlainRow> PlainTable(const std::string& text)
{
    std::vector<std::string> lines = test::PlainLines(text);
    if (lines.back().empty()) {
        lines.pop_back();
    }
    const std::vector<std::string> columns = test::SplitAt(lines.front(), ',');
    std::vector<PlainRow> rows;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        rows.push_back({test::SplitAt(lines[i], ','), columns});
    }
    return rows;
}

/// Whether the row puts the mill's tool at (x, y, z), upright, as a table that holds has it:
/// it stands at Rz(-C) Rx(-A) (X, Y, Z + 120) - (0, 0, 20), its direction is
/// Rz(-C) (0, sin A, cos A).
bool StandsAt(const PlainRow& row, const std::array<double, 3>& place)
{
    const double a = row.Joint("A");
    const double c = row.Joint("C");
    const double up = row.Joint("Z") + 120.0;
    const double across = std::cos(a) * row.Joint("Y") + std::sin(a) * up;
    const std::array<double, 3> tool{std::cos(c) * row.Joint("X") + std::sin(c) * across,
                                     std::cos(c) * across - std::sin(c) * row.Joint("X"),
                                     std::cos(a) * up - std::sin(a) * row.Joint("Y") - 20.0};
    const double off = std::hypot(tool[0] - place[0], tool[1] - place[1], tool[2] - place[2]);
    constexpr double kRounding = 1e-9;
    return off <= 0.01 + kRounding && std::fabs(a) <= 0.05 * std::acos(-1.0) / 180.0 + kRounding;
}

/// What has to be true of a table that holds, whatever else.
void CheckHeld(const std::vector<PlainRow>& rows)
{
    const std::vector<std::array<double, 3>> places{
        {0, 0, 150}, {0, 0, 100}, {10, 0, 100}, {10, 20, 100}};
    std::size_t next = 0;
    for (const PlainRow& row : rows) {
        EXPECT_FALSE(row.Has("failed"));
        EXPECT_LE(std::fabs(row.Joint("X")), 300.0 + 1e-6);
        EXPECT_LE(std::fabs(row.Joint("Y")), 300.0 + 1e-6);
        EXPECT_LE(std::fabs(row.Joint("Z")), 400.0 + 1e-6);
        if (!row.Has("inserted") && !row.Has("rewind")) {
            ASSERT_LT(next, places.size());
            EXPECT_EQ(test::PlainNumber(row.Cell("n")), static_cast<double>(next + 1));
            EXPECT_TRUE(StandsAt(row, places[next]));
            ++next;
        }
    }
    EXPECT_EQ(next, places.size());
}

std::vector<TableRow> Read(const host::LoadedMachine& machine, const std::string& text)
{
    std::istringstream in(text);
    host::JointTableReader reader(in, test::kMutatedName, machine.AxesOf(machine.streams.front()),
                                  machine.length);
    std::vector<TableRow> rows;
    for (TableRow row; reader.Next(row);) {
        rows.push_back(row);
    }
    return rows;
}

host::VerificationReport Verify(const host::LoadedMachine& machine,
                                const std::vector<TableRow>& rows)
{
    std::istringstream in(kPath);
    const host::Toolpath path = host::ReadApt(in, "part.cl", machine.length);
    std::size_t found = 0;
    const host::VerificationRequest request{machine,
                                            path.operations,
                                            {{&machine.streams.front(), 0.0}},
                                            host::DefaultTolerances(machine.length),
                                            4};
    host::ToolKinematics kinematics(machine, request.Axes());
    host::Verification verification(request, host::PathWindow(path), kinematics,
                                    [&found](const host::Finding& finding) {
                                        ++found;
                                        EXPECT_FALSE(finding.sentence.empty());
                                        EXPECT_EQ(finding.sentence.find("nan"), std::string::npos);
                                    });
    for (const TableRow& row : rows) {
        verification.Take(row);
    }
    verification.Finish();
    EXPECT_EQ(verification.Report().Holds(), found == 0);
    return verification.Report();
}

} // namespace

namespace test
{

Verified CheckVerification(const std::string& text)
{
    static const host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(MillText(), "mill.toml"));
    const auto rows =
        ReadMutated(text, [](const std::string& from) { return Read(machine, from); });
    if (!rows) {
        return Verified::Refused;
    }
    const std::vector<PlainRow> plain = PlainTable(text);
    EXPECT_EQ(rows->size(), plain.size());
    const host::VerificationReport report = Verify(machine, *rows);
    EXPECT_EQ(report.rows, rows->size());
    for (const host::Largest& largest : {report.pointPosition, report.pointDirection_deg,
                                         report.wayPosition, report.wayDirection_deg}) {
        EXPECT_TRUE(std::isfinite(largest.value));
    }
    if (!report.Holds()) {
        return Verified::Wrong;
    }
    CheckHeld(plain);
    return Verified::Held;
}

} // namespace test
