#include "planner/Workplace.h"

#include <algorithm>
#include <utility>

#include "planner/JointSpace.h"

namespace host
{

namespace
{

constexpr std::size_t kNumbersOfDirection = 5;   // position and tool direction
constexpr std::size_t kNumbersOfOrientation = 6; // position and the whole orientation

} // namespace

Workplace::Workplace(const LoadedMachine& ofMachine, const LoadedStream& stream,
                     const Toolpath& ofPath, PathTargets ofPoints, std::vector<double> ofTools,
                     const PlanOptions& withOptions, const SolverSettings& withSettings)
    : machine(ofMachine), operations(ofPath.operations), targets(std::move(ofPoints)),
      toolLengths(std::move(ofTools)), options(withOptions), settings(withSettings),
      solver(ofMachine, stream, withSettings), pair(RotaryPair::Of(solver)),
      isRedundant(solver.FreeAxes().size() >
                  (targets.FixWholeOrientation() ? kNumbersOfOrientation : kNumbersOfDirection)),
      start(solver.Initial())
{}

PointSolver& Workplace::SolverAt(std::size_t point)
{
    // Another stream may have put its own tool into the same seat in the meantime.
    const auto operation = static_cast<std::size_t>(PointAt(point).operation);
    solver.Stream().SetToolLength(toolLengths[operation]);
    return solver;
}

bool Workplace::IsFreeWay(std::size_t point) const
{
    if (point == 0 || PointAt(point).isRapid) {
        return true;
    }
    const auto before = static_cast<std::size_t>(PointAt(point - 1).operation);
    const auto here = static_cast<std::size_t>(PointAt(point).operation);
    return toolLengths[before] != toolLengths[here] ||
           operations[before].toolNumber != operations[here].toolNumber;
}

SampledSolver& Workplace::SamplerAt(std::size_t point)
{
    PointSolver& at = SolverAt(point);
    if (!sampler || sampledOperation != PointAt(point).operation) {
        sampler = std::make_unique<SampledSolver>(machine, at.Stream(), settings, at.Initial());
        sampledOperation = PointAt(point).operation;
    }
    return *sampler;
}

double Workplace::HoldAngle() const
{
    return std::min(ToRadians(options.tolerances.angle_deg) / 2.0, options.poleCone);
}

bool Workplace::IsAtPole(const Vec3& direction) const
{
    return pair && pair->IsNearPole(direction, HoldAngle());
}

bool Workplace::PassesPole(const Vec3& from, const Vec3& to) const
{
    return pair && pair->PassesPole(from, to, HoldAngle());
}

bool Workplace::IsInPoleCone(const Vec3& direction) const
{
    return pair && pair->IsNearPole(direction, options.poleCone);
}

bool Workplace::SolveAtPole(std::size_t point, const CutterLocation& at, double first,
                            JointValues& joints)
{
    JointValues tried = joints;
    const std::size_t second = pair->SecondAxis();
    tried[pair->FirstAxis()] = first;
    tried[second] = NearestImage(pair->NearestSecond(at.direction, first), joints[second]);
    PointSolver& solverHere = SolverAt(point);
    // Where the axes reach the pole they come as near to the direction as that, or nearer.
    const double most = pair->AngleToPole(at.direction) + kRotarySlack;
    if (!solverHere.SolveLinear(at.position, tried) ||
        AngleBetween(solverHere.ToolAt(tried).direction, at.direction) > most) {
        return false;
    }
    joints = std::move(tried);
    return true;
}

bool Workplace::SettleWithinLimits(std::size_t point, const CutterLocation& at, JointValues& joints)
{
    if (!AreWithinLimits(Axes(), joints)) {
        return false;
    }
    JointValues settled = joints;
    for (std::size_t i = 0; i < settled.size(); ++i) {
        const IkJoint& joint = *Axes()[i]->joint;
        settled[i] = std::clamp(settled[i], joint.GetLowBound(), joint.GetHiBound());
    }
    if (settled == joints) {
        return true;
    }
    if (!SolverAt(point).SolveLinear(at.position, settled)) {
        return false;
    }
    joints = std::move(settled);
    return true;
}

} // namespace host
