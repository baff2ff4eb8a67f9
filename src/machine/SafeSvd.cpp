#include "machine/SafeSvd.h"

#include <algorithm>
#include <cmath>

#include <jama/jama_svd.h>

namespace trunnion
{

namespace
{

/// Thrown out of a decomposition whose iteration does not end.
struct Unending
{};

/// A double with which a decomposition computes as with any other, to the last bit, except that the
/// magnitudes it takes are counted. It takes them only to test for convergence, without a bound of
/// its own, and where intermediate values underflow it may go on testing for ever.
class Counted
{
  public:
    Counted() = default;
    Counted(double x) : value(x) {}
    operator double() const { return value; }
    Counted& operator+=(double x)
    {
        value += x;
        return *this;
    }
    Counted& operator/=(double x)
    {
        value /= x;
        return *this;
    }

    /// Allows a decomposition of `columns` columns its tests. A sweep takes some six a column, so
    /// that is more than a hundred sweeps for each singular value, where a handful is usual.
    static void Allow(int columns) { testsLeft = 1000L * columns * columns; }

    friend double abs(const Counted& x)
    {
        if (--testsLeft < 0) {
            throw Unending();
        }
        return std::fabs(x.value);
    }
    friend double hypot(const Counted& x, const Counted& y) { return std::hypot(x.value, y.value); }
    friend double hypot(const Counted& x, double y) { return std::hypot(x.value, y); }

  private:
    double value{0.0};
    static thread_local long testsLeft;
};

thread_local long Counted::testsLeft = 0;

using Matrix = TNT::Array2D<double>;
using CountedMatrix = TNT::Array2D<Counted>;

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

CountedMatrix ToCounted(const Matrix& matrix, bool transpose)
{
    CountedMatrix counted(transpose ? matrix.dim2() : matrix.dim1(),
                          transpose ? matrix.dim1() : matrix.dim2());
    for (int i = 0; i < counted.dim1(); ++i) {
        for (int j = 0; j < counted.dim2(); ++j) {
            counted[i][j] = transpose ? matrix[j][i] : matrix[i][j];
        }
    }
    return counted;
}

Matrix FromCounted(const CountedMatrix& counted)
{
    Matrix matrix(counted.dim1(), counted.dim2());
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            matrix[i][j] = counted[i][j];
        }
    }
    return matrix;
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
    Counted::Allow(std::min(matrix.dim1(), matrix.dim2()));
    JAMA::SVD<Counted> svd(ToCounted(matrix, isWide));
    CountedMatrix u;
    CountedMatrix v;
    TNT::Array1D<Counted> s;
    svd.getU(u);
    svd.getV(v);
    svd.getSingularValues(s);

    Decomposition result;
    result.u = FromCounted(isWide ? v : u);
    result.v = FromCounted(isWide ? u : v);
    result.s = TNT::Array1D<double>(s.dim());
    for (int i = 0; i < s.dim(); ++i) {
        result.s[i] = s[i];
    }
    result.rank = svd.rank();
    return result;
}

Decomposition Nothing(const Matrix& matrix)
{
    Decomposition nothing;
    nothing.u = Matrix(matrix.dim1(), 0);
    nothing.v = Matrix(matrix.dim2(), 0);
    return nothing;
}

/// Extreme matrices are scaled by a power of two on the way in and their singular values on the way
/// out; every other matrix goes in as it is.
Decomposition DecomposeScaled(const Matrix& matrix, double largest)
{
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

} // namespace

Decomposition SafeSvd(const Matrix& matrix)
{
    const double largest = LargestMagnitude(matrix);
    if (matrix.dim1() == 0 || matrix.dim2() == 0 || !std::isfinite(largest)) {
        return Nothing(matrix);
    }
    try {
        return DecomposeScaled(matrix, largest);
    } catch (const Unending&) {
        return Nothing(matrix);
    }
}

} // namespace trunnion
