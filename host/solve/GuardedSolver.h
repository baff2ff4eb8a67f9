#ifndef TRUNNION_HOST_SOLVE_GUARDED_SOLVER_H
#define TRUNNION_HOST_SOLVE_GUARDED_SOLVER_H

#include <vector>

#include <IkEndState.h>
#include <IkSolver.h>

namespace host
{

/// The pseudo-inverse solver with three guards.
///
/// Where a machine has more joints than a target fixes numbers, the true Jacobian lacks that much
/// rank; the differences that stand for it leave small singular values there instead, along which
/// the steps would go astray. No more singular values count than the target fixes numbers.
///
/// Such a machine has joints to spare. Where one stands at its bound and the step would have it go
/// on, it is left out of the pass, so that the others do its part; else it would go on being
/// counted on and being stopped. Only where limits are to be respected.
///
/// A start from which the iteration converges is near the target after ten passes, unless it is one
/// in twenty-five; one from which it does not is far off and stays so. Those that are near may take
/// all the passes there are: close to a singular pose the last stretch is long.
class GuardedSolver : public IkSolverPsuedoInverse
{
  public:
    using IkSolverPsuedoInverse::SolveIK;

    GuardedSolver(IkStream* ofStream, int mostIterations);
    /// From now on a solve ends after `passes` passes unless it is near by then; 0 never gives up.
    void GiveUpAfter(int passes) { patience = passes; }

    bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary) override;

  private:
    void Initialize(bool lockRotary) override;
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override;
    void SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u, TNT::Array2D<double>& v,
                     TNT::Array1D<double>& singularValues, int& rank) override;
    bool IsStopped(int column, double step);

    int most;
    IkJoint::JointLimitTypes limits{IkJoint::JtLimitNone};
    int patience{0};
    int pass{0};
    int fixedNumbers{0};             // by the target
    TNT::Array2D<double> difference; // from where the pass begins to the target, one column
};

} // namespace host

#endif
