#include "IkSolver.h"

#include "geometry/Trace.h"
#include "machine/Iteration.h"
#include "machine/Jacobian.h"
#include "machine/Objective.h"
#include "machine/SafeSvd.h"
#include "machine/SolveFields.h"

namespace
{

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

IkSolver& IkSolver::operator=(const IkSolver& other) = default;

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
    if (streamPtr != nullptr) {
        trunnion::InitializeFields(
            Fields(), *streamPtr,
            startStates != nullptr ? *startStates : streamPtr->GetJointStates(), lockRotary);
    }
}

bool IkSolver::ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                            std::vector<double>& /*components*/, double& error)
{
    const trunnion::TraceSwitches& tracing = trunnion::Tracing();
    if (tracing.solverObjectiveTarget || tracing.solverObjectiveCurrent) {
        target.TraceDump(L"TargetState>");
        current.TraceDump(L"CurState>");
    }
    error = trunnion::PoseError(current, target, kDirectionTolerance);
    return true;
}

bool IkSolver::ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                   bool fkFlag)
{
    return streamPtr != nullptr && trunnion::FullJacobian(*streamPtr, reference, jacobian, fkFlag);
}

bool IkSolver::ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                      int includeRotary, bool fkFlag)
{
    if (streamPtr != nullptr) {
        trunnion::PartialJacobian(*streamPtr, Fields(), reference, jacobian, includeRotary != 0,
                                  fkFlag);
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
    const trunnion::Decomposition svd = trunnion::SafeSvd(matrix);
    u = svd.u;
    v = svd.v;
    singularValues = svd.s;
    rank = svd.rank;
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

bool IkSolver::SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                       IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    /// The solver's stages for the iteration, each through its virtual operation.
    class Stages
    {
      public:
        Stages(IkSolver& ofSolver, bool withToolOnly) : solver(ofSolver), toolOnly(withToolOnly) {}

        IkJtStateVector& States() { return solver.SolverJtStates; }
        int LastPass() const { return solver.maxIterations; }
        double Tolerance() const { return solver.convergenceTolerance; }

        IkEndState ForwardKinematics()
        {
            if (solver.streamPtr == nullptr) { // a stage may have taken it away
                return {};
            }
            return solver.streamPtr->SolveFK(solver.SolverJtStates, false, nullptr, nullptr,
                                             toolOnly);
        }
        double Objective(const IkEndState& working, const IkEndState& target)
        {
            std::vector<double> components;
            solver.ObjectiveFcn(working, target, components, solver.curErrorValue);
            return solver.curErrorValue;
        }
        void Jacobian(const IkEndState& working, TNT::Array2D<double>& jacobian, int pass)
        {
            solver.ComputePartialJacobian(working, jacobian, pass, toolOnly);
        }
        void Step(const IkEndState& target, const IkEndState& working,
                  TNT::Array2D<double>& jacobian, TNT::Array2D<double>& step)
        {
            step = solver.CalcDTheta(target, working, jacobian);
        }

      private:
        IkSolver& solver;
        bool toolOnly;
    };

    if (streamPtr == nullptr) {
        return false;
    }
    Initialize(lockRotary);
    Stages stages(*this, toolOnly);
    return trunnion::Iterate(stages, target, result, limitType);
}

IkJtStateVector IkSolver::SolveIK(IkEndState& target, bool toolOnly,
                                  IkJoint::JointLimitTypes limitType)
{
    IkJtStateVector result;
    SolveIK(target, result, toolOnly, limitType, false);
    return result;
}
