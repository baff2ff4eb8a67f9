#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/InputError.h"
#include "toolpath/CsvReader.h"

namespace
{

using host::Toolpath;
using host::ToolPoint;
using host::Vec3;

constexpr const char* kHeader = "x,y,z,i,j,k\n";

Toolpath Read(const std::string& text)
{
    std::istringstream in(text);
    return host::ReadCsv(in, "part.csv");
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

TEST(CsvReader, TakesAPointFromEachRow)
{
    const Toolpath path =
        Read("x,y,z,i,j,k\n108.4843,-280.0770,1.5e1,0,0.6,0.8\n+1,.5,-2.,0,0,3\n");
    ASSERT_EQ(path.points.size(), 2U);
    ExpectVec(path.points[0].position, {108.4843, -280.0770, 15});
    ExpectVec(path.points[0].direction, {0, 0.6, 0.8});
    EXPECT_EQ(path.points[0].line, 2);
    ExpectVec(path.points[1].position, {1, 0.5, -2});
    ExpectVec(path.points[1].direction, {0, 0, 1});
    EXPECT_EQ(path.points[1].line, 3);
    EXPECT_FALSE(path.points[0].feed.has_value());
    EXPECT_FALSE(path.points[0].isRapid);
    EXPECT_EQ(path.file, "part.csv");
    ASSERT_EQ(path.operations.size(), 1U);
    EXPECT_EQ(path.operations[0].name, "");
    EXPECT_EQ(path.operations[0].line, 2);
    EXPECT_EQ(path.operations[0].firstPoint, 0U);
}

TEST(CsvReader, TakesColumnsInAnyOrderAndCase)
{
    const Toolpath path = Read("OP, Rapid ,K,J,I,f,z,Y,x\nA,1,3,4,0,250,30,20,10\n");
    ASSERT_EQ(path.points.size(), 1U);
    ExpectVec(path.points[0].position, {10, 20, 30});
    ExpectVec(path.points[0].direction, {0, 0.8, 0.6});
    EXPECT_TRUE(path.points[0].isRapid);
    ASSERT_TRUE(path.points[0].feed.has_value());
    EXPECT_EQ(path.points[0].feed->value, 250);
    EXPECT_EQ(path.points[0].feed->per, host::FeedPer::Minute);
    EXPECT_EQ(path.operations.at(0).name, "A");
}

TEST(CsvReader, KeepsTheFeedWhereTheCellIsEmpty)
{
    const Toolpath path =
        Read("x,y,z,i,j,k,f\n1,2,3,0,0,1,\n1,2,3,0,0,1, 300 \n1,2,3,0,0,1,\n1,2,3,0,0,1,200\n");
    ASSERT_EQ(path.points.size(), 4U);
    EXPECT_FALSE(path.points[0].feed.has_value());
    EXPECT_EQ(path.points[1].feed.value().value, 300);
    EXPECT_EQ(path.points[2].feed.value().value, 300);
    EXPECT_EQ(path.points[3].feed.value().value, 200);
}

TEST(CsvReader, KnowsAllWaysToSayRapid)
{
    std::string text = "x,y,z,i,j,k,rapid\n";
    for (const std::string cell : {"0", "1", "true", "False", "", "TRUE", "\"1\""}) {
        text += "1,2,3,0,0,1," + cell + "\n";
    }
    const Toolpath path = Read(text);
    std::string rapids;
    for (const ToolPoint& point : path.points) {
        rapids += point.isRapid ? 'r' : '-';
    }
    EXPECT_EQ(rapids, "-rr--rr");
}

TEST(CsvReader, BeginsAnOperationAtEachNewName)
{
    const Toolpath path =
        Read("op,x,y,z,i,j,k\nRough,1,2,3,0,0,1\n,1,2,3,0,0,1\nRough,1,2,3,0,0,1\n"
             "\"Finish, \"\"B\"\"\" ,1,2,3,0,0,1\nRough,1,2,3,0,0,1\n");
    ASSERT_EQ(path.operations.size(), 3U);
    EXPECT_EQ(path.operations[0].name, "Rough");
    EXPECT_EQ(path.operations[1].name, "Finish, \"B\"");
    EXPECT_EQ(path.operations[1].line, 5);
    EXPECT_EQ(path.operations[1].firstPoint, 3U);
    EXPECT_EQ(path.operations[2].name, "Rough");
    std::vector<int> ofPoints;
    for (const ToolPoint& point : path.points) {
        ofPoints.push_back(point.operation);
    }
    EXPECT_EQ(ofPoints, (std::vector<int>{0, 0, 0, 1, 2}));
}

TEST(CsvReader, HasNoNameForRowsBeforeTheFirstOne)
{
    const Toolpath path = Read("x,y,z,i,j,k,op\n1,2,3,0,0,1,\n1,2,3,0,0,1,\"\"\n1,2,3,0,0,1,A\n");
    ASSERT_EQ(path.operations.size(), 2U);
    EXPECT_EQ(path.operations[0].name, "");
    EXPECT_EQ(path.operations[1].name, "A");
    EXPECT_EQ(path.operations[1].firstPoint, 2U);
}

TEST(CsvReader, PassesOverEmptyLinesAndTakesEitherLineEnd)
{
    const Toolpath path = Read("\xEF\xBB\xBF\r\nx,y,z,i,j,k\r\n\r\n1,2,3,0,0,1\r\n  \n4,5,6,0,0,1");
    ASSERT_EQ(path.points.size(), 2U);
    EXPECT_EQ(path.points[0].line, 4);
    EXPECT_EQ(path.points[1].line, 6);
}

TEST(CsvReader, RefusesHeadersThatItCannotUse)
{
    const std::string rule = "the header names the columns x,y,z,i,j,k and, if wanted, f, rapid, "
                             "op, with commas between";
    EXPECT_EQ(FaultOf(""), "part.csv:1:1: this file is empty; " + rule);
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,a\n"), "part.csv:1:13: \"a\" is not a column; " + rule);
    EXPECT_EQ(FaultOf("x;y;z;i;j;k\n"), "part.csv:1:1: \"x;y;z;i;j;k\" is not a column; " + rule);
    EXPECT_EQ(FaultOf("1,2,3,0,0,1\n"), "part.csv:1:1: \"1\" is not a column; " + rule);
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,\n"), "part.csv:1:13: \"\" is not a column; " + rule);
    EXPECT_EQ(FaultOf("x,y, X,i,j,k\n"),
              "part.csv:1:6: there is a column \"X\" already; take one of them out");
    EXPECT_EQ(FaultOf("\nx,y,z,i,k\n1,2,3,0,1\n"),
              "part.csv:2:1: the column J is missing; " + rule);
    EXPECT_EQ(FaultOf("x,y,z,i,j,f\n"), "part.csv:1:1: the column K is missing; " + rule);
}

