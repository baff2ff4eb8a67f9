// What copies of each class hold, on every fixture machine: the same where they promise it, and
// their own where the original goes on changing.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "IkMachine.h"
#include "IkSolver.h"
#include "properties/EveryMachine.h"
#include "support/Bits.h"
#include "support/Chains.h"
#include "support/Repeat.h"

using test::BitsOf;
using test::EveryMachine;
using test::NodesOf;
using test::PoseAt;
using test::Random;
using test::RandomJointValues;

namespace
{

void ExpectSameNode(const IkNode& copy, const IkNode& original)
{
    EXPECT_EQ(copy.GetName(), original.GetName());
    EXPECT_EQ(copy.GetType(), original.GetType());
    EXPECT_EQ(BitsOf(copy.GetOrigFrame()), BitsOf(original.GetOrigFrame()));
    EXPECT_EQ(BitsOf(copy.GetRelFrame()), BitsOf(original.GetRelFrame()));
    EXPECT_EQ(BitsOf(copy.GetWorldFrame()), BitsOf(original.GetWorldFrame()));
    EXPECT_EQ(copy.GetKidList(), original.GetKidList());
    EXPECT_EQ(copy.GetParentPtr(), original.GetParentPtr());
    EXPECT_EQ(copy.GetUserData(), original.GetUserData());
}

/// What a copy of a joint of any kind takes over by assignment.
void ExpectSameJoint(const IkJoint& copy, const IkJoint& original)
{
    ExpectSameNode(copy, original);
    EXPECT_EQ(copy.IsLocked(), original.IsLocked());
    EXPECT_EQ(BitsOf(copy.GetCurValue()), BitsOf(original.GetCurValue()));
    EXPECT_EQ(copy.GetLowBound(), original.GetLowBound());
    EXPECT_EQ(copy.GetHiBound(), original.GetHiBound());
    EXPECT_EQ(copy.GetJtPrimitive(), original.GetJtPrimitive());
    EXPECT_EQ(copy.GetInitialValue(), original.GetInitialValue());
    EXPECT_EQ(copy.IsDirectionReversed(), original.IsDirectionReversed());
    EXPECT_EQ(copy.IsDirty(), original.IsDirty());
}

/// A new joint of the same primitive with the bounds exchanged, and nothing else.
void ExpectFreshJoint(const IkJoint& copy, const IkJoint& original)
{
    EXPECT_EQ(copy.GetJtPrimitive(), original.GetJtPrimitive());
    EXPECT_EQ(copy.GetLowBound(), original.GetHiBound());
    EXPECT_EQ(copy.GetHiBound(), original.GetLowBound());
    EXPECT_EQ(copy.GetName(), L"NA");
    EXPECT_EQ(copy.GetCurValue(), 0.0);
    EXPECT_EQ(copy.GetParentPtr(), nullptr);
    EXPECT_FALSE(copy.IsLocked());
}

template <class Joint>
void ExpectJointCopies(const Joint& original)
{
    ExpectFreshJoint(Joint(original), original);
    Joint assigned;
    assigned = original;
    ExpectSameJoint(assigned, original);
    EXPECT_EQ(assigned.IsRotary(), original.IsRotary());
}

std::vector<std::uint64_t> SolveBits(IkSolver& solver, IkEndState target)
{
    IkJtStateVector result;
    const bool isSolved = solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    std::vector<std::uint64_t> bits = BitsOf(result);
    bits.push_back(isSolved ? 1 : 0);
    return bits;
}

/// A copy and an assigned one solve as the original does, and go on doing so when that has changed.
template <class Solver>
void ExpectSolverCopies(IkStream& stream, const IkEndState& target, IkJtStateVector& start)
{
    Solver original(&stream);
    original.SetMaxIterations(40);
    original.SetConvergenceTolerance(1e-9);
    ASSERT_TRUE(original.SetStartingJtStates(&start));
    const std::vector<std::uint64_t> expected = SolveBits(original, target);
    Solver copy(original);
    Solver assigned;
    assigned = original;
    EXPECT_EQ(copy.GetCurErrorval(), original.GetCurErrorval());
    original.SetMaxIterations(1);
    original.SetStreamPtr(nullptr);
    for (Solver* other : {&copy, &assigned}) {
        EXPECT_EQ(other->GetStreamPtr(), &stream);
        EXPECT_EQ(other->GetMaxIterations(), 40);
        EXPECT_EQ(other->GetConvergenceTolerance(), 1e-9);
        EXPECT_EQ(other->GetStartStates(), &start);
        EXPECT_EQ(SolveBits(*other, target), expected);
    }
}

} // namespace

