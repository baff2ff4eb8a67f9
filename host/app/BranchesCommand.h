#ifndef TRUNNION_HOST_APP_BRANCHES_COMMAND_H
#define TRUNNION_HOST_APP_BRANCHES_COMMAND_H

#include <ostream>
#include <string>
#include <vector>

#include "app/ExitCode.h"
#include "app/MachineOptions.h"

namespace host
{

struct BranchesOptions
{
    MachineOptions machine;
    std::vector<std::string> pose; //!< x, y, z and the tool direction i, j, k, part coordinates
    bool inRadians{false};
    bool ignoresLimits{false};
};

/// Prints the distinct solutions at one pose. Throws InputError for input that stops it.
ExitCode ListBranches(const BranchesOptions& options, std::ostream& out, std::ostream& err);

} // namespace host

#endif
