#include "fuzz/Targets.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

namespace test
{

namespace
{

/// Comes behind the listener that prints.
class Aborting : public testing::EmptyTestEventListener
{
    void OnTestPartResult(const testing::TestPartResult& result) override
    {
        if (result.failed()) {
            std::fflush(stdout);
            std::abort();
        }
    }
};

} // namespace

const std::map<std::string, FuzzTarget>& FuzzTargets()
{
    static const std::map<std::string, FuzzTarget> targets{
        {"library", FuzzLibrary},
        {"machine", FuzzMachine},
        {"urdf", FuzzUrdf},
        {"apt", FuzzApt},
        {"csv", FuzzCsv},
        {"nc", FuzzNc},
        {"table", FuzzTable},
        {"dialect", FuzzDialect},
        {"verification", FuzzVerification},
        {"checkpoint", FuzzCheckpoint},
        {"program", FuzzProgram},
    };
    return targets;
}

FuzzTarget FuzzTargetNamed(const std::string& name)
{
    const auto found = FuzzTargets().find(name);
    if (found != FuzzTargets().end()) {
        return found->second;
    }
    std::string names;
    for (const auto& target : FuzzTargets()) {
        names += " " + target.first;
    }
    throw std::invalid_argument("no target '" + name + "'; there are:" + names);
}

void AbortOnFailedCheck()
{
    // The listeners own it.
    testing::UnitTest::GetInstance()->listeners().Append(std::make_unique<Aborting>().release());
}

} // namespace test
