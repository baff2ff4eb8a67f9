#ifndef TRUNNION_PYTHON_UNLOCKED_H
#define TRUNNION_PYTHON_UNLOCKED_H

#include <pybind11/pybind11.h>

namespace bindings
{

/// Lets other Python code run as long as this lives, in a thread that holds the interpreter's lock.
///
/// A thread that asks for the lock when the interpreter is gone is ended there and then, through
/// frames of C++ that do not allow it. So the interpreter waits at its end for the threads that are
/// here, and from then on the lock is kept.
class Unlocked
{
  public:
    Unlocked();
    ~Unlocked();
    Unlocked(const Unlocked&) = delete;
    Unlocked& operator=(const Unlocked&) = delete;

    /// Whether the interpreter waits for this thread.
    static bool IsAwaited();
    /// Has the interpreter wait, at its end.
    static void WaitAtExit();

  private:
    PyThreadState* state{nullptr};
};

} // namespace bindings

#endif
