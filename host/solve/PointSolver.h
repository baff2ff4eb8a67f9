#ifndef TRUNNION_HOST_SOLVE_POINT_SOLVER_H
#define TRUNNION_HOST_SOLVE_POINT_SOLVER_H

#include <cstddef>
#include <optional>
#include <vector>

#include <IkEndState.h>
#include <IkJoint.h>

#include "geometry/CutterLocation.h"
#include "machine/LoadedMachine.h"
#include "solve/GuardedSolver.h"
#include "solve/PoseError.h"

namespace host
{

/// Joint values in the order of a stream's axes [length] or [rad].
using JointValues = std::vector<double>;

struct SolverSettings
{
    double tolerance{1e-12}; //!< [length^2] plus [deg^2]; the solver objects' own default
    int maxIterations{60};   //!< the solver objects' own default
    int giveUpAfter{0};      //!< iterations, unless it is near by then; 0: never
};

/// What the path asks of the tool at one moment.
struct PathTarget
{
    CutterLocation at;
    std::optional<Vec3> xAxis; //!< across the direction, where the turn about the tool counts too
};

/// Solves one stream from given joint values. The machine's joints are not moved; those that the
/// stream holds locked stay at the values they are given.
class PointSolver
{
  public:
    PointSolver(const LoadedMachine& ofMachine, const LoadedStream& ofStream,
                const SolverSettings& settings);
    PointSolver(const PointSolver&) = delete;
    PointSolver& operator=(const PointSolver&) = delete;

    /// From `joints`, which hold the answer when it returns true and are as before when not.
    bool Solve(const PathTarget& target, IkJoint::JointLimitTypes limits, JointValues& joints);
    /// The distinct solutions to which the hybrid solver's starts lead from where the machine's
    /// joints stand.
    std::vector<JointValues> SolveFromSamples(const PathTarget& target,
                                              IkJoint::JointLimitTypes limits);
    /// Brings the tool's end to `position` by the linear axes alone, within their limits; the
    /// rotary ones, and with them the tool's direction, stay.
    bool SolveLinear(const Vec3& position, JointValues& joints);
    /// Where the tool stands, in part coordinates.
    IkXformMat PoseAt(const JointValues& joints);
    CutterLocation ToolAt(const JointValues& joints);
    PoseError ErrorAt(const JointValues& joints, const CutterLocation& asked);

    const std::vector<const Axis*>& Axes() const { return axes; }
    const LoadedStream& Stream() const { return stream; }
    /// Indices of the axes that a solve may move; of the rotary ones among them.
    std::vector<std::size_t> FreeAxes() const;
    std::vector<std::size_t> FreeRotaryAxes() const;
    JointValues Initial() const;

  private:
    void SetStates(const JointValues& joints);
    JointValues ValuesOf(IkJtStateVector& solved) const;
    bool SolveFor(IkEndState target, IkJoint::JointLimitTypes limits, bool holdsRotary,
                  JointValues& joints);

    const LoadedStream& stream;
    std::vector<const Axis*> axes;
    std::vector<int> stateOf; //!< index of each axis's state among the stream's
    IkJtStateVector states;
    IkJtStateVector answer;
    GuardedSolver solver;
};

} // namespace host

#endif
