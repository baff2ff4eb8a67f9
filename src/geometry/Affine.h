#ifndef TRUNNION_GEOMETRY_AFFINE_H
#define TRUNNION_GEOMETRY_AFFINE_H

#include <cstddef>

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

/// How far an offset reaches in the axes of a: the rotation of a times `x`, `y`, `z`.
inline void Turn(const double* a, double x, double y, double z, double* turned)
{
    for (std::size_t i = 0; i < 3; ++i) {
        turned[i] = (a[4 * i] * x + a[4 * i + 1] * y) + a[4 * i + 2] * z;
    }
}

/// a * b, where no offset of a is -0; `ab` is neither of the two. `lever` receives the offset of b
/// in the axes of a, the sum to which the offset of a was added.
inline void Multiply(const double* a, const double* b, double* ab, double* lever)
{
    for (std::size_t i = 0; i < 3; ++i) {
        const double* row = &a[4 * i];
        const Lanes left = row[0] * LoadLanes(b) + row[1] * LoadLanes(b + 4) +
                           row[2] * LoadLanes(b + 8) + Lanes{0.0, 0.0};
        const Lanes right =
            row[0] * LoadLanes(b + 2) + row[1] * LoadLanes(b + 6) + row[2] * LoadLanes(b + 10);
        StoreLanes(left, &ab[4 * i]);
        StoreLanes(right + Lanes{0.0, row[3]}, &ab[4 * i + 2]);
        lever[i] = right[1];
    }
}

/// The same where b does not turn, and no element of a is -0, as in any product.
inline void MultiplyByShift(const double* a, const double* b, double* ab, double* lever)
{
    Turn(a, b[3], b[7], b[11], lever);
    for (std::size_t i = 0; i < 3; ++i) {
        StoreLanes(LoadLanes(&a[4 * i]), &ab[4 * i]);
        ab[4 * i + 2] = a[4 * i + 2];
        ab[4 * i + 3] = lever[i] + a[4 * i + 3];
    }
}

/// The offset of the inverse of a rigid transform with the rotation of a and the offset x, y, z.
inline void InvertOffset(const double* a, double x, double y, double z, double* offset)
{
    const double negated[3]{x * -1.0, y * -1.0, z * -1.0};
    for (int i = 0; i < 3; ++i) {
        offset[i] = 0.0;
        for (int j = 0; j < 3; ++j) {
            offset[i] = offset[i] + a[4 * j + i] * negated[j];
        }
    }
}

/// The inverse of a rigid transform.
inline void InvertRigid(const double* a, double* inverse)
{
    double offset[3];
    InvertOffset(a, a[3], a[7], a[11], offset);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            inverse[4 * i + j] = a[4 * j + i];
        }
        inverse[4 * i + 3] = offset[i];
    }
}

inline bool IsFinite(const double* a)
{
    Lanes sum{0.0, 0.0}; // of differences that are 0, or NaN
    for (int i = 0; i < 12; i += 2) {
        const Lanes x = LoadLanes(a + i);
        sum += x - x; // NOLINT(misc-redundant-expression)
    }
    return sum[0] == 0.0 && sum[1] == 0.0;
}

} // namespace trunnion

#endif
