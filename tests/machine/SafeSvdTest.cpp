#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "IkStream.h"
#include "machine/Rig.h"
#include "support/Bits.h"

namespace
{

using test::BitsOf;
using test::Diagonal;
using test::ExpectNear;
using test::MatrixOf;
using test::Values;
using Matrix = TNT::Array2D<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Svd
{
    Matrix u;
    Matrix v;
    TNT::Array1D<double> s;
    int rank{-1};

    Values Singular() const
    {
        Values values;
        for (int i = 0; i < s.dim(); ++i) {
            values.push_back(s[i]);
        }
        return values;
    }
};

Svd Decompose(Matrix matrix)
{
    IkStream stream;
    Svd svd{MatrixOf({{9}}), MatrixOf({{9}}), TNT::Array1D<double>(5, 9.0), -1};
    stream.SafeSVDCalc(matrix, svd.u, svd.v, svd.s, svd.rank);
    return svd;
}

Matrix Transposed(const Matrix& matrix)
{
    Matrix transposed(matrix.dim2(), matrix.dim1());
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            transposed[j][i] = matrix[i][j];
        }
    }
    return transposed;
}

/// The product u diag(s / scale) v' is `matrix`.
void ExpectProduct(const Svd& svd, const Matrix& matrix, double scale, double tolerance)
{
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            double sum = 0;
            for (int k = 0; k < svd.s.dim(); ++k) {
                sum += svd.u[i][k] * (svd.s[k] / scale) * svd.v[j][k];
            }
            EXPECT_NEAR(sum, matrix[i][j], tolerance) << i << ", " << j;
        }
    }
}

/// The columns that belong to a singular value are unit vectors at right angles.
void ExpectOrthonormal(const Matrix& columns, int count)
{
    for (int a = 0; a < count; ++a) {
        for (int b = 0; b < count; ++b) {
            double dot = 0;
            for (int i = 0; i < columns.dim1(); ++i) {
                dot += columns[i][a] * columns[i][b];
            }
            EXPECT_NEAR(dot, a == b ? 1 : 0, 1e-14) << a << ", " << b;
        }
    }
}

struct Row
{
    std::string name;
    Matrix matrix;
    Values singular; // derived beside each row
    int rank;
};

std::vector<Row> Matrices()
{
    return {
        {"square diagonal", Diagonal({3, -5, 1}), {5, 3, 1}, 3},
        {"one number", MatrixOf({{-4}}), {4}, 1},
        {"column", MatrixOf({{3}, {4}}), {5}, 1},
        {"row", MatrixOf({{3, 4}}), {5}, 1},
        // A'A = [[2, 1], [1, 2]]
        {"tall", MatrixOf({{1, 0}, {0, 1}, {1, 1}}), {std::sqrt(3.0), 1}, 2},
        {"wide", MatrixOf({{1, 0, 1}, {0, 1, 1}}), {std::sqrt(3.0), 1}, 2},
        // (1, 2, 3) (1, 2)': the product of the norms
        {"tall of rank 1", MatrixOf({{1, 2}, {2, 4}, {3, 6}}), {std::sqrt(70.0), 0}, 1},
        {"wide of rank 1", MatrixOf({{1, 2, 3}, {2, 4, 6}}), {std::sqrt(70.0), 0}, 1},
        {"square of rank 1", MatrixOf({{1, 1}, {1, 1}}), {2, 0}, 1},
        {"zero", Matrix(3, 2, 0.0), {0, 0}, 0},
        // A symmetric matrix with eigenvalues a + 2b, a - b, a - b: 0.7, 0.4, 0.4
        {"entries below one",
         MatrixOf({{.5, .1, .1}, {.1, .5, .1}, {.1, .1, .5}}),
         {.7, .4, .4},
         3},
        // A'A = [[.25, .25], [.25, .5]] with eigenvalues (3 +- sqrt(5)) / 8
        {"triangle below one",
         MatrixOf({{.5, .5}, {0, .5}}),
         {std::sqrt((3 + std::sqrt(5.0)) / 8), std::sqrt((3 - std::sqrt(5.0)) / 8)},
         2},
        // The unit columns (.6, .8) and (.8, -.6) times .9 and .1
        {"tall below one", MatrixOf({{.54, .08}, {.72, -.06}, {0, 0}}), {.9, .1}, 2},
        {"wide below one", MatrixOf({{.54, .72, 0}, {.08, -.06, 0}}), {.9, .1}, 2},
        // A path's eigenvalues: 2 cos(k pi / 6) / 10 for k = 1 to 5
        {"path of five below one",
         MatrixOf({{0, .1, 0, 0, 0},
                   {.1, 0, .1, 0, 0},
                   {0, .1, 0, .1, 0},
                   {0, 0, .1, 0, .1},
                   {0, 0, 0, .1, 0}}),
         {.1 * std::sqrt(3.0), .1 * std::sqrt(3.0), .1, .1, 0},
         4},
        {"millionths",
         MatrixOf({{1e-6, 1e-6}, {0, 1e-6}, {1e-6, 0}}),
         // A'A = 1e-12 [[2, 1], [1, 2]]
         {1e-6 * std::sqrt(3.0), 1e-6},
         2},
        // Negligible is at most the larger side times the largest times eps: 4.4e-16
        {"small but not negligible", Diagonal({1, 1e-15}), {1, 1e-15}, 2},
        {"negligible", Diagonal({1, 4e-16}), {1, 4e-16}, 1},
    };
}

