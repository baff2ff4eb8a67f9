#ifndef TRUNNION_HOST_APP_BATCH_JOB_H
#define TRUNNION_HOST_APP_BATCH_JOB_H

#include <string>
#include <variant>
#include <vector>

#include "app/ExitCode.h"
#include "app/SolveOptions.h"
#include "app/UsedFiles.h"
#include "app/VerifyCommand.h"

namespace host
{

/// One command of a batch.
using JobOptions = std::variant<SolveOptions, VerifyOptions>;

UsedFiles FilesOf(const JobOptions& job);

/// What came of it.
struct JobResult
{
    ExitCode code{kExitBadInput};
    std::string fault; //!< what stopped it; empty where nothing did
    std::string out;   //!< what it has printed
    std::string err;   //!< likewise, the fault included
    double seconds{0.0};
};

/// What the job is and what it reads, in one line of digits; empty where a file cannot be read.
/// @param words the job's arguments
std::string JobFingerprint(const std::vector<std::string>& words, const JobOptions& job,
                           const std::string& version);

/// Runs a job as if by itself. Whatever goes wrong in it is its result.
JobResult RunJob(const JobOptions& job);

/// For the way from one rank to another.
std::string BytesOf(const JobResult& result);
JobResult ResultFrom(const std::string& bytes);

} // namespace host

#endif
