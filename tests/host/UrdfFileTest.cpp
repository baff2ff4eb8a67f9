#include <array>
#include <clocale>
#include <cmath>
#include <limits>
#include <locale>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillText.h"
#include "TempFolder.h"
#include "geometry/Frame.h"
#include "machine/LoadedMachine.h"
#include "machine/MachineAssembly.h"
#include "machine/UrdfDocument.h"
#include "machine/UrdfFile.h"
#include "machine/UrdfKinematics.h"
#include "support/Random.h"
#include "text/InputError.h"
#include "text/Numbers.h"

namespace
{

using host::LoadedMachine;
using host::Vec3;
using test::WithLine;

constexpr double kPi = 3.14159265358979323846;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Two axes carry the tool, a third the part. With all joints at 0, in metres:
///
///   base -- slide (along x, from 0, 0, 1) -- mast -- swing (about z, 0.2 further along x) -- arm
///     |                                                 arm -- tool, 0.1 below, z axis along x
///     '---- turn (about z, at 0.5, 0, 0) -- plate -- part, 0.04 above
std::string CellText()
{
    return R"(<?xml version="1.0"?>
<robot name="cell">
  <link name="base"/>
  <link name="mast">
    <visual><origin xyz="0 0 1"/><geometry><mesh filename="mast.stl"/></geometry></visual>
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
    <origin xyz="0.2 0 0" rpy="0 0 0"/>
    <parent link="mast"/>
    <child link="arm"/>
    <axis xyz="0 0 2"/>
    <limit lower="0.25" upper="1.5" effort="1" velocity="1"/>
  </joint>
  <joint name="seat" type="fixed">
    <origin xyz="0 0 -0.1" rpy="0 1.5707963267948966 0"/>
    <parent link="arm"/>
    <child link="tool"/>
    <axis xyz="0 0 0"/>
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
)";
}

const host::MountLinks kLinks{"tool", "part"};

LoadedMachine Load(const std::string& text, const host::MountLinks& links = kLinks)
{
    return host::AssembleMachine(host::ReadUrdf(text, "cell.urdf", links));
}

/// part_to_tool with these axes set, the others where they start.
IkXformMat PoseAt(const LoadedMachine& machine, const std::map<std::string, double>& values)
{
    machine.MoveToInitial();
    for (const host::Axis& axis : machine.axes) {
        if (const auto value = values.find(axis.name); value != values.end()) {
            axis.joint->SetCurValue(value->second);
        }
    }
    return machine.streams.front().stream->SolveFK(false).GetCompleteState();
}

void ExpectNear(const Vec3& actual, const Vec3& expected, double tolerance)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
    }
}

// What a good file becomes -------------------------------------------------------------------

TEST(UrdfFile, MakesAxesOfTheJointsThatMoveInTheFilesOrder)
{
    const LoadedMachine machine = Load(CellText());
    EXPECT_EQ(machine.name, "cell");
    EXPECT_EQ(machine.length, host::LengthUnit::Millimetre);
    ASSERT_EQ(machine.axes.size(), 3U);
    EXPECT_EQ(machine.axes[0].name, "slide");
    EXPECT_EQ(machine.axes[1].name, "swing");
    EXPECT_EQ(machine.axes[2].name, "turn");
    EXPECT_EQ(machine.axes[2].word, "turn");
    EXPECT_EQ(machine.axes[2].wordSign, 1);
    EXPECT_FALSE(machine.axes[0].isRotary);
    EXPECT_TRUE(machine.axes[1].isRotary);
    EXPECT_TRUE(machine.axes[2].isRotary);
}

TEST(UrdfFile, TurnsMetresIntoMillimetresAndKeepsRadians)
{
    const LoadedMachine machine = Load(CellText());
    EXPECT_EQ(machine.axes[0].joint->GetLowBound(), -500.0);
    EXPECT_EQ(machine.axes[0].joint->GetHiBound(), 750.0);
    EXPECT_EQ(machine.axes[1].joint->GetLowBound(), 0.25);
    EXPECT_EQ(machine.axes[1].joint->GetHiBound(), 1.5);
}

TEST(UrdfFile, LeavesAContinuousJointWithoutLimitsWhateverItsElementSays)
{
    EXPECT_TRUE(Load(CellText()).axes[2].IsUnlimited());
    const std::string limited =
        WithLine(CellText(), 35, "<axis xyz=\"0 0 1\"/><limit upper=\"1\"/>");
    EXPECT_EQ(Load(limited).axes[2].joint->GetHiBound(), kInfinity);
}

