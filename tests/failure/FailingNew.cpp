#include "failure/FailingNew.h"

#include <algorithm>
#include <cstdlib>
#include <new>

// The forms that do not throw come down to these. The array forms would, too, but not in builds
// with a sanitizer, which has its own.

namespace
{

// The tests have one thread.
long inUse = 0;
long grants = -1; // left until one is refused; negative: all are granted
bool hasRefused = false;
std::size_t refusedSize = 0;
void* lastBlock = nullptr; // the one granted before the refused one, unless given back meanwhile

void* Grant(std::size_t size, void* (*take)(std::size_t, std::size_t), std::size_t alignment)
{
    if (grants == 0) {
        grants = -1;
        hasRefused = true;
        refusedSize = size;
        throw std::bad_alloc();
    }
    void* block = take(size, alignment);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    if (grants > 0) {
        --grants;
        lastBlock = block;
    }
    ++inUse;
    return block;
}

void* TakeUsual(std::size_t size, std::size_t /*alignment*/)
{
    return std::malloc(std::max<std::size_t>(size, 1));
}

void* TakeAligned(std::size_t size, std::size_t alignment)
{
    return std::aligned_alloc(alignment, (size / alignment + 1) * alignment);
}

void GiveBack(void* block)
{
    if (block == nullptr) {
        return;
    }
    --inUse;
    if (block == lastBlock) {
        lastBlock = nullptr;
    }
    std::free(block);
}

} // namespace

namespace test
{

long BlocksInUse()
{
    return inUse;
}

FailingNew::FailingNew(long granted)
{
    hasRefused = false;
    lastBlock = nullptr;
    grants = granted;
}

FailingNew::~FailingNew()
{
    grants = -1;
    lastBlock = nullptr;
}

bool FailingNew::HasRefused()
{
    return hasRefused;
}

bool FailingNew::GiveBackLostElements()
{
    if (!hasRefused || refusedSize != sizeof(int) || lastBlock == nullptr) {
        return false;
    }
    GiveBack(lastBlock);
    return true;
}

} // namespace test

void* operator new(std::size_t size)
{
    return Grant(size, TakeUsual, 0);
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    return Grant(size, TakeAligned, static_cast<std::size_t>(alignment));
}

void operator delete(void* block) noexcept
{
    GiveBack(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    GiveBack(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    GiveBack(block);
}

void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    GiveBack(block);
}

void* operator new[](std::size_t size)
{
    return Grant(size, TakeUsual, 0);
}

void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return Grant(size, TakeAligned, static_cast<std::size_t>(alignment));
}

void operator delete[](void* block) noexcept
{
    GiveBack(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    GiveBack(block);
}

void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept
{
    GiveBack(block);
}

void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    GiveBack(block);
}
