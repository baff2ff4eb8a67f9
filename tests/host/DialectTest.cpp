#include <string>

#include <gtest/gtest.h>

#include "MillText.h"
#include "TempFolder.h"
#include "post/Dialect.h"
#include "text/InputError.h"

namespace
{

using host::Dialect;

/// A dialect whose lines the tests know by number.
std::string DialectText()
{
    return R"(name = "shop"

[decimals]
mm             = 3
inch           = 4
degree         = 5
feed           = 1
trailing_zeros = true

[words]
mm     = "G71"
inch   = "G70"
rapid  = "G00"
linear = "G01"

[feed]
mode           = "per-minute"
word           = "G94"
per_revolution = "G95"
largest        = 12000.5
rotary_rate    = 1800

[blocks]
modal        = true
long_words   = true
comment      = ";"
line_numbers = { first = 5, step = 5, last = 9995 }

[lines]
header      = ["%", "O1 {program} {unit}"]
footer      = []
tool_change = ["T{tool} M6"]
tcp_on      = ["G43.4 H{tool}"]
tcp_off     = ["G49"]
)";
}

std::string DialectWith(int number, const std::string& with)
{
    return test::WithLine(DialectText(), number, with);
}

TEST(Dialect, IsReadFromItsFile)
{
    const Dialect dialect = host::ReadDialect(DialectText(), "shop.toml");
    EXPECT_EQ(dialect.name, "shop");
    EXPECT_EQ(dialect.decimals.mm, 3);
    EXPECT_EQ(dialect.decimals.inch, 4);
    EXPECT_EQ(dialect.decimals.degree, 5);
    EXPECT_EQ(dialect.decimals.feed, 1);
    EXPECT_TRUE(dialect.decimals.keepsZeros);
    EXPECT_EQ(dialect.mm, "G71");
    EXPECT_EQ(dialect.inch, "G70");
    EXPECT_EQ(dialect.rapid, "G00");
    EXPECT_EQ(dialect.linear, "G01");
    EXPECT_EQ(dialect.feed.mode, host::FeedMode::PerMinute);
    EXPECT_EQ(dialect.feed.word, "G94");
    EXPECT_EQ(dialect.feed.perRevolution, "G95");
    EXPECT_EQ(dialect.feed.largest, 12000.5);
    EXPECT_EQ(dialect.feed.rotaryRate_deg, 1800.0);
    EXPECT_TRUE(dialect.isModal);
    EXPECT_TRUE(dialect.takesLongWords);
    EXPECT_EQ(dialect.comment, host::CommentStyle::Semicolon);
    ASSERT_TRUE(dialect.lineNumbers.has_value());
    EXPECT_EQ(dialect.lineNumbers->first, 5);
    EXPECT_EQ(dialect.lineNumbers->step, 5);
    EXPECT_EQ(dialect.lineNumbers->last, 9995);
    EXPECT_EQ(dialect.header, (std::vector<std::string>{"%", "O1 {program} {unit}"}));
    EXPECT_TRUE(dialect.footer.empty());
    EXPECT_EQ(dialect.toolChange, std::vector<std::string>{"T{tool} M6"});
    ASSERT_TRUE(dialect.tcp.has_value());
    EXPECT_EQ(dialect.tcp->on, std::vector<std::string>{"G43.4 H{tool}"});
    EXPECT_EQ(dialect.tcp->off, std::vector<std::string>{"G49"});
}

TEST(Dialect, NeedsNotNameWhatItsControlDoesWithout)
{
    const std::string text = DialectText();
    const std::size_t blocks = text.find("[blocks]");
    const Dialect dialect =
        host::ReadDialect(text.substr(0, blocks) + "[blocks]\ncomment = \"()\"\n[lines]\n"
                                                   "header = []\nfooter = []\ntool_change = []\n",
                          "shop.toml");
    EXPECT_EQ(dialect.comment, host::CommentStyle::Parentheses);
    EXPECT_FALSE(dialect.isModal);
    EXPECT_FALSE(dialect.takesLongWords);
    EXPECT_FALSE(dialect.lineNumbers.has_value());
    EXPECT_FALSE(dialect.tcp.has_value());
    const Dialect minute = host::ReadDialect(DialectWith(19, ""), "shop.toml");
    EXPECT_FALSE(minute.feed.perRevolution.has_value());
}

