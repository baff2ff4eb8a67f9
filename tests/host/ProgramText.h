#ifndef TRUNNION_TESTS_HOST_PROGRAM_TEXT_H
#define TRUNNION_TESTS_HOST_PROGRAM_TEXT_H

#include <filesystem>
#include <regex>
#include <string>

#include "Paths.h"

// What the program is given and what it prints, as the tests look at it.
namespace test
{

inline std::string Sample(const std::string& name)
{
    return (std::filesystem::path(kSamples) / name).string();
}

inline bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// With all times alike.
inline std::string Untimed(const std::string& text)
{
    return std::regex_replace(text, std::regex("[0-9]+\\.[0-9]+ s\n"), "T s\n");
}

} // namespace test

#endif
