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
    "1,2,0,0,50,0,0,0,0,1,rapid\n"
    "2,3,0,0,0,0,0,0,0,1,\n"
    "3,4,5,0.005,0,0,0,0.005,0,1,inserted|pole\n"
    "3,4,5,0.005,50,0,0,0,0,1,rewind\n"
    "3,4,5,0.005,50,0,360,0,0,1,rewind\n"
    "3,4,5,0.005,0,0,360,0,0,1,rewind\n"
    "3,4,10,0.001,0,0,360,0.001,0,1,\n"
    "4,5,10,20,0,0,360,0,0,1,limit\n",
    "n,line,C_rad,Z_mm,Y_mm,A_rad,X_mm,pos_err,dir_err_deg,branch,flags\r\n"
    "1,2,0,50,0,0,0,0,0,,rapid\r\n"
    "2,3,1.5707963267948966,0,0,0,-0,1e-9,0,,flip\r\n"
    "3,4,1.5707963267948966,0,10,0,6.123e-16,0,0,,\r\n"
    "4,5,,,,,,,,,failed\r\n",
    "n,line,X_mm,Y_mm,Z_mm,A_deg,C_deg,pos_err,dir_err_deg,branch,flags\n"
    "1,2,0,0,50,0,0,0,0,1,rapid\n"
    "2,3,0,0,0,0,0,0,0,1,\n"
    "3,4,10,0,0,0,0,0,0,1,\n"
    "4,5,10,20,0,0,0,0,0,1,\n"};

} // namespace

TEST(MutatedVerification, HoldsOnlyWhereThePointsAreMet)
{
    constexpr long kCount = 8000;
    long all = 0;
    long accepted = 0;
    long held = 0;
    test::Repeat(kCount, 8, [&](test::Random& random) {
        const std::string text = test::Mutated(kTables, random);
        SCOPED_TRACE(test::Shown(text));
        ++all;
        const test::Verified verified = test::CheckVerification(text);
        accepted += verified == test::Verified::Refused ? 0 : 1;
        held += verified == test::Verified::Held ? 1 : 0;
    });
    // Mutations of which none is accepted, or none of those found wrong, would test little.
    if (all == kCount) {
        EXPECT_GT(10 * accepted, all);
        EXPECT_LT(10 * accepted, 9 * all);
        EXPECT_GT(20 * held, accepted);
        EXPECT_LT(10 * held, 9 * accepted);
    }
}
