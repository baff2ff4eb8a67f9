#ifndef TRUNNION_HOST_RANKS_RANKS_H
#define TRUNNION_HOST_RANKS_RANKS_H

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace host
{

struct RankMessage
{
    int from{0};
    std::string bytes;
};

/// The processes that share a run's work. Rank 0 leads: it alone speaks to the user, and but for
/// the files of jobs that a rank does as a whole, it alone reads and writes files.
class Ranks
{
  public:
    Ranks() = default;
    virtual ~Ranks() = default;
    Ranks(const Ranks&) = delete;
    Ranks& operator=(const Ranks&) = delete;

    virtual int Rank() const = 0;
    virtual int Size() const = 0;
    bool Leads() const { return Rank() == 0; }

    /// Finds the other ranks, as everything below does first. That takes a fraction of a second,
    /// most of it waiting for the launcher: another thread may get something done meanwhile.
    virtual void Join() {}

    /// After everything below; takes its time as joining does. The destructor does it otherwise.
    virtual void Part() {}

    /// Ends the run, for a rank that cannot go on: the others would wait for it. Where they are not
    /// joined, the launcher finds that this one has failed. Does not return.
    virtual void Abort(int code) { std::_Exit(code); }

    /// What the leader gives, on every rank.
    virtual std::string FromLeader(std::string bytes) = 0;
    /// Returns at once; messages from one rank to another arrive in their order.
    virtual void Send(int to, std::string bytes) = 0;
    /// A message that has arrived; nothing where there is none.
    virtual std::optional<RankMessage> Receive() = 0;
    /// Lets a moment pass in which something may arrive.
    virtual void Wait() = 0;
};

/// A process by itself.
class SoleRank final : public Ranks
{
  public:
    int Rank() const override { return 0; }
    int Size() const override { return 1; }
    std::string FromLeader(std::string bytes) override { return bytes; }
    void Send(int /*to*/, std::string /*bytes*/) override {}
    std::optional<RankMessage> Receive() override { return std::nullopt; }
    void Wait() override {}
};

/// Whether a launcher has started this process as one of several: it then stands between the
/// process and whoever called it.
bool IsOneOfSeveral();

/// The ranks that this process was started among; they are still to be joined. Throws InputError
/// where there are several and this program was built without them.
std::unique_ptr<Ranks> RanksOfLauncher();

} // namespace host

#endif
