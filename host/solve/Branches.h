#ifndef TRUNNION_HOST_SOLVE_BRANCHES_H
#define TRUNNION_HOST_SOLVE_BRANCHES_H

#include <cstddef>
#include <optional>
#include <vector>

#include "geometry/Vec3.h"
#include "machine/LoadedMachine.h"
#include "solve/PoseError.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// One of the ways to stand at a pose.
struct Branch
{
    std::vector<double> joints; //!< in the order of the stream's axes [length] or [rad]
    PoseError error;
};

/// What was found at a pose, and from how many starts.
struct Branches
{
    std::vector<Branch> found;
    std::size_t starts{0};
    std::optional<Vec3> xAxis; //!< of the tool, where the pose leaves the turn about it open
};

/// The distinct solutions at `point`, as the hybrid solver samples them from where the joints
/// stand. With more rotary axes than it samples they are sought from many starts, and a turn about
/// the tool that is open is as a path has it by default. The joints stay.
Branches FindBranches(const LoadedMachine& machine, const LoadedStream& stream,
                      const ToolPoint& point, IkJoint::JointLimitTypes limits);

} // namespace host

#endif
