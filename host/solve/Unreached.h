#ifndef TRUNNION_HOST_SOLVE_UNREACHED_H
#define TRUNNION_HOST_SOLVE_UNREACHED_H

#include <string>
#include <vector>

#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "solve/PoseError.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// What an axis would have to do beyond its limits.
struct ExceededAxis
{
    const Axis* axis{nullptr};
    double value{0.0}; //!< [length] or [rad]
};

/// Why a point was not reached.
struct Unreached
{
    enum class Cause {
        Limits,      //!< the axes reach it, `exceeded` of them only beyond their limits
        OutOfReach,  //!< no values of the axes reach it
        LostOnTheWay //!< values within the limits reach it, but the solve did not get there
    };

    Cause cause{Cause::OutOfReach};
    std::vector<ExceededAxis> exceeded;
    /// Left over with the exceeded axes at their limits, or at the best values found.
    PoseError remaining;
};

/// Finds out why a solve that respected the limits failed, starting where it started. Leaves the
/// machine as it was.
Unreached Diagnose(const LoadedMachine& machine, const LoadedStream& stream,
                   const ToolPoint& point);

/// The answer as half a sentence: "reaching it would need A 47.3 deg (limits -120 to 30); ...".
std::string Sentence(const Unreached& unreached, const ShownUnits& units);

} // namespace host

#endif
