// Solves for as long as one likes, and looks whether anything piles up or drifts:
//
//   soak COUNT [--round N] [--samples FOLDER]
//
// COUNT solves (10000000 for a soak), in rounds of N (a million, or a fifth of COUNT where that is
// less). Every round solves the same targets from the same starts, over the machines of the tests
// and those of FOLDER/machines, by streams, by solver objects and by samples. From the second round
// on, each must give the same results to the last bit, leave as many blocks on the heap as it has
// found, and not take more of the computer's memory.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include "IkSolver.h"
#include "allocations/CountedNew.h"
#include "digest/Digest.h"
#include "machine/LoadedMachine.h"
#include "support/Fixtures.h"
#include "text/Numbers.h"

namespace
{

namespace fs = std::filesystem;
using test::Random;

struct Options
{
    long count{0};
    long round{0};
    fs::path samples{"samples"};
};

/// A stream and its joints, whoever made them.
struct Subject
{
    std::string name;
    IkStream* stream;
    std::vector<IkJoint*> joints;
};

constexpr double kFarLinear = 300.0; // where an axis has no limits [mm]
constexpr double kFarRotary = 3.0;   // [rad]

double Within(const IkJoint& joint, Random& random)
{
    const double far = joint.IsRotary() ? kFarRotary : kFarLinear;
    return random.Between(std::max(joint.GetLowBound(), -far), std::min(joint.GetHiBound(), far));
}

void Add(test::Digest& digest, bool isSolved, const IkJtStateVector& states)
{
    digest.Add(std::uint64_t{isSolved});
    for (const double value : states.GetValVector()) {
        digest.Add(value);
    }
}

/// One solve: to a pose of the machine, from near by.
bool SolveOnce(const Subject& subject, long number, Random& random, test::Digest& digest)
{
    for (IkJoint* joint : subject.joints) {
        joint->SetCurValue(Within(*joint, random));
    }
    IkEndState target = subject.stream->SolveFK(false);
    for (IkJoint* joint : subject.joints) {
        const double reach = joint->IsRotary() ? 0.1 : 10.0;
        joint->SetCurValue(joint->GetCurValue() + random.Between(-reach, reach));
    }
    IkJtStateVector result;
    bool isSolved = false;
    if (number % 5000 == 0) { // some 60 solves in one
        IkSolverHybrid solver(subject.stream);
        isSolved = solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    } else if (number % 7 == 0) {
        IkSolverPsuedoInverse solver(subject.stream);
        isSolved = solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    } else {
        isSolved = subject.stream->SolveIK(target, result, false, IkJoint::JtLimitNone, false);
    }
    Add(digest, isSolved, result);
    return isSolved;
}

/// The memory that the process has in the computer [bytes].
long ResidentBytes()
{
    std::ifstream statm("/proc/self/statm");
    long all = 0;
    long resident = 0;
    statm >> all >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

/// What a round comes to.
struct Round
{
    std::uint64_t digest{0};
    long solved{0};
    long blocks{0};   //!< left on the heap
    long resident{0}; //!< [bytes]
    double seconds{0.0};
};

Round RunRound(const std::vector<Subject>& subjects, long count)
{
    const auto start = std::chrono::steady_clock::now();
    Round round;
    {
        test::Digest digest;
        Random random(5);
        for (long i = 0; i < count; ++i) {
            const Subject& subject = subjects[static_cast<std::size_t>(i) % subjects.size()];
            round.solved += SolveOnce(subject, i, random, digest) ? 1 : 0;
        }
        round.digest = digest.Value();
    }
    round.blocks = test::OutstandingBlocks();
    round.resident = ResidentBytes();
    round.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return round;
}

void Print(long number, long count, const Round& round)
{
    std::cout << "round " << number << ": " << count << " solves, " << round.solved
              << " converged, digest " << std::hex << std::setfill('0') << std::setw(16)
              << round.digest << std::dec << std::setfill(' ') << ", " << round.blocks
              << " blocks, " << round.resident / 1024 << " KiB resident, "
              << host::RoundedText(round.seconds) << " s" << std::endl;
}

/// Whether a round after the first is as that was.
bool IsUnchanged(const Round& first, const Round& later)
{
    // Pages that the C library takes for itself, for instance when text is first printed.
    constexpr long kSlack = 256L * 1024;
    bool isUnchanged = true;
    const auto expect = [&isUnchanged](bool holds, const char* otherwise) {
        if (!holds) {
            std::cout << "soak: " << otherwise << "\n";
            isUnchanged = false;
        }
    };
    expect(later.digest == first.digest, "the results have changed");
    expect(later.blocks == first.blocks, "blocks are left on the heap");
    expect(later.resident <= first.resident + kSlack, "the memory in use has grown");
    return isUnchanged;
}

Options Parse(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool hasNext = i + 1 < arguments.size();
        if (arguments[i] == "--round" && hasNext) {
            options.round = host::ParseCount(arguments[++i]).value_or(0);
        } else if (arguments[i] == "--samples" && hasNext) {
            options.samples = arguments[++i];
        } else {
            options.count = host::ParseCount(arguments[i]).value_or(0);
        }
    }
    if (options.round == 0) {
        options.round = std::min(1000000L, options.count / 5);
    }
    if (options.round < 1 || options.count < 2 * options.round) {
        throw std::runtime_error("soak: give COUNT, at least two rounds of solves");
    }
    return options;
}

int Run(const Options& options)
{
    std::vector<test::Fixture> fixtures;
    std::vector<host::LoadedMachine> samples;
    std::vector<Subject> subjects;
    for (const test::NamedFixture& named : test::AllFixtures()) {
        fixtures.push_back(named.make());
        subjects.push_back({named.name, fixtures.back().stream, fixtures.back().joints});
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(options.samples / "machines")) {
        if (entry.path().extension() == ".toml") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        samples.push_back(host::LoadMachine(file, {}));
        for (const host::LoadedStream& stream : samples.back().streams) {
            subjects.push_back({file.filename().string(), stream.stream, {}});
            for (const host::Axis* axis : samples.back().AxesOf(stream)) {
                subjects.back().joints.push_back(axis->joint);
            }
        }
    }
    std::cout << subjects.size() << " streams\n";

    RunRound(subjects, std::min(options.round, 10000L)); // fills what is kept for good
    const Round first = RunRound(subjects, options.round);
    Print(1, options.round, first);
    for (long i = 2; i <= options.count / options.round; ++i) {
        const Round later = RunRound(subjects, options.round);
        Print(i, options.round, later);
        if (!IsUnchanged(first, later)) {
            return 1;
        }
    }
    const double share = static_cast<double>(first.solved) / static_cast<double>(options.round);
    if (share < 0.8) { // solves that mostly fail would test little
        std::cout << "soak: few solves converge\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run(Parse({argv + 1, argv + argc}));
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 2;
    }
}
