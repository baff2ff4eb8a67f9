// A test program with arguments for how long it runs and on which cases:
//
//   plain_tests [--factor=N] [--seed=S] [--case=I] [--gtest_...]
//   property_tests, likewise
//
// N times as many cases as by default, other ones for each S, and of them all or the one numbered
// I. TRUNNION_TEST_FACTOR, TRUNNION_TEST_SEED and TRUNNION_TEST_CASE in the environment do the
// same.

#include <array>
#include <cstdlib>
#include <string>
#include <utility>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const std::array<std::pair<std::string, const char*>, 3> options{
        {{"--factor=", "TRUNNION_TEST_FACTOR"},
         {"--seed=", "TRUNNION_TEST_SEED"},
         {"--case=", "TRUNNION_TEST_CASE"}}};
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        for (const auto& [option, variable] : options) {
            if (argument.compare(0, option.size(), option) == 0) {
                ::setenv(variable, argument.substr(option.size()).c_str(), 1);
            }
        }
    }
    return RUN_ALL_TESTS();
}
