#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "MillText.h"
#include "ReportData.h"
#include "geometry/Units.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
#include "machine/UrdfFile.h"
#include "report/Page.h"
#include "report/PageData.h"
#include "report/ReportRows.h"

namespace
{

using Json = nlohmann::json;

/// A head that tilts, over a table that stays: inches, radians, and a stream of its own number.
constexpr const char* kHeadText = R"([machine]
name   = "Head"
length = "inch"
angle  = "rad"

[[axis]]
name      = "B"
parent    = "Z"
type      = "rotary"
direction = [0, 2, 0]
point     = [0, 0, 6]
limits    = [-1.5, 1.5]
initial   = 0.75
word      = "A"
word_sign = -1

[[axis]]
name      = "Z"
parent    = "base"
type      = "linear"
direction = [0, 0, 1]
limits    = [-16, 0.5]

[[axis]]
name      = "W"
parent    = "base"
type      = "rotary"
direction = [0, 0, 1]
point     = [0, 0, 0]
unlimited = true

[[mount]]
name   = "spindle"
kind   = "tool"
parent = "B"
origin = [0, 0, 1]
z_axis = [0, 0, 3]
x_axis = [2, 0, 0]

[[mount]]
name   = "table"
kind   = "part"
parent = "base"
origin = [0, 0, -16]
z_axis = [0, 0, 1]
x_axis = [0, 1, 0]

[[stream]]
id   = 7
tool = "spindle"
part = "table"
)";

host::LoadedMachine MachineOf(const std::string& text)
{
    return host::AssembleMachine(host::ReadMachine(text, "machine.toml"));
}

std::string TextOf(const host::ShownMachine& shown, const host::ShownRun* run)
{
    std::string text;
    host::WritePageData(shown, run, [&text](std::string_view piece) { text += piece; });
    return text;
}

Json DataOf(const host::LoadedMachine& machine)
{
    return Json::parse(TextOf({machine, {"machine.toml", "ab12"}, "1.2.3"}, nullptr));
}

// The machine ------------------------------------------------------------------------------------

TEST(PageData, HasTheMachinesTreeInDegrees)
{
    // A radian is 57.29577951308232 degrees.
    const Json expected = Json::parse(R"({
      "format": 1, "kind": "machine", "version": "1.2.3", "run": null,
      "machine": {
        "name": "Head", "file": "machine.toml", "sha256": "ab12", "lengthUnit": "in",
        "axes": [
          {"name": "B", "parent": 1, "type": "rotary", "direction": [0, 1, 0], "point": [0, 0, 6],
           "limits": [-85.94366926962348, 85.94366926962348], "initial": 42.97183463481174,
           "word": "A", "wordSign": -1},
          {"name": "Z", "parent": -1, "type": "linear", "direction": [0, 0, 1], "point": [0, 0, 0],
           "limits": [-16, 0.5], "initial": 0, "word": "Z", "wordSign": 1},
          {"name": "W", "parent": -1, "type": "rotary", "direction": [0, 0, 1], "point": [0, 0, 0],
           "limits": [null, null], "initial": 0, "word": "W", "wordSign": 1}],
        "mounts": [
          {"name": "spindle", "kind": "tool", "parent": 0, "origin": [0, 0, 1],
           "zAxis": [0, 0, 1], "xAxis": [1, 0, 0]},
          {"name": "table", "kind": "part", "parent": -1, "origin": [0, 0, -16],
           "zAxis": [0, 0, 1], "xAxis": [0, 1, 0]}],
        "streams": [{"id": 7, "tool": "spindle", "part": "table"}],
        "visuals": []
      }})");
    EXPECT_EQ(DataOf(MachineOf(kHeadText)), expected);
}

