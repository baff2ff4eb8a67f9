/// @file
/// Solver objects: the stream's iteration, free-standing and with every stage replaceable.
///
/// - What a solve may touch: the solver's own working fields. The stream and the joints are only
///   read; the host commits an answer.
/// - Tolerance: 1e-12 by default, where a stream's own solve has 1e-8.
/// - Units: [length] and [rad]; the objective counts squared lengths plus squared degrees.
/// - Ownership: stream, start states and analyst stay the host's and outlive the solver's use of
///   them.
/// - Threads: no two solves of any streams or solvers may overlap in time; the host serialises.

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
    IkSolver();                   //!< without a stream: each solve fails
    IkSolver(IkStream* ofStream); //!< null is as no stream
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
    virtual void TraceDump(); //!< traces nothing
    virtual void Reset();     //!< does nothing

  protected:
    /// Before the first pass: fills the working fields from the start states, else from the joints.
    /// A joint is held by its own lock, by the stream's, or, when it is rotary, by `lockRotary`.
    virtual void Initialize(bool lockRotary);
    /// Measures a pass; the solve ends when `error` is at most the tolerance. What is returned is
    /// ignored.
    /// @param current    the pose at the working values, with the filter of the target
    /// @param target     as given to the solve
    /// @param components empty; this implementation leaves it so
    /// @param error      [length^2] plus [deg^2]; a direction whose cosine is within 1.53e-10 of 1
    ///                   counts as met. Comes in as that of the pass before.
    virtual bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                              std::vector<double>& components, double& error);
    /// One row an entry of the end-state vector, one column a joint of the stream, locked ones 0;
    /// at the joints' current values, not the working ones. False, and `jacobian` stays, without a
    /// stream and where a joint has no local lock. `fkFlag` leaves the part side out.
    virtual bool ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                     bool fkFlag); // offered to subclasses; no solve calls it
    /// Differences at the working values, over 0.1 lengths or a degree, upwards unless that passes
    /// the high bound: one row an entry of the end-state vector, one column a free joint, as
    /// FreeJointIndices lists them. What is returned is ignored; without a stream nothing changes,
    /// and the Jacobian of the pass before stays in force.
    /// @param reference     the pose from which differences are taken; its filter picks the rows
    /// @param jacobian      receives a new array
    /// @param includeRotary 0 leaves the columns of rotary joints 0. The solve gives the number of
    ///                      the pass: on the first one rotary joints rest.
    /// @param fkFlag        leaves the part side out
    virtual bool ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                        int includeRotary, bool fkFlag);
    /// The step from `current` towards `target`: one column with a row a working state, [length] or
    /// [rad]. A step of another size moves nothing; this implementation gives an empty one.
    virtual TNT::Array2D<double> CalcDTheta(const IkEndState& target, const IkEndState& current,
                                            TNT::Array2D<double>& jacobian);
    /// The thin singular value decomposition matrix = u diag(singularValues) v', values descending;
    /// as many columns and values as the shorter side of the matrix. `rank` counts the values above
    /// 2^-52 times the largest value times the longer side. An empty matrix and one with a NaN or
    /// an infinity have rank 0, no values and no columns.
    virtual void SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                             TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues,
                             int& rank);

  public:
    ///@{
    /// Not owned, may be null. Start states that were set for another stream stay set.
    IkStream* GetStreamPtr() const;
    void SetStreamPtr(IkStream* newStream);
    ///@}
    ///@{
    /// 60 by default. Read afresh after every pass of a running solve. With 0 there is one pass and
    /// its unlimited step; below 0 a solve fails at once and leaves `result` as it is.
    int GetMaxIterations() const;
    void SetMaxIterations(int count);
    ///@}
    ///@{
    /// [length^2] plus [deg^2], 1e-12 by default. Any number: below 0 nothing converges.
    double GetConvergenceTolerance() const;
    void SetConvergenceTolerance(double tolerance);
    ///@}
    /// Of the latest pass [length^2] plus [deg^2]; after a failed solve that is the error before
    /// its last step.
    double GetCurErrorval() const;
    IkJtStateVector* GetStartStates() const; //!< as set, or null
    /// Sets where solves start; null means the joints' current values. False, and nothing changes,
    /// unless `states` holds the stream's joints in the stream's order. The vector stays the host's
    /// and is read at the start of each solve.
    bool SetStartingJtStates(IkJtStateVector* states);

  protected:
    /// Holds, for the rest of the solve, the free joints that `step` (a column, one row a state)
    /// would take out of their bounds; steps below 1e-10 are passed over. Offered to subclasses; no
    /// solve calls it.
    void JointClampSearch(TNT::Array2D<double>& step);
    trunnion::SolveFields Fields(); //!< for the library's own use: the type is not public

    IkStream* streamPtr{nullptr};        //!< not owned
    IkJtStateVector SolverJtStates;      //!< working values; an index into it is a state index
    std::vector<bool> LockedFlags;       //!< by state index
    std::vector<bool> RotaryFlags;       //!< by state index
    std::vector<int> RotaryJointIndices; //!< state indices, ascending
    std::vector<int> FreeJointIndices;  //!< state indices, ascending: columns of a partial Jacobian
    double MaxAngleStep{0.0};           //!< [rad], 45 degrees from Initialize on
    int maxIterations{60};              //!< see SetMaxIterations
    double convergenceTolerance{1e-12}; //!< [length^2] plus [deg^2]
    double curErrorValue{0.0};          //!< [length^2] plus [deg^2]
    IkJtStateVector* startStates{nullptr}; //!< not owned

  private:
    class VirtualStages;
};

