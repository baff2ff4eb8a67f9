#ifndef TRUNNION_HOST_SOLVE_POSE_ERROR_H
#define TRUNNION_HOST_SOLVE_POSE_ERROR_H

#include <IkEndState.h>
#include <IkJtState.h>
#include <IkStream.h>

#include "toolpath/Toolpath.h"

namespace host
{

/// How far a tool stands from where it should.
struct PoseError
{
    double position{0.0};      //!< [length]
    double direction_deg{0.0}; //!< of the tool, whatever its turn about itself
};

/// The pose of a tool at a point of a path; position and tool direction count.
IkEndState TargetAt(const ToolPoint& point);

/// What forward kinematics leaves between `point` and the tool for these joint values.
PoseError ErrorAt(IkStream& stream, IkJtStateVector& states, const ToolPoint& point);

} // namespace host

#endif
