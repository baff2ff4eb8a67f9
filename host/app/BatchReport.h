#ifndef TRUNNION_HOST_APP_BATCH_REPORT_H
#define TRUNNION_HOST_APP_BATCH_REPORT_H

#include <chrono>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/BatchFile.h"
#include "app/BatchJob.h"

namespace host
{

/// How far a batch is with one of its jobs.
struct JobState
{
    bool isBegun{false};
    bool isOfEarlierRun{false};
    std::string fingerprint;         //!< see JobFingerprint; empty until it matters
    std::optional<JobResult> result; //!< nothing until it has ended
};

/// What became of a job, as the report names it.
enum class Outcome { Done, PointsFailed, NotVerified, NotDone, Interrupted, NotBegun };

Outcome OutcomeOf(const BatchLine& line, const JobState& state);

/// What the program returns for all of them together.
ExitCode CodeOf(const std::vector<BatchLine>& lines, const std::vector<JobState>& states);

/// Prints what became of each job.
void PrintBatch(const std::string& file, const std::vector<BatchLine>& lines,
                const std::vector<JobState>& states, std::chrono::duration<double> time,
                std::ostream& out);

} // namespace host

#endif
