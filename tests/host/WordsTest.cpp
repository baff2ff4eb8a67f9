#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "post/Words.h"
#include "text/InputError.h"

namespace
{

using host::Coordinate;

host::LoadedMachine Load(const std::string& text)
{
    return host::AssembleMachine(host::ReadMachine(text, "mill.toml"));
}

host::Dialect FourDecimals()
{
    host::Dialect dialect;
    dialect.name = "four";
    dialect.decimals = {4, 5, 4, 3, true};
    return dialect;
}

std::vector<Coordinate> AxesOf(const host::LoadedMachine& machine, const host::Dialect& dialect)
{
    return host::AxisCoordinates(machine, machine.AxesOf(machine.streams.front()), dialect);
}

host::MotionRow RowWith(std::vector<double> joints)
{
    host::MotionRow row;
    row.joints = std::move(joints);
    return row;
}

/// What the word of an axis says, with line `number` of the mill replaced.
double WordOf(std::size_t axis, double joint, int number, const std::string& with)
{
    const host::LoadedMachine machine = Load(test::MillWith(number, with));
    std::vector<double> joints(5);
    joints[axis] = joint;
    return AxesOf(machine, FourDecimals())[axis].At(RowWith(joints));
}

std::string FaultOf(const std::string& text, const host::Dialect& dialect, bool ofTip = false)
{
    const host::LoadedMachine machine = Load(text);
    try {
        ofTip ? host::TipCoordinates(machine, machine.AxesOf(machine.streams.front()), dialect)
              : AxesOf(machine, dialect);
    } catch (const host::InputError& error) {
        return error.what();
    }
    return "no error";
}

// Values ------------------------------------------------------------------------------------

TEST(Words, RoundToTheLastDecimal)
{
    EXPECT_EQ(WordOf(0, 1.23456, 1, "[machine]"), 1.2346);
    EXPECT_EQ(WordOf(0, -1.23456, 1, "[machine]"), -1.2346);
    EXPECT_EQ(WordOf(4, 0.1, 1, "[machine]"), 5.7296); // 0.1 rad are 5.72957795... degrees
    EXPECT_EQ(WordOf(4, -100.0, 1, "[machine]"), -5729.5780);
}

TEST(Words, HaveTheSignOfTheirAxis)
{
    EXPECT_EQ(WordOf(4, 0.1, 41, "unlimited = true\nword_sign = -1"), -5.7296);
    EXPECT_EQ(WordOf(0, 12.5, 11, "limits = [-300, 300]\nword_sign = -1"), -12.5);
}

TEST(Words, ReachTheirLimitsDespiteTheWayThroughRadians)
{
    const double degree = 3.14159265358979323846 / 180.0;
    for (const double limit : {30.0, 29.9, 12.3456, 0.0001, 100.7, 77.7777}) {
        const std::string limits =
            "limits = [-" + std::to_string(limit) + ", " + std::to_string(limit) + "]";
        EXPECT_EQ(WordOf(3, limit * degree, 33, limits), limit);
        EXPECT_EQ(WordOf(3, -limit * degree, 33, limits), -limit);
        EXPECT_EQ(WordOf(3, -limit * degree, 33, limits + "\nword_sign = -1"), limit);
    }
}

TEST(Words, RoundInwardsAtALimitBetweenTwoDecimals)
{
    // To the nearest these would be 10.0001 and -5.0001.
    const std::string limits = "limits = [-5.00006, 10.00006]";
    EXPECT_EQ(WordOf(0, 10.00006, 11, limits), 10.0);
    EXPECT_EQ(WordOf(0, 10.00004, 11, limits), 10.0);
    EXPECT_EQ(WordOf(0, -5.00006, 11, limits), -5.0);
    EXPECT_EQ(WordOf(0, 10.00006, 11, limits + "\nword_sign = -1"), -10.0);
    EXPECT_EQ(WordOf(0, -5.00006, 11, limits + "\nword_sign = -1"), 5.0);
}

TEST(Words, DoNotHideThatAnAxisIsBeyondItsLimit)
{
    EXPECT_EQ(WordOf(0, 301.0, 1, "[machine]"), 301.0);
    EXPECT_EQ(WordOf(0, -300.5, 1, "[machine]"), -300.5);
}

TEST(Words, AreSpelledWithAPointAndWithoutMinusZero)
{
    EXPECT_EQ(host::NumberText(12.5, 4, true), "12.5000");
    EXPECT_EQ(host::NumberText(12.5, 4, false), "12.5");
    EXPECT_EQ(host::NumberText(12.0, 4, false), "12.");
    EXPECT_EQ(host::NumberText(-0.0, 3, true), "0.000");
    EXPECT_EQ(host::NumberText(-0.0, 3, false), "0.");
    EXPECT_EQ(host::NumberText(300.0, 0, false), "300");
    EXPECT_EQ(host::NumberText(1e12, 1, true), "1000000000000.0");
    EXPECT_EQ(host::NumberText(1e-7, 9, true), "0.000000100");
}

// Addresses ---------------------------------------------------------------------------------

std::vector<std::string> Addresses(const std::vector<Coordinate>& coordinates)
{
    std::vector<std::string> addresses;
    for (const Coordinate& coordinate : coordinates) {
        addresses.push_back(coordinate.address);
    }
    return addresses;
}

TEST(Words, ComeInTheOrderOfTheAxes)
{
    const host::LoadedMachine machine = Load(test::MillText());
    EXPECT_EQ(Addresses(AxesOf(machine, FourDecimals())),
              (std::vector<std::string>{"X", "Y", "Z", "A", "C"}));
    const host::LoadedMachine turned = Load(test::MillWith(41, "unlimited = true\nword = \"w\""));
    EXPECT_EQ(Addresses(AxesOf(turned, FourDecimals())),
              (std::vector<std::string>{"X", "Y", "Z", "A", "W"}));
}

TEST(Words, OfTheTipComeBeforeTheRotaryOnes)
{
    const host::LoadedMachine machine = Load(test::MillText());
    const auto coordinates =
        host::TipCoordinates(machine, machine.AxesOf(machine.streams.front()), FourDecimals());
    EXPECT_EQ(Addresses(coordinates), (std::vector<std::string>{"X", "Y", "Z", "A", "C"}));
    host::MotionRow row = RowWith({1, 2, 3, 0.1, 0.2});
    row.asked.position = {-7.00004, 8.5, 1000.0};
    EXPECT_EQ(coordinates[0].At(row), -7.0);
    EXPECT_EQ(coordinates[1].At(row), 8.5);
    EXPECT_EQ(coordinates[2].At(row), 1000.0); // beyond the limit of the axis Z, which it is not
    EXPECT_EQ(coordinates[3].At(row), 5.7296);
    EXPECT_EQ(coordinates[4].At(row), 11.4592);
}

TEST(Words, OfInchesHaveTheirOwnDecimals)
{
    const host::LoadedMachine machine = Load(test::MillWith(3, "length = \"inch\""));
    EXPECT_EQ(AxesOf(machine, FourDecimals())[0].At(RowWith({1.234567, 0, 0, 0, 0})), 1.23457);
}

TEST(Words, MayBeLongWhereTheDialectSaysSo)
{
    const std::string text = test::MillWith(41, "unlimited = true\nword = \"C_table2\"");
    host::Dialect dialect = FourDecimals();
    EXPECT_EQ(FaultOf(text, dialect),
              "mill.toml: axis \"C\" has the word \"C_table2\", which dialect \"four\" cannot "
              "write; give it one of A, B, C, U, V, W, X, Y, Z (word = \"A\"), or choose a dialect "
              "with long_words = true");
    dialect.takesLongWords = true;
    const host::LoadedMachine machine = Load(text);
    EXPECT_EQ(AxesOf(machine, dialect)[4].address, "C_table2=");
}

TEST(Words, AreNeverThoseThatMeanSomethingElse)
{
    host::Dialect dialect = FourDecimals();
    dialect.takesLongWords = true;
    for (const char letter : std::string("DEFGHIJKLMNOPQRST1-")) {
        const std::string word{letter};
        EXPECT_NE(FaultOf(test::MillWith(41, "unlimited = true\nword = \"" + word + "\""), dialect)
                      .find("axis \"C\" has the word \"" + word + "\""),
                  std::string::npos);
    }
    for (const std::string word : {"C-1", "1C", "C 1", "C="}) {
        EXPECT_NE(FaultOf(test::MillWith(41, "unlimited = true\nword = \"" + word + "\""), dialect)
                      .find("or a name of letters and digits"),
                  std::string::npos);
    }
}

TEST(Words, AreRefusedWhenTwoAxesHaveTheSame)
{
    const std::string twoX = test::MillWith(41, "unlimited = true\nword = \"x\"");
    EXPECT_EQ(FaultOf(twoX, FourDecimals()),
              "mill.toml: a block would have two words \"X\"; give each axis a word of its own");
    EXPECT_EQ(FaultOf(twoX, FourDecimals(), true),
              "mill.toml: a block would have two words \"X\"; give each axis a word of its own");
}

TEST(Words, AreRefusedForLimitsWithoutAnyValueBetweenThem)
{
    EXPECT_EQ(FaultOf(test::MillWith(11, "limits = [0.00002, 0.00008]\ninitial = 0.00005"),
                      FourDecimals()),
              "mill.toml: the limits of axis \"X\" leave no value with 4 decimals; take a dialect "
              "with more of them");
    EXPECT_EQ(FaultOf(test::MillWith(11, "limits = [0, 0]"), FourDecimals()), "no error");
}

} // namespace
