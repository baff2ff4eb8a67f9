// The loops that a host in C++ would write, for what Python's calls with arrays are compared with:
// loaded into the same process, timed by the processor time of the same thread.

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>

#include <time.h> // NOLINT(modernize-deprecated-headers): clock_gettime is POSIX's

#include "geometry/Vec3.h"
#include "machine/LoadedMachine.h"
#include "solve/PointSolver.h"

namespace
{

constexpr std::size_t kPose = 6;
constexpr double kFailed = -1.0;

double ProcessorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Calls `each` with a solver of the machine's first stream, the joints and the number of each row.
template <class Each>
double SecondsOf(const char* file, std::size_t count, const Each& each)
{
    try {
        host::LoadedMachine machine = host::LoadMachine(file);
        host::PointSolver solver(machine, machine.StreamWithId(std::nullopt), {});
        host::JointValues joints = solver.Initial();
        const double start = ProcessorSeconds();
        for (std::size_t row = 0; row < count; ++row) {
            each(solver, joints, row);
        }
        return ProcessorSeconds() - start;
    } catch (const std::exception&) {
        return kFailed;
    }
}

} // namespace

extern "C" {

/// Seconds of processor time, below 0 where the file is no machine: joint values for rows of x, y,
/// z, i, j, k, each solve from the solution before it.
__attribute__((visibility("default"))) double
trunnion_loop_inverse(const char* file, std::size_t count, const double* poses, double* joints)
{
    return SecondsOf(file, count,
                     [&](host::PointSolver& solver, host::JointValues& values, std::size_t row) {
                         const double* const pose = poses + row * kPose;
                         const host::Vec3 direction =
                             host::Normalised({pose[3], pose[4], pose[5]}).value_or(host::Vec3{});
                         solver.Solve({{{pose[0], pose[1], pose[2]}, direction}, std::nullopt},
                                      IkJoint::JtLimitAll, values);
                         std::copy(values.begin(), values.end(), joints + row * values.size());
                     });
}

/// The same the other way round.
__attribute__((visibility("default"))) double
trunnion_loop_forward(const char* file, std::size_t count, const double* joints, double* poses)
{
    return SecondsOf(
        file, count, [&](host::PointSolver& solver, host::JointValues& values, std::size_t row) {
            std::copy_n(joints + row * values.size(), values.size(), values.begin());
            const host::CutterLocation tool = solver.ToolAt(values);
            std::copy(tool.position.begin(), tool.position.end(), poses + row * kPose);
            std::copy(tool.direction.begin(), tool.direction.end(), poses + row * kPose + 3);
        });
}

} // extern "C"
