#include "IkSolver.h"

#include <typeinfo>

#include "geometry/Trace.h"
#include "machine/Arrays.h"
#include "machine/Iteration.h"
#include "machine/LoopStages.h"
#include "machine/Objective.h"
#include "machine/SoleSolve.h"

using trunnion::SoleSolve;

namespace
{

bool IsObjectiveTraced()
{
    const trunnion::TraceSwitches& tracing = trunnion::Tracing();
    return tracing.solverObjectiveTarget || tracing.solverObjectiveCurrent;
}

constexpr double kDirectionTolerance = 1.53e-10; // of a cosine; a stream's own solve has another

bool HoldSameJoints(IkJtStateVector& a, IkJtStateVector& b)
{
    if (a.Size() != b.Size()) {
        return false;
    }
    for (int i = 0; i < a.Size(); ++i) {
        if (a.GetState(i).GetJoint() != b.GetState(i).GetJoint()) {
            return false;
        }
    }
    return true;
}

} // namespace

IkSolver::IkSolver() = default;

IkSolver::IkSolver(IkStream* ofStream) : streamPtr(ofStream) {}

IkSolver::IkSolver(const IkSolver& other)
    : streamPtr(other.streamPtr), maxIterations(other.maxIterations),
      convergenceTolerance(other.convergenceTolerance), curErrorValue(other.curErrorValue),
      startStates(other.startStates)
{}

IkSolver& IkSolver::operator=(const IkSolver& other)
{
    if (this == &other) {
        return *this;
    }
    // What may fail goes first: a solver is never half another one.
    trunnion::CopiedFields fields{other.SolverJtStates,   other.LockedFlags,
                                  other.RotaryFlags,      other.RotaryJointIndices,
                                  other.FreeJointIndices, other.MaxAngleStep};
    fields.MoveInto(Fields());
    streamPtr = other.streamPtr;
    maxIterations = other.maxIterations;
    convergenceTolerance = other.convergenceTolerance;
    curErrorValue = other.curErrorValue;
    startStates = other.startStates;
    return *this;
}

IkSolver::~IkSolver() = default;

IkStream* IkSolver::GetStreamPtr() const
{
    return streamPtr;
}
void IkSolver::SetStreamPtr(IkStream* newStream)
{
    streamPtr = newStream;
}
int IkSolver::GetMaxIterations() const
{
    return maxIterations;
}
void IkSolver::SetMaxIterations(int count)
{
    maxIterations = count;
}
double IkSolver::GetConvergenceTolerance() const
{
    return convergenceTolerance;
}
void IkSolver::SetConvergenceTolerance(double tolerance)
{
    convergenceTolerance = tolerance;
}
double IkSolver::GetCurErrorval() const
{
    return curErrorValue;
}
IkJtStateVector* IkSolver::GetStartStates() const
{
    return startStates;
}

bool IkSolver::SetStartingJtStates(IkJtStateVector* states)
{
    if (states != nullptr) {
        if (streamPtr == nullptr) {
            return false;
        }
        IkJtStateVector joints = streamPtr->GetJointStates();
        if (!HoldSameJoints(joints, *states)) {
            return false;
        }
    }
    startStates = states;
    return true;
}

void IkSolver::TraceDump()
{
    for (int i = 0; i < SolverJtStates.Size() && streamPtr != nullptr; ++i) {
        IkJoint* joint = SolverJtStates.GetState(i).GetJoint();
        bool locked = false;
        streamPtr->GetJointLockStatus(joint, IkStream::LocalLockOnly, locked);
        streamPtr->GetJointLockStatus(joint, IkStream::GlobalLockOnly, locked);
    }
}

void IkSolver::Reset() {}

void IkSolver::Initialize(bool lockRotary)
{
    if (streamPtr == nullptr) {
        return;
    }
    trunnion::ClearIndices(Fields());
    if (startStates != nullptr) {
        SolverJtStates = *startStates;
    } else {
        trunnion::CollectJointStates(*streamPtr, SolverJtStates);
    }
    trunnion::InitializeFields(Fields(), *streamPtr, lockRotary);
}

