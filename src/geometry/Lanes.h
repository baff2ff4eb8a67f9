#ifndef TRUNNION_GEOMETRY_LANES_H
#define TRUNNION_GEOMETRY_LANES_H

#include <cstring>

namespace trunnion
{

/// Two doubles that are computed with side by side, each as it would be alone: what the
/// instructions of every processor of the kind do. Compilers that know other registers split them.
typedef double Lanes __attribute__((vector_size(16))); // NOLINT(modernize-use-using)

inline Lanes LoadLanes(const double* from)
{
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

inline void StoreLanes(Lanes lanes, double* to)
{
    std::memcpy(to, &lanes, sizeof lanes);
}

} // namespace trunnion

#endif
