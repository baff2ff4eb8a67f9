#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mutated/Checks.h"
#include "mutated/Mutation.h"
#include "mutated/ReaderChecks.h"
#include "support/Repeat.h"

namespace
{

const std::vector<std::string> kAptFiles{
    R"($$ Two operations
PARTNO/'BLADE 7'
UNITS/MM
MULTAX/ON
TOOL PATH/Rough,TOOL,BALL_10
TLDATA/MILL,10.0,5.0,60.0,0.0,0.0
LOADTL/1,ADJUST,1
SPINDL/9000,CLW
COOLNT/ON
FROM/0,0,100,0,0,1
RAPID
GOTO/60.1363,-75.6890,38.6316,0.671939,-0.646195,0.361842
FEDRAT/400,MMPM
GOTO/19.8199,-36.9173,16.9211,0.671939,-0.646195,0.361842
FEDRAT/MMPM,1800.5
GOTO/23.5584,-34.6271,16.9707,0.735552,-0.572071,0.362901 $$ on the part
GOTO/27.0355,-31.9599,17.0202
CYCLE/OFF
END-OF-PATH
TOOL PATH/'Finish',TOOL,BALL_6
TLDATA/MILL,6.0,3.0,55.0,0.0,0.0
LOAD/TOOL,12
MSYS/10,20,30,0.866025,0.5,0,-0.5,0.866025,0
RAPID
GOTO / 1.0, 2.0, $
  3.0, 0.0, $ $$ the vector
  0.6, 0.8
FEDRAT/0.2,MMPR
GOTO/1.5,2,3
MSYS/0,0,0,1,0,0,0,1,0
GOTO/-1.5E1,+2.25,.5,1,0,0
UNITS/INCH
FEDRAT/20,IPM
GOTO/1,2,3,0.6,0,0.8
FEDRAT/2,PERMIN
GOTO/1,2,2.5
END-OF-PATH
FINI
)",
    R"(PARTNO EXAMPLE 12/3
PPRINT HELLO, WORLD
MULTAX/OFF
CUTTER/10
RAPID
GOTO/0,0,50
GOTO/0,0,5,0,0,1
FEDRAT/300
GOTO/10,0,5
LOADTL/2
TLDATA/DRILL,8,118,70
GOTO/10,10,5
MULTAX
GOTO/20,10,5,0.1,0.2,0.9
STOP
GOTO/30,10,5
)"};

const std::vector<std::string> kCsvFiles{
    R"(x,y,z,i,j,k,f,rapid,op
60.1363,-75.6890,38.6316,0.671939,-0.646195,0.361842,,1,Rough
19.8199,-36.9173,16.9211,0.671939,-0.646195,0.361842,400,0,Rough
23.5584,-34.6271,16.9707,0.735552,-0.572071,0.362901,1800.5,,
27.0355,-31.9599,1.70202e1,0.735552,-0.572071,0.362901,,false,"Finish, ""B"""
27.0355,-31.9599,17.0202,0.6,0,0.8,250,true,Last
)",
    R"(K, J,I,Z,Y ,X
1,0,0,3,2,1
1,0,0, -3.5,2,.5

0.8,0,0.6,3,+2,1.
)"};

const std::vector<std::string> kNcFiles{
    R"(%
O1234 (BLADE)
N10 G21 G17 G40 G49 G80 G90 G94
N20 T5 M6 (BALL 6)
N30 G54 S12000 M3
N40 G0 X-20. Y-10.
N50 G43.5 H5 Z100. I0. J0. K1.0 M8
N60 X-20.0Y-10.0Z12.0000I0.173648J0.K0.984808
N70 G1 Z10. F300. ; down
N80 X-15.5
N85 G4 P2
N90 Y-12.25 I0.3 J0.1 K0.9 F250
N100 G0 Z50.
N110 T2 M6
N120 G55
N125 G54
N130 G0 X0 Y0 Z60 I0 J0 K1
N140 G93 G1 Z10 F12.5
N150 X5 I1 J0 K1 F3
N160 G95 F0.2 X10
N170 M30
%
)",
    R"(g20 g90
t1
g0 x1 y2 z3
g43 h1
g1 z.5 f10
g94 x2
t2
g43.5 x2.5 i.6 j0 k.8
g21 x5 (mm) f100
g64 p0.01
g1 y-1.5
)"};

/// Reads mutations of `good`.
template <class Check>
void ReadMutations(long count, std::uint64_t seed, const std::vector<std::string>& good,
                   const Check& check)
{
    long accepted = 0;
    long all = 0;
    test::Repeat(count, seed, [&](test::Random& random) {
        const std::string text = test::Mutated(good, random);
        SCOPED_TRACE(test::Shown(text));
        ++all;
        accepted += check(text) == test::Reading::Refused ? 0 : 1;
    });
    // Mutations of which none is accepted, or all are, would test little.
    if (all == count) {
        EXPECT_GT(10 * accepted, all);
        EXPECT_LT(10 * accepted, 9 * all);
    }
}

TEST(MutatedFiles, CutterLocations)
{
    ReadMutations(25000, 1, kAptFiles, test::CheckAptText);
}

TEST(MutatedFiles, PathTables)
{
    ReadMutations(15000, 2, kCsvFiles, test::CheckCsvText);
}

TEST(MutatedFiles, NcPrograms)
{
    ReadMutations(20000, 3, kNcFiles, test::CheckNcText);
}

} // namespace
