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

/// Columns of `array` as rows, the first `count` of them.
inline void FromColumns(const TNT::Array2D<double>& array, int count, JointMatrix& rows)
{
    rows.Resize(count, array.dim1());
    for (int i = 0; i < count; ++i) {
        for (int j = 0; j < array.dim1(); ++j) {
            rows[i][j] = array[j][i];
        }
    }
}

inline TNT::Array2D<double> ToColumns(const JointMatrix& rows)
{
    TNT::Array2D<double> array(rows.Cols(), rows.Rows());
    for (int i = 0; i < rows.Rows(); ++i) {
        for (int j = 0; j < rows.Cols(); ++j) {
            array[j][i] = rows[i][j];
        }
    }
    return array;
}

} // namespace trunnion

#endif
