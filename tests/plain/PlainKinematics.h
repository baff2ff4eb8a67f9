#ifndef TRUNNION_TESTS_PLAIN_PLAIN_KINEMATICS_H
#define TRUNNION_TESTS_PLAIN_PLAIN_KINEMATICS_H

#include <array>

#include "IkEndState.h"
#include "plain/PlainStates.h"

// Forward kinematics of the plain formulation.
namespace plain
{

/// A pose and which of its columns count: X, Y, Z axis, position.
struct EndState
{
    EndState(const IkEndState& handed); // NOLINT(google-explicit-constructor)
    EndState(Matrix withPose, const std::array<bool, 4>& withFilter);

    int Size() const;
    /// Position, X, Y, Z axis as far as they count.
    TNT::Array1D<double> Vector() const;

    Matrix pose;
    std::array<bool, 4> filter{};
};

/// a - b as a column.
Array Difference(const EndState& a, const EndState& b);

/// base_to_tip of a chain for `states`; joints not among them stand at their current values. Here
/// and in everything that asks chains, nodes of a host's class may change the values.
Matrix ChainTransform(const IkChain& chain, States& states);
/// The same with every joint at its current value.
Matrix ChainTransform(const IkChain& chain);

/// The tool pose that the solve works on.
Matrix Pose(const IkStream& stream, States& states, bool toolOnly);

/// IkStream::SolveFK: gives the pose of its result.
Matrix SolveFK(const IkStream& stream, States& states, bool commit, Matrix* partOut,
               Matrix* toolOut, bool toolOnly);

/// IkStream::SolveNewPartSpace.
bool SolveNewPartSpace(const IkStream& stream, States& states, const Matrix& partSpace,
                       Matrix& out);

/// The original frame of the body at the end of a part chain that, with every joint of the chain
/// at its initial value, puts it where `frame` says.
Matrix PartSpaceFrame(const IkChain& partChain, const Matrix& frame);

} // namespace plain

#endif
