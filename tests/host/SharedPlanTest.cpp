// A plan whose work is shared among ranks comes to the same motion, bit for bit, however many there
// are and in whatever order they answer.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "RanksInDisorder.h"
#include "planner/BuiltStretch.h"
#include "planner/PathPlan.h"
#include "planner/PlanAssistant.h"
#include "ranks/SharedWork.h"
#include "text/Bytes.h"

namespace
{

using host::PathPlan;
using test::Leaning;
using test::PathText;
using test::PlanRig;
using test::RanksInDisorder;

/// Everything that a motion consists of, in its order.
struct Record
{
    std::string bytes;
    std::string text;
    std::size_t points{0};

    PathPlan::Takers Takers()
    {
        return {[this](const host::MotionRow& row) {
                    host::ByteWriter writer;
                    Put(writer, row);
                    bytes += writer.Bytes();
                },
                [this](const host::Event& event) {
                    host::ByteWriter writer;
                    writer.Put(event.kind);
                    writer.Put(event.point);
                    writer.Put(event.line);
                    writer.PutText(event.sentence);
                    bytes += writer.Bytes();
                },
                [this](std::size_t point) {
                    points = point;
                    return true;
                },
                [this](std::string_view some) { text += some; }};
    }
};

/// With a text that tells rows apart.
host::PlanRequest RequestOf(const PlanRig& rig)
{
    host::PlanRequest request = rig.Request();
    request.rowText = [](const host::MotionRow& row, int line, std::string& text) {
        text += std::to_string(row.point) + "," + std::to_string(line) + "," +
                std::to_string(row.joints.size()) + "\n";
    };
    return request;
}

std::string PlannedAlone(const PlanRig& rig)
{
    PathPlan plan(RequestOf(rig));
    for (std::size_t block = 0; block < plan.NumBlocks(); ++block) {
        plan.Append(plan.FindBlock(block));
    }
    Record record;
    EXPECT_TRUE(plan.Build(record.Takers()));
    return record.bytes + record.text;
}

/// Another rank has a machine of its own and no points.
struct Helping
{
    explicit Helping(PlanRig ofPlan) : rig(std::move(ofPlan)), request(RequestOf(rig))
    {
        rig.path.points.clear();
    }
    std::string Answer(const std::string& question)
    {
        host::ByteWriter answer;
        assistant.Answer(question, answer);
        return answer.Take();
    }
    Helping(const Helping&) = delete;
    Helping& operator=(const Helping&) = delete;

