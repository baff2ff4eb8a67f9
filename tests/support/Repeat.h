#ifndef TRUNNION_TESTS_SUPPORT_REPEAT_H
#define TRUNNION_TESTS_SUPPORT_REPEAT_H

#include <cerrno> // the program's name
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/Random.h"

namespace test
{

/// A whole number from the environment: how a test program runs for a second or for a night.
inline long FromEnvironment(const char* name, long otherwise)
{
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtol(text, nullptr, 10);
}

/// The command that repeats a case of the running test, on its own.
inline std::string CommandOfCase(long seed, long number)
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return "TRUNNION_TEST_SEED=" + std::to_string(seed) +
           " TRUNNION_TEST_CASE=" + std::to_string(number) + " " + program_invocation_name +
           " --gtest_filter=" + info->test_suite_name() + "." + info->name();
}

/// Runs `body` on `count` cases, each with random numbers of its own, and stops at the first that
/// fails, naming the command that repeats it. TRUNNION_TEST_FACTOR multiplies the number of cases,
/// TRUNNION_TEST_SEED gives other ones, TRUNNION_TEST_CASE picks one.
template <class Body>
void Repeat(long count, std::uint64_t seed, const Body& body)
{
    const long chosen = FromEnvironment("TRUNNION_TEST_SEED", 0);
    const long only = FromEnvironment("TRUNNION_TEST_CASE", -1);
    const long end = only >= 0 ? only + 1 : count * FromEnvironment("TRUNNION_TEST_FACTOR", 1);
    for (long i = only >= 0 ? only : 0; i < end; ++i) {
        const std::uint64_t ofRun = static_cast<std::uint64_t>(chosen) * 0x9E3779B97F4A7C15U;
        Random random(ofRun + seed * 1000003U + static_cast<std::uint64_t>(i));
        SCOPED_TRACE("to repeat: " + CommandOfCase(chosen, i));
        body(random);
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

} // namespace test

#endif
