#include "machine/StepMethods.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "geometry/Angles.h"
#include "model/Indexing.h"

namespace trunnion
{

namespace
{

constexpr double kSingularCutOff = 1e-10;
constexpr double kLambda = 1.1; // damping of the damped methods

Column ZeroColumn(int size)
{
    return {size, 1, 0.0};
}

/// Row k of a term: the product of row k of an outer product v_i u_i' with an error column, summed
/// from 0. `term(k, c)` is the c-th summand.
template <class Term>
double RowSum(const Decomposition& svd, const Column& e, const Term& term)
{
    double sum = 0.0;
    for (int c = 0; c < std::min(svd.u.dim1(), e.dim1()); ++c) {
        sum += term(c);
    }
    return sum;
}

double PseudoInverseRow(const Decomposition& svd, const Column& e, int i, int k)
{
    return RowSum(svd, e,
                  [&](int c) { return (svd.v[k][i] * svd.u[c][i]) * (e[c][0] / svd.s[i]); });
}

/// Euclidean norm of `scale` times rows `first` to `first` + 2 of a column.
double BlockNorm(const TNT::Array2D<double>& matrix, int first, int column, double scale)
{
    double sum = 0.0;
    for (int row = first; row < std::min(first + 3, matrix.dim1()); ++row) {
        const double x = scale * matrix[row][column];
        sum += x * x;
    }
    return std::sqrt(sum);
}

bool IsFreeRotary(const SolveFields& fields, int k)
{
    return fields.rotaryFlags[ToIndex(fields.freeIndices[ToIndex(k)])];
}

double LargestRotaryMagnitude(const std::vector<double>& freeStep, const SolveFields& fields)
{
    double largest = 0.0;
    for (int k = 0; k < Count(freeStep); ++k) {
        const double magnitude = std::fabs(freeStep[ToIndex(k)]);
        if (IsFreeRotary(fields, k) && magnitude > largest) {
            largest = magnitude;
        }
    }
    return largest;
}

/// gamma_i: how far the i-th term may turn a rotary joint [rad].
double SelectiveBound(const Decomposition& svd, const TNT::Array2D<double>& jacobian,
                      const SolveFields& fields, int size, int i)
{
    double norm = 0.0;
    for (int c = 0; c < svd.u.dim1(); ++c) {
        norm += svd.u[c][i] * svd.u[c][i];
    }
    norm = std::sqrt(norm);

    double reach = 0.0; // M_i
    double rho = 0.0;   // kept on purpose: runs on from joint to joint
    for (int j = 0; j < size; ++j) {
        if (!IsFreeRotary(fields, j)) {
            continue;
        }
        rho += BlockNorm(jacobian, 0, j, 1.0);
        if (jacobian.dim1() > 3) {
            rho += BlockNorm(jacobian, 3, j, 2.0);
        }
        reach += std::fabs(svd.v[j][i]) * rho;
    }
    if (std::fabs(reach) < kSingularCutOff) {
        reach = 1.0;
    }
    reach = reach / svd.s[i];
    const double gamma = norm / reach;
    return (gamma < 1.0 ? gamma : 1.0) * fields.maxAngleStep; // NaN counts as 1
}

double Limited(double step, double limit)
{
    if (std::fabs(step) > limit) {
        return step > 0.0 ? limit : -limit;
    }
    return step;
}

} // namespace

Column PseudoInverseSum(const Decomposition& svd, const Column& e, int size)
{
    Column step = ZeroColumn(size);
    for (int i = 0; i < svd.rank; ++i) {
        if (!(svd.s[i] > kSingularCutOff)) {
            continue;
        }
        for (int k = 0; k < std::min(size, svd.v.dim1()); ++k) {
            step[k][0] += PseudoInverseRow(svd, e, i, k);
        }
    }
    return step;
}

Column DampedSum(const Decomposition& svd, const Column& e, int size)
{
    Column step = ZeroColumn(size);
    for (int i = 0; i < svd.rank; ++i) {
        const double w = svd.s[i] / (svd.s[i] * svd.s[i] + kLambda * kLambda);
        for (int k = 0; k < std::min(size, svd.v.dim1()); ++k) {
            step[k][0] +=
                RowSum(svd, e, [&](int c) { return (w * (svd.v[k][i] * svd.u[c][i])) * e[c][0]; });
        }
    }
    return step;
}

Column SelectivelyDampedSum(const Decomposition& svd, const Column& e,
                            const TNT::Array2D<double>& jacobian, const SolveFields& fields)
{
    Column step = ZeroColumn(FreeCount(fields));
    const int size = std::min(step.dim1(), svd.v.dim1());
    std::vector<double> phi(ToIndex(size));
    for (int i = 0; i < svd.rank; ++i) {
        if (svd.s[i] < kSingularCutOff) { // a value at the cut-off takes part here
            continue;
        }
        for (int k = 0; k < size; ++k) {
            phi[ToIndex(k)] = PseudoInverseRow(svd, e, i, k);
        }
        const double gamma = SelectiveBound(svd, jacobian, fields, size, i);
        const double damping = gamma / (gamma + LargestRotaryMagnitude(phi, fields));
        for (int k = 0; k < size; ++k) {
            const double x = phi[ToIndex(k)];
            step[k][0] += IsFreeRotary(fields, k) ? x * damping : x;
        }
    }
    return step;
}

Column LimitFullStep(Column step, IkJtStateVector states)
{
    // Kept on purpose: only the joint's own lock stops it here, not the stream's.
    for (int k = 0; k < std::min(step.dim1(), states.Size()); ++k) {
        const IkJoint* joint = states.GetState(k).GetJoint();
        if (joint == nullptr || joint->IsLocked()) {
            step[k][0] = 0.0;
        } else if (joint->IsRotary()) {
            step[k][0] = Limited(step[k][0], kEighthTurn);
        }
    }
    return step;
}

Column ExpandLimited(const Column& freeStep, const SolveFields& fields)
{
    Column step = ZeroColumn(fields.states.Size());
    for (int k = 0; k < freeStep.dim1(); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        step[index][0] =
            IsFreeRotary(fields, k) ? Limited(freeStep[k][0], fields.maxAngleStep) : freeStep[k][0];
    }
    return step;
}

Column ExpandDamped(const Column& freeStep, const SolveFields& fields, int rank)
{
    // Kept on purpose: a rotary step beyond the limit lands in row k instead of its joint's row,
    // and in every other case it is the entry at the rank that is written, over and over.
    Column step = ZeroColumn(fields.states.Size());
    const int last = std::max(rank, 0);
    for (int k = 0; k < freeStep.dim1(); ++k) {
        if (IsFreeRotary(fields, k) && std::fabs(freeStep[k][0]) > fields.maxAngleStep) {
            step[k][0] = Limited(freeStep[k][0], fields.maxAngleStep);
        } else if (last < freeStep.dim1()) {
            step[fields.freeIndices[ToIndex(last)]][0] = freeStep[last][0];
        }
    }
    return step;
}

Column ExpandSelectivelyDamped(const Column& freeStep, const SolveFields& fields)
{
    std::vector<double> values(ToIndex(freeStep.dim1()));
    for (int k = 0; k < freeStep.dim1(); ++k) {
        values[ToIndex(k)] = freeStep[k][0];
    }
    const double gmax = fields.maxAngleStep;
    const double scale = gmax / (gmax + LargestRotaryMagnitude(values, fields));
    Column step = ZeroColumn(fields.states.Size());
    for (int k = 0; k < freeStep.dim1(); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        // Kept on purpose: the scale meets the row itself, still 0, so rotary joints never turn.
        step[index][0] = IsFreeRotary(fields, k) ? scale * step[index][0] : freeStep[k][0];
    }
    return step;
}

Column PseudoInversePartialStep(const Decomposition& svd, const Column& e,
                                const SolveFields& fields)
{
    return ExpandLimited(PseudoInverseSum(svd, e, FreeCount(fields)), fields);
}

int FreeCount(const SolveFields& fields)
{
    return Count(fields.freeIndices);
}

} // namespace trunnion
