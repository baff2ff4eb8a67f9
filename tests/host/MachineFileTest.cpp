#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "MillText.h"
#include "geometry/Frame.h"
#include "machine/LoadedMachine.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "support/Random.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/StrayCharacter.h"

namespace
{

using host::LoadedMachine;
using host::Vec3;
using test::MillText;
using test::MillWith;

constexpr double kPi = 3.14159265358979323846;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

LoadedMachine Load(const std::string& text)
{
    return host::AssembleMachine(host::ReadMachine(text, "mill.toml"));
}

const host::Axis& AxisNamed(const LoadedMachine& machine, const std::string& name)
{
    for (const host::Axis& axis : machine.axes) {
        if (axis.name == name) {
            return axis;
        }
    }
    throw std::logic_error("no such axis");
}

/// part_to_tool of the first stream with these axes set, the others as they are.
IkXformMat PoseAt(const LoadedMachine& machine, const std::map<std::string, double>& values)
{
    for (const auto& [name, value] : values) {
        AxisNamed(machine, name).joint->SetCurValue(value);
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

TEST(MachineFile, GivesItsAxesInItsOwnOrderWithLimitsInRadians)
{
    const LoadedMachine machine = Load(MillText());
    ASSERT_EQ(machine.axes.size(), 5U);
    EXPECT_EQ(machine.axes[0].name, "X");
    EXPECT_EQ(machine.axes[3].name, "A");
    EXPECT_FALSE(machine.axes[0].isRotary);
    EXPECT_TRUE(machine.axes[3].isRotary);
    EXPECT_EQ(machine.axes[0].joint->GetLowBound(), -300.0);
    EXPECT_EQ(machine.axes[0].joint->GetHiBound(), 300.0);
    EXPECT_DOUBLE_EQ(machine.axes[3].joint->GetLowBound(), -2.0 * kPi / 3.0);
    EXPECT_DOUBLE_EQ(machine.axes[3].joint->GetHiBound(), kPi / 6.0);
}

TEST(MachineFile, LeavesAnUnlimitedAxisWithoutBoundsSoThatItNeverWraps)
{
    const LoadedMachine machine = Load(MillText());
    EXPECT_TRUE(machine.axes[4].IsUnlimited());
    EXPECT_EQ(machine.axes[4].joint->GetLowBound(), -kInfinity);
    EXPECT_EQ(machine.axes[4].joint->GetHiBound(), kInfinity);
    EXPECT_FALSE(machine.axes[3].IsUnlimited());
}

TEST(MachineFile, TakesUnlimitedFalseAsNotThere)
{
    const LoadedMachine machine = Load(MillWith(11, "limits = [-1, 1]\nunlimited = false"));
    EXPECT_EQ(machine.axes[0].joint->GetHiBound(), 1.0);
}

TEST(MachineFile, StartsAxesAtInitialAndKeepsTheirZeroAtZero)
{
    const LoadedMachine machine = Load(MillWith(33, "limits = [10, 30]\ninitial = 15"));
    const IkJoint& a = *machine.axes[3].joint;
    EXPECT_DOUBLE_EQ(a.GetCurValue(), kPi / 12.0);
    EXPECT_DOUBLE_EQ(machine.axes[3].initial, kPi / 12.0);
    EXPECT_EQ(a.GetInitialValue(), 0.0);
}

TEST(MachineFile, ReadsRadiansAsTheyAre)
{
    const std::string inRadians = test::WithLine(MillText(), 4, "angle = \"rad\"");
    const LoadedMachine machine = Load(test::WithLine(inRadians, 33, "limits = [-2, 0.5]"));
    EXPECT_EQ(machine.axes[3].joint->GetLowBound(), -2.0);
    EXPECT_EQ(machine.axes[3].joint->GetHiBound(), 0.5);
}

TEST(MachineFile, TakesWholeNumbersOfAnySize)
{
    // 2^53 + 1 lies between two doubles and goes to the even one.
    const LoadedMachine machine = Load(MillWith(11, "limits = [-9007199254740993, 300]"));
    EXPECT_EQ(machine.axes[0].joint->GetLowBound(), -9007199254740992.0);
}

TEST(MachineFile, KeepsTheLengthUnitOfItsNumbers)
{
    EXPECT_EQ(Load(MillText()).length, host::LengthUnit::Millimetre);
    EXPECT_EQ(Load(MillWith(3, "length = \"inch\"")).length, host::LengthUnit::Inch);
}

TEST(MachineFile, KeepsTheWordAndItsSign)
{
    const LoadedMachine machine = Load(MillWith(33, "limits = [-120, 30]\nword = \"W\"\n"
                                                    "word_sign = -1"));
    EXPECT_EQ(machine.axes[3].word, "W");
    EXPECT_EQ(machine.axes[3].wordSign, -1);
    EXPECT_EQ(machine.axes[0].word, "X");
    EXPECT_EQ(machine.axes[0].wordSign, 1);
}

TEST(MachineFile, TakesNamesInAnyLanguage)
{
    std::string text = MillWith(44, "name = \"Spindelk\u00F6pfchen\"");
    text = test::WithLine(text, 61, "tool = \"Spindelk\u00F6pfchen\"");
    const LoadedMachine machine = Load(text);
    EXPECT_EQ(machine.streams.front().tool, "Spindelk\u00F6pfchen");
    IkNode* const mount = AxisNamed(machine, "Z").joint->SearchByName(L"Spindelk\u00F6pfchen");
    EXPECT_NE(mount, nullptr);
}

TEST(MachineFile, ListsTheAxesThatAStreamMoves)
{
    // Z's parent is now the base: X and Y lie in neither chain.
    const LoadedMachine machine = Load(MillWith(22, "parent = \"base\""));
    EXPECT_EQ(machine.streams.front().axes, (std::vector<std::size_t>{2, 3, 4}));
    EXPECT_EQ(machine.streams.front().id, 1);
    EXPECT_EQ(machine.streams.front().tool, "spindle");
    EXPECT_EQ(machine.streams.front().part, "table");
}

TEST(MachineFile, FindsStreamsByIdAndTakesTheFirstOtherwise)
{
    LoadedMachine machine =
        Load(MillText() + "\n[[stream]]\nid = 7\ntool = \"spindle\"\npart = \"table\"\n");
    EXPECT_EQ(machine.StreamWithId(std::nullopt).id, 1);
    EXPECT_EQ(machine.StreamWithId(7).id, 7);
    try {
        machine.StreamWithId(3);
        FAIL() << "there is no stream 3";
    } catch (const host::InputError& error) {
        EXPECT_STREQ(error.what(),
                     "mill.toml: there is no stream 3 in this machine; choose from: 1, 7");
    }
}

// The tree -----------------------------------------------------------------------------------

TEST(MachineTree, UsesThePrincipalMotionsDirectly)
{
    const LoadedMachine machine = Load(MillText());
    EXPECT_EQ(AxisNamed(machine, "Y").joint->GetJtPrimitive(), IkJoint::JtPrimTransY);
    EXPECT_EQ(AxisNamed(machine, "A").joint->GetJtPrimitive(), IkJoint::JtPrimRotX);
    EXPECT_EQ(AxisNamed(machine, "C").joint->GetJtPrimitive(), IkJoint::JtPrimRotZ);
    // base X Y Z spindle: nothing in between.
    EXPECT_EQ(machine.streams.front().toolChain->Size(), 6);
    // base A, the way back from its point, C through the origin, table.
    EXPECT_EQ(machine.streams.front().partChain->Size(), 5);
}

TEST(MachineTree, ReversesAJointForANegativePrincipalDirection)
{
    const LoadedMachine machine = Load(MillWith(10, "direction = [-2, 0, 0]"));
    const IkJoint& x = *AxisNamed(machine, "X").joint;
    EXPECT_EQ(x.GetJtPrimitive(), IkJoint::JtPrimTransX);
    EXPECT_TRUE(x.IsDirectionReversed());
    EXPECT_EQ(machine.streams.front().toolChain->Size(), 6);
    // The tool is at x = -10 of the machine; the part has not moved.
    ExpectNear(host::Column(PoseAt(machine, {{"X", 10.0}}), 3), {-10, 0, 100}, 1e-12);
}

TEST(MachineTree, TiltsThePartAboutAnAxisThroughItsPoint)
{
    const LoadedMachine machine = Load(MillText());
    const IkXformMat pose = PoseAt(machine, {{"A", -kPi / 6.0}});
    // The tool's end is 120 above the A axis. Seen from the part, tilted by -30 degrees, it has
    // turned by +30 about x: (0, -120 sin 30, 120 cos 30); the part's origin is 20 above the axis.
    ExpectNear(host::Column(pose, 3), {0, -60, 103.92304845413264 - 20.0}, 1e-12);
    ExpectNear(host::Column(pose, 2), {0, -0.5, 0.8660254037844386}, 1e-15);
}

TEST(MachineTree, CarriesOneRotaryAxisOnAnother)
{
    const LoadedMachine machine = Load(MillText());
    const IkXformMat pose = PoseAt(machine, {{"A", -kPi / 6.0}, {"C", kPi / 2.0}});
    // As above, then turned by -90 about the part's z: (x, y) becomes (y, -x).
    ExpectNear(host::Column(pose, 3), {-60, 0, 83.92304845413264}, 1e-12);
    ExpectNear(host::Column(pose, 0), {0, -1, 0}, 1e-15);
}

TEST(MachineTree, MovesAlongADirectionThatIsNotPrincipal)
{
    const LoadedMachine machine = Load(MillWith(10, "direction = [0, 3, 4]"));
    // A 3-4-5 triangle: 10 along (0, 3, 4) is (0, 6, 8). The part's origin is at z = -100.
    const IkXformMat pose = PoseAt(machine, {{"X", 10.0}});
    ExpectNear(host::Column(pose, 3), {0, 6, 108}, 1e-12);
    ExpectNear(host::Column(pose, 0), {1, 0, 0}, 1e-15);
    ExpectNear(host::Column(pose, 2), {0, 0, 1}, 1e-15);
    // What X carries is again in machine coordinates: Y still moves along y.
    ExpectNear(host::Column(PoseAt(machine, {{"X", 10.0}, {"Y", 5.0}}), 3), {0, 11, 108}, 1e-12);
}

TEST(MachineTree, TurnsAboutADirectionThatIsNotPrincipal)
{
    std::string text = MillWith(39, "direction = [0, 1, 1]");
    text = test::WithLine(text, 40, "point = [10, 0, 0]");
    text = test::WithLine(text, 55, "origin = [0, 0, 0]");
    const LoadedMachine machine = Load(text);
    const IkXformMat pose = PoseAt(machine, {{"C", kPi}});
    // Half a turn about d through p takes x to 2 (d . (x - p)) d - (x - p) + p. The tool's end at
    // the origin is across d from p: it goes to 2 p = (20, 0, 0); its z axis goes to the y axis.
    ExpectNear(host::Column(pose, 3), {20, 0, 0}, 1e-12);
    ExpectNear(host::Column(pose, 2), {0, 1, 0}, 1e-15);
}

TEST(MachineTree, PlacesMountsByOriginAndAxes)
{
    std::string text = MillWith(47, "origin = [1, 2, 3]");
    text = test::WithLine(text, 48, "z_axis = [2, 0, 0]");
    text = test::WithLine(text, 49, "x_axis = [0, 3, 0]");
    const IkXformMat pose = PoseAt(Load(text), {});
    ExpectNear(host::Column(pose, 3), {1, 2, 103}, 1e-15);
    ExpectNear(host::Column(pose, 0), {0, 1, 0}, 1e-15);
    ExpectNear(host::Column(pose, 1), {0, 0, 1}, 1e-15); // z cross x = x cross y = z
    ExpectNear(host::Column(pose, 2), {1, 0, 0}, 1e-15);
}

TEST(MachineTree, MakesNearlyPerpendicularMountAxesExactlySo)
{
    const IkXformMat pose = PoseAt(Load(MillWith(49, "x_axis = [1, 0, 9e-7]")), {});
    const Vec3 x = host::Column(pose, 0);
    const Vec3 z = host::Column(pose, 2);
    EXPECT_NEAR(host::Dot(x, z), 0.0, 1e-15);
    EXPECT_NEAR(host::Length(x), 1.0, 1e-15);
    ExpectNear(z, {0, 0, 1}, 0.0);
}

TEST(MachineTree, DoesNotCareInWhichOrderTheFileListsIt)
{
    // The mill again with X's and A's tables behind everything that hangs on them.
    const std::string text = MillText();
    const std::string x = text.substr(
        text.find("[[axis]]"), text.find("[[axis]]\nname      = \"Y") - text.find("[[axis]]"));
    std::string moved = text;
    moved.erase(moved.find(x), x.size());
    const LoadedMachine machine = Load(moved + "\n" + x);
    EXPECT_EQ(machine.axes.back().name, "X");
    ExpectNear(host::Column(PoseAt(machine, {{"X", 7.0}, {"Y", 8.0}}), 3), {7, 8, 100}, 1e-15);
}

/// Rodrigues' formula: `x` turned by `angle` about the line through `point` along `axis`.
Vec3 Turned(const Vec3& x, const Vec3& point, const Vec3& axis, double angle)
{
    using namespace host;
    const Vec3 r = x - point;
    return point + std::cos(angle) * r + std::sin(angle) * Cross(axis, r) +
           (1.0 - std::cos(angle)) * Dot(axis, r) * axis;
}

TEST(MachineTree, IsTheProductOfTheMotionsOfItsAxesWhateverTheirDirections)
{
    // Five axes in series, every one anywhere; a part that stands still at the machine's zero. The
    // tool's place is its place at zero, moved by the last axis, then by the one before, ...
    test::Random random(20240611);
    for (int machineNumber = 0; machineNumber < 40; ++machineNumber) {
        struct Part
        {
            bool isRotary;
            Vec3 direction;
            Vec3 point;
            double value;
        };
        const auto triple = [&random](double size) {
            return Vec3{random.Between(-size, size), random.Between(-size, size),
                        random.Between(-size, size)};
        };
        const auto text = [](const Vec3& v) {
            return "[" + host::ShortestText(v[0]) + "," + host::ShortestText(v[1]) + "," +
                   host::ShortestText(v[2]) + "]\n";
        };
        std::vector<Part> parts;
        std::string file = "[machine]\nname=\"m\"\nlength=\"mm\"\nangle=\"rad\"\n";
        for (int i = 0; i < 5; ++i) {
            Part part{random.OneIn(2), triple(2.0), triple(300.0), random.Between(-3.0, 3.0)};
            if (random.OneIn(3)) {
                part.direction = {0, random.OneIn(2) ? -1.0 : 1.0, 0};
            }
            file += "[[axis]]\nname=\"J" + std::to_string(i) + "\"\nparent=\"" +
                    (i == 0 ? "base" : "J" + std::to_string(i - 1)) + "\"\ntype=\"" +
                    (part.isRotary ? "rotary\"\npoint=" + text(part.point) : "linear\"\n") +
                    "unlimited=true\ndirection=" + text(part.direction);
            parts.push_back(part);
        }
        const Vec3 origin = triple(200.0);
        file += "[[mount]]\nname=\"t\"\nkind=\"tool\"\nparent=\"J4\"\nz_axis=[0,0,1]\n"
                "x_axis=[1,0,0]\norigin=" +
                text(origin) +
                "[[mount]]\nname=\"p\"\nkind=\"part\"\nparent=\"base\"\nz_axis=[0,0,1]\n"
                "x_axis=[1,0,0]\norigin=[0,0,0]\n[[stream]]\nid=1\ntool=\"t\"\npart=\"p\"\n";

        Vec3 end = origin;
        Vec3 above = host::operator+(origin, Vec3{0, 0, 1}); // the end's neighbour along its z axis
        for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
            const Vec3 axis = *host::Normalised(part->direction);
            const auto moved = [&](const Vec3& x) {
                return part->isRotary ? Turned(x, part->point, axis, part->value)
                                      : host::operator+(x, host::operator*(part->value, axis));
            };
            end = moved(end);
            above = moved(above);
        }
        std::map<std::string, double> values;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            values["J" + std::to_string(i)] = parts[i].value;
        }
        const IkXformMat pose = PoseAt(Load(file), values);
        SCOPED_TRACE("machine " + std::to_string(machineNumber));
        ExpectNear(host::Column(pose, 3), end, 1e-9);
        ExpectNear(host::Column(pose, 2), host::operator-(above, end), 1e-9);
    }
}

// What is wrong with a file ------------------------------------------------------------------

struct Fault
{
    const char* name;
    int replacedLine;
    const char* with;
    int line;
    int column;
    const char* sentence; // how it begins
};

void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.name;
}

