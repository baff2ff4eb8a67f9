// Forward kinematics of a machine against the plain formulation.

#include <gtest/gtest.h>

#include "plain/Comparison.h"
#include "plain/UnusualChecks.h"

namespace
{

using test::NumbersOf;
using test::Random;
using test::StatesOf;
using test::UnusualMachine;

IkXformMat Sentinel()
{
    return IkXformMat::Translate(-7, -8, -9);
}

/// A call of SolveFK: what it is given and what it gives.
struct ForwardCall
{
    bool commit;
    bool hasPartOut;
    bool hasToolOut;
    bool toolOnly;
};

void ExpectPlainPose(const UnusualMachine& machine, const IkJtStateVector& states,
                     const ForwardCall& call)
{
    IkJtStateVector given = states;
    plain::States plainGiven(states);
    IkXformMat part = Sentinel();
    IkXformMat tool = Sentinel();
    plain::Matrix plainPart = Sentinel();
    plain::Matrix plainTool = Sentinel();
    IkEndState result;
    plain::Matrix pose;
    RunBoth(
        machine,
        [&] {
            result = machine.stream->SolveFK(given, call.commit, call.hasPartOut ? &part : nullptr,
                                             call.hasToolOut ? &tool : nullptr, call.toolOnly);
        },
        [&] {
            pose = plain::SolveFK(*machine.stream, plainGiven, call.commit,
                                  call.hasPartOut ? &plainPart : nullptr,
                                  call.hasToolOut ? &plainTool : nullptr, call.toolOnly);
        });
    EXPECT_EQ(NumbersOf(result.GetCompleteState()), NumbersOf(pose));
    EXPECT_EQ(plain::EndState(result).filter, plain::EndState(IkEndState()).filter);
    EXPECT_EQ(NumbersOf(part), NumbersOf(plainPart));
    EXPECT_EQ(NumbersOf(tool), NumbersOf(plainTool));
    EXPECT_EQ(StatesOf(given), StatesOf(plainGiven)); // nodes may have changed the values
    if (!machine.ChangesStates()) {
        EXPECT_EQ(StatesOf(given), StatesOf(states)); // whatever one did with a value of its own
    }
}

} // namespace

namespace test
{

void CheckChains(const UnusualMachine& machine, Random& random)
{
    for (const auto& chain : machine.chains) {
        IkJtStateVector states = UnusualStates(machine, random);
        plain::States plainStates(states);
        IkXformMat result;
        plain::Matrix expected;
        RunBoth(
            machine, [&] { result = chain->GetXformMat(states); },
            [&] { expected = plain::ChainTransform(*chain, plainStates); });
        EXPECT_EQ(NumbersOf(result), NumbersOf(expected));
        EXPECT_EQ(StatesOf(states), StatesOf(plainStates));
        RunBoth(
            machine, [&] { result = chain->GetXformMat(); },
            [&] { expected = plain::ChainTransform(*chain); });
        EXPECT_EQ(NumbersOf(result), NumbersOf(expected));
    }
}

void CheckForwardKinematics(const UnusualMachine& machine, Random& random)
{
    const IkJtStateVector states = UnusualStates(machine, random);
    for (int bits = 0; bits < 16; ++bits) {
        ExpectPlainPose(machine, states,
                        {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0});
    }
    const bool toolOnly = random.OneIn(3);
    IkEndState pose;
    plain::Matrix expected;
    RunBoth(
        machine, [&] { pose = machine.stream->SolveFK(toolOnly); },
        [&] {
            plain::States current = plain::JointStates(*machine.stream);
            expected = plain::Pose(*machine.stream, current, toolOnly);
        });
    EXPECT_EQ(NumbersOf(pose.GetCompleteState()), NumbersOf(expected));
}

bool CheckNewPartSpace(const UnusualMachine& machine, Random& random)
{
    IkJtStateVector states = UnusualStates(machine, random);
    plain::States plainStates(states);
    IkXformMat frame = UnusualFrame(random);
    const plain::Matrix plainFrame = frame;
    IkXformMat out = Sentinel();
    plain::Matrix plainOut = Sentinel();
    bool isFound = false;
    bool isExpected = false;
    RunBoth(
        machine, [&] { isFound = machine.stream->SolveNewPartSpace(states, frame, out); },
        [&] {
            isExpected =
                plain::SolveNewPartSpace(*machine.stream, plainStates, plainFrame, plainOut);
        });
    EXPECT_EQ(isFound, isExpected);
    EXPECT_EQ(NumbersOf(out), NumbersOf(plainOut));
    EXPECT_EQ(NumbersOf(frame), NumbersOf(plainFrame));

    RunBoth( // one matrix for both
        machine, [&] { machine.stream->SolveNewPartSpace(states, out, out); },
        [&] { plain::SolveNewPartSpace(*machine.stream, plainStates, plainOut, plainOut); });
    EXPECT_EQ(NumbersOf(out), NumbersOf(plainOut));
    return isFound;
}

void CheckPartSpaceFrame(const UnusualMachine& machine, Random& random)
{
    if (machine.chains.size() < 2) {
        return;
    }
    IkStream& stream = *machine.stream;
    stream.SetHasPartSpaceMatrix(false, false); // takes the body off the chain
    const IkChain withoutBody = *machine.chains[1];
    const IkXformMat frame = UnusualFrame(random);
    plain::Matrix expected;
    RunBoth( // the plain one first: the body may still stand within the chain
        machine, [&] { expected = plain::PartSpaceFrame(withoutBody, frame); },
        [&] { stream.SetPartSpaceMatrix(frame, false); });
    const IkNode* body = machine.chains[1]->GetAt(machine.chains[1]->Size() - 1);
    EXPECT_EQ(NumbersOf(body->GetOrigFrame()), NumbersOf(expected));
}

} // namespace test
