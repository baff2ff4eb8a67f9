#include "IkXformMat.h"

#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

#include "Matrices.h"
#include "support/Bits.h"

namespace
{

using test::BitsOf;
using test::Distance;
using test::ElementsOf;
using test::MapPoint;
using test::MatrixOf;
using test::Numbered;
using Point = std::array<double, 3>;

constexpr double kHalfPi = 1.5707963267948966;

const std::vector<double> kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// Rows by columns that are not 4x4.
const std::vector<std::pair<int, int>> kOtherShapes{{0, 0}, {1, 1}, {3, 3}, {4, 3}, {3, 4},
                                                    {2, 8}, {8, 2}, {5, 5}, {9, 4}, {4, 9}};

std::string ShapeName(const std::pair<int, int>& shape)
{
    return std::to_string(shape.first) + "x" + std::to_string(shape.second);
}

bool HasShape(const IkXformMat& m, int rows, int cols)
{
    return m.num_rows() == rows && m.num_cols() == cols && m.size() == rows * cols;
}

/// `onto` with its first stored elements, sixteen at most, replaced by those of `from`.
std::vector<double> LeadingReplaced(std::vector<double> onto, const std::vector<double>& from)
{
    const std::size_t count = std::min({std::size_t{16}, onto.size(), from.size()});
    std::copy_n(from.begin(), count, onto.begin());
    return onto;
}

TEST(XformMat, AddsToTheMatrixNothingButAVirtualDestructor)
{
    static_assert(std::is_base_of_v<TNT::Matrix<double>, IkXformMat>);
    static_assert(std::has_virtual_destructor_v<IkXformMat>);
    EXPECT_EQ(sizeof(IkXformMat), sizeof(TNT::Matrix<double>) + sizeof(void*));
}

TEST(XformMat, IsTheIdentityByDefault)
{
    const IkXformMat m;
    EXPECT_TRUE(HasShape(m, 4, 4));
    EXPECT_EQ(BitsOf(m), BitsOf(MatrixOf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})));
}

TEST(XformMat, IsAccessedFromZeroAndFromOne)
{
    IkXformMat m = Numbered(4, 4);
    EXPECT_EQ(m[1][3], 8.0);
    EXPECT_EQ(m(2, 4), 8.0);
    m(1, 1) = -5.0;
    EXPECT_EQ(m[0][0], -5.0);
}

TEST(XformMat, EyeMakesTheIdentity)
{
    IkXformMat m = Numbered(4, 4);
    m.Eye();
    EXPECT_EQ(BitsOf(m), BitsOf(IkXformMat()));
}

TEST(XformMat, NullMotionsEqualTheIdentity)
{
    for (const IkXformMat& m : {IkXformMat::Translate(0, 0, 0), IkXformMat::RotX(0),
                                IkXformMat::RotY(0), IkXformMat::RotZ(0)}) {
        EXPECT_EQ(ElementsOf(m), kIdentity);
    }
}

TEST(XformMat, RotationsNegateTheSineOnOneSide)
{
    for (const double a : {0.3, -2.0, kHalfPi, 0.0, -0.0, 3.141592653589793, 1e10}) {
        const double c = std::cos(a);
        const double s = std::sin(a);
        EXPECT_EQ(BitsOf(IkXformMat::RotX(a)),
                  BitsOf(MatrixOf({1, 0, 0, 0, 0, c, -s, 0, 0, s, c, 0, 0, 0, 0, 1})));
        EXPECT_EQ(BitsOf(IkXformMat::RotY(a)),
                  BitsOf(MatrixOf({c, 0, s, 0, 0, 1, 0, 0, -s, 0, c, 0, 0, 0, 0, 1})));
        EXPECT_EQ(BitsOf(IkXformMat::RotZ(a)),
                  BitsOf(MatrixOf({c, -s, 0, 0, s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})));
    }
}

