#ifndef TRUNNION_TESTS_FAILURE_FAILING_NEW_H
#define TRUNNION_TESTS_FAILURE_FAILING_NEW_H

#include <cstddef>

namespace test
{

/// Blocks that the whole program, libraries included, has got from operator new and not given back.
long BlocksInUse();

/// While it lives, operator new grants so many blocks, refuses the next one with std::bad_alloc and
/// grants all after that.
class FailingNew
{
  public:
    explicit FailingNew(long granted);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
    FailingNew(FailingNew&&) = delete;
    FailingNew& operator=(FailingNew&&) = delete;

    /// Whether a block has been refused.
    static bool HasRefused();
    /// An array of TNT takes its elements and then an int that counts its uses. Where the int was
    /// refused it has lost the elements: gives them back in its place, and says whether it did.
    static bool GiveBackLostElements();
};

} // namespace test

#endif
