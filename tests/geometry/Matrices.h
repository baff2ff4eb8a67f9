#ifndef TRUNNION_TESTS_GEOMETRY_MATRICES_H
#define TRUNNION_TESTS_GEOMETRY_MATRICES_H

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "IkXformMat.h"
#include "support/Random.h"

// Making matrices and taking them apart.
namespace test
{

/// 1, 2, 3, ... row by row: every element tells its place.
inline TNT::Matrix<double> Numbered(int rows, int cols)
{
    TNT::Matrix<double> m(rows, cols, 0.0);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            m[i][j] = i * cols + j + 1;
        }
    }
    return m;
}

inline IkXformMat MatrixOf(const std::array<double, 16>& elements)
{
    return TNT::Matrix<double>(4, 4, elements.data());
}

/// Row by row.
inline std::vector<double> ElementsOf(const TNT::Matrix<double>& m)
{
    std::vector<double> elements;
    for (int i = 0; i < m.num_rows(); ++i) {
        elements.insert(elements.end(), m[i], m[i] + m.num_cols());
    }
    return elements;
}

inline std::array<double, 3> MapPoint(const IkXformMat& m, const std::array<double, 3>& p)
{
    std::array<double, 3> mapped{};
    for (int i = 0; i < 3; ++i) {
        mapped.at(static_cast<std::size_t>(i)) =
            m[i][0] * p[0] + m[i][1] * p[1] + m[i][2] * p[2] + m[i][3];
    }
    return mapped;
}

/// The largest difference between two elements of the same place; shapes must agree.
inline double Distance(const TNT::Matrix<double>& a, const TNT::Matrix<double>& b)
{
    double largest = a.num_rows() == b.num_rows() && a.num_cols() == b.num_cols() ? 0.0 : 1e300;
    for (int i = 0; i < a.num_rows() && largest < 1e300; ++i) {
        for (int j = 0; j < a.num_cols(); ++j) {
            largest = std::max(largest, std::fabs(a[i][j] - b[i][j]));
        }
    }
    return largest;
}

inline TNT::Matrix<double> RandomMatrix(Random& random, int rows, int cols)
{
    TNT::Matrix<double> m(rows, cols, 0.0);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            m[i][j] = random.OneIn(4) ? random.OneOf({0.0, -0.0, 1.0, -1.0, 1e-300, 1e100})
                                      : random.Between(-1000.0, 1000.0);
        }
    }
    return m;
}

inline IkXformMat RandomRigid(Random& random)
{
    const auto angle = [&random] {
        return random.OneIn(4) ? random.OneOf({0.0, 1.5707963267948966, 3.141592653589793})
                               : random.Between(-7.0, 7.0);
    };
    const auto length = [&random] { return random.OneIn(4) ? 0.0 : random.Between(-900.0, 900.0); };
    IkXformMat m = IkXformMat::Translate(length(), length(), length());
    m.RotXThis(angle());
    m.RotYThis(angle());
    m.TranslateThis(length(), length(), length());
    m.RotZThis(angle());
    return m;
}

} // namespace test

#endif
