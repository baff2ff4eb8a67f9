// The test program, with an argument for how long it runs:
//
//   plain_tests [--factor=N] [--gtest_...]
//
// N times as many cases as by default; TRUNNION_TEST_FACTOR in the environment does the same.

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const std::string option = "--factor=";
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, option.size(), option) == 0) {
            ::setenv("TRUNNION_TEST_FACTOR", argument.substr(option.size()).c_str(), 1);
        }
    }
    return RUN_ALL_TESTS();
}
