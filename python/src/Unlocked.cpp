#include "Unlocked.h"

#include <atomic>
#include <chrono>
#include <thread>

#include <pthread.h>

namespace py = pybind11;

namespace bindings
{

namespace
{

std::atomic<bool> isEnding{false};
std::atomic<int> numUnlocked{0};

void WaitForOthers()
{
    constexpr std::chrono::milliseconds kPause(1);
    isEnding = true;
    const py::gil_scoped_release others;
    while (numUnlocked > 0) {
        std::this_thread::sleep_for(kPause);
    }
}

} // namespace

Unlocked::Unlocked()
{
    if (!isEnding) {
        ++numUnlocked;
        state = PyEval_SaveThread();
    }
}

Unlocked::~Unlocked()
{
    if (state != nullptr) {
        PyEval_RestoreThread(state);
        --numUnlocked;
    }
}

bool Unlocked::IsAwaited()
{
    return isEnding;
}

void Unlocked::WaitAtExit()
{
    // The other threads are not there in a forked child.
    pthread_atfork(nullptr, nullptr, [] { numUnlocked = 0; });
    py::module_::import("atexit").attr("register")(py::cpp_function(&WaitForOthers));
}

} // namespace bindings
