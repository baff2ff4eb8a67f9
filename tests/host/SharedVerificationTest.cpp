// A verification whose work is shared among ranks finds what one rank finds, in the same order,
// whatever is wrong with the table, however many they are and in whatever order they answer.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "RanksInDisorder.h"
#include "mutated/Mutation.h"
#include "support/Random.h"
#include "table/JointTable.h"
#include "table/JointTableReader.h"
#include "table/TableChunk.h"
#include "text/Bytes.h"
#include "verify/ChunkVerification.h"
#include "verify/SharedVerification.h"
#include "verify/Verification.h"

namespace
{

using host::Finding;
using host::FindingKind;
using test::Leaning;
using test::PathText;
using test::PlanRig;

constexpr std::size_t kAllOfThem = 1000000;
constexpr const char* kFile = "joints.csv";

/// What a table is verified with; every rank has one of its own.
struct VerifyRig
{
    explicit VerifyRig(PlanRig ofPlan) : plan(std::move(ofPlan))
    {
        for (std::size_t i = 0; i < plan.streams.size(); ++i) {
            request.tools.push_back({plan.streams[i], plan.toolLengths[i]});
        }
        kinematics = std::make_unique<host::ToolKinematics>(plan.machine, request.Axes());
    }
    VerifyRig(const VerifyRig&) = delete;
    VerifyRig& operator=(const VerifyRig&) = delete;

    host::JointTableReader Reader(std::istream& in) const
    {
        return {in, kFile, request.Axes(), plan.machine.length};
    }

    PlanRig plan;
    host::VerificationRequest request{
        plan.machine, plan.path.operations, {}, plan.options.tolerances, 4};
    std::unique_ptr<host::ToolKinematics> kinematics;
};

/// All that a verification comes to.
struct Outcome
{
    std::string report; // its bytes
    std::array<std::size_t, host::kFindingNames.size()> counts{};
    std::vector<std::string> findings;
    std::string error;
    std::size_t lastPoint{0};

    void Add(const Finding& finding, std::size_t most = kAllOfThem)
    {
        if (++shown[static_cast<std::size_t>(finding.kind)] <= most) {
            findings.push_back(std::to_string(finding.tableLine) + " " +
                               std::to_string(finding.pathLine) + " " + finding.sentence);
        }
    }
    void Take(const host::VerificationReport& of)
    {
        host::ByteWriter bytes;
        bytes.Put(of);
        report = bytes.Take();
        counts = of.findings;
    }

  private:
    std::array<std::size_t, host::kFindingNames.size()> shown{};
};

void ExpectEqual(const Outcome& shared, const Outcome& alone)
{
    EXPECT_EQ(shared.error, alone.error);
    EXPECT_EQ(shared.findings, alone.findings);
    EXPECT_EQ(shared.counts, alone.counts);
    EXPECT_TRUE(shared.report == alone.report);
    EXPECT_EQ(shared.lastPoint, alone.lastPoint);
}

Outcome VerifiedAlone(const VerifyRig& rig, const std::string& text, std::size_t most = kAllOfThem)
{
    Outcome outcome;
    host::Verification verification(rig.request, host::PathWindow(rig.plan.path), *rig.kinematics,
                                    [&](const Finding& finding) { outcome.Add(finding, most); });
    try {
        std::istringstream in(text);
        host::JointTableReader reader = rig.Reader(in);
        for (host::TableRow row; reader.Next(row);) {
            verification.Take(row);
            outcome.lastPoint = row.motion.point;
        }
        verification.Finish();
    } catch (const host::InputError& error) {
        outcome.error = error.what();
    }
    outcome.Take(verification.Report());
    return outcome;
}

struct Sharing
{
    int ranks{3};
    unsigned seed{0};
    std::size_t rowsOfChunk{5};
    std::size_t kept{kAllOfThem};
};

/// A leader and other ranks, which know of the path no more than its operations.
class Crew
{
  public:
    explicit Crew(const std::function<PlanRig()>& make) : leading(make())
    {
        for (int rank = 0; rank < kMost; ++rank) {
            PlanRig rig = make();
            rig.path.points.clear();
            helping.push_back(std::make_unique<VerifyRig>(std::move(rig)));
        }
    }

