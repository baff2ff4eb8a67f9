#ifndef TRUNNION_HOST_APP_SOLVE_COMMAND_H
#define TRUNNION_HOST_APP_SOLVE_COMMAND_H

#include <ostream>

#include "app/ExitCode.h"
#include "app/SolveOptions.h"

namespace host
{

/// Plans the motion along a path and writes it. Throws InputError for input that stops the run.
ExitCode Solve(const SolveOptions& options, std::ostream& out, std::ostream& err);

} // namespace host

#endif
