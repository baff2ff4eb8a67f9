#include "machine/MachineAssembly.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <codecvt>
#include <locale>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <IkNode.h>

#include "geometry/Frame.h"
#include "text/InputError.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

std::wstring Wide(const std::string& name)
{
    return std::wstring_convert<std::codecvt_utf8<wchar_t>>().from_bytes(name);
}

template <class Entry>
const Entry* Find(const std::vector<Entry>& entries, const std::string& name)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const Entry& entry) { return entry.name.value == name; });
    return found == entries.end() ? nullptr : &*found;
}

/// What must hold between the parts of a description before anything is built from it.
class Consistency
{
  public:
    explicit Consistency(const MachineDescription& ofMachine) : machine(ofMachine) {}

    void Check()
    {
        CheckNames();
        for (const AxisDescription& axis : machine.axes) {
            CheckParent(axis.parent, "axis " + Quoted(axis.name.value));
        }
        for (const MountDescription& mount : machine.mounts) {
            CheckParent(mount.parent, "mount " + Quoted(mount.name.value));
        }
        for (const AxisDescription& axis : machine.axes) {
            CheckPathToBase(axis);
        }
        CheckStreams();
    }

  private:
    [[noreturn]] void Refuse(TextPosition at, const std::string& sentence) const
    {
        throw InputError(machine.file, at, sentence);
    }

    /// Axes and mounts become nodes of one tree, so that one name leads to one node.
    void CheckNames()
    {
        std::set<std::string> taken{std::string(kBaseName)};
        const auto take = [&](const Located<std::string>& name) {
            if (!taken.insert(name.value).second) {
                Refuse(name.at, Quoted(name.value) +
                                    " is already the name of something else in this machine; "
                                    "choose another");
            }
        };
        for (const AxisDescription& axis : machine.axes) {
            take(axis.name);
        }
        for (const MountDescription& mount : machine.mounts) {
            take(mount.name);
        }
    }

    void CheckParent(const Located<std::string>& parent, const std::string& child) const
    {
        if (parent.value != kBaseName && Find(machine.axes, parent.value) == nullptr) {
            Refuse(parent.at, "the parent of " + child + " is " + Quoted(parent.value) +
                                  ", and there is no such axis; name an axis or \"base\"");
        }
    }

    void CheckPathToBase(const AxisDescription& axis) const
    {
        const AxisDescription* ancestor = &axis;
        for (std::size_t steps = 0; ancestor->parent.value != kBaseName; ++steps) {
            ancestor = Find(machine.axes, ancestor->parent.value);
            if (steps == machine.axes.size()) {
                Refuse(axis.parent.at, "the parents of axis " + Quoted(axis.name.value) +
                                           " lead round in a circle, never to \"base\"; hang one "
                                           "of them elsewhere");
            }
        }
    }

    void CheckStreams() const
    {
        std::set<int> taken;
        for (const StreamDescription& stream : machine.streams) {
            if (!taken.insert(stream.id.value).second) {
                Refuse(stream.id.at, "there is already a stream " +
                                         std::to_string(stream.id.value) + "; choose another id");
            }
            CheckMount(stream.tool, MountKind::Tool, "tool");
            CheckMount(stream.part, MountKind::Part, "part");
        }
    }

    void CheckMount(const Located<std::string>& name, MountKind kind,
                    const std::string& kindName) const
    {
        const MountDescription* const mount = Find(machine.mounts, name.value);
        if (mount == nullptr) {
            Refuse(name.at, "there is no mount " + Quoted(name.value) +
                                "; name one of kind = " + Quoted(kindName));
        }
        if (mount->kind != kind) {
            Refuse(name.at, "mount " + Quoted(name.value) +
                                " is not of kind = " + Quoted(kindName) + "; name one that is");
        }
    }

    const MachineDescription& machine;
};

