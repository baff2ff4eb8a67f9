#include "allocations/CountedNew.h"

#include <algorithm>
#include <cstdlib>
#include <new>

// The array forms and those that do not throw come down to these.

namespace
{

long allocations = 0; // the tests have one thread
long releases = 0;

void* Counted(void* block)
{
    ++allocations;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void Release(void* block)
{
    releases += block == nullptr ? 0 : 1;
    std::free(block);
}

} // namespace

namespace test
{

long Allocations()
{
    return allocations;
}

long OutstandingBlocks()
{
    return allocations - releases;
}

} // namespace test

void* operator new(std::size_t size)
{
    return Counted(std::malloc(std::max<std::size_t>(size, 1)));
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    const auto step = static_cast<std::size_t>(alignment);
    return Counted(std::aligned_alloc(step, (size / step + 1) * step));
}

void operator delete(void* block) noexcept
{
    Release(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    Release(block);
}

void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    Release(block);
}

void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    Release(block);
}
