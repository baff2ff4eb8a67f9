#ifndef TRUNNION_TESTS_ALLOCATIONS_COUNTED_NEW_H
#define TRUNNION_TESTS_ALLOCATIONS_COUNTED_NEW_H

namespace test
{

/// Blocks that the whole program, libraries included, has taken off the heap by operator new so
/// far.
long Allocations();

/// Those of them that it has not given back.
long OutstandingBlocks();

/// Those that `run` takes.
template <class Run>
long AllocationsIn(const Run& run)
{
    const long before = Allocations();
    run();
    return Allocations() - before;
}

} // namespace test

#endif
