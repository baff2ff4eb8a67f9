#include "machine/SafeSvd.h"

#include <algorithm>
#include <cmath>
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

/// The largest magnitude; NaN when an element is not finite.
double LargestMagnitude(const JointMatrix& matrix)
{
    double largest = 0.0;
    double sum = 0.0; // of differences that are 0, or NaN
    const int count = matrix.Rows() * matrix.Cols();
    const double* elements = matrix[0];
    for (int i = 0; i < count; ++i) {
        largest = std::max(largest, std::fabs(elements[i]));
        sum += elements[i] - elements[i]; // NOLINT(misc-redundant-expression)
    }
    return largest + sum;
}

/// Sets `array` to the matrix, or its transpose where that is the taller, times a power of two.
void SetToTall(const JointMatrix& matrix, bool isWide, int exponent, CountedArray& array)
{
    const int rows = isWide ? matrix.Cols() : matrix.Rows();
    const int cols = isWide ? matrix.Rows() : matrix.Cols();
    if (array.dim1() != rows || array.dim2() != cols) {
        array = CountedArray(rows, cols);
    }
    for (int i = 0; i < rows; ++i) {
        Counted* row = array[i];
        for (int j = 0; j < cols; ++j) {
            const double element = isWide ? matrix[j][i] : matrix[i][j];
            row[j] = exponent == 0 ? element : std::ldexp(element, exponent);
        }
    }
}

void CopyColumns(const CountedArray& array, JointMatrix& rows)
{
    rows.Resize(array.dim2(), array.dim1());
    for (int i = 0; i < array.dim1(); ++i) {
        const Counted* row = array[i];
        for (int j = 0; j < array.dim2(); ++j) {
            rows[j][i] = row[j];
        }
    }
}

/// Decomposes the matrix times a power of two and takes that out of the singular values again.
void Decompose(const JointMatrix& matrix, int exponent, Decomposition& result)
{
    const bool isWide = matrix.Rows() < matrix.Cols();
    SetToTall(matrix, isWide, exponent, result.tall);
    Counted::Allow(std::min(matrix.Rows(), matrix.Cols()));
    JAMA::SVD<Counted> svd(result.tall);
    CountedArray u;
    CountedArray v;
    TNT::Array1D<Counted> s;
    svd.getU(u);
    svd.getV(v);
    svd.getSingularValues(s);

    CopyColumns(isWide ? v : u, result.u);
    CopyColumns(isWide ? u : v, result.v);
    result.s.Resize(1, s.dim());
    for (int i = 0; i < s.dim(); ++i) {
        result.s[0][i] = exponent == 0 ? double{s[i]} : std::ldexp(s[i], -exponent);
    }
    result.rank = svd.rank();
}

void SetToNothing(const JointMatrix& matrix, Decomposition& nothing)
{
    nothing.u.Resize(0, matrix.Rows());
    nothing.v.Resize(0, matrix.Cols());
    nothing.s.Resize(1, 0);
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
    u = ToColumns(svd.u);
    v = ToColumns(svd.v);
    singularValues = TNT::Array1D<double>(svd.s.Cols());
    for (int i = 0; i < svd.s.Cols(); ++i) {
        singularValues[i] = svd.s[0][i];
    }
    rank = svd.rank;
}

} // namespace trunnion
