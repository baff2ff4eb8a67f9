#ifndef TRUNNION_TESTS_HOST_RANKS_IN_DISORDER_H
#define TRUNNION_TESTS_HOST_RANKS_IN_DISORDER_H

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ranks/SharedWork.h"

namespace test
{

/// A rank with one question before it, and its answer.
class OneQuestion final : public host::Ranks
{
  public:
    explicit OneQuestion(std::string text) : question(std::move(text)) {}
    int Rank() const override { return 1; }
    int Size() const override { return 2; }
    std::string FromLeader(std::string bytes) override { return bytes; }
    void Send(int /*to*/, std::string bytes) override
    {
        if (!bytes.empty()) { // a farewell is none
            answer = std::move(bytes);
        }
    }
    std::optional<host::RankMessage> Receive() override
    {
        return host::RankMessage{0, std::exchange(question, {})};
    }
    void Wait() override {}

    std::string answer;

  private:
    std::string question;
};

/// Ranks that keep their questions for a while and answer in an order of their own.
class RanksInDisorder final : public host::Ranks
{
  public:
    using Answering = std::function<std::string(int rank, const std::string& question)>;

    RanksInDisorder(int count, unsigned seed, Answering byAnswering)
        : size(count), random(seed), answering(std::move(byAnswering)),
          waiting(static_cast<std::size_t>(count))
    {}
    int Rank() const override { return 0; }
    int Size() const override { return size; }
    std::string FromLeader(std::string bytes) override { return bytes; }
    void Send(int to, std::string bytes) override
    {
        waiting.at(static_cast<std::size_t>(to)).push_back(std::move(bytes));
        ++numAsked;
    }
    std::optional<host::RankMessage> Receive() override
    {
        const auto rank = random() % waiting.size();
        if (random() % 3 == 0 || waiting[rank].empty()) {
            return std::nullopt;
        }
        OneQuestion one(std::move(waiting[rank].front()));
        waiting[rank].pop_front();
        host::AnswerLeader(one, [&](std::string_view question, host::ByteWriter& answer) {
            answer.PutRest(answering(static_cast<int>(rank), std::string(question)));
        });
        return host::RankMessage{static_cast<int>(rank), one.answer};
    }
    void Wait() override {}

    std::size_t numAsked{0};

  private:
    int size;
    std::mt19937 random;
    Answering answering;
    std::vector<std::deque<std::string>> waiting;
};

} // namespace test

#endif
