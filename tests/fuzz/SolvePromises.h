#ifndef TRUNNION_TESTS_FUZZ_SOLVE_PROMISES_H
#define TRUNNION_TESTS_FUZZ_SOLVE_PROMISES_H

#include "support/UnusualMachine.h"

namespace test
{

/// What every solve promises, whatever its machine: the joints stay as they are, locked ones keep
/// their value in the answer too, a success meets the target and lies in the ranges that it was
/// told to respect, and the same call again, on this stream or on a copy, gives the same bits.
void CheckSolvePromises(const UnusualMachine& machine, Random& random);

/// What seen from the part is, is seen from the base behind the part: the same product, bit for
/// bit.
void CheckViews(const UnusualMachine& machine, Random& random);

} // namespace test

#endif
