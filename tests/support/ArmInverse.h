#ifndef TRUNNION_TESTS_SUPPORT_ARM_INVERSE_H
#define TRUNNION_TESTS_SUPPORT_ARM_INVERSE_H

#include <array>
#include <vector>

#include "IkXformMat.h"

namespace test
{

using ArmJoints = std::array<double, 6>; // J1 to J6 [rad]

/// Every way in which the SixAxisArm fixture stands at a pose, limits aside, whole turns aside: two
/// ways each to turn the shoulder, to bend the elbow and to turn the wrist over; none where the arm
/// is too short. Worked out by hand from the arm's drawing.
std::vector<ArmJoints> ArmInverse(const IkXformMat& partToTool);

} // namespace test

#endif
