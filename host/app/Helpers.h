#ifndef TRUNNION_HOST_APP_HELPERS_H
#define TRUNNION_HOST_APP_HELPERS_H

#include <functional>
#include <future>
#include <string>
#include <utility>

#include "ranks/SharedWork.h"

namespace host
{

/// The other ranks, as the leader sees them. They are let go however the run ends.
class Helpers
{
  public:
    explicit Helpers(Ranks& others);
    ~Helpers();
    Helpers(const Helpers&) = delete;
    Helpers& operator=(const Helpers&) = delete;

    /// Gives them what the run works on. Those that are let go without it get nothing.
    void Share(const std::function<std::string()>& sources);
    /// They are not asked any more.
    void LetGo();
    /// Null where there are none.
    WorkLeader* Leader() { return ranks.Size() > 1 ? &leader : nullptr; }

  private:
    Ranks& ranks;
    WorkLeader leader;
    bool isSharing{false};
    bool haveGone{false};
};

/// Work of the leader's own beside what waits for the launcher; in its turn where there are no
/// other ranks.
template <class Work>
auto Meanwhile(const Ranks& ranks, Work work)
{
    return std::async(ranks.Size() > 1 ? std::launch::async : std::launch::deferred,
                      std::move(work));
}

/// What `read` gives; it is done while the other ranks, where there are some, are joined.
template <class Read>
auto ReadWhileJoining(Ranks& ranks, Read read)
{
    auto reading = Meanwhile(ranks, std::move(read));
    ranks.Join();
    return reading.get();
}

/// Does `finish` while the other ranks are let go.
template <class Finish>
void FinishWhileParting(Ranks& ranks, Helpers& helpers, Finish finish)
{
    auto finishing = Meanwhile(ranks, std::move(finish));
    helpers.LetGo();
    ranks.Part();
    finishing.get();
}

} // namespace host

#endif
