#ifndef TRUNNION_HOST_APP_CHECK_COMMAND_H
#define TRUNNION_HOST_APP_CHECK_COMMAND_H

#include <ostream>

#include "app/ExitCode.h"
#include "app/MachineOptions.h"
#include "app/PathOptions.h"

namespace host
{

struct CheckOptions
{
    MachineOptions machine;
    PathOptions toolpath; //!< without a file: the machine alone
    bool inRadians{false};
};

/// Prints what is understood of a machine and a toolpath. Throws InputError for what is not.
ExitCode Check(const CheckOptions& options, std::ostream& out, std::ostream& err);

} // namespace host

#endif
