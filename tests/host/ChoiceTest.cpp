// The least costly motion, against a search through everything that might be chosen.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "planner/Candidates.h"
#include "planner/Choice.h"
#include "planner/JointSpace.h"
#include "planner/Workplace.h"
#include "support/Repeat.h"

namespace
{

using host::kPi;
using host::Toolpath;
using host::ToRadians;
using host::Vec3;
using test::kRapid;
using test::Leaning;
using test::PathText;
using test::PlanRig;

constexpr double kWhole = 2.0 * kPi;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The planner's side -------------------------------------------------------------------------

/// The planner's choice on a rig, with what it stands on.
class Chosen
{
  public:
    explicit Chosen(const PlanRig& rig)
        : place(rig.machine, *rig.streams.front(), rig.path,
                host::PathTargets(host::PathWindow(rig.path)), rig.toolLengths, rig.options,
                rig.settings),
          table(place.Axes(), host::CandidateFinder::kBlockPoints,
                host::CandidateTable::Joint::ByExits)
    {
        const std::size_t size = host::CandidateFinder::kBlockPoints;
        for (std::size_t first = 0; first < place.NumPoints(); first += size) {
            const std::size_t end = std::min(first + size, place.NumPoints());
            table.Append(host::CandidateFinder(place).FindBlock(first, end));
        }
        host::MotionSearch search(place, table);
        search.GoOn();
        choice.emplace(place, table, search.Best());
    }

    explicit Chosen(PlanRig&&) = delete; // it looks at the rig

    const host::Choice* operator->() const { return &*choice; }
    double ValueAt_deg(std::size_t point, std::size_t axis) const
    {
        return host::ToDegrees(choice->StateAt(point).value().joints[axis]);
    }

  private:
    host::Workplace place;
    host::CandidateTable table;
    std::optional<host::Choice> choice;
};

// The test's own side ------------------------------------------------------------------------

/// Two rotary axes as the drawings show them: [tilt, turn], both branches of a direction.
struct Kinematics
{
    const char* tilt;
    const char* turn;
    std::string (*text)(const std::string& ofTilt, const std::string& ofTurn);
    /// The turn at a direction, with the tilt on the side of `sign`.
    double (*turnAt)(const Vec3& direction, double sign);
};

double TurnOfTableTable(const Vec3& d, double sign) // d = (sin A sin C, sin A cos C, cos A)
{
    return std::atan2(sign * d[0], sign * d[1]);
}
double TurnOfHeadTable(const Vec3& d, double sign) // d = (sin B cos C, -sin B sin C, cos B)
{
    return std::atan2(-sign * d[1], sign * d[0]);
}
double TurnOfHeadHead(const Vec3& d, double sign) // d = (sin C sin A, -cos C sin A, cos A)
{
    return std::atan2(sign * d[0], -sign * d[1]);
}
std::string HeadHeadByTilt(const std::string& ofTilt, const std::string& ofTurn)
{
    return test::HeadHeadText(ofTurn, ofTilt);
}

const std::array<Kinematics, 3> kKinematics{{
    {"A", "C", test::TableTableText, TurnOfTableTable},
    {"B", "C", test::HeadTableText, TurnOfHeadTable},
    {"A", "C", HeadHeadByTilt, TurnOfHeadHead},
}};

/// Where the two axes stand [rad].
struct Stand
{
    double tilt;
    double turn;
};

struct AxisRange
{
    double low{-kInfinity}; //!< [rad]
    double high{kInfinity}; //!< [rad]

    bool IsUnlimited() const { return std::isinf(low); }
    bool Holds(double value) const { return low <= value && value <= high; }
    std::string Text() const
    {
        return IsUnlimited() ? test::kUnlimited
                             : "limits = [" + std::to_string(host::ToDegrees(low)) + ", " +
                                   std::to_string(host::ToDegrees(high)) + "]";
    }
};

double ShortWay(double turn)
{
    return turn - kWhole * std::round(turn / kWhole);
}

/// What is to be found: a path, two ranges, and what a motion costs.
struct Problem
{
    const Kinematics* kinematics;
    AxisRange tilt;
    AxisRange turn;
    Toolpath path;
    host::CostWeights weights;
    std::optional<bool> prefersPositiveTilt;
    bool startsFree{false};
    double cone{ToRadians(2.0)};

