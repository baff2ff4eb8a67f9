#ifndef TRUNNION_BENCH_DECOMPOSITIONS_H
#define TRUNNION_BENCH_DECOMPOSITIONS_H

#include <vector>

#include <tnt/tnt_array2d.h>

namespace bench
{

using Matrices = std::vector<TNT::Array2D<double>>;

/// A copy, transposed where the matrix is wide: as it is decomposed.
TNT::Array2D<double> Tall(const TNT::Array2D<double>& matrix);

/// JAMA alone: decomposes the matrix and takes factors, singular values and rank.
void Decompose(const TNT::Array2D<double>& tall);
void Decompose(const Matrices& tall);

} // namespace bench

#endif
