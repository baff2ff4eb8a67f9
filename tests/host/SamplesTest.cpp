// What the bundled machines and toolpaths promise, see samples/README.md.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Paths.h"
#include "Process.h"
#include "TempFolder.h"
#include "geometry/Frame.h"
#include "machine/LoadedMachine.h"
#include "table/JointTableReader.h"
#include "toolpath/ToolpathFile.h"

namespace
{

namespace fs = std::filesystem;
using host::Toolpath;
using host::ToolPoint;
using host::Vec3;
using test::Outcome;
using test::Process;

constexpr Vec3 kUpright{0.0, 0.0, 1.0};

fs::path MachineFile(const std::string& name)
{
    return fs::path(test::kSamples) / "machines" / name;
}

fs::path PathFile(const std::string& name)
{
    return fs::path(test::kSamples) / "toolpaths" / name;
}

Toolpath PathOf(const std::string& name)
{
    return host::ReadToolpath(PathFile(name), std::nullopt, host::LengthUnit::Millimetre);
}

double Distance(const Vec3& a, const Vec3& b)
{
    return host::Length(host::operator-(a, b));
}

double Tilt_deg(const ToolPoint& point)
{
    return host::ToDegrees(host::AngleBetween(point.direction, kUpright));
}

bool IsUpright(const ToolPoint& point)
{
    return point.direction == kUpright;
}

/// How far the tool's direction turns about the part's z; 0 where it leaves the pole.
double TurnBetween_deg(const ToolPoint& from, const ToolPoint& to)
{
    const Vec3& a = from.direction;
    const Vec3& b = to.direction;
    return host::ToDegrees(std::atan2(a[0] * b[1] - a[1] * b[0], a[0] * b[0] + a[1] * b[1]));
}

std::vector<ToolPoint> CutsOf(const Toolpath& path, int operation)
{
    std::vector<ToolPoint> cuts;
    std::copy_if(path.points.begin(), path.points.end(), std::back_inserter(cuts),
                 [operation](const ToolPoint& point) {
                     return point.operation == operation && !point.isRapid;
                 });
    return cuts;
}

const host::MountLinks kArmLinks{"spindle_nose", "part"};

// Each on its machine ------------------------------------------------------------------------

struct Sample
{
    const char* name;
    const char* machine;
    const char* toolpath;
    host::MountLinks links;
    std::vector<std::string> options;
};

void PrintTo(const Sample& sample, std::ostream* out)
{
    *out << sample.toolpath << " on " << sample.machine;
}

class SampleOnItsMachine : public testing::TestWithParam<Sample>
{
  protected:
    std::vector<std::string> Command(const std::string& name) const
    {
        const Sample& sample = GetParam();
        std::vector<std::string> command{test::kProgram, name, MachineFile(sample.machine),
                                         PathFile(sample.toolpath)};
        if (sample.links.tool) {
            command.insert(command.end(), {"--tool-link", *sample.links.tool, "--part-link",
                                           sample.links.part.value_or("")});
        }
        return command;
    }
    Outcome Solve() const
    {
        std::vector<std::string> command = Command("solve");
        const std::vector<std::string>& options = GetParam().options;
        command.insert(command.end(), options.begin(), options.end());
        command.insert(command.end(), {"-o", "joints.csv"});
        return Process(command, folder.Path()).Wait();
    }
    Outcome Verify() const
    {
        std::vector<std::string> command = Command("verify");
        command.emplace_back("joints.csv");
        return Process(command, folder.Path()).Wait();
    }

