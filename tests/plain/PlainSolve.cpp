#include "plain/PlainSolve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>

#include <tnt/tnt_array1d_utils.h>
#include <tnt/tnt_array2d_utils.h>

#include <jama/jama_svd.h>

namespace plain
{

namespace
{

using Matrix = TNT::Matrix<double>;
using Array = TNT::Array2D<double>;

constexpr double kEpsilon = 2.220446049250313e-16;
constexpr double kEighthTurn = 0.7853981633974475;
constexpr double kOneDegree = 0.017453292519943278;

Matrix Identity()
{
    Matrix m(4, 4, 0.0);
    for (int i = 0; i < 4; ++i) {
        m[i][i] = 1.0;
    }
    return m;
}

Matrix Translation(double x, double y, double z)
{
    Matrix m = Identity();
    m[0][3] = x;
    m[1][3] = y;
    m[2][3] = z;
    return m;
}

/// Rotation that turns axis `from` towards axis `to`.
Matrix Rotation(int from, int to, double a)
{
    Matrix m = Identity();
    m[from][from] = std::cos(a);
    m[from][to] = -std::sin(a);
    m[to][from] = std::sin(a);
    m[to][to] = std::cos(a);
    return m;
}

Matrix Motion(const IkJoint& joint, double d)
{
    switch (joint.GetJtPrimitive()) {
    case IkJoint::JtPrimTransX:
        return Translation(d, 0, 0);
    case IkJoint::JtPrimTransY:
        return Translation(0, d, 0);
    case IkJoint::JtPrimTransZ:
        return Translation(0, 0, d);
    case IkJoint::JtPrimRotX:
        return Rotation(1, 2, d);
    case IkJoint::JtPrimRotY:
        return Rotation(2, 0, d);
    default:
        return Rotation(0, 1, d);
    }
}

bool Moves(const IkJoint& joint)
{
    const int primitive = joint.GetJtPrimitive();
    return dynamic_cast<const IkJtPrism*>(&joint) != nullptr ? primitive >= 1 && primitive <= 3
                                                             : primitive >= 5 && primitive <= 7;
}

bool IsLibraryJoint(const IkJoint& joint)
{
    return dynamic_cast<const IkJtPrism*>(&joint) != nullptr ||
           dynamic_cast<const IkJtRot*>(&joint) != nullptr;
}

Matrix NodeTransform(IkNode& node, IkJtStateVector& states)
{
    const auto* joint = dynamic_cast<const IkJoint*>(&node);
    if (joint == nullptr || !IsLibraryJoint(*joint)) {
        return node.GetXformMat(states);
    }
    if (!Moves(*joint)) {
        return Identity();
    }
    double value = 0.0;
    if (!states.FindValFromPtr(joint, value)) {
        value = joint->GetCurValue();
    }
    double d = value - joint->GetInitialValue();
    if (joint->IsDirectionReversed()) {
        d = d * -1.0;
    }
    return joint->GetOrigFrame() * Motion(*joint, d);
}

Matrix RigidInverse(const Matrix& m)
{
    Matrix rotation(3, 3);
    Matrix negated(3, 1);
    for (int i = 0; i < 3; ++i) {
        negated[i][0] = -1.0 * m[i][3];
        for (int j = 0; j < 3; ++j) {
            rotation[i][j] = m[j][i];
        }
    }
    const Matrix offset = rotation * negated;
    Matrix inverse = Identity();
    for (int i = 0; i < 3; ++i) {
        std::copy_n(rotation[i], 3, inverse[i]);
        inverse[i][3] = offset[i][0];
    }
    return inverse;
}

IkEndState EndStateOf(const Matrix& pose, const IkEndState& filterSource)
{
    IkEndState state;
    state.SetCompleteState(IkXformMat(pose));
    state.CopyFilter(filterSource);
    return state;
}

// --- matrix utilities of the step formulas ---

Array ColumnOf(const Array& m, int j)
{
    Array column(m.dim1(), 1);
    for (int i = 0; i < m.dim1(); ++i) {
        column[i][0] = m[i][j];
    }
    return column;
}

Array Transpose(const Array& m)
{
    Array transposed(m.dim2(), m.dim1());
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            transposed[j][i] = m[i][j];
        }
    }
    return transposed;
}

Array Times(double factor, const Array& m)
{
    Array product(m.dim1(), m.dim2());
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            product[i][j] = factor * m[i][j];
        }
    }
    return product;
}

Array Over(const Array& m, double divisor)
{
    Array quotient(m.dim1(), m.dim2());
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            quotient[i][j] = m[i][j] / divisor;
        }
    }
    return quotient;
}

Array OuterProduct(const Svd& svd, int i)
{
    return TNT::matmult(ColumnOf(svd.v, i), Transpose(ColumnOf(svd.u, i)));
}

