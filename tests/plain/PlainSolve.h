#ifndef TRUNNION_TESTS_PLAIN_PLAIN_SOLVE_H
#define TRUNNION_TESTS_PLAIN_PLAIN_SOLVE_H

#include <vector>

#include <tnt/tnt_array1d.h>
#include <tnt/tnt_array2d.h>

#include "IkStream.h"

// The solve written down plainly: every product a TNT product, every term a matrix, nothing reused.
// The library is held against it bit for bit, whatever it does to be fast.
namespace plain
{

using Column = TNT::Array2D<double>;

/// base_to_tip of a chain for `states`; joints not among them stand at their current values.
TNT::Matrix<double> ChainTransform(const IkChain& chain, IkJtStateVector& states);

/// The tool pose that the solve works on.
TNT::Matrix<double> Pose(const IkStream& stream, IkJtStateVector& states, bool toolOnly);

/// Working fields of a solve, by the names of the stream's own.
struct Fields
{
    IkJtStateVector states;
    std::vector<bool> lockedFlags;
    std::vector<bool> rotaryFlags;
    std::vector<int> freeIndices;
    double maxAngleStep{0.0};
};

Fields Initialize(const IkStream& stream, bool lockRotary);

double Objective(const IkEndState& current, const IkEndState& target, double directionTolerance);

/// Derivative of the reference's end-state vector after the state at `index`, working at `states`.
std::vector<double> JacobianColumn(const IkStream& stream, IkJtStateVector states, int index,
                                   bool isRotary, const IkEndState& reference, bool toolOnly);
TNT::Array2D<double> PartialJacobian(const IkStream& stream, const Fields& fields,
                                     const IkEndState& reference, int includeRotary, bool toolOnly);
TNT::Array2D<double> FullJacobian(const IkStream& stream, const IkEndState& reference,
                                  bool toolOnly);

/// The decomposition taken straight from JAMA, through the transpose where the matrix is wide; rank
/// 0 for an empty matrix and for one with a NaN or an infinity.
struct Svd
{
    TNT::Array2D<double> u;
    TNT::Array2D<double> v;
    TNT::Array1D<double> s;
    int rank{0};
};

Svd Decompose(const TNT::Array2D<double>& a);

Column PseudoInverseStep(const IkStream& stream, const IkEndState& target,
                         const IkEndState& current, const TNT::Array2D<double>& jacobian);
Column DampedStep(const IkStream& stream, const IkEndState& target, const IkEndState& current,
                  const TNT::Array2D<double>& jacobian);
Column PseudoInversePartialStep(const Fields& fields, const IkEndState& target,
                                const IkEndState& current, const TNT::Array2D<double>& jacobian);
Column DampedPartialStep(const Fields& fields, const IkEndState& target, const IkEndState& current,
                         const TNT::Array2D<double>& jacobian);
Column SelectivelyDampedPartialStep(const Fields& fields, const IkEndState& target,
                                    const IkEndState& current,
                                    const TNT::Array2D<double>& jacobian);

/// The stream's solve. `fields` receives the working values, converged or not.
bool SolveIK(const IkStream& stream, const IkEndState& target, IkJtStateVector& result,
             bool toolOnly, IkJoint::JointLimitTypes limitType, bool lockRotary, Fields& fields);

} // namespace plain

#endif
