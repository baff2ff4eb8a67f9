#ifndef TRUNNION_HOST_APP_BATCH_FILE_H
#define TRUNNION_HOST_APP_BATCH_FILE_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "app/BatchJob.h"

namespace host
{

/// One job of a batch, as its file says.
struct BatchLine
{
    int number{0};                  //!< of the line, from 1
    std::string text;               //!< as written
    std::vector<std::string> words; //!< the arguments, the command first
    JobOptions job;
};

/// Reads a job's arguments. Throws InputError with a sentence about what is wrong with them.
using JobReader = std::function<JobOptions(const std::vector<std::string>& words)>;

/// All jobs of a batch, in their order. Throws InputError, naming the line, for one that cannot be
/// read, and where one writes what another reads or writes.
/// @param record what is noted about the batch while it runs
std::vector<BatchLine> ReadBatch(const std::filesystem::path& file,
                                 const std::filesystem::path& record, const JobReader& read);

} // namespace host

#endif
