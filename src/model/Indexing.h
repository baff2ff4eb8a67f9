#ifndef TRUNNION_MODEL_INDEXING_H
#define TRUNNION_MODEL_INDEXING_H

#include <cstddef>

// Indices and counts are 32-bit signed throughout the interface, containers count in std::size_t.
namespace trunnion
{

constexpr std::size_t ToIndex(int i)
{
    return static_cast<std::size_t>(i);
}

template <class Container>
int Count(const Container& container)
{
    return static_cast<int>(container.size());
}

template <class Container>
bool IsInRange(int i, const Container& container)
{
    return i >= 0 && ToIndex(i) < container.size();
}

} // namespace trunnion

#endif