TEST(Dialect, FillsThePlaceholdersOfALine)
{
    const auto value = [](std::string_view name) { return "<" + std::string(name) + ">"; };
    EXPECT_EQ(host::Filled("T{tool} M6 ({operation})", value), "T<tool> M6 (<operation>)");
    EXPECT_EQ(host::Filled("{unit}{unit}", value), "<unit><unit>");
    EXPECT_EQ(host::Filled("M30", value), "M30");
    EXPECT_EQ(host::Filled("{", value), "{"); // not in a dialect that was read
}

// The bundled ones --------------------------------------------------------------------------

TEST(BundledDialects, AreFoundByTheirNames)
{
    EXPECT_EQ(host::BundledDialectNames(),
              (std::vector<std::string>{"inverse-time", "per-minute", "tcp"}));
    for (const std::string& name : host::BundledDialectNames()) {
        EXPECT_EQ(host::LoadDialect(name).name, name);
    }
}

TEST(BundledDialects, DoWhatTheirNamesSay)
{
    const Dialect inverse = host::LoadDialect("inverse-time");
    EXPECT_EQ(inverse.feed.mode, host::FeedMode::InverseTime);
    EXPECT_EQ(inverse.feed.word, "G93");
    EXPECT_FALSE(inverse.tcp.has_value());
    const Dialect perMinute = host::LoadDialect("per-minute");
    EXPECT_EQ(perMinute.feed.mode, host::FeedMode::PerMinute);
    EXPECT_EQ(perMinute.feed.word, "G94");
    EXPECT_FALSE(perMinute.tcp.has_value());
    const Dialect tcp = host::LoadDialect("tcp");
    EXPECT_EQ(tcp.feed.mode, host::FeedMode::PerMinute);
    EXPECT_TRUE(tcp.tcp.has_value());
}

TEST(BundledDialects, ComeBeforeFilesAndOthersAreFiles)
{
    const test::TempFolder folder;
    const std::string file = folder.Write("shop.toml", DialectText()).string();
    EXPECT_EQ(host::LoadDialect(file).name, "shop");
    EXPECT_EQ(host::LoadDialect(file).file, file);
    try {
        host::LoadDialect("inverse");
        FAIL() << "no error";
    } catch (const host::InputError& error) {
        EXPECT_STREQ(error.what(),
                     "inverse: there is no dialect of this name and no file either; the bundled "
                     "dialects are inverse-time, per-minute, tcp");
    }
}

// Bad ones ----------------------------------------------------------------------------------