TEST(PageData, HasTheShapesOfAUrdf)
{
    const host::LoadedMachine machine =
        host::AssembleMachine(host::ReadUrdf(R"(<robot name="r">
<link name="base"><visual><geometry><box size="1 2 0.5"/></geometry></visual></link>
<link name="arm"><visual><origin xyz="0 0 0.25"/><geometry><cylinder radius="0.125" length="0.5"/>
</geometry><material name="m"><color rgba="1 0.5 0 0.25"/></material></visual></link>
<link name="tool"><visual><geometry><sphere radius="0.5"/></geometry></visual></link>
<joint name="j" type="continuous"><origin xyz="0 0 1"/><parent link="base"/><child link="arm"/>
<axis xyz="0 0 1"/></joint>
<joint name="k" type="fixed"><origin xyz="0 1 0"/><parent link="arm"/><child link="tool"/></joint>
</robot>)",
                                             "r.urdf", {"tool", "base"}));
    const Json data = DataOf(machine);
    EXPECT_EQ(data["machine"]["visuals"], Json::parse(R"([
      {"parent": -1, "name": "base", "shape": "box", "size": [1000, 2000, 500],
       "origin": [0, 0, 0], "xAxis": [1, 0, 0], "zAxis": [0, 0, 1], "color": null},
      {"parent": 0, "name": "arm", "shape": "cylinder", "size": [125, 500],
       "origin": [0, 0, 1250], "xAxis": [1, 0, 0], "zAxis": [0, 0, 1],
       "color": [1, 0.5, 0, 0.25]},
      {"parent": 0, "name": "tool", "shape": "sphere", "size": [500],
       "origin": [0, 1000, 1000], "xAxis": [1, 0, 0], "zAxis": [0, 0, 1], "color": null}])"));
    EXPECT_EQ(data["machine"]["lengthUnit"], "mm");
    EXPECT_EQ(data["machine"]["mounts"][1]["name"], "base link");
}

// The run ----------------------------------------------------------------------------------------

host::MotionRow RowAt(std::size_t point, const std::vector<double>& joints)
{
    host::MotionRow row;
    row.point = point;
    row.joints = joints;
    row.asked = {{1.0 + static_cast<double>(point), 2.5, -0.0000004}, {0.0, 0.6, 0.8}};
    row.error = {0.000000002, 0.000000003};
    row.branch = 2;
    return row;
}

/// Z at a length, B and W at angles [rad]: points 0 to 3 on lines 11 to 14, the third of which
/// fails.
class RunPage : public testing::Test
{
  protected:
    RunPage() : machine(MachineOf(kHeadText))
    {
        path.operations = {{"rough", 10, 0, 4, 2.5}, {"", 13, 2, std::nullopt, std::nullopt}};
        for (int i = 0; i < 4; ++i) {
            host::ToolPoint point;
            point.line = 11 + i;
            point.operation = i / 2;
            path.points.push_back(point);
        }
        path.points[1].feed = host::Feed{120.5, host::FeedPer::Minute};
        path.points[2].feed = host::Feed{0.125, host::FeedPer::Revolution};
        report.version = "1.2.3";
        report.machine = {"head.toml", "ab"};
        report.toolpath = {"part.cl", "cd"};
        report.operations = {{"rough", 10, 0, 7, 4, 2.5}, {"", 13, 2, 7, std::nullopt, 0.0}};
    }

    host::ReportRows Rows() const
    {
        // The order of a run's joints is its own: not that of the machine's axes here.
        host::ReportRows rows({&machine.axes[1], &machine.axes[0]}, path, host::LengthUnit::Inch);
        host::MotionRow first = RowAt(0, {-1.5, 0.0});
        first.flags.isRapid = true;
        rows.Add(first);
        host::MotionRow inserted = RowAt(1, {-1.25, host::kPi / 4.0});
        inserted.flags.isInserted = true;
        inserted.flags.isPole = true;
        rows.Add(inserted);
        host::MotionRow second = RowAt(1, {0.12345678, -host::kPi / 2.0});
        second.flags.isAtLimit = true;
        second.flags.isFlip = true;
        rows.Add(second);
        host::MotionRow failed = RowAt(2, {});
        failed.flags.hasFailed = true;
        failed.error = {};
        failed.branch = 0;
        rows.Add(failed);
        host::MotionRow last = RowAt(3, {0.0, 0.0});
        last.flags.isRewind = true;
        rows.Add(last);
        return rows;
    }
    Json Data(const host::ReportRows& rows) const
    {
        const host::ShownRun run{report, rows};
        return Json::parse(TextOf({machine, report.machine, report.version}, &run));
    }
    Json Data() const { return Data(Rows()); }
    static std::vector<double> Wholes(const Json& data, const std::string& name)
    {
        return test::ColumnOf(data, name).wholes;
    }

