#include "planner/PathPlan.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "planner/CandidateBytes.h"
#include "planner/PlanQuestions.h"
#include "planner/SharedBuilding.h"
#include "planner/SharedFollowing.h"
#include "solve/ToolRoll.h"

namespace host
{

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
    if (leader == nullptr) {
        return BuildAlone(section, choice, maker, noting);
    }
    return SharedBuilding({*section.place, *section.table, chosen, choice, maker, rowText}, noting)
        .Run(*leader);
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
            Append(FindFollowing(*next, leader));
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
CandidateBlock PathPlan::FindFollowing(const Block& block, WorkLeader& leader) const
{
    Workplace& place = *sections[block.section].place;
    const auto follow = [&](const FollowTask& task) { return FollowShared(place, task, leader); };
    return CandidateFinder(place, follow).FindBlock(block.begin, block.end, KnownBefore(block));
}

} // namespace host