TEST(XformMat, RotationsTurnRightHanded)
{
    const auto isNear = [](const Point& a, const Point& b) {
        return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]) < 1e-15;
    };
    EXPECT_TRUE(isNear(MapPoint(IkXformMat::RotZ(kHalfPi), {1, 0, 0}), {0, 1, 0}));
    EXPECT_TRUE(isNear(MapPoint(IkXformMat::RotX(kHalfPi), {0, 1, 0}), {0, 0, 1}));
    EXPECT_TRUE(isNear(MapPoint(IkXformMat::RotY(kHalfPi), {0, 0, 1}), {1, 0, 0}));
}

TEST(XformMat, TranslateFillsTheLastColumn)
{
    EXPECT_EQ(BitsOf(IkXformMat::Translate(1.5, -0.0, -3)),
              BitsOf(MatrixOf({1, 0, 0, 1.5, 0, 1, 0, -0.0, 0, 0, 1, -3, 0, 0, 0, 1})));
}

TEST(XformMat, MotionsOfThisAreProductsOnTheRight)
{
    test::Random random(2);
    for (int i = 0; i < 200; ++i) {
        const IkXformMat start =
            random.OneIn(2) ? test::RandomRigid(random) : test::RandomMatrix(random, 4, 4);
        const double a = random.Between(-7, 7);
        IkXformMat x(start);
        IkXformMat y(start);
        IkXformMat z(start);
        IkXformMat t(start);
        x.RotXThis(a);
        y.RotYThis(a);
        z.RotZThis(a);
        t.TranslateThis(a, 2, -3);
        ASSERT_EQ(BitsOf(x), BitsOf(start * IkXformMat::RotX(a)));
        ASSERT_EQ(BitsOf(y), BitsOf(start * IkXformMat::RotY(a)));
        ASSERT_EQ(BitsOf(z), BitsOf(start * IkXformMat::RotZ(a)));
        ASSERT_EQ(BitsOf(t), BitsOf(start * IkXformMat::Translate(a, 2, -3)));
    }
}

TEST(XformMat, OffsetsFollowTheTurnedAxes)
{
    IkXformMat m;
    m.RotZThis(kHalfPi);
    m.TranslateThis(1, 0, 0);
    EXPECT_NEAR(m[0][3], 0.0, 1e-15);
    EXPECT_EQ(m[1][3], 1.0);
    EXPECT_EQ(m[2][3], 0.0);
}

TEST(XformMat, CopiesAreFourByFourWhateverTheSource)
{
    for (const auto& shape : kOtherShapes) {
        const IkXformMat source = Numbered(shape.first, shape.second);
        const IkXformMat copy(source);
        ASSERT_TRUE(HasShape(copy, 4, 4)) << ShapeName(shape);
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                const bool isThere = i < shape.first && j < shape.second;
                EXPECT_EQ(copy[i][j], isThere ? source[i][j] : 0.0) << ShapeName(shape);
            }
        }
    }
}

TEST(XformMat, CopiesHaveTheirOwnStorage)
{
    const IkXformMat source = Numbered(4, 4);
    IkXformMat copy(source);
    EXPECT_EQ(BitsOf(copy), BitsOf(source));
    copy[2][1] = 99.0;
    EXPECT_EQ(source[2][1], 10.0);
}

TEST(XformMat, TakesTheShapeOfAPlainMatrix)
{
    for (const auto& shape : kOtherShapes) {
        const TNT::Matrix<double> plain = Numbered(shape.first, shape.second);
        const IkXformMat m(plain);
        EXPECT_TRUE(HasShape(m, shape.first, shape.second)) << ShapeName(shape);
        EXPECT_EQ(BitsOf(m), BitsOf(plain)) << ShapeName(shape);
    }
}

TEST(XformMat, AssignmentReplacesAllSixteenElements)
{
    const IkXformMat source = Numbered(4, 4);
    IkXformMat fromTransform;
    IkXformMat fromMatrix;
    EXPECT_EQ(&(fromTransform = source), &fromTransform);
    EXPECT_EQ(&(fromMatrix = Numbered(4, 4)), &fromMatrix);
    EXPECT_EQ(BitsOf(fromTransform), BitsOf(source));
    EXPECT_EQ(BitsOf(fromMatrix), BitsOf(source));
}

