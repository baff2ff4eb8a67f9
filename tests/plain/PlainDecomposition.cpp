#include "plain/PlainDecomposition.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <jama/jama_svd.h>

namespace plain
{

namespace
{

/// Thrown where a decomposition has tested for convergence too often.
struct Endless
{};

/// A double whose magnitude may be taken so many times only.
class Watched
{
  public:
    Watched() = default;
    Watched(double x) : value(x) {}           // NOLINT(google-explicit-constructor)
    operator double() const { return value; } // NOLINT(google-explicit-constructor)
    void operator+=(double x) { value += x; }
    void operator/=(double x) { value /= x; }

    static long magnitudesLeft;

    friend double abs(const Watched& x)
    {
        if (magnitudesLeft-- == 0) {
            throw Endless();
        }
        return std::fabs(x.value);
    }
    friend double hypot(const Watched& x, const Watched& y) { return std::hypot(x.value, y.value); }
    friend double hypot(const Watched& x, double y) { return std::hypot(x.value, y); }

  private:
    double value{0.0};
};

long Watched::magnitudesLeft = 0;

struct Magnitudes
{
    bool areFinite{true};
    double largest{0.0};
    double smallest{std::numeric_limits<double>::infinity()}; // but for zeros
};

Magnitudes MagnitudesOf(const Array& a)
{
    Magnitudes found;
    for (int i = 0; i < a.dim1(); ++i) {
        for (int j = 0; j < a.dim2(); ++j) {
            const double magnitude = std::fabs(a[i][j]);
            found.areFinite = found.areFinite && std::isfinite(magnitude);
            found.largest = std::max(found.largest, magnitude);
            found.smallest = magnitude > 0.0 ? std::min(found.smallest, magnitude) : found.smallest;
        }
    }
    return found;
}

template <class To, class From>
TNT::Array2D<To> Converted(const TNT::Array2D<From>& m)
{
    TNT::Array2D<To> converted(m.dim1(), m.dim2());
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            converted[i][j] = m[i][j];
        }
    }
    return converted;
}

Array Transpose(const Array& m)
{
    Array transposed(m.dim2(), m.dim1());
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            transposed[j][i] = m[i][j];
        }
    }
    return transposed;
}

/// `tall` has no more columns than rows.
Svd DecomposeTall(const Array& tall)
{
    Svd svd;
    JAMA::SVD<double> decomposition(tall);
    decomposition.getU(svd.u);
    decomposition.getV(svd.v);
    decomposition.getSingularValues(svd.s);
    svd.rank = decomposition.rank();
    return svd;
}

/// The same where small entries beside large ones may keep JAMA from ending.
Svd DecomposeWatched(const Array& tall)
{
    Watched::magnitudesLeft = 1000L * tall.dim2() * tall.dim2();
    Svd svd;
    JAMA::SVD<Watched> decomposition(Converted<Watched>(tall));
    TNT::Array2D<Watched> u;
    TNT::Array2D<Watched> v;
    TNT::Array1D<Watched> s;
    decomposition.getU(u);
    decomposition.getV(v);
    decomposition.getSingularValues(s);
    svd.u = Converted<double>(u);
    svd.v = Converted<double>(v);
    svd.s = TNT::Array1D<double>(s.dim());
    for (int i = 0; i < s.dim(); ++i) {
        svd.s[i] = s[i];
    }
    svd.rank = decomposition.rank();
    return svd;
}

Svd DecomposeAnyTall(const Array& tall, bool isFarApart)
{
    try {
        return isFarApart ? DecomposeWatched(tall) : DecomposeTall(tall);
    } catch (const Endless&) {
        return {};
    }
}

Array TimesPowerOfTwo(const Array& a, int exponent)
{
    Array scaled(a.dim1(), a.dim2());
    for (int i = 0; i < a.dim1(); ++i) {
        for (int j = 0; j < a.dim2(); ++j) {
            scaled[i][j] = std::ldexp(a[i][j], exponent);
        }
    }
    return scaled;
}

} // namespace

Svd Decompose(const Array& a)
{
    const Magnitudes magnitudes = MagnitudesOf(a);
    if (a.dim1() == 0 || a.dim2() == 0 || !magnitudes.areFinite) {
        return {};
    }
    const bool isZero = magnitudes.largest == 0.0;
    const bool isExtreme =
        !isZero && (magnitudes.largest > 0x1p1000 || magnitudes.largest < 0x1p-960);
    const bool isFarApart =
        !isZero && std::ilogb(magnitudes.largest) - std::ilogb(magnitudes.smallest) > 100;
    const int exponent = isExtreme ? std::ilogb(magnitudes.largest) : 0;
    const Array scaled = isExtreme ? TimesPowerOfTwo(a, -exponent) : a;
    const bool isWide = a.dim1() < a.dim2();
    Svd svd = DecomposeAnyTall(isWide ? Transpose(scaled) : scaled, isFarApart);
    if (isWide) {
        std::swap(svd.u, svd.v);
    }
    for (int i = 0; i < svd.s.dim() && isExtreme; ++i) {
        svd.s[i] = std::ldexp(svd.s[i], exponent);
    }
    return svd;
}

} // namespace plain