class MachineFault : public testing::TestWithParam<Fault>
{};

TEST_P(MachineFault, IsRefusedWithItsPlaceAndASentence)
{
    const Fault& fault = GetParam();
    try {
        Load(MillWith(fault.replacedLine, fault.with));
        FAIL() << "not refused";
    } catch (const host::InputError& error) {
        EXPECT_EQ(error.File(), "mill.toml");
        EXPECT_EQ(error.Line(), fault.line) << error.what();
        EXPECT_EQ(error.Column(), fault.column) << error.what();
        EXPECT_EQ(error.Sentence().rfind(fault.sentence, 0), 0U) << error.what();
        const std::string place =
            "mill.toml:" + std::to_string(fault.line) + ":" + std::to_string(fault.column) + ": ";
        EXPECT_EQ(error.what(), place + error.Sentence());
    }
}

// Each example in the field's own order: syntax, keys, types, values, what does not fit together.
INSTANTIATE_TEST_SUITE_P(
    Kinds, MachineFault,
    testing::Values(
        Fault{"Syntax", 7, "name \"X\"", 7, 6, "this is not TOML ("},
        Fault{"AValueCutShort", 7, "name = tru", 7, 11,
              "this is not TOML (Error while parsing "
              "boolean: expected 'true', saw 'tru?')"},
        Fault{"AKeyTwice", 7, "name = \"X\"\nname = \"X2\"", 8, 8, "this is not TOML ("},
        // Two that the reader itself takes for impossible.
        Fault{"TableWithoutName", 6, "[/]", 6, 2, "this is not TOML; correct it here or on"},
        Fault{"BraceInAnArray", 47, "origin = [ } ]", 47, 12,
              "this is not TOML; correct it here or on"},
        Fault{"StrayCharacter", 44, "name = \"sp\u00EFndle\" \u00E9", 44, 18,
              "this character stands outside a string or comment, where TOML has plain ASCII"},
        Fault{"ControlCharacter", 44, "name = \"spindle\"\x0C", 44, 17,
              "this character stands outside a string or comment"},

        Fault{"UnknownTable", 1, "[tool]\n[machine]", 1, 2, "\"tool\" is not a key of the file"},
        Fault{"UnknownMachineKey", 2, "name = \"Mill\"\nmaker = \"x\"", 3, 1,
              "\"maker\" is not a key of [machine]; its keys are name, length, angle"},
        Fault{"UnknownAxisKey", 11, "limts = [-300, 300]", 11, 1,
              "\"limts\" is not a key of this axis; its keys are name, parent, type, direction,"},
        Fault{"UnknownMountKey", 47, "  orign = [0, 0, 0]", 47, 3,
              "\"orign\" is not a key of this mount; its keys are"},
        Fault{"UnknownStreamKey", 60, "id = 1\nname = \"s\"", 61, 1,
              "\"name\" is not a key of this stream; its keys are id, tool, part"},

        Fault{"NoMachineTable", 1, "", 2, 1, "\"name\" is not a key of the file"},
        Fault{"MachineIsNoTable", 1, "machine = 3\n[[axis]]", 1, 11,
              "there is no table [machine] with name, length and angle; add it"},
        Fault{"NoMachineName", 2, "", 1, 1,
              "[machine] has no name; add for instance name = \"Trunnion mill\""},
        Fault{"NoLength", 3, "", 1, 1, "[machine] has no length; add for instance length = \"mm\""},
        Fault{"NoAngle", 4, "", 1, 1, "[machine] has no angle; add for instance angle = \"deg\""},
        Fault{"NoName", 7, "", 6, 1, "this axis has no name; add for instance name = \"X\""},
        Fault{"NoParent", 8, "", 6, 1,
              "axis \"X\" has no parent; add for instance parent = \"base\""},
        Fault{"NoType", 9, "", 6, 1, "axis \"X\" has no type; add for instance type = \"linear\""},
        Fault{"NoDirection", 10, "", 6, 1, "axis \"X\" has no direction; add for instance"},
        Fault{"NoPoint", 32, "", 27, 1,
              "axis \"A\" has no point; add for instance point = [0, 0, 0]"},
        Fault{"NoKind", 45, "", 43, 1, "mount \"spindle\" has no kind; add for instance"},
        Fault{"NoOrigin", 47, "", 43, 1, "mount \"spindle\" has no origin; add for instance"},
        Fault{"NoMountParent", 46, "", 43, 1, "mount \"spindle\" has no parent; add for instance"},
        Fault{"NoZAxis", 48, "", 43, 1, "mount \"spindle\" has no z_axis; add for instance"},
        Fault{"NoXAxis", 49, "", 43, 1, "mount \"spindle\" has no x_axis; add for instance"},
        Fault{"NoId", 60, "", 59, 1, "this stream has no id; add for instance id = 1"},
        Fault{"NoTool", 61, "", 59, 1,
              "this stream has no tool; add for instance tool = \"spindle\""},
        Fault{"NoPart", 62, "", 59, 1, "this stream has no part; add for instance"},
        Fault{"NeitherLimitsNorUnlimited", 11, "", 6, 1,
              "axis \"X\" has no limits; add limits = [low, high] or unlimited = true"},
        Fault{"UnlimitedFalseAlone", 11, "unlimited = false", 6, 1,
              "axis \"X\" has no limits; add"},
        Fault{"BothLimitsAndUnlimited", 11, "limits = [-1, 1]\nunlimited = true", 12, 13,
              "axis \"X\" has limits and unlimited = true; keep one of them"},
        Fault{"NoInitialWhereZeroIsOutside", 11, "limits = [100, 300]", 11, 10,
              "0 lies outside the limits of axis \"X\"; add initial = "},

        Fault{"NameOfWrongType", 7, "name = 7", 7, 8,
              "name is a number; write for instance name = \"X\""},
        Fault{"TypeOfWrongType", 9, "type = [1]", 9, 8, "type is an array; write for instance"},
        Fault{"DirectionOfWrongType", 10, "direction = \"x\"", 10, 13,
              "direction is a string; write for instance direction = [0, 0, 1]"},
        Fault{"DirectionEntryOfWrongType", 10, "direction = [1, \"0\", 0]", 10, 17,
              "direction is a string; write for instance"},
        Fault{"TooFewEntries", 10, "direction = [1, 0]", 10, 13,
              "direction has 2 entries, not 3; write for instance"},
        Fault{"TooManyLimits", 11, "limits = [-1, 0, 1]", 11, 10,
              "limits has 3 entries, not 2; write for instance limits = [-300, 300]"},
        Fault{"LimitOfWrongType", 11, "limits = [-1, 2020-01-01]", 11, 15,
              "limits is a date or time; write for instance"},
        Fault{"UnlimitedOfWrongType", 41, "unlimited = 1", 41, 13,
              "unlimited is a number; write for instance unlimited = true"},
        Fault{"InitialOfWrongType", 11, "limits = [-1, 1]\ninitial = true", 12, 11,
              "initial is true or false; write for instance initial = 0"},
        Fault{"IdOfWrongType", 60, "id = 1.5", 60, 6, "id is no whole number"},
        Fault{"IdTooLarge", 60, "id = 2147483648", 60, 6, "id is no whole number of at most 32"},
        Fault{"AxisGivenTwice", 1, "axis = { name = \"X\" }\n[machine]", 7, 1,
              "this is not TOML ("},
        Fault{"EmptyName", 7, "name = \"\"", 7, 8, "name is empty; write for instance"},
        Fault{"NameWithABlank", 7, "name = \"X 1\"", 7, 8, "the name of an axis has no blanks"},
        Fault{"NameWithAComma", 7, "name = \"X,1\"", 7, 8, "the name of an axis has no blanks"},

        Fault{"UnknownLength", 3, "length = \"m\"", 3, 10,
              "length is \"m\"; it is one of: mm, inch"},
        Fault{"UnknownAngle", 4, "angle = \"gon\"", 4, 9,
              "angle is \"gon\"; it is one of: deg, rad"},
        Fault{"UnknownType", 9, "type = \"Linear\"", 9, 8,
              "type is \"Linear\"; it is one of: linear, rotary"},
        Fault{"UnknownKind", 45, "kind = \"head\"", 45, 8,
              "kind is \"head\"; it is one of: tool, part"},
        Fault{"NotANumber", 10, "direction = [1, nan, 0]", 10, 17,
              "direction of axis \"X\" is not a finite number; write"},
        Fault{"InfiniteLimit", 11, "limits = [-300, inf]", 11, 17,
              "limits of axis \"X\" is not a finite number; write for instance limits = "
              "[-300, 300], or unlimited = true"},
        Fault{"InfinitePoint", 32, "point = [-inf, 0, 0]", 32, 10,
              "point of axis \"A\" is not a finite number"},
        Fault{"InfiniteInitial", 11, "limits = [-1, 1]\ninitial = nan", 12, 11,
              "initial of axis \"X\" is not a finite number"},
        Fault{"ZeroDirection", 10, "direction = [0, 0, 0]", 10, 13,
              "direction of axis \"X\" has no length; give the direction as [x, y, z]"},
        Fault{"ImmeasurableDirection", 10, "direction = [1.7e308, 1.7e308, 0]", 10, 13,
              "direction of axis \"X\" has no length"},
        Fault{"ZeroZAxis", 48, "z_axis = [0, 0, 0]", 48, 10,
              "z_axis of mount \"spindle\" has no length"},
        Fault{"XAxisAlongZAxis", 49, "x_axis = [1, 0, 2e-6]", 49, 10,
              "x_axis of mount \"spindle\" is not perpendicular to its z_axis"},
        Fault{"LimitsInWrongOrder", 11, "limits = [300, -300]", 11, 10,
              "the limits of axis \"X\" are in the wrong order; write the lower one first"},
        Fault{"InitialOutsideLimits", 33, "limits = [-120, 30]\ninitial = 31", 34, 11,
              "initial lies outside the limits of axis \"A\"; start it within them"},
        Fault{"PointOnALinearAxis", 11, "limits = [-1, 1]\npoint = [0, 0, 0]", 12, 9,
              "axis \"X\" is linear, and only a rotary axis has a point; take the point out"},
        Fault{"WordSign", 11, "limits = [-1, 1]\nword_sign = 0", 12, 13,
              "word_sign is 0; it is 1 or -1"},

        Fault{"DuplicateAxis", 14, "name = \"X\"", 14, 8, "\"X\" is already the name of something"},
        Fault{"DuplicateMount", 52, "name = \"spindle\"", 52, 8, "\"spindle\" is already the name"},
        Fault{"MountNamedLikeAnAxis", 52, "name = \"C\"", 52, 8, "\"C\" is already the name"},
        Fault{"AxisNamedBase", 36, "name = \"base\"", 36, 8, "\"base\" is already the name"},
        Fault{"MissingParent", 15, "parent = \"Q\"", 15, 10,
              "the parent of axis \"Y\" is \"Q\", and there is no such axis; name an axis or "},
        Fault{"MissingMountParent", 46, "parent = \"Q\"", 46, 10,
              "the parent of mount \"spindle\" is \"Q\", and there is no such axis"},
        Fault{"MountAsParent", 15, "parent = \"table\"", 15, 10,
              "the parent of axis \"Y\" is \"table\", and there is no such axis"},
        Fault{"Cycle", 8, "parent = \"Z\"", 8, 10,
              "the parents of axis \"X\" lead round in a circle, never to \"base\""},
        Fault{"OwnParent", 37, "parent = \"C\"", 37, 10,
              "the parents of axis \"C\" lead round in a circle, never to \"base\""},
        Fault{"UnknownToolMount", 61, "tool = \"head\"", 61, 8, "there is no mount \"head\"; name"},
        Fault{"UnknownPartMount", 62, "part = \"C\"", 62, 8,
              "there is no mount \"C\"; name one of"},
        Fault{"ToolOfWrongKind", 61, "tool = \"table\"", 61, 8,
              "mount \"table\" is not of kind = \"tool\"; name one that is"},
        Fault{"PartOfWrongKind", 62, "part = \"spindle\"", 62, 8,
              "mount \"spindle\" is not of kind = \"part\"; name one that is"},
        Fault{"DuplicateStream", 59,
              "[[stream]]\nid = 1\ntool = \"spindle\"\npart = \"table\"\n[[stream]]", 64, 8,
              "there is already a stream 1; choose another id"}),
    [](const testing::TestParamInfo<Fault>& fault) { return fault.param.name; });

