#include "machine/SoleSolve.h"

#ifndef NDEBUG

#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace trunnion
{

namespace
{

std::mutex mutex; // guards the list
SoleSolve* latest = nullptr;

[[noreturn]] void Stop(const char* sentence)
{
    std::fputs(sentence, stderr);
    std::abort();
}

} // namespace

SoleSolve::SoleSolve(Use ofKind, const void* ofStream)
    : use(ofKind), stream(ofStream), thread(std::this_thread::get_id())
{
    const std::lock_guard<std::mutex> lock(mutex);
    for (const SoleSolve* other = latest; other != nullptr; other = other->next) {
        Check(*other);
    }
    next = latest;
    if (next != nullptr) {
        next->previous = this;
    }
    latest = this;
}

SoleSolve::~SoleSolve()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (next != nullptr) {
        next->previous = previous;
    }
    (previous != nullptr ? previous->next : latest) = next;
}

void SoleSolve::Check(const SoleSolve& other) const
{
    if (thread == other.thread) {
        return;
    }
    if (use == Use::Solve && other.use == Use::Solve) {
        Stop("trunnion: two solves overlap in time; no two solves of any streams or solver objects "
             "may, so the host has to serialise its calls.\n");
    }
    if (stream == other.stream) {
        Stop("trunnion: one stream is used by two threads at once; the host has to serialise its "
             "calls.\n");
    }
}

} // namespace trunnion

#endif
