#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "text/Columns.h"
#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/LineReader.h"
#include "text/Numbers.h"
#include "text/OutputFile.h"
#include "text/Quoted.h"

namespace
{

namespace fs = std::filesystem;
using test::ContentOf;
using test::TempFolder;

// Numbers ------------------------------------------------------------------------------------

TEST(Numbers, ReadAWholeTextOrNothing)
{
    EXPECT_EQ(host::ParseNumber("12.5"), 12.5);
    EXPECT_EQ(host::ParseNumber("+12.5"), 12.5);
    EXPECT_EQ(host::ParseNumber("-.5e1"), -5.0);
    for (const std::string text : {"", "+", "-", ".", "+-1", "++1", "1,5", " 1", "1 ", "1x", "inf",
                                   "nan", "1e999", "0x1p3"}) {
        EXPECT_FALSE(host::ParseNumber(text).has_value()) << text;
    }
}

TEST(Numbers, ReadACountOrNothing)
{
    EXPECT_EQ(host::ParseCount("0"), 0);
    EXPECT_EQ(host::ParseCount("40001"), 40001);
    EXPECT_EQ(host::ParseCount("2147483647"), 2147483647);
    for (const char* text : {"", "-1", "-0", "+1", " 1", "1 ", "1.0", "1e3", "2147483648", "0x1"}) {
        EXPECT_FALSE(host::ParseCount(text).has_value()) << text;
    }
}

TEST(Numbers, ComeBackFromTheirShortestText)
{
    EXPECT_EQ(host::ShortestText(0.1), "0.1");
    EXPECT_EQ(host::ShortestText(-120.0), "-120");
    EXPECT_EQ(host::ShortestText(1.0 / 3.0), "0.3333333333333333");
    constexpr double kLargest = std::numeric_limits<double>::max();
    EXPECT_EQ(host::ParseNumber(host::ShortestText(kLargest)), kLargest);
}

TEST(Numbers, AreRoundedForPeople)
{
    EXPECT_EQ(host::RoundedText(47.34567891), "47.3457");
    EXPECT_EQ(host::RoundedText(300.0), "300");
    EXPECT_EQ(host::RoundedText(1.9e-5), "1.9e-05");
    EXPECT_EQ(host::DecimalText(47.34567891), "47.3457");
    EXPECT_EQ(host::DecimalText(300.0), "300");
    EXPECT_EQ(host::DecimalText(-17.3), "-17.3");
    EXPECT_EQ(host::DecimalText(-0.00001), "0");
    EXPECT_EQ(host::FixedText(1.23456, 3), "1.235");
    EXPECT_EQ(host::FixedText(-0.0001, 3), "0.000");
    EXPECT_EQ(host::FixedText(-0.001, 3), "-0.001");
    EXPECT_EQ(host::FixedText(1e300, 1).size(), 303U); // 301 digits, the point and one more
}

TEST(Quoted, ShowsTextShortAndHarmless)
{
    EXPECT_EQ(host::Quoted("A"), "\"A\"");
    EXPECT_EQ(host::Quoted("\x1B[2J\n"), "\"?[2J?\"");
    EXPECT_EQ(host::Quoted(std::string(60, 'x')), '"' + std::string(60, 'x') + '"');
    EXPECT_EQ(host::Quoted(std::string(61, 'x')), '"' + std::string(60, 'x') + "...\"");
}

// Reading ------------------------------------------------------------------------------------

TEST(LineReader, RefusesATextBeyondItsBound)
{
    std::string text;
    for (int i = 0; i < 257; ++i) { // 256 of these are 1 MiB
        text += std::string(4095, 'x') + "\n";
    }
    std::istringstream in(text);
    host::LineReader lines(in, "big.cl", {1024 * 1024, 4096});
    for (int i = 0; i < 256; ++i) {
        ASSERT_TRUE(lines.Next());
    }
    try {
        lines.Next();
        FAIL() << "not refused";
    } catch (const host::InputError& error) {
        EXPECT_STREQ(error.what(), "big.cl:257:1: this file is larger than 1 MiB; split it");
    }
}

TEST(InputFile, RefusesWhatIsNotThereNotAFileOrTooLarge)
{
    const TempFolder folder;
    const auto faultOf = [](const fs::path& path) -> std::string {
        try {
            host::ReadWholeFile(path, 1024 * 1024);
            return "not refused";
        } catch (const host::InputError& error) {
            return error.what();
        }
    };
    const fs::path missing = folder.Path() / "missing";
    EXPECT_EQ(faultOf(missing), missing.string() + ": this file cannot be opened (No such file or "
                                                   "directory); check its name and your rights to "
                                                   "read it");
    EXPECT_EQ(faultOf(folder.Path()),
              folder.Path().string() + ": this is a folder; name a file in it");
    const fs::path large = folder.Write("large", std::string(1024 * 1024 + 1, 'x'));
    EXPECT_EQ(faultOf(large),
              large.string() + ": this file is larger than 1 MiB; is it the right one?");
    const fs::path fits = folder.Write("fits", std::string(1024 * 1024, 'x'));
    EXPECT_EQ(host::ReadWholeFile(fits, 1024 * 1024).size(), 1024U * 1024U);
}

// Writing ------------------------------------------------------------------------------------

TEST(OutputFile, AppearsOnlyWhenItIsFinished)
{
    const TempFolder folder;
    const fs::path target = folder.Write("table.csv", "old");
    {
        host::OutputFile file(target);
        file.Write("new\n");
        EXPECT_EQ(ContentOf(target), "old");
        file.Finish();
    }
    EXPECT_EQ(ContentOf(target), "new\n");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"table.csv"}));
}

