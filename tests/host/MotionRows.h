#ifndef TRUNNION_TESTS_HOST_MOTION_ROWS_H
#define TRUNNION_TESTS_HOST_MOTION_ROWS_H

#include <cstddef>
#include <utility>
#include <vector>

#include "geometry/Frame.h"
#include "machine/LoadedMachine.h"
#include "motion/MotionRow.h"

namespace test
{

/// The row of `point` with these joints: the tool is asked for where forward kinematics puts it.
inline host::MotionRow RowAt(const host::LoadedMachine& machine, std::size_t point,
                             std::vector<double> joints)
{
    const host::LoadedStream& stream = machine.streams.front();
    const std::vector<const host::Axis*> axes = machine.AxesOf(stream);
    for (std::size_t i = 0; i < axes.size(); ++i) {
        axes[i]->joint->SetCurValue(joints[i]);
    }
    const IkXformMat partToTool = stream.stream->SolveFK(false).GetCompleteState();
    host::MotionRow row;
    row.point = point;
    row.joints = std::move(joints);
    row.asked = {host::Column(partToTool, 3), host::Column(partToTool, 2)};
    return row;
}

} // namespace test

#endif
