#include "planner/PlanQuestions.h"

#include <utility>

#include "planner/CandidateBytes.h"

namespace host
{

namespace
{

void PutNumber(ByteWriter& bytes, std::size_t number)
{
    bytes.Put(static_cast<std::uint64_t>(number));
}

bool TakeNumber(ByteReader& bytes, std::size_t& number)
{
    std::uint64_t taken = 0;
    const bool isThere = bytes.Take(taken);
    number = taken;
    return isThere;
}

void Put(ByteWriter& bytes, const AskedPoints& points)
{
    Put(bytes, points.part);
    bytes.PutAll(points.xAxes);
}

bool Take(ByteReader& bytes, AskedPoints& points)
{
    return Take(bytes, points.part) && bytes.TakeAll(points.xAxes);
}

void Put(ByteWriter& bytes, const RowMaker& maker)
{
    PutNumber(bytes, maker.FirstPoint());
    bytes.PutAll(maker.AxisOf());
    bytes.PutAll(maker.Values());
}

bool Take(ByteReader& bytes, RowMaker& maker)
{
    std::size_t firstPoint = 0;
    std::vector<std::size_t> axisOf;
    std::vector<double> values;
    if (!TakeNumber(bytes, firstPoint) || !bytes.TakeAll(axisOf) || !bytes.TakeAll(values)) {
        return false;
    }
    maker = RowMaker(firstPoint, std::move(axisOf), std::move(values));
    return true;
}

} // namespace

AskedPoints AskedPoints::Of(const PathTargets& targets, std::size_t first, std::size_t end)
{
    AskedPoints asked{PartOf(targets.Points(), first, end), {}};
    for (std::size_t point = first; point < end && targets.FixWholeOrientation(); ++point) {
        asked.xAxes.push_back(*targets.At(point).xAxis);
    }
    return asked;
}

std::string BytesOf(const FindQuestion& question)
{
    ByteWriter bytes;
    bytes.Put(QuestionKind::Find);
    Put(bytes, question.points);
    PutNumber(bytes, question.begin);
    PutNumber(bytes, question.end);
    return bytes.Take();
}

bool Take(ByteReader& bytes, FindQuestion& question)
{
    return Take(bytes, question.points) && TakeNumber(bytes, question.begin) &&
           TakeNumber(bytes, question.end);
}

std::string BytesOf(const FollowQuestion& question)
{
    ByteWriter bytes;
    bytes.Put(QuestionKind::Follow);
    Put(bytes, question.points);
    PutNumber(bytes, question.task.from);
    PutNumber(bytes, question.task.begin);
    PutNumber(bytes, question.task.end);
    bytes.PutAll(question.task.starts.front());
    return bytes.Take();
}

bool Take(ByteReader& bytes, FollowQuestion& question)
{
    question.task.starts.resize(1);
    return Take(bytes, question.points) && TakeNumber(bytes, question.task.from) &&
           TakeNumber(bytes, question.task.begin) && TakeNumber(bytes, question.task.end) &&
           bytes.TakeAll(question.task.starts.front());
}

void PutWay(ByteWriter& bytes, const FollowedWay& way)
{
    PutNumber(bytes, way.size());
    for (const JointValues& joints : way) {
        bytes.PutAll(joints);
    }
}

bool TakeWay(ByteReader& bytes, FollowedWay& way)
{
    return bytes.TakeEach(
        way, [](ByteReader& reader, JointValues& joints) { return reader.TakeAll(joints); });
}

std::string BytesOf(const BuildQuestion& question)
{
    ByteWriter bytes;
    bytes.Put(QuestionKind::Build);
    Put(bytes, question.points);
    PutNumber(bytes, question.begin);
    PutNumber(bytes, question.end);
    bytes.PutAll(question.start);
    bytes.PutAll(question.turns);
    Put(bytes, question.candidates);
    bytes.PutAll(question.chosen);
    Put(bytes, question.maker);
    return bytes.Take();
}

bool Take(ByteReader& bytes, BuildQuestion& question)
{
    return Take(bytes, question.points) && TakeNumber(bytes, question.begin) &&
           TakeNumber(bytes, question.end) && bytes.TakeAll(question.start) &&
           bytes.TakeAll(question.turns) && TakeBlock(bytes, question.candidates) &&
           bytes.TakeAll(question.chosen) && Take(bytes, question.maker);
}

MotionStand ForetoldStand(Workplace& place, const ChosenMotion& motion, const JointValues& turns,
                          std::size_t begin)
{
    MotionBuilder builder(
        place, motion, [](const MotionRow& /*row*/) {}, [](const Event& /*event*/) {},
        MotionBuilder::Purpose::Forecast);
    MotionStand near = builder.Stand();
    near.current = turns;
    builder.SetStand(std::move(near));
    for (std::size_t point = begin - kPointsToForetell; point < begin; ++point) {
        builder.Build(point);
    }
    return builder.Stand();
}

} // namespace host
