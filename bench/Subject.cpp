#include "Subject.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "support/Fixtures.h"
#include "support/LoadedFixture.h"

namespace bench
{

namespace
{

constexpr double kToolLength = 120.0; // [mm]

Subject SubjectOf(std::string name, Kind kind, host::LoadedMachine machine)
{
    Subject subject;
    subject.name = std::move(name);
    subject.kind = kind;
    subject.machine = std::move(machine);
    subject.machine.MoveToInitial();
    subject.home = subject.Stream().GetJointStates().GetValVector();
    return subject;
}

Subject LoadedSubject(const std::filesystem::path& file, Kind kind)
{
    host::LoadedMachine machine = host::LoadMachine(file);
    machine.streams.front().SetToolLength(kToolLength);
    return SubjectOf(file.stem(), kind, std::move(machine));
}

IkNode* Added(IkNode* parent, IkNode* child)
{
    parent->AddChild(child);
    return child;
}

IkNode* AddedBody(IkNode* parent, const wchar_t* name, const IkXformMat& frame)
{
    auto* body = new IkBody(name);
    body->SetOrigFrame(frame);
    return Added(parent, body);
}

IkNode* AddedJoint(IkNode* parent, int place)
{
    constexpr int kLinear = 3;
    if (place < kLinear) {
        auto* joint = new IkJtPrism(L"linear");
        joint->SetJtPrimitive(static_cast<IkJoint::JtPrimitives>(IkJoint::JtPrimTransX + place));
        joint->SetBounds(-1000.0, 1000.0);
        return Added(parent, joint);
    }
    auto* joint = new IkJtRot(L"rotary");
    joint->SetJtPrimitive(
        static_cast<IkJoint::JtPrimitives>(IkJoint::JtPrimRotX + (place - kLinear) % 3));
    joint->SetOrigFrame(IkXformMat::Translate(60.0, 40.0, 80.0));
    joint->SetBounds(-3.0, 3.0);
    return Added(parent, joint);
}

std::unique_ptr<IkChain> ChainTo(IkNode* node)
{
    auto chain = std::make_unique<IkChain>();
    chain->FillFromBase2Node(node);
    return chain;
}

} // namespace

int Subject::NodeCount() const
{
    const host::LoadedStream& stream = machine.streams.front();
    return stream.toolChain->Size() + stream.partChain->Size();
}

IkJtStateVector Subject::States(const JointValues& values) const
{
    IkJtStateVector states = Stream().GetJointStates();
    if (!states.SetValVector(values)) {
        throw std::logic_error("wrong number of joint values for " + name);
    }
    return states;
}

IkEndState Subject::TargetAt(const JointValues& values) const
{
    IkJtStateVector states = States(values);
    IkEndState target = Stream().SolveFK(states, false, nullptr, nullptr, false);
    std::array<bool, 4> counts{isWhole, false, true, true}; // x axis, y axis, tool axis, position
    target.SetFilter(counts.data());
    return target;
}

std::vector<Subject> FiveAxisSubjects(const std::filesystem::path& samples)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(samples / "machines")) {
        if (entry.path().extension() == ".toml") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    std::vector<Subject> subjects;
    for (const auto& file : files) {
        subjects.push_back(LoadedSubject(file, Kind::FiveAxes));
        if (subjects.back().JointCount() != 5) {
            throw std::runtime_error(file.string() + ": this machine does not have five axes");
        }
    }
    return subjects;
}

Subject ThreeAxisSubject()
{
    return SubjectOf("three-axis-mill", Kind::ThreeAxes, test::Loaded(test::ThreeAxisMill()));
}

Subject ArmSubject()
{
    Subject arm = SubjectOf("six-axis-arm", Kind::Arm, test::Loaded(test::SixAxisArm()));
    arm.isWhole = true;
    arm.home = {0.2, 0.1, 0.2, 0.3, 0.8, 0.1}; // its wrist is stretched with all joints at 0
    return arm;
}

Subject NineJointSubject(const std::filesystem::path& file)
{
    return LoadedSubject(file, Kind::NineJoints);
}

Subject SerialSubject(int joints)
{
    test::Fixture fixture;
    fixture.name = std::to_string(joints) + "-joints";
    fixture.machine = std::make_unique<IkMachine>();
    auto* base = new IkBody(L"base");
    fixture.machine->SetBaseNode(base);
    IkNode* tip = base;
    for (int place = 0; place < joints; ++place) {
        tip = AddedJoint(tip, place);
    }
    fixture.toolChain = ChainTo(AddedBody(tip, L"tool", IkXformMat::Translate(30.0, 0.0, -150.0)));
    fixture.partChain = ChainTo(AddedBody(base, L"part", IkXformMat::Translate(0.0, 0.0, 50.0)));
    fixture.stream = new IkStream;
    fixture.machine->AddStream(fixture.stream);
    fixture.stream->AddChain(fixture.toolChain.get());
    fixture.stream->AddChain(fixture.partChain.get());
    IkJtStateVector states = fixture.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        fixture.joints.push_back(states.GetState(i).GetJoint());
    }
    const std::string name = fixture.name;
    Subject subject = SubjectOf(name, Kind::Serial, test::Loaded(std::move(fixture)));
    for (std::size_t i = 3; i < subject.home.size(); ++i) {
        subject.home[i] = 0.3 + 0.05 * static_cast<double>(i);
    }
    return subject;
}

} // namespace bench
