#include "geometry/Trace.h"

#include <limits>

#include <gtest/gtest.h>

#include "RecordingTraceSink.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

namespace
{

using test::BitsOf;
using test::Lines;
using test::LinesOf;
using test::SwitchedOn;
using trunnion::TraceLabel;
using trunnion::TraceSwitches;
using trunnion::Tracing;

/// Hands the label it is dumped with to the sink, ahead of what its base forms.
template <class Base>
class Announcing : public Base
{
  public:
    using Base::Base;
    explicit Announcing(const Base& other) : Base(other) {}

    void TraceDump(const wchar_t* label) const override
    {
        trunnion::TraceLine(label);
        Base::TraceDump(label);
    }
};
using AnnouncingNode = Announcing<IkBody>;
using AnnouncingChain = Announcing<IkChain>;

constexpr std::array<bool TraceSwitches::*, 6> kSwitches{
    &TraceSwitches::solverObjectiveTarget,   &TraceSwitches::solverObjectiveCurrent,
    &TraceSwitches::streamObjectiveTarget,   &TraceSwitches::streamObjectiveCurrent,
    &TraceSwitches::streamForwardKinematics, &TraceSwitches::hybridSampling,
};

Lines RowsOf(const IkXformMat& m)
{
    return LinesOf([&m] { m.TraceDump(L""); });
}

Lines Joined(const std::vector<Lines>& blocks)
{
    Lines all;
    for (const Lines& block : blocks) {
        all.insert(all.end(), block.begin(), block.end());
    }
    return all;
}

Lines Under(const std::wstring& caption, const Lines& lines)
{
    return Joined({{caption}, lines});
}

/// The two frames that a node dumps.
Lines FramesOf(const IkNode& node)
{
    return Joined({RowsOf(node.GetOrigFrame()), RowsOf(node.GetWorldFrame())});
}

void SetFrames(IkNode& node, double number)
{
    node.SetOrigFrame(IkXformMat::Translate(number, 1, 1));
    node.SetWorldFrame(IkXformMat::Translate(number, 2, 2));
    node.SetRelFrame(IkXformMat::Translate(number, 3, 3));
}

TEST(Trace, HasEverySwitchOffAtStart)
{
    for (const auto which : kSwitches) {
        EXPECT_FALSE(Tracing().*which);
    }
    EXPECT_EQ(sizeof(TraceSwitches), kSwitches.size() * sizeof(bool)); // there are no others
}

TEST(Trace, KeepsItsBufferSizes)
{
    EXPECT_EQ(trunnion::kTraceChildLabel, 256U);
    EXPECT_EQ(trunnion::kTraceFrameLabel, 124U);
    EXPECT_EQ(trunnion::kTraceElement, 124U);
    EXPECT_EQ(trunnion::kTraceNodeInfoLabel, 1024U);
}

TEST(Trace, PutsASuffixBehindALabel)
{
    EXPECT_EQ(TraceLabel(L"label", L"\t\t", 124), L"label\t\t");
    EXPECT_EQ(TraceLabel(L"", L"\t", 256), L"\t");
    EXPECT_EQ(TraceLabel(nullptr, L"\t", 256), L"\t");
    EXPECT_EQ(TraceLabel(L"100%s \u00b0", L"\t", 256), L"100%s \u00b0\t");
}

TEST(Trace, FormsALabelOnlyWhereItFitsWithItsTerminator)
{
    for (const std::size_t size :
         {trunnion::kTraceFrameLabel, trunnion::kTraceChildLabel, trunnion::kTraceNodeInfoLabel}) {
        const std::wstring fits(size - 3, L'x');
        const std::wstring tooLong(size - 2, L'x');
        EXPECT_EQ(TraceLabel(fits.c_str(), L"\t\t", size), fits + L"\t\t");
        EXPECT_EQ(TraceLabel(tooLong.c_str(), L"\t\t", size), L"");
    }
}

TEST(Trace, CaptionsASampleOnlyWhereItFitsWithItsTerminator)
{
    const std::wstring fits(53, L'c'); // with two digits, 55
    EXPECT_EQ(trunnion::TraceSampleCaption((fits + L"%d").c_str(), 12), fits + L"12");
    EXPECT_EQ(trunnion::TraceSampleCaption((fits + L"%d").c_str(), 123), L"");
}

TEST(Trace, FormatsElementsInSevenCharactersAndThreeDigits)
{
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<std::pair<double, std::wstring>> cases{
        {0.0, L"      0"},     {-0.0, L"     -0"},       {1.0, L"      1"},
        {-1.5, L"   -1.5"},    {0.123456, L"  0.123"},   {100.0, L"    100"},
        {999.6, L"  1e+03"},   {1234567.0, L"1.23e+06"}, {-1.25e-17, L"-1.25e-17"},
        {-1e-300, L"-1e-300"}, {inf, L"    inf"},        {-inf, L"   -inf"},
    };
    for (const auto& [element, text] : cases) {
        const IkXformMat m = TNT::Matrix<double>(1, 1, element);
        EXPECT_EQ(LinesOf([&m] { m.TraceDump(L"label"); }), Lines{text + L",\t"});
        EXPECT_EQ(LinesOf([&m] { m.TraceDumpMCode(L"label"); }), Lines{text + L" "});
    }
}

TEST(Trace, FormsOneLineARowWithoutTheLabel)
{
    const IkXformMat m = IkXformMat::Translate(10, -0.5, 1e6);
    EXPECT_EQ(LinesOf([&m] { m.TraceDump(L"label"); }),
              (Lines{L"      1,\t      0,\t      0,\t     10,\t",
                     L"      0,\t      1,\t      0,\t   -0.5,\t",
                     L"      0,\t      0,\t      1,\t  1e+06,\t",
                     L"      0,\t      0,\t      0,\t      1,\t"}));
    EXPECT_EQ(LinesOf([&m] { m.TraceDumpMCode(nullptr); }),
              (Lines{L"      1       0       0      10 ", L"      0       1       0    -0.5 ",
                     L"      0       0       1   1e+06 ", L"      0       0       0       1 "}));
}

TEST(Trace, FormsLinesOfAnyShape)
{
    const IkXformMat threeByThree = TNT::Matrix<double>(3, 3, 2.0);
    EXPECT_EQ(RowsOf(threeByThree), Lines(3, L"      2,\t      2,\t      2,\t"));

    const IkXformMat noRows = TNT::Matrix<double>(0, 4, 2.0);
    EXPECT_EQ(RowsOf(noRows), Lines());
    EXPECT_EQ(LinesOf([&noRows] { noRows.TraceDumpMCode(L""); }), Lines());

    const IkXformMat noColumns = TNT::Matrix<double>(2, 0, 2.0);
    EXPECT_EQ(RowsOf(noColumns), Lines(2, L""));
}

TEST(Trace, OfANodeWithoutChildrenIsItsOriginalAndItsWorldFrame)
{
    AnnouncingNode node;
    SetFrames(node, 5);
    EXPECT_EQ(LinesOf([&node] { node.TraceDump(L"label"); }),
              Joined({Under(L"label", RowsOf(IkXformMat::Translate(5, 1, 1))),
                      RowsOf(IkXformMat::Translate(5, 2, 2))}));
}

//   root ── a ── b ── c
//     └──── d
TEST(Trace, OfATreeRunsDepthFirstOneTabDeeperALevel)
{
    AnnouncingNode root, a, b, c, d;
    root.AddChild(&a);
    a.AddChild(&b);
    b.AddChild(&c);
    root.AddChild(&d);
    double number = 0;
    for (IkNode* node : {&root, &a, &b, &c, &d}) {
        SetFrames(*node, ++number);
    }
    EXPECT_EQ(LinesOf([&root] { root.TraceDump(L">"); }),
              Joined({Under(L">", FramesOf(root)), Under(L">\t", FramesOf(a)),
                      Under(L">\t\t", FramesOf(b)), Under(L">\t\t\t", FramesOf(c)),
                      Under(L">\t", FramesOf(d))}));
}

template <class Joint>
void ExpectDumpedAsANode()
{
    Joint joint;
    AnnouncingNode child;
    joint.AddChild(&child);
    SetFrames(joint, 1);
    SetFrames(child, 2);
    joint.SetCurValue(0.5); // is not dumped
    EXPECT_EQ(LinesOf([&joint] { joint.TraceDump(L"j"); }),
              Joined({FramesOf(joint), Under(L"j\t", FramesOf(child))}));
}

TEST(Trace, OfAJointIsThatOfANode)
{
    ExpectDumpedAsANode<IkJoint>();
    ExpectDumpedAsANode<IkJtPrism>();
    ExpectDumpedAsANode<IkJtRot>();
}

// 254 characters and a tab fill the child label's buffer. One more does not fit: that label is
// lost, its frames and everything below are not.
TEST(Trace, LosesOnlyALabelThatIsTooLong)
{
    AnnouncingNode root, a, b, c;
    root.AddChild(&a);
    a.AddChild(&b);
    b.AddChild(&c);
    const std::wstring label(254, L'x');
    const Lines frames = FramesOf(root);
    EXPECT_EQ(LinesOf([&] { root.TraceDump(label.c_str()); }),
              Joined({Under(label, frames), Under(label + L"\t", frames), Under(L"", frames),
                      Under(L"\t", frames)}));
}

TEST(Trace, TakesAMissingLabelAsAnEmptyOne)
{
    IkNode root;
    AnnouncingNode child;
    root.AddChild(&child);
    const Lines lines = LinesOf([&root] { root.TraceDump(nullptr); });
    EXPECT_EQ(lines, Joined({FramesOf(root), Under(L"\t", FramesOf(child))}));
}

TEST(Trace, TurnsBackWhereANodeIsItsOwnAncestor)
{
    IkNode root, a, b;
    root.AddChild(&a);
    a.AddChild(&root);
    a.AddChild(&b);
    b.AddChild(&b);
    SetFrames(root, 1);
    SetFrames(a, 2);
    SetFrames(b, 3);
    EXPECT_EQ(LinesOf([&root] { root.TraceDump(L""); }),
              Joined({FramesOf(root), FramesOf(a), FramesOf(b)}));
}

TEST(Trace, OfValuesFormsNoLine)
{
    test::Fixture mill = test::TableTableMill();
    IkStream& stream = *mill.stream;
    IkJtStateVector states = stream.GetJointStates();
    IkEndState target = stream.SolveFK(false);
    stream.SolveIK(target, states, false, IkJoint::JtLimitAll, false);
    states.AddState(IkJtState());
    EXPECT_EQ(LinesOf([&] {
                  mill.toolChain->TraceDump(L"label");
                  mill.toolChain->TraceDump(std::wstring(300, L'x').c_str());
                  target.TraceDump(L"label");
                  states.TraceDump(L"label");
                  IkJtStateVector().TraceDump(nullptr);
                  stream.TraceDump(L"label");
                  stream.TraceDumpLocks();
                  stream.SolverStatusTraceDump();
              }),
              Lines());
}

//   tool chain: t1 ── t2          part chain: p1
//                └── below
TEST(Trace, OfAStreamsNodesGivesEachOneTab)
{
    AnnouncingNode t1, t2, below, p1;
    t1.AddChild(&t2);
    t1.AddChild(&below);
    double number = 0;
    for (IkNode* node : {&t1, &t2, &below, &p1}) {
        SetFrames(*node, ++number);
    }
    IkChain tool;
    tool.AddNode(&t1);
    tool.AddNode(&t2);
    IkChain part;
    part.AddNode(&p1);
    IkStream stream;
    stream.AddChain(&tool);
    stream.AddChain(&part);
    EXPECT_EQ(LinesOf([&stream] { stream.TraceDumpIkNodeInfo(L"not used"); }),
              Joined({Under(L"\t", FramesOf(t1)), Under(L"\t\t", FramesOf(t2)),
                      Under(L"\t\t", FramesOf(below)), Under(L"\t", FramesOf(t2)),
                      Under(L"\t", FramesOf(p1))}));
}

/// The table-table mill away from its zero, over chains that announce themselves.
struct TracedStream
{
    test::Fixture mill = test::TableTableMill();
    AnnouncingChain tool{*mill.toolChain};
    AnnouncingChain part{*mill.partChain};
    IkStream stream;
    IkJtStateVector states = mill.States({10, -20, 30, -0.5, 0.75});
    IkXformMat baseToTool;
    IkXformMat baseToPart;

