#include "planner/PlanAssistant.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "planner/BuiltStretch.h"
#include "planner/CandidateBytes.h"

namespace host
{

void PlanAssistant::Answer(std::string_view question, ByteWriter& answer)
{
    ByteReader reader(question);
    QuestionKind kind{};
    FindQuestion find;
    FollowQuestion follow;
    BuildQuestion build;
    reader.Take(kind);
    if (kind == QuestionKind::Find && Take(reader, find)) {
        Answer(std::move(find), answer);
    } else if (kind == QuestionKind::Follow && Take(reader, follow)) {
        Answer(std::move(follow), answer);
    } else if (kind == QuestionKind::Build && Take(reader, build)) {
        Answer(std::move(build), answer);
    }
}

void PlanAssistant::Answer(FindQuestion question, ByteWriter& answer)
{
    Workplace& place = PlaceFor(question.points, std::move(question.points.xAxes));
    Put(answer, CandidateFinder(place).FindBlock(question.begin, question.end));
}

void PlanAssistant::Answer(FollowQuestion question, ByteWriter& answer)
{
    Workplace& place = PlaceFor(question.points, std::move(question.points.xAxes));
    const FollowTask& task = question.task;
    PutWay(answer,
           CandidateFinder(place).FollowOn(task.starts.front(), task.from, task.begin, task.end));
}

void PlanAssistant::Answer(BuildQuestion question, ByteWriter& answer)
{
    Workplace& place = PlaceFor(question.points, std::move(question.points.xAxes));
    place.SetStart(std::move(question.start));
    const std::size_t first = question.candidates.firstPoint;
    const CandidateTable candidates =
        CandidateTable::OfSlice(place.Axes(), std::move(question.candidates));
    const Choice choice(place, candidates, {first, std::move(question.chosen), {}});
    const MotionStand start = ForetoldStand(place, choice, question.turns, question.begin);
    Put(answer, BuildStretch(place, choice, start, question.begin, question.end,
                             std::move(question.maker), request.rowText));
}

Workplace& PlanAssistant::PlaceFor(const AskedPoints& points, std::vector<Vec3> xAxes)
{
    const auto operation = static_cast<std::size_t>(points.part.points.front().operation);
    const LoadedStream* const stream = request.streams[operation];
    std::unique_ptr<Workplace>& place = places[{stream, !xAxes.empty()}];
    PathTargets targets(points.part.Window(), std::move(xAxes));
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
