#ifndef TRUNNION_HOST_APP_SOLVE_SETUP_H
#define TRUNNION_HOST_APP_SOLVE_SETUP_H

#include <ostream>
#include <string>

#include "app/FileDigest.h"
#include "app/SolveOptions.h"
#include "machine/LoadedMachine.h"
#include "planner/PathPlan.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// Puts the axes that stay fixed where the user wants them and holds them there, in every stream.
/// @param locks each "NAME=VALUE", in degrees or, if so asked, radians for a rotary axis
void LockAxes(LoadedMachine& machine, const std::vector<std::string>& locks, bool inRadians);

/// What is to be planned, from what the user asks. Throws InputError for what does not fit the
/// machine or the path; writes warnings.
PlanRequest RequestFrom(const SolveOptions& options, LoadedMachine& machine, const Toolpath& path,
                        std::ostream& warnings);
/// The same for whoever helps with the plan and has not got the path's points.
PlanRequest RequestWithoutPoints(const SolveOptions& options, LoadedMachine& machine,
                                 const Toolpath& path);

/// Everything that the candidates depend on, in one line of digits.
std::string RunFingerprint(const SolveOptions& options, const SourceDigests& sources);

} // namespace host

#endif
