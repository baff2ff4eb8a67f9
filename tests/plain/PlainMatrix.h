#ifndef TRUNNION_TESTS_PLAIN_PLAIN_MATRIX_H
#define TRUNNION_TESTS_PLAIN_PLAIN_MATRIX_H

#include "IkJtState.h" // the arrays, as the library exports them
#include "IkXformMat.h"

// Transforms of the plain formulation: 4x4 matrices on the heap, multiplied by their own product.
namespace plain
{

using Matrix = TNT::Matrix<double>;
using Array = TNT::Array2D<double>;

Matrix Identity();
Matrix Translation(double x, double y, double z);

/// Rotation that turns axis `from` towards axis `to` by `a` [rad].
Matrix Rotation(int from, int to, double a);

/// [R' -R't; 0 0 0 1], whatever the matrix.
Matrix RigidInverse(const Matrix& m);

/// The leading 4x4 elements; those that `m` lacks are 0.
Matrix FourByFour(const Matrix& m);

} // namespace plain

#endif
