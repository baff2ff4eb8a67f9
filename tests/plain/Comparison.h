#ifndef TRUNNION_TESTS_PLAIN_COMPARISON_H
#define TRUNNION_TESTS_PLAIN_COMPARISON_H

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "plain/PlainStages.h"
#include "support/Bits.h"
#include "support/Repeat.h"
#include "support/UnusualMachine.h"

// Holding the library against the plain formulation: everything by its bits, but for what a NaN is.
namespace test
{

using Words = std::vector<std::uint64_t>;

/// Of `count` cases, those for which a build that is not optimised has the time.
constexpr long Cases(long count)
{
#ifdef __OPTIMIZE__
    return count;
#else
    return (count + 19) / 20;
#endif
}

inline Words NumbersOf(const TNT::Matrix<double>& m)
{
    Words words{static_cast<std::uint64_t>(m.num_rows()), static_cast<std::uint64_t>(m.num_cols())};
    for (int i = 0; i < m.num_rows(); ++i) {
        std::transform(m[i], m[i] + m.num_cols(), std::back_inserter(words), NumberBits);
    }
    return words;
}

inline Words NumbersOf(const TNT::Array2D<double>& m)
{
    Words words{static_cast<std::uint64_t>(m.dim1()), static_cast<std::uint64_t>(m.dim2())};
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            words.push_back(NumberBits(m[i][j]));
        }
    }
    return words;
}

inline Words NumbersOf(const std::vector<double>& values)
{
    Words words;
    std::transform(values.begin(), values.end(), std::back_inserter(words), NumberBits);
    return words;
}

/// One state: which joint, its value, and where looking the joint up leads.
inline void PushState(Words& words, const IkJoint* joint, double value, int place)
{
    words.push_back(reinterpret_cast<std::uintptr_t>(joint));
    words.push_back(NumberBits(value));
    words.push_back(static_cast<std::uint64_t>(place));
}

inline Words StatesOf(const IkJtStateVector& states)
{
    Words words;
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState state;
        states.GetStateCopy(i, state);
        PushState(words, state.GetJoint(), state.GetValue(),
                  states.FindStateByJointPtr(state.GetJoint()));
    }
    return words;
}

inline Words StatesOf(const plain::States& states)
{
    Words words;
    for (int i = 0; i < states.Size(); ++i) {
        PushState(words, states.Joint(i), states.Value(i), states.Place(states.Joint(i)));
    }
    return words;
}

/// `Solver` is a stream or a solver object: both name their working fields alike.
template <class Solver>
void ExpectFields(const Solver& solver, const plain::Fields& fields)
{
    EXPECT_EQ(StatesOf(solver.SolverJtStates), StatesOf(fields.states));
    EXPECT_EQ(solver.LockedFlags, fields.lockedFlags);
    EXPECT_EQ(solver.RotaryFlags, fields.rotaryFlags);
    EXPECT_EQ(solver.RotaryJointIndices, fields.rotaryIndices);
    EXPECT_EQ(solver.FreeJointIndices, fields.freeIndices);
    EXPECT_EQ(NumberBits(solver.MaxAngleStep), NumberBits(fields.maxAngleStep));
}

/// Runs both from the same joint values and holds what they ask the host's nodes, and what they
/// leave the joints at, against each other. The joints have their values again afterwards.
template <class OfLibrary, class OfPlain>
void RunBoth(const UnusualMachine& machine, const OfLibrary& ofLibrary, const OfPlain& ofPlain)
{
    const std::vector<double> values = machine.JointValues();
    machine.Restart();
    ofLibrary();
    const CallLog asked = *machine.log;
    const std::vector<double> left = machine.JointValues();
    machine.SetJointValues(values);

    machine.Restart();
    ofPlain();
    const CallLog& expected = *machine.log;
    const auto [a, b] = std::mismatch(asked.begin(), asked.end(), expected.begin(), expected.end());
    EXPECT_TRUE(a == asked.end() && b == expected.end())
        << "the host's nodes are asked otherwise: " << asked.size() << " words instead of "
        << expected.size() << ", the first that differs is at " << a - asked.begin();
    EXPECT_EQ(NumbersOf(left), NumbersOf(machine.JointValues()));
    machine.SetJointValues(values);
}

} // namespace test

#endif