/// How a joint has to be built so that its body moves along or about a direction.
struct Motion
{
    IkJoint::JtPrimitives primitive;
    bool isReversed;
    IkXformMat alignment; //!< turns the primitive's axis into the direction
};

Motion MotionAlong(const Vec3& direction, bool isRotary)
{
    constexpr std::array kLinear{IkJoint::JtPrimTransX, IkJoint::JtPrimTransY,
                                 IkJoint::JtPrimTransZ};
    constexpr std::array kRotary{IkJoint::JtPrimRotX, IkJoint::JtPrimRotY, IkJoint::JtPrimRotZ};
    const auto& primitives = isRotary ? kRotary : kLinear;
    for (std::size_t i = 0; i < primitives.size(); ++i) {
        Vec3 principal{};
        principal[i] = std::copysign(1.0, direction[i]);
        if (direction == principal) {
            return {primitives[i], direction[i] < 0.0, IkXformMat()};
        }
    }
    return {primitives[2], false, FrameOf(Vec3{}, direction)};
}

bool IsIdentity(const IkXformMat& frame)
{
    const IkXformMat identity;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            if (frame[row][column] != identity[row][column]) {
                return false;
            }
        }
    }
    return true;
}

/// Hands a node over to the tree.
template <class Node>
Node& Hang(IkNode& parent, std::unique_ptr<Node> node)
{
    Node* const hung = node.release();
    parent.AddChild(hung);
    return *hung;
}

IkBody& HangBody(IkNode& parent, const std::wstring& name, const IkXformMat& frame)
{
    auto body = std::make_unique<IkBody>(name);
    body->SetOrigFrame(frame);
    return Hang(parent, std::move(body));
}

/// Builds what a consistent description describes.
class Assembly
{
  public:
    explicit Assembly(const MachineDescription& ofMachine) : description(ofMachine)
    {
        loaded.file = description.file;
        loaded.name = description.name;
        loaded.length = description.length;
        loaded.machine = std::make_unique<IkMachine>();
        auto base = std::make_unique<IkBody>(Wide(std::string(kBaseName)));
        ends.emplace(kBaseName, base.get());
        loaded.machine->SetBaseNode(base.release());
    }

    LoadedMachine Finish()
    {
        for (const AxisDescription& axis : description.axes) {
            EndOf(axis.name.value);
            loaded.axes.push_back({axis.name.value, axis.isRotary, axis.direction, axis.point,
                                   axis.initial, axis.word, axis.wordSign,
                                   joints.at(axis.name.value), AxisNamed(axis.parent.value)});
        }
        loaded.MoveToInitial();
        for (const MountDescription& mount : description.mounts) {
            const IkXformMat frame = FrameOf(mount.origin, mount.xAxis, mount.zAxis);
            mounts.emplace(mount.name.value,
                           &HangBody(EndOf(mount.parent.value), Wide(mount.name.value), frame));
            loaded.mounts.push_back(
                {mount.name.value, mount.kind, AxisNamed(mount.parent.value), frame});
        }
        for (const VisualDescription& visual : description.visuals) {
            loaded.visuals.push_back(
                {visual.name, AxisNamed(visual.parent.value), visual.shape, visual.size,
                 FrameOf(visual.origin, visual.xAxis, visual.zAxis), visual.color});
        }
        for (const StreamDescription& stream : description.streams) {
            AddStream(stream);
        }
        return std::move(loaded);
    }

  private:
    /// Nothing for the base.
    std::optional<std::size_t> AxisNamed(const std::string& name) const
    {
        const AxisDescription* const axis = Find(description.axes, name);
        return axis == nullptr
                   ? std::nullopt
                   : std::optional(static_cast<std::size_t>(axis - description.axes.data()));
    }

    /// The node on which whatever an axis carries hangs, there again in machine coordinates.
    IkNode& EndOf(const std::string& name)
    {
        if (const auto built = ends.find(name); built != ends.end()) {
            return *built->second;
        }
        const AxisDescription& axis = *Find(description.axes, name);
        IkNode& end = HangAxis(EndOf(axis.parent.value), axis);
        ends.emplace(name, &end);
        return end;
    }

