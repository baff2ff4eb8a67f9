#ifndef TRUNNION_HOST_PLANNER_WORKPLACE_H
#define TRUNNION_HOST_PLANNER_WORKPLACE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "machine/LoadedMachine.h"
#include "planner/PathTargets.h"
#include "planner/PlanOptions.h"
#include "planner/RotaryPair.h"
#include "solve/PointSolver.h"
#include "solve/SampledSolver.h"

namespace host
{

/// One stream at work on a path: what every stage of planning asks about it. Scratch for one
/// computation at a time.
class Workplace
{
  public:
    /// @param ofPath of which the operations count here; outlives the workplace
    /// @param ofTools the tool lengths of each operation [length]
    Workplace(const LoadedMachine& ofMachine, const LoadedStream& stream, const Toolpath& ofPath,
              PathTargets ofPoints, std::vector<double> ofTools, const PlanOptions& withOptions,
              const SolverSettings& withSettings);

    const LoadedMachine& Machine() const { return machine; }
    const std::vector<const Axis*>& Axes() const { return solver.Axes(); }
    const PathTargets& Targets() const { return targets; }
    const PlanOptions& Options() const { return options; }
    const SolverSettings& Settings() const { return settings; }
    const std::optional<RotaryPair>& Pair() const { return pair; }
    /// Looks at other points of the path, with as much of an orientation as before.
    void LookAt(PathTargets points) { targets = std::move(points); }
    std::size_t NumPoints() const { return targets.Points().NumPoints(); }
    const ToolPoint& PointAt(std::size_t point) const { return targets.PointAt(point); }

    /// The solver with the tool of this point's operation in its seat.
    PointSolver& SolverAt(std::size_t point);
    /// Whether the tool comes to this point through the air: at rapid, or from being changed.
    bool IsFreeWay(std::size_t point) const;

    /// Solves from many starts, with the same tool.
    SampledSolver& SamplerAt(std::size_t point);

    /// Where the axes stand before the first point: at their initial values unless said otherwise.
    const JointValues& Start() const { return start; }
    void SetStart(JointValues joints) { start = std::move(joints); }

    /// More axes than the target has numbers: the solutions are not single ones, and only one that
    /// keeps to the limits on its way is worth having.
    bool IsRedundant() const { return isRedundant; }
    /// Which limits a solve has to keep. Where solutions are single ones they are found without
    /// regard to limits, so that a branch that leaves them for a while is not lost.
    IkJoint::JointLimitTypes SolveLimits() const
    {
        return isRedundant ? IkJoint::JtLimitAll : IkJoint::JtLimitNone;
    }

    /// Whether the first rotary axis of the pair is free here: the tool is so near the pole that
    /// half the angle tolerance holds it there whatever that axis does.
    bool IsAtPole(const Vec3& direction) const;
    bool PassesPole(const Vec3& from, const Vec3& to) const;
    bool IsInPoleCone(const Vec3& direction) const;

    /// At the pole: puts the first axis of the pair at `first` and solves the others from `joints`.
    /// False where the axes do not reach the pole at all.
    bool SolveAtPole(std::size_t point, const CutterLocation& at, double first,
                     JointValues& joints);
    /// Puts values that are a little beyond their limits on them and solves the linear axes again.
    bool SettleWithinLimits(std::size_t point, const CutterLocation& at, JointValues& joints);

    /// Half the angle tolerance: so near the pole counts as at it [rad].
    double HoldAngle() const;

  private:
    const LoadedMachine& machine;
    const std::vector<Operation>& operations;
    PathTargets targets;
    std::vector<double> toolLengths;
    PlanOptions options;
    SolverSettings settings;
    PointSolver solver;
    std::optional<RotaryPair> pair;
    bool isRedundant;
    JointValues start;
    std::unique_ptr<SampledSolver> sampler; // null until it is asked for
    int sampledOperation{0};                // whose tool it holds for
};

} // namespace host

#endif
