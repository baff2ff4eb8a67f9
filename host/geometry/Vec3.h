#ifndef TRUNNION_HOST_GEOMETRY_VEC3_H
#define TRUNNION_HOST_GEOMETRY_VEC3_H

#include <array>
#include <cmath>
#include <optional>

namespace host
{

using Vec3 = std::array<double, 3>;

inline Vec3 operator+(const Vec3& a, const Vec3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline Vec3 operator-(const Vec3& a, const Vec3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline Vec3 operator*(double factor, const Vec3& a)
{
    return {factor * a[0], factor * a[1], factor * a[2]};
}

inline double Dot(const Vec3& a, const Vec3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vec3 Cross(const Vec3& a, const Vec3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline double Length(const Vec3& a)
{
    return std::hypot(a[0], a[1], a[2]);
}

/// Nothing for a vector that has no direction: zero, or too long to be measured.
inline std::optional<Vec3> Normalised(const Vec3& a)
{
    const double length = Length(a);
    if (!(length > 0.0) || !std::isfinite(length)) {
        return std::nullopt;
    }
    return Vec3{a[0] / length, a[1] / length, a[2] / length};
}

/// [rad], accurate for small angles too, where the arc cosine is not.
inline double AngleBetween(const Vec3& a, const Vec3& b)
{
    return std::atan2(Length(Cross(a, b)), Dot(a, b));
}

} // namespace host

#endif
