// Solves of a machine by its stream against the plain formulation.

#include <gtest/gtest.h>

#include "plain/Comparison.h"
#include "plain/PlainSolve.h"
#include "plain/UnusualChecks.h"

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

namespace test
{

void CheckStreamSolve(const UnusualMachine& machine, Random& random, Tally& tally)
{
    tally.Add(ExpectPlainSolve(machine, random));
}

} // namespace test
