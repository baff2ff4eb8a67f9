#include "geometry/SmallMatrix.h"

#include <gtest/gtest.h>

namespace
{

using Matrix = trunnion::SmallMatrix<6>;

void Number(Matrix& matrix)
{
    for (int i = 0; i < matrix.Rows(); ++i) {
        for (int j = 0; j < matrix.Cols(); ++j) {
            matrix[i][j] = 100 * i + j;
        }
    }
}

TEST(SmallMatrix, HoldsAnyShapeWithinItsOwnStorageAndBeyond)
{
    Matrix matrix;
    EXPECT_EQ(matrix.Rows(), 0);
    for (const auto& [rows, cols] :
         {std::pair{2, 3}, {6, 1}, {1, 7}, {40, 30}, {0, 5}, {3, 0}, {3, 2}}) {
        matrix.Resize(rows, cols);
        Number(matrix);
        ASSERT_EQ(matrix.Rows(), rows);
        ASSERT_EQ(matrix.Cols(), cols);
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols; ++j) {
                ASSERT_EQ(matrix[i][j], 100 * i + j) << rows << "x" << cols;
            }
        }
    }
}

TEST(SmallMatrix, AssignsShapeAndElements)
{
    for (const int rows : {2, 50}) {
        Matrix from;
        from.Resize(rows, 3);
        Number(from);
        Matrix to;
        to.Resize(1, 1);
        to.Assign(from);
        from.Fill(-1);
        ASSERT_EQ(to.Rows(), rows);
        ASSERT_EQ(to.Cols(), 3);
        EXPECT_EQ(to[rows - 1][2], 100 * (rows - 1) + 2);
        EXPECT_EQ(from[rows - 1][2], -1);
    }
}

} // namespace
