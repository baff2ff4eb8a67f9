#include "ranks/Ranks.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <optional>

#include "text/InputError.h"
#include "text/Numbers.h"

#ifdef TRUNNION_WITH_MPI
#include "ranks/MpiRanks.h"
#endif

namespace host
{

namespace
{

struct Place
{
    int rank{0};
    int size{1};
};

std::optional<int> NumberIn(const char* variable)
{
    const char* const text = std::getenv(variable);
    return text == nullptr ? std::nullopt : ParseCount(text);
}

/// Where a launcher has put this process among those that it has started. It leaves word of that;
/// a process by itself is spared the start of the message layer.
Place PlaceByLauncher()
{
    struct Words
    {
        const char* rank;
        const char* size;
    };
    constexpr std::array kLaunchers{Words{"OMPI_COMM_WORLD_RANK", "OMPI_COMM_WORLD_SIZE"},
                                    Words{"PMI_RANK", "PMI_SIZE"},
                                    Words{"SLURM_PROCID", "SLURM_STEP_NUM_TASKS"}};
    for (const Words& launcher : kLaunchers) {
        const std::optional<int> rank = NumberIn(launcher.rank);
        const std::optional<int> size = NumberIn(launcher.size);
        if (rank && size && *size > 1 && 0 <= *rank && *rank < *size) {
            return {*rank, *size};
        }
    }
    return {};
}

} // namespace

bool IsOneOfSeveral()
{
    return PlaceByLauncher().size > 1;
}

std::unique_ptr<Ranks> RanksOfLauncher()
{
    const Place place = PlaceByLauncher();
    if (place.size == 1) {
        return std::make_unique<SoleRank>();
    }
#ifdef TRUNNION_WITH_MPI
    return std::make_unique<MpiRanks>(place.rank, place.size);
#else
    throw InputError("trunnion", "this build works in one process; start it without mpirun, or "
                                 "build it with MPI");
#endif
}

} // namespace host