    double Travel(const Stand& from, const Stand& to, double turnWeight) const
    {
        const double turned = to.turn - from.turn;
        return weights.travel * std::fabs(to.tilt - from.tilt) +
               turnWeight * std::fabs(turn.IsUnlimited() ? ShortWay(turned) : turned);
    }
    /// Nearness to limits counts in the last twentieth of a range, and grows with its square.
    double AtLimit(const AxisRange& range, double value) const
    {
        if (range.IsUnlimited()) {
            return 0.0;
        }
        const double zone = (range.high - range.low) / 20.0;
        const double depth = 1.0 - std::min(value - range.low, range.high - value) / zone;
        return depth > 0.0 ? weights.limits * depth * depth : 0.0;
    }
    double StandAt(const Stand& at) const
    {
        const bool isOther = prefersPositiveTilt && (at.tilt > 0.0) != *prefersPositiveTilt;
        return AtLimit(tilt, at.tilt) + AtLimit(turn, at.turn) +
               (isOther ? weights.preference : 0.0);
    }
    bool IsInCone(std::size_t point) const
    {
        return path.points[point].direction[2] >= std::cos(cone);
    }
};

/// Successive points with neither a rapid nor the pole between them: one branch, no whole turns.
struct Run
{
    std::size_t first;
    std::size_t end;
    bool isOverPole; //!< reached over the pole; by a rapid otherwise
};

std::vector<Run> RunsOf(const Toolpath& path)
{
    std::vector<Run> runs;
    for (std::size_t point = 0; point < path.points.size(); ++point) {
        const Vec3& at = path.points[point].direction;
        bool isOverPole = false;
        if (point > 0) {
            // The tests' paths cross the pole straight, from one side to the other.
            const Vec3& before = path.points[point - 1].direction;
            const double across = before[0] * at[1] - before[1] * at[0];
            isOverPole = std::fabs(across) < 1e-12 && before[0] * at[0] + before[1] * at[1] < 0.0;
        }
        if (point == 0 || path.points[point].isRapid || isOverPole) {
            runs.push_back({point, point, isOverPole && !path.points[point].isRapid});
        }
        runs.back().end = point + 1;
    }
    return runs;
}

/// A way through one run, and its cost inside.
struct Option
{
    std::vector<Stand> stands;
    double cost;
};

std::vector<Option> OptionsOf(const Problem& problem, const Run& run)
{
    std::vector<Option> options;
    for (const double sign : {1.0, -1.0}) {
        const auto tiltAt = [&](std::size_t point) {
            return sign * std::acos(problem.path.points[point].direction[2]);
        };
        const auto turnAt = [&](std::size_t point) {
            return problem.kinematics->turnAt(problem.path.points[point].direction, sign);
        };
        for (int turns = -3; turns <= 3; ++turns) {
            if (problem.turn.IsUnlimited() && turns != 0) {
                continue;
            }
            Option option{{{tiltAt(run.first), turnAt(run.first) + turns * kWhole}}, 0.0};
            for (std::size_t point = run.first + 1; point < run.end; ++point) {
                const Stand& before = option.stands.back();
                const Stand next{tiltAt(point),
                                 before.turn + ShortWay(turnAt(point) - before.turn)};
                const bool isInCone = problem.IsInCone(point - 1) || problem.IsInCone(point);
                option.cost += problem.Travel(
                    before, next, problem.weights.travel + (isInCone ? problem.weights.pole : 0.0));
                option.stands.push_back(next);
            }
            const bool isWithin =
                std::all_of(option.stands.begin(), option.stands.end(), [&](const Stand& stand) {
                    return problem.tilt.Holds(stand.tilt) && problem.turn.Holds(stand.turn);
                });
            for (const Stand& stand : option.stands) {
                option.cost += problem.StandAt(stand);
            }
            if (isWithin) {
                options.push_back(std::move(option));
            }
        }
    }
    return options;
}

/// Tries every combination.
class Exhaustive
{
  public:
    explicit Exhaustive(const Problem& of) : problem(of), runs(RunsOf(of.path))
    {
        for (const Run& run : runs) {
            options.push_back(OptionsOf(problem, run));
        }
        chosen.resize(runs.size());
        Try(0, 0.0);
    }

