#ifndef TRUNNION_HOST_APP_SOLVE_COMMAND_H
#define TRUNNION_HOST_APP_SOLVE_COMMAND_H

#include <ostream>

#include "app/ExitCode.h"
#include "app/SolveOptions.h"
#include "ranks/Ranks.h"

namespace host
{

/// Plans the motion along a path and writes it. Throws InputError for input that stops the run.
ExitCode Solve(const SolveOptions& options, std::ostream& out, std::ostream& err);

/// The same, the work shared among ranks: each calls this with the same options. What is written
/// does not depend on how many there are.
ExitCode SolveShared(const SolveOptions& options, Ranks& ranks, std::ostream& out,
                     std::ostream& err);

} // namespace host

#endif
