// What has to hold of any machine file.

#include <cmath>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineDescription.h"
#include "machine/MachineFile.h"
#include "machine/UrdfFile.h"
#include "mutated/Checks.h"
#include "mutated/PlainText.h"
#include "mutated/PlainToml.h"
#include "mutated/PlainUrdf.h"
#include "mutated/ReaderChecks.h"

namespace
{

using host::AxisDescription;
using host::LoadedMachine;
using host::MachineDescription;
using host::MountDescription;
using test::PlainJoint;
using test::PlainTable;

void CheckAxis(const AxisDescription& axis)
{
    EXPECT_FALSE(axis.name.value.empty());
    EXPECT_TRUE(test::IsUnit(axis.direction));
    EXPECT_TRUE(test::IsFinite(axis.point));
    EXPECT_LE(axis.limits.low, axis.limits.high);
    EXPECT_TRUE(std::isfinite(axis.initial));
    EXPECT_LE(axis.limits.low, axis.initial);
    EXPECT_GE(axis.limits.high, axis.initial);
    EXPECT_EQ(std::abs(axis.wordSign), 1);
}

void CheckMount(const MountDescription& mount)
{
    EXPECT_TRUE(test::IsFinite(mount.origin));
    EXPECT_TRUE(test::IsUnit(mount.zAxis));
    EXPECT_TRUE(test::IsFinite(mount.xAxis));
    EXPECT_GT(host::Length(host::Cross(mount.xAxis, mount.zAxis)), 0.9);
}

void CheckVisual(const host::VisualDescription& visual)
{
    constexpr double kRounding = 1e-9;
    EXPECT_TRUE(test::IsFinite(visual.origin));
    EXPECT_NEAR(host::Length(visual.zAxis), 1.0, kRounding);
    EXPECT_NEAR(host::Length(host::Cross(visual.xAxis, visual.zAxis)), 1.0, kRounding);
    EXPECT_FALSE(visual.size.empty());
    for (const double length : visual.size) {
        EXPECT_GE(length, 0.0);
        EXPECT_TRUE(std::isfinite(length));
    }
}

/// What must hold of every machine that is accepted.
void CheckMachine(const MachineDescription& description, const LoadedMachine& machine)
{
    std::set<std::string> names;
    for (const AxisDescription& axis : description.axes) {
        CheckAxis(axis);
        EXPECT_TRUE(names.insert(axis.name.value).second);
    }
    for (const MountDescription& mount : description.mounts) {
        CheckMount(mount);
    }
    for (const host::VisualDescription& visual : description.visuals) {
        CheckVisual(visual);
    }
    EXPECT_EQ(machine.visuals.size(), description.visuals.size());
    EXPECT_EQ(machine.axes.size(), description.axes.size());
    EXPECT_EQ(machine.streams.size(), description.streams.size());
    ASSERT_FALSE(machine.streams.empty());
    machine.MoveToInitial();
    for (const host::LoadedStream& stream : machine.streams) {
        for (const host::Axis* axis : machine.AxesOf(stream)) {
            ASSERT_NE(axis->joint, nullptr);
            EXPECT_EQ(axis->joint->GetCurValue(), axis->initial);
        }
    }
}

void ExpectTriple(const host::Vec3& actual, const std::vector<double>& expected)
{
    ASSERT_EQ(expected.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-12 * std::fabs(expected[i]));
    }
}

void ExpectDirection(const host::Vec3& actual, const std::vector<double>& expected)
{
    ASSERT_EQ(expected.size(), 3U);
    const double length = std::hypot(expected[0], expected[1], expected[2]);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(actual[i], expected[i] / length, 1e-9);
    }
}

// TOML ---------------------------------------------------------------------------------------

void CompareAxis(const AxisDescription& axis, const PlainTable& plain, double degree)
{
    EXPECT_EQ(axis.name.value, plain.Text("name"));
    EXPECT_EQ(axis.parent.value, plain.Text("parent"));
    EXPECT_EQ(axis.isRotary, plain.Text("type") == "rotary");
    ExpectDirection(axis.direction, plain.Numbers("direction"));
    if (axis.isRotary) {
        ExpectTriple(axis.point, plain.Numbers("point"));
    }
    const double unit = axis.isRotary ? degree : 1.0;
    if (plain.Has("limits")) {
        const std::vector<double> limits = plain.Numbers("limits");
        EXPECT_NEAR(axis.limits.low, unit * limits.at(0), 1e-12 * std::fabs(limits.at(0)));
        EXPECT_NEAR(axis.limits.high, unit * limits.at(1), 1e-12 * std::fabs(limits.at(1)));
    } else {
        EXPECT_TRUE(std::isinf(axis.limits.low) && std::isinf(axis.limits.high));
    }
    const double initial = plain.Has("initial") ? plain.Number("initial") : 0.0;
    EXPECT_NEAR(axis.initial, unit * initial, 1e-12 * std::fabs(initial));
    EXPECT_EQ(axis.word, plain.Text(plain.Has("word") ? "word" : "name"));
    EXPECT_EQ(axis.wordSign, plain.Has("word_sign") ? plain.Number("word_sign") : 1);
}

