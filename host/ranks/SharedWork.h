#ifndef TRUNNION_HOST_RANKS_SHARED_WORK_H
#define TRUNNION_HOST_RANKS_SHARED_WORK_H

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ranks/Ranks.h"
#include "text/Bytes.h"

namespace host
{

/// Work in numbered tasks, of which any rank can do most. Called on the leader alone.
template <class Result>
struct SharedWork
{
    std::size_t first{0};
    std::size_t end{0};
    /// How many tasks a rank has before it: with few large ones it is better that none waits.
    std::size_t ahead{4};
    /// Gets a task ready; once for each, in their order.
    std::function<void(std::size_t task)> prepare;
    /// What another rank has to know of it; empty where only the leader can do it.
    std::function<std::string(std::size_t task)> question;
    /// Does it on the leader.
    std::function<Result(std::size_t task)> work;
    /// What another rank has answered.
    std::function<Result(std::size_t task, std::string_view answer)> unpack;
    /// Takes the results in the order of the tasks.
    std::function<void(std::size_t task, Result result)> take;
    /// Asked before anything else is taken or done.
    std::function<bool()> mayGoOn;
};

/// What sharing work has come to.
struct SharingAccount
{
    std::size_t tasks{0};
    std::size_t ownTasks{0}; //!< of them done by the leader
    double ownSeconds{0.0};  //!< that took it
    double waitingSeconds{0.0};
    std::size_t sentBytes{0};
    std::size_t receivedBytes{0};
};

/// Hands out tasks as ranks become free, so that a slow one holds up nothing, and takes the results
/// in order, so that the outcome does not depend on who did what. Few results wait at a time.
class WorkLeader
{
  public:
    explicit WorkLeader(Ranks& sharing)
        : ranks(sharing), asked(static_cast<std::size_t>(sharing.Size()), 0)
    {}

    std::size_t NumRanks() const { return asked.size(); }
    const SharingAccount& Account() const { return account; }

    /// False when it might not go on; answers that are still to come are then let go by.
    template <class Result>
    bool Run(const SharedWork<Result>& work)
    {
        ++round;
        std::fill(asked.begin(), asked.end(), 0);
        std::map<std::size_t, Result> ready;
        std::size_t given = work.first; // the next task that nobody has
        std::size_t taken = work.first;
        std::size_t prepared = work.first;
        const std::size_t ahead = work.ahead * asked.size() + 1;
        while (taken < work.end) {
            if (!work.mayGoOn()) {
                return false;
            }
            Collect(work, ready);
            const std::size_t stop = std::min(work.end, taken + ahead);
            for (; prepared < stop; ++prepared) {
                work.prepare(prepared);
            }
            for (std::size_t rank = 1; rank < asked.size(); ++rank) {
                while (asked[rank] < work.ahead && given < stop &&
                       Ask(rank, given, work.question)) {
                    ++given;
                }
            }
            if (const auto next = ready.find(taken); next != ready.end()) {
                work.take(taken, std::move(next->second));
                ready.erase(next);
                ++taken;
                ++account.tasks;
            } else if (given < stop) {
                const Stopwatch watch(account.ownSeconds);
                ready.emplace(given, work.work(given));
                ++given;
                ++account.ownTasks;
            } else {
                const Stopwatch watch(account.waitingSeconds);
                ranks.Wait();
            }
        }
        return true;
    }

  private:
    /// Adds to a time for as long as it lives.
    class Stopwatch
    {
      public:
        explicit Stopwatch(double& time) : seconds(time) {}
        ~Stopwatch() { seconds += std::chrono::duration<double>(Clock::now() - start).count(); }
        Stopwatch(const Stopwatch&) = delete;
        Stopwatch& operator=(const Stopwatch&) = delete;

      private:
        using Clock = std::chrono::steady_clock;
        double& seconds;
        Clock::time_point start{Clock::now()};
    };

    template <class Result>
    void Collect(const SharedWork<Result>& work, std::map<std::size_t, Result>& ready)
    {
        while (const std::optional<RankMessage> message = ranks.Receive()) {
            account.receivedBytes += message->bytes.size();
            ByteReader reader(message->bytes);
            std::uint64_t ofRound = 0;
            std::uint64_t task = 0;
            if (reader.Take(ofRound) && reader.Take(task) && ofRound == round) {
                --asked[static_cast<std::size_t>(message->from)];
                ready.emplace(task, work.unpack(task, reader.Rest()));
            }
        }
    }

    bool Ask(std::size_t rank, std::size_t task,
             const std::function<std::string(std::size_t)>& question)
    {
        const std::string text = question(task);
        if (text.empty()) {
            return false;
        }
        ByteWriter writer;
        writer.Put(round);
        writer.Put(static_cast<std::uint64_t>(task));
        writer.PutRest(text);
        account.sentBytes += writer.Bytes().size();
        ranks.Send(static_cast<int>(rank), writer.Take());
        ++asked[rank];
        return true;
    }

    Ranks& ranks;
    std::vector<std::size_t> asked; // of each rank, how many answers are to come
    std::uint64_t round{0};
    SharingAccount account;
};

/// On the other ranks: answers questions until the leader has no more.
void AnswerLeader(Ranks& ranks,
                  const std::function<void(std::string_view question, ByteWriter& answer)>& answer);
/// On the leader: no more questions. Lets answers go by that are still to come, and waits for the
/// others to have done.
void DismissRanks(Ranks& ranks);

} // namespace host

#endif
