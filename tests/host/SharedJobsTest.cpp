// Jobs that are handed to ranks one at a time.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ranks/SharedJobs.h"

namespace
{

using host::JobLeader;
using host::RankMessage;
using host::SharedJobs;

constexpr std::chrono::milliseconds kForever = std::chrono::hours(1);

/// A rank that has been sent these messages, and no more.
class Follower final : public host::Ranks
{
  public:
    explicit Follower(std::deque<std::string> messages) : waiting(std::move(messages)) {}
    int Rank() const override { return 1; }
    int Size() const override { return 2; }
    std::string FromLeader(std::string bytes) override { return bytes; }
    void Send(int /*to*/, std::string bytes) override { answers.push_back(std::move(bytes)); }
    std::optional<RankMessage> Receive() override
    {
        if (waiting.empty()) {
            return std::nullopt;
        }
        RankMessage message{0, std::move(waiting.front())};
        waiting.pop_front();
        return message;
    }
    void Wait() override { throw std::logic_error("a rank waits for what never comes"); }

    std::vector<std::string> answers;

  private:
    std::deque<std::string> waiting;
};

/// Ranks that take their time, each another, and are let go in the end.
class BusyRanks final : public host::Ranks
{
  public:
    BusyRanks(int count, unsigned seed) : random(seed), others(static_cast<std::size_t>(count)) {}
    int Rank() const override { return 0; }
    int Size() const override { return static_cast<int>(others.size()); }
    std::string FromLeader(std::string bytes) override { return bytes; }
    void Send(int to, std::string bytes) override
    {
        Other& other = others.at(static_cast<std::size_t>(to));
        other.messages.push_back(std::move(bytes));
        mostWaiting = std::max(mostWaiting, other.messages.size());
    }
    /// Now and then one of them has ended its job.
    std::optional<RankMessage> Receive() override
    {
        ++numReceived;
        const std::size_t rank = random() % others.size();
        Other& other = others[rank];
        if (other.messages.empty() || random() % 4 != 0 || !mayAnswer) {
            return std::nullopt;
        }
        const std::size_t numMessages = other.messages.size();
        std::optional<std::string> answer;
        std::deque<std::string> messages = std::exchange(other.messages, {});
        messages.push_back(Leave());
        Follower follower(std::move(messages));
        host::DoJobs(follower, [&](const std::string& question) {
            const bool isAsked = numMessages > 1 && host::IsAskedToEnd(follower);
            return (isAsked ? "ended " : "done ") + question;
        });
        EXPECT_EQ(follower.answers.size(), 1U);
        ++numAnswered;
        return RankMessage{static_cast<int>(rank), follower.answers.at(0)};
    }
    void Wait() override {}

    /// Whether each has been told to leave, and nothing behind that.
    bool AreAllGone()
    {
        return std::all_of(others.begin() + 1, others.end(), [](const Other& other) {
            return !other.messages.empty() && other.messages.back() == Leave();
        });
    }

    std::size_t mostWaiting{0};
    std::size_t numAnswered{0};
    std::size_t numReceived{0};
    bool mayAnswer{true};

  private:
    struct Other
    {
        std::deque<std::string> messages;
    };

    /// As the leader sends it.
    static std::string Leave()
    {
        class Listener final : public host::Ranks
        {
          public:
            int Rank() const override { return 0; }
            int Size() const override { return 2; }
            std::string FromLeader(std::string bytes) override { return bytes; }
            void Send(int /*to*/, std::string bytes) override { heard = std::move(bytes); }
            std::optional<RankMessage> Receive() override { return std::nullopt; }
            void Wait() override {}
            std::string heard;
        };
        Listener listener;
        {
            const JobLeader leader(listener);
        }
        return listener.heard;
    }

    std::mt19937 random;
    std::vector<Other> others;
};

/// Jobs 0 to `count`, whose questions are their numbers.
struct Jobs
{
    explicit Jobs(JobLeader& byLeader, std::size_t count) : leader(byLeader)
    {
        shared.count = count;
        shared.question = [this](std::size_t job) {
            begun.push_back(job);
            return std::to_string(job);
        };
        shared.work = [this](const std::string& question) {
            for (int i = 0; i < lookingAround; ++i) {
                leader.LookAround(shared);
            }
            ++numOwn;
            return "own " + question;
        };
        shared.take = [this](std::size_t job, const std::string& answer) {
            taken.emplace_back(job, answer);
        };
        shared.mayGoOn = [this] { return taken.size() < mostTaken; };
    }

