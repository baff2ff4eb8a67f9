#ifndef TRUNNION_TESTS_PLAIN_UNUSUAL_CHECKS_H
#define TRUNNION_TESTS_PLAIN_UNUSUAL_CHECKS_H

#include <cstddef>

#include "support/UnusualMachine.h"

// What has to hold of any machine, however unusual: the library does on it what the plain
// formulation does, bit for bit. Each check makes what it needs from the random numbers that it is
// given, and leaves the joints at the values that they had.
namespace test
{

/// How many solves of a check ended which way.
struct Tally
{
    int solved{0};
    int failed{0};
    std::size_t mostSamples{0}; // of the hybrid solver

    void Add(bool isSolved) { ++(isSolved ? solved : failed); }
};

void CheckChains(const UnusualMachine& machine, Random& random);
void CheckForwardKinematics(const UnusualMachine& machine, Random& random);
/// Whether there was one.
bool CheckNewPartSpace(const UnusualMachine& machine, Random& random);
/// Replaces the part space.
void CheckPartSpaceFrame(const UnusualMachine& machine, Random& random);
void CheckStages(const UnusualMachine& machine, Random& random);
void CheckLimits(const UnusualMachine& machine, Random& random);
void CheckStreamSolve(const UnusualMachine& machine, Random& random, Tally& tally);
void CheckPsuedoInverseSolves(const UnusualMachine& machine, Random& random, Tally& tally);
void CheckHybridSolve(const UnusualMachine& machine, Random& random, Tally& tally);
/// Returns how many samples are left.
int CheckDuplicateSamples(const UnusualMachine& machine, Random& random);

} // namespace test

#endif
