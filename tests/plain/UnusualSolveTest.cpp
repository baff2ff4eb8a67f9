// Whole solves of unusual machines against the plain formulation.

#include <gtest/gtest.h>

#include "plain/Comparison.h"
#include "plain/PlainSolve.h"

namespace
{

using test::Random;
using test::StatesOf;
using test::UnusualMachine;

/// A vector that holds something already.
template <class Vector>
Vector Occupied()
{
    IkJtStateVector states;
    states.AddState(IkJtState(static_cast<IkJoint*>(nullptr), 99));
    return states;
}

bool ExpectPlainSolve(const UnusualMachine& machine, Random& random)
{
    IkStream& stream = *machine.stream;
    IkEndState target = test::UnusualTarget(machine, random);
    const plain::EndState plainTarget(target);
    const bool toolOnly = random.OneIn(6);
    const bool lockRotary = random.OneIn(10);
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    const bool isShortForm = !lockRotary && random.OneIn(3);
    auto result = Occupied<IkJtStateVector>();
    auto expected = Occupied<plain::States>();
    plain::Fields fields;
    bool isSolved = false;
    bool isExpected = false;
    RunBoth(
        machine,
        [&] {
            if (isShortForm) {
                result = stream.SolveIK(target, toolOnly, limits);
            } else {
                isSolved = stream.SolveIK(target, result, toolOnly, limits, lockRotary);
            }
        },
        [&] {
            isExpected =
                plain::SolveIK(stream, plainTarget, expected, toolOnly, limits, lockRotary, fields);
        });
    EXPECT_EQ(isShortForm || isSolved, isShortForm || isExpected);
    EXPECT_EQ(StatesOf(result), StatesOf(expected));
    test::ExpectFields(stream, fields);
    EXPECT_EQ(test::NumbersOf(target.GetCompleteState()), test::NumbersOf(plainTarget.pose));
    EXPECT_EQ(plain::EndState(target).filter, plainTarget.filter);
    return isExpected;
}

} // namespace

TEST(UnusualMachines, StreamSolves)
{
    int solved = 0;
    int failed = 0;
    test::Repeat(test::Cases(4000), 36, [&](Random& random) {
        ++(ExpectPlainSolve(test::MakeUnusualMachine(random), random) ? solved : failed);
    });
    EXPECT_GT(solved, 0);
    EXPECT_GT(failed, 0);
}

TEST(MeddlingMachines, StreamSolves)
{
    int solved = 0;
    int failed = 0;
    test::Repeat(test::Cases(500), 40, [&](Random& random) {
        ++(ExpectPlainSolve(test::MakeMeddlingMachine(random), random) ? solved : failed);
    });
    EXPECT_GT(solved, 0);
    EXPECT_GT(failed, 0);
}
