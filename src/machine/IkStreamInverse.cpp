// Inverse kinematics of a stream: its stages on its own working fields, and the solve.

#include "IkStream.h"
#include "geometry/Trace.h"
#include "machine/Arrays.h"
#include "machine/Iteration.h"
#include "machine/LoopStages.h"
#include "machine/Objective.h"
#include "machine/SoleSolve.h"

using trunnion::SoleSolve;

namespace
{

constexpr double kDirectionTolerance = 1.523e-10; // of a cosine; solver objects have their own
constexpr double kTolerance = 1e-8;               // [length^2] plus [deg^2]
constexpr int kLastPass = 60;

bool IsObjectiveTraced()
{
    const trunnion::TraceSwitches& tracing = trunnion::Tracing();
    return tracing.streamObjectiveTarget || tracing.streamObjectiveCurrent;
}

TNT::Array2D<double> StepOf(int method, const IkStream& stream, const trunnion::SolveFields& fields,
                            const IkEndState& target, const IkEndState& current,
                            const TNT::Array2D<double>& jacobian)
{
    trunnion::JointMatrix matrix;
    trunnion::FromArray(jacobian, matrix);
    trunnion::Decomposition svd;
    trunnion::JointRow step;
    trunnion::CalculateStep(method, stream, fields, trunnion::ErrorOf(target, current), matrix, svd,
                            step);
    return trunnion::ToColumn(step);
}

} // namespace

trunnion::SolveFields IkStream::Fields()
{
    return {SolverJtStates,     LockedFlags,      RotaryFlags,
            RotaryJointIndices, FreeJointIndices, MaxAngleStep};
}

void IkStream::InitializeIkSolver(bool lockRotary)
{
    trunnion::ClearIndices(Fields());
    trunnion::CollectJointStates(*this, SolverJtStates);
    trunnion::InitializeFields(Fields(), *this, lockRotary);
}

bool IkStream::ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                            std::vector<double>& /*components*/, double& error)
{
    if (IsObjectiveTraced()) {
        trunnion::TraceObjective(current, target);
    }
    error = trunnion::PoseError(current, target, kDirectionTolerance);
    return true;
}

bool IkStream::ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                   bool fkFlag)
{
    trunnion::JointMatrix built;
    if (!trunnion::FullJacobian(*this, trunnion::ReferenceOf(reference), built, fkFlag)) {
        return false;
    }
    jacobian = trunnion::ToArray(built);
    return true;
}

bool IkStream::ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                      int includeRotary, bool fkFlag)
{
    jacobian = trunnion::PartialJacobian(*this, Fields(), reference, includeRotary != 0, fkFlag);
    return true;
}

void IkStream::SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                           TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues, int& rank)
{
    trunnion::SafeSvd(matrix, u, v, singularValues, rank);
}

TNT::Array2D<double> IkStream::CalcDThetaPsuedoInverse(const IkEndState& target,
                                                       const IkEndState& current,
                                                       TNT::Array2D<double>& jacobian)
{
    return StepOf(1, *this, Fields(), target, current, jacobian);
}

TNT::Array2D<double> IkStream::CalcDThetaDLS(const IkEndState& target, const IkEndState& current,
                                             TNT::Array2D<double>& jacobian)
{
    return StepOf(2, *this, Fields(), target, current, jacobian);
}

TNT::Array2D<double> IkStream::CalcDThetaPsuedoInversePartial(const IkEndState& target,
                                                              const IkEndState& current,
                                                              TNT::Array2D<double>& jacobian)
{
    return StepOf(4, *this, Fields(), target, current, jacobian);
}

TNT::Array2D<double> IkStream::CalcDThetaSDLSPartial(const IkEndState& target,
                                                     const IkEndState& current,
                                                     TNT::Array2D<double>& jacobian)
{
    return StepOf(5, *this, Fields(), target, current, jacobian);
}

TNT::Array2D<double> IkStream::CalcDThetaDLSPartial(const IkEndState& target,
                                                    const IkEndState& current,
                                                    TNT::Array2D<double>& jacobian)
{
    return StepOf(6, *this, Fields(), target, current, jacobian);
}

void IkStream::JointClampSearch(TNT::Array2D<double>& step)
{
    trunnion::LockJointsLeavingBounds(Fields(), step);
}

bool IkStream::SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                       IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    const SoleSolve sole(SoleSolve::Use::Solve, this);
    InitializeIkSolver(lockRotary);
    trunnion::LoopStages stages(*this, Fields(), target, toolOnly, trunnion::IkStepMethod,
                                {kLastPass, kTolerance, kDirectionTolerance, IsObjectiveTraced()},
                                0.0);
    return trunnion::Iterate(stages, result, limitType);
}

IkJtStateVector IkStream::SolveIK(IkEndState& target, bool toolOnly,
                                  IkJoint::JointLimitTypes limitType)
{
    IkJtStateVector result;
    SolveIK(target, result, toolOnly, limitType, false);
    return result;
}
