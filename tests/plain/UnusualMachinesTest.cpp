// Unusual machines against the plain formulation.

#include <gtest/gtest.h>

#include "plain/Comparison.h"
#include "plain/UnusualChecks.h"
#include "support/Repeat.h"

namespace
{

using test::Random;
using test::Tally;
using test::UnusualMachine;

template <class Check>
void CheckEach(long count, std::uint64_t seed, const Check& check)
{
    test::Repeat(test::Cases(count), seed,
                 [&check](Random& random) { check(test::MakeUnusualMachine(random), random); });
}

/// Solves of which none ended one of both ways would test little.
void ExpectBoth(const Tally& tally)
{
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(tally.solved, 0);
        EXPECT_GT(tally.failed, 0);
    }
}

} // namespace

TEST(UnusualMachines, Chains)
{
    CheckEach(2000, 30, test::CheckChains);
}

TEST(UnusualMachines, ForwardKinematics)
{
    CheckEach(4000, 31, test::CheckForwardKinematics);
}

TEST(UnusualMachines, NewPartSpace)
{
    int found = 0;
    CheckEach(2000, 32, [&found](const UnusualMachine& machine, Random& random) {
        found += test::CheckNewPartSpace(machine, random) ? 1 : 0;
    });
    EXPECT_GT(found, 0);
}

TEST(UnusualMachines, PartSpaceFrames)
{
    CheckEach(1000, 33, test::CheckPartSpaceFrame);
}

TEST(UnusualMachines, Stages)
{
    CheckEach(5000, 34, test::CheckStages);
}

TEST(UnusualMachines, Limits)
{
    CheckEach(3000, 35, test::CheckLimits);
}

TEST(UnusualMachines, StreamSolves)
{
    Tally tally;
    CheckEach(4000, 36, [&tally](const UnusualMachine& machine, Random& random) {
        test::CheckStreamSolve(machine, random, tally);
    });
    ExpectBoth(tally);
}

TEST(MeddlingMachines, StreamSolves)
{
    Tally tally;
    test::Repeat(test::Cases(500), 40, [&tally](Random& random) {
        test::CheckStreamSolve(test::MakeMeddlingMachine(random), random, tally);
    });
    ExpectBoth(tally);
}

TEST(UnusualMachines, PsuedoInverseSolves)
{
    Tally tally;
    CheckEach(5000, 37, [&tally](const UnusualMachine& machine, Random& random) {
        test::CheckPsuedoInverseSolves(machine, random, tally);
    });
    ExpectBoth(tally);
}

TEST(UnusualMachines, HybridSolves)
{
    Tally tally;
    CheckEach(600, 38, [&tally](const UnusualMachine& machine, Random& random) {
        test::CheckHybridSolve(machine, random, tally);
    });
    ExpectBoth(tally);
    if (tally.solved + tally.failed > 1) {
        EXPECT_GE(tally.mostSamples, 16U); // two joints sampled, or three
    }
}

TEST(UnusualMachines, DuplicateSamples)
{
    int left = 0;
    CheckEach(2000, 39, [&left](const UnusualMachine& machine, Random& random) {
        left += test::CheckDuplicateSamples(machine, random);
    });
    EXPECT_GT(left, 0);
}