TEST(UrdfFile, StartsAnAxisAtTheLimitNearestToZero)
{
    EXPECT_EQ(Load(CellText()).axes[0].initial, 0.0);
    EXPECT_EQ(Load(CellText()).axes[1].initial, 0.25);
    const std::string below = WithLine(CellText(), 23, "<limit lower=\"-2\" upper=\"-1\"/>");
    EXPECT_EQ(Load(below).axes[1].initial, -1.0);
}

TEST(UrdfFile, TakesALimitThatIsLeftOutAsZero)
{
    const LoadedMachine machine = Load(WithLine(CellText(), 16, "<limit upper=\"0.75\"/>"));
    EXPECT_EQ(machine.axes[0].joint->GetLowBound(), 0.0);
    EXPECT_EQ(machine.axes[0].joint->GetHiBound(), 750.0);
}

TEST(UrdfFile, TurnsAboutXWhereTheAxisIsLeftOut)
{
    // The slide is now along x by default; the turn by a quarter about x, from z up to y: with the
    // part's frame that way round, the tool's direction, machine x, stays x.
    const LoadedMachine machine = Load(WithLine(CellText(), 35, ""));
    const IkXformMat pose = PoseAt(machine, {{"turn", kPi / 2.0}, {"swing", 0.0}});
    ExpectNear(host::Column(pose, 2), {1, 0, 0}, 1e-15);
    // Machine z, the tool's minus x, is the part's y.
    ExpectNear(host::Column(pose, 0), {0, -1, 0}, 1e-15);
}

TEST(UrdfFile, PlacesToolAndPartWithAllJointsAtZero)
{
    const LoadedMachine machine = Load(CellText());
    const IkXformMat pose = PoseAt(machine, {{"swing", 0.0}});
    // The tool is at (200, 0, 900) of the machine, the part at (500, 0, 40).
    ExpectNear(host::Column(pose, 3), {-300, 0, 860}, 1e-12);
    ExpectNear(host::Column(pose, 2), {1, 0, 0}, 1e-15);
    ExpectNear(host::Column(pose, 0), {0, 0, -1}, 1e-15);
}

TEST(UrdfFile, MovesWhatHangsOnAJoint)
{
    const LoadedMachine machine = Load(CellText());
    // The slide takes the tool to x = 300, which the swing, about its own axis there, turns only.
    // The part has turned by a quarter: what is 200 to its -x in the machine is then along its +y.
    const IkXformMat pose =
        PoseAt(machine, {{"slide", 100.0}, {"swing", kPi / 6.0}, {"turn", kPi / 2.0}});
    ExpectNear(host::Column(pose, 3), {0, 200, 860}, 1e-12);
    // Machine direction (cos 30, sin 30, 0), seen after a quarter turn: (sin 30, -cos 30, 0).
    ExpectNear(host::Column(pose, 2), {0.5, -0.8660254037844386, 0}, 1e-15);
}

TEST(UrdfFile, CallsTheMountsAfterTheirLinks)
{
    const LoadedMachine machine = Load(CellText());
    EXPECT_EQ(machine.streams.size(), 1U);
    EXPECT_EQ(machine.streams.front().id, 1);
    EXPECT_EQ(machine.streams.front().tool, "tool");
    EXPECT_EQ(machine.streams.front().part, "part");
    EXPECT_EQ(machine.streams.front().axes, (std::vector<std::size_t>{0, 1, 2}));
}

TEST(UrdfFile, TakesTheRootAsPartAndALinkNamedLikeAJoint)
{
    std::string text = WithLine(CellText(), 8, "  <link name=\"swing\"/>");
    text = WithLine(text, 28, "<child link=\"swing\"/>");
    const LoadedMachine machine = Load(text, {"swing", "base"});
    EXPECT_EQ(machine.streams.front().tool, "swing link");
    EXPECT_EQ(machine.streams.front().part, "base link");
    EXPECT_EQ(machine.streams.front().axes, (std::vector<std::size_t>{0, 1}));
    ExpectNear(host::Column(PoseAt(machine, {}), 3), {200, 0, 900}, 1e-12);
}

TEST(UrdfFile, ReadsNamesThatXmlWritesInOtherWords)
{
    std::string text = WithLine(CellText(), 10, "<link name='a &amp; &#34;b&#x22;\t&lt;\u00E4>'/>");
    text = WithLine(text, 40, "<child link='a &#38; \"b\" &lt;\u00E4&gt;'/>");
    const LoadedMachine machine = Load(text, {"tool", "a & \"b\" <\u00E4>"});
    EXPECT_EQ(machine.streams.front().part, "a & \"b\" <\u00E4>");
}

