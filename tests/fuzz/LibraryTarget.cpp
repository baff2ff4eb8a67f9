// Bytes as a machine and what a host does with it. The machine may be any that the rules of
// ownership allow; after each thing that is done, the library has to have done what the plain
// formulation does.

#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "IkMachine.h"
#include "IkSolver.h"
#include "fuzz/SolvePromises.h"
#include "fuzz/StateVectorModel.h"
#include "fuzz/Targets.h"
#include "plain/Comparison.h"
#include "plain/UnusualChecks.h"
#include "support/RandomMachine.h"

namespace test
{

namespace
{

constexpr int kMostActions = 5;

IkJoint* AnyJoint(const UnusualMachine& machine, Random& random)
{
    const auto count = static_cast<int>(machine.joints.size());
    return count == 0 ? nullptr : machine.joints[static_cast<std::size_t>(random.Below(count))];
}

void ChangeLocks(const UnusualMachine& machine, Random& random)
{
    IkJoint* joint = AnyJoint(machine, random);
    const bool locked = random.OneIn(2);
    IkStream& stream = *machine.stream;
    switch (random.Below(5)) {
    case 0:
        stream.SetLocalLockAllRotary(locked);
        break;
    case 1:
        stream.ResetAllLocalLocks();
        break;
    case 2:
        if (joint != nullptr) {
            joint->SetIsLocked(locked);
            EXPECT_EQ(joint->IsLocked(), locked);
        }
        break;
    default: {
        const bool isKnown = stream.SetLocalLock(joint, locked);
        bool isLocked = !locked;
        EXPECT_EQ(stream.GetLocalLock(joint, isLocked), isKnown);
        EXPECT_TRUE(!isKnown || isLocked == locked);
        break;
    }
    }
}

void ChangeJoint(const UnusualMachine& machine, Random& random)
{
    IkJoint* joint = AnyJoint(machine, random);
    if (joint == nullptr) {
        return;
    }
    const double reach = joint->IsRotary() ? 3.2 : 500.0;
    const double value = UnusualNumber(random.Between(-reach, reach), random);
    switch (random.Below(6)) {
    case 0:
        joint->SetBounds(value, UnusualNumber(random.Between(-reach, reach), random));
        break;
    case 1:
        joint->SetInitialValue(value);
        break;
    case 2:
        joint->SetDirectionReversed(random.OneIn(2));
        break;
    case 3:
        joint->SetOrigFrame(UnusualFrame(random));
        break;
    case 4:
        joint->SetJtPrimitive(static_cast<IkJoint::JtPrimitives>(random.Below(9)));
        break;
    default:
        joint->SetCurValue(value);
        EXPECT_EQ(NumberBits(joint->GetCurValue()), NumberBits(value));
        break;
    }
}

void ChangePartSpace(const UnusualMachine& machine, Random& random)
{
    const bool has = random.OneIn(2);
    const bool isFixed = random.OneIn(2);
    IkStream& stream = *machine.stream;
    if (random.OneIn(2)) {
        stream.SetHasPartSpaceMatrix(has, isFixed);
        EXPECT_EQ(stream.GetHasPartSpaceMatrix(), has);
    } else {
        stream.SetPartSpaceMatrix(UnusualFrame(random), isFixed);
        EXPECT_TRUE(stream.GetHasPartSpaceMatrix());
    }
}

void ChangeChains(const UnusualMachine& machine, Random& random)
{
    if (machine.chains.empty()) {
        return;
    }
    const auto count = static_cast<int>(machine.chains.size());
    IkChain& chain = *machine.chains[static_cast<std::size_t>(random.Below(count))];
    IkNode* node = machine.nodes.back().get();
    switch (random.Below(5)) {
    case 0:
        chain.RemoveTail();
        break;
    case 1:
        chain.AddNode(node);
        break;
    case 2:
        chain.AddNodeAtHead(node);
        break;
    case 3:
        chain.Reset();
        chain.FillFromBase2Node(node);
        break;
    default: {
        IkChain sub;
        const auto type = static_cast<IkStream::NodeChainType>(random.Below(3));
        const int size = machine.stream->GetSubNodeChain(sub, type);
        EXPECT_EQ(size, sub.Size());
        EXPECT_EQ(sub.GetAt(-1), nullptr);
        EXPECT_EQ(sub.GetAt(sub.Size()), nullptr);
        break;
    }
    }
}

void Dump(const UnusualMachine& machine, Random& random)
{
    const std::wstring label(static_cast<std::size_t>(random.Below(1200)), L'l');
    machine.stream->TraceDump(label.c_str());
    machine.stream->TraceDumpIkNodeInfo(label.c_str());
    machine.stream->TraceDumpLocks();
    machine.stream->SolverStatusTraceDump();
    machine.nodes.front()->TraceDump(label.c_str());
    IkEndState(UnusualTarget(machine, random)).TraceDump(label.c_str());
    IkSolverHybrid(machine.stream.get()).TraceDump();
}

void CheckEndState(const UnusualMachine& machine, Random& random)
{
    IkEndState target = UnusualTarget(machine, random);
    std::vector<double> values;
    for (int i = random.Below(14); i > 0; --i) {
        values.push_back(UnusualNumber(random.Between(-2, 2), random));
    }
    const int count = static_cast<int>(values.size());
    const int size = target.VectSize();
    const Words before = NumbersOf(target.GetCompleteState());
    EXPECT_EQ(target.SetVector(count, values.data()), count == size);
    EXPECT_EQ(target.GetVector().dim(), size);
    if (count != size) {
        EXPECT_EQ(NumbersOf(target.GetCompleteState()), before);
    }
    const IkEndState other = UnusualTarget(machine, random);
    try {
        EXPECT_EQ(target.Diff(other).dim(), size);
        EXPECT_EQ(plain::EndState(other).filter, plain::EndState(target).filter);
    } catch (const wchar_t* refusal) {
        EXPECT_EQ(std::wstring(refusal), L"Filters of rhs and lhs must match.");
        EXPECT_NE(plain::EndState(other).filter, plain::EndState(target).filter);
    }
    EXPECT_LE(target.Diff2D(other).dim1(), 12);
}

/// A machine that owns its tree and its streams.
void UseMachine(Random& random)
{
    const Fixture fixture = RandomMachine(random);
    IkMachine& machine = *fixture.machine;
    IkStream* second = new IkStream(*fixture.stream); // the machine's
    second->SetId(random.Below(3));
    machine.AddStream(second);
    IkEndState target = RandomTarget(fixture, random);
    IkJtStateVector first;
    IkJtStateVector again;
    const bool isSolved = fixture.stream->SolveIK(target, first, false, IkJoint::JtLimitAll, false);
    EXPECT_EQ(second->SolveIK(target, again, false, IkJoint::JtLimitAll, false), isSolved);
    EXPECT_EQ(StatesOf(first), StatesOf(again));
    if (isSolved) {
        EXPECT_TRUE(first.CommitValuesToJoints());
    }
    machine.RecurseInitJointValues(random.OneIn(2) ? nullptr : machine.GetBaseNode());
    IkJtStateVector all;
    machine.GetJointStates(all);
    EXPECT_GE(all.Size(), 0);
    const int id = random.Below(4);
    try {
        EXPECT_EQ(machine.GetStreamById(id).GetId(), id);
    } catch (const char* refusal) {
        EXPECT_EQ(std::string(refusal), "Failed to find matching stream.");
        EXPECT_EQ(machine.GetStreamPtrById(id), nullptr);
    }
    machine.RemoveStream(id);
    for (int i = -1; i < 3; ++i) {
        EXPECT_EQ(machine.GetStreamPtrByIndex(i) != nullptr, i >= 0 && i < machine.GetNumStreams());
    }
    if (random.OneIn(2)) {
        machine.ClearStreamInfo();
        EXPECT_EQ(machine.GetNumStreams(), 0);
    }
    if (random.OneIn(2)) {
        machine.Reset();
        EXPECT_EQ(machine.GetBaseNode(), nullptr);
    }
}

void CheckKinematics(const UnusualMachine& machine, Random& random)
{
    switch (random.Below(4)) {
    case 0:
        CheckChains(machine, random);
        break;
    case 1:
        CheckNewPartSpace(machine, random);
        break;
    case 2:
        CheckViews(machine, random);
        break;
    default:
        CheckForwardKinematics(machine, random);
        break;
    }
}

void CheckSolves(const UnusualMachine& machine, Random& random)
{
    Tally tally;
    switch (random.Below(16)) {
    case 0:
    case 1:
    case 2:
    case 3:
        CheckStreamSolve(machine, random, tally);
        break;
    case 4:
    case 5:
    case 6:
        CheckPsuedoInverseSolves(machine, random, tally);
        break;
    case 7: // dozens of solves
        CheckHybridSolve(machine, random, tally);
        break;
    case 8:
    case 9:
        CheckStages(machine, random);
        break;
    default:
        CheckSolvePromises(machine, random);
        break;
    }
}

void CheckParts(const UnusualMachine& machine, Random& random)
{
    switch (random.Below(6)) {
    case 0:
        CheckLimits(machine, random);
        break;
    case 1:
        CheckDuplicateSamples(machine, random);
        break;
    case 2:
        CheckEndState(machine, random);
        break;
    case 3:
        Dump(machine, random);
        break;
    default:
        CheckStateVectors(machine, random);
        break;
    }
}

void Change(const UnusualMachine& machine, Random& random)
{
    switch (random.Below(5)) {
    case 0:
        ChangeChains(machine, random);
        break;
    case 1:
        ChangePartSpace(machine, random);
        break;
    case 2:
        ChangeJoint(machine, random);
        break;
    case 3:
        CheckPartSpaceFrame(machine, random);
        break;
    default:
        ChangeLocks(machine, random);
        break;
    }
}

} // namespace

void FuzzLibrary(const std::uint8_t* bytes, std::size_t size)
{
    Random random(bytes, size);
    if (random.OneIn(16)) {
        UseMachine(random);
        return;
    }
    const UnusualMachine machine =
        random.OneIn(16) ? MakeMeddlingMachine(random) : MakeUnusualMachine(random);
    for (int left = 1 + random.Below(kMostActions); left > 0; --left) {
        switch (random.Below(8)) {
        case 0:
            CheckKinematics(machine, random);
            break;
        case 1:
            CheckParts(machine, random);
            break;
        case 2:
        case 3:
        case 4:
            Change(machine, random);
            break;
        default:
            CheckSolves(machine, random);
            break;
        }
    }
}

} // namespace test