    PlanRig rig;
    host::PlanRequest request;
    host::PlanAssistant assistant{request};
};

std::string PlannedBy(int ranks, unsigned seed, const std::function<PlanRig()>& make,
                      std::size_t& numAsked)
{
    const PlanRig rig = make();
    std::vector<std::unique_ptr<Helping>> helping;
    for (int rank = 0; rank < ranks; ++rank) {
        helping.push_back(std::make_unique<Helping>(make()));
    }
    RanksInDisorder others(ranks, seed, [&](int rank, const std::string& question) {
        return helping[static_cast<std::size_t>(rank)]->Answer(question);
    });
    host::WorkLeader leader(others);
    PathPlan plan(RequestOf(rig));
    EXPECT_TRUE(plan.FindShared(leader, [](std::size_t) { return true; }));
    Record record;
    EXPECT_TRUE(plan.Build(record.Takers(), &leader));
    numAsked = others.numAsked;
    return record.bytes + record.text;
}

void ExpectTheSame(const std::function<PlanRig()>& make)
{
    const std::string alone = PlannedAlone(make());
    for (const int ranks : {2, 3, 7}) {
        for (int seed = 0; seed < 3; ++seed) {
            std::size_t numAsked = 0;
            ASSERT_EQ(PlannedBy(ranks, static_cast<unsigned>(seed), make, numAsked), alone)
                << ranks << " ranks, seed " << seed;
            EXPECT_GT(numAsked, 5U);
        }
    }
}

/// Turns that grow, rapids, points out of reach, and the pole again and again.
host::Toolpath WindingPath()
{
    PathText path;
    for (int i = 0; i < 1500; ++i) {
        const double tilt = std::fabs(25.0 * std::sin(0.013 * i));
        path.To({i % 391 == 390 ? 5000.0 : 20.0 + 10.0 * std::sin(0.05 * i), 0.05 * i, 0},
                Leaning(i % 700 == 699 ? 0.0 : tilt, 2.5 * i), i % 333 == 0);
    }
    return path.Path();
}

TEST(SharedPlan, IsThatOfOneRankWithoutLimitsOnTurns)
{
    ExpectTheSame([] {
        return PlanRig(test::TableTableText("limits = [-120, 30]", "unlimited = true"),
                       WindingPath());
    });
}

TEST(SharedPlan, IsThatOfOneRankWhereAxesTurnBack)
{
    ExpectTheSame([] {
        PlanRig rig(test::TableTableText("limits = [-120, 30]", "limits = [-400, 400]"),
                    WindingPath());
        rig.options.rewind = host::RetractPolicy::Retract;
        rig.options.branchChange = host::RetractPolicy::Retract;
        return rig;
    });
}

TEST(SharedPlan, IsThatOfOneRankWherePointsFail)
{
    ExpectTheSame([] {
        return PlanRig(test::TableTableText("limits = [-18, 12]", "limits = [-200, 200]"),
                       WindingPath());
    });
}

/// At azimuth 90 the part's place is 340 to the side, past the limit of 300: there is no way from
/// 50 to 130. A rank that answers for the points behind cannot know that.
TEST(SharedPlan, IsThatOfOneRankWhereAWayFailsAtTheEndOfAStretch)
{
    ExpectTheSame([] {
        PathText path;
        for (int i = 0; i < 1500; ++i) {
            const bool isLastOfStretch = i % 128 == 127;
            path.To({340, 0.01 * i, 0},
                    Leaning(20, isLastOfStretch ? 130.0 : 50.0 * std::sin(0.01 * i)));
        }
        return PlanRig(test::TableTableText("limits = [-120, 30]", "unlimited = true"),
                       path.Path());
    });
}

/// Axes to spare: each solution is followed by one rank from block to block, and what is lost on
/// the way, at the limits and past the pole, is sought by the leader.
TEST(SharedPlan, IsThatOfOneRankWithAnAxisToSpare)
{
    for (const std::string& machine : {test::QuillText(), test::TiltingPartText()}) {
        const auto make = [&machine] {
            PathText path;
            for (int i = 0; i < 600; ++i) {
                const double tilt = i % 70 == 69 ? 0.0 : 40.0 * std::sin(0.05 * i);
                path.To({i % 111 == 110 ? 5000.0 : 20.0 * std::cos(0.03 * i), 0.1 * i, 0},
                        Leaning(tilt, 1.5 * i), i % 90 == 0);
            }
            return PlanRig(machine, path.Path());
        };
        PathPlan plan(RequestOf(make()));
        ASSERT_EQ(plan.NumBlocks(), 5U);
        ExpectTheSame(make);
    }
}

TEST(SharedPlan, EndsWhenItMayNotGoOnAndGoesOnAlone)
{
    const auto make = [] {
        return PlanRig(test::TableTableText("limits = [-120, 30]", "unlimited = true"),
                       WindingPath());
    };
    const PlanRig rig = make();
    Helping help(make());
    RanksInDisorder others(
        2, 1, [&](int /*rank*/, const std::string& question) { return help.Answer(question); });
    host::WorkLeader leader(others);
    PathPlan plan(RequestOf(rig));
    EXPECT_FALSE(plan.FindShared(leader, [](std::size_t appended) { return appended < 3; }));
    EXPECT_EQ(plan.NumAppended(), 3U);
    EXPECT_TRUE(plan.FindShared(leader, [](std::size_t) { return true; }));
    EXPECT_EQ(plan.NumAppended(), plan.NumBlocks());
    Record record;
    EXPECT_TRUE(plan.Build(record.Takers()));
    EXPECT_EQ(record.bytes + record.text, PlannedAlone(make()));
}

TEST(WorkLeader, DoesByItselfWhatOthersCannot)
{
    RanksInDisorder others(
        3, 5, [](int /*rank*/, const std::string& question) { return question + question; });
    host::WorkLeader leader(others);
    std::vector<std::string> taken;
    std::vector<std::size_t> prepared;
    std::vector<std::size_t> own;
    host::SharedWork<std::string> work;
    work.first = 2;
    work.end = 60;
    work.prepare = [&](std::size_t task) { prepared.push_back(task); };
    work.question = [](std::size_t task) {
        return task % 10 == 0 ? std::string() : std::to_string(task);
    };
    work.work = [&](std::size_t task) {
        own.push_back(task);
        return std::to_string(task) + std::to_string(task);
    };
    work.unpack = [](std::size_t /*task*/, std::string_view answer) { return std::string(answer); };
    work.take = [&](std::size_t /*task*/, std::string result) {
        taken.push_back(std::move(result));
    };
    work.mayGoOn = [] { return true; };
    ASSERT_TRUE(leader.Run(work));
    ASSERT_EQ(taken.size(), 58U);
    for (std::size_t i = 0; i < taken.size(); ++i) {
        EXPECT_EQ(taken[i], std::to_string(i + 2) + std::to_string(i + 2));
        EXPECT_EQ(prepared[i], i + 2);
    }
    for (const std::size_t task : {10U, 20U, 30U, 40U, 50U}) {
        EXPECT_EQ(std::count(own.begin(), own.end(), task), 1) << task;
    }
}

} // namespace