TEST_P(EveryMachine, CopiesOfFramesAndEndStatesAreValues)
{
    test::Repeat(20, 51, [this](Random& random) {
        IkEndState pose = PoseAt(fixture, RandomJointValues(fixture, random));
        std::array<bool, 4> filter{random.OneIn(2), random.OneIn(2), random.OneIn(2), true};
        pose.SetFilter(filter.data());
        const std::vector<std::uint64_t> bits = BitsOf(pose.GetCompleteState());
        const IkXformMat frame(pose.GetCompleteState());
        const IkEndState copy(pose);
        IkEndState assigned;
        assigned = pose;
        IkXformMat moved = frame;
        moved.TranslateThis(1, 2, 3);
        pose.SetCompleteState(moved);
        std::array<bool, 4> none{};
        pose.SetFilter(none.data());
        ASSERT_EQ(BitsOf(frame), bits);
        for (const IkEndState* state : {&copy, &std::as_const(assigned)}) {
            ASSERT_EQ(BitsOf(state->GetCompleteState()), bits);
            std::array<bool, 4> flags{};
            state->GetFilter(flags.data());
            ASSERT_EQ(flags, filter);
        }
    });
}

TEST_P(EveryMachine, CopiesOfNodesListTheSameChildren)
{
    const test::Nodes nodes = NodesOf(*fixture.toolChain);
    for (IkNode* node : nodes) {
        node->UpdateFrames(); // not dirty: a copy is
        const IkNode copy(*node);
        ExpectSameNode(copy, *node);
        EXPECT_TRUE(copy.IsDirty());
        IkNode assigned;
        assigned = *node;
        ExpectSameNode(assigned, *node);
        EXPECT_FALSE(assigned.IsDirty());
        if (const auto* body = dynamic_cast<const IkBody*>(node)) {
            const IkBody copiedBody(*body);
            ExpectSameNode(copiedBody, *body);
            EXPECT_TRUE(copiedBody.IsDirty());
        }
    }
}

TEST_P(EveryMachine, CopiesOfJointsTakeWhatTheirClassSays)
{
    test::Repeat(20, 52, [this](Random& random) {
        fixture.SetJoints(RandomJointValues(fixture, random));
        for (IkJoint* joint : fixture.joints) {
            joint->SetIsLocked(random.OneIn(2));
            const IkJoint plain(*joint); // sliced: node, lock, value and range
            ExpectSameNode(plain, *joint);
            EXPECT_EQ(plain.IsLocked(), joint->IsLocked());
            EXPECT_EQ(BitsOf(plain.GetCurValue()), BitsOf(joint->GetCurValue()));
            EXPECT_EQ(plain.GetLowBound(), joint->GetLowBound());
            EXPECT_EQ(plain.GetHiBound(), joint->GetHiBound());
            EXPECT_EQ(plain.GetJtPrimitive(), IkJoint::JtPrimNone);
            EXPECT_EQ(plain.GetInitialValue(), 0.0);
            if (const auto* rotary = dynamic_cast<const IkJtRot*>(joint)) {
                ExpectJointCopies(*rotary);
            } else if (const auto* linear = dynamic_cast<const IkJtPrism*>(joint)) {
                ExpectJointCopies(*linear);
            }
            joint->SetIsLocked(false);
        }
    });
}

