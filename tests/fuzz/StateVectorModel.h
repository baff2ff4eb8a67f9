#ifndef TRUNNION_TESTS_FUZZ_STATE_VECTOR_MODEL_H
#define TRUNNION_TESTS_FUZZ_STATE_VECTOR_MODEL_H

#include "support/UnusualMachine.h"

namespace test
{

/// Some operations on state vectors of the machine's joints, each held against a list and a map.
void CheckStateVectors(const UnusualMachine& machine, Random& random);

} // namespace test

#endif