    IkNode& HangAxis(IkNode& parent, const AxisDescription& axis)
    {
        const Motion motion = MotionAlong(axis.direction, axis.isRotary);
        const IkXformMat machineToAxis =
            IkXformMat::Translate(axis.point[0], axis.point[1], axis.point[2]) * motion.alignment;
        IkJoint& joint =
            axis.isRotary
                ? Hang<IkJoint>(parent, std::make_unique<IkJtRot>(Wide(axis.name.value)))
                : Hang<IkJoint>(parent, std::make_unique<IkJtPrism>(Wide(axis.name.value)));
        joint.SetJtPrimitive(motion.primitive);
        joint.SetDirectionReversed(motion.isReversed);
        joint.SetOrigFrame(machineToAxis);
        joint.SetBounds(axis.limits.low, axis.limits.high);
        joints.emplace(axis.name.value, &joint);
        return IsIdentity(machineToAxis)
                   ? static_cast<IkNode&>(joint)
                   : HangBody(joint, Wide(axis.name.value + " back"), machineToAxis.QuickInvert());
    }

    void AddStream(const StreamDescription& stream)
    {
        LoadedStream added;
        added.id = stream.id.value;
        added.tool = stream.tool.value;
        added.part = stream.part.value;
        // A body of the stream's own: another stream may use the mount with another tool.
        added.tip = &HangBody(*mounts.at(stream.tool.value),
                              Wide("tip of stream " + std::to_string(added.id)), IkXformMat());
        added.toolChain = ChainTo(*added.tip);
        added.partChain = ChainTo(*mounts.at(stream.part.value));

        auto ikStream = std::make_unique<IkStream>();
        ikStream->SetId(added.id);
        ikStream->AddChain(added.toolChain.get());
        ikStream->AddChain(added.partChain.get());
        added.stream = ikStream.release();
        loaded.machine->AddStream(added.stream);

        const IkJtStateVector moved = added.stream->GetJointStates();
        for (std::size_t i = 0; i < loaded.axes.size(); ++i) {
            if (moved.FindStateByJointPtr(loaded.axes[i].joint) >= 0) {
                added.axes.push_back(i);
            }
        }
        if (added.axes.empty()) {
            throw InputError(description.file, stream.id.at,
                             "stream " + std::to_string(added.id) +
                                 " has no axis on either side, so that nothing moves; hang its "
                                 "tool or its part on an axis");
        }
        added.toolAxes = AxesAbove(added.tool);
        added.partAxes = AxesAbove(added.part);
        loaded.streams.push_back(std::move(added));
    }

    /// The axes that carry a mount, from the base outwards.
    std::vector<std::size_t> AxesAbove(const std::string& mount) const
    {
        std::vector<std::size_t> above;
        const std::string* name = &Find(description.mounts, mount)->parent.value;
        while (*name != kBaseName) {
            const AxisDescription* const axis = Find(description.axes, *name);
            above.push_back(static_cast<std::size_t>(axis - description.axes.data()));
            name = &axis->parent.value;
        }
        std::reverse(above.begin(), above.end());
        return above;
    }

    static std::unique_ptr<IkChain> ChainTo(IkNode& node)
    {
        auto chain = std::make_unique<IkChain>();
        chain->FillFromBase2Node(&node);
        return chain;
    }

    const MachineDescription& description;
    LoadedMachine loaded;
    std::map<std::string, IkNode*, std::less<>> ends;
    std::map<std::string, IkJoint*> joints;
    std::map<std::string, IkNode*> mounts;
};

} // namespace

LoadedMachine AssembleMachine(const MachineDescription& description)
{
    Consistency(description).Check();
    return Assembly(description).Finish();
}

} // namespace host