/// The solver with a step: the truncated pseudo-inverse over the free joints, rotary steps limited
/// to an eighth of a turn.
class IK_API IkSolverPsuedoInverse : public IkSolver
{
  public:
    ///@{
    /// As those of IkSolver.
    IkSolverPsuedoInverse();
    IkSolverPsuedoInverse(IkStream* ofStream);
    IkSolverPsuedoInverse(const IkSolver& other);
    IkSolverPsuedoInverse(const IkSolverPsuedoInverse& other);
    IkSolverPsuedoInverse& operator=(const IkSolverPsuedoInverse& other);
    ///@}
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
    IkJtStateVector startStates;  //!< where the sample is solved from
    IkJtStateVector resultStates; //!< as SolveIK gives them: of a failure, joints out of bounds
    IkStream* stream{nullptr};    //!< of the solver, not owned
    ///@{
    /// The host's.
    long long userValue1{0};
    long long userValue2{0};
    std::wstring label;
    ///@}
    bool rejected{false};    //!< not converged, or the same as an earlier one
    double errorValue{0.0};  //!< final error [length^2] plus [deg^2]
    long long userValue3{0}; //!< the host's
};

/// The host's chooser among the solutions of the hybrid solver.
class IK_API IkSolutionAnalyst
{
  public:
    virtual ~IkSolutionAnalyst();
    /// Called once, after all samples are solved. `samples` may be reordered, edited and emptied:
    /// the solver then returns the last item's result, whatever its flag. The returned value is
    /// ignored.
    /// @param stream      the solver's
    /// @param startStates the solver's starting values, never null
    /// @param samples     all of them, the rejected ones too
    virtual bool AnalyzeSolutions(IkStream* stream, IkJtStateVector* startStates,
                                  std::vector<IkSolverSampleItem>& samples) = 0;
};

/// Solves from up to 64 start configurations, which differ in the angles of up to three free rotary
/// joints, keeps the distinct solutions, and returns the first or the analyst's choice. With more
/// than three free rotary joints there is one start only, the unchanged one.
///
/// Each sample gets ten passes of an IkSolverPsuedoInverse of its own, with a tolerance of 1e-12:
/// iterations and tolerance set on this solver are not used. The starts of a rotary joint are its
/// current value in whole degrees and what lies 90, 180 and -90 degrees from it, brought into its
/// bounds.
class IK_API IkSolverHybrid : public IkSolver
{
  public:
    using IkSolver::SolveIK;

    ///@{
    /// As those of IkSolver; a copy takes samples and analyst along.
    IkSolverHybrid();
    IkSolverHybrid(IkStream* ofStream);
    IkSolverHybrid(const IkSolverHybrid& other);
    IkSolverHybrid& operator=(const IkSolverHybrid& other);
    ///@}
    ~IkSolverHybrid() override;

    /// When every sample is rejected, `result` is the first sample's and the call returns false.
    bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                 IkJoint::JointLimitTypes limitType, bool lockRotary) override;
    void Reset() override; //!< does nothing; the samples stay

    ///@{
    /// Not owned; null, as at first, takes the first solution.
    void SetAnalystObj(IkSolutionAnalyst* newAnalyst);
    IkSolutionAnalyst* GetAnalystObj() const;
    ///@}
    /// The samples of the last solve, in the order of their starts, or as the analyst left them.
    /// The next solve replaces them.
    std::vector<IkSolverSampleItem>& GetSampleList();

  protected:
    /// Fills the sample list from the working fields: the unchanged start, then every other
    /// combination of start angles, those of the last joint changing fastest. Always true.
    bool SetupSampleItems();
    /// Rejects each sample whose result is that of an earlier, not rejected one: every value within
    /// 0.1, [length] or [rad].
    void EliminateDuplicates(std::vector<IkSolverSampleItem>& list);
    void DumpSampleList(std::vector<IkSolverSampleItem>& list); //!< traces nothing

  private:
    bool Choose(IkJtStateVector& result);

    std::vector<IkSolverSampleItem> sampleList;
    IkSolutionAnalyst* analyst{nullptr};
};

#endif
