#ifndef TRUNNION_TESTS_FUZZ_PROGRAM_INPUT_H
#define TRUNNION_TESTS_FUZZ_PROGRAM_INPUT_H

#include <string>

#include "app/SolveOptions.h"
#include "support/Random.h"

// What a user may hand to the program: whole files, mostly such as make sense.
namespace test
{

/// Machines of one to seven axes, in any order and at any angle, beside the usual mills; now and
/// then with a damaged line.
std::string AnyMachineText(Random& random);

/// Up to ten points, as cutter locations or as a table.
struct PathInput
{
    std::string name; //!< of the file
    std::string text;
};
PathInput AnyPath(Random& random);

/// How to solve it, without the files.
host::SolveOptions AnyOptions(Random& random);

} // namespace test

#endif
