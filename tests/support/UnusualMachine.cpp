#include "support/UnusualMachine.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "support/RandomMachine.h"

namespace test
{

namespace
{

constexpr double kPi = 3.141592653589793;
constexpr double kFullTurn = 6.28318530717958; // as default rotary bounds have it
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double ExtremeNumber(Random& random)
{
    return random.OneOf({0.0, -0.0, 1e300, -1e300, 1e155, -1e155, 4.9e-324, -4.9e-324, 1e-310,
                         -2.2e-308, 1e-160, 1e16, -1e16, kInfinity, -kInfinity, kNan, -kNan});
}

template <template <class> class Kind, class Base>
std::unique_ptr<IkNode> MakeHost(UnusualMachine& machine)
{
    auto node = std::make_unique<Kind<Base>>();
    HostNode* host = node.get();
    host->id = machine.hosts.size();
    host->log = machine.log.get();
    machine.hosts.push_back(host);
    return node;
}

enum class Class { Library, Host, Meddler };

template <class Base>
std::unique_ptr<IkNode> MakeNode(UnusualMachine& machine, Class ofNode, Random& random)
{
    if (ofNode == Class::Library) {
        return std::make_unique<Base>();
    }
    if (ofNode == Class::Meddler) {
        return MakeHost<Meddler, Base>(machine);
    }
    switch (random.Below(14)) {
    case 0:
    case 1:
        return MakeHost<Renamed, Base>(machine);
    case 2:
    case 3:
        return MakeHost<AskedByStates, Base>(machine);
    case 4:
    case 5:
        return MakeHost<AskedByValue, Base>(machine);
    case 6:
    case 7:
        return MakeHost<AskedEitherWay, Base>(machine);
    case 8:
    case 9:
        return MakeHost<Follower, Base>(machine);
    case 10:
        return MakeHost<Setter, Base>(machine);
    case 11:
        return MakeHost<Drifting, Base>(machine);
    case 12:
        return MakeHost<Misshapen, Base>(machine);
    default:
        return MakeHost<Disguised, Base>(machine);
    }
}

/// What kinds of things a machine has, and how often.
struct Character
{
    explicit Character(Random& random)
        : hasHostNodes(random.OneIn(2)), hasUnusualFrames(random.OneIn(3)),
          hasExtremes(random.OneIn(4)), mostJoints(random.OneIn(8) ? 20 : 8)
    {}

    bool hasMeddlers{false};
    bool hasHostNodes;
    bool hasUnusualFrames;
    bool hasExtremes;
    int mostJoints;
};

class Maker
{
  public:
    Maker(UnusualMachine& made, Random& ofRandom)
        : machine(made), random(ofRandom), character(ofRandom)
    {}

    void Make(bool withMeddlers)
    {
        character.hasMeddlers = withMeddlers;
        machine.log = std::make_unique<CallLog>();
        machine.stream = std::make_unique<IkStream>();
        Grow();
        for (HostNode* host : machine.hosts) {
            host->leader = machine.joints.empty() || random.OneIn(10) ? nullptr : AnyJoint();
        }
        for (HostNode* host : machine.hosts) {
            host->Begin();
        }
        const int count = random.OneIn(4) ? random.Below(4) : 2;
        for (int i = 0; i < count; ++i) {
            AddChain();
        }
        Lock();
        SetPartSpace();
    }

  private:
    double Number(double ordinary)
    {
        return character.hasExtremes ? UnusualNumber(ordinary, random) : ordinary;
    }

    IkXformMat Frame(double reach)
    {
        return character.hasUnusualFrames && random.OneIn(3) ? UnusualFrame(random)
                                                             : RandomFrame(random, reach);
    }

    IkJoint* AnyJoint()
    {
        return machine.joints[static_cast<std::size_t>(
            random.Below(static_cast<int>(machine.joints.size())))];
    }

    IkNode* AnyNode()
    {
        return machine
            .nodes[static_cast<std::size_t>(random.Below(static_cast<int>(machine.nodes.size())))]
            .get();
    }

    void Grow()
    {
        Add(MakeBody(), nullptr);
        const int joints = random.Below(character.mostJoints + 1);
        while (static_cast<int>(machine.joints.size()) < joints) {
            if (random.OneIn(4)) {
                Add(MakeBody(), Parent());
            } else {
                AddJoint();
            }
        }
    }

    /// Mostly the latest node, so that branches grow long.
    IkNode* Parent() { return random.OneIn(4) ? AnyNode() : machine.nodes.back().get(); }