TEST(OutputFile, LeavesNothingBehindUnlessItIsFinished)
{
    const TempFolder folder;
    {
        host::OutputFile file(folder.Path() / "table.csv");
        file.Write("half of i");
        EXPECT_FALSE(fs::exists(folder.Path() / "table.csv"));
    }
    EXPECT_TRUE(folder.Names().empty());
}

TEST(OutputFile, LeavesNothingBehindWhereTheProcessIsKilled)
{
    const TempFolder folder;
    const int nameless = ::open(folder.Path().c_str(), O_WRONLY | O_TMPFILE, 0600);
    if (nameless < 0) {
        GTEST_SKIP() << "the file system has no files without a name";
    }
    ::close(nameless);
    const pid_t child = ::fork();
    if (child == 0) {
        host::OutputFile file(folder.Path() / "table.csv");
        file.Write(std::string(1000000, '1'));
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(folder.Names().empty());
}

TEST(OutputFile, KeepsAPartUnderAnotherName)
{
    const TempFolder folder;
    const fs::path target = folder.Write("table.csv", "old");
    host::OutputFile file(target);
    file.Write("part\n");
    EXPECT_EQ(file.FinishAsPartial(), folder.Path() / "table.csv.partial");
    EXPECT_EQ(ContentOf(folder.Path() / "table.csv.partial"), "part\n");
    EXPECT_EQ(ContentOf(target), "old");
}

TEST(OutputFile, FollowsALinkToItsFile)
{
    const TempFolder folder;
    const fs::path real = folder.Write("real.csv", "old");
    fs::create_symlink(real, folder.Path() / "link.csv");
    host::OutputFile file(folder.Path() / "link.csv");
    file.Write("new");
    file.Finish();
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link.csv"));
    EXPECT_EQ(ContentOf(real), "new");
}

TEST(OutputFile, DoesNotWriteThroughALinkThatStandsInItsWay)
{
    const TempFolder folder;
    const fs::path victim = folder.Write("victim", "mine");
    fs::create_symlink(victim, folder.Path() / ("t.csv." + std::to_string(::getpid()) + ".tmp"));
    try { // refused, where files without a name are not to be had
        host::OutputFile file(folder.Path() / "t.csv");
        file.Write("new");
        file.Finish();
        EXPECT_EQ(ContentOf(folder.Path() / "t.csv"), "new");
    } catch (const host::InputError& error) {
        EXPECT_NE(std::string(error.what()).find("cannot be written"), std::string::npos);
    }
    EXPECT_EQ(ContentOf(victim), "mine");
}

TEST(OutputFile, RefusesPlacesWhereNoFileCanStand)
{
    const TempFolder folder;
    const auto faultOf = [](const fs::path& path) -> std::string {
        try {
            const host::OutputFile file(path);
            return "not refused";
        } catch (const host::InputError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(faultOf(folder.Path()),
              folder.Path().string() + ": this is not an ordinary file; name one to write to");
    EXPECT_EQ(faultOf("/dev/null"),
              "/dev/null: this is not an ordinary file; name one to write to");
    fs::create_directory(folder.Path() / "x.csv.partial");
    EXPECT_EQ(faultOf(folder.Path() / "x.csv"),
              (folder.Path() / "x.csv.partial").string() +
                  ": this is not an ordinary file; name one to write to");
    const fs::path nowhere = folder.Path() / "no" / "table.csv";
    EXPECT_EQ(faultOf(nowhere), nowhere.string() + ": this file cannot be written (No such file or "
                                                   "directory); check the folder, your rights and "
                                                   "the free space");
}

// Columns ------------------------------------------------------------------------------------

TEST(Columns, AreAsWideAsTheirLongestWord)
{
    using Side = host::Columns::Side;
    host::Columns columns({Side::Left, Side::Right});
    columns.Add({"a", "1", "x"});
    columns.Add({"K\u00F6pfe", "100"});
    columns.Add({"", "20", "yy", ""});
    std::ostringstream out;
    columns.Print(out, "> ");
    EXPECT_EQ(out.str(), "> a        1  x\n"
                         "> K\u00F6pfe  100\n"
                         ">         20  yy\n");
}

} // namespace
