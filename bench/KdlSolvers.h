#ifndef TRUNNION_BENCH_KDL_SOLVERS_H
#define TRUNNION_BENCH_KDL_SOLVERS_H

#include <functional>
#include <memory>
#include <vector>

#include "PoseSolver.h"

// The same machines and poses given to the Orocos Kinematics and Dynamics Library. Its chain is the
// whole loop from the part to the tool. Where the turn about the tool does not count, a free rotary
// joint about the tool's axis ends the chain, since it always solves for whole poses.
//
// In a build without KDL there is nothing to check, and all else is null.
namespace bench
{

/// Throws when forward kinematics of its chain differ from the library's by more than 1e-9 anywhere
/// in the pose, for any of `joints` [length].
void CheckKdlChain(const Subject& subject, const std::vector<JointValues>& joints);

/// Computes the pose at each of `joints` once.
std::function<void()> KdlForward(const Subject& subject, const std::vector<JointValues>& joints);

/// ChainIkSolverPos_NR_JL on ChainIkSolverVel_pinv, the machine's joint limits, at most 61
/// iterations. One number bounds each component of the error, millimetres of the position and
/// radians of the turn: such that the position is within 1e-4 mm.
std::unique_ptr<PoseSolver> MakeKdlNewton(const Subject& subject, const Task& task);

/// ChainIkSolverPos_LMA, which knows no limits, with its own most iterations. The weighted error,
/// mm of the position and degrees of the turn, is below 1e-4, as a stream's solve has it.
std::unique_ptr<PoseSolver> MakeKdlLevenbergMarquardt(const Subject& subject, const Task& task);

} // namespace bench

#endif
