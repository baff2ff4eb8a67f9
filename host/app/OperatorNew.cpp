// Of a process that has joined others the C library takes every block of memory under a lock, and
// solving takes many: the program gets its memory from mimalloc instead. That one's own operator
// new ends a program for which there is none left; here it is told, as everywhere.

#include <algorithm>
#include <cstdlib>
#include <new>

void* operator new(std::size_t size)
{
    if (void* const block = std::malloc(std::max<std::size_t>(size, 1))) {
        return block;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    std::free(block);
}
