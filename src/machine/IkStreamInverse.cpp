// Inverse kinematics of a stream: its stages on its own working fields, and the solve.

#include "IkStream.h"
#include "geometry/Trace.h"
#include "machine/Iteration.h"
#include "machine/Jacobian.h"
#include "machine/Objective.h"
#include "machine/SafeSvd.h"
#include "machine/StepMethods.h"
#include "machine/StreamStages.h"

using trunnion::Decomposition;
using trunnion::StreamStages;

namespace
{

constexpr double kDirectionTolerance = 1.523e-10; // of a cosine; solver objects have their own

} // namespace

void IkStream::InitializeIkSolver(bool lockRotary)
{
    trunnion::InitializeFields(StreamStages::Fields(*this), *this, GetJointStates(), lockRotary);
}

bool IkStream::ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                            std::vector<double>& /*components*/, double& error)
{
    const trunnion::TraceSwitches& tracing = trunnion::Tracing();
    if (tracing.streamObjectiveTarget || tracing.streamObjectiveCurrent) {
        target.TraceDump(L"TargetState>");
        current.TraceDump(L"CurState>");
    }
    error = trunnion::PoseError(current, target, kDirectionTolerance);
    return true;
}

bool IkStream::ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                   bool fkFlag)
{
    return trunnion::FullJacobian(*this, reference, jacobian, fkFlag);
}

bool IkStream::ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                      int includeRotary, bool fkFlag)
{
    trunnion::PartialJacobian(*this, StreamStages::Fields(*this), reference, jacobian,
                              includeRotary != 0, fkFlag);
    return true;
}

void IkStream::SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                           TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues, int& rank)
{
    const Decomposition svd = trunnion::SafeSvd(matrix);
    u = svd.u;
    v = svd.v;
    singularValues = svd.s;
    rank = svd.rank;
}

TNT::Array2D<double> IkStream::CalcDThetaPsuedoInverse(const IkEndState& target,
                                                       const IkEndState& current,
                                                       TNT::Array2D<double>& jacobian)
{
    const Decomposition svd = trunnion::SafeSvd(jacobian);
    return trunnion::LimitFullStep(
        trunnion::PseudoInverseSum(svd, target.Diff2D(current), jacobian.dim2()), GetJointStates());
}

TNT::Array2D<double> IkStream::CalcDThetaDLS(const IkEndState& target, const IkEndState& current,
                                             TNT::Array2D<double>& jacobian)
{
    const Decomposition svd = trunnion::SafeSvd(jacobian);
    return trunnion::LimitFullStep(
        trunnion::DampedSum(svd, target.Diff2D(current), jacobian.dim2()), GetJointStates());
}

TNT::Array2D<double> IkStream::CalcDThetaPsuedoInversePartial(const IkEndState& target,
                                                              const IkEndState& current,
                                                              TNT::Array2D<double>& jacobian)
{
    const Decomposition svd = trunnion::SafeSvd(jacobian);
    return trunnion::PseudoInversePartialStep(svd, target.Diff2D(current),
                                              StreamStages::Fields(*this));
}

TNT::Array2D<double> IkStream::CalcDThetaSDLSPartial(const IkEndState& target,
                                                     const IkEndState& current,
                                                     TNT::Array2D<double>& jacobian)
{
    const Decomposition svd = trunnion::SafeSvd(jacobian);
    const trunnion::SolveFields fields = StreamStages::Fields(*this);
    return trunnion::ExpandSelectivelyDamped(
        trunnion::SelectivelyDampedSum(svd, target.Diff2D(current), jacobian, fields), fields);
}

TNT::Array2D<double> IkStream::CalcDThetaDLSPartial(const IkEndState& target,
                                                    const IkEndState& current,
                                                    TNT::Array2D<double>& jacobian)
{
    const Decomposition svd = trunnion::SafeSvd(jacobian);
    const trunnion::SolveFields fields = StreamStages::Fields(*this);
    return trunnion::ExpandDamped(
        trunnion::DampedSum(svd, target.Diff2D(current), trunnion::FreeCount(fields)), fields,
        svd.rank);
}

void IkStream::JointClampSearch(TNT::Array2D<double>& step)
{
    trunnion::LockJointsLeavingBounds(StreamStages::Fields(*this), step);
}

bool IkStream::SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                       IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    InitializeIkSolver(lockRotary);
    StreamStages stages(*this, toolOnly, trunnion::IkStepMethod);
    return trunnion::Iterate(stages, target, result, limitType);
}

IkJtStateVector IkStream::SolveIK(IkEndState& target, bool toolOnly,
                                  IkJoint::JointLimitTypes limitType)
{
    IkJtStateVector result;
    SolveIK(target, result, toolOnly, limitType, false);
    return result;
}

namespace trunnion
{

SolveFields StreamStages::Fields(IkStream& stream)
{
    return {stream.SolverJtStates,     stream.LockedFlags,      stream.RotaryFlags,
            stream.RotaryJointIndices, stream.FreeJointIndices, stream.MaxAngleStep};
}

IkEndState StreamStages::ForwardKinematics()
{
    return stream.SolveFK(stream.SolverJtStates, false, nullptr, nullptr, toolOnly);
}

double StreamStages::Objective(const IkEndState& working, const IkEndState& target)
{
    std::vector<double> components;
    double error = 0.0;
    stream.ObjectiveFcn(working, target, components, error);
    return error;
}

void StreamStages::Jacobian(const IkEndState& working, TNT::Array2D<double>& jacobian, int pass)
{
    const bool isPartial = method >= 4 && method <= 6;
    if (isPartial) {
        // Kept on purpose: the pass number decides, so that on the first pass rotary joints rest.
        stream.ComputePartialJacobian(working, jacobian, pass, toolOnly);
    } else {
        stream.ComputeFullJacobian(working, jacobian, toolOnly);
    }
}

void StreamStages::Step(const IkEndState& target, const IkEndState& working,
                        TNT::Array2D<double>& jacobian, TNT::Array2D<double>& step)
{
    switch (method) {
    case 1:
        step = stream.CalcDThetaPsuedoInverse(target, working, jacobian);
        break;
    case 2:
        step = stream.CalcDThetaDLS(target, working, jacobian);
        break;
    case 4:
        step = stream.CalcDThetaPsuedoInversePartial(target, working, jacobian);
        break;
    case 5:
        step = stream.CalcDThetaSDLSPartial(target, working, jacobian);
        break;
    case 6:
        step = stream.CalcDThetaDLSPartial(target, working, jacobian);
        break;
    default:
        break; // kept on purpose: the previous step is taken again
    }
}

} // namespace trunnion
