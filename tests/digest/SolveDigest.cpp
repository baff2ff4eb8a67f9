// Prints a digest of a few thousand solves: every build type and compiler must print the same.
//
//   solve_digest                 prints the digests
//   solve_digest --expect FILE   also compares them with the stored ones (exit 1 when they differ)
//
// The solves call sin, cos and the like of the C library, whose last bits may differ from version
// to version and from CPU to CPU. So its functions have a digest of their own: where that one
// differs from the stored one, the others are not comparable and the test counts as skipped (exit
// 77).

#include <cmath>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "IkSolver.h"
#include "support/Bits.h"
#include "support/RandomMachine.h"

using test::Fixture;
using test::Random;

namespace
{

constexpr int kSkipped = 77;

/// FNV-1a over the bits of doubles.
class Digest
{
  public:
    void Add(std::uint64_t bits)
    {
        for (int i = 0; i < 8; ++i) {
            hash = (hash ^ (bits & 0xFFU)) * 0x100000001B3U;
            bits >>= 8U;
        }
    }
    void Add(double x)
    {
        // Which NaN an operation yields is the processor's affair.
        Add(std::isnan(x) ? std::uint64_t{0x7FF8000000000000U} : test::BitsOf(x));
    }
    void Add(const IkJtStateVector& states)
    {
        Add(static_cast<std::uint64_t>(states.Size()));
        for (const double value : states.GetValVector()) {
            Add(value);
        }
    }
    void Add(const IkXformMat& m)
    {
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                Add(m[i][j]);
            }
        }
    }

    std::uint64_t Value() const { return hash; }

  private:
    std::uint64_t hash{0xCBF29CE484222325U};
};

std::uint64_t LibraryFunctions()
{
    Digest digest;
    Random random(1);
    for (int i = 0; i < 20000; ++i) {
        const double x = random.Between(-7, 7);
        const double y = random.Between(-1, 1);
        for (const double value : {std::sin(x), std::cos(x), std::acos(y), std::hypot(x, y),
                                   std::fmod(x, 6.28318530717958), std::sqrt(x * x)}) {
            digest.Add(value);
        }
    }
    return digest.Value();
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
    digest.Add(result);
    digest.Add(stream.SolverJtStates);
    digest.Add(stream.SolveFK(stream.SolverJtStates, false, nullptr, nullptr, toolOnly)
                   .GetCompleteState());
}

/// Solves by solver objects: one from the joints' current values, one from sampled starts.
void AddSolverObjects(Digest& digest, const Fixture& fixture, IkEndState& target, Random& random)
{
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    IkJtStateVector result;
    IkSolverPsuedoInverse solver(fixture.stream);
    digest.Add(std::uint64_t{solver.SolveIK(target, result, false, limits, false)});
    digest.Add(result);
    digest.Add(solver.GetCurErrorval());
    IkSolverHybrid hybrid(fixture.stream);
    digest.Add(std::uint64_t{hybrid.SolveIK(target, result, false, limits, false)});
    digest.Add(result);
    for (const IkSolverSampleItem& sample : hybrid.GetSampleList()) {
        digest.Add(std::uint64_t{sample.rejected});
        digest.Add(sample.resultStates);
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

void PrintLine(std::ostream& os, const std::string& what, std::uint64_t digest)
{
    os << std::left << std::setw(24) << what << std::hex << std::setfill('0') << std::right
       << std::setw(16) << digest << std::dec << std::setfill(' ') << '\n';
}

int Compare(const std::string& library, const std::string& solves, const char* expectedFile)
{
    std::ifstream file(expectedFile);
    std::string expectedLibrary;
    std::getline(file, expectedLibrary);
    std::stringstream expectedSolves;
    expectedSolves << file.rdbuf();
    if (expectedLibrary + '\n' != library) {
        std::cout << "The C library's functions differ from those of the stored digests.\n";
        return kSkipped;
    }
    if (expectedSolves.str() != solves) {
        std::cout << "The solves differ from the stored digests:\n" << expectedSolves.str();
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::ostringstream library;
    PrintLine(library, "C library functions", LibraryFunctions());
    std::ostringstream solves;
    for (const test::NamedFixture& named : test::AllFixtures()) {
        PrintLine(solves, named.name + std::string(", 400"), FixtureSolves(named, 400));
    }
    PrintLine(solves, "random machines, 1000", RandomMachineSolves(1000));
    PrintLine(solves, "solver objects, 2 x 210", SolverObjectSolves(30));
    std::cout << library.str() << solves.str();

    const bool isCompared = argc == 3 && std::string(argv[1]) == "--expect";
    return isCompared ? Compare(library.str(), solves.str(), argv[2]) : 0;
}
