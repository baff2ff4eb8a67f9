#ifndef TRUNNION_TESTS_FUZZ_TARGETS_H
#define TRUNNION_TESTS_FUZZ_TARGETS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace test
{

/// What is done with one input. Whatever does not hold ends the program.
using FuzzTarget = void (*)(const std::uint8_t* bytes, std::size_t size);

/// By their names, which are those of the folders in corpus/.
const std::map<std::string, FuzzTarget>& FuzzTargets();
/// Throws std::invalid_argument for a name that is none of them.
FuzzTarget FuzzTargetNamed(const std::string& name);

/// Makes the first check that fails print itself and end the program.
void AbortOnFailedCheck();

void FuzzLibrary(const std::uint8_t* bytes, std::size_t size);
void FuzzMachine(const std::uint8_t* bytes, std::size_t size);
void FuzzUrdf(const std::uint8_t* bytes, std::size_t size);
void FuzzApt(const std::uint8_t* bytes, std::size_t size);
void FuzzCsv(const std::uint8_t* bytes, std::size_t size);
void FuzzNc(const std::uint8_t* bytes, std::size_t size);
void FuzzTable(const std::uint8_t* bytes, std::size_t size);
void FuzzDialect(const std::uint8_t* bytes, std::size_t size);
void FuzzVerification(const std::uint8_t* bytes, std::size_t size);
void FuzzCheckpoint(const std::uint8_t* bytes, std::size_t size);
void FuzzProgram(const std::uint8_t* bytes, std::size_t size);

} // namespace test

#endif
