#include "planner/SharedBuilding.h"

#include <algorithm>
#include <utility>

#include "planner/PlanQuestions.h"

namespace host
{

namespace
{

constexpr std::size_t kStretchPoints = 128; // so many that asking for them costs little

} // namespace

SharedBuilding::SharedBuilding(const ChosenSection& ofSection, const MotionTakers& byTakers)
    : section(ofSection), takers(byTakers),
      forecast(section.place, section.candidates, section.chosen),
      actual(MotionBuilder(section.place, section.choice, {}, {}).Stand())
{}

bool SharedBuilding::Run(WorkLeader& leader)
{
    SharedWork<BuiltStretch> work;
    work.end = (section.chosen.EndPoint() + kStretchPoints - 1) / kStretchPoints;
    work.prepare = [this](std::size_t stretch) { Prepare(stretch); };
    work.question = [this](std::size_t stretch) { return QuestionOf(stretch); };
    work.work = [this](std::size_t stretch) { return BuildForeseen(stretch); };
    work.unpack = [](std::size_t /*stretch*/, std::string_view answer) { return Unpack(answer); };
    work.take = [this](std::size_t stretch, BuiltStretch built) {
        Take(stretch, std::move(built));
    };
    work.mayGoOn = [this] { return takers.mayGoOn(section.maker.FirstPoint() + taken); };
    return leader.Run(work);
}

std::size_t SharedBuilding::BeginOf(std::size_t stretch) const
{
    return std::min(stretch * kStretchPoints, section.chosen.EndPoint());
}

std::size_t SharedBuilding::EndOf(std::size_t stretch) const
{
    return BeginOf(stretch + 1);
}

bool SharedBuilding::IsForeseen(std::size_t stretch) const
{
    if (BeginOf(stretch) < kPointsToForetell) {
        return false;
    }
    const auto first = section.chosen.states.begin();
    return std::all_of(first + static_cast<std::ptrdiff_t>(BeginOf(stretch) - kPointsToForetell),
                       first + static_cast<std::ptrdiff_t>(EndOf(stretch)),
                       [](const ChosenState& state) { return state.candidate >= 0; });
}

void SharedBuilding::Prepare(std::size_t stretch)
{
    if (IsForeseen(stretch)) {
        turns.emplace(stretch, forecast.At(BeginOf(stretch) - kPointsToForetell));
    }
}

std::string SharedBuilding::QuestionOf(std::size_t stretch) const
{
    const auto near = turns.find(stretch);
    if (near == turns.end()) {
        return {};
    }
    const std::size_t first = BeginOf(stretch) - kPointsToForetell;
    const std::size_t end = EndOf(stretch);
    const auto stateAt = [this](std::size_t point) {
        return section.chosen.states.begin() + static_cast<std::ptrdiff_t>(point);
    };
    return BytesOf(BuildQuestion{AskedPoints::Of(section.place.Targets(), first, end),
                                 BeginOf(stretch),
                                 end,
                                 section.place.Start(),
                                 near->second,
                                 section.candidates.Slice(first, end),
                                 {stateAt(first), stateAt(end)},
                                 section.maker});
}

/// Nothing where its begin is not foreseen: then it is built when it is to be taken.
BuiltStretch SharedBuilding::BuildForeseen(std::size_t stretch) const
{
    const auto near = turns.find(stretch);
    if (near == turns.end()) {
        return {};
    }
    return Build(stretch,
                 ForetoldStand(section.place, section.choice, near->second, BeginOf(stretch)));
}

BuiltStretch SharedBuilding::Build(std::size_t stretch, const MotionStand& start) const
{
    return BuildStretch(section.place, section.choice, start, BeginOf(stretch), EndOf(stretch),
                        section.maker, section.rowText);
}

BuiltStretch SharedBuilding::Unpack(std::string_view answer)
{
    BuiltStretch built;
    ByteReader reader(answer);
    return host::Take(reader, built) ? std::move(built) : BuiltStretch{};
}

void SharedBuilding::Take(std::size_t stretch, BuiltStretch built)
{
    if (!AreSame(built.start, actual)) {
        built = Build(stretch, actual);
        forecast.StartAgain(built.end.current, EndOf(stretch));
        for (auto next = turns.upper_bound(stretch); next != turns.end(); ++next) {
            next->second = forecast.At(BeginOf(next->first) - kPointsToForetell);
        }
    }
    HandOn(built);
    actual = std::move(built.end);
    turns.erase(stretch);
    taken = EndOf(stretch);
}

/// Rows and events in the order in which they happen.
void SharedBuilding::HandOn(const BuiltStretch& built)
{
    ByteReader rows(built.rows);
    std::size_t handed = 0;
    for (std::size_t i = 0; i < built.events.size(); ++i) {
        for (; handed < built.behindRows[i] && host::Take(rows, row); ++handed) {
            takers.row(row);
        }
        takers.event(built.events[i]);
    }
    while (!rows.IsAtEnd() && host::Take(rows, row)) {
        takers.row(row);
    }
    if (takers.text) {
        takers.text(built.text);
    }
}

} // namespace host
