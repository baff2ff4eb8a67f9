#ifndef TRUNNION_TESTS_HOST_BEGUN_JOBS_H
#define TRUNNION_TESTS_HOST_BEGUN_JOBS_H

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>

#include "Process.h"
#include "TempFolder.h"

namespace test
{

/// Waits until so many jobs of jobs.txt have begun: its record has a line for each, behind the one
/// that says what it is.
inline bool WaitUntilBegun(Process& batch, const std::filesystem::path& folder, std::ptrdiff_t jobs)
{
    return batch.WaitUntil([&] {
        const std::string record = ContentOf(folder / "jobs.txt.done");
        return std::count(record.begin(), record.end(), '\n') > jobs;
    });
}

} // namespace test

#endif