    TracedStream()
    {
        stream.AddChain(&tool);
        stream.AddChain(&part);
        stream.SolveFK(states, false, &baseToPart, &baseToTool, false);
    }

    Lines LinesOfFK(IkXformMat* partOut, bool toolOnly)
    {
        const SwitchedOn on(&TraceSwitches::streamForwardKinematics);
        return LinesOf([&] { stream.SolveFK(states, false, partOut, nullptr, toolOnly); });
    }
};

TEST(Trace, OfForwardKinematicsListsToolPartInverseAndResultTwice)
{
    TracedStream s;
    const IkXformMat partToBase = s.baseToPart.QuickInvert();
    const IkXformMat partToTool = partToBase * s.baseToTool;
    EXPECT_EQ(s.LinesOfFK(nullptr, false),
              Joined({Under(L"FK_TOOL_CHAIN>>", RowsOf(s.baseToTool)),
                      Under(L"FK_PRT_CHAIN>>", RowsOf(s.baseToPart)), RowsOf(partToBase),
                      RowsOf(partToTool), RowsOf(partToTool)}));
}

TEST(Trace, OfForwardKinematicsOfTheToolAloneLeavesThePartOut)
{
    TracedStream s;
    EXPECT_EQ(s.LinesOfFK(nullptr, true),
              Joined({Under(L"FK_TOOL_CHAIN>>", RowsOf(s.baseToTool)), RowsOf(s.baseToTool)}));
}

TEST(Trace, OfForwardKinematicsOfTheToolWithThePartFrameEndsAtTheIdentity)
{
    TracedStream s;
    IkXformMat baseToPart;
    EXPECT_EQ(s.LinesOfFK(&baseToPart, true),
              Joined({Under(L"FK_TOOL_CHAIN>>", RowsOf(s.baseToTool)),
                      Under(L"FK_PRT_CHAIN>>", RowsOf(s.baseToPart)), RowsOf(IkXformMat())}));
}

TEST(Trace, OfForwardKinematicsShowsAFixedPartSpaceWhereItStands)
{
    TracedStream s;
    const IkXformMat baseToPart = IkXformMat::Translate(1, 2, 3);
    s.stream.SetPartSpaceMatrix(baseToPart, true);
    const Lines lines = s.LinesOfFK(nullptr, false);
    s.stream.SetHasPartSpaceMatrix(false, false);

    const IkXformMat partToBase = IkXformMat::Translate(-1, -2, -3);
    const IkXformMat partToTool = partToBase * s.baseToTool;
    EXPECT_EQ(lines, Joined({Under(L"FK_TOOL_CHAIN>>", RowsOf(s.baseToTool)),
                             Under(L"FK_PRT_CHAIN>>", RowsOf(baseToPart)), RowsOf(partToBase),
                             RowsOf(partToTool), RowsOf(partToTool)}));
}

TEST(Trace, OfForwardKinematicsThatComputesNothingFormsNoLine)
{
    TracedStream s;
    s.states.Reset();
    EXPECT_EQ(s.LinesOfFK(nullptr, false), Lines());
    s.states = s.mill.stream->GetJointStates();
    s.stream.Reset();
    EXPECT_EQ(s.LinesOfFK(nullptr, false), Lines());
}

TEST(Trace, FormsNoLineOfForwardKinematicsUnlessItsOwnSwitchIsOn)
{
    TracedStream s;
    const auto solve = [&s] { s.stream.SolveFK(s.states, false, nullptr, nullptr, false); };
    EXPECT_EQ(LinesOf(solve), Lines());
    for (const auto which : kSwitches) {
        const SwitchedOn on(which);
        EXPECT_EQ(LinesOf(solve).empty(), which != &TraceSwitches::streamForwardKinematics);
    }
}

TEST(Trace, OfTheStreamsObjectiveFormsNoLine)
{
    TracedStream s;
    IkEndState target = s.stream.SolveFK(s.states, false, nullptr, nullptr, false);
    for (const auto which :
         {&TraceSwitches::streamObjectiveTarget, &TraceSwitches::streamObjectiveCurrent}) {
        const SwitchedOn on(which);
        EXPECT_EQ(LinesOf([&] {
                      IkJtStateVector result;
                      EXPECT_TRUE(
                          s.stream.SolveIK(target, result, false, IkJoint::JtLimitNone, false));
                  }),
                  Lines());
    }
}

/// Everything about a node that a host can see.
struct Seen
{
    std::wstring name, type;
    std::vector<std::uint64_t> original, relative, world;
    std::vector<IkNode*> children;
    IkNode* parent;
    void* userData;
    bool isDirty;

