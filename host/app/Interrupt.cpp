#include "app/Interrupt.h"

namespace host
{

namespace
{

volatile std::sig_atomic_t isRequested = 0;

extern "C" void TakeRequest(int /*signal*/)
{
    isRequested = 1;
}

} // namespace

Interrupt::Interrupt()
{
    isRequested = 0;
    struct sigaction action = {};
    action.sa_handler = TakeRequest;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], nullptr, &previous[i]);
        if (previous[i].sa_handler != SIG_IGN) {
            ::sigaction(kSignals[i], &action, nullptr);
        }
    }
}

Interrupt::~Interrupt()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], &previous[i], nullptr);
    }
}

bool Interrupt::IsRequested() const
{
    return isRequested != 0;
}

} // namespace host