TEST(SafeSvd, GivesTheMatrixBack)
{
    for (const Row& row : Matrices()) {
        SCOPED_TRACE(row.name);
        const Svd svd = Decompose(row.matrix);
        ExpectNear(svd.Singular(), row.singular, 1e-14);
        EXPECT_EQ(svd.rank, row.rank);
        const int m = row.matrix.dim1();
        const int n = row.matrix.dim2();
        const int side = std::min(m, n);
        EXPECT_EQ(std::vector<int>({svd.u.dim1(), svd.u.dim2(), svd.v.dim1(), svd.v.dim2()}),
                  std::vector<int>({m, side, n, side}));
        ExpectProduct(svd, row.matrix, 1, 1e-14);
        ExpectOrthonormal(svd.u, row.rank);
        ExpectOrthonormal(svd.v, row.rank);
    }
}

TEST(SafeSvd, DecomposesAWideMatrixThroughItsTranspose)
{
    for (const Row& row : Matrices()) {
        const Matrix transposed = Transposed(row.matrix);
        if (transposed.dim1() == transposed.dim2()) {
            continue; // neither of the two is wide
        }
        SCOPED_TRACE(row.name);
        const Svd svd = Decompose(row.matrix);
        const Svd ofTransposed = Decompose(transposed);
        EXPECT_EQ(BitsOf(svd.u), BitsOf(ofTransposed.v));
        EXPECT_EQ(BitsOf(svd.v), BitsOf(ofTransposed.u));
        EXPECT_EQ(svd.Singular(), ofTransposed.Singular());
        EXPECT_EQ(svd.rank, ofTransposed.rank);
    }
}

TEST(SafeSvd, OnlyReadsTheMatrix)
{
    for (const Row& row : Matrices()) {
        const auto before = BitsOf(row.matrix);
        Decompose(row.matrix); // shares its storage
        EXPECT_EQ(BitsOf(row.matrix), before) << row.name;
    }
}

void ExpectNothing(const Svd& svd, int rows, int cols)
{
    EXPECT_EQ(svd.rank, 0);
    EXPECT_EQ(svd.s.dim(), 0);
    EXPECT_EQ(svd.u.dim1(), rows);
    EXPECT_EQ(svd.u.dim2(), 0);
    EXPECT_EQ(svd.v.dim1(), cols);
    EXPECT_EQ(svd.v.dim2(), 0);
}

TEST(SafeSvd, OfAnEmptyMatrixHasRankZero)
{
    ExpectNothing(Decompose(Matrix()), 0, 0);
    ExpectNothing(Decompose(Matrix(6, 0)), 6, 0);
    ExpectNothing(Decompose(Matrix(0, 3)), 0, 3);
    ExpectNothing(Decompose(Matrix(0, 1)), 0, 1);
}

TEST(SafeSvd, OfAMatrixWithANanOrInfinityHasRankZero)
{
    for (const double bad : {kNan, -kNan, kInfinity, -kInfinity}) {
        for (const auto& [rows, cols] :
             {std::pair(1, 1), std::pair(3, 3), std::pair(6, 2), std::pair(2, 6)}) {
            for (int at = 0; at < rows * cols; ++at) {
                Matrix matrix(rows, cols, 0.5);
                matrix[at / cols][at % cols] = bad;
                ExpectNothing(Decompose(matrix), rows, cols);
            }
        }
    }
}