    const VerifyRig& Leading() const { return leading; }

    Outcome Verified(const std::string& text, const Sharing& sharing)
    {
        numAsked = numAnswered = 0;
        Outcome outcome;
        const host::PathWindow path(leading.plan.path);
        host::Verification verification(
            leading.request, path, *leading.kinematics,
            [&](const Finding& finding) { outcome.Add(finding, sharing.kept); });
        try {
            std::istringstream in(text);
            host::JointTableReader reader = leading.Reader(in);
            host::ChunkVerification own(leading.request, reader.Columns(), *leading.kinematics,
                                        sharing.kept);
            std::vector<host::ChunkVerification> others;
            for (const auto& rig : helping) {
                others.emplace_back(rig->request, reader.Columns(), *rig->kinematics, sharing.kept);
            }
            test::RanksInDisorder ranks(sharing.ranks, sharing.seed,
                                        [&](int rank, const std::string& question) {
                                            return AnswerOf(others.at(rank), question);
                                        });
            host::WorkLeader leader(ranks);
            host::TableCutter cutter(reader.Lines(), sharing.rowsOfChunk);
            host::SharedVerification(verification, own, reader.Columns(), path,
                                     [&](std::size_t point) { outcome.lastPoint = point; })
                .Run(cutter, leader);
            verification.Finish();
        } catch (const host::InputError& error) {
            outcome.error = error.what();
        }
        outcome.Take(verification.Report());
        return outcome;
    }

    std::size_t numAsked{0};
    std::size_t numAnswered{0}; // otherwise than that the leader has to see to it

  private:
    static constexpr int kMost = 7;

    std::string AnswerOf(host::ChunkVerification& rank, const std::string& question)
    {
        std::string answer = rank.Answer(question);
        ++numAsked;
        numAnswered += answer.empty() ? 0 : 1;
        return answer;
    }

