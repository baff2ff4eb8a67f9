#include "machine/SafeSvd.h"

#include <algorithm>
#include <cmath>

#include <jama/jama_svd.h>

namespace trunnion
{

namespace
{

using Matrix = TNT::Array2D<double>;

// Where the iteration of the decomposition would not end: its thresholds underflow below the first
// and the norm of a column may overflow above the second.
const double kSmallestMagnitude = std::ldexp(1.0, -960);
const double kLargestMagnitude = std::ldexp(1.0, 1000);

/// The largest magnitude, or NaN or infinity when there is one.
double LargestMagnitude(const Matrix& matrix)
{
    double largest = 0.0;
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            const double magnitude = std::fabs(matrix[i][j]);
            if (!std::isfinite(magnitude)) {
                return magnitude;
            }
            largest = std::max(largest, magnitude);
        }
    }
    return largest;
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

Matrix TimesPowerOfTwo(const Matrix& matrix, int exponent)
{
    Matrix scaled(matrix.dim1(), matrix.dim2());
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            scaled[i][j] = std::ldexp(matrix[i][j], exponent);
        }
    }
    return scaled;
}

Decomposition Decompose(const Matrix& matrix)
{
    const bool isWide = matrix.dim1() < matrix.dim2();
    JAMA::SVD<double> svd(isWide ? Transposed(matrix) : matrix);
    Decomposition result;
    svd.getU(isWide ? result.v : result.u);
    svd.getV(isWide ? result.u : result.v);
    svd.getSingularValues(result.s);
    result.rank = svd.rank();
    return result;
}

} // namespace

Decomposition SafeSvd(const Matrix& matrix)
{
    const double largest = LargestMagnitude(matrix);
    if (matrix.dim1() == 0 || matrix.dim2() == 0 || !std::isfinite(largest)) {
        Decomposition nothing;
        nothing.u = Matrix(matrix.dim1(), 0);
        nothing.v = Matrix(matrix.dim2(), 0);
        return nothing;
    }
    const bool isExtreme =
        largest > kLargestMagnitude || (largest < kSmallestMagnitude && largest != 0.0);
    if (!isExtreme) {
        return Decompose(matrix);
    }
    const int exponent = std::ilogb(largest);
    Decomposition result = Decompose(TimesPowerOfTwo(matrix, -exponent));
    for (int i = 0; i < result.s.dim(); ++i) {
        result.s[i] = std::ldexp(result.s[i], exponent);
    }
    return result;
}

} // namespace trunnion