TEST(XformMat, AssignmentToItselfChangesNothing)
{
    IkXformMat m = Numbered(4, 4);
    const IkXformMat& same = m;
    const TNT::Matrix<double>& samePlain = m;
    m = same;
    EXPECT_EQ(BitsOf(m), BitsOf(Numbered(4, 4)));
    m = samePlain;
    EXPECT_EQ(BitsOf(m), BitsOf(Numbered(4, 4)));
}

// Stored elements are copied, not places: from a 3x4 source the fourth row stays.
TEST(XformMat, AssignmentNeverResizesAndCopiesSixteenStoredElements)
{
    for (const auto& shape : kOtherShapes) {
        const TNT::Matrix<double> plain = Numbered(shape.first, shape.second);
        const IkXformMat other(plain);

        IkXformMat fromTransform;
        IkXformMat fromMatrix;
        fromTransform = other;
        fromMatrix = plain;
        EXPECT_TRUE(HasShape(fromTransform, 4, 4)) << ShapeName(shape);
        EXPECT_EQ(ElementsOf(fromTransform), LeadingReplaced(kIdentity, ElementsOf(other)));
        EXPECT_EQ(ElementsOf(fromMatrix), LeadingReplaced(kIdentity, ElementsOf(other)));

        for (const auto& sourceShape : kOtherShapes) {
            const IkXformMat source = TNT::Matrix<double>(sourceShape.first, sourceShape.second);
            IkXformMat target(plain);
            target = source;
            EXPECT_TRUE(HasShape(target, shape.first, shape.second)) << ShapeName(shape);
            EXPECT_EQ(ElementsOf(target), LeadingReplaced(ElementsOf(other), ElementsOf(source)))
                << ShapeName(shape) << " from " << ShapeName(sourceShape);
        }
    }
}

TEST(XformMat, QuickInvertUndoesARigidTransform)
{
    test::Random random(3);
    for (int i = 0; i < 200; ++i) {
        const IkXformMat m = test::RandomRigid(random);
        const IkXformMat source(m);
        EXPECT_LT(Distance(m.QuickInvert() * m, IkXformMat()), 2e-12); // lengths up to 2000
        EXPECT_LT(Distance(m * m.QuickInvert(), IkXformMat()), 2e-12);
        EXPECT_EQ(BitsOf(m), BitsOf(source));
    }
}

// Row i of the result: column i of the rotation block, then minus its product with (4, 8, 12):
// -(1*4 + 5*8 + 9*12) = -152, -(2*4 + 6*8 + 10*12) = -176, -(3*4 + 7*8 + 11*12) = -200.
TEST(XformMat, QuickInvertTransposesAnyMatrixAndIgnoresItsBottomRow)
{
    const IkXformMat inverse = IkXformMat(Numbered(4, 4)).QuickInvert();
    EXPECT_EQ(ElementsOf(inverse),
              (std::vector<double>{1, 5, 9, -152, 2, 6, 10, -176, 3, 7, 11, -200, 0, 0, 0, 1}));
}

TEST(XformMat, QuickInvertSumsTheOffsetFromPositiveZero)
{
    EXPECT_EQ(BitsOf(IkXformMat().QuickInvert()), BitsOf(IkXformMat()));
    EXPECT_EQ(BitsOf(IkXformMat::Translate(-0.0, 0, 5).QuickInvert()),
              BitsOf(IkXformMat::Translate(0, 0, -5)));
}

TEST(XformMat, QuickInvertThisStoresTheInverse)
{
    test::Random random(4);
    const IkXformMat m = test::RandomRigid(random);
    IkXformMat inverted(m);
    inverted.QuickInvertThis();
    EXPECT_EQ(BitsOf(inverted), BitsOf(m.QuickInvert()));
}

