#include "ranks/SharedWork.h"

namespace host
{

void AnswerLeader(Ranks& ranks,
                  const std::function<void(std::string_view question, ByteWriter& answer)>& answer)
{
    while (true) {
        const std::optional<RankMessage> message = ranks.Receive();
        if (!message) {
            ranks.Wait();
            continue;
        }
        ByteReader reader(message->bytes);
        std::uint64_t round = 0;
        std::uint64_t task = 0;
        if (!reader.Take(round) || !reader.Take(task)) {
            ranks.Send(message->from, {}); // dismissed
            return;
        }
        ByteWriter writer;
        writer.Put(round);
        writer.Put(task);
        answer(reader.Rest(), writer);
        ranks.Send(message->from, writer.Take());
    }
}

void DismissRanks(Ranks& ranks)
{
    for (int rank = 1; rank < ranks.Size(); ++rank) {
        ranks.Send(rank, {});
    }
    // An answer that nobody takes could keep its rank from ending.
    for (int leaving = ranks.Size() - 1; leaving > 0;) {
        if (const std::optional<RankMessage> message = ranks.Receive()) {
            leaving -= message->bytes.empty() ? 1 : 0;
        } else {
            ranks.Wait();
        }
    }
}

} // namespace host
