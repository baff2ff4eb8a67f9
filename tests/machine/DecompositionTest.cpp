#include <limits>

#include <gtest/gtest.h>

#include "machine/Arrays.h"
#include "machine/Rig.h"
#include "machine/SafeSvd.h"

namespace
{

// A solve keeps one decomposition for all its passes.
TEST(Decomposition, KeepsNothingOfTheMatrixBefore)
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    trunnion::JointMatrix matrix;
    trunnion::Decomposition svd;
    trunnion::FromArray(test::MatrixOf({{3, 0}, {0, 2}}), matrix);
    trunnion::SafeSvd(matrix, svd);
    EXPECT_EQ(svd.rank, 2);
    EXPECT_EQ(svd.s.dim(), 2);
    trunnion::FromArray(test::MatrixOf({{kNan, 0}, {0, 2}}), matrix);
    trunnion::SafeSvd(matrix, svd);
    EXPECT_EQ(svd.rank, 0);
    EXPECT_EQ(svd.s.dim(), 0);
}

TEST(Counted, TakesAThousandMagnitudesAColumnAndColumnAndThrowsAtTheNext)
{
    for (const int columns : {1, 2}) {
        trunnion::Counted::Allow(columns);
        const trunnion::Counted number(-2.5);
        double sum = 0.0;
        for (int i = 0; i < 1000 * columns * columns; ++i) {
            sum += abs(number);
        }
        EXPECT_EQ(sum, 2500.0 * columns * columns);
        EXPECT_THROW(abs(number), trunnion::Unending);
    }
}

} // namespace
