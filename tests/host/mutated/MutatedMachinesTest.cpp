#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mutated/Checks.h"
#include "mutated/Mutation.h"
#include "mutated/ReaderChecks.h"
#include "support/Repeat.h"

namespace
{

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
    <visual>
      <origin xyz="0 0.1 0" rpy="0.3 0 0"/>
      <geometry><box size="1 2 3"/></geometry>
      <material name="red"><color rgba="1 0 0 1"/></material>
    </visual>
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

TEST(MutatedFiles, Machines)
{
    long compared = 0;
    constexpr long kCount = 15000;
    test::Repeat(kCount, 4, [&compared](test::Random& random) {
        const std::string text = test::Mutated(kTomlFiles, random);
        SCOPED_TRACE(test::Shown(text));
        compared += test::CheckMachineText(text) == test::Reading::Compared ? 1 : 0;
    });
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(20 * compared, kCount);
    }
}

TEST(MutatedFiles, Urdf)
{
    long compared = 0;
    constexpr long kCount = 10000;
    test::Repeat(kCount, 5, [&compared](test::Random& random) {
        const std::string text = test::Mutated(kUrdfFiles, random);
        SCOPED_TRACE(test::Shown(text));
        compared += test::CheckUrdfText(text) == test::Reading::Compared ? 1 : 0;
    });
    if (test::FromEnvironment("TRUNNION_TEST_CASE", -1) < 0) {
        EXPECT_GT(20 * compared, kCount);
    }
}

} // namespace