    bool IsThere() const { return best < kInfinity; }
    double Cost() const { return best; }
    std::size_t NumRuns() const { return runs.size(); }
    std::size_t NumTried() const { return tried; }
    /// Where the axes stand at each point.
    std::vector<Stand> Stands() const
    {
        std::vector<Stand> all;
        for (const Option* option : bestChosen) {
            all.insert(all.end(), option->stands.begin(), option->stands.end());
        }
        return all;
    }

  private:
    void Try(std::size_t run, double sum)
    {
        if (run == runs.size()) {
            ++tried;
            if (sum < best) {
                best = sum;
                bestChosen = chosen;
            }
            return;
        }
        for (const Option& option : options[run]) {
            chosen[run] = &option;
            Try(run + 1, sum + option.cost + LinkCost(run, option.stands.front()));
        }
    }
    double LinkCost(std::size_t run, const Stand& to) const
    {
        const double travel = problem.weights.travel;
        if (run == 0) {
            return problem.startsFree ? 0.0 : problem.Travel({0.0, 0.0}, to, travel);
        }
        const double pole = runs[run].isOverPole ? problem.weights.pole : 0.0;
        return problem.Travel(chosen[run - 1]->stands.back(), to, travel + pole);
    }

    const Problem& problem;
    std::vector<Run> runs;
    std::vector<std::vector<Option>> options;
    std::vector<const Option*> chosen;
    std::vector<const Option*> bestChosen;
    double best{kInfinity};
    std::size_t tried{0};
};

PlanRig RigFor(const Problem& problem)
{
    PlanRig rig(problem.kinematics->text(problem.tilt.Text(), problem.turn.Text()), problem.path);
    rig.options.weights = problem.weights;
    rig.options.poleCone = problem.cone;
    rig.options.start = problem.startsFree ? host::StartPolicy::Free : host::StartPolicy::Home;
    if (problem.prefersPositiveTilt) {
        rig.options.preference = {&rig.AxisNamed(problem.kinematics->tilt),
                                  *problem.prefersPositiveTilt};
    }
    return rig;
}

/// The planner finds what the search finds: the same cost, and every axis where the search has it.
void ExpectBestMotion(const Problem& problem, const Exhaustive& search)
{
    const PlanRig rig = RigFor(problem);
    const Chosen chosen(rig);
    ASSERT_EQ(chosen->Cost().breaks, 0U);
    ASSERT_NEAR(chosen->Cost().sum, search.Cost(), 1e-9 * search.Cost());
    const std::size_t tilt = rig.IndexOf(problem.kinematics->tilt);
    const std::size_t turn = rig.IndexOf(problem.kinematics->turn);
    const std::vector<Stand> stands = search.Stands();
    for (std::size_t point = 0; point < stands.size(); ++point) {
        const auto state = chosen->StateAt(point);
        ASSERT_TRUE(state);
        const double turned = state->joints[turn] - stands[point].turn;
        ASSERT_NEAR(state->joints[tilt], stands[point].tilt, 1e-9) << "point " << point;
        ASSERT_NEAR(problem.turn.IsUnlimited() ? ShortWay(turned) : turned, 0.0, 1e-9)
            << "point " << point;
    }
}

/// Wanders with a bias that winds the turning axis up; now and then a rapid, now and then straight
/// over the pole.
Toolpath RandomPath(test::Random& random, std::size_t numPoints, std::size_t numRuns)
{
    PathText text;
    double tilt = random.Between(5, 60);
    double azimuth = random.Between(-180, 180);
    double wind = random.Between(-6, 6);
    std::size_t runs = 1;
    for (std::size_t i = 0; i < numPoints; ++i) {
        const bool mayPart = i > 0 && runs < numRuns;
        bool isRapid = i == 0;
        if (mayPart && random.OneIn(30)) {
            isRapid = true;
            azimuth = random.Between(-180, 180);
            wind = random.Between(-6, 6);
            ++runs;
        } else if (mayPart && tilt < 15 && random.OneIn(10)) {
            azimuth += 180; // over the pole
            ++runs;
        } else {
            azimuth += wind + random.Between(-2, 2);
        }
        tilt = std::clamp(tilt + random.Between(-3, 3), 0.3, 75.0);
        text.To({random.Between(-40, 40), random.Between(-40, 40), random.Between(0, 30)},
                Leaning(tilt, azimuth), isRapid);
    }
    return text.Path();
}

Problem RandomProblem(test::Random& random, const AxisRange& turn)
{
    Problem problem;
    problem.kinematics = &kKinematics[static_cast<std::size_t>(random.Below(3))];
    problem.tilt = random.OneIn(2) ? AxisRange{ToRadians(-120), ToRadians(30)}
                                   : AxisRange{ToRadians(-100), ToRadians(100)};
    problem.turn = turn;
    problem.path = RandomPath(random, 200, 6);
    problem.weights.limits = random.Between(0, 3);
    problem.weights.pole = random.Between(0, 2);
    if (random.OneIn(2)) {
        problem.prefersPositiveTilt = random.OneIn(2);
        problem.weights.preference = random.Between(0, 0.3);
        // Without a start or a side, a motion may cost as much as its mirror image.
        problem.startsFree = random.OneIn(2);
    }
    return problem;
}

/// Compares on random paths; counts those on which there is a motion without a break.
void CompareOnRandomPaths(long cases, std::uint64_t seed, const AxisRange& turn, long& compared)
{
    test::Repeat(cases, seed, [&](test::Random& random) {
        const Problem problem = RandomProblem(random, turn);
        const Exhaustive search(problem);
        if (search.IsThere()) {
            ++compared;
            ExpectBestMotion(problem, search);
        } else {
            const PlanRig rig = RigFor(problem);
            EXPECT_GT(Chosen(rig)->Cost().breaks, 0U);
        }
    });
}

TEST(Choice, IsTheBestOfAllOnRandomPaths)
{
    long compared = 0;
    CompareOnRandomPaths(8, 1, {}, compared);
    EXPECT_GE(compared, 3);
}

TEST(Choice, IsTheBestOfAllWhereAnAxisHasBarelyMoreThanATurn)
{
    long compared = 0;
    CompareOnRandomPaths(8, 2, {ToRadians(-200), ToRadians(200)}, compared);
    EXPECT_GE(compared, 3);
}

TEST(Choice, IsTheBestOfAllWhereAnAxisHasSeveralTurns)
{
    long compared = 0;
    CompareOnRandomPaths(8, 3, {ToRadians(-400), ToRadians(400)}, compared);
    EXPECT_GE(compared, 3);
}

// By hand ------------------------------------------------------------------------------------

// On the tilting table d = (sin A sin C, sin A cos C, cos A): a direction that leans towards
// azimuth 90 - C is met by A positive at C, and by A negative at C + 180.
Vec3 ForTable(double a_deg, double c_deg)
{
    return Leaning(a_deg, 90.0 - c_deg);
}

/// From one turn to another in steps of ten degrees at the most, or of `step_deg`.
void Wind(PathText& path, double a_deg, double from_deg, double to_deg, double step_deg = 10.0)
{
    const int steps = static_cast<int>(std::ceil(std::fabs(to_deg - from_deg) / step_deg));
    for (int i = 1; i <= steps; ++i) {
        path.To({10, 0, 0}, ForTable(a_deg, from_deg + (to_deg - from_deg) * i / steps));
    }
}

constexpr const char* kTiltsOneWay = "limits = [5, 30]\ninitial = 10";
constexpr const char* kTiltsFar = "limits = [-120, 30]";

PlanRig TableRig(const std::string& ofA, const std::string& ofC, const PathText& path)
{
    PlanRig rig(test::TableTableText(ofA, ofC), path.Path());
    rig.options.weights.limits = 0.0;
    return rig;
}

constexpr std::size_t kA = 3; // of the tilting table's X Y Z A C
constexpr std::size_t kC = 4;

double Cost_deg(const Chosen& chosen)
{
    return host::ToDegrees(chosen->Cost().sum);
}

TEST(Choice, UnwindsALimitedAxisAtARapid)
{
    // A stays positive. C runs up to 170, and on to 270 where it may not go: it is a turn lower
    // behind the rapid. A 10, then C 170, 360 back and 100 on.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 170);
    path.To({10, 0, 50}, ForTable(20, 170), kRapid);
    Wind(path, 20, 170, 270);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]", path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_NEAR(Cost_deg(chosen), 10 + 170 + 360 + 100, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(0, kC), 0, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(17, kC), 170, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(18, kC), -190, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(28, kC), -90, 1e-9);
}

