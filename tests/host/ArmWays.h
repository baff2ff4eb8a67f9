#ifndef TRUNNION_TESTS_HOST_ARM_WAYS_H
#define TRUNNION_TESTS_HOST_ARM_WAYS_H

#include <cmath>
#include <cstddef>
#include <vector>

#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "machine/LoadedMachine.h"
#include "solve/PointSolver.h"
#include "support/ArmInverse.h"

namespace test
{

/// The ways in which the SixAxisArm fixture stands at a target that are within the limits on some
/// turn of the axes.
inline std::vector<host::JointValues> WaysWithinLimits(const std::vector<const host::Axis*>& axes,
                                                       const host::PathTarget& target)
{
    constexpr double kTurn = 2 * host::kPi;
    const IkXformMat pose = host::FrameOf(target.at.position, *target.xAxis, target.at.direction);
    std::vector<host::JointValues> ways;
    for (const ArmJoints& joints : ArmInverse(pose)) {
        host::JointValues way(joints.begin(), joints.end());
        bool isWithin = true;
        for (std::size_t i = 0; i < way.size(); ++i) {
            const double low = axes[i]->joint->GetLowBound();
            const double high = axes[i]->joint->GetHiBound();
            way[i] -= kTurn * std::floor((way[i] - low) / kTurn);
            isWithin = isWithin && way[i] <= high;
        }
        if (isWithin) {
            ways.push_back(way);
        }
    }
    return ways;
}

} // namespace test

#endif