TEST(XformMat, ProductsOfElementaryMotionsAreOrthogonal)
{
    test::Random random(5);
    for (int i = 0; i < 200; ++i) {
        EXPECT_TRUE(test::RandomRigid(random).IsOrthogonal(1e-6));
    }
}

TEST(XformMat, OrthogonalityIsOneSidedAndPartial)
{
    struct Case
    {
        const char* what;
        std::array<double, 9> rows;
        double tol;
        bool isOrthogonal;
    };
    // p is the triple product's magnitude, q that of the product of rows 0 and 1.
    const std::vector<Case> cases{
        {"identity", {1, 0, 0, 0, 1, 0, 0, 0, 1}, 1e-300, true},
        {"nothing passes a tolerance of 0", {1, 0, 0, 0, 1, 0, 0, 0, 1}, 0.0, false},
        {"nor a scale up", {2, 0, 0, 0, 2, 0, 0, 0, 2}, 0.0, false},
        {"nor a negative tolerance", {2, 0, 0, 0, 2, 0, 0, 0, 2}, -1.0, false},
        {"mirror, triple product -1", {1, 0, 0, 0, 1, 0, 0, 0, -1}, 1e-6, true},
        {"scaled up, 1 - p = -7", {2, 0, 0, 0, 2, 0, 0, 0, 2}, 1e-6, true},
        {"scaled down, 1 - p = 0.271", {0.9, 0, 0, 0, 0.9, 0, 0, 0, 0.9}, 0.27, false},
        {"scaled down, tolerance above", {0.9, 0, 0, 0, 0.9, 0, 0, 0, 0.9}, 0.28, true},
        {"1 - p = 0.5 equal to tol", {1, 0, 0, 0, 1, 0, 0, 0, 0.5}, 0.5, false},
        {"1 - p = 0.5 below tol", {1, 0, 0, 0, 1, 0, 0, 0, 0.5}, 0.5000000001, true},
        {"p = 1, q = 0.5 equal to tol", {1, 0, 0, 0.5, 1, 0, 0, 0, 1}, 0.5, false},
        {"p = 1, q = 0.5 below tol", {1, 0, 0, 0.5, 1, 0, 0, 0, 1}, 0.5000000001, true},
        {"p = 1, q = |-0.5|", {1, 0, 0, -0.5, 1, 0, 0, 0, 1}, 0.25, false},
        {"row 2 askew", {1, 0, 0, 0, 1, 0, 5, 7, 1}, 1e-6, true},
        {"rows 0 and 1 of lengths 2 and 1/2", {2, 0, 0, 0, 0.5, 0, 0, 0, 1}, 1e-6, true},
        {"cyclic permutation", {0, 1, 0, 0, 0, 1, 1, 0, 0}, 1e-6, true},
        {"no volume", {1, 0, 0, 0, 1, 0, 1, 1, 0}, 0.9, false},
    };
    for (const Case& c : cases) {
        IkXformMat m = IkXformMat::Translate(10, 20, 30); // takes no part
        for (int i = 0; i < 9; ++i) {
            m[i / 3][i % 3] = c.rows.at(static_cast<std::size_t>(i));
        }
        EXPECT_EQ(m.IsOrthogonal(c.tol), c.isOrthogonal) << c.what;
    }
}

TEST(XformMat, EyeOfAnotherShapeWritesTheElementsThatAreThere)
{
    for (const auto& shape : kOtherShapes) {
        IkXformMat m = Numbered(shape.first, shape.second);
        m.Eye();
        for (int i = 0; i < shape.first; ++i) {
            for (int j = 0; j < shape.second; ++j) {
                const double untouched = i * shape.second + j + 1;
                const double one = i == j ? 1.0 : 0.0;
                EXPECT_EQ(m[i][j], i < 4 && j < 4 ? one : untouched) << ShapeName(shape);
            }
        }
    }
}

