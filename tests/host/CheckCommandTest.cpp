#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "MillText.h"
#include "TempFolder.h"
#include "app/CheckCommand.h"
#include "text/InputError.h"

namespace
{

using test::MillText;
using test::MillWith;

struct Answer
{
    host::ExitCode code;
    std::string out;
    std::string err;
};

class CheckCommand : public testing::Test
{
  protected:
    Answer Check(const host::CheckOptions& options) const
    {
        std::ostringstream out;
        std::ostringstream err;
        const host::ExitCode code = host::Check(options, out, err);
        return {code, out.str(), err.str()};
    }
    Answer CheckMachine(const std::string& text) const
    {
        host::CheckOptions options;
        options.machine.file = folder.Write("mill.toml", text);
        return Check(options);
    }
    host::CheckOptions MillAndPath(const std::string& path) const
    {
        host::CheckOptions options;
        options.machine.file = folder.Write("mill.toml", MillText());
        options.toolpath.file = folder.Write("part.cl", path);
        return options;
    }

    test::TempFolder folder;
};

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// From the line that begins with `word` on.
std::string From(const std::string& text, const std::string& word)
{
    const std::size_t begin = text.find("\n" + word);
    return begin == std::string::npos ? text + "\n(no " + word + ")" : text.substr(begin + 1);
}

// The machine --------------------------------------------------------------------------------

TEST_F(CheckCommand, PrintsTheWholeMachine)
{
    const Answer answer = CheckMachine(MillWith(33, "limits = [-120, 30]\ninitial = -30\n"
                                                    "word = \"W\"\nword_sign = -1"));
    EXPECT_EQ(answer.code, host::kExitOk);
    EXPECT_EQ(answer.err, "");
    // With A at -30 the tool's seat, 120 above that axis, is seen from the part, whose origin is 20
    // above it, at (0, -120 sin 30, 120 cos 30 - 20).
    EXPECT_EQ(answer.out,
              "machine    \"Mill\"\n"
              "file       " +
                  (folder.Path() / "mill.toml").string() +
                  "\n"
                  "units      mm, deg\n"
                  "axes       5, moving their own body like this for positive values (machine "
                  "coordinates)\n"
                  "  X  linear  along (1, 0, 0)                       limits -300 to 300 mm  "
                  "starts at 0    word X   carries the tool\n"
                  "  Y  linear  along (0, 1, 0)                       limits -300 to 300 mm  "
                  "starts at 0    word Y   carries the tool\n"
                  "  Z  linear  along (0, 0, 1)                       limits -400 to 400 mm  "
                  "starts at 0    word Z   carries the tool\n"
                  "  A  rotary  about (1, 0, 0) through (0, 0, -120)  limits -120 to 30 deg  "
                  "starts at -30  word -W  carries the part\n"
                  "  C  rotary  about (0, 0, 1) through (0, 0, 0)     unlimited              "
                  "starts at 0    word C   carries the part\n"
                  "stream 1\n"
                  "  tool     base -> X -> Y -> Z -> \"spindle\"\n"
                  "  part     base -> A -> C -> \"table\"\n"
                  "  start    tool's seat in part coordinates: 0.0000  -60.0000  83.9230 mm, "
                  "direction 0.000000  -0.500000  0.866025\n");
}

TEST_F(CheckCommand, ShowsDirectionsAtLengthOne)
{
    const Answer answer = CheckMachine(MillWith(10, "direction = [0, -3, 4]"));
    EXPECT_TRUE(Contains(answer.out, "\n  X  linear  along (0, -0.6, 0.8) ")) << answer.out;
}

TEST_F(CheckCommand, ShowsAnglesInRadiansOnRequest)
{
    host::CheckOptions options = MillAndPath("GOTO/0,0,0,0,-0.5,0.8660254037844386\n");
    options.inRadians = true;
    const Answer answer = Check(options);
    EXPECT_TRUE(Contains(answer.out, "units      mm, rad\n"));
    EXPECT_TRUE(Contains(answer.out, "limits -2.0944 to 0.5236 rad")) << answer.out;
    EXPECT_TRUE(Contains(answer.out, "tilt       0.5236 to 0.5236 rad from the part's z\n"));
}

TEST_F(CheckCommand, SaysWhatEachAxisCarriesInEachStream)
{
    // The second stream works on a bench that stands still; X lies in neither.
    std::string text = MillWith(15, "parent = \"base\"");
    text += "[[mount]]\nname = \"bench\"\nkind = \"part\"\nparent = \"Y\"\norigin = [0, 0, -100]\n"
            "z_axis = [0, 0, 1]\nx_axis = [1, 0, 0]\n"
            "[[stream]]\nid = 2\ntool = \"spindle\"\npart = \"bench\"\n";
    const Answer answer = CheckMachine(text);
    EXPECT_TRUE(Contains(answer.out, "word X  in no stream: stays where it starts\n"));
    EXPECT_TRUE(Contains(answer.out, "word Y  carries the tool of 1 and the tool of 2 and the "
                                     "part of 2\n"))
        << answer.out;
    EXPECT_TRUE(Contains(answer.out, "word Z  carries the tool of 1 and the tool of 2\n"));
    EXPECT_TRUE(Contains(answer.out, "word A  carries the part of 1\n"));
    EXPECT_TRUE(Contains(answer.out, "\nstream 2\n  tool     base -> Y -> Z -> \"spindle\"\n"
                                     "  part     base -> Y -> \"bench\"\n"));
}

TEST_F(CheckCommand, ShowsTheStreamThatItIsTold)
{
    host::CheckOptions options;
    options.machine.file = folder.Write(
        "mill.toml", MillText() + "[[stream]]\nid = 7\ntool = \"spindle\"\npart = \"table\"\n");
    options.machine.stream = 7;
    const Answer answer = Check(options);
    EXPECT_FALSE(Contains(answer.out, "stream 1\n"));
    EXPECT_TRUE(Contains(answer.out, "stream 7\n"));
    options.machine.stream = 8;
    EXPECT_THROW(Check(options), host::InputError);
}

TEST_F(CheckCommand, KeepsNamesFromSteeringTheTerminal)
{
    const Answer answer = CheckMachine(MillWith(2, "name = \"\\u001B[31mred\""));
    EXPECT_TRUE(Contains(answer.out, "machine    \"?[31mred\"\n")) << answer.out;
}

// The toolpath -------------------------------------------------------------------------------

TEST_F(CheckCommand, PrintsWhatAToolpathComesTo)
{
    const Answer answer = Check(MillAndPath("UNITS/MM\n"
                                            "TOOL PATH/ROUGH,TOOL,MILL_D10\n"
                                            "TLDATA/MILL,10.0,0.0,50.0,0.0,0.0\n"
                                            "LOADTL/3\n"
                                            "RAPID\n"
                                            "GOTO/-5,2,30,0,0,1\n"
                                            "FEDRAT/200,MMPM\n"
                                            "GOTO/-5,2,10.5\n"
                                            "END-OF-PATH\n"
                                            "TOOL PATH/FINE,TOOL,BALL_D6\n"
                                            "TLDATA/MILL,6.0,3.0,40.0,0.0,0.0\n"
                                            "LOADTL/4\n"
                                            "RAPID\n"
                                            "GOTO/7,-8,30,0,-0.5,0.8660254037844386\n"
                                            "FEDRAT/150.5,MMPM\n"
                                            "GOTO/7,-8,10\n"
                                            "FEDRAT/0.25,MMPR\n"
                                            "GOTO/8,-8,10\n"
                                            "END-OF-PATH\n"
                                            "FINI\n"));
    EXPECT_EQ(answer.code, host::kExitOk);
    EXPECT_EQ(answer.err, "");
    EXPECT_EQ(From(answer.out, "toolpath"),
              "toolpath   " + (folder.Path() / "part.cl").string() +
                  "\n"
                  "format     cutter locations (APT)\n"
                  "points     5, 2 at rapid\n"
                  "x          -5 to 8 mm\n"
                  "y          -8 to 2 mm\n"
                  "z          10 to 30 mm\n"
                  "tilt       0 to 30 deg from the part's z\n"
                  "feeds      150.5, 200 mm/min\n"
                  "feeds      0.25 mm/rev\n"
                  "operations 2\n"
                  "  1  \"ROUGH\"  tool 3  length 50 mm  2 points  1 at rapid  from line 2\n"
                  "  2  \"FINE\"   tool 4  length 40 mm  3 points  1 at rapid  from line 10\n");
}

TEST_F(CheckCommand, ReadsTablesAndNcProgramsToo)
{
    host::CheckOptions options;
    options.machine.file = folder.Write("mill.toml", MillText());
    const std::string table = "x,y,z,i,j,k\n1,2,3,0,0,1\n4,5,6,0,0,1\n";
    options.toolpath.file = folder.Write("path.csv", table);
    EXPECT_TRUE(Contains(Check(options).out, "\nformat     table (CSV)\npoints     2, 0 at "));
    options.toolpath.file = folder.Write("path.txt", table);
    EXPECT_THROW(Check(options), host::InputError);
    options.toolpath.format = host::ToolpathFormat::Csv;
    EXPECT_TRUE(Contains(Check(options).out, "\nx          1 to 4 mm\n"));
    options.toolpath.file = folder.Write("path", "G90 G21\nG43.5 H1\nG0 X1 Y2 Z3 I0 J0 K1\n");
    options.toolpath.format = host::ToolpathFormat::Nc;
    EXPECT_TRUE(Contains(Check(options).out, "\nformat     NC program with tool vectors\n"));
}

TEST_F(CheckCommand, CountsWhatAFileLeavesOut)
{
    const Answer answer = Check(MillAndPath("GOTO/0,0,0,0,0,1\nGOTO/1,0,0\nRAPID\nGOTO/2,0,0\n"));
    EXPECT_TRUE(Contains(answer.out, "\nfeeds      2 points neither at rapid nor with a feed\n"))
        << answer.out;
    EXPECT_TRUE(Contains(answer.out, "\n  1  without name  no tool  no length  3 points  "));
}

TEST_F(CheckCommand, ShortensALongListOfFeeds)
{
    std::string path;
    for (int i = 9; i > 0; --i) {
        path += "FEDRAT/" + std::to_string(i) + "0,MMPM\nGOTO/" + std::to_string(i) + ",0,0\n";
    }
    EXPECT_TRUE(Contains(Check(MillAndPath(path)).out, "\nfeeds      9 from 10 to 90 mm/min\n"));
}

TEST_F(CheckCommand, TurnsLengthsIntoTheMachinesUnit)
{
    const Answer answer = Check(MillAndPath("UNITS/INCH\nFEDRAT/10,IPM\nGOTO/2,0,0\n"));
    EXPECT_TRUE(Contains(answer.out, "\nx          50.8 to 50.8 mm\n")) << answer.out;
    EXPECT_TRUE(Contains(answer.out, "\nfeeds      254 mm/min\n")) << answer.out;
}

TEST_F(CheckCommand, PassesWarningsOnAndCountsThem)
{
    const Answer answer = Check(MillAndPath("MULTAX/OFF\nGOTO/1,0,0,0,0,1\n"));
    EXPECT_EQ(answer.code, host::kExitOk);
    EXPECT_TRUE(Contains(answer.err, "part.cl:2:12: warning: tool vectors after MULTAX/OFF"));
    EXPECT_TRUE(Contains(answer.out, "\nwarnings   1\n"));
}

TEST_F(CheckCommand, RefusesWhatItDoesNotUnderstandBeforeItPrints)
{
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_THROW(host::Check(MillAndPath("CIRCLE/0,0,0,0,0,1,5\n"), out, err), host::InputError);
    EXPECT_EQ(out.str(), "");
}

} // namespace
