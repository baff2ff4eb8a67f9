#include "ranks/SharedJobs.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "text/Bytes.h"

namespace host
{

namespace
{

/// What the leader's messages begin with. The answers are nothing but themselves: a rank has one
/// job at a time.
enum class Order : std::uint8_t { Do, EndJob, Leave };

std::string Message(Order order, const std::string& question = {})
{
    ByteWriter writer;
    writer.Put(order);
    writer.PutText(question);
    return writer.Take();
}

Order OrderIn(const std::string& message, std::string& question)
{
    ByteReader reader(message);
    Order order = Order::Leave;
    return reader.Take(order) && reader.TakeText(question) ? order : Order::Leave;
}

} // namespace

JobLeader::JobLeader(Ranks& sharing)
    : ranks(sharing), others(static_cast<std::size_t>(sharing.Size()))
{}

JobLeader::~JobLeader()
{
    if (!isEnding) {
        AskForTheEnd();
    }
    while (IsAnyBusy()) { // only where the run has failed
        if (const std::optional<RankMessage> message = ranks.Receive()) {
            others.at(static_cast<std::size_t>(message->from)).isBusy = false;
        } else {
            ranks.Wait();
        }
    }
    for (int rank = 1; rank < ranks.Size(); ++rank) {
        ranks.Send(rank, Message(Order::Leave));
    }
}

void JobLeader::Run(const SharedJobs& jobs, std::chrono::milliseconds patience)
{
    using Clock = std::chrono::steady_clock;
    std::optional<Clock::time_point> latest;
    while (true) {
        LookAround(jobs);
        if (!isEnding && begun < jobs.count) {
            const std::size_t job = begun++;
            jobs.take(job, jobs.work(jobs.question(job)));
            continue;
        }
        if (!IsAnyBusy() || (latest && Clock::now() >= *latest)) {
            return;
        }
        if (isEnding && !latest) {
            latest = Clock::now() + patience;
        }
        ranks.Wait();
    }
}

void JobLeader::Finish(const SharedJobs& jobs)
{
    while (IsAnyBusy()) {
        LookAround(jobs);
        ranks.Wait();
    }
}

void JobLeader::LookAround(const SharedJobs& jobs)
{
    std::vector<std::pair<std::size_t, std::string>> answers = Collect();
    if (!isEnding && !jobs.mayGoOn()) {
        isEnding = true;
        AskForTheEnd();
    }
    for (std::size_t rank = 1; rank < others.size() && !isEnding && begun < jobs.count; ++rank) {
        if (!others[rank].isBusy) {
            others[rank] = {begun, true};
            ranks.Send(static_cast<int>(rank), Message(Order::Do, jobs.question(begun)));
            ++begun;
        }
    }
    for (auto& [job, answer] : answers) { // which may take a while
        jobs.take(job, std::move(answer));
    }
}

std::vector<std::pair<std::size_t, std::string>> JobLeader::Collect()
{
    std::vector<std::pair<std::size_t, std::string>> answers;
    while (std::optional<RankMessage> message = ranks.Receive()) {
        Other& other = others.at(static_cast<std::size_t>(message->from));
        other.isBusy = false;
        answers.emplace_back(other.job, std::move(message->bytes));
    }
    return answers;
}

void JobLeader::AskForTheEnd()
{
    for (std::size_t rank = 1; rank < others.size(); ++rank) {
        if (others[rank].isBusy) {
            ranks.Send(static_cast<int>(rank), Message(Order::EndJob));
        }
    }
}

bool JobLeader::IsAnyBusy() const
{
    return std::any_of(others.begin(), others.end(),
                       [](const Other& other) { return other.isBusy; });
}

void DoJobs(Ranks& ranks, const std::function<std::string(const std::string& question)>& work)
{
    while (true) {
        const std::optional<RankMessage> message = ranks.Receive();
        if (!message) {
            ranks.Wait();
            continue;
        }
        std::string question;
        const Order order = OrderIn(message->bytes, question);
        if (order == Order::Leave) {
            return;
        }
        if (order == Order::Do) { // a job whose end is asked for may have ended by itself
            ranks.Send(message->from, work(question));
        }
    }
}

bool IsAskedToEnd(Ranks& ranks)
{
    return ranks.Receive().has_value(); // nothing else comes while a job is being done
}

} // namespace host