TEST(UrdfFile, DoesNotLookAtWhatMovesNothing)
{
    // A percent sign must reach no one who takes it for a format.
    const std::string text = WithLine(
        CellText(), 5, "<inertial><origin xyz=\"%s%s%n\"/></inertial><collision>%n</collision>");
    EXPECT_EQ(Load(text).axes.size(), 3U);
}

TEST(UrdfFile, HangsWhatIsSeenOnTheAxesInMachineCoordinates)
{
    std::string text = WithLine(CellText(), 3,
                                R"(<link name="base"><visual><geometry>)"
                                R"(<sphere radius="0.5"/></geometry></visual></link>)");
    text = WithLine(text, 5,
                    R"(<visual><origin xyz="0.1 0 0.2" rpy="0 1.5707963267948966 0"/>)"
                    R"(<geometry><cylinder length="0.3" radius="0.05"/></geometry></visual>)");
    text = WithLine(text, 8,
                    R"(<link name="tool"><visual><geometry><box size="0.1 0.2 0.3"/>)"
                    R"(</geometry></visual></link>)");
    const LoadedMachine machine = Load(text);
    ASSERT_EQ(machine.visuals.size(), 3U);
    const host::Visual& base = machine.visuals[0];
    EXPECT_EQ(base.name, "base");
    EXPECT_EQ(base.parent, std::nullopt);
    EXPECT_EQ(base.shape, host::Shape::Sphere);
    EXPECT_EQ(base.size, std::vector<double>{500.0});
    EXPECT_EQ(base.color, std::nullopt);
    // The mast's frame is 1 m up; a quarter turn about y takes z to x and x to -z.
    const host::Visual& mast = machine.visuals[1];
    EXPECT_EQ(mast.parent, 0U);
    EXPECT_EQ(mast.shape, host::Shape::Cylinder);
    EXPECT_EQ(mast.size, (std::vector<double>{50.0, 300.0}));
    ExpectNear(host::Column(mast.frame, 3), {100.0, 0.0, 1200.0}, 1e-9);
    ExpectNear(host::Column(mast.frame, 2), {1.0, 0.0, 0.0}, 1e-12);
    ExpectNear(host::Column(mast.frame, 0), {0.0, 0.0, -1.0}, 1e-12);
    // The tool hangs on a fixed joint below the arm, which "swing" carries.
    const host::Visual& tool = machine.visuals[2];
    EXPECT_EQ(tool.parent, 1U);
    EXPECT_EQ(tool.shape, host::Shape::Box);
    EXPECT_EQ(tool.size, (std::vector<double>{100.0, 200.0, 300.0}));
    ExpectNear(host::Column(tool.frame, 3), {200.0, 0.0, 900.0}, 1e-9);
    ExpectNear(host::Column(tool.frame, 2), {1.0, 0.0, 0.0}, 1e-12);
}

TEST(UrdfFile, FindsColorsWithTheVisualAndUnderTheNameOfItsMaterial)
{
    const auto ball = [](const std::string& material) {
        return "<visual><geometry><sphere radius=\"1\"/></geometry>" + material + "</visual>";
    };
    std::string text = WithLine(
        CellText(), 5,
        ball(R"(<material name="red"/>)") +
            ball(R"(<material name="own"><color rgba="0 0.25 0 0.5"/></material>)") +
            ball(R"(<material name="own"/>)") + ball(R"(<material name="nowhere"/>)") +
            ball(R"(<material name="red"><color rgba="0 0 1 1"/></material>)") +
            ball(R"(<material name="bare"><texture filename="wood.png"/></material>)") + ball(""));
    text = WithLine(text, 7,
                    R"(<link name="arm"/><material name="bare"/>)"
                    R"(<material name="red"><color rgba="1 0 0 1"/></material>)");
    std::vector<std::optional<host::Color>> colors;
    for (const host::Visual& visual : Load(text).visuals) {
        colors.push_back(visual.color);
    }
    // A name stands for the first color that the file gives it, which is blue here.
    const host::Color green{0.0, 0.25, 0.0, 0.5};
    const host::Color blue{0.0, 0.0, 1.0, 1.0};
    EXPECT_EQ(colors, (std::vector<std::optional<host::Color>>{blue, green, green, std::nullopt,
                                                               blue, std::nullopt, std::nullopt}));
}

TEST(UrdfFile, LeavesOutWhatIsNoBoxCylinderOrSphere)
{
    EXPECT_TRUE(Load(CellText()).visuals.empty()); // a mesh
    for (const char* const visual :
         {"<visual/>", "<visual><geometry/></visual>",
          "<visual><geometry><capsule radius=\"x\"/></geometry></visual>"}) {
        EXPECT_TRUE(Load(WithLine(CellText(), 5, visual)).visuals.empty()) << visual;
    }
}

