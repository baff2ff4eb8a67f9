#ifndef TRUNNION_PYTHON_SERIAL_H
#define TRUNNION_PYTHON_SERIAL_H

#include <mutex>

namespace bindings
{

/// While it lives this thread alone uses the library, whose calls must not overlap. A thread that
/// has to wait lets other Python code run meanwhile, so whoever holds this may wait for the
/// interpreter; a thread that holds it already goes on.
///
/// No Python code of a user runs under it.
class Serial
{
  public:
    /// With the interpreter's lock held.
    Serial();
    Serial(const Serial&) = delete;
    Serial& operator=(const Serial&) = delete;

  private:
    std::unique_lock<std::recursive_mutex> lock;
};

} // namespace bindings

#endif
