#ifndef TRUNNION_MACHINE_SAFE_SVD_H
#define TRUNNION_MACHINE_SAFE_SVD_H

#include <memory>

#include "IkJtState.h" // the arrays, as the library exports them
#include "geometry/SmallMatrix.h"
#include "machine/Counted.h"

namespace trunnion
{

/// The two blocks of an array's storage: both, or an exception and none.
template <class T>
void Allocate(int size, T*& elements, int*& useCount)
{
    auto newElements = std::make_unique<T[]>(static_cast<std::size_t>(size));
    useCount = std::make_unique<int>(1).release();
    elements = newElements.release();
}

} // namespace trunnion

namespace TNT
{

// The arrays of a decomposition are of this library's own type. As the template stands it loses the
// elements when there is no room for the count of uses.

template <>
inline i_refvec<trunnion::Counted>::i_refvec(int n) : data_(nullptr), ref_count_(nullptr)
{
    if (n >= 1) {
        trunnion::Allocate(n, data_, ref_count_);
    }
}

template <>
inline i_refvec<trunnion::Counted*>::i_refvec(int n) : data_(nullptr), ref_count_(nullptr)
{
    if (n >= 1) {
        trunnion::Allocate(n, data_, ref_count_);
    }
}

} // namespace TNT

namespace trunnion
{

using CountedArray = TNT::Array2D<Counted>;

/// A thin singular value decomposition, matrix = u diag(s) v'.
struct Decomposition
{
    CountedArray u;          // columns in end-state space
    CountedArray v;          // columns in joint space
    TNT::Array1D<Counted> s; // descending
    int rank{0};             // numerical rank
    CountedArray tall;       // what was decomposed, or its transpose: storage for the next one
};

/// Decomposes any matrix: a wide one through its transpose, since the decomposition takes no more
/// columns than rows. A matrix on which it would write out of range or never end has rank 0 and no
/// singular values: an empty one, one that holds a NaN or an infinity, and the rare one with
/// entries so far apart that the iteration stalls among denormal numbers.
void SafeSvd(const JointMatrix& matrix, Decomposition& svd);

/// The same in arrays of the interface.
void SafeSvd(const TNT::Array2D<double>& matrix, TNT::Array2D<double>& u, TNT::Array2D<double>& v,
             TNT::Array1D<double>& singularValues, int& rank);

} // namespace trunnion

#endif