std::string SentenceAbout(const std::string& text)
{
    try {
        Load(text);
        return "not refused";
    } catch (const host::InputError& error) {
        return error.what();
    }
}

TEST(MachineFile, HasAnyCharactersInStringsAndComments)
{
    constexpr std::size_t kNone = std::string_view::npos;
    for (const std::string text :
         {"", "a = 1\t# \u00E9\r\n", "a = \"\u00E9\"", "a = '\u00E9'", "a = \"\\\"\u00E9\"",
          "a = \"\"\"\n\u00E9\n\"\u00E9\"\"\"\"", "a = '''\n\\'\u00E9'''", "\uFEFFa = 1"}) {
        EXPECT_EQ(host::FindStrayCharacter(text), kNone) << text;
    }
    EXPECT_EQ(host::FindStrayCharacter("a = \"\" \u00E9"), 7U);
    EXPECT_EQ(host::FindStrayCharacter("# x\n\u00E9"), 4U);
    EXPECT_EQ(host::FindStrayCharacter("a = \"x\n\u00E9\""), 7U); // the string ends with its line
    EXPECT_EQ(host::FindStrayCharacter("a = \"\\"), kNone);
    EXPECT_EQ(host::FindStrayCharacter("a = '\\'\u00E9"), 7U);
    EXPECT_EQ(host::FindStrayCharacter("a = \"\"\"\u00E9\"\"\"\x7F"), 12U);
    EXPECT_EQ(host::FindStrayCharacter(std::string_view("a\0b", 3)), 1U);
}