TEST(XformMat, OtherShapesAreReadAsTheirFourByFourCopy)
{
    for (const auto& shape : kOtherShapes) {
        const IkXformMat m = Numbered(shape.first, shape.second);
        const IkXformMat copy(m);
        EXPECT_EQ(BitsOf(m.QuickInvert()), BitsOf(copy.QuickInvert())) << ShapeName(shape);
        for (const double tol : {0.5, 2.0, 1e3}) {
            EXPECT_EQ(m.IsOrthogonal(tol), copy.IsOrthogonal(tol)) << ShapeName(shape);
        }
    }
    TNT::Matrix<double> turn(3, 3, 0.0);
    turn[0][1] = -1;
    turn[1][0] = 1;
    turn[2][2] = 1;
    EXPECT_TRUE(IkXformMat(turn).IsOrthogonal(1e-6));
    EXPECT_EQ(ElementsOf(IkXformMat(turn).QuickInvert()),
              (std::vector<double>{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(XformMat, MotionsOfAnotherShapeStayWithinItsStorage)
{
    for (const auto& shape : kOtherShapes) {
        const IkXformMat m = Numbered(shape.first, shape.second);
        const IkXformMat copy(m);
        const auto expectMotion = [&](void (IkXformMat::*motion)(double), const IkXformMat& right) {
            IkXformMat moved = Numbered(shape.first, shape.second);
            (moved.*motion)(0.3);
            EXPECT_TRUE(HasShape(moved, shape.first, shape.second)) << ShapeName(shape);
            EXPECT_EQ(ElementsOf(moved), LeadingReplaced(ElementsOf(m), ElementsOf(copy * right)))
                << ShapeName(shape);
        };
        expectMotion(&IkXformMat::RotXThis, IkXformMat::RotX(0.3));
        expectMotion(&IkXformMat::RotYThis, IkXformMat::RotY(0.3));
        expectMotion(&IkXformMat::RotZThis, IkXformMat::RotZ(0.3));

        IkXformMat offset = Numbered(shape.first, shape.second);
        offset.TranslateThis(1, 2, 3);
        EXPECT_EQ(ElementsOf(offset),
                  LeadingReplaced(ElementsOf(m), ElementsOf(copy * IkXformMat::Translate(1, 2, 3))))
            << ShapeName(shape);

        IkXformMat inverted = Numbered(shape.first, shape.second);
        inverted.QuickInvertThis();
        EXPECT_EQ(ElementsOf(inverted),
                  LeadingReplaced(ElementsOf(m), ElementsOf(copy.QuickInvert())))
            << ShapeName(shape);
    }
}

std::string Printed(const IkXformMat& m)
{
    std::ostringstream os;
    EXPECT_EQ(&(m << os), &os);
    return os.str();
}

TEST(XformMat, PrintsItsSizeThenItsRowsWithOneWidthAndNoSeparators)
{
    EXPECT_EQ(Printed(IkXformMat()), "4 4\n              1000\n0100\n0010\n0001\n");
    IkXformMat m = IkXformMat::Translate(-1.5, 1234567, 1.0 / 3);
    m[0][0] = 0.25;
    EXPECT_EQ(Printed(m), "4 4\n           0.2500-1.5\n0101.23457e+06\n0010.333333\n0001\n");
}

TEST(XformMat, PrintsAnyShape)
{
    EXPECT_EQ(Printed(Numbered(3, 2)), "3 2\n              12\n34\n56\n");
    EXPECT_EQ(Printed(Numbered(0, 0)), "0 0\n");
}

TEST(XformMat, PrintsInTheFormatOfTheStream)
{
    std::ostringstream os;
    os.precision(3);
    os.setf(std::ios::left, std::ios::adjustfield);
    IkXformMat(TNT::Matrix<double>(1, 2, 2.0 / 3)) << os;
    EXPECT_EQ(os.str(), "1 2\n0.667          0.667\n");
}

} // namespace