    test::TempFolder folder;
};

TEST_P(SampleOnItsMachine, IsReachedWithinTheLimitsAtEveryPoint)
{
    const Sample& sample = GetParam();
    const Toolpath path = PathOf(sample.toolpath);
    EXPECT_GE(path.points.size(), 1000U);
    EXPECT_GE(path.operations.size(), 2U);
    EXPECT_TRUE(path.warnings.empty());

    const Outcome outcome = Solve();
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");

    host::LoadedMachine machine = host::LoadMachine(MachineFile(sample.machine), sample.links);
    const host::LoadedStream& stream = machine.StreamWithId(std::nullopt);
    const std::vector<const host::Axis*> axes = machine.AxesOf(stream);
    std::ifstream in(folder.Path() / "joints.csv");
    host::JointTableReader table(in, "joints.csv", machine.AxesOf(stream), machine.length);
    std::vector<bool> isReached(path.points.size());
    for (host::TableRow row; table.Next(row);) {
        SCOPED_TRACE("row on line " + std::to_string(row.tableLine));
        for (std::size_t i = 0; i < axes.size(); ++i) {
            axes[i]->joint->SetCurValue(row.motion.joints[i]);
            ASSERT_GE(row.motion.joints[i], axes[i]->joint->GetLowBound()) << axes[i]->name;
            ASSERT_LE(row.motion.joints[i], axes[i]->joint->GetHiBound()) << axes[i]->name;
        }
        if (row.motion.flags.isInserted || row.motion.flags.isRewind) {
            continue;
        }
        const ToolPoint& point = path.points.at(row.motion.point);
        const auto operation = static_cast<std::size_t>(point.operation);
        stream.SetToolLength(path.operations[operation].toolLength.value());
        const IkXformMat tool = stream.stream->SolveFK(false).GetCompleteState();
        // The default tolerances of a motion: 0.01 mm and 0.05 degrees.
        ASSERT_LE(Distance(host::Column(tool, 3), point.position), 0.01);
        ASSERT_LE(host::ToDegrees(host::AngleBetween(host::Column(tool, 2), point.direction)),
                  0.05);
        isReached[row.motion.point] = true;
    }
    EXPECT_EQ(std::count(isReached.begin(), isReached.end(), false), 0);

    // And so is the way between the points.
    const Outcome verified = Verify();
    EXPECT_EQ(verified.code, 0) << verified.out << verified.err;
    EXPECT_NE(verified.out.find("\nverdict    holds within 0.01 mm and 0.05 deg\n"),
              std::string::npos)
        << verified.out;
}

INSTANTIATE_TEST_SUITE_P(
    All, SampleOnItsMachine,
    testing::Values(
        Sample{"TrunnionTable", "trunnion-ac.toml", "dome-over-the-top.cl", {}, {}},
        Sample{"HeadAndTable", "head-table-bc.toml", "impeller-blade.cl", {}, {}},
        Sample{"HeadHead", "head-head-ca.toml", "turbine-ring.cl", {}, {}},
        Sample{"NutatingHead", "nutating-bc.toml", "pocket-tilted-walls.cl", {}, {}},
        Sample{"MillTurn", "mill-turn-bc.toml", "cylinder-engraving.cl", {}, {}},
        Sample{"ArmAndPositioner", "arm-positioner.urdf", "bowl-trimming.cl", kArmLinks, {}},
        Sample{"ArmAlone",
               "arm-positioner.urdf",
               "bowl-trimming.cl",
               kArmLinks,
               {"--lock", "tilt=0", "--lock", "turn=0"}}),
    [](const testing::TestParamInfo<Sample>& sample) { return std::string(sample.param.name); });

// What each passes on purpose ----------------------------------------------------------------

/// The axis of this name of a machine; its limits in degrees or millimetres.
host::Range LimitsOf(const std::string& machineFile, const std::string& axis,
                     const host::MountLinks& links = {})
{
    const host::LoadedMachine machine = host::LoadMachine(MachineFile(machineFile), links);
    for (const host::Axis& one : machine.axes) {
        if (one.name == axis) {
            const double low = one.joint->GetLowBound();
            const double high = one.joint->GetHiBound();
            return one.isRotary ? host::Range{host::ToDegrees(low), host::ToDegrees(high)}
                                : host::Range{low, high};
        }
    }
    throw std::logic_error("no such axis");
}

TEST(DomeOverTheTop, EndsOneOperationUprightAndPassesThePoleInTheMiddleStroke)
{
    const Toolpath path = PathOf("dome-over-the-top.cl");
    EXPECT_TRUE(IsUpright(CutsOf(path, 0).back()));
    const std::vector<ToolPoint> strokes = CutsOf(path, 1);
    EXPECT_EQ(std::count_if(strokes.begin(), strokes.end(), IsUpright), 1);
    // In the middle stroke the tool leans along x alone, further to either side of the pole than A
    // may tilt to the one: C has to make half a turn there.
    double least_deg = 0.0;
    double most_deg = 0.0;
    for (const ToolPoint& point : strokes) {
        if (point.direction[1] == 0.0) {
            const double lean_deg = std::copysign(Tilt_deg(point), point.direction[0]);
            least_deg = std::min(least_deg, lean_deg);
            most_deg = std::max(most_deg, lean_deg);
        }
    }
    const double limit_deg = LimitsOf("trunnion-ac.toml", "A").high;
    EXPECT_LT(least_deg, -limit_deg);
    EXPECT_GT(most_deg, limit_deg);
}

TEST(ImpellerBlade, PassesThePoleInEveryStrokeByNoMoreThanBAllows)
{
    const Toolpath path = PathOf("impeller-blade.cl");
    const double limit_deg = -LimitsOf("head-table-bc.toml", "B").low;
    for (const int operation : {0, 1}) {
        const std::vector<ToolPoint> cuts = CutsOf(path, operation);
        EXPECT_EQ(std::count_if(cuts.begin(), cuts.end(), IsUpright), 4);
        // Each of the four strokes begins far on the one side and ends near on the other.
        const std::size_t perStroke = cuts.size() / 4;
        for (std::size_t stroke = 0; stroke < 4; ++stroke) {
            EXPECT_GT(Tilt_deg(cuts[stroke * perStroke]), limit_deg);
            const double end_deg = Tilt_deg(cuts[(stroke + 1) * perStroke - 1]);
            EXPECT_GT(end_deg, 20.0);
            EXPECT_LT(end_deg, limit_deg);
        }
    }
}

TEST(TurbineRing, TurnsTheHeadFurtherThanItsLimitsAllowSoThatItIsUnwound)
{
    double turned_deg = 0.0;
    const Toolpath path = PathOf("turbine-ring.cl");
    for (std::size_t i = 1; i < path.points.size(); ++i) {
        const double turn_deg = TurnBetween_deg(path.points[i - 1], path.points[i]);
        if (!path.points[i].isRapid) {
            EXPECT_GE(turn_deg, 0.0); // always the same way
            turned_deg += turn_deg;
        }
    }
    // Four strokes of one and a half turns; the vectors are rounded to six digits.
    EXPECT_NEAR(turned_deg, 4 * 540.0, 1e-3);
    const host::Range limits_deg = LimitsOf("head-head-ca.toml", "C");
    EXPECT_GT(turned_deg, limits_deg.high - limits_deg.low);
    // What one stroke needs there is.
    EXPECT_LT(540.0, limits_deg.high - limits_deg.low);
}

TEST(PocketWithTiltedWalls, StandsAtThePoleAndLiesAtTheEndOfWhatTheHeadDirects)
{
    const Toolpath path = PathOf("pocket-tilted-walls.cl");
    const std::vector<ToolPoint> floor = CutsOf(path, 0);
    EXPECT_TRUE(std::all_of(floor.begin(), floor.end(), IsUpright));
    const std::vector<ToolPoint> groove = CutsOf(path, 3);
    EXPECT_TRUE(std::all_of(groove.begin(), groove.end(),
                            [](const ToolPoint& point) { return point.direction[2] == 0.0; }));
    // B about (0, 1, 1) carries the upright tool over a cone of half angle 45 degrees, no further
    // than 90 degrees from upright.
    EXPECT_GT(LimitsOf("nutating-bc.toml", "B").high, 180.0);
}

TEST(CylinderEngraving, CrossesTheEndFaceAtThePoleFurtherThanXReaches)
{
    const Toolpath path = PathOf("cylinder-engraving.cl");
    const std::vector<ToolPoint> lines = CutsOf(path, 1);
    double farthest = 0.0;
    int inTheMiddle = 0;
    for (const ToolPoint& point : lines) {
        if (IsUpright(point)) {
            const double distance = std::hypot(point.position[0], point.position[1]);
            farthest = std::max(farthest, distance);
            inTheMiddle += distance == 0.0 ? 1 : 0;
        }
    }
    EXPECT_EQ(inTheMiddle, 4);
    EXPECT_GT(farthest, -LimitsOf("mill-turn-bc.toml", "X").low);
}

TEST(BowlTrimming, TurnsRoundThePartFurtherThanThePositionerDoes)
{
    const Toolpath path = PathOf("bowl-trimming.cl");
    const host::Range limits_deg = LimitsOf("arm-positioner.urdf", "turn", kArmLinks);
    // The spiral over the top begins upright; then the tool leans out, round and round.
    const std::vector<ToolPoint> top = CutsOf(path, 0);
    EXPECT_TRUE(IsUpright(top.front()));
    for (const int operation : {0, 2}) {
        const std::vector<ToolPoint> cuts = CutsOf(path, operation);
        double turned_deg = 0.0;
        for (std::size_t i = 1; i < cuts.size(); ++i) {
            turned_deg += TurnBetween_deg(cuts[i - 1], cuts[i]);
        }
        // Seven turns, less the first step, in which it leaves the pole; one turn and a quarter.
        // Where the tool begins to lean, by 0.06 degrees, six digits leave 0.03 degrees open.
        EXPECT_NEAR(turned_deg, operation == 0 ? 7 * 360.0 - 7.5 : 450.0, 0.05);
        EXPECT_GT(turned_deg, limits_deg.high - limits_deg.low);
    }
}

} // namespace
