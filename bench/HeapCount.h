#ifndef TRUNNION_BENCH_HEAP_COUNT_H
#define TRUNNION_BENCH_HEAP_COUNT_H

namespace bench
{

/// Counts what is taken from the heap while it lives, by operator new in any form, anywhere in the
/// process: the program's own operators replace the standard library's. One at a time.
class HeapCount
{
  public:
    HeapCount();
    ~HeapCount();
    HeapCount(const HeapCount&) = delete;
    HeapCount& operator=(const HeapCount&) = delete;

    static long Taken();
};

/// What `call` takes from the heap.
template <class Call>
long AllocationsOf(const Call& call)
{
    const HeapCount count;
    call();
    return HeapCount::Taken();
}

} // namespace bench

#endif
