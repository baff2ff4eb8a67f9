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

} // namespace
