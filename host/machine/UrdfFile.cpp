#include "machine/UrdfFile.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "geometry/Frame.h"
#include "machine/UrdfDocument.h"
#include "machine/UrdfKinematics.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr double kMillimetresPerMetre = 1000.0;

/// Where the program's user may find the name that is missing.
std::string ListOf(const std::vector<Located<std::string>>& links)
{
    constexpr std::size_t kMostShown = 40;
    std::string list;
    for (std::size_t i = 0; i < std::min(links.size(), kMostShown); ++i) {
        list += (i == 0 ? "" : ", ") + Quoted(links[i].value);
    }
    return links.size() > kMostShown
               ? list + " and " + std::to_string(links.size() - kMostShown) + " more"
               : list;
}

class UrdfReader
{
  public:
    explicit UrdfReader(UrdfDocument checked)
        : document(std::move(checked)), joints(UrdfJointsOf(document))
    {
        for (const auto& [name, joint] : joints) {
            jointAbove.emplace(joint.childLink, name);
        }
    }

    MachineDescription Read(const MountLinks& links)
    {
        const Located<std::string>& tool = LinkNamed(links.tool, "--tool-link");
        const Located<std::string>& part = LinkNamed(links.part, "--part-link");
        if (tool.value == part.value) {
            throw InputError(document.file, tool.at,
                             "link " + Quoted(tool.value) +
                                 " is to be tool and part at once; give --tool-link and "
                                 "--part-link different ones");
        }
        machine.file = document.file;
        machine.name = document.robot.value;
        for (const Located<std::string>& name : document.joints) {
            const UrdfJoint& joint = joints.at(name.value);
            if (joint.motion != UrdfMotion::Fixed) {
                AddAxis(name, joint);
            }
        }
        AddMount(tool, MountKind::Tool);
        AddMount(part, MountKind::Part);
        std::transform(document.visuals.begin(), document.visuals.end(),
                       std::back_inserter(machine.visuals),
                       [this](const UrdfVisual& visual) { return Placed(visual); });
        machine.streams.push_back(
            {{1, tool.at}, machine.mounts.front().name, machine.mounts.back().name});
        return std::move(machine);
    }

  private:
    const Located<std::string>& LinkNamed(const std::optional<std::string>& name,
                                          const std::string& option) const
    {
        if (!name) {
            throw InputError(document.file, "a URDF does not say where its tool and its part are; "
                                            "give --tool-link and --part-link, each one of: " +
                                                ListOf(document.links));
        }
        const auto found =
            std::find_if(document.links.begin(), document.links.end(),
                         [&](const Located<std::string>& link) { return link.value == *name; });
        if (found == document.links.end()) {
            throw InputError(document.file, "there is no link " + Quoted(*name) + " for " + option +
                                                "; choose one of: " + ListOf(document.links));
        }
        return *found;
    }

    /// The joint that a link hangs on; null for the root.
    const std::string* JointAbove(const std::string& link) const
    {
        const auto found = jointAbove.find(link);
        return found == jointAbove.end() ? nullptr : &found->second;
    }

    /// The axis that carries a link: the first joint above it that moves.
    std::string AxisAbove(const std::string& link) const
    {
        const std::string* name = JointAbove(link);
        while (name != nullptr && joints.at(*name).motion == UrdfMotion::Fixed) {
            name = JointAbove(joints.at(*name).parentLink);
        }
        return name == nullptr ? std::string(kBaseName) : *name;
    }

    /// The frame of a link with all joints at 0 [m].
    IkXformMat RootTo(const std::string& link) const
    {
        IkXformMat rootToLink;
        for (const std::string* name = JointAbove(link); name != nullptr;
             name = JointAbove(joints.at(*name).parentLink)) {
            rootToLink = joints.at(*name).parentToJoint * rootToLink;
        }
        return rootToLink;
    }

    void AddAxis(const Located<std::string>& name, const UrdfJoint& joint)
    {
        const IkXformMat rootToJoint = RootTo(joint.childLink);
        AxisDescription axis;
        axis.name = name;
        axis.parent = {AxisAbove(joint.parentLink), name.at};
        axis.isRotary = joint.motion == UrdfMotion::Rotary;
        axis.direction = Turned(rootToJoint, joint.axis);
        axis.limits = joint.limits;
        if (axis.isRotary) {
            axis.point = kMillimetresPerMetre * Column(rootToJoint, 3);
        } else {
            axis.limits.low *= kMillimetresPerMetre;
            axis.limits.high *= kMillimetresPerMetre;
        }
        axis.initial = std::clamp(0.0, axis.limits.low, axis.limits.high);
        axis.word = name.value;
        machine.axes.push_back(axis);
    }

    static Vec3 Turned(const IkXformMat& frame, const Vec3& direction)
    {
        const Vec3 turned = direction[0] * Column(frame, 0) + direction[1] * Column(frame, 1) +
                            direction[2] * Column(frame, 2);
        return Normalised(turned).value_or(direction);
    }

    void AddMount(const Located<std::string>& link, MountKind kind)
    {
        const IkXformMat rootToLink = RootTo(link.value);
        MountDescription mount;
        mount.name = {MountName(link.value), link.at};
        mount.kind = kind;
        mount.parent = {AxisAbove(link.value), link.at};
        mount.origin = kMillimetresPerMetre * Column(rootToLink, 3);
        mount.zAxis = Column(rootToLink, 2);
        mount.xAxis = Column(rootToLink, 0);
        machine.mounts.push_back(mount);
    }

    VisualDescription Placed(const UrdfVisual& visual) const
    {
        const IkXformMat frame = RootTo(visual.link.value) * FrameOfOrigin(visual.xyz, visual.rpy);
        VisualDescription placed;
        placed.name = visual.link.value;
        placed.parent = {AxisAbove(visual.link.value), visual.link.at};
        placed.shape = visual.shape;
        for (const double length : visual.size) {
            placed.size.push_back(kMillimetresPerMetre * length);
        }
        placed.origin = kMillimetresPerMetre * Column(frame, 3);
        placed.zAxis = Column(frame, 2);
        placed.xAxis = Column(frame, 0);
        placed.color = visual.color;
        return placed;
    }

    /// A link may have the name of a joint, or that of what all axes hang on; a mount may not.
    std::string MountName(const std::string& link) const
    {
        return link == kBaseName || joints.count(link) > 0 ? link + " link" : link;
    }

    const UrdfDocument document;
    std::map<std::string, UrdfJoint> joints;
    std::map<std::string, std::string> jointAbove; // by link
    MachineDescription machine;
};

} // namespace

MachineDescription ReadUrdf(std::string_view text, const std::string& file, const MountLinks& links)
{
    return UrdfReader(CheckUrdf(text, file)).Read(links);
}

} // namespace host