Array PseudoInverseSum(const Svd& svd, const Array& e, int n)
{
    Array step(n, 1, 0.0);
    for (int i = 0; i < svd.rank; ++i) {
        if (svd.s[i] > 1e-10) {
            step = step + TNT::matmult(OuterProduct(svd, i), Over(e, svd.s[i]));
        }
    }
    return step;
}

Array DampedSum(const Svd& svd, const Array& e, int n)
{
    Array step(n, 1, 0.0);
    for (int i = 0; i < svd.rank; ++i) {
        const double w = svd.s[i] / (svd.s[i] * svd.s[i] + 1.1 * 1.1);
        step = step + TNT::matmult(Times(w, OuterProduct(svd, i)), e);
    }
    return step;
}

Array LimitFull(Array step, const IkStream& stream)
{
    IkJtStateVector states = stream.GetJointStates();
    for (int k = 0; k < states.Size(); ++k) {
        const IkJoint* joint = states.GetState(k).GetJoint();
        if (joint->IsLocked()) {
            step[k][0] = 0.0;
        } else if (joint->IsRotary() && std::fabs(step[k][0]) > kEighthTurn) {
            step[k][0] = step[k][0] > 0 ? kEighthTurn : -kEighthTurn;
        }
    }
    return step;
}

bool IsRotaryFree(const Fields& fields, int k)
{
    const int index = fields.freeIndices[static_cast<std::size_t>(k)];
    return fields.rotaryFlags[static_cast<std::size_t>(index)];
}

double Norm(std::initializer_list<double> values)
{
    double sum = 0.0;
    for (const double x : values) {
        sum += x * x;
    }
    return std::sqrt(sum);
}

} // namespace

Svd Decompose(const Array& a)
{
    Svd svd;
    bool isFinite = a.dim1() > 0 && a.dim2() > 0;
    for (int i = 0; i < a.dim1(); ++i) {
        for (int j = 0; j < a.dim2(); ++j) {
            isFinite = isFinite && std::isfinite(a[i][j]);
        }
    }
    if (!isFinite) {
        return svd;
    }
    if (a.dim1() < a.dim2()) {
        JAMA::SVD<double> decomposition(Transpose(a));
        decomposition.getU(svd.v);
        decomposition.getV(svd.u);
        decomposition.getSingularValues(svd.s);
        svd.rank = decomposition.rank();
    } else {
        JAMA::SVD<double> decomposition(a);
        decomposition.getU(svd.u);
        decomposition.getV(svd.v);
        decomposition.getSingularValues(svd.s);
        svd.rank = decomposition.rank();
    }
    return svd;
}

TNT::Matrix<double> ChainTransform(const IkChain& chain, IkJtStateVector& states)
{
    Matrix result = Identity();
    for (int i = 0; i < chain.Size(); ++i) {
        result = result * NodeTransform(*chain.GetAt(i), states);
    }
    return result;
}

TNT::Matrix<double> Pose(const IkStream& stream, IkJtStateVector& states, bool toolOnly)
{
    if (stream.NumChains() == 0 || states.Size() == 0) {
        return Identity();
    }
    IkChain* toolChain = nullptr;
    stream.GetChain(0, &toolChain);
    const Matrix baseToTool = ChainTransform(*toolChain, states);
    if (stream.NumChains() == 1 || toolOnly) {
        return baseToTool;
    }
    IkChain* partChain = nullptr;
    stream.GetChain(1, &partChain);
    bool has = false;
    bool fixed = false;
    stream.GetPartSpaceInfo(has, fixed);
    const Matrix baseToPart = has && fixed
                                  ? Matrix(partChain->GetAt(partChain->Size() - 1)->GetWorldFrame())
                                  : ChainTransform(*partChain, states);
    return RigidInverse(baseToPart) * baseToTool;
}

Fields Initialize(const IkStream& stream, bool lockRotary)
{
    Fields fields;
    fields.maxAngleStep = 45.0 * 3.14159265358979 / 180.0;
    fields.states = stream.GetJointStates();
    for (int i = 0; i < fields.states.Size(); ++i) {
        IkJoint* joint = fields.states.GetState(i).GetJoint();
        bool locked = joint->IsLocked();
        if (!locked) {
            stream.GetLocalLock(joint, locked);
        }
        if (joint->IsRotary() && lockRotary) {
            locked = true;
        }
        fields.lockedFlags.push_back(locked);
        fields.rotaryFlags.push_back(joint->IsRotary());
        if (!locked) {
            fields.freeIndices.push_back(i);
        }
    }
    return fields;
}

