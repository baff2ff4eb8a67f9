#include "plain/PlainMatrix.h"

#include <algorithm>
#include <cmath>

namespace plain
{

Matrix Identity()
{
    Matrix m(4, 4, 0.0);
    for (int i = 0; i < 4; ++i) {
        m[i][i] = 1.0;
    }
    return m;
}

Matrix Translation(double x, double y, double z)
{
    Matrix m = Identity();
    m[0][3] = x;
    m[1][3] = y;
    m[2][3] = z;
    return m;
}

Matrix Rotation(int from, int to, double a)
{
    Matrix m = Identity();
    m[from][from] = std::cos(a);
    m[from][to] = -std::sin(a);
    m[to][from] = std::sin(a);
    m[to][to] = std::cos(a);
    return m;
}

Matrix RigidInverse(const Matrix& m)
{
    Matrix rotation(3, 3);
    Matrix negated(3, 1);
    for (int i = 0; i < 3; ++i) {
        negated[i][0] = -1.0 * m[i][3];
        for (int j = 0; j < 3; ++j) {
            rotation[i][j] = m[j][i];
        }
    }
    const Matrix offset = rotation * negated;
    Matrix inverse = Identity();
    for (int i = 0; i < 3; ++i) {
        std::copy_n(rotation[i], 3, inverse[i]);
        inverse[i][3] = offset[i][0];
    }
    return inverse;
}

Matrix FourByFour(const Matrix& m)
{
    Matrix block(4, 4, 0.0);
    for (int i = 0; i < std::min(4, m.num_rows()); ++i) {
        std::copy_n(m[i], std::min(4, m.num_cols()), block[i]);
    }
    return block;
}

} // namespace plain
