#include "geometry/Compose.h"

#include <gtest/gtest.h>

#include "Matrices.h"
#include "support/Bits.h"

namespace
{

using test::BitsOf;
using test::ElementsOf;
using test::Numbered;
using trunnion::Compose;

TEST(Compose, IsTheMatrixProductToTheLastBit)
{
    test::Random random(1);
    for (int i = 0; i < 2000; ++i) {
        const IkXformMat a = test::RandomMatrix(random, 4, 4);
        const IkXformMat b = test::RandomMatrix(random, 4, 4);
        ASSERT_EQ(BitsOf(Compose(a, b)), BitsOf(a * b)) << "case " << i;
    }
}

TEST(Compose, SumsFromPositiveZero)
{
    const IkXformMat negativeZeros = TNT::Matrix<double>(4, 4, -0.0);
    EXPECT_EQ(BitsOf(Compose(IkXformMat(), negativeZeros)), BitsOf(TNT::Matrix<double>(4, 4, 0.0)));
}

TEST(Compose, MayTakeOneTransformAsBothFactors)
{
    IkXformMat m = IkXformMat::Translate(1, 2, 3);
    m = Compose(m, m);
    EXPECT_EQ(ElementsOf(m), ElementsOf(IkXformMat::Translate(2, 4, 6)));
}

TEST(Compose, CountsWhatAFactorOfAnotherShapeLacksAsZero)
{
    const std::vector<double> expected{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 0};
    const IkXformMat threeByThree = Numbered(3, 3);
    EXPECT_EQ(ElementsOf(Compose(threeByThree, IkXformMat())), expected);
    EXPECT_EQ(ElementsOf(Compose(IkXformMat(), threeByThree)), expected);
}

TEST(Compose, StaysWithinFactorsOfAnyShape)
{
    for (const int rows : {0, 1, 3, 4, 7}) {
        for (const int cols : {0, 1, 3, 4, 7}) {
            const IkXformMat other = Numbered(rows, cols);
            const IkXformMat square(other); // the copy is 4x4
            const IkXformMat t = IkXformMat::Translate(1, 2, 3);
            EXPECT_EQ(BitsOf(Compose(other, t)), BitsOf(square * t)) << rows << "x" << cols;
            EXPECT_EQ(BitsOf(Compose(t, other)), BitsOf(t * square)) << rows << "x" << cols;
        }
    }
}

} // namespace
