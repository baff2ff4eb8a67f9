#ifndef TRUNNION_HOST_APP_INTERRUPT_H
#define TRUNNION_HOST_APP_INTERRUPT_H

#include <array>
#include <csignal>
#include <functional>

namespace host
{

/// While it lives, the signals that ask the program to end only set a flag. A signal that the
/// caller has switched off stays off. One that is made while another lives shares its flag.
class Interrupt
{
  public:
    Interrupt();
    /// @param whenAsked is called each time that one made while this one lives is asked
    explicit Interrupt(std::function<void()> whenAsked);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool IsRequested() const;
    /// Whether the one that lives is requested, for what a signal ends by itself otherwise; asks as
    /// one that is made while it lives.
    static bool IsOneRequested();
    /// Does as a signal does.
    static void Request();

  private:
    static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    static Interrupt* outermost;

    std::array<struct sigaction, kSignals.size()> previous{};
    std::function<void()> meanwhile; // empty for nothing
};

} // namespace host

#endif