TEST(UrdfFile, ReadsNumbersWhateverTheLocale)
{
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Comma)); // NOLINT
    const LoadedMachine machine = Load(CellText());
    std::locale::global(before);
    EXPECT_EQ(machine.axes[0].joint->GetHiBound(), 750.0);
    ExpectNear(host::Column(PoseAt(machine, {{"swing", 0.0}}), 3), {-300, 0, 860}, 1e-12);
}

/// Rotations about fixed axes, x first, as URDF defines roll, pitch and yaw: Rz Ry Rx.
IkXformMat OriginFrame(const Vec3& xyz, const Vec3& rpy)
{
    return IkXformMat::Translate(xyz[0], xyz[1], xyz[2]) * IkXformMat::RotZ(rpy[2]) *
           IkXformMat::RotY(rpy[1]) * IkXformMat::RotX(rpy[0]);
}

TEST(UrdfFile, IsTheProductOfItsOriginsAndMotions)
{
    using host::operator*;
    test::Random random(20240718);
    const auto triple = [&random](double size) {
        return Vec3{random.Between(-size, size), random.Between(-size, size),
                    random.Between(-size, size)};
    };
    const auto text = [](const Vec3& v) {
        return "\"" + host::ShortestText(v[0]) + " " + host::ShortestText(v[1]) + "  " +
               host::ShortestText(v[2]) + "\"";
    };
    constexpr std::array<const char*, 3> kTypes{"continuous", "prismatic", "fixed"};
    for (int robot = 0; robot < 40; ++robot) {
        std::string file = "<robot name=\"r\"><link name=\"l0\"/>";
        IkXformMat expected;
        std::map<std::string, double> values;
        for (int i = 1; i <= 6; ++i) {
            const std::size_t type = i == 1 ? 0 : static_cast<std::size_t>(random.Below(3));
            const Vec3 xyz = triple(0.5);
            const Vec3 rpy = triple(3.0);
            const Vec3 axis = triple(1.0);
            const double value = random.Between(-2.0, 2.0);
            const std::string name = "j" + std::to_string(i);
            file += "<link name=\"l" + std::to_string(i) + "\"/><joint name=\"" + name +
                    "\" type=\"" + kTypes[type] + "\"><origin xyz=" + text(xyz) +
                    " rpy=" + text(rpy) + "/><parent link=\"l" + std::to_string(i - 1) +
                    "\"/><child link=\"l" + std::to_string(i) + "\"/><axis xyz=" + text(axis) +
                    "/><limit lower=\"-9\" upper=\"9\"/></joint>";
            expected = expected * OriginFrame(1000.0 * xyz, rpy);
            values[name] = type == 1 ? 1000.0 * value : value;
            const Vec3 along = *host::Normalised(axis);
            // The motion about or along any axis is that about z in a frame that has it as z.
            const IkXformMat toAxis = host::FrameOf(Vec3{}, along);
            if (type == 0) {
                expected = expected * toAxis * IkXformMat::RotZ(value) * toAxis.QuickInvert();
            } else if (type == 1) {
                const Vec3 way = 1000.0 * value * along;
                expected = expected * IkXformMat::Translate(way[0], way[1], way[2]);
            }
        }
        const LoadedMachine machine = Load(file + "</robot>", {"l6", "l0"});
        const IkXformMat pose = PoseAt(machine, values);
        SCOPED_TRACE("robot " + std::to_string(robot));
        for (int column = 0; column < 4; ++column) {
            ExpectNear(host::Column(pose, column), host::Column(expected, column),
                       column == 3 ? 1e-9 : 1e-13);
        }
    }
}

// Which links -------------------------------------------------------------------------------

std::string ErrorOf(const std::string& text, const host::MountLinks& links)
{
    try {
        Load(text, links);
    } catch (const host::InputError& error) {
        return error.what();
    }
    return "not refused";
}

TEST(UrdfFile, ListsTheLinksWhenOneIsMissing)
{
    const std::string list = R"("base", "mast", "arm", "tool", "plate", "part")";
    const std::string missing =
        "cell.urdf: a URDF does not say where its tool and its part are; give --tool-link and "
        "--part-link, each one of: " +
        list;
    EXPECT_EQ(ErrorOf(CellText(), {}), missing);
    EXPECT_EQ(ErrorOf(CellText(), {"tool", std::nullopt}), missing);
    EXPECT_EQ(ErrorOf(CellText(), {std::nullopt, "part"}), missing);
    EXPECT_EQ(ErrorOf(CellText(), {"tool", "swing"}),
              "cell.urdf: there is no link \"swing\" for --part-link; choose one of: " + list);
    EXPECT_EQ(ErrorOf(CellText(), {"tool", "tool"}),
              "cell.urdf:8:3: link \"tool\" is to be tool and part at once; give --tool-link and "
              "--part-link different ones");
    const std::string stiff = WithLine(CellText(), 31, "<joint name=\"turn\" type=\"fixed\">");
    EXPECT_EQ(ErrorOf(stiff, {"part", "base"}).substr(0, 50),
              "cell.urdf:10:3: stream 1 has no axis on either sid");
}

