#include "geometry/Angles.h"

#include <limits>

#include <gtest/gtest.h>

namespace
{

TEST(Angles, KeepPiAtFifteenDigits)
{
    EXPECT_EQ(trunnion::kPi, 3.14159265358979);
    EXPECT_EQ(trunnion::kFullTurn, 6.28318530717958);
    EXPECT_EQ(trunnion::kOneDegree, 0.017453292519943278);
    EXPECT_EQ(trunnion::kEighthTurn, 0.7853981633974475);
    EXPECT_LT(trunnion::kFullTurn, 2 * 3.141592653589793);
}

TEST(Angles, CountMagnitudesUpToTheDoubleEpsilonAsTiny)
{
    EXPECT_EQ(trunnion::kTinyValue, 2.220446049250313e-16);
    EXPECT_EQ(trunnion::kTinyValue, std::numeric_limits<double>::epsilon());
}

TEST(Angles, ConvertToDegreesByTheProductFirst)
{
    for (const double radians : {0.03, 0.7, 1.0, -2.3, 1e-9}) {
        const double product = radians * 180;
        EXPECT_EQ(trunnion::ToDegrees(radians), product / 3.14159265358979) << radians;
    }
    // One where the order shows: by the factor 180/pi it would be another number.
    EXPECT_NE(trunnion::ToDegrees(0.03), 0.03 * (180 / 3.14159265358979));
}

} // namespace
