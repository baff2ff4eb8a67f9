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
#include "mutated/Mutation.h"
#include "mutated/PlainText.h"
#include "mutated/PlainToml.h"
#include "mutated/PlainUrdf.h"
#include "support/Repeat.h"

namespace
{

using host::AxisDescription;
using host::LoadedMachine;
using host::MachineDescription;
using host::MountDescription;
using test::PlainJoint;
using test::PlainTable;
using test::ReadMutated;

const std::vector<std::string> kTomlFiles{
    R"(# A mill
[machine]
name   = "Mill, A/C"
length = "mm"
angle  = "deg"

[[axis]]
name      = "X"
parent    = "base"
type      = "linear"
direction = [1, 0, 0]
limits    = [-300, 300.5]

[[axis]]
name      = "Z"
parent    = "X"
type      = "linear"
direction = [0, 0.1, 2.5]    # leans
limits    = [10, 400]
initial   = 20

[[axis]]
name      = "A"
parent    = "base"
type      = "rotary"
direction = [1, 0, 0]
point     = [0, 0, -120]
limits    = [-120, 30]
initial   = -3e1
word      = "B"
word_sign = -1

[[axis]]
name      = "C"
parent    = "A"
type      = "rotary"
direction = [0, 0, -1]
point     = [1.5, 0, 0]
unlimited = true

[[mount]]
name   = "spindle"
kind   = "tool"
parent = "Z"
origin = [0, 0, 5]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]

[[mount]]
name   = "table"
kind   = "part"
parent = "C"
origin = [0, 0, -100]
z_axis = [0, 0, 1]
x_axis = [0, 1, 0]

[[stream]]
id   = 1
tool = "spindle"
part = "table"
)",
    R"([machine]
angle = "rad"
length = "inch"
name = "Plunge"
[[axis]]
name = "B"
parent = "base"
type = "rotary"
direction = [0, 1, 0]
point = [0, 0, 150]
limits = [-1.5, 1.5]
[[mount]]
name = "spindle"
kind = "tool"
parent = "B"
origin = [0, 0, 0]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]
[[mount]]
name = "table"
kind = "part"
parent = "base"
origin = [0, 0, -16]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]
[[stream]]
id = 7
tool = "spindle"
part = "table"
)"};

const std::vector<std::string> kUrdfFiles{
    R"(<?xml version="1.0"?>
<robot name="cell">
  <link name="base"/>
  <link name="mast">
    <visual><geometry><box size="1 2 3"/></geometry></visual>
  </link>
  <link name="arm"/>
  <link name="tool"/>
  <link name="plate"/>
  <link name="part"/>
  <joint name="slide" type="prismatic">
    <origin xyz="0 0 1"/>
    <parent link="base"/>
    <child link="mast"/>
    <axis xyz="1 0 0"/>
    <limit lower="-0.5" upper="0.75" effort="1" velocity="1"/>
  </joint>
  <joint name="swing" type="revolute">
    <origin xyz="0.2 0 0" rpy="0 0 0.1"/>
    <parent link="mast"/>
    <child link="arm"/>
    <axis xyz="0 0 2"/>
    <limit lower="0.25" upper="1.5" effort="1" velocity="1"/>
  </joint>
  <joint name="seat" type="fixed">
    <origin xyz="0 0 -0.1" rpy="0 1.5707963267948966 0"/>
    <parent link="arm"/>
    <child link="tool"/>
  </joint>
  <joint name="turn" type="continuous">
    <origin xyz="0.5 0 0"/>
    <parent link="base"/>
    <child link="plate"/>
    <axis xyz="0 0 1"/>
  </joint>
  <joint name="fixture" type="fixed">
    <origin xyz="0 0 0.04"/>
    <parent link="plate"/>
    <child link="part"/>
  </joint>
</robot>
)",
    R"(<robot name='two'><!-- small --><link name='part'/><link name='tool'/>
<joint name='c' type='revolute'><parent link='part'/><child link='tool'/><axis xyz='0 1 0'/>
<limit lower='-1' upper='2' effort='1' velocity='1'/></joint></robot>
)"};

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

TEST(MutatedFiles, Machines)
{
    long compared = 0;
    constexpr long kCount = 15000;
    test::Repeat(kCount, 4, [&compared](test::Random& random) {
        const std::string text = test::Mutated(kTomlFiles, random);
        SCOPED_TRACE(test::Shown(text));
        ReadMutated(text, [&](const std::string& from) {
            const MachineDescription description = host::ReadMachine(from, test::kMutatedName);
            CheckMachine(description, host::AssembleMachine(description));
            if (const auto tables = test::PlainToml(from)) {
                ++compared;
                CompareToml(description, *tables);
            }
            return true;
        });
    });
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(20 * compared, kCount);
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

TEST(MutatedFiles, Urdf)
{
    long compared = 0;
    constexpr long kCount = 10000;
    test::Repeat(kCount, 5, [&compared](test::Random& random) {
        const std::string text = test::Mutated(kUrdfFiles, random);
        SCOPED_TRACE(test::Shown(text));
        ReadMutated(text, [&](const std::string& from) {
            const MachineDescription description =
                host::ReadUrdf(from, test::kMutatedName, {"tool", "part"});
            CheckMachine(description, host::AssembleMachine(description));
            if (const auto joints = test::PlainUrdf(from)) {
                ++compared;
                CompareUrdf(description, Moving(*joints));
            }
            return true;
        });
    });
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(20 * compared, kCount);
    }
}

} // namespace