double Objective(const IkEndState& current, const IkEndState& target, double directionTolerance)
{
    std::array<bool, 4> filter{};
    target.GetFilter(filter.data());
    const TNT::Array1D<double> a = target.GetVector();
    const TNT::Array1D<double> b = current.GetVector();
    double error = 0.0;
    int offset = 0;
    if (filter[3]) {
        for (int i = 0; i < 3; ++i) {
            const double d = a[i] - b[i];
            error += d * d;
        }
        offset = 3;
    }
    for (int axis = 0; axis < 3; ++axis) {
        if (!filter[static_cast<std::size_t>(axis)]) {
            continue;
        }
        double cosine = 0.0;
        for (int i = 0; i < 3; ++i) {
            cosine += a[offset + i] * b[offset + i];
        }
        double angle = 0.0;
        if (cosine > 1) {
            angle = 0.0;
        } else if (cosine < -1) {
            angle = 180.0;
        } else if (!(std::fabs(1 - cosine) < directionTolerance)) {
            angle = std::acos(cosine) * 180 / 3.14159265358979;
        }
        error += angle * angle;
        offset += 3;
    }
    return error;
}

std::vector<double> JacobianColumn(const IkStream& stream, IkJtStateVector states, int index,
                                   bool isRotary, const IkEndState& reference, bool toolOnly)
{
    IkJtState& state = states.GetState(index);
    double d = isRotary ? kOneDegree : 0.1;
    if (state.GetValue() + d > state.GetJoint()->GetHiBound()) {
        d = -d;
    }
    state.SetValue(state.GetValue() + d);
    const IkEndState perturbed = EndStateOf(Pose(stream, states, toolOnly), reference);
    const TNT::Array1D<double> difference = perturbed.GetVector() - reference.GetVector();
    std::vector<double> column;
    for (int i = 0; i < difference.dim(); ++i) {
        const double quotient = difference[i] / d;
        column.push_back(std::fabs(quotient) > kEpsilon ? quotient : 0.0);
    }
    return column;
}

TNT::Array2D<double> PartialJacobian(const IkStream& stream, const Fields& fields,
                                     const IkEndState& reference, int includeRotary, bool toolOnly)
{
    const int n = static_cast<int>(fields.freeIndices.size());
    Array jacobian(reference.VectSize(), n, 0.0);
    for (int k = 0; k < n; ++k) {
        const bool isRotary = IsRotaryFree(fields, k);
        if (includeRotary == 0 && isRotary) {
            continue;
        }
        const std::vector<double> column =
            JacobianColumn(stream, fields.states, fields.freeIndices[static_cast<std::size_t>(k)],
                           isRotary, reference, toolOnly);
        for (int i = 0; i < jacobian.dim1(); ++i) {
            jacobian[i][k] = column[static_cast<std::size_t>(i)];
        }
    }
    return jacobian;
}

TNT::Array2D<double> FullJacobian(const IkStream& stream, const IkEndState& reference,
                                  bool toolOnly)
{
    IkJtStateVector states = stream.GetJointStates();
    Array jacobian(reference.VectSize(), states.Size(), 0.0);
    for (int j = 0; j < states.Size(); ++j) {
        IkJoint* joint = states.GetState(j).GetJoint();
        bool locked = joint->IsLocked();
        if (!locked) {
            stream.GetLocalLock(joint, locked);
        }
        if (locked) {
            continue;
        }
        const std::vector<double> column =
            JacobianColumn(stream, states, j, joint->IsRotary(), reference, toolOnly);
        for (int i = 0; i < jacobian.dim1(); ++i) {
            jacobian[i][j] = column[static_cast<std::size_t>(i)];
        }
    }
    return jacobian;
}

Column PseudoInverseStep(const IkStream& stream, const IkEndState& target,
                         const IkEndState& current, const TNT::Array2D<double>& jacobian)
{
    return LimitFull(PseudoInverseSum(Decompose(jacobian), target.Diff2D(current), jacobian.dim2()),
                     stream);
}

Column DampedStep(const IkStream& stream, const IkEndState& target, const IkEndState& current,
                  const TNT::Array2D<double>& jacobian)
{
    return LimitFull(DampedSum(Decompose(jacobian), target.Diff2D(current), jacobian.dim2()),
                     stream);
}

Column PseudoInversePartialStep(const Fields& fields, const IkEndState& target,
                                const IkEndState& current, const TNT::Array2D<double>& jacobian)
{
    const int n = static_cast<int>(fields.freeIndices.size());
    const Array p = PseudoInverseSum(Decompose(jacobian), target.Diff2D(current), n);
    Array result(fields.states.Size(), 1, 0.0);
    for (int k = 0; k < n; ++k) {
        const int index = fields.freeIndices[static_cast<std::size_t>(k)];
        if (IsRotaryFree(fields, k) && std::fabs(p[k][0]) > fields.maxAngleStep) {
            result[index][0] = p[k][0] > 0 ? fields.maxAngleStep : -fields.maxAngleStep;
        } else {
            result[index][0] = p[k][0];
        }
    }
    return result;
}

