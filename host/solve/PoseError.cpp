#include "solve/PoseError.h"

#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "geometry/Vec3.h"

namespace host
{

IkEndState TargetAt(const ToolPoint& point)
{
    IkEndState target; // its filter takes position and z axis
    target.SetCompleteState(FrameOf(point.position, point.direction));
    return target;
}

PoseError ErrorAt(IkStream& stream, IkJtStateVector& states, const ToolPoint& point)
{
    const IkEndState reached = stream.SolveFK(states, false, nullptr, nullptr, false);
    const IkXformMat& partToTool = reached.GetCompleteState();
    return {Length(Column(partToTool, 3) - point.position),
            ToDegrees(AngleBetween(Column(partToTool, 2), point.direction))};
}

} // namespace host
