#ifndef TRUNNION_MACHINE_SAFE_SVD_H
#define TRUNNION_MACHINE_SAFE_SVD_H

#include "IkJtState.h" // the arrays, as the library exports them
#include "geometry/SmallMatrix.h"
#include "machine/Counted.h"

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
