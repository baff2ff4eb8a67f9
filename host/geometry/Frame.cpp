#include "geometry/Frame.h"

#include <algorithm>
#include <cstddef>

namespace host
{

namespace
{

void SetColumn(IkXformMat& frame, int column, const Vec3& values)
{
    for (int row = 0; row < 3; ++row) {
        frame[row][column] = values[static_cast<std::size_t>(row)];
    }
}

/// The principal axis that is farthest from `direction`.
Vec3 PrincipalAxisAcross(const Vec3& direction)
{
    const auto* const smallest =
        std::min_element(direction.begin(), direction.end(),
                         [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    Vec3 axis{};
    axis[static_cast<std::size_t>(smallest - direction.begin())] = 1.0;
    return axis;
}

} // namespace

IkXformMat FrameOf(const Vec3& origin, const Vec3& xHint, const Vec3& zAxis)
{
    const Vec3 across = xHint - Dot(xHint, zAxis) * zAxis;
    const Vec3 xAxis = Normalised(across).value_or(across);
    IkXformMat frame;
    SetColumn(frame, 0, xAxis);
    SetColumn(frame, 1, Cross(zAxis, xAxis));
    SetColumn(frame, 2, zAxis);
    SetColumn(frame, 3, origin);
    return frame;
}

IkXformMat FrameOf(const Vec3& origin, const Vec3& zAxis)
{
    return FrameOf(origin, PrincipalAxisAcross(zAxis), zAxis);
}

Vec3 Column(const IkXformMat& frame, int column)
{
    return {frame[0][column], frame[1][column], frame[2][column]};
}

} // namespace host
