#include "machine/UrdfKinematics.h"

#include <console_bridge/console.h>
#include <urdf_parser/urdf_parser.h>

#include "geometry/Frame.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

/// While it lives, keeps what the URDF library would write to standard error.
class LibraryLog : public console_bridge::OutputHandler
{
  public:
    LibraryLog() { console_bridge::useOutputHandler(this); }
    ~LibraryLog() override { console_bridge::restorePreviousOutputHandler(); }
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

    void log(const std::string& said, console_bridge::LogLevel level, const char* /*filename*/,
             int /*line*/) override
    {
        if (level >= console_bridge::CONSOLE_BRIDGE_LOG_ERROR) {
            text += (text.empty() ? "" : "; ") + said;
        }
    }
    const std::string& Text() const { return text; }

  private:
    std::string text;
};

Vec3 VectorOf(const urdf::Vector3& vector)
{
    return {vector.x, vector.y, vector.z};
}

IkXformMat FrameOfPose(const urdf::Pose& pose)
{
    const Vec3 xAxis = VectorOf(pose.rotation * urdf::Vector3(1.0, 0.0, 0.0));
    const Vec3 zAxis = VectorOf(pose.rotation * urdf::Vector3(0.0, 0.0, 1.0));
    return FrameOf(VectorOf(pose.position), xAxis, Normalised(zAxis).value_or(zAxis));
}

UrdfJoint JointOf(const urdf::Joint& joint)
{
    UrdfJoint found;
    found.parentLink = joint.parent_link_name;
    found.childLink = joint.child_link_name;
    found.parentToJoint = FrameOfPose(joint.parent_to_joint_origin_transform);
    if (joint.type == urdf::Joint::FIXED) {
        return found;
    }
    found.motion = joint.type == urdf::Joint::PRISMATIC ? UrdfMotion::Linear : UrdfMotion::Rotary;
    found.axis = Normalised(VectorOf(joint.axis)).value_or(Vec3{1.0, 0.0, 0.0});
    if (joint.limits && joint.type != urdf::Joint::CONTINUOUS) {
        found.limits = {joint.limits->lower, joint.limits->upper};
    }
    return found;
}

} // namespace

IkXformMat FrameOfOrigin(const Vec3& xyz, const Vec3& rpy)
{
    urdf::Pose pose;
    pose.position = {xyz[0], xyz[1], xyz[2]};
    pose.rotation.setFromRPY(rpy[0], rpy[1], rpy[2]);
    return FrameOfPose(pose);
}

std::map<std::string, UrdfJoint> UrdfJointsOf(const UrdfDocument& document)
{
    const LibraryLog log;
    const urdf::ModelInterfaceSharedPtr model = urdf::parseURDF(document.kinematics);
    if (!model || !log.Text().empty()) {
        throw InputError(document.file, document.robot.at,
                         "this URDF cannot be read (" + Quoted(log.Text()) + "); correct it");
    }
    std::map<std::string, UrdfJoint> joints;
    for (const auto& [name, joint] : model->joints_) {
        joints.emplace(name, JointOf(*joint));
    }
    return joints;
}

} // namespace host