    SharedJobs shared;
    JobLeader& leader;
    int lookingAround{20};
    std::size_t mostTaken{10000};
    std::vector<std::size_t> begun;
    std::vector<std::pair<std::size_t, std::string>> taken;
    std::size_t numOwn{0};
};

TEST(SharedJobs, AreEachDoneOnceAndBegunInTheirOrder)
{
    constexpr std::size_t kCount = 200;
    for (const int size : {1, 2, 3, 7}) {
        for (unsigned seed = 0; seed < 5; ++seed) {
            BusyRanks ranks(size, seed);
            {
                JobLeader leader(ranks);
                Jobs jobs(leader, kCount);
                leader.Run(jobs.shared, kForever);
                ASSERT_EQ(jobs.begun.size(), kCount);
                EXPECT_TRUE(std::is_sorted(jobs.begun.begin(), jobs.begun.end()));
                std::sort(jobs.taken.begin(), jobs.taken.end());
                ASSERT_EQ(jobs.taken.size(), kCount);
                for (std::size_t job = 0; job < kCount; ++job) {
                    EXPECT_EQ(jobs.taken[job].first, job);
                    const std::string& answer = jobs.taken[job].second;
                    EXPECT_EQ(answer.substr(answer.find(' ') + 1), std::to_string(job));
                }
                EXPECT_EQ(jobs.numOwn + ranks.numAnswered, kCount);
                EXPECT_GT(jobs.numOwn, 0U);
                EXPECT_EQ(ranks.numAnswered > 0, size > 1);
                EXPECT_EQ(ranks.mostWaiting, size > 1 ? 1U : 0U); // a job waits for no rank
            }
            EXPECT_TRUE(ranks.AreAllGone());
        }
    }
}

/// The leader is at one job; all others are done before that ends.
TEST(SharedJobs, GoOnWhileTheLeaderIsAtOneOfItsOwn)
{
    BusyRanks ranks(2, 3);
    JobLeader leader(ranks);
    Jobs jobs(leader, 50);
    jobs.lookingAround = 5000; // an answer comes in one of eight looks
    leader.Run(jobs.shared, kForever);
    EXPECT_EQ(jobs.taken.size(), 50U);
    EXPECT_EQ(jobs.numOwn, 1U);
}

TEST(SharedJobs, DoNotBeginOnceTheyMayNotGoOnAndAreAskedToEnd)
{
    for (unsigned seed = 0; seed < 10; ++seed) {
        BusyRanks ranks(4, seed);
        {
            JobLeader leader(ranks);
            Jobs jobs(leader, 100);
            jobs.mostTaken = 5;
            leader.Run(jobs.shared, kForever);
            EXPECT_EQ(jobs.begun.size(), jobs.taken.size());
            EXPECT_GE(jobs.taken.size(), 5U);
            // Four are taken, three come at once, three more are handed out, and the leader has
            // one.
            EXPECT_LE(jobs.taken.size(), 4U + 3U + 3U + 1U);
            const auto isEnded = [](const auto& one) { return one.second.find("ended ") == 0; };
            const auto ended = std::find_if(jobs.taken.begin(), jobs.taken.end(), isEnded);
            EXPECT_TRUE(std::all_of(ended, jobs.taken.end(), [&](const auto& one) {
                return isEnded(one) || one.second.find("own ") == 0;
            }));
        }
        EXPECT_TRUE(ranks.AreAllGone());
    }
}

TEST(SharedJobs, AreWaitedForWithPatienceAndTakenInTheEnd)
{
    BusyRanks ranks(3, 1);
    JobLeader leader(ranks);
    Jobs jobs(leader, 10);
    ranks.mayAnswer = false;
    jobs.lookingAround = 1;
    jobs.mostTaken = 1; // which the leader does
    leader.Run(jobs.shared, std::chrono::milliseconds(1));
    EXPECT_EQ(jobs.begun.size(), 3U);
    EXPECT_EQ(jobs.taken.size(), 1U);
    ranks.mayAnswer = true;
    leader.Finish(jobs.shared);
    EXPECT_EQ(jobs.taken.size(), 3U);
    EXPECT_EQ(jobs.begun.size(), 3U);
}

TEST(SharedJobs, LetTheRanksGoWhereTheLeaderFails)
{
    BusyRanks ranks(3, 1);
    {
        JobLeader leader(ranks);
        Jobs jobs(leader, 10);
        jobs.shared.work = [](const std::string&) -> std::string {
            throw std::runtime_error("the leader's own");
        };
        EXPECT_THROW(leader.Run(jobs.shared, kForever), std::runtime_error);
        EXPECT_EQ(jobs.begun.size(), 3U);
    }
    EXPECT_EQ(ranks.numAnswered, 2U); // they have ended what they had
    EXPECT_TRUE(ranks.AreAllGone());
}

TEST(SharedJobs, AreEndedByNoOrderThatComesTooLate)
{
    std::deque<std::string> orders;
    class Recorder final : public host::Ranks
    {
      public:
        explicit Recorder(std::deque<std::string>& to) : sent(to) {}
        int Rank() const override { return 0; }
        int Size() const override { return 2; }
        std::string FromLeader(std::string bytes) override { return bytes; }
        void Send(int /*to*/, std::string bytes) override { sent.push_back(std::move(bytes)); }
        std::optional<RankMessage> Receive() override
        {
            if (sent.size() != 2 || hasAnswered) {
                return std::nullopt;
            }
            hasAnswered = true;
            return RankMessage{1, "done"};
        }
        void Wait() override {}

      private:
        std::deque<std::string>& sent;
        bool hasAnswered{false};
    } recorder(orders);
    {
        JobLeader leader(recorder);
        bool mayGoOn = true;
        SharedJobs jobs;
        jobs.count = 2;
        jobs.question = [](std::size_t job) { return std::to_string(job); };
        jobs.work = [&](const std::string& question) {
            mayGoOn = false;
            return question;
        };
        jobs.take = [](std::size_t, const std::string&) {};
        jobs.mayGoOn = [&] { return mayGoOn; };
        // Ends as the answer comes, which is behind the order to end the job.
        leader.Run(jobs, std::chrono::milliseconds(1));
    }
    ASSERT_EQ(orders.size(), 3U); // a job, its end, and leave
    Follower follower(orders);
    std::vector<std::string> done;
    host::DoJobs(follower, [&](const std::string& question) {
        done.push_back(question);
        return question; // ended before anyone asked
    });
    EXPECT_EQ(done, std::vector<std::string>{"0"});
    EXPECT_EQ(follower.answers, done);
}

} // namespace
