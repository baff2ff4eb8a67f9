#include "Model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "Patience.h"
#include "geometry/Frame.h"
#include "solve/Branches.h"
#include "solve/SampledSolver.h"
#include "solve/ToolRoll.h"
#include "solve/Unreached.h"
#include "text/InputError.h"
#include "text/Numbers.h"

namespace bindings
{

namespace
{

constexpr std::size_t kPose = 6;
constexpr std::size_t kPoseWithXAxis = 9;
constexpr std::size_t kMostStarts = 256;   // for a single pose, as the program has it
constexpr std::size_t kBetweenChecks = 64; // rows, so that looking at the clock costs nothing
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// Gives the tool of a stream a length as long as it lives.
class Seated
{
  public:
    Seated(const host::LoadedStream& ofStream, double length) : stream(ofStream)
    {
        if (!(length >= 0.0) || !std::isfinite(length)) {
            throw host::InputError("tool_length",
                                   host::RoundedText(length) + " is below 0; correct it");
        }
        stream.SetToolLength(length);
    }
    ~Seated() { stream.SetToolLength(0.0); }
    Seated(const Seated&) = delete;
    Seated& operator=(const Seated&) = delete;

  private:
    const host::LoadedStream& stream;
};

/// Holds axes of a stream as long as it lives.
class Held
{
  public:
    Held(std::vector<const host::Axis*> ofAxes, const std::vector<std::size_t>& locks)
        : axes(std::move(ofAxes))
    {
        for (const std::size_t lock : locks) {
            axes.at(lock)->joint->SetIsLocked(true);
        }
    }
    ~Held()
    {
        for (const host::Axis* axis : axes) {
            axis->joint->SetIsLocked(false);
        }
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

  private:
    std::vector<const host::Axis*> axes;
};

/// Moves the axes of a stream, and all back when it goes.
class Moved
{
  public:
    Moved(const host::LoadedMachine& ofMachine, const host::LoadedStream& stream,
          const double* joints)
        : machine(ofMachine)
    {
        for (const host::Axis* axis : machine.AxesOf(stream)) {
            axis->joint->SetCurValue(*joints++);
        }
    }
    ~Moved() { machine.MoveToInitial(); }
    Moved(const Moved&) = delete;
    Moved& operator=(const Moved&) = delete;

