#ifndef TRUNNION_HOST_APP_PROGRESS_H
#define TRUNNION_HOST_APP_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <ostream>
#include <string>

namespace host
{

/// A counter in one line of the terminal.
class Progress
{
  public:
    /// Counts what `ofWhat` says, for instance "solving point". Shows nothing unless `isWanted`,
    /// nor to a stream that only collects.
    Progress(std::ostream& onTerminal, std::string ofWhat, std::size_t ofTotal, bool isWanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::size_t done);
    /// Makes room for a message.
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;

    std::ostream& terminal;
    std::string what;
    std::size_t total;
    bool isShown;
    bool isOnScreen{false};
    Clock::time_point next{Clock::now()};
};

/// Whether someone may be looking at standard error.
bool IsErrorATerminal();

} // namespace host

#endif
