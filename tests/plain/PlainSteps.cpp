#include "plain/PlainSteps.h"

#include <algorithm>
#include <cmath>

#include <tnt/tnt_array2d_utils.h>

namespace plain
{

namespace
{

constexpr double kEighthTurn = 0.7853981633974475;

Array ColumnOf(const Array& m, int j)
{
    Array column(m.dim1(), 1);
    for (int i = 0; i < m.dim1(); ++i) {
        column[i][0] = m[i][j];
    }
    return column;
}

Array RowOf(const Array& m, int j)
{
    Array row(1, m.dim1());
    for (int i = 0; i < m.dim1(); ++i) {
        row[0][i] = m[i][j];
    }
    return row;
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

/// v_i u_i'
Array OuterProduct(const Svd& svd, int i)
{
    return TNT::matmult(ColumnOf(svd.v, i), RowOf(svd.u, i));
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

double Limited(double x, double limit)
{
    if (std::fabs(x) > limit) {
        return x > 0 ? limit : -limit;
    }
    return x;
}

Array LimitFull(Array step, const IkStream& stream)
{
    const States states = JointStates(stream);
    for (int k = 0; k < states.Size(); ++k) {
        const IkJoint* joint = states.Joint(k);
        if (joint == nullptr || joint->IsLocked()) {
            step[k][0] = 0.0;
        } else if (IsRotary(*joint)) {
            step[k][0] = Limited(step[k][0], kEighthTurn);
        }
    }
    return step;
}

double Norm(const Array& m, int firstRow, int column, double factor)
{
    double sum = 0.0;
    for (int i = firstRow; i < firstRow + 3; ++i) {
        const double x = factor * m[i][column];
        sum += x * x;
    }
    return std::sqrt(sum);
}

double ColumnNorm(const Array& m, int column)
{
    double sum = 0.0;
    for (int i = 0; i < m.dim1(); ++i) {
        sum += m[i][column] * m[i][column];
    }
    return std::sqrt(sum);
}

double LargestRotary(const Array& step, const Fields& fields)
{
    double largest = 0.0;
    for (int k = 0; k < step.dim1(); ++k) {
        if (IsRotaryFree(fields, k)) {
            largest = std::max(largest, std::fabs(step[k][0]));
        }
    }
    return largest;
}

/// How far term `i` may turn a rotary joint.
double TurnOfTerm(const Svd& svd, const Array& jacobian, const Fields& fields, int i)
{
    double rho = 0.0; // runs on from joint to joint
    double reach = 0.0;
    for (int j = 0; j < jacobian.dim2(); ++j) {
        if (!IsRotaryFree(fields, j)) {
            continue;
        }
        rho += Norm(jacobian, 0, j, 1.0);
        if (jacobian.dim1() > 3) {
            rho += Norm(jacobian, 3, j, 2.0);
        }
        reach += std::fabs(svd.v[j][i]) * rho;
    }
    if (std::fabs(reach) < 1e-10) {
        reach = 1.0;
    }
    reach = reach / svd.s[i];
    double gamma = ColumnNorm(svd.u, i) / reach;
    if (!(gamma < 1.0)) {
        gamma = 1.0;
    }
    return gamma * fields.maxAngleStep;
}

int FreeIndex(const Fields& fields, int k)
{
    return fields.freeIndices[static_cast<std::size_t>(k)];
}

} // namespace

Column PseudoInverseStep(const IkStream& stream, const EndState& target, const EndState& current,
                         const Array& jacobian)
{
    const Array e = Difference(target, current);
    return LimitFull(PseudoInverseSum(Decompose(jacobian), e, jacobian.dim2()), stream);
}

Column DampedStep(const IkStream& stream, const EndState& target, const EndState& current,
                  const Array& jacobian)
{
    const Array e = Difference(target, current);
    return LimitFull(DampedSum(Decompose(jacobian), e, jacobian.dim2()), stream);
}

Column PseudoInversePartialStep(const Fields& fields, const EndState& target,
                                const EndState& current, const Array& jacobian)
{
    const Array p =
        PseudoInverseSum(Decompose(jacobian), Difference(target, current), jacobian.dim2());
    Array result(fields.states.Size(), 1, 0.0);
    for (int k = 0; k < p.dim1(); ++k) {
        result[FreeIndex(fields, k)][0] =
            IsRotaryFree(fields, k) ? Limited(p[k][0], fields.maxAngleStep) : p[k][0];
    }
    return result;
}

Column DampedPartialStep(const Fields& fields, const EndState& target, const EndState& current,
                         const Array& jacobian)
{
    const Svd svd = Decompose(jacobian);
    const Array p = DampedSum(svd, Difference(target, current), jacobian.dim2());
    const int r = svd.rank < 1 ? 0 : svd.rank;
    Array result(fields.states.Size(), 1, 0.0);
    for (int k = 0; k < p.dim1(); ++k) {
        // Rows and free joints are mixed up here, and so they are in the library.
        if (IsRotaryFree(fields, k) && std::fabs(p[k][0]) > fields.maxAngleStep) {
            result[k][0] = Limited(p[k][0], fields.maxAngleStep);
        } else if (r < p.dim1()) {
            result[FreeIndex(fields, r)][0] = p[r][0];
        }
    }
    return result;
}

Column SelectivelyDampedPartialStep(const Fields& fields, const EndState& target,
                                    const EndState& current, const Array& jacobian)
{
    const Svd svd = Decompose(jacobian);
    const Array e = Difference(target, current);
    const int n = jacobian.dim2();
    Array p(n, 1, 0.0);
    for (int i = 0; i < svd.rank; ++i) {
        if (svd.s[i] < 1e-10) {
            continue;
        }
        Array phi = TNT::matmult(OuterProduct(svd, i), Over(e, svd.s[i]));
        const double gamma = TurnOfTerm(svd, jacobian, fields, i);
        const double damping = gamma / (gamma + LargestRotary(phi, fields));
        for (int k = 0; k < n; ++k) {
            if (IsRotaryFree(fields, k)) {
                phi[k][0] = phi[k][0] * damping;
            }
        }
        p = p + phi;
    }
    Array result(fields.states.Size(), 1, 0.0);
    for (int k = 0; k < n; ++k) {
        if (!IsRotaryFree(fields, k)) {
            result[FreeIndex(fields, k)][0] = p[k][0];
        }
    }
    return result;
}

} // namespace plain
