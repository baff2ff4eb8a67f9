#ifndef TRUNNION_TESTS_HOST_MUTATED_CHECKS_H
#define TRUNNION_TESTS_HOST_MUTATED_CHECKS_H

#include <exception>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "geometry/Vec3.h"
#include "text/InputError.h"

namespace test
{

constexpr const char* kMutatedName = "mutated.txt";

/// A text as a C++ string shows it.
std::string Shown(const std::string& text);

/// The place of a refusal lies in the text, and its sentence can be shown on a terminal.
void CheckRefusal(const host::InputError& error, const std::string& text);

bool IsUnit(const host::Vec3& direction);
bool IsFinite(const host::Vec3& vector);

/// Nothing where the reader refuses the text as it should.
template <class Read>
auto ReadMutated(const std::string& text, const Read& read) -> std::optional<decltype(read(text))>
{
    try {
        return read(text);
    } catch (const host::InputError& error) {
        CheckRefusal(error, text);
    } catch (const std::exception& error) {
        ADD_FAILURE() << "not an InputError: " << error.what();
    }
    return std::nullopt;
}

} // namespace test

#endif