TEST(CsvReader, RefusesRowsThatDoNotFitTheHeader)
{
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,2,3,0,1\n"),
              "part.csv:2:9: this row has 5 cells and the header 6; make them as many");
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,2,3,0,0,1,\n"),
              "part.csv:2:13: this row has 7 cells and the header 6; make them as many");
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,5,2,3,0,0,1\n"),
              "part.csv:2:13: this row has 7 cells and the header 6; make them as many");
}

TEST(CsvReader, RefusesCellsThatItCannotRead)
{
    const std::string rule = " is not a number; write it like 12.5 or -1.0E-3";
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,2,3,0,0,1\n1, 2x,3,0,0,1\n"),
              "part.csv:3:4: \"2x\"" + rule);
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,,3,0,0,1\n"), "part.csv:2:3: \"\"" + rule);
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,2,nan,0,0,1\n"), "part.csv:2:5: \"nan\"" + rule);
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,2,1e13,0,0,1\n"),
              "part.csv:2:5: \"1e13\" is beyond any machine; correct it");
    EXPECT_EQ(FaultOf(std::string(kHeader) + "1,2,3,0,-0,0\n"),
              "part.csv:2:7: the tool vector has no length; give its direction as i,j,k");
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,f\n1,2,3,0,0,1,0\n"),
              "part.csv:2:13: a feed is greater than 0; correct it");
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,rapid\n1,2,3,0,0,1,2\n"),
              "part.csv:2:13: \"2\" does not say whether this is a rapid; write 1 or 0, true or "
              "false, or nothing");
}

TEST(CsvReader, RefusesQuotesThatDoNotMatch)
{
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,op\n1,2,3,0,0,1,\"A\n"),
              "part.csv:2:13: this quote has no other on its line; add it, or take it out");
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,op\n1,2,3,0,0,1,1/2\" mill\n"),
              "part.csv:2:16: a quote stands within this cell; put the whole cell in quotes, and "
              "this one twice");
    EXPECT_EQ(FaultOf("x,y,z,i,j,k,op\n1,2,3,0,0,1,\"A\" B\n"),
              "part.csv:2:17: behind a cell in quotes a comma is expected; a quote inside is "
              "written twice");
}

TEST(CsvReader, RefusesAFileWithoutPoints)
{
    EXPECT_EQ(FaultOf("x,y,z,i,j,k\n\n"),
              "part.csv:1:1: there is no row behind the header, so there is nothing to do");
}

TEST(CsvReader, RefusesDamagedText)
{
    EXPECT_EQ(FaultOf(kHeader + std::string(4097, '1')),
              "part.csv:2:4097: this line is longer than 4096 characters; break it up");
    EXPECT_EQ(FaultOf(kHeader + std::string("1,2\0,3", 6)),
              "part.csv:2:4: there is a NUL byte here; this is not a text file, or it is damaged");
}

} // namespace
