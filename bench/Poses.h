#ifndef TRUNNION_BENCH_POSES_H
#define TRUNNION_BENCH_POSES_H

#include <vector>

#include "Subject.h"

namespace bench
{

/// What a contender is asked: to reach targets, from home each time or from one to the next.
struct Task
{
    JointValues start; //!< of the first solve, and of every one unless they follow each other
    std::vector<IkEndState> targets;
    std::vector<JointValues> witnesses; //!< joint values that meet the targets
    bool isPath{false};                 //!< each solve starts from the answer of the one before
};

/// Random joint values within the limits, rotary joints within half a turn of 0.
std::vector<JointValues> RandomJoints(const Subject& subject, int count);

/// From home to the poses at random joint values.
Task ColdTask(const Subject& subject, int count);
/// Once round a closed curve about home on which the joints move evenly and together, in steps of
/// up to 1 mm and 0.6 degrees.
Task WarmTask(const Subject& subject, int count);

/// Whether the joints at `values` bring the tool to the target within 1e-4 mm and, by its axis,
/// 1e-2 degrees; by its x axis too where the turn about the tool counts. Limits are not asked: not
/// every contender knows them.
bool Meets(const Subject& subject, const JointValues& values, const IkEndState& target);

} // namespace bench

#endif