TEST(Choice, WindsBackBeforeALongCut)
{
    // 700 degrees in one cut are there from -360 to 340 alone.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 700);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-400, 400]", path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_NEAR(Cost_deg(chosen), 10 + 360 + 700, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(0, kC), -360, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(70, kC), 340, 1e-9);
}

TEST(Choice, StartsOnTheFartherBranchForTheSakeOfWhatComes)
{
    // A 20 with C 0 would be next to the start, but the cut ends at a tilt of 60: A -60, as A does
    // not go beyond 30. A 20 and C 180, then A 40.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    for (int tilt = 24; tilt <= 60; tilt += 4) {
        path.To({10, 0, 0}, ForTable(tilt, 0));
    }
    const PlanRig rig = TableRig(kTiltsFar, test::kUnlimited, path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_NEAR(Cost_deg(chosen), 20 + 180 + 40, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(0, kA), -20, 1e-9);
    EXPECT_NEAR(chosen.ValueAt_deg(10, kA), -60, 1e-9);
}

TEST(Choice, ChangesBranchAtARapid)
{
    // As above with a rapid in between, and A positive preferred: A 20, then A 80 and C 180 at the
    // rapid; or A 20 and C 180 first and A 40 at the rapid, which saves 40 degrees = 0.698 rad and
    // has two points more on the wrong side.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid).To({20, 0, 0}, ForTable(20, 0));
    path.To({20, 0, 0}, ForTable(60, 0), kRapid).To({30, 0, 0}, ForTable(60, 0));
    PlanRig rig = TableRig(kTiltsFar, test::kUnlimited, path);
    rig.options.preference = {&rig.AxisNamed("A"), true};
    rig.options.weights.preference = 0.4;
    const Chosen swung(rig);
    EXPECT_NEAR(swung.ValueAt_deg(1, kA), 20, 1e-9);
    EXPECT_NEAR(swung.ValueAt_deg(2, kA), -60, 1e-9);
    EXPECT_NEAR(swung->Cost().sum, ToRadians(20 + 80 + 180) + 2 * 0.4, 1e-9);
    rig.options.weights.preference = 0.3;
    const Chosen started(rig);
    EXPECT_NEAR(started.ValueAt_deg(1, kA), -20, 1e-9);
    EXPECT_NEAR(started->Cost().sum, ToRadians(20 + 180 + 40) + 4 * 0.3, 1e-9);
}