    explicit Seen(const IkNode& node)
        : name(node.GetName()), type(node.GetType()), original(BitsOf(node.GetOrigFrame())),
          relative(BitsOf(node.GetRelFrame())), world(BitsOf(node.GetWorldFrame())),
          children(node.GetKidList()), parent(node.GetParentPtr()), userData(node.GetUserData()),
          isDirty(node.IsDirty())
    {}

    bool operator==(const Seen& other) const
    {
        return name == other.name && type == other.type && original == other.original &&
               relative == other.relative && world == other.world && children == other.children &&
               parent == other.parent && userData == other.userData && isDirty == other.isDirty;
    }
};

TEST(Trace, LeavesNodesAsTheyAre)
{
    for (const bool isDirty : {false, true}) {
        IkJtRot joint(L"joint");
        IkBody child(L"child");
        joint.AddChild(&child);
        SetFrames(joint, 4);
        joint.SetCurValue(0.5);
        joint.SetDirty(isDirty);
        child.SetDirty(isDirty);
        const Seen jointBefore(joint);
        const Seen childBefore(child);
        joint.TraceDump(L"label");
        EXPECT_TRUE(Seen(joint) == jointBefore);
        EXPECT_TRUE(Seen(child) == childBefore);
        EXPECT_EQ(joint.GetCurValue(), 0.5);
    }
}

void DumpEverything(const test::Fixture& machine, const IkEndState& target,
                    const IkJtStateVector& result)
{
    machine.machine->GetBaseNode()->TraceDump(L"tree");
    machine.toolChain->TraceDump(L"tool");
    machine.partChain->TraceDump(L"part");
    machine.stream->TraceDump(L"stream");
    machine.stream->TraceDumpIkNodeInfo(L"nodes");
    machine.stream->TraceDumpLocks();
    machine.stream->SolverStatusTraceDump();
    target.TraceDump(L"target");
    target.GetCompleteState().TraceDump(L"target");
    target.GetCompleteState().TraceDumpMCode(L"target");
    result.TraceDump(L"result");
}

/// The bits of a run of forward and inverse solves, with `between` called after each step.
template <class Between>
std::vector<std::uint64_t> BitsOfARun(const test::NamedFixture& named, const Between& between)
{
    const test::Fixture machine = named.make();
    std::vector<double> values;
    for (std::size_t i = 0; i < machine.joints.size(); ++i) {
        values.push_back(0.1 * static_cast<double>(i + 1));
    }
    IkJtStateVector states = machine.States(values);
    IkJtStateVector result;
    IkEndState target;
    std::vector<std::uint64_t> bits;
    const auto note = [&bits](const std::vector<std::uint64_t>& more) {
        bits.insert(bits.end(), more.begin(), more.end());
    };
    between(machine, target, result);
    IkXformMat baseToPart;
    IkXformMat baseToTool;
    target = machine.stream->SolveFK(states, false, &baseToPart, &baseToTool, false);
    note(BitsOf(target.GetCompleteState()));
    note(BitsOf(baseToPart));
    note(BitsOf(baseToTool));
    between(machine, target, result);
    bits.push_back(machine.stream->SolveIK(target, result, false, IkJoint::JtLimitAll, false));
    note(BitsOf(result));
    between(machine, target, result);
    result.CommitValuesToJoints();
    between(machine, target, result);
    note(BitsOf(machine.stream->SolveFK(false).GetCompleteState()));
    return bits;
}

TEST(Trace, ChangesNoBitOfAResult)
{
    for (const test::NamedFixture& named : test::AllFixtures()) {
        const auto nothing = [](const auto&...) {};
        const std::vector<std::uint64_t> bits = BitsOfARun(named, nothing);
        EXPECT_EQ(BitsOfARun(named, DumpEverything), bits) << named.name;
        for (const auto which : kSwitches) {
            const SwitchedOn on(which);
            EXPECT_EQ(BitsOfARun(named, nothing), bits) << named.name;
        }
    }
}

} // namespace