bool IkSolver::ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                            std::vector<double>& /*components*/, double& error)
{
    if (IsObjectiveTraced()) {
        trunnion::TraceObjective(current, target);
    }
    error = trunnion::PoseError(current, target, kDirectionTolerance);
    return true;
}

bool IkSolver::ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                   bool fkFlag)
{
    trunnion::JointMatrix built;
    if (streamPtr == nullptr ||
        !trunnion::FullJacobian(*streamPtr, trunnion::ReferenceOf(reference), built, fkFlag)) {
        return false;
    }
    jacobian = trunnion::ToArray(built);
    return true;
}

bool IkSolver::ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                      int includeRotary, bool fkFlag)
{
    if (streamPtr != nullptr) {
        jacobian =
            trunnion::PartialJacobian(*streamPtr, Fields(), reference, includeRotary != 0, fkFlag);
    }
    return true;
}

TNT::Array2D<double> IkSolver::CalcDTheta(const IkEndState& /*target*/,
                                          const IkEndState& /*current*/,
                                          TNT::Array2D<double>& /*jacobian*/)
{
    return {};
}

void IkSolver::SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                           TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues, int& rank)
{
    trunnion::SafeSvd(matrix, u, v, singularValues, rank);
}

void IkSolver::JointClampSearch(TNT::Array2D<double>& step)
{
    trunnion::LockJointsLeavingBounds(Fields(), step);
}

trunnion::SolveFields IkSolver::Fields()
{
    return {SolverJtStates,     LockedFlags,      RotaryFlags,
            RotaryJointIndices, FreeJointIndices, MaxAngleStep};
}

/// The stages of a solver object, each through its virtual operation.
class IkSolver::VirtualStages
{
  public:
    VirtualStages(IkSolver& ofSolver, IkEndState& forTarget, bool withToolOnly)
        : solver(ofSolver), target(forTarget), toolOnly(withToolOnly)
    {}

    IkJtStateVector& States() { return solver.SolverJtStates; }
    int LastPass() const { return solver.maxIterations; }
    double Tolerance() const { return solver.convergenceTolerance; }

    double Error()
    {
        working = IkEndState();
        if (solver.streamPtr != nullptr) { // a stage may have taken it away
            working =
                solver.streamPtr->SolveFK(solver.SolverJtStates, false, nullptr, nullptr, toolOnly);
        }
        working.CopyFilter(target);
        std::vector<double> components;
        solver.ObjectiveFcn(working, target, components, solver.curErrorValue);
        return solver.curErrorValue;
    }
    void Jacobian(int pass) { solver.ComputePartialJacobian(working, jacobian, pass, toolOnly); }
    void Step() { step = solver.CalcDTheta(target, working, jacobian); }
    template <class Limits>
    void TakeStep(Limits limits)
    {
        solver.SolverJtStates.AppendValues(step, limits);
    }

  private:
    IkSolver& solver;
    IkEndState& target;
    bool toolOnly;
    IkEndState working;
    // Outlive a pass: a stage that computes nothing leaves the previous one's result in force.
    TNT::Array2D<double> jacobian;
    TNT::Array2D<double> step;
};

bool IkSolver::SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                       IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    if (streamPtr == nullptr) {
        return false;
    }
    const SoleSolve sole(SoleSolve::Use::Solve, streamPtr);
    Initialize(lockRotary);
    // Where neither a stage nor a node is a host's own, nobody can tell the stages apart.
    if (streamPtr != nullptr && typeid(*this) == typeid(IkSolverPsuedoInverse)) {
        trunnion::LoopStages stages(
            *streamPtr, Fields(), target, toolOnly, trunnion::IkStepMethod,
            {maxIterations, convergenceTolerance, kDirectionTolerance, IsObjectiveTraced()},
            curErrorValue);
        if (stages.IsSettled()) {
            const bool isSolved = trunnion::Iterate(stages, result, limitType);
            curErrorValue = stages.LastError();
            return isSolved;
        }
    }
    VirtualStages stages(*this, target, toolOnly);
    return trunnion::Iterate(stages, result, limitType);
}

IkJtStateVector IkSolver::SolveIK(IkEndState& target, bool toolOnly,
                                  IkJoint::JointLimitTypes limitType)
{
    IkJtStateVector result;
    SolveIK(target, result, toolOnly, limitType, false);
    return result;
}
