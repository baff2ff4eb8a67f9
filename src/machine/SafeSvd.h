#ifndef TRUNNION_MACHINE_SAFE_SVD_H
#define TRUNNION_MACHINE_SAFE_SVD_H

#include "IkJtState.h" // the arrays, as the library exports them

namespace trunnion
{

/// A thin singular value decomposition, matrix = u diag(s) v'.
struct Decomposition
{
    TNT::Array2D<double> u; // columns in end-state space
    TNT::Array2D<double> v; // columns in joint space
    TNT::Array1D<double> s; // descending
    int rank{0};            // numerical rank
};

/// Decomposes any matrix: a wide one through its transpose, since the decomposition takes no more
/// columns than rows. A matrix on which it would write out of range or never end has rank 0 and no
/// singular values: an empty one, one that holds a NaN or an infinity, and the rare one with
/// entries so far apart that the iteration stalls among denormal numbers.
Decomposition SafeSvd(const TNT::Array2D<double>& matrix);

} // namespace trunnion

#endif
