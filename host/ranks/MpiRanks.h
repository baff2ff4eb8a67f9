#ifndef TRUNNION_HOST_RANKS_MPI_RANKS_H
#define TRUNNION_HOST_RANKS_MPI_RANKS_H

#include <list>

#include <mpi.h>

#include "ranks/Ranks.h"

namespace host
{

/// The processes that mpirun or a batch system has started together. There is one object in a
/// process, as long as it has to do with the others.
class MpiRanks final : public Ranks
{
  public:
    /// As the launcher says, who numbers them as MPI does.
    MpiRanks(int asRank, int ofSize) : rank(asRank), size(ofSize) {}
    ~MpiRanks() override { Part(); }
    MpiRanks(const MpiRanks&) = delete;
    MpiRanks& operator=(const MpiRanks&) = delete;

    int Rank() const override { return rank; }
    int Size() const override { return size; }
    void Join() override;
    void Part() override;
    void Abort(int code) override;
    std::string FromLeader(std::string bytes) override;
    void Send(int to, std::string bytes) override;
    std::optional<RankMessage> Receive() override;
    void Wait() override;

  private:
    struct Sent
    {
        std::string bytes; // stays until it has left
        MPI_Request request{MPI_REQUEST_NULL};
    };

    void Share(void* data, int count);
    void ForgetWhatHasLeft();

    int rank;
    int size;
    bool hasJoined{false};
    bool hasParted{false};
    std::list<Sent> sent;
    RankMessage incoming; // that is on its way
    MPI_Request arriving{MPI_REQUEST_NULL};
};

} // namespace host

#endif
