#include "fuzz/SolvePromises.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "plain/Comparison.h"
#include "plain/PlainKinematics.h"
#include "plain/PlainStages.h"

namespace test
{

namespace
{

/// The arguments of a solve.
struct Given
{
    Given(const UnusualMachine& machine, Random& random)
        : target(UnusualTarget(machine, random)), toolOnly(random.OneIn(6)),
          limits(static_cast<IkJoint::JointLimitTypes>(random.Below(4))),
          lockRotary(random.OneIn(10))
    {}

    IkEndState target;
    bool toolOnly;
    IkJoint::JointLimitTypes limits;
    bool lockRotary;
};

/// What came of it.
struct Answer
{
    bool isSolved{false};
    IkJtStateVector states;

    Words Bits() const
    {
        Words words = StatesOf(states);
        words.push_back(isSolved ? 1 : 0);
        return words;
    }
};

template <class Solver>
Answer Solve(const UnusualMachine& machine, Solver& solver, Given given)
{
    machine.Restart();
    const Words joints = NumbersOf(machine.JointValues());
    Answer answer;
    answer.isSolved =
        solver.SolveIK(given.target, answer.states, given.toolOnly, given.limits, given.lockRotary);
    EXPECT_EQ(NumbersOf(machine.JointValues()), joints);
    return answer;
}

bool IsHeld(const IkStream& stream, IkJoint& joint, bool lockRotary)
{
    bool isLocked = false;
    stream.GetJointLockStatus(&joint, IkStream::GlobalOrLocalLock, isLocked);
    return isLocked || joint.IsLocked() || (lockRotary && joint.IsRotary());
}

bool IsLimited(const IkJoint& joint, IkJoint::JointLimitTypes limits)
{
    const auto own = joint.IsRotary() ? IkJoint::JtLimitRotary : IkJoint::JtLimitLinear;
    return (limits & own) != 0 && joint.GetLowBound() <= joint.GetHiBound();
}

/// Each state of the answer, which started at the joint's value.
void CheckValues(const UnusualMachine& machine, const Answer& answer, const Given& given)
{
    for (int i = 0; i < answer.states.Size(); ++i) {
        IkJtState state;
        answer.states.GetStateCopy(i, state);
        if (state.GetJoint() == nullptr) {
            continue; // of a node that says it is a joint and is none
        }
        IkJoint& joint = *state.GetJoint();
        const double value = state.GetValue();
        const bool hasMoved = NumberBits(value) != NumberBits(joint.GetCurValue());
        if (IsHeld(*machine.stream, joint, given.lockRotary)) {
            EXPECT_FALSE(hasMoved) << i;
        }
        // A value that is no number is neither below nor above.
        if (answer.isSolved && hasMoved && IsLimited(joint, given.limits)) {
            EXPECT_FALSE(value < joint.GetLowBound()) << i;
            EXPECT_FALSE(value > joint.GetHiBound()) << i;
        }
    }
}

void CheckTargetMet(const IkStream& stream, const Answer& answer, const Given& given,
                    double tolerance, double directionTolerance)
{
    plain::States states(answer.states);
    const plain::EndState target(given.target);
    const plain::EndState reached(plain::Pose(stream, states, given.toolOnly), target.filter);
    EXPECT_LE(plain::Objective(reached, target, directionTolerance), tolerance);
}

void CheckStreamPromises(const UnusualMachine& machine, const Given& given)
{
    IkStream& stream = *machine.stream;
    const Answer answer = Solve(machine, stream, given);
    if (!machine.ChangesStates()) {
        CheckValues(machine, answer, given);
    }
    if (answer.isSolved && machine.hosts.empty()) { // a host's node may move on while it is asked
        CheckTargetMet(stream, answer, given, 1e-8, plain::kStreamDirectionTolerance);
    }
    EXPECT_EQ(Solve(machine, stream, given).Bits(), answer.Bits());
    IkStream copy(stream);
    EXPECT_EQ(Solve(machine, copy, given).Bits(), answer.Bits());
    IkStream assigned;
    assigned = copy;
    EXPECT_EQ(Solve(machine, assigned, given).Bits(), answer.Bits());
}

void CheckSolverPromises(const UnusualMachine& machine, const Given& given)
{
    IkSolverPsuedoInverse solver(machine.stream.get());
    const Answer answer = Solve(machine, solver, given);
    if (!machine.ChangesStates()) {
        CheckValues(machine, answer, given);
    }
    if (answer.isSolved && machine.hosts.empty()) {
        CheckTargetMet(*machine.stream, answer, given, solver.GetConvergenceTolerance(),
                       plain::kSolverDirectionTolerance);
    }
    EXPECT_EQ(Solve(machine, solver, given).Bits(), answer.Bits());
    IkSolverPsuedoInverse copy(solver);
    EXPECT_EQ(Solve(machine, copy, given).Bits(), answer.Bits());
    IkSolverPsuedoInverse assigned;
    assigned = solver;
    EXPECT_EQ(Solve(machine, assigned, given).Bits(), answer.Bits());
}

void CheckHybridPromises(const UnusualMachine& machine, const Given& given)
{
    IkSolverHybrid solver(machine.stream.get());
    const Answer answer = Solve(machine, solver, given);
    EXPECT_EQ(Solve(machine, solver, given).Bits(), answer.Bits());
    IkSolverHybrid copy(solver);
    EXPECT_EQ(Solve(machine, copy, given).Bits(), answer.Bits());
    IkSolverHybrid assigned;
    assigned = solver;
    EXPECT_EQ(Solve(machine, assigned, given).Bits(), answer.Bits());
}

} // namespace

void CheckSolvePromises(const UnusualMachine& machine, Random& random)
{
    const Given given(machine, random);
    switch (random.Below(16)) {
    case 0: // dozens of solves
        CheckHybridPromises(machine, given);
        break;
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
        CheckSolverPromises(machine, given);
        break;
    default:
        CheckStreamPromises(machine, given);
        break;
    }
}

void CheckViews(const UnusualMachine& machine, Random& random)
{
    if (!machine.hosts.empty()) { // matrices of other shapes, or others each time
        return;
    }
    IkStream& stream = *machine.stream;
    IkJtStateVector states = UnusualStates(machine, random);
    if (states.Size() == 0 || stream.NumChains() < 2) {
        return; // nothing is written
    }
    IkXformMat part;
    IkXformMat tool;
    const IkEndState seen = stream.SolveFK(states, false, &part, &tool, false);
    IkXformMat again;
    stream.SolveFK(states, false, nullptr, &again, true);
    EXPECT_EQ(NumbersOf(again), NumbersOf(tool));
    const IkXformMat expected = part.QuickInvert() * tool;
    EXPECT_EQ(NumbersOf(seen.GetCompleteState()), NumbersOf(expected));
}

} // namespace test
