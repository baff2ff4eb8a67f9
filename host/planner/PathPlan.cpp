#include "planner/PathPlan.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "planner/CandidateBytes.h"
#include "planner/Choice.h"
#include "planner/MotionStretch.h"
#include "solve/ToolRoll.h"

namespace host
{

namespace
{

std::vector<const Axis*> AxesOfAll(const LoadedMachine& machine,
                                   const std::vector<const LoadedStream*>& streams)
{
    std::set<std::size_t> moved;
    for (const LoadedStream* stream : streams) {
        moved.insert(stream->axes.begin(), stream->axes.end());
    }
    std::vector<const Axis*> axes;
    std::transform(moved.begin(), moved.end(), std::back_inserter(axes),
                   [&](std::size_t index) { return &machine.axes[index]; });
    return axes;
}

constexpr std::size_t kStretchPoints = 128; // so many that asking for them costs little

enum class Question : std::uint8_t { Find, Build };

} // namespace

PathPlan::PathPlan(const PlanRequest& request) : axes(AxesOfAll(request.machine, request.streams))
{
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
}

void PathPlan::AddSection(const PlanRequest& request, std::size_t begin, std::size_t end)
{
    const std::vector<ToolPoint>& points = request.path.points;
    const LoadedStream& stream =
        *request.streams[static_cast<std::size_t>(points[begin].operation)];
    const auto at = [](std::size_t index) { return static_cast<std::ptrdiff_t>(index); };
    Section section;
    section.firstPoint = begin;
    if (end - begin < points.size()) {
        section.part = std::make_unique<Toolpath>();
        section.part->file = request.path.file;
        section.part->operations = request.path.operations;
        section.part->points.assign(points.begin() + at(begin), points.begin() + at(end));
    }
    std::vector<Vec3> xAxes;
    if (!request.toolXAxes.empty() &&
        HasOpenRoll(PointSolver(request.machine, stream, request.settings))) {
        xAxes.assign(request.toolXAxes.begin() + at(begin), request.toolXAxes.begin() + at(end));
    }
    section.place = std::make_unique<Workplace>(
        request.machine, stream,
        PathTargets(section.part ? *section.part : request.path, std::move(xAxes)),
        request.toolLengths, request.options, request.settings);
    for (const Axis* axis : section.place->Axes()) {
        section.axisOf.push_back(
            static_cast<std::size_t>(std::find(axes.begin(), axes.end(), axis) - axes.begin()));
    }
    const std::size_t blockSize = CandidateFinder::BlockSize(*section.place);
    section.table = std::make_unique<CandidateTable>(end - begin, section.axisOf.size(), blockSize);
    section.firstBlock = blocks.size();
    for (std::size_t first = 0; first < end - begin; first += blockSize) {
        blocks.push_back({sections.size(), first, std::min(first + blockSize, end - begin)});
    }
    sections.push_back(std::move(section));
}

std::size_t PathPlan::PointsUpTo(std::size_t block) const
{
    return sections[blocks[block].section].firstPoint + blocks[block].end;
}

CandidateBlock PathPlan::FindBlock(std::size_t block)
{
    const Block& of = blocks[block];
    return CandidateFinder(*sections[of.section].place).FindBlock(of.begin, of.end);
}

bool PathPlan::Accepts(const CandidateBlock& block) const
{
    if (appended == blocks.size()) {
        return false;
    }
    const Block& next = blocks[appended];
    return block.firstPoint == next.begin && block.ends.size() == next.end - next.begin &&
           IsConsistent(block, sections[next.section].axisOf.size());
}

void PathPlan::Append(CandidateBlock next)
{
    sections[blocks[appended++].section].table->Append(std::move(next));
}

const CandidateBlock& PathPlan::Appended(std::size_t block) const
{
    const Section& section = sections[blocks[block].section];
    return section.table->Blocks()[block - section.firstBlock];
}

bool PathPlan::Build(const Takers& takers, WorkLeader* leader)
{
    std::vector<double> values;
    std::transform(axes.begin(), axes.end(), std::back_inserter(values),
                   [](const Axis* axis) { return axis->initial; });
    for (std::size_t i = 0; i < sections.size(); ++i) {
        if (!BuildSection(i, takers, leader, values)) {
            return false;
        }
    }
    return true;
}

/// @param values where the axes of the rows stand; left where the section leaves them
bool PathPlan::BuildSection(std::size_t index, const Takers& takers, WorkLeader* leader,
                            std::vector<double>& values)
{
    Section& section = sections[index];
    CandidateTable& table = *section.table;
    if (table.Blocks().empty()) {
        return true;
    }
    table.Link(section.place->Axes());
    JointValues start;
    for (const std::size_t axis : section.axisOf) {
        start.push_back(values[axis]);
    }
    section.place->SetStart(std::move(start));
    const Choice choice(*section.place, table);

    MotionRow shown;
    const auto takeRow = [&](const MotionRow& row) {
        shown = row;
        shown.point += section.firstPoint;
        for (std::size_t i = 0; i < row.joints.size(); ++i) {
            values[section.axisOf[i]] = row.joints[i];
        }
        shown.joints = row.flags.hasFailed ? std::vector<double>{} : values;
        takers.row(shown);
    };
    const auto takeEvent = [&](Event event) {
        event.point += section.firstPoint;
        takers.event(event);
    };
    if (leader != nullptr) {
        return BuildShared(index, choice, *leader, takeRow, takeEvent, takers);
    }
    MotionBuilder builder(*section.place, choice, takeRow, takeEvent);
    for (std::size_t point = 0; point < table.NumDone(); ++point) {
        if (!takers.mayGoOn(section.firstPoint + point)) {
            return false;
        }
        builder.Build(point);
    }
    return true;
}

/// Where the motion will stand at the begin of each stretch is foretold by going over the chosen
/// states alone. A stretch that was built from where it does not begin after all is built again.
bool PathPlan::BuildShared(std::size_t index, const ChosenMotion& motion, WorkLeader& leader,
                           const MotionBuilder::RowTaker& takeRow,
                           const MotionBuilder::EventTaker& takeEvent, const Takers& takers)
{
    Workplace& place = *sections[index].place;
    const std::size_t numPoints = motion.EndPoint();
    const auto beginOf = [](std::size_t task) { return task * kStretchPoints; };
    const auto endOf = [&](std::size_t task) { return std::min(beginOf(task + 1), numPoints); };
    MotionBuilder forecast(
        place, motion, [](const MotionRow& /*row*/) {}, [](const Event& /*event*/) {},
        MotionBuilder::Purpose::Forecast);
    MotionStand actual = forecast.Stand();
    std::map<std::size_t, MotionStand> starts;
    std::size_t taken = 0;

    SharedWork<BuiltStretch> work;
    work.end = (numPoints + kStretchPoints - 1) / kStretchPoints;
    work.prepare = [&](std::size_t task) {
        starts.emplace(task, forecast.Stand());
        for (std::size_t point = beginOf(task); point < endOf(task); ++point) {
            forecast.Build(point);
        }
    };
    work.question = [&](std::size_t task) {
        const auto steps = MotionStretch::Of(motion, beginOf(task), endOf(task));
        ByteWriter question;
        if (steps) {
            question.Put(Question::Build);
            question.Put(static_cast<std::uint64_t>(index));
            Put(question, starts.at(task));
            Put(question, *steps);
        }
        return question.Take();
    };
    work.work = [&](std::size_t task) {
        return BuildStretch(place, motion, starts.at(task), beginOf(task), endOf(task));
    };
    work.unpack = [&](std::size_t task, const std::string& answer) {
        BuiltStretch built;
        ByteReader reader(answer);
        if (!Take(reader, built)) {
            return BuildStretch(place, motion, starts.at(task), beginOf(task), endOf(task));
        }
        built.start = starts.at(task);
        return built;
    };
    work.take = [&](std::size_t task, BuiltStretch built) {
        if (!AreSame(built.start, actual)) {
            built = BuildStretch(place, motion, actual, beginOf(task), endOf(task));
        }
        std::size_t rows = 0;
        for (const BuiltStretch::Happening& happening : built.events) {
            for (; rows < happening.behindRows; ++rows) {
                takeRow(built.rows[rows]);
            }
            takeEvent(happening.event);
        }
        for (; rows < built.rows.size(); ++rows) {
            takeRow(built.rows[rows]);
        }
        actual = std::move(built.end);
        starts.erase(task);
        taken = endOf(task);
    };
    work.mayGoOn = [&] { return takers.mayGoOn(sections[index].firstPoint + taken); };
    return leader.Run(work);
}

bool PathPlan::FindShared(WorkLeader& leader,
                          const std::function<bool(std::size_t appended)>& mayGoOn)
{
    SharedWork<CandidateBlock> work;
    work.first = appended;
    work.end = blocks.size();
    work.prepare = [](std::size_t /*block*/) {};
    work.question = [](std::size_t block) {
        ByteWriter question;
        question.Put(Question::Find);
        question.Put(static_cast<std::uint64_t>(block));
        return question.Take();
    };
    work.work = [this](std::size_t block) { return FindBlock(block); };
    work.unpack = [this](std::size_t block, const std::string& answer) {
        CandidateBlock found;
        ByteReader reader(answer);
        return TakeBlock(reader, found) ? found : FindBlock(block);
    };
    work.take = [this](std::size_t /*block*/, CandidateBlock found) { Append(std::move(found)); };
    work.mayGoOn = [&] { return mayGoOn(appended); };
    return leader.Run(work);
}

std::string PathPlan::Answer(const std::string& question)
{
    ByteReader reader(question);
    Question kind{};
    std::uint64_t index = 0;
    if (!reader.Take(kind) || !reader.Take(index)) {
        return {};
    }
    if (kind == Question::Find) {
        return BytesOf(FindBlock(index));
    }
    MotionStand start;
    MotionStretch::Steps steps;
    if (!Take(reader, start) || !Take(reader, steps)) {
        return {};
    }
    const std::size_t begin = steps.begin;
    const MotionStretch stretch(std::move(steps));
    ByteWriter answer;
    Put(answer, BuildStretch(*sections[index].place, stretch, start, begin, stretch.EndPoint()));
    return answer.Take();
}

} // namespace host
