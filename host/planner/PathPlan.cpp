#include "planner/PathPlan.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "planner/CandidateBytes.h"
#include "planner/JointSpace.h"
#include "planner/PlanQuestions.h"
#include "solve/ToolRoll.h"

namespace host
{

namespace
{

constexpr std::size_t kStretchPoints = 128; // so many that asking for them costs little

/// Near which values the axes whose turns do not count will stand, from point to point, told from
/// the chosen states alone.
class TurnForecast
{
  public:
    TurnForecast(const Workplace& place, const CandidateTable& ofTable,
                 const ChosenStates& ofPoints)
        : axes(place.Axes()), table(ofTable), chosen(ofPoints), near(place.Start())
    {}

    /// At this point, which is not before the last one asked for.
    const JointValues& At(std::size_t point)
    {
        for (; next <= point; ++next) {
            if (chosen.HasState(next)) {
                Take(table.JointsAt(next, static_cast<std::size_t>(chosen.At(next).candidate)));
            }
        }
        return near;
    }
    /// From where the axes are found to stand before this point.
    void StartAgain(const JointValues& joints, std::size_t point)
    {
        near = joints;
        next = point;
    }

  private:
    void Take(const double* joints)
    {
        for (std::size_t i = 0; i < axes.size(); ++i) {
            near[i] = axes[i]->isRotary && !CountsTurns(*axes[i])
                          ? OnNearestTurn(*axes[i], joints[i], near[i])
                          : joints[i];
        }
    }

