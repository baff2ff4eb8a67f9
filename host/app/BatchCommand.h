#ifndef TRUNNION_HOST_APP_BATCH_COMMAND_H
#define TRUNNION_HOST_APP_BATCH_COMMAND_H

#include <filesystem>
#include <ostream>
#include <string>

#include "app/BatchFile.h"
#include "app/ExitCode.h"
#include "ranks/Ranks.h"

namespace host
{

struct BatchOptions
{
    std::filesystem::path file;
    bool resumes{false};
    bool isQuiet{false};
    std::string version; //!< of the program: another one may come to other results
    JobReader read;
};

/// Does all jobs of a batch, each whole on one of the ranks: each calls this with the same options.
/// A job that fails holds up no other. Throws InputError for a batch that cannot be begun.
ExitCode Batch(const BatchOptions& options, Ranks& ranks, std::ostream& out, std::ostream& err);

} // namespace host

#endif