Column DampedPartialStep(const Fields& fields, const IkEndState& target, const IkEndState& current,
                         const TNT::Array2D<double>& jacobian)
{
    const Svd svd = Decompose(jacobian);
    const int n = static_cast<int>(fields.freeIndices.size());
    const Array p = DampedSum(svd, target.Diff2D(current), n);
    const int r = svd.rank < 1 ? 0 : svd.rank;
    Array result(fields.states.Size(), 1, 0.0);
    for (int k = 0; k < fields.states.Size(); ++k) {
        if (k >= n) {
            continue; // no free joint at this position
        }
        if (IsRotaryFree(fields, k) && std::fabs(p[k][0]) > fields.maxAngleStep) {
            result[k][0] = p[k][0] > 0 ? fields.maxAngleStep : -fields.maxAngleStep;
        } else if (r < n) {
            result[fields.freeIndices[static_cast<std::size_t>(r)]][0] = p[r][0];
        }
    }
    return result;
}

Column SelectivelyDampedPartialStep(const Fields& fields, const IkEndState& target,
                                    const IkEndState& current, const TNT::Array2D<double>& jacobian)
{
    const Svd svd = Decompose(jacobian);
    const Array e = target.Diff2D(current);
    const int n = static_cast<int>(fields.freeIndices.size());
    const double gmax = fields.maxAngleStep;
    Array p(n, 1, 0.0);
    for (int i = 0; i < svd.rank; ++i) {
        if (svd.s[i] < 1e-10) {
            continue;
        }
        Array phi = TNT::matmult(OuterProduct(svd, i), Over(e, svd.s[i]));
        double norm = 0.0;
        for (int c = 0; c < svd.u.dim1(); ++c) {
            norm += svd.u[c][i] * svd.u[c][i];
        }
        norm = std::sqrt(norm);
        double rho = 0.0;
        double reach = 0.0;
        for (int j = 0; j < n; ++j) {
            if (!IsRotaryFree(fields, j)) {
                continue;
            }
            rho += Norm({jacobian[0][j], jacobian[1][j], jacobian[2][j]});
            if (jacobian.dim1() > 3) {
                rho += Norm({2 * jacobian[3][j], 2 * jacobian[4][j], 2 * jacobian[5][j]});
            }
            reach += std::fabs(svd.v[j][i]) * rho;
        }
        if (std::fabs(reach) < 1e-10) {
            reach = 1.0;
        }
        reach = reach / svd.s[i];
        double gamma = norm / reach;
        if (!(gamma < 1.0)) {
            gamma = 1.0;
        }
        gamma = gamma * gmax;
        double mx = 0.0;
        for (int k = 0; k < n; ++k) {
            if (IsRotaryFree(fields, k)) {
                mx = std::max(mx, std::fabs(phi[k][0]));
            }
        }
        for (int k = 0; k < n; ++k) {
            if (IsRotaryFree(fields, k)) {
                phi[k][0] = phi[k][0] * (gamma / (gamma + mx));
            }
        }
        p = p + phi;
    }
    Array result(fields.states.Size(), 1, 0.0);
    for (int k = 0; k < n; ++k) {
        if (!IsRotaryFree(fields, k)) {
            result[fields.freeIndices[static_cast<std::size_t>(k)]][0] = p[k][0];
        }
    }
    return result;
}

bool SolveIK(const IkStream& stream, const IkEndState& target, IkJtStateVector& result,
             bool toolOnly, IkJoint::JointLimitTypes limitType, bool lockRotary, Fields& fields)
{
    fields = Initialize(stream, lockRotary);
    for (int pass = 0; pass < 61; ++pass) {
        const IkEndState working = EndStateOf(Pose(stream, fields.states, toolOnly), target);
        if (Objective(working, target, 1.523e-10) <= 1e-8) {
            result = fields.states;
            return true;
        }
        const Array jacobian = PartialJacobian(stream, fields, working, pass, toolOnly);
        Column step = PseudoInversePartialStep(fields, target, working, jacobian);
        if (pass < 60) {
            fields.states.AppendValues(step, limitType);
            continue;
        }
        result.Reset();
        fields.states.AppendValues(step, false);
        for (int i = 0; i < fields.states.Size(); ++i) {
            const IkJtState& state = fields.states.GetState(i);
            if (state.GetValue() > state.GetJoint()->GetHiBound() ||
                state.GetValue() < state.GetJoint()->GetLowBound()) {
                result.AddState(state);
            }
        }
    }
    return false;
}

} // namespace plain
