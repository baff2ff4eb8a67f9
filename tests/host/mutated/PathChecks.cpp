// What has to hold of any toolpath.

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mutated/Checks.h"
#include "mutated/PlainPaths.h"
#include "mutated/PlainText.h"
#include "mutated/ReaderChecks.h"
#include "toolpath/AptReader.h"
#include "toolpath/CsvReader.h"
#include "toolpath/NcReader.h"

namespace
{

using host::Operation;
using host::Toolpath;
using host::ToolPoint;
using test::PlainMove;

/// What must hold of every path that a reader has accepted.
void CheckPath(const Toolpath& path, const std::string& text)
{
    const auto lines = static_cast<int>(test::SplitAt(text, '\n').size());
    ASSERT_FALSE(path.points.empty());
    ASSERT_FALSE(path.operations.empty());
    EXPECT_EQ(path.file, test::kMutatedName);
    int line = 0;
    for (std::size_t i = 0; i < path.points.size(); ++i) {
        const ToolPoint& point = path.points[i];
        EXPECT_TRUE(test::IsFinite(point.position));
        EXPECT_TRUE(test::IsUnit(point.direction));
        EXPECT_GT(point.line, line);
        EXPECT_LE(point.line, lines);
        line = point.line;
        ASSERT_GE(point.operation, 0);
        const auto operation = static_cast<std::size_t>(point.operation);
        ASSERT_LT(operation, path.operations.size());
        EXPECT_LE(path.operations[operation].firstPoint, i);
        EXPECT_TRUE(operation + 1 == path.operations.size() ||
                    i < path.operations[operation + 1].firstPoint);
        if (point.feed) {
            EXPECT_TRUE(std::isfinite(point.feed->value) && point.feed->value > 0.0);
        }
    }
}

void CheckOperations(const Toolpath& path)
{
    EXPECT_EQ(path.operations.front().firstPoint, 0U);
    for (std::size_t i = 0; i < path.operations.size(); ++i) {
        const Operation& operation = path.operations[i];
        EXPECT_TRUE(i == 0 || operation.firstPoint > path.operations[i - 1].firstPoint);
        ASSERT_LT(operation.firstPoint, path.points.size());
        EXPECT_GE(operation.line, 1);
        EXPECT_LE(operation.line, path.points[operation.firstPoint].line);
        EXPECT_GE(operation.toolNumber.value_or(0), 0);
        const double length = operation.toolLength.value_or(1.0);
        EXPECT_TRUE(std::isfinite(length) && length > 0.0);
        EXPECT_TRUE(std::none_of(operation.name.begin(), operation.name.end(),
                                 [](char c) { return c >= '\0' && c < ' '; }));
    }
}

bool AreNear(const host::Vec3& actual, const std::array<double, 3>& expected)
{
    double size = 1.0;
    for (const double x : expected) {
        size = std::max(size, std::fabs(x));
    }
    return std::fabs(actual[0] - expected[0]) < 1e-9 * size &&
           std::fabs(actual[1] - expected[1]) < 1e-9 * size &&
           std::fabs(actual[2] - expected[2]) < 1e-9 * size;
}

void ComparePoint(const ToolPoint& point, const PlainMove& move)
{
    EXPECT_EQ(point.line, move.line);
    EXPECT_TRUE(move.isKnown);
    EXPECT_TRUE(AreNear(point.position, move.position));
    EXPECT_TRUE(AreNear(point.direction, move.direction));
    EXPECT_EQ(point.isRapid, move.isRapid);
    if (move.isFeedFollowed) {
        ASSERT_EQ(point.feed.has_value(), move.feed.has_value());
        const double feed = move.feed.value_or(0.0);
        EXPECT_NEAR(point.feed ? point.feed->value : 0.0, feed, 1e-12 * feed);
    }
}

void CompareOperation(const Operation& operation, const PlainMove& move)
{
    EXPECT_EQ(operation.name, move.operation);
    EXPECT_EQ(operation.toolNumber, move.tool);
    ASSERT_EQ(operation.toolLength.has_value(), move.toolLength.has_value());
    const double length = move.toolLength.value_or(0.0);
    EXPECT_NEAR(operation.toolLength.value_or(0.0), length, 1e-12 * length);
}

/// The points are the moves; the first `leftOut` may be missing.
void Compare(const Toolpath& path, const std::vector<PlainMove>& moves, std::size_t leftOut)
{
    ASSERT_EQ(path.points.size() + leftOut, moves.size());
    std::size_t next = 0;
    for (const ToolPoint& point : path.points) {
        while (next < moves.size() && moves[next].line < point.line) {
            EXPECT_TRUE(moves[next].isRapid); // a rapid to a place that is not known
            ++next;
        }
        ASSERT_LT(next, moves.size());
        ComparePoint(point, moves[next]);
        CompareOperation(path.operations.at(static_cast<std::size_t>(point.operation)),
                         moves[next]);
        ++next;
    }
}

/// How many rapids a warning says are left out.
std::size_t LeftOut(const Toolpath& path)
{
    const std::string fact = "are left out, ";
    for (const std::string& warning : path.warnings) {
        const std::size_t at = warning.find(fact);
        if (at != std::string::npos) {
            return static_cast<std::size_t>(test::PlainNumber(warning.substr(at + fact.size())));
        }
    }
    return 0;
}

/// Holds what is accepted against the plain reading.
template <class Read, class Plain>
test::Reading CheckPathText(const std::string& text, const Read& read, const Plain& plain)
{
    const auto path = test::ReadMutated(text, [&read](const std::string& from) {
        std::istringstream in(from);
        return read(in);
    });
    if (!path) {
        return test::Reading::Refused;
    }
    CheckPath(*path, text);
    CheckOperations(*path);
    Compare(*path, plain(text), LeftOut(*path));
    return test::Reading::Compared;
}

} // namespace

namespace test
{

Reading CheckAptText(const std::string& text)
{
    return CheckPathText(
        text,
        [](std::istream& in) {
            return host::ReadApt(in, kMutatedName, host::LengthUnit::Millimetre);
        },
        PlainApt);
}

Reading CheckCsvText(const std::string& text)
{
    return CheckPathText(
        text, [](std::istream& in) { return host::ReadCsv(in, kMutatedName); }, PlainCsv);
}

Reading CheckNcText(const std::string& text)
{
    return CheckPathText(
        text,
        [](std::istream& in) {
            return host::ReadNc(in, kMutatedName, host::LengthUnit::Millimetre);
        },
        PlainNc);
}

} // namespace test