TEST(UrdfFile, CutsALongListOfLinksShort)
{
    std::string text = "<robot name=\"r\">";
    for (int i = 0; i < 43; ++i) {
        text += "<link name=\"" + std::to_string(i) + "\"/>";
        if (i > 0) {
            text += "<joint name=\"j" + std::to_string(i) +
                    "\" type=\"fixed\"><parent link=\"0\"/>" + "<child link=\"" +
                    std::to_string(i) + "\"/></joint>";
        }
    }
    const std::string error = ErrorOf(text + "</robot>", {});
    EXPECT_NE(error.find(", \"39\" and 3 more"), std::string::npos) << error;
}

TEST(LoadMachine, TellsUrdfByItsNameOrItsFirstCharacter)
{
    const test::TempFolder folder;
    for (const auto& [name, text] :
         {std::pair<const char*, std::string>{"a.urdf", CellText()},
          {"b.xml", CellText()},
          {"c.toml", "\xEF\xBB\xBF \n" + CellText().substr(CellText().find("<robot"))}}) {
        const LoadedMachine machine = host::LoadMachine(folder.Write(name, text), kLinks);
        EXPECT_EQ(machine.name, "cell") << name;
    }
    EXPECT_THROW(host::LoadMachine(folder.Write("d.urdf", test::MillText()), kLinks),
                 host::InputError);
    EXPECT_EQ(host::LoadMachine(folder.Write("mill", test::MillText())).name, "Mill");
}

TEST(LoadMachine, TakesNoLinksForAMachineWithMounts)
{
    const test::TempFolder folder;
    const std::filesystem::path mill = folder.Write("mill.toml", test::MillText());
    for (const host::MountLinks& links :
         {host::MountLinks{"spindle", {}}, host::MountLinks{{}, "table"}}) {
        try {
            host::LoadMachine(mill, links);
            FAIL() << "not refused";
        } catch (const host::InputError& error) {
            EXPECT_EQ(error.Sentence(), "--tool-link and --part-link name links of a URDF, and "
                                        "this machine has mounts of its own; leave them out");
        }
    }
}

// What is wrong with a file ------------------------------------------------------------------

struct Fault
{
    const char* name;
    int replacedLine;
    std::string with;
    int line;
    int column;
    const char* sentence; // how it begins
};

void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.name;
}

class UrdfFault : public testing::TestWithParam<Fault>
{};

