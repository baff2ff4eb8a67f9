#ifndef TRUNNION_HOST_SOLVE_GUARDED_SOLVER_H
#define TRUNNION_HOST_SOLVE_GUARDED_SOLVER_H

#include <vector>

#include <IkEndState.h>
#include <IkSolver.h>

namespace host
{

/// The pseudo-inverse solver with two guards.
///
/// Where a machine has more joints than a target fixes numbers, the true Jacobian lacks that much
/// rank; the differences that stand for it leave small singular values there instead, along which
/// the steps would go astray. No more singular values count than the target fixes numbers.
///
/// A start from which the iteration converges is near the target after ten passes, unless it is one
/// in twenty-five; one from which it does not is far off and stays so. Those that are near may take
/// all the passes there are: close to a singular pose the last stretch is long.
class GuardedSolver : public IkSolverPsuedoInverse
{
  public:
    GuardedSolver(IkStream* ofStream, int mostIterations);
    /// From now on a solve ends after `passes` passes unless it is near by then; 0 never gives up.
    void GiveUpAfter(int passes) { patience = passes; }

  private:
    void Initialize(bool lockRotary) override;
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override;
    void SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u, TNT::Array2D<double>& v,
                     TNT::Array1D<double>& singularValues, int& rank) override;

    int most;
    int fixedNumbers{0}; // by the target
    int patience{0};
    int pass{0};
};

} // namespace host

#endif
