// No room on the heap: every allocation that an operation makes is refused once, for a fresh
// machine each time. The exception reaches the caller, no block is lost, what was at work can be
// used and destroyed, and the same operation then gives the same bits as if nothing had happened.

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "failure/FailingNew.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

using test::BitsOf;
using test::Fixture;

namespace
{

using Words = std::vector<std::uint64_t>;

/// What a refusal may leave behind.
enum class After {
    Usable,   // part of the work may be done
    Untouched // nothing has changed
};

/// TNT::Array1D and Array2D of double are TNT's own from end to end: the library hands them to
/// hosts and cannot put other code in the place of theirs. When there is room for the elements but
/// none for the four bytes that count their uses, TNT loses the elements: one block, and that only.
enum class Arrays { NotUsed, LoseTheirElements };

/// Refuses each allocation of `act` once. `look` is everything about the rig that a host sees.
template <class Make, class Act, class Look>
void RefuseEach(const Make& make, const Act& act, const Look& look, After after = After::Usable,
                Arrays arrays = Arrays::NotUsed)
{
    const auto [before, expected] = [&] {
        const auto rig = make();
        Words begun = look(*rig);
        act(*rig);
        return std::pair<Words, Words>(begun, look(*rig));
    }();
    long refused = 0;
    for (bool isRefused = true; isRefused; refused += isRefused ? 1 : 0) {
        const long inUse = test::BlocksInUse();
        {
            const auto rig = make();
            bool isCaught = false;
            {
                const test::FailingNew failing(refused);
                try {
                    act(*rig);
                } catch (const std::bad_alloc&) {
                    isCaught = true;
                }
                isRefused = test::FailingNew::HasRefused();
                if (arrays == Arrays::LoseTheirElements) {
                    test::FailingNew::GiveBackLostElements();
                }
            }
            ASSERT_EQ(isCaught, isRefused) << "allocation " << refused;
            if (isRefused) {
                if (after == After::Untouched) {
                    ASSERT_EQ(look(*rig), before) << "allocation " << refused;
                }
                act(*rig);
            }
            ASSERT_EQ(look(*rig), expected) << "allocation " << refused;
        }
        ASSERT_EQ(test::BlocksInUse(), inUse) << "allocation " << refused;
    }
    EXPECT_GT(refused, 0);
    testing::Test::RecordProperty("refused", static_cast<int>(refused));
    std::cout << "  allocations refused: " << refused << '\n';
}

void Append(Words& words, const Words& more)
{
    words.insert(words.end(), more.begin(), more.end());
}

/// Joints by their number, values, and what the look-up says of each joint.
Words Contents(const IkJtStateVector& states, const std::vector<IkJoint*>& joints)
{
    Words words{states.states.size(), states.jointIndex.size()};
    for (const IkJtState& state : states.states) {
        const auto place = std::find(joints.begin(), joints.end(), state.GetJoint());
        words.push_back(static_cast<std::uint64_t>(place - joints.begin()));
        words.push_back(BitsOf(state.GetValue()));
    }
    for (const IkJoint* joint : joints) {
        words.push_back(static_cast<std::uint64_t>(states.FindStateByJointPtr(joint)));
    }
    return words;
}

IkJtStateVector Moved(const Fixture& fixture, double turn, double way)
{
    IkJtStateVector states = fixture.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        state.SetValue(state.GetValue() + (state.GetJoint()->IsRotary() ? turn : way));
    }
    return states;
}

IkEndState TargetNear(const Fixture& fixture)
{
    IkJtStateVector states = Moved(fixture, 0.1, 10.0);
    return fixture.stream->SolveFK(states, false, nullptr, nullptr, false);
}

/// A machine and what a solve on it gives.
struct SolveRig
{
    explicit SolveRig(Fixture made) : fixture(std::move(made)), target(TargetNear(fixture)) {}

    Fixture fixture;
    IkEndState target;
    IkJtStateVector result;
    bool isSolved{false};

    Words Look() const
    {
        Words words = Contents(result, fixture.joints);
        words.push_back(isSolved ? 1 : 0);
        for (const double value : fixture.JointValues()) {
            words.push_back(BitsOf(value)); // which no solve changes
        }
        return words;
    }
};

template <class Body>
void OnEveryFixture(const Body& body)
{
    for (const test::NamedFixture& named : test::AllFixtures()) {
        SCOPED_TRACE(named.name);
        body([&named] { return std::make_unique<SolveRig>(named.make()); });
    }
}