    VerifyRig leading;
    std::vector<std::unique_ptr<VerifyRig>> helping;
};

std::string TableOf(PlanRig planned)
{
    const test::Motion motion = planned.Plan();
    const VerifyRig rig(std::move(planned));
    const host::JointTable table(rig.request.Axes(),
                                 {host::LengthUnit::Millimetre, host::AngleUnit::Degree});
    std::string text = table.Header();
    for (const host::MotionRow& row : motion.rows) {
        text += table.Row(row, rig.plan.path.points[row.point].line);
    }
    return text;
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string Joined(const std::vector<std::string>& parts, char behind)
{
    std::string text;
    for (const std::string& part : parts) {
        text += part + behind;
    }
    return text;
}

// Tables ---------------------------------------------------------------------------------------

/// Leans by up to 20 degrees while it winds around the part again and again. Where it is
/// interrupted, some points are rapids, some out of reach.
host::Toolpath WindingPath(bool isInterrupted)
{
    PathText path;
    for (int i = 0; i < 90; ++i) {
        const bool isAway = isInterrupted && i % 29 == 27;
        path.To({isAway ? 5000.0 : 10.0 + 2.0 * std::sin(0.5 * i), 0.2 * i, 0},
                Leaning(i % 31 == 30 ? 0.0 : 12.0 + 8.0 * std::sin(0.7 * i), 13.0 * i),
                i == 0 || (isInterrupted && i % 17 == 0));
    }
    return path.Path();
}

/// Turns, the stretch over the pole, failed points.
PlanRig Winding()
{
    return {test::TableTableText("limits = [-120, 30]", "unlimited = true"), WindingPath(true)};
}

/// The table turns back again and again, away from the part.
PlanRig Rewinding()
{
    PlanRig rig(test::TableTableText("limits = [-120, 30]", "limits = [-200, 200]"),
                WindingPath(false));
    rig.options.rewind = host::RetractPolicy::Retract;
    rig.options.branchChange = host::RetractPolicy::Retract;
    return rig;
}

/// A tool after the other, as long or longer.
PlanRig WithTools()
{
    PathText text;
    for (int i = 0; i < 60; ++i) {
        if (i % 13 == 12) {
            text.NextOperation("NEXT");
        }
        text.To({0.5 * i, 0.2 * i, 0}, Leaning(10.0, 2.0 * i), i % 19 == 0);
    }
    host::Toolpath path = text.Path();
    for (std::size_t i = 0; i < path.operations.size(); ++i) {
        path.operations[i].toolNumber = static_cast<int>(i);
    }
    PlanRig rig(test::TableTableText("limits = [-120, 30]", "unlimited = true"), path);
    rig.toolLengths = {10.0, 10.0, 25.0, 25.0, 5.0};
    return rig;
}

const std::vector<std::function<PlanRig()>> kRigs{Winding, Rewinding, WithTools};

std::size_t CountOf(const std::string& text, const std::string& word)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

TEST(SharedVerification, IsThatOfOneRankWhereverATableIsCut)
{
    std::size_t cutsInside = 0;
    for (const auto& make : kRigs) {
        const std::string text = TableOf(make());
        Crew crew(make);
        const Outcome alone = VerifiedAlone(crew.Leading(), text);
        for (const std::size_t rows : {1U, 2U, 3U, 7U, 40U, 100000U}) {
            for (const int ranks : {2, 3, 7}) {
                const auto seed = static_cast<unsigned>(rows) + static_cast<unsigned>(ranks);
                SCOPED_TRACE(std::to_string(rows) + " rows, " + std::to_string(ranks) + " ranks");
                ExpectEqual(crew.Verified(text, {ranks, seed, rows}), alone);
                // Where there is no place to cut for 16 times as long, it is cut elsewhere.
                cutsInside += crew.numAsked - crew.numAnswered;
            }
        }
    }
    EXPECT_GT(cutsInside, 0U);
}

TEST(SharedVerification, IsOfTablesWithEverythingInThem)
{
    const std::string winding = TableOf(Winding());
    const std::string rewinding = TableOf(Rewinding());
    EXPECT_GT(CountOf(winding, "inserted"), 100U);
    EXPECT_GT(CountOf(winding, "pole"), 0U);
    EXPECT_GT(CountOf(winding, "rapid"), 3U);
    EXPECT_EQ(CountOf(winding, "failed"), 3U);
    EXPECT_EQ(CountOf(rewinding, "rewind"), 6U); // twice out, around and back
    const Crew crew(WithTools);
    const std::string withTools = TableOf(WithTools());
    EXPECT_EQ(VerifiedAlone(crew.Leading(), withTools).findings, std::vector<std::string>{});
}

TEST(SharedVerification, IsDoneByOthersWhereTheTableIsGood)
{
    const std::string text = TableOf(WithTools());
    Crew crew(WithTools);
    const Outcome shared = crew.Verified(text, {7, 1, 3});
    EXPECT_EQ(shared.findings, std::vector<std::string>{});
    EXPECT_GT(crew.numAsked, 10U);
    EXPECT_EQ(crew.numAnswered, crew.numAsked);
}

// Damaged ones ---------------------------------------------------------------------------------

std::string DamagedCell(const std::string& cell, test::Random& random)
{
    switch (random.Below(5)) {
    case 0:
        return "0";
    case 1:
        return cell + "7";
    case 2:
        return "9" + cell;
    case 3:
        return "-" + cell;
    default:
        return random.OneIn(8) ? std::string("x") : cell.substr(0, cell.size() / 2);
    }
}

std::string WithDamagedCell(const std::string& line, test::Random& random)
{
    std::vector<std::string> cells;
    std::istringstream in(line + ",");
    for (std::string cell; std::getline(in, cell, ',');) {
        cells.push_back(cell);
    }
    const auto last = static_cast<int>(cells.size()) - 1;
    if (random.OneIn(3)) {
        const std::vector<std::string> flags{"",       "rapid",          "inserted", "rewind",
                                             "failed", "rapid|inserted", "limit"};
        cells.back() = flags[static_cast<std::size_t>(random.Below(7))];
    } else {
        std::string& cell = cells[static_cast<std::size_t>(random.Below(last))];
        cell = DamagedCell(cell, random);
    }
    std::string damaged = Joined(cells, ',');
    damaged.pop_back();
    return damaged;
}

/// Rows changed, taken out, doubled or swapped, in one to six places.
std::string Damaged(std::vector<std::string> lines, test::Random& random)
{
    for (int places = 1 + random.Below(6); places > 0 && lines.size() > 3; --places) {
        const auto at = lines.begin() + 1 + random.Below(static_cast<int>(lines.size()) - 2);
        switch (random.Below(6)) {
        case 0:
            lines.erase(at);
            break;
        case 1:
            lines.insert(at, *at);
            break;
        case 2:
            std::swap(*at, *(at + 1));
            break;
        case 3:
            std::swap(*at, *(lines.begin() + 1 + random.Below(static_cast<int>(lines.size()) - 1)));
            break;
        default:
            *at = WithDamagedCell(*at, random);
            break;
        }
    }
    return Joined(lines, '\n');
}

/// Damages the tables again and again; tells of what kinds there has been something to find.
template <class Damage>
std::array<std::size_t, host::kFindingNames.size()> FoundIn(int times, std::size_t kept,
                                                            const Damage& damage, int& refused)
{
    std::array<std::size_t, host::kFindingNames.size()> found{};
    test::Random random(11);
    for (const auto& make : kRigs) {
        const std::string good = TableOf(make());
        Crew crew(make);
        for (int i = 0; i < times && !testing::Test::HasFailure(); ++i) {
            const std::string text = damage(good, random);
            const Outcome alone = VerifiedAlone(crew.Leading(), text, kept);
            SCOPED_TRACE(text);
            ExpectEqual(
                crew.Verified(text, {2 + random.Below(6), static_cast<unsigned>(random.Below(1000)),
                                     static_cast<std::size_t>(1 + random.Below(30)), kept}),
                alone);
            refused += alone.error.empty() ? 0 : 1;
            std::transform(found.begin(), found.end(), alone.counts.begin(), found.begin(),
                           std::plus<>());
        }
    }
    return found;
}

TEST(SharedVerification, FindsTheSameInDamagedRows)
{
    int refused = 0;
    const auto found = FoundIn(
        150, kAllOfThem,
        [](const std::string& good, test::Random& random) {
            return Damaged(LinesOf(good), random);
        },
        refused);
    for (std::size_t kind = 0; kind < found.size(); ++kind) {
        EXPECT_GT(found[kind], 0U) << host::kFindingNames[kind];
    }
    EXPECT_GT(refused, 30);
}

TEST(SharedVerification, FindsTheSameInDamagedText)
{
    int refused = 0;
    FoundIn(
        80, kAllOfThem,
        [](const std::string& good, test::Random& random) { return test::Mutated({good}, random); },
        refused);
    EXPECT_GT(refused, 30);
}

/// What is sent of a chunk is bounded; what is counted is not.
TEST(SharedVerification, KeepsTheFirstOfEachKind)
{
    int refused = 0;
    const auto found = FoundIn(
        10, 2,
        [](const std::string& good, test::Random& random) {
            std::vector<std::string> lines = LinesOf(good);
            for (auto line = lines.begin() + 1; line != lines.end(); ++line) {
                const std::size_t from = line->find(',', line->find(',') + 1) + 1;
                if ((*line)[from] != ',' && !random.OneIn(3)) {
                    line->replace(from, line->find(',', from) - from, "250");
                }
            }
            return Joined(lines, '\n');
        },
        refused);
    EXPECT_GT(found[static_cast<std::size_t>(FindingKind::Point)], 500U);
    EXPECT_EQ(refused, 0);
}

TEST(SharedVerification, StopsWhereTheTextDoes)
{
    const std::string good = TableOf(WithTools());
    Crew crew(WithTools);
    const std::string nul(1, '\0');
    for (const std::string& text :
         {std::string(), good.substr(0, good.find('\n')), good.substr(0, good.find('\n') + 1),
          good + "\n", good.substr(0, good.size() - 1), good + nul, good + std::string(70000, '1'),
          good.substr(0, 3000) + nul + good.substr(3000)}) {
        SCOPED_TRACE(text.size());
        ExpectEqual(crew.Verified(text, {3, 1, 4}), VerifiedAlone(crew.Leading(), text));
    }
}

} // namespace
