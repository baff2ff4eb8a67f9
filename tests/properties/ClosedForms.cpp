#include "properties/ClosedForms.h"

#include <cmath>
#include <map>
#include <stdexcept>

namespace test
{

namespace
{

using Vec = std::array<double, 3>;

Vec operator+(const Vec& a, const Vec& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Vec operator-(const Vec& a, const Vec& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Vec operator*(double s, const Vec& v)
{
    return {s * v[0], s * v[1], s * v[2]};
}

Vec TurnX(double a, const Vec& v)
{
    return {v[0], v[1] * std::cos(a) - v[2] * std::sin(a), v[1] * std::sin(a) + v[2] * std::cos(a)};
}

Vec TurnY(double a, const Vec& v)
{
    return {v[0] * std::cos(a) + v[2] * std::sin(a), v[1], v[2] * std::cos(a) - v[0] * std::sin(a)};
}

Vec TurnZ(double a, const Vec& v)
{
    return {v[0] * std::cos(a) - v[1] * std::sin(a), v[0] * std::sin(a) + v[1] * std::cos(a), v[2]};
}

using Joints = std::vector<double>;

ToolPose ThreeAxisMill(const Joints& q)
{
    return {{q[0], q[1], q[2] + 400}, {0, 0, 1}};
}

// The table turns by A about (., 0, 100), then by C: seen from it, the tool turns back.
ToolPose TableTableMill(const Joints& q)
{
    const double a = q[3];
    const double c = q[4];
    const Vec tip{q[0], q[1], q[2] + 500};
    return {TurnZ(-c, TurnX(-a, tip - Vec{0, 0, 100})) - Vec{0, 0, 50},
            {std::sin(c) * std::sin(a), std::cos(c) * std::sin(a), std::cos(a)}};
}

// The part side moves by -X and turns by C; the tip hangs 200 below the B axis.
ToolPose HeadTableMill(const Joints& q)
{
    const Vec direction{std::sin(q[2]), 0, std::cos(q[2])};
    const Vec tip = Vec{0, q[0], q[1] + 500} - 200 * direction;
    return {TurnZ(-q[4], tip + Vec{q[3], 0, 0}), TurnZ(-q[4], direction)};
}

ToolPose HeadHeadMill(const Joints& q)
{
    const double c = q[3];
    const double a = q[4];
    const Vec direction{std::sin(c) * std::sin(a), -std::cos(c) * std::sin(a), std::cos(a)};
    return {Vec{q[0], q[1], q[2] + 700} - 180 * direction, direction};
}

// Shoulder and elbow lie in the plane that J1 turns; J4 and J5 swing the wrist's x axis, along
// which the tool points; J6 turns the tool about itself.
ToolPose SixAxisArm(const Joints& q)
{
    const double forearm = q[1] + q[2];
    const Vec wrist{150 + 450 * std::sin(q[1]) + 420 * std::cos(forearm) + 50 * std::sin(forearm),
                    0,
                    400 + 450 * std::cos(q[1]) - 420 * std::sin(forearm) + 50 * std::cos(forearm)};
    const Vec swung{std::cos(q[4]), std::sin(q[3]) * std::sin(q[4]),
                    -std::cos(q[3]) * std::sin(q[4])};
    const Vec direction = TurnZ(q[0], TurnY(forearm, swung));
    return {TurnZ(q[0], wrist) + 80 * direction - Vec{800, 0, 100}, direction};
}

// Joints in the order Z X Y B C; the chuck turns by C about an axis 250 up.
ToolPose MillTurn(const Joints& q)
{
    const Vec direction{std::sin(q[3]), 0, std::cos(q[3])};
    const Vec tip = Vec{q[1], q[2], q[0] + 400} - 150 * direction;
    return {TurnZ(-q[4], tip - Vec{0, 0, 250}), TurnZ(-q[4], direction)};
}

} // namespace

ToolPose ClosedForm(const std::string& fixture, const std::vector<double>& joints)
{
    static const std::map<std::string, ToolPose (*)(const Joints&)> forms{
        {"ThreeAxisMill", ThreeAxisMill}, {"TableTableMill", TableTableMill},
        {"HeadTableMill", HeadTableMill}, {"HeadHeadMill", HeadHeadMill},
        {"SixAxisArm", SixAxisArm},       {"MillTurn", MillTurn},
    };
    return forms.at(fixture)(joints);
}

} // namespace test