    IkNode* Add(std::unique_ptr<IkNode> node, IkNode* parent)
    {
        if (parent != nullptr) {
            parent->AddChild(node.get());
        }
        machine.nodes.push_back(std::move(node));
        return machine.nodes.back().get();
    }

    Class AnyClass()
    {
        if (character.hasMeddlers && random.OneIn(4)) {
            return Class::Meddler;
        }
        return character.hasHostNodes && random.OneIn(4) ? Class::Host : Class::Library;
    }

    std::unique_ptr<IkNode> MakeBody()
    {
        const Class ofNode = AnyClass();
        std::unique_ptr<IkNode> body = random.OneIn(6) ? MakeNode<IkNode>(machine, ofNode, random)
                                                       : MakeNode<IkBody>(machine, ofNode, random);
        body->SetOrigFrame(random.OneIn(3) ? IkXformMat() : Frame(300));
        body->SetWorldFrame(Frame(300));
        return body;
    }

    void AddJoint()
    {
        const Class ofNode = AnyClass();
        const bool isRotary = random.OneIn(2);
        std::unique_ptr<IkNode> node;
        if (random.OneIn(12)) {
            node = MakeNode<IkJoint>(machine, ofNode, random);
        } else if (isRotary) {
            node = MakeNode<IkJtRot>(machine, ofNode, random);
        } else {
            node = MakeNode<IkJtPrism>(machine, ofNode, random);
        }
        auto* joint = dynamic_cast<IkJoint*>(Add(std::move(node), Parent()));
        machine.joints.push_back(joint);
        SetUp(*joint, isRotary);
    }

    void SetUp(IkJoint& joint, bool isRotary)
    {
        const int first = isRotary ? IkJoint::JtPrimRotX : IkJoint::JtPrimTransX;
        const int primitive = random.OneIn(15) ? random.Below(9) : first + random.Below(3);
        joint.SetJtPrimitive(static_cast<IkJoint::JtPrimitives>(primitive));
        joint.SetOrigFrame(random.OneIn(3) ? IkXformMat() : Frame(200));
        const double reach = isRotary ? kPi : 500.0;
        joint.SetCurValue(Number(random.OneIn(5) ? random.OneOf({0.0, kPi / 2, -kPi / 2, kPi})
                                                 : random.Between(-reach, reach) / 2));
        joint.SetInitialValue(Number(random.OneIn(3) ? random.Between(-1, 1) : 0.0));
        joint.SetDirectionReversed(random.OneIn(3));
        joint.SetIsLocked(random.OneIn(8));
        SetBounds(joint, reach);
    }

    void SetBounds(IkJoint& joint, double reach)
    {
        const double value = joint.GetCurValue();
        switch (random.Below(9)) {
        case 0:
            joint.SetBounds(reach, -reach); // inverted
            break;
        case 1:
            joint.SetBounds(value - reach / 100, value + reach / 100);
            break;
        case 2:
            joint.SetBounds(0.0, kFullTurn);
            break;
        case 3:
            joint.SetBounds(-kFullTurn, kFullTurn);
            break;
        case 4:
            joint.SetBounds(value, value);
            break;
        case 5:
            joint.SetBounds(reach / 4, reach / 3); // the value may stand outside
            break;
        case 6:
            joint.SetBounds(Number(-reach), reach);
            break;
        default:
            joint.SetBounds(-reach, reach);
            break;
        }
    }

    void AddChain()
    {
        machine.chains.push_back(std::make_unique<IkChain>());
        IkChain& chain = *machine.chains.back();
        if (!random.OneIn(25)) {
            chain.FillFromBase2Node(random.OneIn(3) ? AnyNode() : LateNode());
        }
        if (random.OneIn(8)) { // the same node again, or one from elsewhere
            chain.AddNode(AnyNode());
            chain.AddNodeAtHead(AnyNode());
        }
        machine.stream->AddChain(&chain);
        if (random.OneIn(25)) {
            chain.AddNode(AnyNode()); // a joint may be unknown to the stream's locks
        }
    }

    /// One of the last three: at the end of a long branch.
    IkNode* LateNode()
    {
        const std::size_t back = 1 + static_cast<std::size_t>(random.Below(3));
        return machine.nodes[machine.nodes.size() - std::min(back, machine.nodes.size())].get();
    }

    void Lock()
    {
        for (IkJoint* joint : machine.joints) {
            if (random.OneIn(10)) {
                machine.stream->SetLocalLock(joint, true);
            }
        }
    }

