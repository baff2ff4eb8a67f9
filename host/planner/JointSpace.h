#ifndef TRUNNION_HOST_PLANNER_JOINT_SPACE_H
#define TRUNNION_HOST_PLANNER_JOINT_SPACE_H

#include <cstddef>
#include <vector>

#include "geometry/Units.h"
#include "machine/LoadedMachine.h"
#include "solve/PointSolver.h"

// Turns, limits and distances of joint values.
namespace host
{

/// How far beyond a limit a solved value may lie and still be put on it: a solve meets a direction
/// to 1.7e-5 rad and a position to the root of its tolerance.
constexpr double kRotarySlack = 2e-5; //!< [rad]
constexpr double kLinearSlack = 2e-6; //!< [length]

/// `value` by whole turns nearest to `reference`.
double NearestImage(double value, double reference);

/// Every rotary axis of `joints` by whole turns nearest to `reference`.
JointValues NearestImages(const std::vector<const Axis*>& axes, JointValues joints,
                          const JointValues& reference);

/// Whether it counts on which turn a rotary axis stands. On an unlimited one it does not, and where
/// limits leave more turns than a path is likely to need they are minded only when one is met.
bool CountsTurns(const Axis& axis);

/// By whole turns to where the axis counts from: the turn that begins at its lower limit, or from
/// -pi to pi where turns do not count.
double BaseImage(const Axis& axis, double value);

/// `value` of a rotary axis whose turns do not count by whole turns nearest to `reference`, as far
/// as its limits allow.
double OnNearestTurn(const Axis& axis, double value, double reference);

/// Every rotary axis of `joints` whose turns do not count by whole turns nearest to `reference`, as
/// far as its limits allow.
JointValues OnNearestTurns(const std::vector<const Axis*>& axes, JointValues joints,
                           const JointValues& reference);

/// Whether the value is within the limits, or beyond them by no more than a solve is inexact.
bool IsWithinLimits(const Axis& axis, double value);
bool AreWithinLimits(const std::vector<const Axis*>& axes, const JointValues& joints);

/// The turns of the rotary axes between two sets of joint values, all added up [rad].
double RotaryTravel(const std::vector<const Axis*>& axes, const JointValues& from,
                    const JointValues& to);

} // namespace host

#endif
