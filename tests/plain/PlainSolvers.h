#ifndef TRUNNION_TESTS_PLAIN_PLAIN_SOLVERS_H
#define TRUNNION_TESTS_PLAIN_PLAIN_SOLVERS_H

#include <functional>
#include <optional>
#include <vector>

#include "plain/PlainSolve.h"

// The solver objects of the plain formulation.
namespace plain
{

/// IkSolverPsuedoInverse.
class PseudoInverseSolver
{
  public:
    explicit PseudoInverseSolver(const IkStream& ofStream) : stream(ofStream) {}

    void SetMaxIterations(int count) { maxIterations = count; }
    void SetConvergenceTolerance(double newTolerance) { tolerance = newTolerance; }
    /// False, and nothing changes, unless these are the stream's joints in the stream's order.
    bool SetStart(const States& states);

    bool SolveIK(const EndState& target, States& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary);

    double Error() const { return error; } // of the latest pass [length^2] plus [deg^2]
    const Fields& WorkingFields() const { return fields; }

  private:
    const IkStream& stream;
    int maxIterations{60};
    double tolerance{1e-12}; // [length^2] plus [deg^2]
    std::optional<States> start;
    Fields fields;
    double error{0.0};
};

/// One start of the hybrid solver and what came of it.
struct Sample
{
    States start;
    States result;
    bool rejected{false};
    double error{0.0}; // [length^2] plus [deg^2]
};

/// Rejects every sample whose result is that of an earlier one that is not rejected.
void RejectDuplicates(std::vector<Sample>& samples);

/// IkSolverHybrid.
class HybridSolver
{
  public:
    explicit HybridSolver(const IkStream& ofStream) : stream(ofStream) {}

    bool SetStart(const States& states);
    /// Is given the values that the solver starts from, and may change the samples as it likes.
    void SetAnalyst(std::function<void(const States& start, std::vector<Sample>& samples)> chooser)
    {
        analyst = std::move(chooser);
    }

    bool SolveIK(const EndState& target, States& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary);

    const std::vector<Sample>& Samples() const { return samples; }
    const Fields& WorkingFields() const { return fields; }

  private:
    bool Choose(States& result);

    const IkStream& stream;
    std::optional<States> start;
    std::function<void(const States&, std::vector<Sample>&)> analyst;
    Fields fields;
    std::vector<Sample> samples;
};

} // namespace plain

#endif
