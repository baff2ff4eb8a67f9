#ifndef TRUNNION_PYTHON_PATIENCE_H
#define TRUNNION_PYTHON_PATIENCE_H

#include <chrono>

#include "Unlocked.h"

namespace bindings
{

/// Lets Ctrl-C and the end of the interpreter through now and then, from code that runs without the
/// interpreter's lock.
class Patience
{
  public:
    /// Throws what a signal's handler raises.
    void Check()
    {
        constexpr std::chrono::milliseconds kLongest(100);
        if (Clock::now() - last < kLongest) {
            return;
        }
        const pybind11::gil_scoped_acquire interpreter;
        if (Unlocked::IsAwaited()) {
            PyErr_SetNone(PyExc_SystemExit); // which ends a thread without a word
        }
        if (PyErr_Occurred() != nullptr || PyErr_CheckSignals() != 0) {
            throw pybind11::error_already_set();
        }
        last = Clock::now();
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point last{Clock::now()};
};

} // namespace bindings

#endif
