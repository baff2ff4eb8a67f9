#ifndef TRUNNION_MACHINE_ARRAYS_H
#define TRUNNION_MACHINE_ARRAYS_H

#include "IkJtState.h" // the arrays, as the library exports them
#include "geometry/SmallMatrix.h"

// Between the arrays of the interface and the storage that the stages of a solve work in.
namespace trunnion
{

inline void FromArray(const TNT::Array2D<double>& array, JointMatrix& matrix)
{
    matrix.Resize(array.dim1(), array.dim2());
    for (int i = 0; i < matrix.Rows(); ++i) {
        for (int j = 0; j < matrix.Cols(); ++j) {
            matrix[i][j] = array[i][j];
        }
    }
}

inline TNT::Array2D<double> ToArray(const JointMatrix& matrix)
{
    TNT::Array2D<double> array(matrix.Rows(), matrix.Cols());
    for (int i = 0; i < matrix.Rows(); ++i) {
        for (int j = 0; j < matrix.Cols(); ++j) {
            array[i][j] = matrix[i][j];
        }
    }
    return array;
}

/// One row of numbers as a column.
inline TNT::Array2D<double> ToColumn(const JointRow& row)
{
    TNT::Array2D<double> column(row.Cols(), 1);
    for (int i = 0; i < row.Cols(); ++i) {
        column[i][0] = row[0][i];
    }
    return column;
}

/// The array with elements of another type.
template <class To, class From>
TNT::Array2D<To> ToArray(const TNT::Array2D<From>& array)
{
    TNT::Array2D<To> converted(array.dim1(), array.dim2());
    for (int i = 0; i < array.dim1(); ++i) {
        for (int j = 0; j < array.dim2(); ++j) {
            converted[i][j] = array[i][j];
        }
    }
    return converted;
}

} // namespace trunnion

#endif
