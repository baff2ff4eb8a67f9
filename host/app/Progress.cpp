#include "app/Progress.h"

#include <iostream>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "ranks/Ranks.h"

namespace host
{

namespace
{

constexpr std::chrono::milliseconds kInterval{100};
constexpr const char* kClearLine = "\r\x1B[K";

/// A launcher has what its processes say come by pipes, and passes it on to where it speaks itself.
bool IsLaunchersErrorATerminal()
{
    const std::string place = "/proc/" + std::to_string(::getppid()) + "/fd/2";
    const int descriptor = ::open(place.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    const bool isTerminal = descriptor >= 0 && ::isatty(descriptor) == 1;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return isTerminal;
}

} // namespace

Progress::Progress(std::ostream& onTerminal, std::string ofWhat, std::size_t ofTotal, bool isWanted)
    : terminal(onTerminal), what(std::move(ofWhat)), total(ofTotal),
      isShown(isWanted && onTerminal.rdbuf() == std::cerr.rdbuf())
{}

Progress::~Progress()
{
    Clear();
}

void Progress::Show(std::size_t done)
{
    if (!isShown) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now < next) {
        return;
    }
    next = now + kInterval;
    terminal << kClearLine << what << " " << done << " of " << total << std::flush;
    isOnScreen = true;
}

void Progress::Clear()
{
    if (isOnScreen) {
        terminal << kClearLine << std::flush;
        isOnScreen = false;
    }
}

bool IsErrorATerminal()
{
    return ::isatty(STDERR_FILENO) == 1 || (IsOneOfSeveral() && IsLaunchersErrorATerminal());
}

} // namespace host
