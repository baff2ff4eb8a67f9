#ifndef TRUNNION_HOST_SOLVE_SAMPLED_SOLVER_H
#define TRUNNION_HOST_SOLVE_SAMPLED_SOLVER_H

#include <cstddef>
#include <optional>
#include <vector>

#include "solve/PointSolver.h"
#include "solve/StartConfigurations.h"

namespace host
{

constexpr std::size_t kMostSampledByHybrid = 3; //!< rotary axes; it has one start beyond

/// How much of what there is at a pose is looked for.
struct SampleExtent
{
    bool isLimited{true};   //!< to solutions within the limits
    std::size_t starts{64}; //!< of a six-axis arm's ways to stand 99.6 % are found, from 32 97.7 %
};

/// Solves a stream from many starts, for machines with more rotary axes than the hybrid solver
/// samples and for points that lie far from the last one. What it finds depends on its arguments
/// alone, not on what it was asked before.
///
/// It holds for the locks and the tool length at the time of its making.
class SampledSolver
{
  public:
    /// @param lockedAt where the locked axes stand; the other values do not count
    SampledSolver(const LoadedMachine& machine, const LoadedStream& stream, SolverSettings settings,
                  const JointValues& lockedAt);

    /// The first solution within the limits, from `first` or else from the nearest of the start
    /// configurations. Its rotary axes stand as near to `first` as whole turns bring them.
    std::optional<JointValues> FindFirst(const PathTarget& target, const JointValues& first);
    /// The distinct solutions to which `first` and the nearest start configurations lead, in the
    /// order in which they are found; whole turns make no difference, and each stands as near to
    /// `first` as they bring it. With joints to spare, or at a pose where two axes are one, there
    /// is no end of them: then every start may lead to one of its own.
    std::vector<JointValues> FindAll(const PathTarget& target, const JointValues& first,
                                     const SampleExtent& extent = {});

  private:
    std::optional<JointValues> SolveFrom(const PathTarget& target, JointValues joints,
                                         const JointValues& near, bool isLimited);
    bool BringWithinLimits(JointValues& joints, const JointValues& near) const;

    PointSolver solver;
    std::vector<std::size_t> free;
    StartConfigurations starts;
};

/// Whether two solutions are the same but for whole turns of rotary axes.
bool AreSameSolution(const std::vector<const Axis*>& axes, const JointValues& a,
                     const JointValues& b);

} // namespace host

#endif