TEST(Dialect, WithoutOneOfItsTablesIsRefused)
{
    const auto faultOf = [](const std::string& text) {
        try {
            host::ReadDialect(text, "shop.toml");
        } catch (const host::InputError& error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    EXPECT_EQ(faultOf("name = \"a\"\n"),
              "shop.toml:1:1: the dialect has no table [decimals]; add it");
    EXPECT_EQ(faultOf("name = \"a\"\ndecimals = 3\n"),
              "shop.toml:2:12: decimals is a number; write a table [decimals]");
}

struct Fault
{
    std::string name;
    int changedLine; // of the good dialect
    std::string with;
    int line;
    int column;
    std::string sentence;
};

class DialectFault : public testing::TestWithParam<Fault>
{};

TEST_P(DialectFault, IsRefusedWithItsPlaceAndASentence)
{
    try {
        host::ReadDialect(DialectWith(GetParam().changedLine, GetParam().with), "shop.toml");
        FAIL() << "no error";
    } catch (const host::InputError& error) {
        EXPECT_EQ(error.File(), "shop.toml");
        EXPECT_EQ(error.Line(), GetParam().line) << error.what();
        EXPECT_EQ(error.Column(), GetParam().column) << error.what();
        EXPECT_NE(error.Sentence().find(GetParam().sentence), std::string::npos) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, DialectFault,
    testing::Values(
        Fault{"NotToml", 1, "name = ", 1, 8, "this is not TOML"},
        Fault{"NoName", 1, "", 1, 1, "the dialect has no name; add for instance name = "},
        Fault{"UnknownKey", 1, "name = \"a\"\nauthor = \"b\"", 2, 1,
              "\"author\" is not a key of the dialect"},
        Fault{"UnknownDecimals", 8, "mil = 3", 8, 1,
              "\"mil\" is not a key of [decimals]; its keys are mm, inch, degree, feed"},
        Fault{"UnknownWord", 10, "[words]\ncut = \"G1\"", 11, 1, "\"cut\" is not a key of [words]"},
        Fault{"UnknownFeed", 21, "speed = 1", 21, 1, "\"speed\" is not a key of [feed]"},
        Fault{"UnknownBlock", 24, "Modal = true", 24, 1, "\"Modal\" is not a key of [blocks]"},
        Fault{"UnknownLines", 31, "begin = []", 31, 1, "\"begin\" is not a key of [lines]"},
        Fault{"UnknownNumbers", 27, "line_numbers = { first = 5, step = 5, end = 9 }", 27, 39,
              "\"end\" is not a key of [line_numbers]"},
        Fault{"NoDecimals", 3, "[decimal]", 3, 2, "\"decimal\" is not a key of the dialect"},
        Fault{"NoMillimetres", 4, "", 3, 1, "[decimals] has no mm"},
        Fault{"TooManyDecimals", 5, "inch = 10", 5, 8, "inch is 10; it is from 1 to 9"},
        Fault{"NoDecimalsAtAll", 5, "inch = 0", 5, 8, "inch is 0; it is from 1 to 9"},
        Fault{"NegativeFeedDecimals", 7, "feed = -1", 7, 8, "feed is -1; it is from 0 to 9"},
        Fault{"HalfDecimals", 4, "mm = 2.5", 4, 6, "mm is no whole number"},
        Fault{"EmptyWord", 13, "rapid = \"\"", 13, 9, "rapid is empty"},
        Fault{"WordOfTwoLines", 13, "rapid = \"G0\\nM30\"", 13, 9, "plain ASCII"},
        Fault{"BadMode", 17, "mode = \"per-second\"", 17, 8,
              "mode is \"per-second\"; it is one of: inverse-time, per-minute"},
        Fault{"NoLargest", 20, "", 16, 1, "[feed] has no largest"},
        Fault{"LargestZero", 20, "largest = 0", 20, 11, "largest is not greater than 0"},
        Fault{"NegativeRate", 21, "rotary_rate = -3", 21, 15, "rotary_rate is not greater than 0"},
        Fault{"InfiniteRate", 21, "rotary_rate = inf", 21, 15, "not a finite number"},
        Fault{"ModalNumber", 24, "modal = 1", 24, 9, "modal is a number"},
        Fault{"BadComment", 26, "comment = \"#\"", 26, 11, "it is one of: (), ;"},
        Fault{"NumbersNoTable", 27, "line_numbers = 10", 27, 16,
              "line_numbers is a number; write a table [line_numbers]"},
        Fault{"StepZero", 27, "line_numbers = { first = 5, step = 0, last = 9 }", 27, 36,
              "step is 0; it is from 1 to"},
        Fault{"LastBeforeFirst", 27, "line_numbers = { first = 5, step = 5, last = 4 }", 27, 46,
              "last is 4; it is from 5 to"},
        Fault{"HeaderNoList", 30, "header = \"%\"", 30, 10, "header is a string"},
        Fault{"HeaderOfNumbers", 30, "header = [\"%\", 5]", 30, 16, "header is a number"},
        Fault{"UnknownPlaceholder", 30, "header = [\"%\", \"O{number}\"]", 30, 16,
              "correct \"O{number}\""},
        Fault{"OpenBrace", 30, "header = [\"{tool\"]", 30, 11, "in braces stand"},
        Fault{"ClosedBrace", 30, "header = [\"}tool\"]", 30, 11, "in braces stand"},
        Fault{"NestedBrace", 30, "header = [\"{{tool}}\"]", 30, 11, "in braces stand"},
        Fault{"Umlaut", 30, "header = [\"(Fr\u00E4sen)\"]", 30, 11, "plain ASCII"},
        Fault{"TcpOnAlone", 34, "", 29, 1, "[lines] has no tcp_off"},
        Fault{"TcpOffAlone", 33, "", 29, 1, "[lines] has no tcp_on"}),
    [](const auto& instance) { return instance.param.name; });

} // namespace
