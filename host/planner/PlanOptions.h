#ifndef TRUNNION_HOST_PLANNER_PLAN_OPTIONS_H
#define TRUNNION_HOST_PLANNER_PLAN_OPTIONS_H

#include <optional>

#include "geometry/Units.h"
#include "machine/LoadedMachine.h"
#include "motion/Tolerances.h"
#include "solve/PointSolver.h"

namespace host
{

/// Where the motion comes from before its first point.
enum class StartPolicy {
    Home, //!< from the axes' initial values, and the travel from there counts
    Free  //!< from anywhere
};

/// What is done where the motion cannot go on without swinging an axis.
enum class RetractPolicy {
    Refuse, //!< the point fails, with a sentence
    Retract //!< the tool is pulled back along itself, the axes swing, the tool returns
};

/// What a motion costs, all in radians of rotary travel.
struct CostWeights
{
    double travel{1.0}; //!< for each radian that a rotary axis turns
    double limits{1.0}; //!< for each point with an axis at its limit, less the farther it is away
    double pole{1.0};   //!< for each radian that the free axis turns inside the pole cone, on top
    double preference{10.0}; //!< for each point on the other side of the preferred one
};

/// The side of an axis's zero on which it should stand where there is a choice.
struct AxisPreference
{
    const Axis* axis{nullptr}; //!< of the machine
    bool isPositive{true};
};

struct PlanOptions
{
    Tolerances tolerances;
    bool insertsRows{true}; //!< keeps the tool within the tolerances between the points too
    double poleCone{ToRadians(2.0)}; //!< half angle [rad]
    StartPolicy start{StartPolicy::Home};
    CostWeights weights;
    std::optional<AxisPreference> preference;
    RetractPolicy rewind{RetractPolicy::Refuse};       //!< where an axis runs out of turns
    RetractPolicy branchChange{RetractPolicy::Refuse}; //!< elsewhere than at rapids
    double retract{50.0};                              //!< [length]
};

} // namespace host

#endif
