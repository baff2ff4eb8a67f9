#include "planner/SharedFollowing.h"

#include <string_view>
#include <utility>

#include "planner/PlanQuestions.h"

namespace host
{

std::vector<FollowedWay> FollowShared(Workplace& place, const FollowTask& task, WorkLeader& leader)
{
    std::vector<FollowedWay> ways;
    const auto followHere = [&](std::size_t start) {
        return CandidateFinder(place).FollowOn(task.starts[start], task.from, task.begin, task.end);
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
}

} // namespace host
