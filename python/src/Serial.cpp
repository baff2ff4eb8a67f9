#include "Serial.h"

#include <memory>

#include <pthread.h>

#include "Unlocked.h"

namespace bindings
{

namespace
{

/// Of the process. A forked child takes a new one: whoever held the old one is not there to give it
/// back. Both are kept, as guards from before the fork still refer to theirs.
class ProcessMutex
{
  public:
    static std::recursive_mutex& Current() { return *Slot(); }

  private:
    static std::recursive_mutex*& Slot()
    {
        static std::recursive_mutex* current = Make();
        return current;
    }
    static std::recursive_mutex* Make()
    {
        static const int isWatched = pthread_atfork(nullptr, nullptr, [] { Slot() = Make(); });
        static_cast<void>(isWatched);
        return std::make_unique<std::recursive_mutex>().release();
    }
};

} // namespace

Serial::Serial() : lock(ProcessMutex::Current(), std::try_to_lock)
{
    if (!lock) {
        const Unlocked others;
        lock.lock();
    }
}

} // namespace bindings
