#ifndef TRUNNION_HOST_RANKS_SHARED_JOBS_H
#define TRUNNION_HOST_RANKS_SHARED_JOBS_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "ranks/Ranks.h"

// Jobs of which each is done whole by one rank, and takes seconds or hours.
namespace host
{

/// What the leader knows of them.
struct SharedJobs
{
    std::size_t count{0};
    /// What a rank has to know of a job. Asked when it begins.
    std::function<std::string(std::size_t job)> question;
    /// Does one on the leader, and calls JobLeader::LookAround now and then.
    std::function<std::string(const std::string& question)> work;
    /// Takes answers as jobs end, in whatever order.
    std::function<void(std::size_t job, std::string answer)> take;
    /// Once false, no job begins, and those that have begun are asked to end.
    std::function<bool()> mayGoOn;
};

/// Hands out jobs in their order, each when a rank is free, and does some of them itself. Lets the
/// other ranks go at its end, however that comes.
class JobLeader
{
  public:
    explicit JobLeader(Ranks& sharing);
    ~JobLeader();
    JobLeader(const JobLeader&) = delete;
    JobLeader& operator=(const JobLeader&) = delete;

    /// Returns when all is done; when it may not go on, as soon as the jobs that have begun are
    /// ended, or `patience` after it has nothing more to do than to wait for the others.
    void Run(const SharedJobs& jobs, std::chrono::milliseconds patience);
    /// Waits for what Run has left.
    void Finish(const SharedJobs& jobs);
    /// In the midst of a job of its own: takes answers and hands out what is next.
    void LookAround(const SharedJobs& jobs);

  private:
    struct Other
    {
        std::size_t job{0};
        bool isBusy{false};
    };

    std::vector<std::pair<std::size_t, std::string>> Collect();
    void AskForTheEnd();
    bool IsAnyBusy() const;

    Ranks& ranks;
    std::vector<Other> others; // by rank; the leader's own place is not used
    std::size_t begun{0};
    bool isEnding{false};
};

/// On the other ranks: does jobs until the leader has no more.
void DoJobs(Ranks& ranks, const std::function<std::string(const std::string& question)>& work);
/// In the midst of one: whether the leader has asked for its end since this was last called.
bool IsAskedToEnd(Ranks& ranks);

} // namespace host

#endif