    host::LoadedMachine machine;
    host::Toolpath path;
    host::RunReport report;
};

TEST_F(RunPage, HasAColumnForEachAxisInItsDecimals)
{
    const Json data = Data();
    EXPECT_EQ(data["kind"], "run");
    EXPECT_EQ(data["run"]["rows"]["count"], 5);
    EXPECT_EQ(data["run"]["rows"]["axes"], (Json{1, 0}));
    // Seven decimals of an inch, six of a degree; the row that failed repeats the one before.
    EXPECT_EQ(Wholes(data, "joint0"),
              (std::vector<double>{-15000000, -12500000, 1234568, 1234568, 0}));
    EXPECT_EQ(Wholes(data, "joint1"), (std::vector<double>{0, 45000000, -90000000, -90000000, 0}));
    EXPECT_EQ(data["run"]["rows"]["columns"]["joint0"]["decimals"], 7);
    EXPECT_EQ(data["run"]["rows"]["columns"]["joint1"]["decimals"], 6);
}

TEST_F(RunPage, HasTheToolAndWhatIsKnownOfEachRow)
{
    const Json data = Data();
    EXPECT_EQ(Wholes(data, "x"),
              (std::vector<double>{10000000, 20000000, 20000000, 30000000, 40000000}));
    EXPECT_EQ(Wholes(data, "z"), (std::vector<double>{-4, -4, -4, -4, -4}));
    EXPECT_EQ(Wholes(data, "i"), (std::vector<double>{0, 0, 0, 0, 0}));
    EXPECT_EQ(Wholes(data, "j")[4], 600000000);
    EXPECT_EQ(Wholes(data, "k")[4], 800000000);
    EXPECT_EQ(Wholes(data, "point"), (std::vector<double>{0, 1, 1, 2, 3}));
    EXPECT_EQ(Wholes(data, "line"), (std::vector<double>{11, 12, 12, 13, 14}));
    EXPECT_EQ(Wholes(data, "flags"), (std::vector<double>{1, 4 + 32, 8 + 64, 2, 16}));
    EXPECT_EQ(Wholes(data, "branch"), (std::vector<double>{2, 2, 2, 0, 2}));
    EXPECT_EQ(Wholes(data, "positionError"), (std::vector<double>{2, 2, 2, 0, 2}));
    EXPECT_EQ(Wholes(data, "directionError"), (std::vector<double>{3, 3, 3, 0, 3}));
    // None before the first, none in lengths a minute where it is per revolution.
    EXPECT_EQ(Wholes(data, "feed"), (std::vector<double>{0, 1205000, 1205000, 0, 0}));
    EXPECT_EQ(data["run"]["rows"]["columns"].size(), 2U + 6U + 4U + 3U);
}

TEST_F(RunPage, ShowsHowFarTheAxesGoWithoutWhatFailed)
{
    EXPECT_EQ(Data()["run"]["ranges"], Json::parse(R"([{"axis": 1, "reached": [-1.5, 0.12345678]},
                              {"axis": 0, "reached": [-90.0, 45.0]}])"));
    host::ReportRows rows({&machine.axes[1]}, path, host::LengthUnit::Inch);
    EXPECT_EQ(Data(rows)["run"]["ranges"], Json::parse(R"([{"axis": 1, "reached": null}])"));
    // With nothing before it, a row that failed stands at 0.
    host::MotionRow failed = RowAt(0, {});
    failed.flags.hasFailed = true;
    rows.Add(failed);
    EXPECT_EQ(Data(rows)["run"]["ranges"], Json::parse(R"([{"axis": 1, "reached": null}])"));
    EXPECT_EQ(Wholes(Data(rows), "joint0"), std::vector<double>{0});
}

