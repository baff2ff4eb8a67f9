#ifndef TRUNNION_MACHINE_SOLE_SOLVE_H
#define TRUNNION_MACHINE_SOLE_SOLVE_H

#ifndef NDEBUG
#include <thread>
#endif

namespace trunnion
{

/// Holds the host to its side of the contract: no two solves overlap in time, whatever their
/// objects, and no stream is used by two threads at once. One object a call, alive as long as the
/// call; where the rule is broken the process stops with a sentence that names it. Calls from
/// inside a call, by the same thread, are in order: stages, nodes and analysts make them.
///
/// A build with NDEBUG checks nothing and pays nothing.
class [[maybe_unused]] SoleSolve
{
  public:
    enum class Use { Solve, Evaluation };

#ifdef NDEBUG
    SoleSolve(Use /*use*/, const void* /*stream*/) {}
#else
    SoleSolve(Use ofKind, const void* ofStream);
    ~SoleSolve();
    SoleSolve(const SoleSolve&) = delete;
    SoleSolve& operator=(const SoleSolve&) = delete;
    SoleSolve(SoleSolve&&) = delete;
    SoleSolve& operator=(SoleSolve&&) = delete;

  private:
    void Check(const SoleSolve& other) const;

    Use use;
    const void* stream;
    std::thread::id thread;
    SoleSolve* next{nullptr}; // of the calls under way, latest first
    SoleSolve* previous{nullptr};
#endif
};

} // namespace trunnion

#endif
