// What libFuzzer calls. The target is named by an argument that libFuzzer itself passes over:
//
//   fuzz --target=NAME [libFuzzer's own arguments]

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "fuzz/Targets.h"

namespace
{

test::FuzzTarget target = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    const std::string option = "--target=";
    for (int i = 1; i < *argc; ++i) {
        const std::string argument = (*argv)[i];
        if (argument.compare(0, option.size(), option) == 0) {
            try {
                target = test::FuzzTargetNamed(argument.substr(option.size()));
            } catch (const std::exception& error) {
                std::cerr << "fuzz: " << error.what() << "\n";
                std::exit(2);
            }
        }
    }
    if (target == nullptr) {
        std::cerr << "fuzz: give --target=NAME\n";
        std::exit(2);
    }
    test::AbortOnFailedCheck();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    target(bytes, size);
    return 0;
}
