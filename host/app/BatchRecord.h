#ifndef TRUNNION_HOST_APP_BATCH_RECORD_H
#define TRUNNION_HOST_APP_BATCH_RECORD_H

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "app/ExitCode.h"

namespace host
{

/// Which jobs of a batch were begun, and what they ended with, in a file next to it. Jobs are known
/// by their fingerprints.
class BatchRecord
{
  public:
    explicit BatchRecord(std::filesystem::path place) : file(std::move(place)) {}

    /// Takes what an earlier run has noted, if there was one. Throws InputError for another file.
    void Load();
    /// What a job has ended with: interrupted where all that is known is that it was begun, nothing
    /// where not even that.
    std::optional<ExitCode> Find(const std::string& fingerprint) const;
    /// Notes such a thing of a job. Throws InputError where that cannot be written.
    void Add(const std::string& fingerprint, ExitCode code);
    /// Forgets all and takes the file away.
    void Remove();

    const std::filesystem::path& File() const { return file; }

  private:
    std::filesystem::path file;
    std::map<std::string, ExitCode> jobs;
};

} // namespace host

#endif
