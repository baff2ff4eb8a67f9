#include "IkMachine.h"

#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "machine/Rig.h"

namespace
{

using test::FalseJoint;
using test::Values;
using Log = std::vector<std::string>;
using Names = std::vector<std::wstring>;

static_assert(std::has_virtual_destructor_v<IkMachine>);

/// Notes its own destruction.
template <class Kind>
class Logged : public Kind
{
  public:
    Logged(Log& ofTest, std::string withName) : log(ofTest), name(std::move(withName)) {}
    ~Logged() override { log.push_back(name); }

  private:
    Log& log;
    std::string name;
};

IkStream* AddStream(IkMachine& machine, Log& log, const std::string& name, int id)
{
    auto* stream = new Logged<IkStream>(log, name);
    stream->SetId(id);
    machine.AddStream(stream);
    return stream;
}

IkJtPrism* AddJoint(IkNode* parent, const std::wstring& name, double value = 0, double initial = 0)
{
    auto* joint = new IkJtPrism(name);
    joint->SetCurValue(value);
    joint->SetInitialValue(initial);
    parent->AddChild(joint);
    return joint;
}

Names JointNames(IkMachine& machine)
{
    IkJtStateVector states;
    machine.GetJointStates(states);
    return states.GetNameVector();
}

template <class LookUp>
std::string Thrown(const LookUp& lookUp)
{
    try {
        lookUp();
    } catch (const char* text) {
        return text;
    }
    return "nothing";
}

TEST(Machine, StartsWithoutBaseNodeAndStreams)
{
    IkMachine machine;
    EXPECT_EQ(machine.GetBaseNode(), nullptr);
    EXPECT_EQ(machine.GetNumStreams(), 0);
}

TEST(Machine, SettingABaseNodeLeavesThePreviousOneAlive)
{
    Log log;
    Logged<IkBody> previous(log, "previous");
    {
        IkMachine machine;
        machine.SetBaseNode(&previous);
        auto* base = new Logged<IkBody>(log, "base");
        machine.SetBaseNode(base);
        EXPECT_EQ(machine.GetBaseNode(), base);
        EXPECT_EQ(log, Log{});
    }
    EXPECT_EQ(log, Log{"base"});
}

TEST(Machine, VirtualStreamIdsAreAThousandApartWithoutRangeTest)
{
    const IkMachine machine;
    for (const int id : {0, 1, -1, -1000, 5000}) {
        EXPECT_EQ(machine.Physical2VirtualStreamId(id), id + 1000);
        EXPECT_EQ(machine.Virtual2PhysicalStreamId(id), id - 1000);
    }
    EXPECT_EQ(machine.Physical2VirtualStreamId(0), 1000);
    EXPECT_EQ(machine.Virtual2PhysicalStreamId(1000), 0);
    // At the ends of the range they come round, as 32-bit numbers do.
    constexpr int kLast = 2147483647;
    EXPECT_EQ(machine.Physical2VirtualStreamId(kLast), -kLast - 1 + 999);
    EXPECT_EQ(machine.Virtual2PhysicalStreamId(-kLast - 1), kLast - 999);
}

TEST(Machine, FindsStreamsByIndexInTheOrderAdded)
{
    Log log;
    IkMachine machine;
    IkStream* first = AddStream(machine, log, "first", 7);
    IkStream* second = AddStream(machine, log, "second", 3);
    EXPECT_EQ(machine.GetNumStreams(), 2);
    EXPECT_EQ(&machine.GetStreamByIndex(0), first);
    EXPECT_EQ(&machine.GetStreamByIndex(1), second);
    EXPECT_EQ(machine.GetStreamPtrByIndex(0), first);
    EXPECT_EQ(machine.GetStreamPtrByIndex(1), second);
}

TEST(Machine, FindsTheFirstStreamOfAnId)
{
    Log log;
    IkMachine machine;
    AddStream(machine, log, "other", 1);
    IkStream* earlier = AddStream(machine, log, "earlier", 7);
    AddStream(machine, log, "later", 7);
    EXPECT_EQ(&machine.GetStreamById(7), earlier);
    EXPECT_EQ(machine.GetStreamPtrById(7), earlier);
}

TEST(Machine, FailedLookUpsThrowNarrowTextsOrReturnNullAndChangeNothing)
{
    Log log;
    IkMachine machine;
    AddStream(machine, log, "only", 7);
    for (const int index : {-1, 1, machine.GetNumStreams(), 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(Thrown([&] { machine.GetStreamByIndex(index); }), "Invalid index argument");
        EXPECT_EQ(machine.GetStreamPtrByIndex(index), nullptr);
    }
    for (const int id : {0, 6, 1007}) {
        EXPECT_EQ(Thrown([&] { machine.GetStreamById(id); }), "Failed to find matching stream.");
        EXPECT_EQ(machine.GetStreamPtrById(id), nullptr);
    }
    EXPECT_EQ(Thrown([&] { machine.GetStreamById(7); }), "nothing");
    EXPECT_EQ(machine.GetNumStreams(), 1);
    EXPECT_EQ(log, Log{});
}

TEST(Machine, RemovesAndDestroysOnlyTheFirstStreamOfAnId)
{
    Log log;
    IkMachine machine;
    IkStream* a = AddStream(machine, log, "a", 1);
    AddStream(machine, log, "earlier", 7);
    IkStream* b = AddStream(machine, log, "b", 2);
    IkStream* later = AddStream(machine, log, "later", 7);
    machine.RemoveStream(7);
    EXPECT_EQ(log, Log{"earlier"});
    ASSERT_EQ(machine.GetNumStreams(), 3);
    EXPECT_EQ(machine.GetStreamPtrByIndex(0), a);
    EXPECT_EQ(machine.GetStreamPtrByIndex(1), b);
    EXPECT_EQ(machine.GetStreamPtrByIndex(2), later);
    machine.RemoveStream(99);
    EXPECT_EQ(machine.GetNumStreams(), 3);
    EXPECT_EQ(log, Log{"earlier"});
}

TEST(Machine, CollectsASerialTreeFromTheTipToTheBase)
{
    IkMachine machine;
    auto* base = new IkBody(L"base");
    machine.SetBaseNode(base);
    AddJoint(AddJoint(base, L"A", 1), L"B", 2);
    IkJtStateVector states;
    states.AddState(IkJtState()); // replaced
    machine.GetJointStates(states);
    EXPECT_EQ(states.GetNameVector(), (Names{L"B", L"A"}));
    EXPECT_EQ(states.GetValVector(), (Values{2, 1}));
}

//   base ── A ── A1
//     │     └─── body ── A2
//     └──── B ── B1
TEST(Machine, CollectsSiblingsInOrderAndEachJointAfterAllBelowIt)
{
    IkMachine machine;
    auto* base = new IkBody(L"base");
    machine.SetBaseNode(base);
    IkNode* a = AddJoint(base, L"A");
    AddJoint(a, L"A1");
    auto* body = new IkBody(L"body");
    a->AddChild(body);
    AddJoint(body, L"A2");
    AddJoint(AddJoint(base, L"B"), L"B1");
    EXPECT_EQ(JointNames(machine), (Names{L"A1", L"A2", L"A", L"B1", L"B"}));
}

TEST(Machine, LeavesABaseJointOutOfGetJointStates)
{
    IkMachine machine;
    auto* base = new IkJtPrism(L"base");
    machine.SetBaseNode(base);
    AddJoint(base, L"A");
    EXPECT_EQ(JointNames(machine), Names{L"A"});
    IkJtStateVector named;
    machine.RecurseGetJointStates(named, base); // asked for by name it takes part
    EXPECT_EQ(named.GetNameVector(), (Names{L"A", L"base"}));
}

TEST(Machine, CollectsNothingWithoutABaseNode)
{
    IkMachine machine;
    IkJtStateVector states;
    states.AddState(IkJtState());
    machine.GetJointStates(states);
    EXPECT_EQ(states.Size(), 0);
    machine.RecurseInitJointValues(nullptr);
    EXPECT_EQ(machine.GetBaseNode(), nullptr);
}

TEST(Machine, PassesOverANodeThatOnlySaysItIsAJoint)
{
    IkMachine machine;
    auto* base = new IkBody;
    machine.SetBaseNode(base);
    base->AddChild(new FalseJoint);
    AddJoint(base, L"A");
    EXPECT_EQ(JointNames(machine), Names{L"A"});
}

TEST(Machine, InitialisesEveryJointBelowTheBaseButNotABaseJoint)
{
    IkMachine machine;
    auto* base = new IkJtPrism(L"base");
    base->SetCurValue(5);
    base->SetInitialValue(6);
    machine.SetBaseNode(base);
    const IkJoint* a = AddJoint(base, L"A", 1, 10);
    const IkJoint* b = AddJoint(base->GetKidList().front(), L"B", 2, 20);
    machine.RecurseInitJointValues(nullptr);
    EXPECT_EQ(a->GetCurValue(), 10);
    EXPECT_EQ(b->GetCurValue(), 20);
    EXPECT_EQ(base->GetCurValue(), 5);
    machine.RecurseInitJointValues(base);
    EXPECT_EQ(base->GetCurValue(), 6);
}

TEST(Machine, InitialisesOnlyTheSubtreeItIsGiven)
{
    IkMachine machine;
    auto* base = new IkBody;
    machine.SetBaseNode(base);
    IkJoint* a = AddJoint(base, L"A", 1, 10);
    const IkJoint* a1 = AddJoint(a, L"A1", 2, 20);
    const IkJoint* b = AddJoint(base, L"B", 3, 30);
    machine.RecurseInitJointValues(a);
    EXPECT_EQ((Values{a->GetCurValue(), a1->GetCurValue(), b->GetCurValue()}), (Values{10, 20, 3}));
}

TEST(Machine, EndsItsWalksInATreeThatLeadsBackToItself)
{
    IkJtPrism a(L"A");
    IkJtPrism b(L"B");
    a.AddChild(&b);
    b.AddChild(&a);
    a.SetInitialValue(4);
    IkMachine machine;
    IkJtStateVector states;
    machine.RecurseGetJointStates(states, &a);
    EXPECT_EQ(states.GetNameVector(), (Names{L"B", L"A"}));
    machine.RecurseInitJointValues(&a);
    EXPECT_EQ(a.GetCurValue(), 4);
}

TEST(Machine, ClearStreamInfoDestroysStreamsFromTheLastAndKeepsTheTree)
{
    Log log;
    IkMachine machine;
    auto* base = new Logged<IkBody>(log, "base");
    machine.SetBaseNode(base);
    AddStream(machine, log, "first", 1);
    AddStream(machine, log, "second", 2);
    AddStream(machine, log, "third", 3);
    machine.ClearStreamInfo();
    EXPECT_EQ(log, (Log{"third", "second", "first"}));
    EXPECT_EQ(machine.GetNumStreams(), 0);
    EXPECT_EQ(machine.GetBaseNode(), base);
}

struct Machines
{
    static void Fill(IkMachine& machine, Log& log)
    {
        auto* base = new Logged<IkBody>(log, "base");
        auto* joint = new Logged<IkJtRot>(log, "joint");
        base->AddChild(joint);
        joint->AddChild(new Logged<IkBody>(log, "tip"));
        machine.SetBaseNode(base);
        AddStream(machine, log, "first", 1);
        AddStream(machine, log, "second", 2);
    }
    static Log Destroyed() { return {"tip", "joint", "base", "second", "first"}; }
};

TEST(Machine, ResetDestroysTheTreeThenTheStreamsAndStartsAfresh)
{
    Log log;
    IkMachine machine;
    Machines::Fill(machine, log);
    machine.Reset();
    EXPECT_EQ(log, Machines::Destroyed());
    EXPECT_EQ(machine.GetBaseNode(), nullptr);
    EXPECT_EQ(machine.GetNumStreams(), 0);
    log.clear();
    machine.Reset(); // nothing is left to destroy
    EXPECT_EQ(log, Log{});
    Machines::Fill(machine, log);
    EXPECT_EQ(machine.GetNumStreams(), 2);
}

TEST(Machine, DestructorDestroysTheTreeAndTheStreams)
{
    Log log;
    {
        IkMachine machine;
        Machines::Fill(machine, log);
    }
    EXPECT_EQ(log, Machines::Destroyed());
}

TEST(Machine, NullEntriesAmongTheStreamsAreCountedAndPassedOver)
{
    Log log;
    IkMachine machine;
    machine.AddStream(nullptr);
    IkStream* stream = AddStream(machine, log, "stream", 0);
    machine.AddStream(nullptr);
    EXPECT_EQ(machine.GetNumStreams(), 3);
    EXPECT_EQ(machine.GetStreamPtrById(0), stream);
    EXPECT_EQ(machine.GetStreamPtrByIndex(0), nullptr);
    EXPECT_EQ(Thrown([&] { machine.GetStreamByIndex(0); }), "Invalid index argument");
    machine.RemoveStream(0);
    EXPECT_EQ(log, Log{"stream"});
    EXPECT_EQ(machine.GetNumStreams(), 2);
    machine.Reset();
    EXPECT_EQ(machine.GetNumStreams(), 0);
}

TEST(Machine, AStreamAddedTwiceIsDestroyedOnce)
{
    Log log;
    IkMachine machine;
    IkStream* twice = AddStream(machine, log, "twice", 1);
    machine.AddStream(twice);
    machine.ClearStreamInfo();
    EXPECT_EQ(log, Log{"twice"});

    twice = AddStream(machine, log, "again", 1);
    machine.AddStream(twice);
    machine.RemoveStream(1); // still listed, so still alive
    EXPECT_EQ(log, Log{"twice"});
    EXPECT_EQ(machine.GetStreamPtrById(1), twice);
    machine.RemoveStream(1);
    EXPECT_EQ(log, (Log{"twice", "again"}));
}

TEST(Machine, CopiesReferToTheSameTreeAndStreams)
{
    Log log;
    IkMachine machine;
    Machines::Fill(machine, log);
    IkMachine assigned;
    assigned = machine;
    IkMachine copied(machine);
    for (IkMachine* copy : {&assigned, &copied}) {
        EXPECT_EQ(copy->GetBaseNode(), machine.GetBaseNode());
        ASSERT_EQ(copy->GetNumStreams(), 2);
        EXPECT_EQ(copy->GetStreamPtrByIndex(1), machine.GetStreamPtrByIndex(1));
        copy->SetBaseNode(nullptr); // only one of the three may destroy them
        copy->streams.clear();
    }
    EXPECT_EQ(log, Log{});
}

} // namespace
