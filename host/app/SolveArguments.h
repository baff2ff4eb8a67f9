#ifndef TRUNNION_HOST_APP_SOLVE_ARGUMENTS_H
#define TRUNNION_HOST_APP_SOLVE_ARGUMENTS_H

#include <CLI/CLI.hpp>

#include "app/SolveOptions.h"

namespace host
{

/// The command line of `solve`, read into `options`.
void AddSolve(CLI::App& app, SolveOptions& options);

} // namespace host

#endif
