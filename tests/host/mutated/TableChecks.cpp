// What has to hold of any joint table and of any dialect.

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "mutated/Checks.h"
#include "mutated/PlainText.h"
#include "mutated/PlainToml.h"
#include "mutated/ReaderChecks.h"
#include "post/Dialect.h"
#include "table/JointTableReader.h"

namespace
{

using host::Dialect;
using host::TableRow;
using test::PlainTable;

void CompareRow(const TableRow& row, const std::vector<std::string>& header,
                const std::vector<std::string>& cells)
{
    static const std::string kAxes = "XYZAC"; // as the machine orders them
    ASSERT_EQ(cells.size(), header.size());
    EXPECT_EQ(static_cast<double>(row.motion.point + 1), test::PlainNumber(cells[0]));
    EXPECT_EQ(row.pathLine, test::PlainNumber(cells[1]));
    EXPECT_EQ(row.motion.flags.hasFailed, cells.back().find("failed") != std::string::npos);
    EXPECT_EQ(row.motion.flags.isRapid, cells.back().find("rapid") != std::string::npos);
    if (row.motion.flags.hasFailed) {
        EXPECT_TRUE(row.motion.joints.empty());
        return;
    }
    ASSERT_EQ(row.motion.joints.size(), kAxes.size());
    for (std::size_t i = 2; i + 4 < cells.size(); ++i) {
        const double unit = header[i].substr(1) == "_deg" ? host::kPi / 180.0 : 1.0;
        const double value = unit * test::PlainNumber(cells[i]);
        EXPECT_NEAR(row.motion.joints.at(kAxes.find(header[i][0])), value,
                    1e-12 * std::fabs(value));
    }
    EXPECT_EQ(row.motion.error.position, test::PlainNumber(cells[cells.size() - 4]));
    EXPECT_EQ(row.motion.error.direction_deg, test::PlainNumber(cells[cells.size() - 3]));
    EXPECT_EQ(row.motion.branch, test::PlainNumber(cells[cells.size() - 2]));
}

void CompareTable(const std::vector<TableRow>& rows, const std::string& text)
{
    std::vector<std::string> lines = test::PlainLines(text);
    if (lines.back().empty()) {
        lines.pop_back(); // behind the last line end
    }
    ASSERT_EQ(rows.size() + 1, lines.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].tableLine, static_cast<int>(i) + 2);
        CompareRow(rows[i], test::SplitAt(lines[0], ','), test::SplitAt(lines[i + 1], ','));
    }
}

// Dialects -----------------------------------------------------------------------------------

bool IsLine(const std::string& line)
{
    return std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// What must hold of every dialect that is accepted.
void CheckDialect(const Dialect& dialect)
{
    for (const int decimals : {dialect.decimals.mm, dialect.decimals.inch, dialect.decimals.degree,
                               dialect.decimals.feed}) {
        EXPECT_GE(decimals, 0);
        EXPECT_LE(decimals, 9);
    }
    for (const std::string& word : {dialect.name, dialect.mm, dialect.inch, dialect.rapid,
                                    dialect.linear, dialect.feed.word}) {
        EXPECT_TRUE(!word.empty() && IsLine(word));
    }
    EXPECT_TRUE(std::isfinite(dialect.feed.largest) && dialect.feed.largest > 0.0);
    EXPECT_TRUE(std::isfinite(dialect.feed.rotaryRate_deg) && dialect.feed.rotaryRate_deg > 0.0);
    for (const auto* lines : {&dialect.header, &dialect.footer, &dialect.toolChange}) {
        for (const std::string& line : *lines) {
            EXPECT_TRUE(IsLine(line));
            const std::string filled =
                host::Filled(line, [](std::string_view) { return std::string("x"); });
            EXPECT_EQ(filled.find_first_of("{}"), std::string::npos);
        }
    }
    if (dialect.lineNumbers) {
        EXPECT_GE(dialect.lineNumbers->first, 0);
        EXPECT_GE(dialect.lineNumbers->step, 1);
        EXPECT_GE(dialect.lineNumbers->last, dialect.lineNumbers->first);
    }
}

void CompareDialect(const Dialect& dialect, const std::vector<PlainTable>& tables)
{
    const auto table = [&tables](const std::string& name) {
        return test::Named(tables, name).at(0);
    };
    EXPECT_EQ(dialect.name, table("").Text("name"));
    const PlainTable decimals = table("decimals");
    EXPECT_EQ(dialect.decimals.mm, decimals.Number("mm"));
    EXPECT_EQ(dialect.decimals.inch, decimals.Number("inch"));
    EXPECT_EQ(dialect.decimals.degree, decimals.Number("degree"));
    EXPECT_EQ(dialect.decimals.feed, decimals.Number("feed"));
    const PlainTable words = table("words");
    EXPECT_EQ(dialect.mm, words.Text("mm"));
    EXPECT_EQ(dialect.inch, words.Text("inch"));
    EXPECT_EQ(dialect.rapid, words.Text("rapid"));
    EXPECT_EQ(dialect.linear, words.Text("linear"));
    const PlainTable feed = table("feed");
    EXPECT_EQ(dialect.feed.mode == host::FeedMode::InverseTime,
              feed.Text("mode") == "inverse-time");
    EXPECT_EQ(dialect.feed.word, feed.Text("word"));
    EXPECT_EQ(dialect.feed.perRevolution.value_or(""),
              feed.Has("per_revolution") ? feed.Text("per_revolution") : "");
    EXPECT_EQ(dialect.feed.largest, feed.Number("largest"));
    EXPECT_EQ(dialect.feed.rotaryRate_deg, feed.Number("rotary_rate"));
    const PlainTable lines = table("lines");
    EXPECT_EQ(dialect.header, lines.Texts("header"));
    EXPECT_EQ(dialect.footer, lines.Texts("footer"));
    EXPECT_EQ(dialect.toolChange, lines.Texts("tool_change"));
    EXPECT_EQ(dialect.tcp.has_value(), lines.Has("tcp_on"));
}

} // namespace

namespace test
{

Reading CheckJointTableText(const std::string& text)
{
    static const host::LoadedMachine machine =
        host::AssembleMachine(host::ReadMachine(MillText(), "mill.toml"));
    const auto rows = ReadMutated(text, [](const std::string& from) {
        std::istringstream in(from);
        host::JointTableReader reader(in, kMutatedName, machine.AxesOf(machine.streams.front()),
                                      machine.length);
        std::vector<TableRow> all;
        for (TableRow row; reader.Next(row);) {
            all.push_back(row);
        }
        return all;
    });
    if (!rows) {
        return Reading::Refused;
    }
    CompareTable(*rows, text);
    return Reading::Compared;
}

Reading CheckDialectText(const std::string& text)
{
    const auto dialect = ReadMutated(
        text, [](const std::string& from) { return host::ReadDialect(from, kMutatedName); });
    if (!dialect) {
        return Reading::Refused;
    }
    CheckDialect(*dialect);
    const auto tables = PlainToml(text);
    if (!tables) {
        return Reading::Accepted;
    }
    CompareDialect(*dialect, *tables);
    return Reading::Compared;
}

} // namespace test
