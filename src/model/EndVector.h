#ifndef TRUNNION_MODEL_END_VECTOR_H
#define TRUNNION_MODEL_END_VECTOR_H

#include <array>

#include "IkEndState.h"

namespace trunnion
{

/// Which components of a pose count: X, Y, Z axis, position.
using Filter = std::array<bool, 4>;

/// Pose columns in the order in which the end-state vector lists them: position, X, Y, Z axis.
inline constexpr std::array<int, 4> kComponentColumns{3, 0, 1, 2};

/// The end-state vector of a pose: three numbers a component that counts, in the order position, X,
/// Y, Z axis.
struct EndVector
{
    int size;
    double e[12]; // the first `size` are set
};

/// Where the entries of an end-state vector stand in a pose of four columns.
struct EndEntries
{
    int size;
    int offsets[12]; // the first `size` are set
};

inline EndEntries EntriesOf(const Filter& filter)
{
    EndEntries entries; // NOLINT(*-member-init)
    entries.size = 0;
    for (const int column : kComponentColumns) {
        if (filter.at(static_cast<std::size_t>(column))) {
            for (int row = 0; row < 3; ++row) {
                entries.offsets[entries.size++] = 4 * row + column;
            }
        }
    }
    return entries;
}

/// `pose` holds the upper three rows of a transform, row by row.
inline void ToEndVector(const double* pose, const EndEntries& entries, EndVector& vector)
{
    vector.size = entries.size;
    for (int i = 0; i < entries.size; ++i) {
        vector.e[i] = pose[entries.offsets[i]];
    }
}

inline Filter FilterOf(const IkEndState& state)
{
    Filter filter{};
    state.GetFilter(filter.data());
    return filter;
}

inline void ToEndVector(const IkEndState& state, EndVector& vector)
{
    ToEndVector(state.GetCompleteState()[0], EntriesOf(FilterOf(state)), vector);
}

} // namespace trunnion

#endif
