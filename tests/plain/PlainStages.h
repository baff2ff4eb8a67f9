#ifndef TRUNNION_TESTS_PLAIN_PLAIN_STAGES_H
#define TRUNNION_TESTS_PLAIN_PLAIN_STAGES_H

#include <vector>

#include "plain/PlainKinematics.h"

// What a pass of the plain solve measures before it steps: error and derivatives.
namespace plain
{

/// Working fields of a solve, by the names of the stream's own.
struct Fields
{
    States states;
    std::vector<bool> lockedFlags;
    std::vector<bool> rotaryFlags;
    std::vector<int> rotaryIndices;
    std::vector<int> freeIndices;
    double maxAngleStep{0.0}; // [rad]
};

Fields Initialize(const IkStream& stream, bool lockRotary);
Fields Initialize(const IkStream& stream, const States& start, bool lockRotary);

bool IsRotaryFree(const Fields& fields, int k);

/// JointClampSearch: locks the free joints that the step, a column, would take out of their bounds.
void LockJointsLeavingBounds(Fields& fields, const Array& step);

constexpr double kStreamDirectionTolerance = 1.523e-10; // of a cosine
constexpr double kSolverDirectionTolerance = 1.53e-10;

/// Of end states with the same filter: [length^2] plus [deg^2].
double Objective(const EndState& current, const EndState& target, double directionTolerance);

/// Derivative of the reference's end-state vector after the state at `index`, working at `states`,
/// which hold their values again afterwards.
std::vector<double> JacobianColumn(const IkStream& stream, States& states, int index, bool isRotary,
                                   const EndState& reference, bool toolOnly);
Array PartialJacobian(const IkStream& stream, const Fields& fields, const EndState& reference,
                      int includeRotary, bool toolOnly);
/// False, and nothing is written, where a joint that is not locked is unknown to the stream.
bool FullJacobian(const IkStream& stream, const EndState& reference, bool toolOnly,
                  Array& jacobian);

} // namespace plain

#endif
