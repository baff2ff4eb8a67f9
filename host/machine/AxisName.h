#ifndef TRUNNION_HOST_MACHINE_AXIS_NAME_H
#define TRUNNION_HOST_MACHINE_AXIS_NAME_H

#include <string>

#include "text/Located.h"

namespace host
{

/// An axis name is a column of the joint table and a word of the command line. Throws InputError
/// for one that cannot be.
void RefuseUnspeakableName(const std::string& file, const Located<std::string>& name);

} // namespace host

#endif
