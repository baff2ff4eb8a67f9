#ifndef TRUNNION_HOST_PLANNER_CHECKPOINT_H
#define TRUNNION_HOST_PLANNER_CHECKPOINT_H

#include <filesystem>
#include <string>
#include <vector>

#include "planner/PathPlan.h"

namespace host
{

/// Writes what a plan has found so far, whole or not at all.
/// @param fingerprint of everything that the candidates depend on
void SaveCheckpoint(const std::filesystem::path& place, const std::string& fingerprint,
                    const PathPlan& plan);

/// Gives a fresh plan what was saved. Throws InputError for a file that is damaged or belongs to
/// another run.
void LoadCheckpoint(const std::filesystem::path& place, const std::string& fingerprint,
                    PathPlan& plan);

} // namespace host

#endif
