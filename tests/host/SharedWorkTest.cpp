// How ranks part when the work is done.

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ranks/SharedWork.h"
#include "text/Bytes.h"

namespace
{

using host::RankMessage;

/// A rank that finds messages, after having waited for each, and keeps what it sends.
class WaitingRank final : public host::Ranks
{
  public:
    WaitingRank(int rank, int ofSize, std::deque<RankMessage> toFind)
        : own(rank), size(ofSize), inbox(std::move(toFind))
    {}
    int Rank() const override { return own; }
    int Size() const override { return size; }
    std::string FromLeader(std::string bytes) override { return bytes; }
    void Send(int to, std::string bytes) override { sent.push_back({to, std::move(bytes)}); }
    std::optional<RankMessage> Receive() override
    {
        if (!hasArrived || inbox.empty()) {
            return std::nullopt;
        }
        hasArrived = false;
        RankMessage message = std::move(inbox.front());
        inbox.pop_front();
        return message;
    }
    void Wait() override { hasArrived = true; }

    int own;
    int size;
    std::deque<RankMessage> inbox;
    std::vector<RankMessage> sent; // each `from` the rank that it goes to

  private:
    bool hasArrived{false};
};

std::string Message(std::uint64_t round, std::uint64_t task, const std::string& text)
{
    host::ByteWriter bytes;
    bytes.Put(round);
    bytes.Put(task);
    bytes.PutRest(text);
    return bytes.Take();
}

TEST(SharedWork, IsLeftByARankThatSaysSo)
{
    WaitingRank rank(2, 3, {{0, Message(7, 4, "what")}, {0, {}}, {0, Message(8, 5, "late")}});
    host::AnswerLeader(rank, [](std::string_view question, host::ByteWriter& answer) {
        answer.PutRest(std::string(question) + "?");
    });
    ASSERT_EQ(rank.sent.size(), 2U);
    EXPECT_EQ(rank.sent[0].from, 0);
    EXPECT_EQ(rank.sent[0].bytes, Message(7, 4, "what?"));
    EXPECT_EQ(rank.sent[1].from, 0);
    EXPECT_EQ(rank.sent[1].bytes, "");
    EXPECT_EQ(rank.inbox.size(), 1U);
}

TEST(SharedWork, LeavesNoAnswerOnItsWay)
{
    WaitingRank leader(0, 3,
                       {{1, Message(1, 4, "late")},
                        {2, Message(1, 5, "later")},
                        {2, {}},
                        {1, Message(1, 6, "last")},
                        {1, {}},
                        {1, "of what follows"}});
    host::DismissRanks(leader);
    ASSERT_EQ(leader.sent.size(), 2U);
    EXPECT_EQ(leader.sent[0].from, 1);
    EXPECT_EQ(leader.sent[1].from, 2);
    EXPECT_EQ(leader.sent[0].bytes + leader.sent[1].bytes, "");
    EXPECT_EQ(leader.inbox.size(), 1U);
}

} // namespace
