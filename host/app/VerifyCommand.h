#ifndef TRUNNION_HOST_APP_VERIFY_COMMAND_H
#define TRUNNION_HOST_APP_VERIFY_COMMAND_H

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/ExitCode.h"
#include "app/MachineOptions.h"
#include "app/PathOptions.h"
#include "ranks/Ranks.h"

namespace host
{

struct VerifyOptions
{
    MachineOptions machine;
    PathOptions toolpath;
    std::filesystem::path table;
    std::vector<std::string> operationStreams; //!< "NAME=ID": the stream of single operations
    std::optional<double> linearTolerance;     //!< nothing: what suits the unit [length]
    std::optional<double> angleTolerance_deg;  //!< likewise
    std::optional<double> toolLength;          //!< nothing: each operation's own [length]
    int samples{16};                           //!< places between two rows
};

/// Checks a joint table against its toolpath and says what does not hold. Throws InputError for
/// input that stops it.
ExitCode Verify(const VerifyOptions& options, std::ostream& out, std::ostream& err);
/// The same by several processes that are started alike; the leader alone writes.
ExitCode VerifyShared(const VerifyOptions& options, Ranks& ranks, std::ostream& out,
                      std::ostream& err);

} // namespace host

#endif