void CompareMount(const MountDescription& mount, const PlainTable& plain)
{
    EXPECT_EQ(mount.name.value, plain.Text("name"));
    EXPECT_EQ(mount.kind == host::MountKind::Tool, plain.Text("kind") == "tool");
    EXPECT_EQ(mount.parent.value, plain.Text("parent"));
    ExpectTriple(mount.origin, plain.Numbers("origin"));
    ExpectDirection(mount.zAxis, plain.Numbers("z_axis"));
    ExpectDirection(mount.xAxis, plain.Numbers("x_axis"));
}

void CompareToml(const MachineDescription& machine, const std::vector<PlainTable>& tables)
{
    const PlainTable header = test::Named(tables, "machine").at(0);
    EXPECT_EQ(machine.name, header.Text("name"));
    EXPECT_EQ(machine.length == host::LengthUnit::Inch, header.Text("length") == "inch");
    const double degree = header.Text("angle") == "deg" ? host::kPi / 180.0 : 1.0;
    const std::vector<PlainTable> axes = test::Named(tables, "axis");
    const std::vector<PlainTable> mounts = test::Named(tables, "mount");
    const std::vector<PlainTable> streams = test::Named(tables, "stream");
    ASSERT_EQ(machine.axes.size(), axes.size());
    ASSERT_EQ(machine.mounts.size(), mounts.size());
    ASSERT_EQ(machine.streams.size(), streams.size());
    for (std::size_t i = 0; i < axes.size(); ++i) {
        CompareAxis(machine.axes[i], axes[i], degree);
    }
    for (std::size_t i = 0; i < mounts.size(); ++i) {
        CompareMount(machine.mounts[i], mounts[i]);
    }
    for (std::size_t i = 0; i < streams.size(); ++i) {
        EXPECT_EQ(machine.streams[i].id.value, streams[i].Number("id"));
        EXPECT_EQ(machine.streams[i].tool.value, streams[i].Text("tool"));
        EXPECT_EQ(machine.streams[i].part.value, streams[i].Text("part"));
    }
}

// URDF ---------------------------------------------------------------------------------------

/// The joints that move, by their names.
std::vector<PlainJoint> Moving(const std::vector<PlainJoint>& joints)
{
    std::vector<PlainJoint> moving;
    for (const PlainJoint& joint : joints) {
        if (joint.attributes.at("type") != "fixed") {
            moving.push_back(joint);
        }
    }
    return moving;
}

void CompareUrdf(const MachineDescription& machine, const std::vector<PlainJoint>& joints)
{
    ASSERT_EQ(machine.axes.size(), joints.size());
    for (std::size_t i = 0; i < joints.size(); ++i) {
        const AxisDescription& axis = machine.axes[i];
        const std::string type = joints[i].attributes.at("type");
        EXPECT_EQ(axis.name.value, joints[i].attributes.at("name"));
        EXPECT_EQ(axis.isRotary, type != "prismatic");
        if (type == "continuous") {
            EXPECT_TRUE(std::isinf(axis.limits.low) && std::isinf(axis.limits.high));
            continue;
        }
        const double unit = axis.isRotary ? 1.0 : 1000.0;
        const auto limit = [&](const std::string& name) {
            const test::PlainAttributes& limits = joints[i].elements.at("limit");
            const auto found = limits.find(name);
            return found == limits.end() ? 0.0 : unit * test::PlainNumber(found->second);
        };
        EXPECT_NEAR(axis.limits.low, limit("lower"), 1e-12 * std::fabs(limit("lower")));
        EXPECT_NEAR(axis.limits.high, limit("upper"), 1e-12 * std::fabs(limit("upper")));
    }
}

} // namespace

namespace test
{

Reading CheckMachineText(const std::string& text)
{
    const auto description = ReadMutated(text, [](const std::string& from) {
        MachineDescription read = host::ReadMachine(from, kMutatedName);
        CheckMachine(read, host::AssembleMachine(read));
        return read;
    });
    if (!description) {
        return Reading::Refused;
    }
    const auto tables = PlainToml(text);
    if (!tables) {
        return Reading::Accepted;
    }
    CompareToml(*description, *tables);
    return Reading::Compared;
}

Reading CheckUrdfText(const std::string& text)
{
    const auto description = ReadMutated(text, [](const std::string& from) {
        MachineDescription read = host::ReadUrdf(from, kMutatedName, {"tool", "part"});
        CheckMachine(read, host::AssembleMachine(read));
        return read;
    });
    if (!description) {
        return Reading::Refused;
    }
    const auto joints = PlainUrdf(text);
    if (!joints) {
        return Reading::Accepted;
    }
    CompareUrdf(*description, Moving(*joints));
    return Reading::Compared;
}

} // namespace test
