#include "app/Interrupt.h"

#include <utility>

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

Interrupt* Interrupt::outermost = nullptr;

Interrupt::Interrupt() : Interrupt(nullptr) {}

Interrupt::Interrupt(std::function<void()> whenAsked) : meanwhile(std::move(whenAsked))
{
    if (outermost != nullptr) {
        return;
    }
    outermost = this;
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
    if (outermost != this) {
        return;
    }
    outermost = nullptr;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        ::sigaction(kSignals[i], &previous[i], nullptr);
    }
}

bool Interrupt::IsRequested() const
{
    return outermost == this ? isRequested != 0 : IsOneRequested();
}

bool Interrupt::IsOneRequested()
{
    if (outermost == nullptr) {
        return false;
    }
    if (outermost->meanwhile) {
        outermost->meanwhile();
    }
    return isRequested != 0;
}

void Interrupt::Request()
{
    isRequested = 1;
}

} // namespace host
