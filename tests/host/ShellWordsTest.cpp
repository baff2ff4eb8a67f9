#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/CappedText.h"
#include "text/InputError.h"
#include "text/ShellWords.h"

namespace
{

using Words = std::vector<std::string>;

Words Split(const std::string& line)
{
    return host::ShellWords(line, "jobs.txt", 7);
}

/// What is said of a line that is refused.
std::string Fault(const std::string& line)
{
    try {
        Split(line);
    } catch (const host::InputError& error) {
        return error.what();
    }
    return "taken";
}

/// The expected words are those that /bin/sh gives for the same line.
TEST(ShellWords, AreThoseOfAShell)
{
    EXPECT_EQ(Split("  solve  a.toml\tb.cl "), (Words{"solve", "a.toml", "b.cl"}));
    EXPECT_EQ(Split(R"('two words' "two more" and\ two)"),
              (Words{"two words", "two more", "and two"}));
    EXPECT_EQ(Split(R"(--report="a b".html 'it'"'"s)"), (Words{"--report=a b.html", "it's"}));
    EXPECT_EQ(Split(R"('a\b' "a\b" "\"\\\$" \"x\\)"),
              (Words{R"(a\b)", R"(a\b)", R"("\$)", R"("x\)"}));
    EXPECT_EQ(Split(R"(-o "" '')"), (Words{"-o", "", ""}));
}

TEST(ShellWords, EndAtAComment)
{
    EXPECT_EQ(Split(""), Words{});
    EXPECT_EQ(Split(" \t"), Words{});
    EXPECT_EQ(Split("# 'anything $goes"), Words{});
    EXPECT_EQ(Split("a b#c '#d' # e"), (Words{"a", "b#c", "#d"}));
}

TEST(ShellWords, RefuseWhatHasNoEnd)
{
    const std::string sentence =
        ": the quotation that begins here has no end on this line; close it";
    EXPECT_EQ(Fault("a 'b"), "jobs.txt:7:3" + sentence);
    EXPECT_EQ(Fault("a \"b\\\""), "jobs.txt:7:3" + sentence);
    EXPECT_EQ(Fault("a b \""), "jobs.txt:7:5" + sentence);
    EXPECT_EQ(Fault("a \\"),
              "jobs.txt:7:3: nothing follows this backslash; a job stands on one line");
}

TEST(ShellWords, RefuseWhatAShellWouldTakeForMore)
{
    EXPECT_EQ(Fault("solve *.cl"),
              "jobs.txt:7:7: * means something to a shell and nothing here; write it in single "
              "quotes where it belongs to a name");
    for (const char c : std::string("|&;<>()$`*?")) {
        EXPECT_EQ(Fault(std::string("ab") + c).rfind("jobs.txt:7:3: ", 0), 0U) << c;
        EXPECT_EQ(Split(std::string("'ab") + c + "' \\" + c),
                  (Words{std::string("ab") + c, std::string(1, c)}));
    }
    EXPECT_EQ(Fault("a \"$HOME\"").rfind("jobs.txt:7:4: $ ", 0), 0U);
    EXPECT_EQ(Fault("a \"`b`\"").rfind("jobs.txt:7:4: ` ", 0), 0U);
    EXPECT_EQ(Fault("a ~/b").rfind("jobs.txt:7:3: ~ ", 0), 0U);
    EXPECT_EQ(Split("a~b '~' \"~*?|&;<>()\""), (Words{"a~b", "~", "~*?|&;<>()"}));
}

// Text that is kept up to a bound ---------------------------------------------------------------

TEST(CappedText, KeepsWholeLinesAndCountsTheRest)
{
    host::CappedText text(10);
    std::ostream stream(&text);
    stream << "one\ntwo\n";
    EXPECT_EQ(text.Text(), "one\ntwo\n");
    EXPECT_EQ(text.LinesLeftOut(), 0U);
    stream << "th";
    EXPECT_EQ(text.Text(), "one\ntwo\nth"); // all ten bytes
    stream << "ree\nfour\n" << '5' << '\n';
    EXPECT_EQ(text.Text(), "one\ntwo\n");
    EXPECT_EQ(text.LinesLeftOut(), 3U);
}

TEST(CappedText, MayBeFullAtTheEndOfALine)
{
    host::CappedText text(4);
    std::ostream stream(&text);
    stream << "one\n";
    EXPECT_EQ(text.LinesLeftOut(), 0U);
    stream << "two\n";
    EXPECT_EQ(text.Text(), "one\n");
    EXPECT_EQ(text.LinesLeftOut(), 1U);
}

} // namespace
