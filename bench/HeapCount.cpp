#include "HeapCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace
{

bool isCounting = false;
long taken = 0;

void* Take(std::size_t size)
{
    if (isCounting) {
        ++taken;
    }
    if (void* memory = std::malloc(size > 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* TakeAligned(std::size_t size, std::align_val_t alignment)
{
    if (isCounting) {
        ++taken;
    }
    const auto step = static_cast<std::size_t>(alignment);
    if (void* memory = std::aligned_alloc(step, (size + step - 1) / step * step)) {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

// The standard library's other forms call these.
void* operator new(std::size_t size)
{
    return Take(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return TakeAligned(size, alignment);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    std::free(memory);
}

namespace bench
{

HeapCount::HeapCount()
{
    taken = 0;
    isCounting = true;
}

HeapCount::~HeapCount()
{
    isCounting = false;
}

long HeapCount::Taken()
{
    return taken;
}

} // namespace bench