TEST(Choice, CountsTheTravelFromHomeUnlessTheStartIsFree)
{
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 170), kRapid);
    PlanRig rig = TableRig(kTiltsFar, test::kUnlimited, path);
    const Chosen fromHome(rig); // A -20 and C -10
    EXPECT_NEAR(Cost_deg(fromHome), 30, 1e-9);
    EXPECT_NEAR(fromHome.ValueAt_deg(0, kC), -10, 1e-9);
    rig.options.start = host::StartPolicy::Free;
    EXPECT_EQ(Chosen(rig)->Cost().sum, 0.0);
    rig.options.preference = {&rig.AxisNamed("A"), true};
    EXPECT_NEAR(Chosen(rig).ValueAt_deg(0, kC), 170, 1e-9);
    // Of turns that cost the same the one next to home.
    rig = TableRig(kTiltsOneWay, "limits = [-800, 800]\ninitial = 300", path);
    rig.options.start = host::StartPolicy::Free;
    EXPECT_NEAR(Chosen(rig).ValueAt_deg(0, kC), 170, 1e-9);
}

TEST(Choice, PaysForNearnessToLimits)
{
    // C of -200 to 200: the last twentieth of its range begins at 180. At 190 it is half way in,
    // which counts for a quarter; at -170, half a turn away with A -20, for nothing. A -20 is near
    // no limit of its own, -120 to 30, and neither is A 20 (22.5 on).
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 190), kRapid);
    PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]\ninitial = 190", path);
    rig.options.weights.limits = 4.0;
    // A 10 from its start; C stays. 190 costs 4 / 4 = 1 rad, -170 would cost 360 degrees.
    const Chosen near(rig);
    EXPECT_NEAR(near.ValueAt_deg(0, kC), 190, 1e-9);
    EXPECT_NEAR(near->Cost().sum, ToRadians(10) + 1.0, 1e-9);
    rig.options.weights.limits = 40.0; // 10 rad are more than a turn
    const Chosen far(rig);
    EXPECT_NEAR(far.ValueAt_deg(0, kC), -170, 1e-9);
    EXPECT_NEAR(far->Cost().sum, ToRadians(10 + 360), 1e-9);
}

