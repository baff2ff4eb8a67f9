#ifndef TRUNNION_GEOMETRY_AFFINE_H
#define TRUNNION_GEOMETRY_AFFINE_H

#include "geometry/Lanes.h"

// Transforms whose bottom row is 0 0 0 1, as their upper three rows: twelve doubles, row by row, as
// the matrix class stores them.
//
// The products below leave out what meets a known 0 or 1. Where every element of the result is
// finite they are the full 4x4 products, each sum begun with +0, to the last bit, signs of zeros
// included:
//   - A sum that begins with +0 is never -0, since adding gives -0 only for two of them. Adding a
//     zero of either sign to it therefore changes nothing, nor does multiplying by 1. Adding the +0
//     last instead of first gives the same, and so does adding anything but a -0 last.
//   - Products with a zero are zeros unless the other factor is infinite or NaN. Such an element of
//     a left factor stays in its row, and of a right factor in its column, of every further
//     product, so a result that is finite throughout shows that there was none on the way.
// Whoever multiplies tests the last result with IsFinite, and falls back on full products.
namespace trunnion
{

/// Twelve elements, uninitialised.
struct Affine
{
    double e[12];
};

inline constexpr Affine kIdentityAffine{{1, 0, 0, 0, //
                                         0, 1, 0, 0, //
                                         0, 0, 1, 0}};

/// a * b, where no offset of a is -0; `ab` is neither of the two.
inline void Multiply(const double* a, const double* b, double* ab)
{
    for (int i = 0; i < 12; i += 4) {
        const Lanes left = a[i] * LoadLanes(b) + a[i + 1] * LoadLanes(b + 4) +
                           a[i + 2] * LoadLanes(b + 8) + Lanes{0.0, 0.0};
        const Lanes right = a[i] * LoadLanes(b + 2) + a[i + 1] * LoadLanes(b + 6) +
                            a[i + 2] * LoadLanes(b + 10) + Lanes{0.0, a[i + 3]};
        StoreLanes(left, ab + i);
        StoreLanes(right, ab + i + 2);
    }
}

/// a * b where b does not turn, and no element of a is -0, as in any product.
inline void MultiplyByShift(const double* a, const double* b, double* ab)
{
    for (int i = 0; i < 12; i += 4) {
        ab[i] = a[i];
        ab[i + 1] = a[i + 1];
        ab[i + 2] = a[i + 2];
        ab[i + 3] = ((a[i] * b[3] + a[i + 1] * b[7]) + a[i + 2] * b[11]) + a[i + 3];
    }
}

/// The inverse of a rigid transform.
inline void InvertRigid(const double* a, double* inverse)
{
    const double negated[3]{a[3] * -1.0, a[7] * -1.0, a[11] * -1.0};
    for (int i = 0; i < 3; ++i) {
        double offset = 0.0;
        for (int j = 0; j < 3; ++j) {
            inverse[4 * i + j] = a[4 * j + i];
            offset = offset + a[4 * j + i] * negated[j];
        }
        inverse[4 * i + 3] = offset;
    }
}

inline bool IsFinite(const double* a)
{
    Lanes sum{0.0, 0.0}; // of differences that are 0, or NaN
    for (int i = 0; i < 12; i += 2) {
        const Lanes x = LoadLanes(a + i);
        sum += x - x;
    }
    return sum[0] == 0.0 && sum[1] == 0.0;
}

} // namespace trunnion

#endif