TEST_F(RunPage, PointsOperationsAndEventsToTheirRows)
{
    report.events = {{host::EventKind::Flip, 1, 12, "A swings"},
                     {host::EventKind::Failed, 2, 13, "not reached"},
                     {host::EventKind::Limit, 3, 14, "Z is at its limit"}};
    const Json run = Data()["run"];
    EXPECT_EQ(run["operations"], Json::parse(R"([
      {"name": "rough", "line": 10, "firstRow": 0, "stream": 7, "toolNumber": 4,
       "toolLength": 2.5},
      {"name": "", "line": 13, "firstRow": 3, "stream": 7, "toolNumber": null,
       "toolLength": 0}])"));
    // The rows of point 1 begin with the one that is inserted before it.
    EXPECT_EQ(run["events"], Json::parse(R"([
      {"kind": "flip", "point": 1, "line": 12, "row": 1, "sentence": "A swings"},
      {"kind": "failed", "point": 2, "line": 13, "row": 3, "sentence": "not reached"},
      {"kind": "limit", "point": 3, "line": 14, "row": 4, "sentence": "Z is at its limit"}])"));
}

TEST_F(RunPage, TellsWhatTheSummaryTells)
{
    report.command = {"trunnion", "solve"};
    report.seconds = 1.25;
    report.options = {
        {"points_only", false}, {"linear_tol_inch", 0.0005}, {"start", std::string("home")}};
    report.outputs = {{"joints", "part.csv"}, {"report", "part.html"}};
    report.counts = {4, 3, 1, 4, 1};
    report.position = host::ReportedError{2.5e-05, 12};
    const Json run = Data()["run"];
    EXPECT_EQ(run["toolpath"], Json::parse(R"({"file": "part.cl", "sha256": "cd"})"));
    EXPECT_EQ(run["command"], (Json{"trunnion", "solve"}));
    EXPECT_EQ(run["seconds"], 1.25);
    EXPECT_EQ(run["options"], Json::parse(R"([{"name": "points_only", "value": false},
      {"name": "linear_tol_inch", "value": 0.0005}, {"name": "start", "value": "home"}])"));
    EXPECT_EQ(run["outputs"], Json::parse(R"([{"kind": "joints", "path": "part.csv"},
      {"kind": "report", "path": "part.html"}])"));
    EXPECT_EQ(run["counts"], Json::parse(R"({"points": 4, "converged": 3, "failed": 1, "rows": 4,
      "inserted": 1})"));
    EXPECT_EQ(run["worstPosition"], Json::parse(R"({"value": 2.5e-05, "line": 12})"));
    EXPECT_TRUE(run["worstDirection"].is_null());
}

// The page ---------------------------------------------------------------------------------------

TEST_F(RunPage, LetsNoTextOfAFileBecomeMarkup)
{
    const std::string script = "</script><script>alert(1)</script><!--";
    const std::string image = "<img src=x onerror=alert(1)>";
    const std::string separators = "\u2028 \u2029 \u00E4 \\u003c \" \n";
    machine.name = script;
    machine.axes[0].name = image;
    report.operations[0].name = separators;
    report.operations[1].name = "\xFF<b>\xC3";
    report.toolpath.path = script;
    report.command = {image, separators};
    report.events = {{host::EventKind::Failed, 2, 13, script}};
    const host::ReportRows rows = Rows();
    const host::ShownRun run{report, rows};
    const std::string text = TextOf({machine, report.machine, report.version}, &run);
    EXPECT_EQ(text.find('<'), std::string::npos);
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; }));
    const Json data = Json::parse(text);
    EXPECT_EQ(data["machine"]["name"], script);
    EXPECT_EQ(data["machine"]["axes"][0]["name"], image);
    EXPECT_EQ(data["run"]["operations"][0]["name"], separators);
    EXPECT_EQ(data["run"]["operations"][1]["name"], "\uFFFD<b>\uFFFD");
    EXPECT_EQ(data["run"]["toolpath"]["file"], script);
    EXPECT_EQ(data["run"]["command"], (Json{image, separators}));
    EXPECT_EQ(data["run"]["events"][0]["sentence"], script);
}

TEST(Page, HasTheDataWhereItsMarkStands)
{
    const host::LoadedMachine machine = MachineOf(test::MillText());
    const host::ShownMachine shown{machine, {"mill.toml", "ab"}, "1.2.3"};
    std::string page;
    host::WritePage("<html>@TRUNNION_DATA@</html>", shown, nullptr,
                    [&page](std::string_view piece) { page += piece; });
    EXPECT_EQ(page, "<html>" + TextOf(shown, nullptr) + "</html>");
}

} // namespace