    void SetPartSpace()
    {
        if (!random.OneIn(3)) {
            return;
        }
        machine.stream->SetPartSpaceMatrix(Frame(200), random.OneIn(3));
        if (random.OneIn(5)) {
            const bool has = random.OneIn(2);
            machine.stream->SetHasPartSpaceMatrix(has, random.OneIn(2));
        }
        if (machine.chains.size() > 1 && random.OneIn(6)) {
            machine.chains[1]->AddNode(AnyNode()); // the tip is not the part space's body any more
        }
    }

    UnusualMachine& machine;
    Random& random;
    Character character;
};

} // namespace

void UnusualMachine::Restart() const
{
    log->clear();
    for (HostNode* host : hosts) {
        host->Restart();
    }
}

bool UnusualMachine::ChangesStates() const
{
    return std::any_of(hosts.begin(), hosts.end(),
                       [](const HostNode* host) { return host->ChangesStates(); });
}

std::vector<double> UnusualMachine::JointValues() const
{
    std::vector<double> values;
    for (const IkJoint* joint : joints) {
        values.push_back(joint->GetCurValue());
    }
    return values;
}

void UnusualMachine::SetJointValues(const std::vector<double>& values) const
{
    for (std::size_t i = 0; i < joints.size(); ++i) {
        joints[i]->SetCurValue(values[i]);
    }
}

UnusualMachine MakeUnusualMachine(Random& random)
{
    UnusualMachine machine;
    Maker(machine, random).Make(false);
    return machine;
}

UnusualMachine MakeMeddlingMachine(Random& random)
{
    UnusualMachine machine;
    Maker(machine, random).Make(true);
    return machine;
}

IkJtStateVector UnusualStates(const UnusualMachine& machine, Random& random)
{
    IkJtStateVector states = machine.stream->GetJointStates();
    if (random.OneIn(3)) {
        states.Reset();
    }
    for (int more = random.OneIn(2) ? 0 : random.Below(6); more > 0; --more) {
        const auto count = static_cast<int>(machine.joints.size());
        const int chosen = random.Below(count + 1);
        IkJoint* joint =
            chosen == count ? nullptr : machine.joints[static_cast<std::size_t>(chosen)];
        states.AddState(IkJtState(joint, random.Between(-3, 3)));
    }
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        state.SetValue(UnusualNumber(state.GetValue() + random.Between(-1, 1), random));
    }
    if (states.Size() > 0 && random.OneIn(6)) { // leaves look-ups a place too far
        IkJtState deleted = states.GetState(random.OneIn(3) ? random.Below(states.Size()) : 0);
        states.DelState(deleted);
    }
    return states;
}

IkEndState UnusualTarget(const UnusualMachine& machine, Random& random)
{
    IkJtStateVector states = machine.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        const bool isRotary = state.GetJoint() != nullptr && state.GetJoint()->IsRotary();
        const double reach = isRotary ? 0.4 : 60.0;
        state.SetValue(state.GetValue() + random.Between(-reach, reach));
    }
    IkEndState target = machine.stream->SolveFK(states, false, nullptr, nullptr, random.OneIn(8));
    if (random.OneIn(6)) {
        target.SetCompleteState(UnusualFrame(random));
    }
    if (!random.OneIn(3)) {
        std::array<bool, 4> filter{};
        for (bool& flag : filter) {
            flag = random.OneIn(2);
        }
        target.SetFilter(filter.data());
    }
    return target;
}

IkXformMat UnusualFrame(Random& random)
{
    IkXformMat frame = RandomFrame(random, 200);
    if (random.OneIn(2)) { // scaled or sheared
        const double factor = random.OneOf({2.0, 0.5, -1.0, 1e-3});
        const int row = random.Below(3);
        const int column = random.Below(3);
        frame[row][column] = frame[row][column] * factor + (random.OneIn(2) ? 0.25 : 0.0);
    }
    if (random.OneIn(3)) {
        frame[3][random.Below(4)] = random.OneOf({-0.0, 0.0, 1.0, 0.5, -2.0});
    }
    if (random.OneIn(2)) {
        for (int i = 0; i < 16; ++i) {
            double& entry = frame[i / 4][i % 4];
            entry = entry == 0.0 && random.OneIn(2) ? -0.0 : entry;
        }
    }
    if (random.OneIn(3)) {
        frame[random.Below(4)][random.Below(4)] = ExtremeNumber(random);
    }
    return frame;
}

double UnusualNumber(double ordinary, Random& random)
{
    return random.OneIn(12) ? ExtremeNumber(random) : ordinary;
}

} // namespace test
