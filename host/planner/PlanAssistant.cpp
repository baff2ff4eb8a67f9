#include "planner/PlanAssistant.h"

#include "planner/BuiltStretch.h"
#include "planner/CandidateBytes.h"

namespace host
{

std::string PlanAssistant::Answer(const std::string& question)
{
    ByteReader reader(question);
    QuestionKind kind{};
    FindQuestion find;
    FollowQuestion follow;
    BuildQuestion build;
    if (!reader.Take(kind)) {
        return {};
    }
    switch (kind) {
    case QuestionKind::Find:
        return Take(reader, find) ? Answer(std::move(find)) : std::string();
    case QuestionKind::Follow:
        return Take(reader, follow) ? Answer(std::move(follow)) : std::string();
    case QuestionKind::Build:
        return Take(reader, build) ? Answer(std::move(build)) : std::string();
    }
    return {};
}

std::string PlanAssistant::Answer(FindQuestion question)
{
    Workplace& place = PlaceFor(question.points, std::move(question.points.xAxes));
    return BytesOf(CandidateFinder(place).FindBlock(question.begin, question.end));
}

std::string PlanAssistant::Answer(FollowQuestion question)
{
    Workplace& place = PlaceFor(question.points, std::move(question.points.xAxes));
    const FollowTask& task = question.task;
    return BytesOf(
        CandidateFinder(place).FollowOn(task.starts.front(), task.from, task.begin, task.end));
}

std::string PlanAssistant::Answer(BuildQuestion question)
{
    Workplace& place = PlaceFor(question.points, std::move(question.points.xAxes));
    place.SetStart(std::move(question.start));
    const std::size_t first = question.candidates.firstPoint;
    const CandidateTable candidates =
        CandidateTable::OfSlice(place.Axes(), std::move(question.candidates));
    const Choice choice(place, candidates, {first, std::move(question.chosen), {}});
    const MotionStand start = ForetoldStand(place, choice, question.turns, question.begin);
    ByteWriter answer;
    Put(answer, BuildStretch(place, choice, start, question.begin, question.end,
                             std::move(question.maker), request.rowText));
    return answer.Take();
}

Workplace& PlanAssistant::PlaceFor(const AskedPoints& points, std::vector<Vec3> xAxes)
{
    const auto operation = static_cast<std::size_t>(points.points.front().operation);
    const LoadedStream* const stream = request.streams[operation];
    std::unique_ptr<Workplace>& place = places[{stream, !xAxes.empty()}];
    PathTargets targets(PathWindow(points.points.data(), points.first,
                                   points.first + points.points.size(), points.numPoints),
                        std::move(xAxes));
    if (place) {
        place->LookAt(std::move(targets));
    } else {
        place =
            std::make_unique<Workplace>(request.machine, *stream, request.path, std::move(targets),
                                        request.toolLengths, request.options, request.settings);
    }
    return *place;
}

} // namespace host