    const std::vector<const Axis*>& axes;
    const CandidateTable& table;
    const ChosenStates& chosen;
    JointValues near;
    std::size_t next{0};
};

/// Hands the motion of a stretch on in its order.
void TakeStretch(const BuiltStretch& built, const PathPlan::Takers& takers, MotionRow& row)
{
    ByteReader rows(built.rows);
    std::size_t taken = 0;
    for (std::size_t i = 0; i < built.events.size(); ++i) {
        for (; taken < built.behindRows[i] && Take(rows, row); ++taken) {
            takers.row(row);
        }
        takers.event(built.events[i]);
    }
    while (!rows.IsAtEnd() && Take(rows, row)) {
        takers.row(row);
    }
    if (takers.text) {
        takers.text(built.text);
    }
}

} // namespace

std::vector<const Axis*> PlanRequest::Axes() const
{
    std::set<std::size_t> moved;
    for (const LoadedStream* stream : streams) {
        moved.insert(stream->axes.begin(), stream->axes.end());
    }
    std::vector<const Axis*> axes;
    std::transform(moved.begin(), moved.end(), std::back_inserter(axes),
                   [this](std::size_t index) { return &machine.axes[index]; });
    return axes;
}

PathPlan::PathPlan(const PlanRequest& request) : rowText(request.rowText), axes(request.Axes())
{
    std::transform(axes.begin(), axes.end(), std::back_inserter(initial),
                   [](const Axis* axis) { return axis->initial; });
    const std::vector<ToolPoint>& points = request.path.points;
    const auto streamAt = [&](std::size_t point) {
        return request.streams[static_cast<std::size_t>(points[point].operation)];
    };
    for (std::size_t begin = 0; begin < points.size();) {
        std::size_t end = begin + 1;
        while (end < points.size() && streamAt(end) == streamAt(begin)) {
            ++end;
        }
        AddSection(request, begin, end);
        begin = end;
    }
    if (!sections.empty()) {
        StartFrom(sections.front(), initial);
    }
}

void PathPlan::AddSection(const PlanRequest& request, std::size_t begin, std::size_t end)
{
    const std::vector<ToolPoint>& points = request.path.points;
    const LoadedStream& stream =
        *request.streams[static_cast<std::size_t>(points[begin].operation)];
    const auto at = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
    Section section;
    section.firstPoint = begin;
    std::vector<Vec3> xAxes;
    if (!request.toolXAxes.empty() &&
        HasOpenRoll(PointSolver(request.machine, stream, request.settings))) {
        xAxes.assign(request.toolXAxes.begin() + at(begin), request.toolXAxes.begin() + at(end));
    }
    const PathWindow window(points.data() + begin, 0, end - begin, end - begin);
    section.place = std::make_unique<Workplace>(
        request.machine, stream, request.path, PathTargets(window, std::move(xAxes)),
        request.toolLengths, request.options, request.settings);
    for (const Axis* axis : section.place->Axes()) {
        section.axisOf.push_back(
            static_cast<std::size_t>(std::find(axes.begin(), axes.end(), axis) - axes.begin()));
    }
    constexpr std::size_t blockSize = CandidateFinder::kBlockPoints;
    section.table = std::make_unique<CandidateTable>(section.place->Axes(), blockSize,
                                                     section.place->IsRedundant()
                                                         ? CandidateTable::Joint::ByParents
                                                         : CandidateTable::Joint::ByExits);
    section.firstBlock = blocks.size();
    for (std::size_t first = 0; first < end - begin; first += blockSize) {
        blocks.push_back({sections.size(), first, std::min(first + blockSize, end - begin)});
    }
    sections.push_back(std::move(section));
}

/// From here on what is chosen for a section can be looked for.
/// @param values where the axes of the rows stand before it
void PathPlan::StartFrom(Section& section, const std::vector<double>& values) const
{
    JointValues start;
    for (const std::size_t axis : section.axisOf) {
        start.push_back(values[axis]);
    }
    section.place->SetStart(std::move(start));
    section.search = std::make_unique<MotionSearch>(*section.place, *section.table);
}

std::size_t PathPlan::PointsUpTo(std::size_t block) const
{
    return sections[blocks[block].section].firstPoint + blocks[block].end;
}

CandidateBlock PathPlan::FindBlock(std::size_t block)
{
    const Block& of = blocks[block];
    Workplace& place = *sections[of.section].place;
    return CandidateFinder(place).FindBlock(of.begin, of.end, KnownBefore(of));
}

KnownCandidates PathPlan::KnownBefore(const Block& block) const
{
    const Workplace& place = *sections[block.section].place;
    const CandidateTable& table = *sections[block.section].table;
    KnownCandidates known;
    if (!place.IsRedundant()) {
        return known;
    }
    if (table.EndPoint() != block.begin) {
        throw std::logic_error("the blocks of a redundant machine are found one after the other");
    }
    for (std::size_t point = block.begin; point-- > 0;) {
        if (!place.IsAtPole(place.PointAt(point).direction)) {
            known.point = point;
            for (std::size_t i = 0; i < table.CountAt(point); ++i) {
                const double* const joints = table.JointsAt(point, i);
                known.joints.emplace_back(joints, joints + table.NumAxes());
            }
            break;
        }
    }
    return known;
}

bool PathPlan::Accepts(const CandidateBlock& block) const
{
    if (appended == blocks.size()) {
        return false;
    }
    const Block& next = blocks[appended];
    return block.firstPoint == next.begin && block.ends.size() == next.end - next.begin &&
           IsConsistent(block, sections[next.section].axisOf.size()) &&
           sections[next.section].table->Continues(block);
}

void PathPlan::Append(CandidateBlock next)
{
    const Section& section = sections[blocks[appended++].section];
    section.table->Append(std::move(next));
    if (section.search) {
        section.search->GoOn();
    }
}

const CandidateBlock& PathPlan::Appended(std::size_t block) const
{
    const Section& section = sections[blocks[block].section];
    return section.table->Blocks()[block - section.firstBlock];
}

bool PathPlan::Build(const Takers& takers, WorkLeader* leader)
{
    std::vector<double> values = initial;
    return std::all_of(sections.begin(), sections.end(), [&](Section& section) {
        return BuildSection(section, takers, leader, values);
    });
}

/// @param values where the axes of the rows stand; left where the section leaves them
bool PathPlan::BuildSection(Section& section, const Takers& takers, WorkLeader* leader,
                            std::vector<double>& values)
{
    if (section.table->Blocks().empty()) {
        return true;
    }
    if (!section.search) {
        StartFrom(section, values);
        section.search->GoOn();
    }
    const ChosenStates chosen = section.search->Best();
    const Choice choice(*section.place, *section.table, chosen);
    const RowMaker maker(section.firstPoint, section.axisOf, values);
    Takers noting = takers;
    noting.row = [&](const MotionRow& row) {
        values = row.flags.hasFailed ? values : row.joints;
        takers.row(row);
    };
    return leader == nullptr ? BuildAlone(section, choice, maker, noting)
                             : BuildShared(section, choice, chosen, maker, *leader, noting);
}

bool PathPlan::BuildAlone(const Section& section, const Choice& choice, RowMaker maker,
                          const Takers& takers) const
{
    Workplace& place = *section.place;
    std::string text;
    const auto takeRow = [&](const MotionRow& row) {
        const MotionRow& made = maker.Made(row);
        takers.row(made);
        if (rowText && takers.text) {
            text.clear();
            rowText(made, place.PointAt(row.point).line, text);
            takers.text(text);
        }
    };
    const auto takeEvent = [&](Event event) {
        event.point += section.firstPoint;
        takers.event(event);
    };
    MotionBuilder builder(place, choice, takeRow, takeEvent);
    for (std::size_t point = 0; point < choice.EndPoint(); ++point) {
        if (!takers.mayGoOn(section.firstPoint + point)) {
            return false;
        }
        builder.Build(point);
    }
    return true;
}

/// Where the motion will stand at the begin of each stretch is foretold. A stretch that was built
/// from where it does not begin after all, or that could not be foretold, is built when all before
/// it is.
bool PathPlan::BuildShared(const Section& section, const Choice& choice, const ChosenStates& chosen,
                           const RowMaker& maker, WorkLeader& leader, const Takers& takers) const
{
    Workplace& place = *section.place;
    const auto beginOf = [](std::size_t task) { return task * kStretchPoints; };
    const auto endOf = [&](std::size_t task) {
        return std::min(beginOf(task + 1), choice.EndPoint());
    };
    const auto build = [&](std::size_t task, const MotionStand& start) {
        return BuildStretch(place, choice, start, beginOf(task), endOf(task), maker, rowText);
    };
    const auto isForeseen = [&](std::size_t task) {
        if (beginOf(task) < kPointsToForetell) {
            return false;
        }
        for (std::size_t i = beginOf(task) - kPointsToForetell; i < endOf(task); ++i) {
            if (!chosen.HasState(i)) {
                return false;
            }
        }
        return true;
    };
    TurnForecast forecast(place, *section.table, chosen);
    std::map<std::size_t, JointValues> turns; // before each stretch that is foreseen
    MotionStand actual = MotionBuilder(place, choice, {}, {}).Stand();
    std::size_t taken = 0;
    MotionRow row;

    SharedWork<BuiltStretch> work;
    work.end = (choice.EndPoint() + kStretchPoints - 1) / kStretchPoints;
    work.prepare = [&](std::size_t task) {
        if (isForeseen(task)) {
            turns.emplace(task, forecast.At(beginOf(task) - kPointsToForetell));
        }
    };
    work.question = [&](std::size_t task) {
        const auto near = turns.find(task);
        if (near == turns.end()) {
            return std::string();
        }
        const std::size_t first = beginOf(task) - kPointsToForetell;
        const auto at = [&](std::size_t point) {
            return chosen.states.begin() + static_cast<std::ptrdiff_t>(point);
        };
        return BytesOf(BuildQuestion{AskedPoints::Of(place.Targets(), first, endOf(task)),
                                     beginOf(task),
                                     endOf(task),
                                     place.Start(),
                                     near->second,
                                     section.table->Slice(first, endOf(task)),
                                     {at(first), at(endOf(task))},
                                     maker});
    };
    work.work = [&](std::size_t task) {
        const auto near = turns.find(task);
        return near == turns.end()
                   ? BuiltStretch{}
                   : build(task, ForetoldStand(place, choice, near->second, beginOf(task)));
    };
    work.unpack = [&](std::size_t /*task*/, std::string_view answer) {
        BuiltStretch built;
        ByteReader reader(answer);
        return Take(reader, built) ? std::move(built) : BuiltStretch{};
    };
    work.take = [&](std::size_t task, BuiltStretch built) {
        if (!AreSame(built.start, actual)) {
            built = build(task, actual);
            forecast.StartAgain(built.end.current, endOf(task));
            for (auto next = turns.upper_bound(task); next != turns.end(); ++next) {
                next->second = forecast.At(beginOf(next->first) - kPointsToForetell);
            }
        }
        TakeStretch(built, takers, row);
        actual = std::move(built.end);
        turns.erase(task);
        taken = endOf(task);
    };
    work.mayGoOn = [&] { return takers.mayGoOn(section.firstPoint + taken); };
    return leader.Run(work);
}

bool PathPlan::FindShared(WorkLeader& leader,
                          const std::function<bool(std::size_t appended)>& mayGoOn)
{
    const auto isFollowed = [this](const Block& block) {
        return sections[block.section].place->IsRedundant();
    };
    const auto at = [this](std::size_t block) {
        return blocks.begin() + static_cast<std::ptrdiff_t>(block);
    };
    while (appended < blocks.size()) {
        const auto next = at(appended);
        if (!isFollowed(*next)) {
            const auto end = std::find_if(next, blocks.end(), isFollowed);
            if (!FindFresh(static_cast<std::size_t>(end - blocks.begin()), leader, mayGoOn)) {
                return false;
            }
        } else if (!mayGoOn(appended)) {
            return false;
        } else {
            Append(FollowShared(*next, leader));
        }
    }
    return true;
}

/// Each of the blocks up to `end` by itself.
bool PathPlan::FindFresh(std::size_t end, WorkLeader& leader,
                         const std::function<bool(std::size_t appended)>& mayGoOn)
{
    SharedWork<CandidateBlock> work;
    work.first = appended;
    work.end = end;
    work.prepare = [](std::size_t /*block*/) {};
    work.question = [this](std::size_t block) {
        const Block& of = blocks[block];
        const Workplace& place = *sections[of.section].place;
        // The next block's first point tells which branches go on there.
        const std::size_t beyond = std::min(of.end + 1, place.NumPoints());
        return BytesOf(
            FindQuestion{AskedPoints::Of(place.Targets(), of.begin, beyond), of.begin, of.end});
    };
    work.work = [this](std::size_t block) { return FindBlock(block); };
    work.unpack = [this](std::size_t block, std::string_view answer) {
        CandidateBlock found;
        ByteReader reader(answer);
        return TakeBlock(reader, found) ? std::move(found) : FindBlock(block);
    };
    work.take = [this](std::size_t /*block*/, CandidateBlock found) { Append(std::move(found)); };
    work.mayGoOn = [&] { return mayGoOn(appended); };
    return leader.Run(work);
}

/// Where one block goes on from the other, the ranks follow a solution each.
CandidateBlock PathPlan::FollowShared(const Block& block, WorkLeader& leader) const
{
    Workplace& place = *sections[block.section].place;
    CandidateFinder alone(place);
    const auto follow = [&](const FollowTask& task) {
        std::vector<FollowedWay> ways;
        const auto followHere = [&](std::size_t start) {
            return alone.FollowOn(task.starts[start], task.from, task.begin, task.end);
        };
        SharedWork<FollowedWay> work;
        work.end = task.starts.size();
        work.ahead = (work.end + leader.NumRanks() - 1) / leader.NumRanks();
        work.prepare = [](std::size_t /*start*/) {};
        work.question = [&](std::size_t start) {
            return BytesOf(FollowQuestion{AskedPoints::Of(place.Targets(), task.from, task.end),
                                          {task.from, task.begin, task.end, {task.starts[start]}}});
        };
        work.work = followHere;
        work.unpack = [&](std::size_t start, std::string_view answer) {
            FollowedWay way;
            ByteReader reader(answer);
            return TakeWay(reader, way) ? std::move(way) : followHere(start);
        };
        work.take = [&](std::size_t /*start*/, FollowedWay way) { ways.push_back(std::move(way)); };
        work.mayGoOn = [] { return true; };
        leader.Run(work);
        return ways;
    };
    return CandidateFinder(place, follow).FindBlock(block.begin, block.end, KnownBefore(block));
}

} // namespace host