Words LookAtSolve(const SolveRig& rig)
{
    return rig.Look();
}

void SolveStream(SolveRig& rig)
{
    rig.isSolved =
        rig.fixture.stream->SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
}

/// An arm of so many joints, of which the shape is plain and the reach long.
Fixture Snake(int count)
{
    Fixture fixture;
    fixture.machine = std::make_unique<IkMachine>();
    auto* base = new IkBody(L"base");
    fixture.machine->SetBaseNode(base);
    IkNode* tip = base;
    for (int i = 0; i < count; ++i) {
        auto* joint = new IkJtRot(L"J");
        joint->SetJtPrimitive(i % 2 == 0 ? IkJoint::JtPrimRotY : IkJoint::JtPrimRotX);
        joint->SetOrigFrame(IkXformMat::Translate(0, 0, 50));
        joint->SetCurValue(0.05 * (i + 1));
        tip->AddChild(joint);
        fixture.joints.push_back(joint);
        tip = joint;
    }
    fixture.toolChain = std::make_unique<IkChain>();
    fixture.toolChain->FillFromBase2Node(tip);
    fixture.stream = new IkStream;
    fixture.stream->AddChain(fixture.toolChain.get());
    fixture.machine->AddStream(fixture.stream);
    return fixture;
}

/// Overrides nothing: yet every stage of its solves is called as the host's own.
class HostsSolver : public IkSolverPsuedoInverse
{
  public:
    using IkSolverPsuedoInverse::IkSolverPsuedoInverse;
};

