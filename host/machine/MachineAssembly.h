#ifndef TRUNNION_HOST_MACHINE_MACHINE_ASSEMBLY_H
#define TRUNNION_HOST_MACHINE_MACHINE_ASSEMBLY_H

#include "machine/LoadedMachine.h"
#include "machine/MachineDescription.h"

namespace host
{

/// Builds the tree, chains and streams of a machine. Throws InputError where the description does
/// not fit together.
LoadedMachine AssembleMachine(const MachineDescription& description);

} // namespace host

#endif