TEST(Choice, PassesOverThePoleOnTheOtherSideOrTurnsThere)
{
    PathText path;
    path.To({0, 0, 0}, ForTable(10, 0), kRapid);
    path.To({10, 0, 0}, ForTable(0, 0)).To({20, 0, 0}, ForTable(10, 180));
    // A 10 to -10 with C at rest.
    const PlanRig straight = TableRig(kTiltsFar, test::kUnlimited, path);
    const Chosen passed(straight);
    EXPECT_NEAR(Cost_deg(passed), 10 + 20, 1e-9);
    EXPECT_NEAR(passed.ValueAt_deg(2, kA), -10, 1e-9);
    EXPECT_NEAR(passed.ValueAt_deg(2, kC), 0, 1e-9);
    EXPECT_FALSE(passed->StateAt(1));
    EXPECT_EQ(passed->PointBefore(2), 0U);
    // Where A cannot go there C turns by half a turn in the pole cone, which counts twice.
    const PlanRig held = TableRig("limits = [-5, 30]", test::kUnlimited, path);
    const Chosen turned(held);
    EXPECT_NEAR(Cost_deg(turned), 10 + 2 * 180, 1e-9);
    EXPECT_EQ(turned->Cost().breaks, 0U);
}

TEST(Choice, GoesThroughTheAirPastAPointThatIsNotReached)
{
    // The third point tilts farther than A goes on either side: what is behind it may stand on
    // another branch, and there is no break.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid).To({10, 0, 0}, ForTable(25, 0));
    path.To({10, 0, 0}, ForTable(130, 0)).To({10, 0, 0}, ForTable(60, 0));
    PlanRig rig = TableRig(kTiltsFar, test::kUnlimited, path);
    rig.options.preference = {&rig.AxisNamed("A"), true};
    const Chosen chosen(rig);
    EXPECT_NEAR(chosen.ValueAt_deg(1, kA), 25, 1e-9);
    EXPECT_FALSE(chosen->StateAt(2));
    EXPECT_NEAR(chosen.ValueAt_deg(3, kA), -60, 1e-9);
    EXPECT_EQ(chosen->PointBefore(3), 1U);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_EQ(chosen->PassageTo(3), host::Passage::Straight);
}