/// Takes the last of the solutions that are not rejected.
class LastOne : public IkSolutionAnalyst
{
  public:
    bool AnalyzeSolutions(IkStream* /*stream*/, IkJtStateVector* startStates,
                          std::vector<IkSolverSampleItem>& samples) override
    {
        const IkJtStateVector start = *startStates; // its own allocations are refused as well
        for (std::size_t i = samples.size(); i-- > 1;) {
            if (samples[i].rejected) {
                samples.erase(samples.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        return start.Size() > 0;
    }
};

} // namespace

TEST(AllocationFailure, StreamSolve)
{
    OnEveryFixture([](const auto& make) { RefuseEach(make, SolveStream, LookAtSolve); });
}

TEST(AllocationFailure, StreamSolveThatFails)
{
    const auto make = [] {
        auto rig = std::make_unique<SolveRig>(test::HeadTableMill());
        rig->target.SetCompleteState(IkXformMat::Translate(1e6, 2e6, 3e6));
        return rig;
    };
    RefuseEach(make, SolveStream, LookAtSolve);
}

TEST(AllocationFailure, SolveOfManyJoints)
{
    // Beyond what scratch storage holds without the heap: 16 columns, 32 nodes.
    for (const int joints : {16, 17, 40}) {
        SCOPED_TRACE(joints);
        const auto make = [joints] { return std::make_unique<SolveRig>(Snake(joints)); };
        const auto solve = [](SolveRig& rig) {
            IkSolverPsuedoInverse solver(rig.fixture.stream);
            solver.SetMaxIterations(3); // each pass is like the one before
            rig.isSolved =
                solver.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
        };
        RefuseEach(make, solve, LookAtSolve);
    }
}

TEST(AllocationFailure, SolverObjectSolve)
{
    OnEveryFixture([](const auto& make) {
        const auto solve = [](SolveRig& rig) {
            IkSolverPsuedoInverse solver(rig.fixture.stream);
            rig.isSolved =
                solver.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
        };
        RefuseEach(make, solve, LookAtSolve);
    });
}

TEST(AllocationFailure, SolverObjectThatIsUsedAgain)
{
    struct Rig : SolveRig
    {
        Rig() : SolveRig(test::TableTableMill()), solver(fixture.stream) {}
        IkSolverPsuedoInverse solver;
    };
    const auto solve = [](Rig& rig) {
        rig.isSolved =
            rig.solver.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
    };
    const auto look = [](const Rig& rig) {
        Words words = rig.Look();
        // What a stage may take its numbers from: nothing beyond the states.
        for (const int index : rig.solver.FreeJointIndices) {
            words.push_back(index < rig.solver.SolverJtStates.Size() ? 1 : 0);
        }
        return words;
    };
    RefuseEach([] { return std::make_unique<Rig>(); }, solve, look);
}

TEST(AllocationFailure, SolverObjectOfAHostsClass)
{
    for (const auto make : {test::HeadTableMill, test::ThreeAxisMill}) {
        const auto solve = [](SolveRig& rig) {
            HostsSolver solver(rig.fixture.stream);
            rig.isSolved =
                solver.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
        };
        RefuseEach([make] { return std::make_unique<SolveRig>(make()); }, solve, LookAtSolve,
                   After::Usable, Arrays::LoseTheirElements);
    }
}

TEST(AllocationFailure, HybridSolveWithAnAnalyst)
{
    struct Rig : SolveRig
    {
        Rig() : SolveRig(test::HeadTableMill()), solver(fixture.stream)
        {
            fixture.Joint(L"C").SetIsLocked(true); // one joint is sampled: four starts
            solver.SetAnalystObj(&analyst);
        }
        LastOne analyst;
        IkSolverHybrid solver;
    };
    const auto solve = [](Rig& rig) {
        rig.isSolved =
            rig.solver.SolveIK(rig.target, rig.result, false, IkJoint::JtLimitAll, false);
    };
    const auto look = [](Rig& rig) {
        Words words = rig.Look();
        for (const IkSolverSampleItem& sample : rig.solver.GetSampleList()) {
            Append(words, Contents(sample.resultStates, rig.fixture.joints));
            words.push_back(BitsOf(sample.errorValue));
        }
        return words;
    };
    RefuseEach([] { return std::make_unique<Rig>(); }, solve, look);
}

TEST(AllocationFailure, ForwardEvaluation)
{
    struct Rig : SolveRig
    {
        explicit Rig(Fixture made) : SolveRig(std::move(made)) {}
        IkXformMat part;
        IkXformMat tool;
        IkXformMat chain;
        IkXformMat newPartSpace;
        IkJtStateVector machineStates;
        IkEndState pose;
    };
    for (const test::NamedFixture& named : test::AllFixtures()) {
        SCOPED_TRACE(named.name);
        const auto evaluate = [](Rig& rig) {
            IkStream& stream = *rig.fixture.stream;
            IkJtStateVector states = Moved(rig.fixture, 0.2, 20.0);
            rig.pose = stream.SolveFK(states, false, &rig.part, &rig.tool, false);
            rig.pose = stream.SolveFK(states, false, nullptr, nullptr, false);
            rig.pose = stream.SolveFK(false);
            rig.chain = rig.fixture.toolChain->GetXformMat(states);
            IkXformMat frame = IkXformMat::RotX(0.3);
            stream.SolveNewPartSpace(states, frame, rig.newPartSpace);
            rig.fixture.machine->GetJointStates(rig.machineStates);
        };
        const auto look = [](const Rig& rig) {
            Words words = Contents(rig.machineStates, rig.fixture.joints);
            for (const IkXformMat* frame : {&rig.part, &rig.tool, &rig.chain, &rig.newPartSpace,
                                            &rig.pose.GetCompleteState()}) {
                Append(words, BitsOf(*frame));
            }
            return words;
        };
        RefuseEach([&named] { return std::make_unique<Rig>(named.make()); }, evaluate, look);
    }
}

TEST(AllocationFailure, EndStatesAndTheirArrays)
{
    struct Rig
    {
        IkEndState from;
        IkEndState to;
        TNT::Array1D<double> difference;
        TNT::Array2D<double> column;
    };
    const auto make = [] {
        auto rig = std::make_unique<Rig>();
        rig->to.SetCompleteState(IkXformMat::Translate(1, 2, 3));
        return rig;
    };
    const auto act = [](Rig& rig) {
        rig.column = rig.to.Diff2D(rig.from);
        rig.difference = rig.to.Diff(rig.from);
    };
    const auto look = [](Rig& rig) {
        Words words = BitsOf(rig.column);
        for (int i = 0; i < rig.difference.dim(); ++i) {
            words.push_back(BitsOf(rig.difference[i]));
        }
        return words;
    };
    RefuseEach(make, act, look, After::Usable, Arrays::LoseTheirElements);
}

TEST(AllocationFailure, Transforms)
{
    const auto make = [] { return std::make_unique<IkXformMat>(IkXformMat::RotZ(0.5)); };
    const auto act = [](IkXformMat& frame) {
        const IkXformMat start(frame);
        const IkXformMat wide = IkXformMat(start).QuickInvert();
        IkXformMat turned = IkXformMat::RotX(0.25);
        turned.TranslateThis(1, 2, 3);
        turned.RotYThis(start.IsOrthogonal(1e-9) ? wide[0][1] : 0.0);
        frame = turned;
    };
    RefuseEach(
        make, act, [](const IkXformMat& frame) { return BitsOf(frame); }, After::Untouched);
}

TEST(AllocationFailure, BuildingAMachine)
{
    struct Rig
    {
        Fixture fixture;
    };
    const auto build = [](Rig& rig) {
        Fixture fixture;
        fixture.machine = std::make_unique<IkMachine>();
        auto base = std::make_unique<IkBody>(L"a base with a name that takes a block of its own");
        fixture.machine->SetBaseNode(base.get());
        IkNode* const root = base.release();
        auto slide = std::make_unique<IkJtPrism>(L"X");
        slide->SetBounds(-100, 100);
        root->AddChild(slide.get());
        IkJoint* const x = slide.release();
        auto turn = std::make_unique<IkJtRot>(L"a table that turns about its own vertical axis");
        root->AddChild(turn.get());
        IkJoint* const c = turn.release();
        fixture.joints = {x, c};
        fixture.toolChain = std::make_unique<IkChain>();
        fixture.toolChain->FillFromBase2Node(x);
        fixture.partChain = std::make_unique<IkChain>();
        fixture.partChain->AddNode(c);
        fixture.partChain->AddNodeAtHead(root);
        auto stream = std::make_unique<IkStream>();
        stream->SetId(3);
        stream->AddChain(fixture.toolChain.get());
        stream->AddChain(fixture.partChain.get());
        stream->SetPartSpaceMatrix(IkXformMat::Translate(0, 0, 25), false);
        fixture.machine->AddStream(stream.get());
        fixture.stream = stream.release();
        rig.fixture = std::move(fixture);
    };
    const auto look = [](Rig& rig) {
        Words words;
        if (rig.fixture.stream != nullptr) {
            words = Contents(rig.fixture.stream->GetJointStates(), rig.fixture.joints);
            Append(words, BitsOf(rig.fixture.stream->SolveFK(false).GetCompleteState()));
        }
        return words;
    };
    RefuseEach([] { return std::make_unique<Rig>(); }, build, look, After::Untouched);
}

namespace
{

/// A node under another, and one to be added.
struct TreeRig
{
    TreeRig()
    {
        root.AddChild(&kid);
        other.SetName(L"another name, long enough to be kept outside of its string");
        other.SetType(L"another type, long enough to be kept outside of its string");
        other.SetOrigFrame(IkXformMat::RotX(1));
        other.AddChild(&kid);
        other.AddChild(&root);
        TNT::Vector<double> axis(3);
        axis[2] = 2.0;
        other.SetArbitraryAxis(axis);
        other.SetCurValue(5);
        root.SetArbitraryAxis(TNT::Vector<double>(2));
        kid.SetParent(&root);
    }

    Words Look() const
    {
        Words words;
        for (const IkJoint* joint : std::vector<const IkJoint*>{&root, &kid}) {
            for (const std::wstring& text : {joint->GetName(), joint->GetType()}) {
                words.push_back(text.size());
                words.insert(words.end(), text.begin(), text.end());
            }
            words.push_back(joint->GetParentPtr() == &root ? 1 : 0);
            words.push_back(joint->GetKidList().size());
            words.push_back(BitsOf(joint->GetCurValue()));
            const TNT::Vector<double> axis = joint->GetArbitraryAxis();
            words.insert(words.end(), axis.begin(), axis.end());
            Append(words, BitsOf(joint->GetOrigFrame()));
        }
        return words;
    }

    IkJoint root;
    IkJoint kid;
    IkJoint other;
};

template <class Act>
void RefuseEachOnATree(const Act& act)
{
    RefuseEach([] { return std::make_unique<TreeRig>(); }, act,
               [](const TreeRig& rig) { return rig.Look(); }, After::Untouched);
}

} // namespace

TEST(AllocationFailure, NodesAreNeverHalfChanged)
{
    RefuseEachOnATree([](TreeRig& rig) { rig.root = rig.other; });
    RefuseEachOnATree([](TreeRig& rig) { rig.root.AddChild(&rig.other); });
    RefuseEachOnATree([](TreeRig& rig) { rig.root.SetName(rig.other.GetName()); });
    RefuseEachOnATree(
        [](TreeRig& rig) { rig.root.SetArbitraryAxis(rig.other.GetArbitraryAxis()); });
    RefuseEachOnATree([](TreeRig& rig) {
        const IkJoint copy(rig.other);
        rig.root = copy;
    });
}

namespace
{

/// Two vectors that share a joint.
struct StatesRig
{
    StatesRig()
    {
        for (int i = 0; i < 12; ++i) {
            owned.push_back(std::make_unique<IkJtRot>());
            joints.push_back(owned.back().get());
        }
        // Eight fill what is reserved at once: the next one takes new room.
        for (std::size_t i = 0; i < 8; ++i) {
            a.AddState(IkJtState(joints[i], 0.5));
        }
        for (std::size_t i = 7; i < 12; ++i) {
            b.AddState(IkJtState(joints[i], 1.5));
        }
    }

    Words Look() const
    {
        Words words = Contents(a, joints);
        Append(words, Contents(b, joints));
        Append(words, Contents(c, joints));
        return words;
    }

    std::vector<std::unique_ptr<IkJoint>> owned;
    std::vector<IkJoint*> joints;
    IkJtStateVector a;
    IkJtStateVector b;
    IkJtStateVector c;
};

template <class Act>
void RefuseEachOnStates(const Act& act)
{
    RefuseEach([] { return std::make_unique<StatesRig>(); }, act,
               [](const StatesRig& rig) { return rig.Look(); }, After::Untouched);
}

} // namespace

TEST(AllocationFailure, StatesAndLookUpChangeTogether)
{
    RefuseEachOnStates([](StatesRig& rig) { rig.a.AddState(IkJtState(rig.joints[9], 2.5)); });
    RefuseEachOnStates([](StatesRig& rig) { rig.c = rig.a; });
    RefuseEachOnStates([](StatesRig& rig) {
        const IkJtStateVector copy(rig.b);
        rig.c = copy;
    });
    RefuseEachOnStates([](StatesRig& rig) { rig.a += rig.b; });
    RefuseEachOnStates([](StatesRig& rig) { rig.a -= rig.b; });
    RefuseEachOnStates([](StatesRig& rig) { rig.c = rig.a + rig.b; });
    RefuseEachOnStates([](StatesRig& rig) { rig.c = rig.a - rig.b; });
}

namespace
{

/// Two streams over one machine, the second with locks, a part space and a solve behind it.
struct StreamRig
{
    StreamRig() : fixture(test::HeadTableMill())
    {
        IkStream& other = *fixture.stream;
        other.SetLocalLock(fixture.joints[0], true);
        other.SetPartSpaceMatrix(IkXformMat::Translate(10, 20, 30), true);
        IkEndState target = TargetNear(fixture);
        IkJtStateVector result;
        other.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
        tool.FillFromBase2Node(fixture.joints[1]);
        part.FillFromBase2Node(fixture.joints[2]);
        stream.SetId(8);
        stream.AddChain(&tool);
    }

    Words Look() const
    {
        Words words{static_cast<std::uint64_t>(stream.GetId()),
                    static_cast<std::uint64_t>(stream.NumChains()), stream.LocalLocks.size(),
                    stream.LockedFlags.size(), stream.FreeJointIndices.size()};
        for (const IkChain* chain : stream.Chains) {
            words.push_back(static_cast<std::uint64_t>(chain->Size()));
        }
        for (IkJoint* joint : fixture.joints) {
            bool isLocked = false;
            words.push_back(stream.GetLocalLock(joint, isLocked) ? 1 : 0);
            words.push_back(isLocked ? 1 : 0);
        }
        bool has = false;
        bool isFixed = false;
        stream.GetPartSpaceInfo(has, isFixed);
        words.push_back((has ? 1 : 0) + (isFixed ? 2 : 0));
        IkXformMat frame;
        stream.GetPartSpaceMatrix(frame);
        Append(words, BitsOf(frame));
        Append(words, BitsOf(stream.PartSpaceBody.GetOrigFrame()));
        Append(words, Contents(stream.SolverJtStates, fixture.joints));
        words.push_back(static_cast<std::uint64_t>(part.Size()));
        return words;
    }

    Fixture fixture;
    IkChain tool;
    IkChain part;
    IkStream stream;
};

template <class Act>
void RefuseEachOnAStream(const Act& act)
{
    RefuseEach([] { return std::make_unique<StreamRig>(); }, act,
               [](const StreamRig& rig) { return rig.Look(); }, After::Untouched);
}

} // namespace

TEST(AllocationFailure, StreamsAreNeverHalfChanged)
{
    const IkXformMat frame = IkXformMat::RotZ(0.5);
    RefuseEachOnAStream([](StreamRig& rig) { rig.stream = *rig.fixture.stream; });
    RefuseEachOnAStream([](StreamRig& rig) {
        const IkStream copy(*rig.fixture.stream);
        rig.stream.Copy(copy);
        rig.stream.PartSpaceBody.SetParent(nullptr);
    });
    RefuseEachOnAStream([](StreamRig& rig) {
        if (rig.stream.NumChains() == 1) {
            rig.stream.AddChain(&rig.part);
        }
    });
    RefuseEach(
        [] {
            auto rig = std::make_unique<StreamRig>();
            rig->stream.AddChain(&rig->part);
            return rig;
        },
        [&frame](StreamRig& rig) { rig.stream.SetPartSpaceMatrix(frame, true); },
        [](const StreamRig& rig) { return rig.Look(); }, After::Untouched);
    RefuseEach(
        [] {
            auto rig = std::make_unique<StreamRig>();
            rig->stream.AddChain(&rig->part);
            rig->stream.SetPartSpaceMatrix(IkXformMat::Translate(1, 2, 3), false);
            rig->fixture.joints[2]->SetInitialValue(0.5); // moves the part space
            return rig;
        },
        [](StreamRig& rig) { rig.stream.SetHasPartSpaceMatrix(true, true); },
        [](const StreamRig& rig) { return rig.Look(); }, After::Untouched);
}

TEST(AllocationFailure, SolversAreNeverHalfChanged)
{
    struct Rig : SolveRig
    {
        Rig() : SolveRig(test::HeadTableMill()), other(fixture.stream)
        {
            IkJtStateVector states;
            other.SolveIK(target, states, false, IkJoint::JtLimitAll, false);
            other.SetMaxIterations(7);
        }
        IkSolverHybrid solver;
        IkSolverHybrid other;
    };
    const auto look = [](Rig& rig) {
        const IkSolverHybrid& solver = rig.solver;
        Words words = Contents(solver.SolverJtStates, rig.fixture.joints);
        words.push_back(solver.FreeJointIndices.size());
        words.push_back(solver.LockedFlags.size());
        words.push_back(solver.sampleList.size());
        words.push_back(solver.GetStreamPtr() != nullptr ? 1 : 0);
        words.push_back(static_cast<std::uint64_t>(solver.GetMaxIterations()));
        return words;
    };
    RefuseEach([] { return std::make_unique<Rig>(); }, [](Rig& rig) { rig.solver = rig.other; },
               look, After::Untouched);
}

TEST(AllocationFailure, MachinesAndChains)
{
    struct Rig
    {
        // Copies are shallow: one of the two lets go before it is destroyed.
        ~Rig()
        {
            copy.streams.clear();
            copy.baseNode = nullptr;
        }
        Rig() = default;
        Rig(const Rig&) = delete;
        Rig& operator=(const Rig&) = delete;
        Rig(Rig&&) = delete;
        Rig& operator=(Rig&&) = delete;

        Fixture fixture{test::MillTurn()};
        IkMachine copy;
        IkChain chain;
    };
    const auto look = [](const Rig& rig) {
        return Words{static_cast<std::uint64_t>(rig.copy.GetNumStreams()),
                     rig.copy.GetBaseNode() != nullptr ? 1U : 0U,
                     static_cast<std::uint64_t>(rig.chain.Size())};
    };
    const auto make = [] { return std::make_unique<Rig>(); };
    RefuseEach(
        make, [](Rig& rig) { rig.copy = *rig.fixture.machine; }, look, After::Untouched);
    RefuseEach(
        make, [](Rig& rig) { rig.chain = *rig.fixture.toolChain; }, look, After::Untouched);
    RefuseEach(
        make, [](Rig& rig) { rig.chain.FillFromBase2Node(rig.fixture.joints.back()); }, look,
        After::Untouched);
}
