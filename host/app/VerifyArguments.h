#ifndef TRUNNION_HOST_APP_VERIFY_ARGUMENTS_H
#define TRUNNION_HOST_APP_VERIFY_ARGUMENTS_H

#include <CLI/CLI.hpp>

#include "app/VerifyCommand.h"

namespace host
{

/// The command line of `verify`, read into `options`.
void AddVerify(CLI::App& app, VerifyOptions& options);

} // namespace host

#endif