TEST_P(EveryMachine, CopiesOfStatesAreValues)
{
    test::Repeat(20, 53, [this](Random& random) {
        IkJtStateVector states = fixture.States(RandomJointValues(fixture, random));
        const std::vector<std::uint64_t> bits = BitsOf(states);
        const IkJtStateVector copy(states);
        IkJtStateVector assigned;
        assigned = states;
        const IkJtState state(states.GetState(0));
        states.GetState(0).SetValue(12345);
        EXPECT_EQ(BitsOf(state.GetValue()), bits[0]);
        EXPECT_EQ(state.GetJoint(), fixture.joints[0]);
        states.Reset();
        for (const IkJtStateVector* other : {&copy, &std::as_const(assigned)}) {
            EXPECT_EQ(BitsOf(*other), bits);
            for (std::size_t i = 0; i < fixture.joints.size(); ++i) {
                EXPECT_EQ(other->FindStateByJointPtr(fixture.joints[i]), static_cast<int>(i));
            }
        }
    });
}

TEST_P(EveryMachine, CopiesOfChainsShareTheirNodes)
{
    IkChain original(*fixture.toolChain);
    const test::Nodes nodes = NodesOf(original);
    const IkChain copy(original);
    IkChain assigned;
    assigned = original;
    EXPECT_TRUE(copy == original);
    original.Reset();
    EXPECT_EQ(NodesOf(copy), nodes);
    EXPECT_EQ(NodesOf(assigned), nodes);
}

TEST_P(EveryMachine, CopiesOfMachinesAreShallow)
{
    IkMachine& machine = *fixture.machine;
    IkMachine copied(machine);
    IkMachine assigned;
    assigned = machine;
    for (IkMachine* copy : {&copied, &assigned}) {
        EXPECT_EQ(copy->GetBaseNode(), machine.GetBaseNode());
        ASSERT_EQ(copy->GetNumStreams(), machine.GetNumStreams());
        EXPECT_EQ(copy->GetStreamPtrByIndex(0), machine.GetStreamPtrByIndex(0));
        copy->SetBaseNode(nullptr); // only one of the three may destroy them
        copy->streams.clear();
    }
    EXPECT_EQ(machine.GetStreamPtrByIndex(0), &stream);
}

TEST_P(EveryMachine, CopiesOfStreamsHaveLocksOfTheirOwn)
{
    stream.SetId(7);
    IkStream copy(stream);
    IkStream assigned;
    assigned = stream;
    for (IkStream* other : {&copy, &assigned}) {
        EXPECT_TRUE(*other == stream);
        EXPECT_EQ(other->GetId(), 7);
        for (IkJoint* joint : fixture.joints) {
            ASSERT_TRUE(other->SetLocalLock(joint, true));
            bool isLocked = true;
            ASSERT_TRUE(stream.GetLocalLock(joint, isLocked));
            EXPECT_FALSE(isLocked);
        }
    }
}

TEST_P(EveryMachine, CopiesOfSolversSolveOnTheirOwn)
{
    test::Repeat(3, 54, [this](Random& random) {
        const std::vector<double> wanted = RandomJointValues(fixture, random);
        const IkEndState target = PoseAt(fixture, wanted);
        IkJtStateVector start = fixture.States(test::StartNear(fixture, wanted, random));
        ExpectSolverCopies<IkSolver>(stream, target, start);
        ExpectSolverCopies<IkSolverPsuedoInverse>(stream, target, start);
        ExpectSolverCopies<IkSolverHybrid>(stream, target, start);
    });
}

TEST_P(EveryMachine, CopiesOfSampleItemsAreValues)
{
    test::Repeat(1, 55, [this](Random& random) {
        IkEndState target = PoseAt(fixture, RandomJointValues(fixture, random));
        IkSolverHybrid solver(&stream);
        IkJtStateVector result;
        solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false);
        std::vector<IkSolverSampleItem>& samples = solver.GetSampleList();
        ASSERT_FALSE(samples.empty());
        const IkSolverSampleItem copy(samples[0]);
        IkSolverHybrid other(solver);
        samples[0].resultStates.Reset();
        samples[0].startStates.Reset();
        samples.clear();
        EXPECT_EQ(copy.startStates.Size(), static_cast<int>(fixture.joints.size()));
        ASSERT_FALSE(other.GetSampleList().empty());
        EXPECT_EQ(BitsOf(other.GetSampleList()[0].resultStates), BitsOf(copy.resultStates));
        EXPECT_EQ(other.GetSampleList()[0].rejected, copy.rejected);
        EXPECT_EQ(copy.stream, &stream);
    });
}
