#ifndef TRUNNION_HOST_APP_INTERRUPT_H
#define TRUNNION_HOST_APP_INTERRUPT_H

#include <array>
#include <csignal>

namespace host
{

/// While it lives, the signals that ask the program to end only set a flag. A signal that the
/// caller has switched off stays off.
class Interrupt
{
  public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool IsRequested() const;

  private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, kSignals.size()> previous{};
};

} // namespace host

#endif
