#ifndef TRUNNION_HOST_SOLVE_WARM_START_H
#define TRUNNION_HOST_SOLVE_WARM_START_H

#include <optional>
#include <vector>

#include "machine/LoadedMachine.h"
#include "solve/PoseError.h"
#include "solve/Unreached.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// Where the axes stand for a point, and what that leaves.
struct Reached
{
    std::vector<double> joints; //!< in the order of the stream's axes [length] or [rad]
    PoseError error;
};

/// Solves a path point by point, each from the joints of the last one that was reached, the first
/// from where the axes start. The machine's joints stand at the last point reached.
class WarmStart
{
  public:
    WarmStart(const LoadedMachine& ofMachine, const LoadedStream& ofStream);

    /// Nothing when the point is not reached; the joints then stay.
    std::optional<Reached> Solve(const ToolPoint& point);
    /// Why the point that was just tried was not reached.
    Unreached WhyNot(const ToolPoint& point) const;

  private:
    const LoadedMachine& machine;
    const LoadedStream& stream;
    std::vector<const Axis*> axes;
};

} // namespace host

#endif