TEST_P(UrdfFault, IsRefusedWithItsPlaceAndASentence)
{
    const Fault& fault = GetParam();
    testing::internal::CaptureStderr();
    try {
        Load(WithLine(CellText(), fault.replacedLine, fault.with));
        ADD_FAILURE() << "not refused";
    } catch (const host::InputError& error) {
        EXPECT_EQ(error.File(), "cell.urdf");
        EXPECT_EQ(error.Line(), fault.line) << error.what();
        EXPECT_EQ(error.Column(), fault.column) << error.what();
        EXPECT_EQ(error.Sentence().rfind(fault.sentence, 0), 0U) << error.what();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

std::string Seen(const std::string& shape)
{
    return "<visual><geometry>" + shape + "</geometry></visual>";
}

std::string Painted(const std::string& rgba)
{
    return R"(<visual><material name="red"><color rgba=")" + rgba + R"("/></material></visual>)";
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, UrdfFault,
    testing::Values(
        Fault{"MismatchedTag", 3, "<link name=\"base\"></lnk>", 3, 21,
              "this is not well-formed XML (mismatched tag); correct it here or on the lines"},
        Fault{"BareAmpersand", 3, "<link name=\"b&s\"/>", 3, 16, "this is not well-formed XML ("},
        Fault{"UnquotedValue", 3, "<link name=base/>", 3, 12, "this is not well-formed XML ("},
        Fault{"AttributeTwice", 3, "<link name=\"base\" name=\"b\"/>", 3, 19,
              "this is not well-formed XML (duplicate attribute)"},
        Fault{"NotUtf8", 3, "<link name=\"b\xE4s\"/>", 3, 14, "this is not well-formed XML ("},
        Fault{"Entity", 1, "<!DOCTYPE robot [<!ENTITY a \"b\">]>", 1, 17,
              "this document type is not read; take the <!DOCTYPE> out"},
        Fault{"Behind", 42, "</robot><robot name=\"r\"/>", 42, 9,
              "this is not well-formed XML (junk after document element)"},
        Fault{"Unclosed", 42, "", 43, 1, "this is not well-formed XML (no element found)"},

        Fault{"NotARobot", 2, "<robot name=\"c\"/><!--", 2, 18, "this is not well-formed XML"},
        Fault{"RobotWithoutName", 2, "<robot>", 2, 1, "this robot has no name; add name="},
        Fault{"Macro", 5, "<xacro:box size=\"1\"/>", 5, 1,
              "<xacro:box> is a macro; expand the file with xacro first"},
        Fault{"LinkWithoutName", 7, "<link/>", 7, 1, "this link has no name; add name="},
        Fault{"EmptyName", 7, "<link name=\"\"/>", 7, 1, "this link has no name"},
        Fault{"LinkTwice", 7, " <link name=\"mast\"/>", 7, 2, "there is already a link \"mast\""},
        Fault{"JointWithoutName", 11, "<joint type=\"prismatic\">", 11, 1,
              "this joint has no name"},
        Fault{"JointTwice", 18, "<joint name=\"slide\" type=\"revolute\">", 18, 1,
              "there is already a joint \"slide\"; choose another name"},
        Fault{"NameWithABlank", 18, "<joint name=\"s w\" type=\"revolute\">", 18, 1,
              "the name of an axis has no blanks"},
        Fault{"NameOfTheBase", 18, "<joint name=\"base\" type=\"revolute\">", 18, 1,
              "\"base\" is already the name of something else"},

        Fault{"NoType", 18, "<joint name=\"swing\">", 18, 1,
              "joint \"swing\" has no type; it is one of: revolute, continuous, prismatic, fixed"},
        Fault{"UnknownType", 18, "<joint name=\"swing\" type=\"hinge\">", 18, 1,
              "the type of joint \"swing\" is \"hinge\"; it is one of: revolute,"},
        Fault{"Floating", 18, "<joint name=\"swing\" type=\"floating\">", 18, 1,
              "joint \"swing\" is floating, which is no single axis; put prismatic and revolute"},
        Fault{"Planar", 18, "<joint name=\"swing\" type=\"planar\">", 18, 1,
              "joint \"swing\" is planar, which is no single axis"},
        Fault{"Mimic", 23, "<limit upper=\"1\"/><mimic joint=\"slide\"/>", 23, 19,
              "joint \"swing\" mimics another one, and an axis moves by itself; take the <mimic>"},

        Fault{"NoParent", 20, "", 18, 3, "joint \"swing\" has no parent; add <parent link="},
        Fault{"ParentWithoutLink", 20, "<parent name=\"mast\"/>", 20, 1,
              "joint \"swing\" has no parent; add <parent link="},
        Fault{"UnknownParent", 20, "<parent link=\"must\"/>", 20, 1,
              "the parent of joint \"swing\" is \"must\", and there is no such link"},
        Fault{"NoChild", 21, "", 18, 3, "joint \"swing\" has no child; add <child link="},
        Fault{"UnknownChild", 21, "<child link=\"must\"/>", 21, 1,
              "the child of joint \"swing\" is \"must\", and there is no such link"},
        Fault{"SecondParent", 20, "<parent link=\"mast\"/><parent link=\"base\"/>", 20, 22,
              "joint \"swing\" has a second <parent>; keep one of them"},
        Fault{"ChildOfTwo", 21, "<child link=\"mast\"/>", 18, 3,
              "link \"mast\" is already the child of joint \"slide\"; a link hangs on one joint"},
        Fault{"SecondRoot", 7, "<link name=\"arm\"/><link name=\"lost\"/>", 7, 19,
              "link \"lost\" is the child of no joint, and neither is \"base\"; all links but one"},
        Fault{"Circle", 13, "<parent link=\"arm\"/>", 4, 3,
              "the joints above link \"mast\" lead round in a circle, never to a root"},
        Fault{"OwnParent", 33, "<parent link=\"plate\"/>", 9, 3,
              "the joints above link \"plate\" lead round in a circle"},

        Fault{"TooFewNumbers", 12, "<origin xyz=\"0 1\"/>", 12, 1,
              "xyz of the origin of joint \"slide\" has 2 numbers, not 3; write it like xyz="},
        Fault{"TooManyNumbers", 19, "<origin rpy=\"0 1 2 3\"/>", 19, 1,
              "rpy of the origin of joint \"swing\" has 4 numbers, not 3"},
        Fault{"NoNumbers", 19, "<origin xyz=\"\"/>", 19, 1,
              "xyz of the origin of joint \"swing\" has 0 numbers, not 3"},
        Fault{"DecimalComma", 12, "<origin xyz=\"0 0 1,5\"/>", 12, 1,
              "\"1,5\" in xyz of the origin of joint \"slide\" is not a finite number; write it"},
        Fault{"NotANumber", 19, "<origin xyz=\"0 nan 0\"/>", 19, 1,
              "\"nan\" in xyz of the origin of joint \"swing\" is not a finite number"},
        Fault{"Infinite", 16, "<limit lower=\"-inf\" upper=\"1\"/>", 16, 1,
              "\"-inf\" in lower of the limit of joint \"slide\" is not a finite number"},
        Fault{"Hexadecimal", 16, "<limit lower=\"0\" upper=\"0x1\"/>", 16, 1,
              "\"0x1\" in upper of the limit of joint \"slide\" is not a finite number"},
        Fault{"Format", 12, "<origin xyz=\"%s%n 0 1\"/>", 12, 1,
              "\"%s%n\" in xyz of the origin of joint \"slide\" is not a finite number"},
        Fault{"TooLarge", 12, "<origin xyz=\"0 0 1e300\"/>", 12, 1,
              "\"1e300\" in xyz of the origin of joint \"slide\" is beyond any machine"},
        Fault{"FixedJointsNumber", 38, "<origin xyz=\"0 0 x\"/>", 38, 1,
              "\"x\" in xyz of the origin of joint \"fixture\" is not a finite number"},
        Fault{"BoxOfText", 5, Seen("<box size=\"1 oops 1\"/>"), 5, 19,
              "\"oops\" in size of the box of link \"mast\" is not a finite number"},
        Fault{"BoxOfTwo", 5, Seen("<box size=\"1 2\"/>"), 5, 19,
              "size of the box of link \"mast\" has 2 numbers, not 3; write it like size="},
        Fault{"BareSphere", 5, Seen("<sphere/>"), 5, 19,
              "the sphere of link \"mast\" has no radius; add radius=\"0.05\", in metres"},
        Fault{"CylinderWithoutLength", 5, Seen("<cylinder radius=\"1\"/>"), 5, 19,
              "the cylinder of link \"mast\" has no length; add length="},
        Fault{"NegativeRadius", 5, Seen("<cylinder radius=\"-1\" length=\"1\"/>"), 5, 19,
              "radius of the cylinder of link \"mast\" has -1, and no length is below 0"},
        Fault{"VisualsOrigin", 5, "<visual><origin xyz=\"0 0 x\"/></visual>", 5, 9,
              "\"x\" in xyz of the origin of a visual of link \"mast\" is not a finite number"},
        Fault{"ColorOfThree", 5, Painted("1 0 0"), 5, 30,
              "rgba of the color of material \"red\" has 3 numbers, not 4; write it like rgba="},
        Fault{"ColorTo255", 5, Painted("255 0 0 1"), 5, 30,
              "rgba of the color of material \"red\" has 255, and each of its numbers is from 0 "
              "to 1"},
        Fault{"ZeroAxis", 22, "<axis xyz=\"0 0 0\"/>", 22, 1,
              "the axis of joint \"swing\" has no length; give its direction, as in xyz="},
        Fault{"AxisWithoutDirection", 22, "<axis/>", 22, 1,
              "the axis of joint \"swing\" has no length"},
        Fault{
            "NoLimit", 23, "", 18, 3,
            "joint \"swing\" has no limits; add <limit lower=\"...\" upper=\"...\"/>, or make it"},
        Fault{"EmptyLimit", 23, "<limit effort=\"1\" velocity=\"1\"/>", 23, 1,
              "joint \"swing\" has no limits"},
        Fault{"PrismaticWithoutLimit", 16, "", 11, 3, "joint \"slide\" has no limits"},
        Fault{"LimitsInWrongOrder", 16, "<limit lower=\"1\" upper=\"-1\"/>", 16, 1,
              "the limits of joint \"slide\" are in the wrong order; lower is not to be above"}),
    [](const testing::TestParamInfo<Fault>& fault) { return std::string(fault.param.name); });

std::string ErrorOf(const std::string& text)
{
    return ErrorOf(text, kLinks);
}

TEST(UrdfFaults, NameAnotherRootElement)
{
    EXPECT_EQ(ErrorOf("<sdf version=\"1.6\"><model/></sdf>"),
              "cell.urdf:1:1: this is <sdf>, and a URDF begins with <robot name=\"...\">; is it "
              "the right file?");
    EXPECT_EQ(ErrorOf("<robot name=\"r\"/>"),
              "cell.urdf:1:1: there is no link in this robot; is it the right file?");
    EXPECT_EQ(ErrorOf(""), "cell.urdf:1:1: this is not well-formed XML (no element found); correct "
                           "it here or on the lines before");
}

TEST(UrdfFaults, NameAnEncodingThatIsNotUtf8)
{
    // "<robot/>" and a line end with two bytes a character, the low one first, then two bytes that
    // are none.
    const std::string wide("<\0r\0o\0b\0o\0t\0/\0>\0\n\0\0\xD8", 20);
    const std::string sentence =
        "there is a zero byte here: this is not UTF-8 text; save the file as UTF-8";
    EXPECT_EQ(ErrorOf(wide), "cell.urdf:1:2: " + sentence);
    EXPECT_EQ(ErrorOf("\xFF\xFE" + wide), "cell.urdf:1:4: " + sentence);
    EXPECT_EQ(ErrorOf("<robot>\n  \xC3\xA4" + wide), "cell.urdf:2:5: " + sentence);
}

std::string Repeated(const std::string& text, int times)
{
    std::string repeated;
    for (int i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

TEST(UrdfFaults, RefuseWhatHasNoBound)
{
    const std::string deep = ErrorOf("<robot name=\"r\">" + Repeated("<a>", 1000000));
    EXPECT_EQ(deep, "cell.urdf:1:206: elements are nested more than 64 deep here; is it the right "
                    "file?"); // behind the 16 characters of robot and 63 times 3
    EXPECT_NE(ErrorOf("<robot name=\"r\">" + Repeated("<a/>", 100000) + "</robot>")
                  .find("there are more than 100000 elements and attributes"),
              std::string::npos);
    std::string wide = "<robot name=\"r\"><link name=\"0\"/>";
    for (int i = 1; i <= 1024; ++i) {
        wide += "\n<link name=\"" + std::to_string(i) + "\"/>";
    }
    EXPECT_EQ(ErrorOf(wide + "</robot>").substr(0, 48),
              "cell.urdf:1025:1: there are more than 1024 links");
    std::string many = "<robot name=\"r\">";
    for (int i = 0; i <= 65; ++i) {
        many += "<link name=\"" + std::to_string(i) + "\"/>";
    }
    for (int i = 1; i <= 65; ++i) {
        many += "\n<joint name=\"j" + std::to_string(i) + "\" type=\"continuous\"><parent link=\"" +
                std::to_string(i - 1) + "\"/><child link=\"" + std::to_string(i) + "\"/></joint>";
    }
    EXPECT_EQ(ErrorOf(many + "</robot>"),
              "cell.urdf:66:1: more than 64 joints move; fix those that the work does not need");
}

TEST(UrdfKinematics, PassesOnWhatTheUrdfLibrarySaysAndKeepsItOffTheTerminal)
{
    host::UrdfDocument document;
    document.file = "odd.urdf";
    document.robot = {"odd", {2, 3}};
    document.kinematics = "<robot name=\"odd\"><link name=\"a\"/><link name=\"a\"/></robot>";
    testing::internal::CaptureStderr();
    try {
        host::UrdfJointsOf(document);
        ADD_FAILURE() << "not refused";
    } catch (const host::InputError& error) {
        EXPECT_STREQ(error.what(), "odd.urdf:2:3: this URDF cannot be read (\"link 'a' is not "
                                   "unique.\"); correct it");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(UrdfFile, AnswersAnythingWithAMachineOrARefusal)
{
    // Single characters of a good text, changed, taken out or doubled.
    test::Random random(20240719);
    const std::string text = CellText();
    const std::string characters = "<>/\"'&;= \n\tabe019.-%\x80";
    int refused = 0;
    constexpr int kTries = 3000;
    for (int i = 0; i < kTries; ++i) {
        std::string changed = text;
        const auto below = [&random](std::size_t count) {
            return static_cast<std::size_t>(random.Below(static_cast<int>(count)));
        };
        const std::size_t place = below(text.size());
        const std::size_t with = below(characters.size());
        switch (i % 3) {
        case 0:
            changed[place] = characters[with];
            break;
        case 1:
            changed.erase(place, 1);
            break;
        default:
            changed.insert(place, 1, characters[with]);
        }
        try {
            Load(changed);
        } catch (const host::InputError& error) {
            ++refused;
            EXPECT_NE(error.Sentence(), "") << changed;
        }
    }
    // Some places are comment-like, but most matter.
    EXPECT_GT(refused, kTries / 4);
    EXPECT_LT(refused, kTries);
}

} // namespace
