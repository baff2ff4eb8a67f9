#include "app/Progress.h"

#include <iostream>
#include <utility>

#include <unistd.h>

namespace host
{

namespace
{

constexpr std::chrono::milliseconds kInterval{100};
constexpr const char* kClearLine = "\r\x1B[K";

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
    return ::isatty(STDERR_FILENO) == 1;
}

} // namespace host
