#ifndef TRUNNION_HOST_MACHINE_URDF_FILE_H
#define TRUNNION_HOST_MACHINE_URDF_FILE_H

#include <string>
#include <string_view>

#include "machine/MachineDescription.h"
#include "machine/MountLinks.h"

namespace host
{

/// Reads a machine from URDF text, in millimetres. Machine coordinates are the frame of the root
/// link. The joints that move are the axes, under their own names as words; one whose limits leave
/// 0 out starts at the limit that is nearest to it. There is one stream, 1, between the two links.
/// What is seen of the links hangs on the axes that carry them, without meshes.
/// `file` is what messages call the text. Throws InputError at the first thing that is wrong.
MachineDescription ReadUrdf(std::string_view text, const std::string& file,
                            const MountLinks& links);

} // namespace host

#endif
