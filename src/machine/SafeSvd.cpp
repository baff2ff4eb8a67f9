#include "machine/SafeSvd.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>

#include <jama/jama_svd.h>

#include "machine/Arrays.h"

namespace trunnion
{

thread_local long countedTestsLeft [[gnu::tls_model("initial-exec")]] = 0;

namespace
{

// Where the iteration of the decomposition would not end: its thresholds underflow below the first
// and the norm of a column may overflow above the second.
const double kSmallestMagnitude = std::ldexp(1.0, -960);
const double kLargestMagnitude = std::ldexp(1.0, 1000);

/// The largest magnitude, or infinity or NaN where an element is not finite.
double LargestMagnitude(const JointMatrix& matrix)
{
    // Without their sign, doubles are in the order of their bits, infinities and NaN above the
    // rest.
    std::uint64_t largest = 0;
    const double* elements = matrix[0];
    for (int i = 0; i < matrix.Rows() * matrix.Cols(); ++i) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &elements[i], sizeof bits);
        largest = std::max(largest, bits & ~(std::uint64_t{1} << 63U));
    }
    double magnitude = 0.0;
    std::memcpy(&magnitude, &largest, sizeof magnitude);
    return magnitude;
}

/// Sets `tall` to the matrix, or its transpose where that is the taller.
void SetToTall(const JointMatrix& matrix, bool isWide, CountedArray& tall)
{
    const int rows = isWide ? matrix.Cols() : matrix.Rows();
    const int cols = isWide ? matrix.Rows() : matrix.Cols();
    if (tall.dim1() != rows || tall.dim2() != cols) {
        tall = CountedArray(rows, cols);
    }
    if (!isWide) {
        std::copy_n(matrix[0], std::ptrdiff_t{rows} * cols, tall[0]);
        return;
    }
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            tall[i][j] = matrix[j][i];
        }
    }
}

void TimesPowerOfTwo(CountedArray& array, int exponent)
{
    for (int i = 0; i < array.dim1(); ++i) {
        for (int j = 0; j < array.dim2(); ++j) {
            array[i][j] = std::ldexp(array[i][j], exponent);
        }
    }
}

/// Decomposes the matrix times a power of two and takes that out of the singular values again.
void Decompose(const JointMatrix& matrix, int exponent, Decomposition& result)
{
    const bool isWide = matrix.Rows() < matrix.Cols();
    SetToTall(matrix, isWide, result.tall);
    if (exponent != 0) {
        TimesPowerOfTwo(result.tall, exponent);
    }
    Counted::Allow(std::min(matrix.Rows(), matrix.Cols()));
    JAMA::SVD<Counted> svd(result.tall);
    svd.getU(isWide ? result.v : result.u);
    svd.getV(isWide ? result.u : result.v);
    svd.getSingularValues(result.s);
    result.rank = svd.rank();
    for (int i = 0; exponent != 0 && i < result.s.dim(); ++i) {
        result.s[i] = std::ldexp(result.s[i], -exponent);
    }
}

void SetToNothing(const JointMatrix& matrix, Decomposition& nothing)
{
    nothing.u = CountedArray(matrix.Rows(), 0);
    nothing.v = CountedArray(matrix.Cols(), 0);
    nothing.s = TNT::Array1D<Counted>();
    nothing.rank = 0;
}

/// Extreme matrices are scaled by a power of two; every other one goes in as it is.
int ScalingExponent(double largest)
{
    const bool isExtreme =
        largest > kLargestMagnitude || (largest < kSmallestMagnitude && largest != 0.0);
    return isExtreme ? -std::ilogb(largest) : 0;
}

} // namespace

void SafeSvd(const JointMatrix& matrix, Decomposition& svd)
{
    const double largest = LargestMagnitude(matrix);
    if (matrix.Rows() == 0 || matrix.Cols() == 0 || !std::isfinite(largest)) {
        SetToNothing(matrix, svd);
        return;
    }
    try {
        Decompose(matrix, ScalingExponent(largest), svd);
    } catch (const Unending&) {
        SetToNothing(matrix, svd);
    }
}

void SafeSvd(const TNT::Array2D<double>& matrix, TNT::Array2D<double>& u, TNT::Array2D<double>& v,
             TNT::Array1D<double>& singularValues, int& rank)
{
    JointMatrix copy;
    FromArray(matrix, copy);
    Decomposition svd;
    SafeSvd(copy, svd);
    u = ToArray<double>(svd.u);
    v = ToArray<double>(svd.v);
    singularValues = TNT::Array1D<double>(svd.s.dim());
    for (int i = 0; i < svd.s.dim(); ++i) {
        singularValues[i] = svd.s[i];
    }
    rank = svd.rank;
}

} // namespace trunnion
