#ifndef TRUNNION_HOST_APP_POSE_COMMAND_H
#define TRUNNION_HOST_APP_POSE_COMMAND_H

#include <ostream>
#include <string>
#include <vector>

#include "app/ExitCode.h"
#include "app/MachineOptions.h"

namespace host
{

struct PoseOptions
{
    MachineOptions machine;
    std::vector<std::string> values; //!< "X=10"; axes not among them stand where they start
    bool inRadians{false};
};

/// Prints where the tool stands in part coordinates. Throws InputError for input that stops it.
ExitCode Pose(const PoseOptions& options, std::ostream& out, std::ostream& err);

} // namespace host

#endif
