// Prints a digest of a few thousand solves: every build type and compiler must print the same.
//
//   solve_digest                 prints the digests
//   solve_digest --expect FILE   also compares them with the stored ones (exit 1 when they differ)

#include <iostream>
#include <sstream>

#include "IkSolver.h"
#include "digest/Digest.h"
#include "support/RandomMachine.h"

using test::Digest;
using test::Fixture;
using test::Random;

namespace
{

void Add(Digest& digest, const IkJtStateVector& states)
{
    digest.Add(static_cast<std::uint64_t>(states.Size()));
    for (const double value : states.GetValVector()) {
        digest.Add(value);
    }
}

void Add(Digest& digest, const IkXformMat& m)
{
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            digest.Add(m[i][j]);
        }
    }
}

/// One solve from the joints' current values, with everything it leaves behind.
void AddSolve(Digest& digest, const Fixture& fixture, IkEndState& target, Random& random)
{
    IkStream& stream = *fixture.stream;
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    const bool toolOnly = random.OneIn(8);
    const bool lockRotary = random.OneIn(12);
    IkJtStateVector result;
    const bool isSolved = stream.SolveIK(target, result, toolOnly, limits, lockRotary);
    digest.Add(std::uint64_t{isSolved});
    Add(digest, result);
    Add(digest, stream.SolverJtStates);
    Add(digest, stream.SolveFK(stream.SolverJtStates, false, nullptr, nullptr, toolOnly)
                    .GetCompleteState());
}

/// Solves by solver objects: one from the joints' current values, one from sampled starts.
void AddSolverObjects(Digest& digest, const Fixture& fixture, IkEndState& target, Random& random)
{
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    IkJtStateVector result;
    IkSolverPsuedoInverse solver(fixture.stream);
    digest.Add(std::uint64_t{solver.SolveIK(target, result, false, limits, false)});
    Add(digest, result);
    digest.Add(solver.GetCurErrorval());
    IkSolverHybrid hybrid(fixture.stream);
    digest.Add(std::uint64_t{hybrid.SolveIK(target, result, false, limits, false)});
    Add(digest, result);
    for (const IkSolverSampleItem& sample : hybrid.GetSampleList()) {
        digest.Add(std::uint64_t{sample.rejected});
        Add(digest, sample.resultStates);
        digest.Add(sample.errorValue);
    }
}

std::vector<double> RandomValues(const Fixture& fixture, Random& random)
{
    std::vector<double> values;
    for (const IkJoint* joint : fixture.joints) {
        values.push_back(random.Between(joint->GetLowBound(), joint->GetHiBound()));
    }
    return values;
}

std::uint64_t FixtureSolves(const test::NamedFixture& named, int count)
{
    Digest digest;
    Random random(2);
    const Fixture fixture = named.make();
    for (int i = 0; i < count; ++i) {
        fixture.SetJoints(RandomValues(fixture, random));
        IkEndState target = test::RandomTarget(fixture, random);
        AddSolve(digest, fixture, target, random);
    }
    return digest.Value();
}

std::uint64_t RandomMachineSolves(int count)
{
    Digest digest;
    Random random(3);
    for (int i = 0; i < count; ++i) {
        const Fixture fixture = test::RandomMachine(random);
        IkEndState target = test::RandomTarget(fixture, random);
        AddSolve(digest, fixture, target, random);
    }
    return digest.Value();
}

std::uint64_t SolverObjectSolves(int countEach)
{
    Digest digest;
    Random random(4);
    for (const test::NamedFixture& named : test::AllFixtures()) {
        const Fixture fixture = named.make();
        for (int i = 0; i < countEach; ++i) {
            fixture.SetJoints(RandomValues(fixture, random));
            IkEndState target = test::RandomTarget(fixture, random);
            AddSolverObjects(digest, fixture, target, random);
        }
    }
    for (int i = 0; i < countEach; ++i) {
        const Fixture fixture = test::RandomMachine(random);
        IkEndState target = test::RandomTarget(fixture, random);
        AddSolverObjects(digest, fixture, target, random);
    }
    return digest.Value();
}

} // namespace

int main(int argc, char** argv)
{
    std::ostringstream library;
    test::PrintLine(library, "C library functions", test::LibraryFunctions());
    std::ostringstream solves;
    for (const test::NamedFixture& named : test::AllFixtures()) {
        test::PrintLine(solves, named.name + std::string(", 400"), FixtureSolves(named, 400));
    }
    test::PrintLine(solves, "random machines, 1000", RandomMachineSolves(1000));
    test::PrintLine(solves, "solver objects, 2 x 210", SolverObjectSolves(30));
    std::cout << library.str() << solves.str();

    const bool isCompared = argc == 3 && std::string(argv[1]) == "--expect";
    return isCompared ? test::Compare(library.str(), solves.str(), argv[2]) : 0;
}