TEST(Choice, ChangesBranchWhileTheToolIsChanged)
{
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid).To({10, 0, 0}, ForTable(25, 0));
    path.NextOperation("finish").To({10, 0, 0}, ForTable(60, 0));
    PlanRig rig = TableRig(kTiltsFar, test::kUnlimited, path);
    rig.options.preference = {&rig.AxisNamed("A"), true};
    // The same tool: one cut, which begins on the branch that it needs at its end.
    EXPECT_NEAR(Chosen(rig).ValueAt_deg(1, kA), -25, 1e-9);
    rig.path.operations[1].toolNumber = 7;
    EXPECT_NEAR(Chosen(rig).ValueAt_deg(1, kA), 25, 1e-9);
    rig.path.operations[1].toolNumber.reset();
    rig.toolLengths[1] = 80.0;
    EXPECT_NEAR(Chosen(rig).ValueAt_deg(1, kA), 25, 1e-9);
    EXPECT_NEAR(Chosen(rig).ValueAt_deg(2, kA), -60, 1e-9);
}

// Breaks -------------------------------------------------------------------------------------

/// The points before which the motion breaks off.
std::vector<std::size_t> BreaksOf(const Chosen& chosen, std::size_t numPoints)
{
    std::vector<std::size_t> breaks;
    for (std::size_t point = 0; point < numPoints; ++point) {
        if (chosen->StateAt(point) && chosen->PassageTo(point) != host::Passage::Straight) {
            breaks.push_back(point);
        }
    }
    return breaks;
}

TEST(Choice, BreaksOffAsSeldomAsCanBe)
{
    // 900 degrees in one cut. From 0 to at most 200; a turn lower from there, -160 to 200 are 360
    // degrees more; then the rest: two breaks. Each costs 10 degrees short of a turn.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 900);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-200, 200]", path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 2U);
    EXPECT_EQ(chosen->Cost().refused, 2U);
    EXPECT_NEAR(Cost_deg(chosen), 10 + 900 - 2 * 10 + 2 * 350, 1e-6);
    const std::vector<std::size_t> breaks = BreaksOf(chosen, rig.path.points.size());
    ASSERT_EQ(breaks.size(), 2U);
    EXPECT_EQ(chosen->PassageTo(breaks[0]), host::Passage::Rewind);
    EXPECT_EQ(chosen->PassageTo(breaks[1]), host::Passage::Rewind);
}

TEST(Choice, BreaksOffTheWayThatIsAllowed)
{
    // 500 degrees in one cut, with A positive or negative and C within 200 on either side. From C 0
    // with A positive it takes a turn back by 350 degrees; from C -180 with A negative a swing to
    // the other side, A 40 and C 170 back.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 500);
    PlanRig rig = TableRig("limits = [-30, 30]", "limits = [-200, 200]", path);
    rig.options.start = host::StartPolicy::Free;
    const auto passageWith = [&](host::RetractPolicy rewind, host::RetractPolicy branchChange) {
        rig.options.rewind = rewind;
        rig.options.branchChange = branchChange;
        const Chosen chosen(rig);
        EXPECT_EQ(chosen->Cost().breaks, 1U);
        const std::vector<std::size_t> breaks = BreaksOf(chosen, rig.path.points.size());
        return breaks.size() == 1 ? chosen->PassageTo(breaks[0]) : host::Passage::Straight;
    };
    using host::RetractPolicy;
    EXPECT_EQ(passageWith(RetractPolicy::Refuse, RetractPolicy::Refuse), host::Passage::Flip);
    EXPECT_EQ(passageWith(RetractPolicy::Retract, RetractPolicy::Retract), host::Passage::Flip);
    EXPECT_EQ(passageWith(RetractPolicy::Refuse, RetractPolicy::Retract), host::Passage::Flip);
    EXPECT_EQ(passageWith(RetractPolicy::Retract, RetractPolicy::Refuse), host::Passage::Rewind);
}

