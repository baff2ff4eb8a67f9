#ifndef TRUNNION_HOST_APP_USED_FILES_H
#define TRUNNION_HOST_APP_USED_FILES_H

#include <filesystem>
#include <vector>

#include "app/SolveOptions.h"
#include "app/VerifyCommand.h"

namespace host
{

/// The files that a command reads, and those that it writes or takes away.
struct UsedFiles
{
    std::vector<std::filesystem::path> read;
    std::vector<std::filesystem::path> results; //!< what is there when it is done
    std::vector<std::filesystem::path> interim; //!< what an interrupted run leaves
};

UsedFiles FilesOf(const SolveOptions& options);
UsedFiles FilesOf(const VerifyOptions& options);

// What stands next to a table of joints where its run was interrupted: its rows so far, and what it
// takes to go on.
std::filesystem::path PartialOf(const std::filesystem::path& table);
std::filesystem::path CheckpointOf(const std::filesystem::path& table);

/// Throws InputError where one of those that are written is another of them.
void RefuseOverwriting(const UsedFiles& files);

} // namespace host

#endif
