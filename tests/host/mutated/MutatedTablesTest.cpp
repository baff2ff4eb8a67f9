#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mutated/Checks.h"
#include "mutated/Mutation.h"
#include "mutated/ReaderChecks.h"
#include "support/Repeat.h"

namespace
{

const std::vector<std::string> kTables{
    "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n"
    "1,12,0.125,-2.5,1e-3,-90,720,1.25e-05,3e-07,1,rapid\n"
    "1,12,0.25,-2.5,12.75,-90.5,700,0,0,1,inserted\n"
    "2,14,10,20,30,-12.25,-45.125,1e-06,2e-07,2,flip|limit\n"
    "3,15,,,,,,,,,failed\n"
    "4,16,1,2,3,4,5,0,0,,\n",
    "n,line,C_rad,A_deg,Z_mm,X_mm,Y_mm,pos_err,dir_err_deg,branch,flags\n"
    "1,3,0.5,10,3,1,2,0,0,1,pole\n"
    "2,3,-0.5,11,3,1,2.5,0,0,1,\n"};

const std::vector<std::string> kDialects{
    R"toml(name = "shop"   # ours
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
[lines]
header      = ["%", "O1 {program} {unit}"]
footer      = []
tool_change = ["T{tool} M6"]
tcp_on      = ["G43.4 H{tool}"]
tcp_off     = ["G49"]
)toml",
    R"toml(name = "inverse"
[decimals]
mm = 4
inch = 5
degree = 4
feed = 3
[words]
mm = "G21"
inch = "G20"
rapid = "G0"
linear = "G1"
[feed]
mode = "inverse-time"
word = "G93"
largest = 99999.999
rotary_rate = 3600
[blocks]
modal = false
comment = "()"
line_numbers = { first = 5, step = 5, last = 9995 }
[lines]
header = ["{unit} G90"]
footer = ["M30", "%"]
tool_change = []
)toml"};

TEST(MutatedFiles, JointTables)
{
    long compared = 0;
    constexpr long kCount = 9000;
    test::Repeat(kCount, 6, [&compared](test::Random& random) {
        const std::string text = test::Mutated(kTables, random);
        SCOPED_TRACE(test::Shown(text));
        compared += test::CheckJointTableText(text) == test::Reading::Compared ? 1 : 0;
    });
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(20 * compared, kCount);
    }
}

TEST(MutatedFiles, Dialects)
{
    long compared = 0;
    constexpr long kCount = 6000;
    test::Repeat(kCount, 7, [&compared](test::Random& random) {
        const std::string text = test::Mutated(kDialects, random);
        SCOPED_TRACE(test::Shown(text));
        compared += test::CheckDialectText(text) == test::Reading::Compared ? 1 : 0;
    });
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(40 * compared, kCount);
    }
}

} // namespace
