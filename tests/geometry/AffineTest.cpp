#include "geometry/Affine.h"

#include <limits>

#include <gtest/gtest.h>

#include "geometry/Compose.h"
#include "support/Bits.h"
#include "support/Random.h"
#include "support/RandomMachine.h"

namespace
{

using test::BitsOf;
using trunnion::Affine;
using trunnion::Compose;

/// Rotations by any angle and by quarter turns, offsets with zeros of either sign among them.
IkXformMat RandomAffine(test::Random& random)
{
    IkXformMat frame = test::RandomFrame(random, 300);
    for (int row = 0; row < 3; ++row) {
        for (int k = 0; k < 4; ++k) {
            if (random.OneIn(6)) {
                frame[row][k] = random.OneIn(2) ? 0.0 : -0.0;
            }
        }
    }
    return frame;
}

IkXformMat Normal(const IkXformMat& frame)
{
    return Compose(IkXformMat(), frame); // no element is -0 any more
}

IkXformMat MatrixOf(const double* rows)
{
    IkXformMat matrix;
    std::copy_n(rows, 12, matrix[0]);
    return matrix;
}

TEST(AffineProduct, IsTheFullProductToTheLastBit)
{
    test::Random random(1);
    for (int i = 0; i < 5000; ++i) {
        const IkXformMat a = Normal(RandomAffine(random));
        const IkXformMat b = RandomAffine(random);
        Affine product;
        double lever[3];
        trunnion::Multiply(a[0], b[0], product.e, lever);
        ASSERT_EQ(BitsOf(MatrixOf(product.e)), BitsOf(Compose(a, b))) << "case " << i;
        for (int row = 0; row < 3; ++row) {
            ASSERT_EQ(lever[row] + a[row][3], product.e[4 * row + 3]);
        }
    }
}

TEST(AffineProduct, WithAShiftIsTheFullProductToTheLastBit)
{
    test::Random random(2);
    for (int i = 0; i < 5000; ++i) {
        const IkXformMat a = Normal(RandomAffine(random));
        IkXformMat b = IkXformMat::Translate(random.Between(-9, 9), -0.0, random.Between(-9, 9));
        b[0][1] = -0.0; // still the identity's rotation
        Affine product;
        double lever[3];
        trunnion::MultiplyByShift(a[0], b[0], product.e, lever);
        ASSERT_EQ(BitsOf(MatrixOf(product.e)), BitsOf(Compose(a, b))) << "case " << i;
    }
}

TEST(AffineProduct, ShowsEveryElementThatIsNotFiniteInTheLastResult)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    test::Random random(3);
    for (const double wrong : {kInfinity, -kInfinity, kNan}) {
        for (int element = 0; element < 12; ++element) {
            IkXformMat frames[3];
            for (IkXformMat& frame : frames) {
                frame = Normal(RandomAffine(random));
            }
            frames[random.Below(3)][0][element] = wrong;
            Affine first;
            Affine product;
            Affine inverse;
            double lever[3];
            trunnion::Multiply(frames[0][0], frames[1][0], first.e, lever);
            trunnion::Multiply(first.e, frames[2][0], product.e, lever);
            EXPECT_FALSE(trunnion::IsFinite(product.e)) << wrong << " at " << element;
            trunnion::InvertRigid(product.e, inverse.e);
            EXPECT_FALSE(trunnion::IsFinite(inverse.e)) << wrong << " at " << element;
        }
    }
    EXPECT_TRUE(trunnion::IsFinite(trunnion::kIdentityAffine.e));
}

} // namespace
