#include "support/ArmInverse.h"

#include <cmath>

namespace test
{

namespace
{

constexpr double kHalfTurn = 3.141592653589793;

// From the drawing of the arm in Fixtures.cpp [mm].
constexpr double kShoulderOut = 150;
constexpr double kShoulderUp = 400;
constexpr double kUpperArm = 450;
constexpr double kForearmOut = 420;
constexpr double kForearmUp = 50;
constexpr double kFlangeOut = 80;

/// J4 to J6 for the wrist frame as the forearm sees it: it is RotX(J4) RotY(J5) RotX(J6), whose
/// first column is (cos J5, sin J4 sin J5, -cos J4 sin J5) and whose first row is (cos J5, sin J5
/// sin J6, sin J5 cos J6).
std::array<ArmJoints, 2> WithWrist(ArmJoints joints, const IkXformMat& forearmToWrist)
{
    const IkXformMat& m = forearmToWrist;
    const double sine = std::hypot(m[1][0], m[2][0]);
    std::array<ArmJoints, 2> both{};
    for (const double sign : {1.0, -1.0}) {
        joints[3] = std::atan2(sign * m[1][0], -sign * m[2][0]);
        joints[4] = std::atan2(sign * sine, m[0][0]);
        joints[5] = std::atan2(sign * m[0][1], sign * m[0][2]);
        both[sign > 0.0 ? 0 : 1] = joints;
    }
    return both;
}

} // namespace

std::vector<ArmJoints> ArmInverse(const IkXformMat& partToTool)
{
    IkXformMat baseToWrist = IkXformMat::Translate(800, 0, 100) * partToTool;
    baseToWrist.RotYThis(-kHalfTurn / 2);
    baseToWrist.TranslateThis(-kFlangeOut, 0, 0);
    const double x = baseToWrist[0][3];
    const double y = baseToWrist[1][3];
    const double up = baseToWrist[2][3] - kShoulderUp;
    const double forearm = std::hypot(kForearmOut, kForearmUp);
    const double forearmAngle = std::atan2(kForearmOut, kForearmUp); // from the upper arm's line

    std::vector<ArmJoints> all;
    for (const double shoulder : {0.0, kHalfTurn}) {
        const double j1 = std::atan2(y, x) + shoulder;
        const double out = x * std::cos(j1) + y * std::sin(j1) - kShoulderOut;
        const double bendCosine =
            (out * out + up * up - kUpperArm * kUpperArm - forearm * forearm) /
            (2 * kUpperArm * forearm);
        if (!(std::fabs(bendCosine) <= 1.0)) {
            continue;
        }
        for (const double side : {1.0, -1.0}) {
            const double bend = side * std::acos(bendCosine);
            const double j2 =
                std::atan2(out, up) -
                std::atan2(forearm * std::sin(bend), kUpperArm + forearm * std::cos(bend));
            const double j3 = bend - forearmAngle;
            const IkXformMat baseToForearm = IkXformMat::RotZ(j1) * IkXformMat::RotY(j2 + j3);
            const IkXformMat forearmToWrist = baseToForearm.QuickInvert() * baseToWrist;
            for (const ArmJoints& joints : WithWrist({j1, j2, j3, 0, 0, 0}, forearmToWrist)) {
                all.push_back(joints);
            }
        }
    }
    return all;
}

} // namespace test
