#ifndef TRUNNION_TESTS_HOST_MUTATED_MUTATION_H
#define TRUNNION_TESTS_HOST_MUTATED_MUTATION_H

#include <string>
#include <vector>

#include "support/Random.h"

namespace test
{

/// One of `good`, damaged in one to four places: bytes flipped, taken out, put in; lines, words and
/// numbers doubled, swapped, taken out; numbers replaced by extreme ones; the end cut off. Seldom
/// as it is.
std::string Mutated(const std::vector<std::string>& good, Random& random);

} // namespace test

#endif
