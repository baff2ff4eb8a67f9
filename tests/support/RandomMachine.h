#ifndef TRUNNION_TESTS_SUPPORT_RANDOM_MACHINE_H
#define TRUNNION_TESTS_SUPPORT_RANDOM_MACHINE_H

#include "support/Fixtures.h"
#include "support/Random.h"

namespace test
{

/// A machine that no engineer would build but every host may describe: two branches of one to five
/// joints, mixed with bodies, over frames of any orientation; joints of any primitive, reversed,
/// locked, offset, with bounds wide, narrow, inverted or a full turn; sometimes a joint that both
/// chains share, a part-space frame, a local lock. Joints start at random values.
Fixture RandomMachine(Random& random);

/// A target near the pose at the joints' current values, with a random filter.
IkEndState RandomTarget(const Fixture& fixture, Random& random);

IkXformMat RandomFrame(Random& random, double reach);

} // namespace test

#endif