TEST(MachineFile, RefusesAFileWithoutATableOfAKind)
{
    const std::string header = "[machine]\nname = \"m\"\nlength = \"mm\"\nangle = \"deg\"\n";
    EXPECT_EQ(SentenceAbout(""), "mill.toml:1:1: there is no table [machine] with name, length and "
                                 "angle; add it");
    EXPECT_EQ(SentenceAbout(header),
              "mill.toml:1:1: there is no axis; write one [[axis]] for each axis");
    EXPECT_EQ(SentenceAbout(header + "[axis]\n"),
              "mill.toml:5:1: axis is not a list of tables; write one [[axis]] for each axis");
    EXPECT_EQ(SentenceAbout("axis = [4]\n" + header),
              "mill.toml:1:9: this axis is not a table; write one [[axis]] for each axis");
    EXPECT_EQ(SentenceAbout(MillText().substr(0, MillText().find("[[stream]]"))),
              "mill.toml:1:1: there is no stream; write one [[stream]] for each stream");
}

TEST(MachineFile, RefusesAStreamThatMovesNothing)
{
    std::string text = MillWith(46, "parent = \"base\"");
    text = test::WithLine(text, 54, "parent = \"base\"");
    EXPECT_EQ(SentenceAbout(text).rfind("mill.toml:60:8: stream 1 has no axis on either side", 0),
              0U);
}

TEST(MachineFile, RefusesMoreTablesThanAnyMachineHas)
{
    std::string text = MillText();
    for (int i = 0; i < 60; ++i) { // behind the mill's 62 lines and its five axes
        text += "[[axis]]\nname = \"J" + std::to_string(i) +
                "\"\nparent = \"base\"\ntype = \"linear\"\ndirection = [1, 0, 0]\n"
                "unlimited = true\n";
    }
    EXPECT_EQ(SentenceAbout(text).rfind(
                  "mill.toml:417:1: there are more than 64 tables [[axis]]; leave out", 0),
              0U)
        << SentenceAbout(text);
}

TEST(MachineFile, ShowsTextOfTheFileWithoutControlCharacters)
{
    EXPECT_EQ(SentenceAbout(MillWith(15, "parent = \"\\u001B[31m\"")),
              "mill.toml:15:10: the parent of axis \"Y\" is \"?[31m\", and there is no such axis; "
              "name an axis or \"base\"");
}

} // namespace
