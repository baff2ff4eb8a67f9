// Solver objects: the stream's iteration, free-standing and with every stage replaceable.
//
// - What a solve may touch: the solver's own working fields. The stream and the joints are only
//   read; the host commits an answer.
// - Tolerance: 1e-12 by default, where a stream's own solve has 1e-8.
// - Units: [length] and [rad]; the objective counts squared lengths plus squared degrees.
// - Ownership: stream, start states and analyst stay the host's and outlive the solver's use of
//   them.
// - Threads: no two solves of any streams or solvers may overlap in time; the host serialises.

#ifndef TRUNNION_IK_SOLVER_H
#define TRUNNION_IK_SOLVER_H

#include <string>
#include <vector>

#include <tnt/tnt_array1d.h>
#include <tnt/tnt_array2d.h>

#include "IkEndState.h"
#include "IkExport.h"
#include "IkJtState.h"
#include "IkStream.h"

namespace trunnion
{
struct SolveFields;
}

/// The iteration with every stage a virtual operation. Its own step is empty: a plain IkSolver
/// measures a pose and does not move; IkSolverPsuedoInverse does.
class IK_API IkSolver
{
  public:
    IkSolver();
    IkSolver(IkStream* ofStream);
    /// Takes stream, limits, error value and start states; the working fields start empty.
    IkSolver(const IkSolver& other);
    /// Takes every field.
    IkSolver& operator=(const IkSolver& other);
    virtual ~IkSolver();

    /// As IkStream::SolveIK, from the start states where they are set. Passes 0 to max iterations -
    /// 1 respect `limitType`; the pass after them goes unlimited and fails. False without a stream.
    virtual bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                         IkJoint::JointLimitTypes limitType, bool lockRotary);
    /// The same without `lockRotary`. Fewer states than the stream has joints mean failure.
    virtual IkJtStateVector SolveIK(IkEndState& target, bool toolOnly,
                                    IkJoint::JointLimitTypes limitType);
    virtual void TraceDump();
    virtual void Reset(); //!< does nothing

  protected:
    // The stages of a solve, in the order in which it calls them.
    virtual void Initialize(bool lockRotary);
    virtual bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                              std::vector<double>& components, double& error);
    virtual bool ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                     bool fkFlag); // offered to subclasses; no solve calls it
    virtual bool ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                        int includeRotary, bool fkFlag);
    virtual TNT::Array2D<double> CalcDTheta(const IkEndState& target, const IkEndState& current,
                                            TNT::Array2D<double>& jacobian);
    virtual void SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                             TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues,
                             int& rank);

  public:
    IkStream* GetStreamPtr() const;
    void SetStreamPtr(IkStream* newStream);
    int GetMaxIterations() const;
    void SetMaxIterations(int count); //!< read afresh after every pass of a running solve
    double GetConvergenceTolerance() const;
    void SetConvergenceTolerance(double tolerance); //!< [length^2] plus [deg^2]
    double GetCurErrorval() const;                  //!< of the latest pass [length^2] plus [deg^2]
    IkJtStateVector* GetStartStates() const;
    /// Sets where solves start; null means the joints' current values. False, and nothing changes,
    /// unless `states` holds the stream's joints in the stream's order.
    bool SetStartingJtStates(IkJtStateVector* states);

  protected:
    void JointClampSearch(TNT::Array2D<double>& step);
    trunnion::SolveFields Fields();

    IkStream* streamPtr{nullptr};
    IkJtStateVector SolverJtStates;
    std::vector<bool> LockedFlags;
    std::vector<bool> RotaryFlags;
    std::vector<int> RotaryJointIndices;
    std::vector<int> FreeJointIndices;
    double MaxAngleStep{0.0}; // [rad]
    int maxIterations{60};
    double convergenceTolerance{1e-12}; // [length^2] plus [deg^2]
    double curErrorValue{0.0};
    IkJtStateVector* startStates{nullptr};

  private:
    class VirtualStages;
};

/// The solver with a step: the truncated pseudo-inverse over the free joints, rotary steps limited
/// to an eighth of a turn.
class IK_API IkSolverPsuedoInverse : public IkSolver
{
  public:
    IkSolverPsuedoInverse();
    IkSolverPsuedoInverse(IkStream* ofStream);
    IkSolverPsuedoInverse(const IkSolver& other);
    IkSolverPsuedoInverse(const IkSolverPsuedoInverse& other);
    IkSolverPsuedoInverse& operator=(const IkSolverPsuedoInverse& other);
    ~IkSolverPsuedoInverse() override;

  private:
    TNT::Array2D<double> CalcDTheta(const IkEndState& target, const IkEndState& current,
                                    TNT::Array2D<double>& jacobian) override;
};

/// One start configuration of the hybrid solver and what came of it. The user values and the label
/// are the host's: the solver neither reads nor writes them.
class IK_API IkSolverSampleItem
{
  public:
    IkJtStateVector startStates;
    IkJtStateVector resultStates;
    IkStream* stream{nullptr};
    long long userValue1{0};
    long long userValue2{0};
    std::wstring label;
    bool rejected{false};   //!< not converged, or the same as an earlier one
    double errorValue{0.0}; //!< final error [length^2] plus [deg^2]
    long long userValue3{0};
};

/// The host's chooser among the solutions of the hybrid solver.
class IK_API IkSolutionAnalyst
{
  public:
    virtual ~IkSolutionAnalyst();
    /// Called after every sample is solved. `samples` may be reordered, edited and emptied: the
    /// solver then returns the last item's result, whatever its flag. The returned value is
    /// ignored.
    /// @param startStates the solver's starting values, never null
    virtual bool AnalyzeSolutions(IkStream* stream, IkJtStateVector* startStates,
                                  std::vector<IkSolverSampleItem>& samples) = 0;
};

/// Solves from up to 64 start configurations, which differ in the angles of up to three free rotary
/// joints, keeps the distinct solutions, and returns the first or the analyst's choice.
class IK_API IkSolverHybrid : public IkSolver
{
  public:
    using IkSolver::SolveIK;

    IkSolverHybrid();
    IkSolverHybrid(IkStream* ofStream);
    IkSolverHybrid(const IkSolverHybrid& other);
    IkSolverHybrid& operator=(const IkSolverHybrid& other);
    ~IkSolverHybrid() override;

    /// When every sample is rejected, `result` is the first sample's and the call returns false.
    bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary) override;
    void Reset() override; //!< does nothing; the samples stay

    void SetAnalystObj(IkSolutionAnalyst* newAnalyst);
    IkSolutionAnalyst* GetAnalystObj() const;
    /// The samples of the last solve.
    std::vector<IkSolverSampleItem>& GetSampleList();

  protected:
    bool SetupSampleItems();
    void EliminateDuplicates(std::vector<IkSolverSampleItem>& list);
    void DumpSampleList(std::vector<IkSolverSampleItem>& list);

  private:
    bool Choose(IkJtStateVector& result);

    std::vector<IkSolverSampleItem> sampleList;
    IkSolutionAnalyst* analyst{nullptr};
};

#endif
