#ifndef TRUNNION_HOST_APP_SOLVE_COMMAND_H
#define TRUNNION_HOST_APP_SOLVE_COMMAND_H

#include <filesystem>
#include <optional>
#include <ostream>

#include "app/ExitCode.h"

namespace host
{

struct SolveOptions
{
    std::filesystem::path machine;
    std::filesystem::path toolpath;
    std::filesystem::path output;
    std::optional<int> stream; //!< nothing: the first
    bool inRadians{false};
    bool isQuiet{false};
};

/// Solves a path and writes the joint table. Throws InputError for input that stops the run.
ExitCode Solve(const SolveOptions& options, std::ostream& out, std::ostream& err);

} // namespace host

#endif
