#include "Decompositions.h"

#include <jama/jama_svd.h>

#include <benchmark/benchmark.h>

namespace bench
{

TNT::Array2D<double> Tall(const TNT::Array2D<double>& matrix)
{
    if (matrix.dim1() >= matrix.dim2()) {
        return matrix.copy();
    }
    TNT::Array2D<double> transposed(matrix.dim2(), matrix.dim1());
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            transposed[j][i] = matrix[i][j];
        }
    }
    return transposed;
}

void Decompose(const TNT::Array2D<double>& tall)
{
    JAMA::SVD<double> decomposition(tall);
    TNT::Array2D<double> u;
    TNT::Array2D<double> v;
    TNT::Array1D<double> s;
    decomposition.getU(u);
    decomposition.getV(v);
    decomposition.getSingularValues(s);
    benchmark::DoNotOptimize(decomposition.rank());
    benchmark::DoNotOptimize(s[0]);
}

void Decompose(const Matrices& tall)
{
    for (const TNT::Array2D<double>& matrix : tall) {
        Decompose(matrix);
    }
}

} // namespace bench
