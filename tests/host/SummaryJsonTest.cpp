#include <string>

#include <gtest/gtest.h>

#include "TempFolder.h"
#include "app/FileDigest.h"
#include "app/SummaryJson.h"
#include "text/InputError.h"

namespace
{

host::RunReport FullReport()
{
    host::RunReport report;
    report.version = "1.2.3";
    report.command = {"trunnion", "solve"};
    report.machine = {"mill.toml", "ab"};
    report.machineName = "A \"mill\"";
    report.toolpath = {"part.cl", "cd"};
    report.outputs = {{"joints", "part.csv"}, {"gcode", "part.ngc"}};
    report.lengthUnit = "mm";
    report.angleUnit = "deg";
    report.streams = {{2, "spindle", "table"}};
    report.options = {{"points_only", false},
                      {"max_iterations", 100},
                      {"linear_tolerance_mm", 0.1},
                      {"start", std::string("home")}};
    report.counts = {5, 4, 1, 7, 3};
    report.position = host::ReportedError{2.5e-05, 12};
    report.direction_deg = host::ReportedError{1.0 / 3.0, 13};
    report.axes = {
        {"X", false, "X", 1, "mm", host::ReportedRange{-300, 300.5}, host::ReportedRange{-1, 2}},
        {"C", true, "B", -1, "deg", std::nullopt, std::nullopt}};
    report.events = {{host::EventKind::Rewind, 4, 17, "C is turned back"}};
    report.seconds = 1.25;
    return report;
}

TEST(SummaryJson, HasEverythingInAFixedOrder)
{
    EXPECT_EQ(host::ToJson(FullReport()), R"({
  "program": {
    "name": "trunnion",
    "version": "1.2.3"
  },
  "command": [
    "trunnion",
    "solve"
  ],
  "machine": {
    "file": "mill.toml",
    "sha256": "ab",
    "name": "A \"mill\""
  },
  "toolpath": {
    "file": "part.cl",
    "sha256": "cd"
  },
  "outputs": [
    {
      "kind": "joints",
      "file": "part.csv"
    },
    {
      "kind": "gcode",
      "file": "part.ngc"
    }
  ],
  "units": {
    "length": "mm",
    "angle": "deg"
  },
  "streams": [
    {
      "id": 2,
      "tool": "spindle",
      "part": "table"
    }
  ],
  "options": {
    "points_only": false,
    "max_iterations": 100,
    "linear_tolerance_mm": 0.1,
    "start": "home"
  },
  "counts": {
    "points": 5,
    "converged": 4,
    "failed": 1,
    "rows": 7,
    "inserted": 3
  },
  "worst_position": {
    "value": 2.5e-05,
    "unit": "mm",
    "line": 12
  },
  "worst_direction": {
    "value": 0.3333333333333333,
    "unit": "deg",
    "line": 13
  },
  "axes": [
    {
      "name": "X",
      "type": "linear",
      "word": "X",
      "word_sign": 1,
      "unit": "mm",
      "limits": [
        -300.0,
        300.5
      ],
      "reached": [
        -1.0,
        2.0
      ]
    },
    {
      "name": "C",
      "type": "rotary",
      "word": "B",
      "word_sign": -1,
      "unit": "deg",
      "limits": null,
      "reached": null
    }
  ],
  "events": [
    {
      "kind": "rewind",
      "n": 5,
      "line": 17,
      "sentence": "C is turned back"
    }
  ],
  "seconds": 1.25
}
)");
}

TEST(SummaryJson, KeepsEmptyListsAndSaysNullForWhatIsNotThere)
{
    const std::string json = host::ToJson({});
    EXPECT_NE(json.find("\"command\": [],\n"), std::string::npos) << json;
    EXPECT_NE(json.find("\"options\": {},\n"), std::string::npos);
    EXPECT_NE(json.find("\"worst_position\": null,\n"), std::string::npos);
    EXPECT_NE(json.find("\"worst_direction\": null,\n"), std::string::npos);
    EXPECT_NE(json.find("\"axes\": [],\n"), std::string::npos);
    EXPECT_NE(json.find("\"events\": [],\n"), std::string::npos);
}

TEST(SummaryJson, IsJsonWhateverTheFilesAreCalled)
{
    host::RunReport report;
    report.toolpath.path = "a\"b\\\n\xFF\xC3\xA4.cl";
    // 0xFF is no UTF-8, the character behind it is.
    EXPECT_NE(host::ToJson(report).find("\"file\": \"a\\\"b\\\\\\n\xEF\xBF\xBD\xC3\xA4.cl\""),
              std::string::npos)
        << host::ToJson(report);
}

TEST(SummaryJson, TellsHowTheWorkWasShared)
{
    host::RunReport report = FullReport();
    report.sharing = host::ReportedSharing{3, 70, 20, 0.25, 0.125, 1000, 2000};
    const std::string json = host::ToJson(report);
    EXPECT_EQ(json.substr(json.find("  \"seconds\"")), R"(  "seconds": 1.25,
  "ranks": {
    "count": 3,
    "tasks": 70,
    "tasks_of_rank_0": 20,
    "task_seconds_of_rank_0": 0.25,
    "wait_seconds_of_rank_0": 0.125,
    "sent_bytes": 1000,
    "received_bytes": 2000
  }
}
)");
}

TEST(FileDigest, IsTheSha256OfTheContent)
{
    const test::TempFolder folder;
    // The examples of FIPS 180-2: nothing, "abc", and a million times "a".
    EXPECT_EQ(host::FileDigest(folder.Write("empty", "")),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(host::FileDigest(folder.Write("abc", "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(host::FileDigest(folder.Write("million", std::string(1000000, 'a'))),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(FileDigest, SaysWhichFileCannotBeRead)
{
    const test::TempFolder folder;
    const std::string place = (folder.Path() / "gone").string();
    try {
        host::FileDigest(place);
        FAIL() << "no error";
    } catch (const host::InputError& error) {
        EXPECT_EQ(error.File(), place);
    }
}

} // namespace
