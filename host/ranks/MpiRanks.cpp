#include "ranks/MpiRanks.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <thread>
#include <utility>

namespace host
{

namespace
{

constexpr int kTag = 0;

/// Waiting must not take the core that another rank computes on.
void Pause()
{
    std::this_thread::sleep_for(std::chrono::microseconds(100));
}

} // namespace

void MpiRanks::Join()
{
    if (hasJoined) {
        return;
    }
    int provided = 0;
    MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &provided);
    hasJoined = true;
    int ownRank = 0;
    int ownSize = 0;
    MPI_Comm_rank(MPI_COMM_WORLD, &ownRank);
    MPI_Comm_size(MPI_COMM_WORLD, &ownSize);
    if (ownRank != rank || ownSize != size) {
        std::cerr << "trunnion: this is rank " << ownRank << " of " << ownSize
                  << ", and the launcher called it " << rank << " of " << size
                  << "; build with the MPI that the launcher belongs to\n";
        Abort(2);
    }
}

void MpiRanks::Part()
{
    if (!hasJoined || hasParted) {
        return;
    }
    while (!sent.empty()) {
        Pause();
        ForgetWhatHasLeft();
    }
    MPI_Finalize();
    hasParted = true;
}

void MpiRanks::Abort(int code)
{
    if (hasJoined && !hasParted) {
        MPI_Abort(MPI_COMM_WORLD, code);
    }
    Ranks::Abort(code);
}

std::string MpiRanks::FromLeader(std::string bytes)
{
    constexpr std::size_t kMost = 1U << 30U; // counts are of type int
    Join();
    std::uint64_t length = bytes.size();
    Share(&length, sizeof(length));
    bytes.resize(length);
    for (std::size_t done = 0; done < length; done += kMost) {
        Share(bytes.data() + done, static_cast<int>(std::min<std::size_t>(kMost, length - done)));
    }
    return bytes;
}

void MpiRanks::Share(void* data, int count)
{
    MPI_Request request = MPI_REQUEST_NULL;
    MPI_Ibcast(data, count, MPI_BYTE, 0, MPI_COMM_WORLD, &request);
    int isDone = 0;
    while (MPI_Test(&request, &isDone, MPI_STATUS_IGNORE) == MPI_SUCCESS && isDone == 0) {
        Pause();
    }
    MPI_Wait(&request, MPI_STATUS_IGNORE);
}

void MpiRanks::Send(int to, std::string bytes)
{
    if (bytes.size() > std::numeric_limits<int>::max()) {
        throw std::length_error("a block is too much for one message; let one process do the run");
    }
    Join();
    ForgetWhatHasLeft();
    Sent& message = sent.emplace_back();
    message.bytes = std::move(bytes);
    MPI_Isend(message.bytes.data(), static_cast<int>(message.bytes.size()), MPI_BYTE, to, kTag,
              MPI_COMM_WORLD, &message.request);
    // NOLINTNEXTLINE(clang-analyzer-optin.mpi.MPI-Checker): what has left is found out later
}

/// Never waits: the rank that a message comes from may die before it is all here.
std::optional<RankMessage> MpiRanks::Receive()
{
    Join();
    ForgetWhatHasLeft();
    int isThere = 0;
    if (arriving == MPI_REQUEST_NULL) {
        MPI_Status status;
        MPI_Iprobe(MPI_ANY_SOURCE, kTag, MPI_COMM_WORLD, &isThere, &status);
        if (isThere == 0) {
            return std::nullopt;
        }
        int count = 0;
        MPI_Get_count(&status, MPI_BYTE, &count);
        incoming = {status.MPI_SOURCE, std::string(static_cast<std::size_t>(count), '\0')};
        MPI_Irecv(incoming.bytes.data(), count, MPI_BYTE, incoming.from, kTag, MPI_COMM_WORLD,
                  &arriving);
    }
    MPI_Test(&arriving, &isThere, MPI_STATUS_IGNORE);
    return isThere == 0 ? std::nullopt : std::optional<RankMessage>(std::move(incoming));
}

void MpiRanks::Wait()
{
    Pause();
}

void MpiRanks::ForgetWhatHasLeft()
{
    sent.remove_if([](Sent& message) {
        int hasLeft = 0;
        MPI_Test(&message.request, &hasLeft, MPI_STATUS_IGNORE);
        return hasLeft != 0;
    });
}

} // namespace host