TEST(Choice, PullsBackTwiceRatherThanGivingUpOnce)
{
    // As above, but at both ends the lean of 25 degrees is there with A positive alone: turning
    // back once does, and where that is refused, swinging over and back again.
    PathText path;
    path.To({10, 0, 0}, ForTable(25, 0), kRapid);
    Wind(path, 20, 0, 500);
    path.To({10, 0, 0}, ForTable(25, 500));
    PlanRig rig = TableRig("limits = [-22, 30]", "limits = [-200, 200]", path);
    rig.options.rewind = host::RetractPolicy::Retract;
    rig.options.branchChange = host::RetractPolicy::Retract;
    const Chosen once(rig);
    EXPECT_EQ(once->Cost().breaks, 1U);
    rig.options.rewind = host::RetractPolicy::Refuse;
    const Chosen twice(rig);
    EXPECT_EQ(twice->Cost().breaks, 2U);
    EXPECT_EQ(twice->Cost().refused, 0U);
    for (const std::size_t point : BreaksOf(twice, rig.path.points.size())) {
        EXPECT_EQ(twice->PassageTo(point), host::Passage::Flip);
    }
}

TEST(Choice, TurnsBackNoFartherThanThereIsRoomForWhereTheToolStands)
{
    // 1400 degrees in one cut by steps of 40, C at 10 more than whole steps: from -350 it goes up
    // to 330. Two turns back from there would be -390, so it takes one, to -30, and at 330 another:
    // 33 steps, and two that cost a turn less a step.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 10), kRapid);
    Wind(path, 20, 10, 1410, 40);
    PlanRig rig = TableRig(kTiltsOneWay, "limits = [-360, 360]", path);
    rig.options.start = host::StartPolicy::Free;
    rig.options.rewind = host::RetractPolicy::Retract;
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 2U);
    EXPECT_EQ(chosen->Cost().refused, 0U);
    EXPECT_NEAR(Cost_deg(chosen), 33 * 40 + 2 * 320, 1e-6);
    EXPECT_EQ(rig.Plan().NumFailed(), 0U);
}

// Axes with many turns -----------------------------------------------------------------------

TEST(Choice, StartsNextToHomeOnAnAxisWithManyTurns)
{
    // +-9999 degrees are 27 turns either way: C runs up 15 turns from where it starts.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 50), kRapid);
    Wind(path, 20, 50, 50 + 15 * 360, 60);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-9999, 9999]", path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_NEAR(chosen.ValueAt_deg(0, kC), 50, 1e-9);
    EXPECT_NEAR(Cost_deg(chosen), 10 + 50 + 15 * 360, 1e-6);
}

TEST(Choice, UnwindsAnAxisWithManyTurnsByNoMoreThanItHasTo)
{
    // 20 turns up, a rapid, and 20 more: 9999 degrees hold 27 turns and 279 degrees, so that C goes
    // back by 13 turns, at the rapid or before.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 20 * 360, 60);
    path.To({10, 0, 0}, ForTable(20, 0), kRapid);
    Wind(path, 20, 0, 20 * 360, 60);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-9999, 9999]", path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_NEAR(Cost_deg(chosen), 10 + (20 + 13 + 20) * 360, 1e-6);
}

TEST(Choice, TakesAnAxisWithHundredsOfTurnsForUnlimited)
{
    // +-99999 degrees: C winds up 40 turns, and its values count modulo turns.
    PathText path;
    path.To({10, 0, 0}, ForTable(20, 50), kRapid);
    Wind(path, 20, 50, 50 + 40 * 360, 60);
    const PlanRig rig = TableRig(kTiltsOneWay, "limits = [-99999, 99999]", path);
    const Chosen chosen(rig);
    EXPECT_EQ(chosen->Cost().breaks, 0U);
    EXPECT_NEAR(Cost_deg(chosen), 10 + 50 + 40 * 360, 1e-6);
}

} // namespace