  private:
    const host::LoadedMachine& machine;
};

[[noreturn]] void RefusePose(std::size_t row, const std::string& fault)
{
    throw host::InputError("poses", "row " + std::to_string(row) + " " + fault);
}

host::PathTarget TargetFrom(const Rows& poses, std::size_t row)
{
    const double* const numbers = poses.At(row);
    const auto direction = host::Normalised({numbers[3], numbers[4], numbers[5]});
    if (!direction) {
        RefusePose(row, "has a tool direction without length; give i, j, k");
    }
    host::PathTarget target{{{numbers[0], numbers[1], numbers[2]}, *direction}, std::nullopt};
    if (poses.width == kPoseWithXAxis) {
        constexpr double kLeastAngle = 1e-6; // [rad]
        const auto xAxis = host::Normalised({numbers[6], numbers[7], numbers[8]});
        if (!xAxis || !(host::Length(host::Cross(*direction, *xAxis)) > kLeastAngle)) {
            RefusePose(row, "has an x axis that is not across the tool; give one that is");
        }
        target.xAxis = *xAxis;
    }
    return target;
}

std::vector<host::PathTarget> TargetsFrom(const Rows& poses)
{
    if (poses.width != kPose && poses.width != kPoseWithXAxis) {
        throw host::InputError("poses", "a pose has 6 numbers, x, y, z, i, j, k, or 9 with the "
                                        "tool's x axis behind them");
    }
    std::vector<host::PathTarget> targets;
    for (std::size_t row = 0; row < poses.count; ++row) {
        targets.push_back(TargetFrom(poses, row));
    }
    return targets;
}

void CheckJoints(const char* name, const Rows& joints, std::size_t axes)
{
    if (joints.width != axes) {
        throw host::InputError(name, "give " + std::to_string(axes) +
                                         " values, one for each axis of the stream, not " +
                                         std::to_string(joints.width));
    }
}

void CheckStarts(const Rows& starts, std::size_t axes, std::size_t poses)
{
    CheckJoints("start", starts, axes);
    if (starts.count == 0 || (starts.count != 1 && starts.count != poses)) {
        throw host::InputError("start", "give one row for all poses, or one for each");
    }
}

void CheckSettings(const host::SolverSettings& settings)
{
    constexpr int kMostIterations = 100000;
    if (settings.maxIterations < 1 || settings.maxIterations > kMostIterations) {
        throw host::InputError("max_iterations", std::to_string(settings.maxIterations) +
                                                     " is not between 1 and 100000; correct it");
    }
    if (!(settings.tolerance > 0.0) || !std::isfinite(settings.tolerance)) {
        throw host::InputError("tolerance", host::RoundedText(settings.tolerance) +
                                                " is not greater than 0; correct it");
    }
}

IkJoint::JointLimitTypes LimitsOf(const InverseOptions& options)
{
    return options.isLimited ? IkJoint::JtLimitAll : IkJoint::JtLimitNone;
}

/// As a path has it by default.
host::Vec3 DefaultXAxis(const host::ToolPoint& point)
{
    host::Toolpath path;
    path.points.push_back(point);
    return host::ToolXAxes(path, {}).front();
}

double AngleLeft(const IkXformMat& reached, const host::PathTarget& target)
{
    const double ofDirection = host::AngleBetween(host::Column(reached, 2), target.at.direction);
    if (!target.xAxis) {
        return ofDirection;
    }
    const IkXformMat asked = host::FrameOf(target.at.position, *target.xAxis, target.at.direction);
    return std::max(ofDirection,
                    host::AngleBetween(host::Column(reached, 0), host::Column(asked, 0)));
}

void Add(SolvedPoses& solved, host::PointSolver& solver, const host::PathTarget& target,
         const host::JointValues& joints)
{
    const IkXformMat reached = solver.PoseAt(joints);
    solved.joints.insert(solved.joints.end(), joints.begin(), joints.end());
    solved.converged.push_back(1);
    solved.positionError.push_back(
        host::Length(host::operator-(host::Column(reached, 3), target.at.position)));
    solved.directionError.push_back(AngleLeft(reached, target));
}

void AddFailure(SolvedPoses& solved, std::size_t axes)
{
    solved.joints.insert(solved.joints.end(), axes, kNone);
    solved.converged.push_back(0);
    solved.positionError.push_back(kNone);
    solved.directionError.push_back(kNone);
}

void Reserve(SolvedPoses& solved, std::size_t poses, std::size_t axes)
{
    solved.joints.reserve(poses * axes);
    solved.converged.reserve(poses);
    solved.positionError.reserve(poses);
    solved.directionError.reserve(poses);
}

} // namespace

const host::LoadedStream& Model::StreamAt(std::size_t index) const
{
    return machine.streams.at(index);
}

std::size_t Model::IndexOf(int id)
{
    return static_cast<std::size_t>(&machine.StreamWithId(id) - machine.streams.data());
}

std::vector<double> Model::Forward(std::size_t stream, const Rows& joints, double toolLength,
                                   bool asFrames)
{
    constexpr std::size_t kFrame = 16;
    const host::LoadedStream& at = StreamAt(stream);
    CheckJoints("joints", joints, at.axes.size());
    const Seated tool(at, toolLength);
    host::PointSolver solver(machine, at, {});
    Patience patience;
    std::vector<double> poses;
    poses.reserve(joints.count * (asFrames ? kFrame : kPose));
    host::JointValues values(joints.width);
    for (std::size_t row = 0; row < joints.count; ++row) {
        if (row % kBetweenChecks == 0) {
            patience.Check();
        }
        values.assign(joints.At(row), joints.At(row) + joints.width);
        const IkXformMat pose = solver.PoseAt(values);
        if (asFrames) {
            poses.insert(poses.end(), pose[0], pose[0] + kFrame); // rows stand behind each other
        } else {
            const host::Vec3 position = host::Column(pose, 3);
            const host::Vec3 direction = host::Column(pose, 2);
            poses.insert(poses.end(), position.begin(), position.end());
            poses.insert(poses.end(), direction.begin(), direction.end());
        }
    }
    return poses;
}

SolvedPoses Model::Inverse(std::size_t stream, const Rows& poses, const Rows& starts,
                           const InverseOptions& options)
{
    const host::LoadedStream& at = StreamAt(stream);
    const std::size_t axes = at.axes.size();
    const std::vector<host::PathTarget> targets = TargetsFrom(poses);
    CheckStarts(starts, axes, poses.count);
    CheckSettings(options.settings);
    if (options.from == StartFrom::Search && !options.locks.empty() && starts.count > 1) {
        throw host::InputError("start",
                               "a search holds its locked axes at one value each; give one "
                               "row for all poses");
    }
    const Seated tool(at, options.toolLength);
    const Held held(machine.AxesOf(at), options.locks);
    host::PointSolver solver(machine, at, options.settings);
    host::JointValues joints(starts.At(0), starts.At(0) + axes);
    std::optional<host::SampledSolver> search;
    if (options.from == StartFrom::Search) {
        search.emplace(machine, at, options.settings, joints);
    }
    Patience patience;
    SolvedPoses solved;
    Reserve(solved, poses.count, axes);
    for (std::size_t row = 0; row < poses.count; ++row) {
        if (row % kBetweenChecks == 0) {
            patience.Check();
        }
        const bool isGiven = options.from == StartFrom::Given || starts.count > 1;
        if (isGiven) {
            const double* const start = starts.At(starts.count > 1 ? row : 0);
            joints.assign(start, start + axes);
        }
        bool hasConverged = solver.Solve(targets[row], LimitsOf(options), joints);
        if (!hasConverged && search) {
            if (auto found = search->FindFirst(targets[row], joints)) {
                joints = *std::move(found);
                hasConverged = true;
            }
        }
        if (hasConverged) {
            Add(solved, solver, targets[row], joints);
        } else {
            AddFailure(solved, axes);
        }
    }
    return solved;
}

SolvedPoses Model::Branches(std::size_t stream, const Rows& pose, const Rows& start,
                            const InverseOptions& options)
{
    const host::LoadedStream& at = StreamAt(stream);
    host::PathTarget target = TargetsFrom(pose).at(0);
    CheckStarts(start, at.axes.size(), 1);
    const Seated tool(at, options.toolLength);
    const Held held(machine.AxesOf(at), options.locks);
    const Moved moved(machine, at, start.At(0));
    host::PointSolver solver(machine, at, options.settings);
    host::ToolPoint point;
    point.position = target.at.position;
    point.direction = target.at.direction;
    if (host::HasOpenRoll(solver) && !target.xAxis) {
        target.xAxis = DefaultXAxis(point);
    }
    SolvedPoses solved;
    const auto add = [&](const std::vector<double>& joints) {
        Add(solved, solver, target, joints);
    };
    if (solver.FreeRotaryAxes().size() > host::kMostSampledByHybrid) {
        const host::JointValues from(start.At(0), start.At(0) + start.width);
        host::SampledSolver search(machine, at, options.settings, from);
        const auto found = search.FindAll(target, from, {options.isLimited, kMostStarts});
        std::for_each(found.begin(), found.end(), add);
    } else if (target.xAxis) {
        const auto found = solver.SolveFromSamples(target, LimitsOf(options));
        std::for_each(found.begin(), found.end(), add);
    } else {
        for (const host::Branch& branch :
             host::FindBranches(machine, at, point, LimitsOf(options)).found) {
            add(branch.joints);
        }
    }
    return solved;
}

std::string Model::Diagnose(std::size_t stream, const Rows& pose, const Rows& start,
                            double toolLength, host::AngleUnit unit)
{
    const host::LoadedStream& at = StreamAt(stream);
    const host::CutterLocation asked = TargetsFrom(pose).at(0).at;
    CheckStarts(start, at.axes.size(), 1);
    const Seated tool(at, toolLength);
    const Moved moved(machine, at, start.At(0));
    host::ToolPoint point;
    point.position = asked.position;
    point.direction = asked.direction;
    return host::Sentence(host::Diagnose(machine, at, point), {machine.length, unit});
}

} // namespace bindings
