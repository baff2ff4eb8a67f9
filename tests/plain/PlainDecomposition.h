#ifndef TRUNNION_TESTS_PLAIN_PLAIN_DECOMPOSITION_H
#define TRUNNION_TESTS_PLAIN_PLAIN_DECOMPOSITION_H

#include "plain/PlainMatrix.h"

namespace plain
{

/// The decomposition taken straight from JAMA, through the transpose where the matrix is wide; rank
/// 0 for an empty matrix and for one with a NaN or an infinity.
struct Svd
{
    Array u;
    Array v;
    TNT::Array1D<double> s;
    int rank{0};
};

/// Matrices at either end of the range of doubles are scaled by a power of two. One whose entries
/// are so far apart that JAMA would not come to an end has rank 0.
Svd Decompose(const Array& a);

} // namespace plain

#endif
