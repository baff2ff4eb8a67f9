#ifndef TRUNNION_MACHINE_SOLVE_FIELDS_H
#define TRUNNION_MACHINE_SOLVE_FIELDS_H

#include <vector>

#include "IkJtState.h"

class IkStream;

namespace trunnion
{

/// The working fields of one solve, wherever they live. Every stage of the iteration works on them.
struct SolveFields
{
    IkJtStateVector& states;         // working joint values
    std::vector<bool>& lockedFlags;  // by state index
    std::vector<bool>& rotaryFlags;  // by state index
    std::vector<int>& rotaryIndices; // state indices, ascending
    std::vector<int>& freeIndices;   // state indices, ascending: the columns of a partial Jacobian
    double& maxAngleStep;            // [rad]
};

/// Copies of the working fields of another solve, to be taken over once nothing can fail any more.
struct CopiedFields
{
    IkJtStateVector states;
    std::vector<bool> lockedFlags;
    std::vector<bool> rotaryFlags;
    std::vector<int> rotaryIndices;
    std::vector<int> freeIndices;
    double maxAngleStep; // [rad]

    void MoveInto(const SolveFields& fields) noexcept;
};

/// Fills `states` with the joints of all chains, each once, at their current values.
void CollectJointStates(const IkStream& stream, IkJtStateVector& states);

/// Empties what counts on the states: before they change, so that no index leads astray where a
/// solve is broken off.
void ClearIndices(const SolveFields& fields);

/// Fills the fields for a solve that starts from the values in `states`. A joint is locked by its
/// own lock, by the stream's, or, when it is rotary, by `lockRotary`.
void InitializeFields(const SolveFields& fields, const IkStream& stream, bool lockRotary);

/// Whether `index` is a state's. A host's own solver may change the fields between two stages, and
/// a node that is asked may start another solve on them.
bool IsStateIndex(const SolveFields& fields, int index);

/// Locks the free joints that `step` (a column, one row a state) would take out of their bounds.
void LockJointsLeavingBounds(const SolveFields& fields, const TNT::Array2D<double>& step);

} // namespace trunnion

#endif
