#ifndef TRUNNION_HOST_APP_BATCH_ARGUMENTS_H
#define TRUNNION_HOST_APP_BATCH_ARGUMENTS_H

#include <CLI/CLI.hpp>

#include "app/BatchCommand.h"

namespace host
{

/// The command line of `batch`, read into `options`.
void AddBatch(CLI::App& app, BatchOptions& options);

/// Reads the jobs of a batch as the program reads its own command line.
/// @param usual what is not a job's own: the program's version, its page, and its name as the first
/// word of `command`
JobReader ReaderOfJobs(const SolveOptions& usual);

} // namespace host

#endif