TEST(SafeSvd, EndsOnDenormalAndOnHugeMatrices)
{
    const std::vector<Matrix> shapes{
        MatrixOf({{1, 0}, {0, 1}, {1, 1}}),
        MatrixOf({{1, 0, 1}, {0, 1, 1}}),
        // Without scaling these never end at 2^-1022, 2^-1030 and 2^-1050.
        MatrixOf({{6, -6, -5}, {5, -6, 5}, {7, -8, -1}}),
        MatrixOf({{2, -8, 7}, {0, 1, 1}, {8, 0, 9}}),
        MatrixOf({{-3, 0, 0}, {3, -5, -5}, {-6, 0, 4}}),
    };
    for (const Matrix& shape : shapes) {
        const int side = std::min(shape.dim1(), shape.dim2()); // all of full rank
        for (const int exponent :
             {-1070, -1050, -1030, -1022, -962, -961, -960, -959, 0, 999, 1000, 1001, 1019}) {
            SCOPED_TRACE(exponent);
            const double scale = std::ldexp(1.0, exponent);
            Matrix matrix = shape.copy();
            for (int i = 0; i < matrix.dim1(); ++i) {
                for (int j = 0; j < matrix.dim2(); ++j) {
                    matrix[i][j] *= scale;
                }
            }
            const Svd svd = Decompose(matrix);
            EXPECT_EQ(svd.rank, side);
            // Three denormal singular values are rounded to whole numbers of the smallest steps.
            const double rounding = std::max(1e-13, 3 * std::ldexp(1.0, -1074 - exponent));
            ExpectProduct(svd, shape, scale, rounding);
            ExpectOrthonormal(svd.u, side);
            ExpectOrthonormal(svd.v, side);
        }
    }
}

TEST(SafeSvd, GivesTheSameDigitsAtEveryPowerOfTwo)
{
    const auto singular = [](int exponent) {
        const double scale = std::ldexp(1.0, exponent);
        const Svd svd = Decompose(MatrixOf({{.75 * scale, scale / 256}, {0, .5 * scale}}));
        Values values;
        for (const double value : svd.Singular()) {
            values.push_back(std::ldexp(value, -exponent));
        }
        return values;
    };
    const Values values = singular(0);
    // The squares add up to those of the entries, the product is the determinant.
    EXPECT_NEAR(values[0] * values[0] + values[1] * values[1], .5625 + .25 + 1 / 65536., 1e-15);
    EXPECT_NEAR(values[0] * values[1], .375, 1e-15);
    for (const int exponent : {-1010, -1000, -961, -960, -959, -900, 900, 1000, 1020}) {
        EXPECT_EQ(singular(exponent), values) << exponent;
    }
}

TEST(SafeSvd, OfAMatrixOnWhichTheIterationStallsHasRankZero)
{
    // A one, so that nothing is scaled, beside a block of denormal numbers.
    const std::vector<Values> block{{6, -15}, {14, -14}, {-9, -15}};
    Matrix tall(4, 3, 0.0);
    tall[0][0] = 1;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 2; ++j) {
            tall[i + 1][j + 1] = block[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] *
                                 std::numeric_limits<double>::denorm_min();
        }
    }
    ExpectNothing(Decompose(tall), 4, 3);
    ExpectNothing(Decompose(Transposed(tall)), 3, 4);
}

TEST(SafeSvd, EndsWhereTheNormOfAColumnOverflows)
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
    for (const double entry : {kLargest, -kLargest, kSmallest, -kSmallest}) {
        for (const auto& [rows, cols] : {std::pair(1, 1), std::pair(6, 3), std::pair(3, 6)}) {
            const Svd svd = Decompose(Matrix(rows, cols, entry));
            EXPECT_EQ(svd.rank, 1);
            EXPECT_NEAR(std::fabs(svd.u[0][0]), 1 / std::sqrt(rows), 1e-14);
            EXPECT_NEAR(std::fabs(svd.v[0][0]), 1 / std::sqrt(cols), 1e-14);
        }
    }
}

TEST(SafeSvd, DoesNotScaleUpToTwoToTheThousand)
{
    const double smallest = std::numeric_limits<double>::denorm_min(); // no scaling down keeps it
    for (const double largest : {1024.0, std::ldexp(1.0, 1000)}) {
        const Svd svd = Decompose(Diagonal({largest, smallest}));
        EXPECT_EQ(svd.Singular(), (Values{largest, smallest}));
        EXPECT_EQ(svd.rank, 1);
    }
}

} // namespace
