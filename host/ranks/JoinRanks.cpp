#include "ranks/Ranks.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "text/InputError.h"

#ifdef TRUNNION_WITH_MPI
#include "ranks/MpiRanks.h"
#endif

namespace host
{

namespace
{

/// Whether a launcher has started this process as one of several. It leaves word of that; a process
/// by itself is spared the start of the message layer.
bool IsOneOfSeveral()
{
    constexpr std::array kSizes{"OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "SLURM_STEP_NUM_TASKS"};
    return std::any_of(kSizes.begin(), kSizes.end(), [](const char* name) {
        const char* const size = std::getenv(name);
        return size != nullptr && std::string_view(size) != "1";
    });
}

} // namespace

std::unique_ptr<Ranks> JoinRanks()
{
    if (!IsOneOfSeveral()) {
        return std::make_unique<SoleRank>();
    }
#ifdef TRUNNION_WITH_MPI
    return std::make_unique<MpiRanks>();
#else
    throw InputError("trunnion", "this build works in one process; start it without mpirun, or "
                                 "build it with MPI");
#endif
}

} // namespace host
