#include "machine/StepMethods.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "geometry/Angles.h"
#include "geometry/Lanes.h"
#include "model/Indexing.h"

namespace trunnion
{

namespace
{

constexpr double kSingularCutOff = 1e-10;
constexpr double kLambda = 1.1; // damping of the damped methods

void SetToZero(int size, JointRow& step)
{
    step.Resize(1, size);
    step.Fill(0.0);
}

/// Adds one singular value's term to a step: entry k gets the product of row k of an outer product
/// v_i u_i' with an error vector, summed from 0. `summand(v_ki, c)` is the c-th of `columns`, for
/// one entry or for two side by side.
template <class Columns, class Summand>
void AddTermOf(Columns columns, const CountedArray& v, int i, int rows, double* step,
               const Summand& summand)
{
    int k = 0;
    for (; k + 1 < rows; k += 2) {
        const Lanes pair{v[k][i], v[k + 1][i]};
        Lanes sum{0.0, 0.0};
        for (int c = 0; c < columns; ++c) {
            sum += summand(pair, c);
        }
        StoreLanes(LoadLanes(step + k) + sum, step + k);
    }
    for (; k < rows; ++k) {
        const double entry = v[k][i];
        double sum = 0.0;
        for (int c = 0; c < columns; ++c) {
            sum += summand(entry, c);
        }
        step[k] += sum;
    }
}

/// The same with the usual numbers known to the compiler: a position alone or with one direction or
/// three.
template <class Summand>
void AddTerm(int columns, const CountedArray& v, int i, int rows, double* step,
             const Summand& summand)
{
    switch (columns) {
    case 3:
        AddTermOf(std::integral_constant<int, 3>(), v, i, rows, step, summand);
        break;
    case 6:
        AddTermOf(std::integral_constant<int, 6>(), v, i, rows, step, summand);
        break;
    case 12:
        AddTermOf(std::integral_constant<int, 12>(), v, i, rows, step, summand);
        break;
    default:
        AddTermOf(columns, v, i, rows, step, summand);
        break;
    }
}

/// v_i u_i' (e / s_i)
void AddPseudoInverseTerm(const Decomposition& svd, const EndVector& e, int i, int size,
                          double* step)
{
    const int columns = std::min(svd.u.dim1(), e.size);
    const double s = svd.s[i];
    double u[12];         // the first `columns` are set
    double quotients[12]; // the first `columns` are set
    for (int c = 0; c < columns; ++c) {
        u[c] = svd.u[c][i];
        quotients[c] = e.e[c] / s;
    }
    AddTerm(columns, svd.v, i, std::min(size, svd.v.dim1()), step,
            [&u, &quotients](auto v, int c) { return (v * u[c]) * quotients[c]; });
}

/// Euclidean norm of `scale` times rows `first` to `first` + 2 of a column.
double BlockNorm(const JointMatrix& matrix, int first, int column, double scale)
{
    double sum = 0.0;
    for (int row = first; row < std::min(first + 3, matrix.Rows()); ++row) {
        const double x = scale * matrix[row][column];
        sum += x * x;
    }
    return std::sqrt(sum);
}

bool IsFreeRotary(const SolveFields& fields, int k)
{
    const int index = fields.freeIndices[ToIndex(k)];
    return IsInRange(index, fields.rotaryFlags) && fields.rotaryFlags[ToIndex(index)];
}

double LargestRotaryMagnitude(const JointRow& freeStep, const SolveFields& fields)
{
    double largest = 0.0;
    for (int k = 0; k < freeStep.Cols(); ++k) {
        const double magnitude = std::fabs(freeStep[0][k]);
        if (IsFreeRotary(fields, k) && magnitude > largest) {
            largest = magnitude;
        }
    }
    return largest;
}

/// gamma_i: how far the i-th term may turn a rotary joint [rad].
double SelectiveBound(const Decomposition& svd, const JointMatrix& jacobian,
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
        if (jacobian.Rows() > 3) {
            rho += BlockNorm(jacobian, 3, j, 2.0);
        }
        reach += std::fabs(double{svd.v[j][i]}) * rho;
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

EndVector ErrorOf(const IkEndState& target, const IkEndState& current)
{
    const TNT::Array2D<double> column = target.Diff2D(current);
    EndVector e; // NOLINT(*-member-init)
    e.size = column.dim1();
    for (int i = 0; i < e.size; ++i) {
        e.e[i] = column[i][0];
    }
    return e;
}

void PseudoInverseSum(const Decomposition& svd, const EndVector& e, int size, JointRow& step)
{
    SetToZero(size, step);
    for (int i = 0; i < svd.rank; ++i) {
        if (svd.s[i] > kSingularCutOff) {
            AddPseudoInverseTerm(svd, e, i, size, step[0]);
        }
    }
}

void DampedSum(const Decomposition& svd, const EndVector& e, int size, JointRow& step)
{
    SetToZero(size, step);
    for (int i = 0; i < svd.rank; ++i) {
        const double s = svd.s[i];
        const double w = s / (s * s + kLambda * kLambda);
        AddTerm(std::min(svd.u.dim1(), e.size), svd.v, i, std::min(size, svd.v.dim1()), step[0],
                [&, i](auto v, int c) { return (w * (v * double{svd.u[c][i]})) * e.e[c]; });
    }
}

void SelectivelyDampedSum(const Decomposition& svd, const EndVector& e, const JointMatrix& jacobian,
                          const SolveFields& fields, JointRow& step)
{
    SetToZero(FreeCount(fields), step);
    const int size = std::min(step.Cols(), svd.v.dim1());
    JointRow phi;
    for (int i = 0; i < svd.rank; ++i) {
        if (svd.s[i] < kSingularCutOff) { // a value at the cut-off takes part here
            continue;
        }
        SetToZero(size, phi);
        AddPseudoInverseTerm(svd, e, i, size, phi[0]);
        const double gamma = SelectiveBound(svd, jacobian, fields, size, i);
        const double damping = gamma / (gamma + LargestRotaryMagnitude(phi, fields));
        for (int k = 0; k < size; ++k) {
            const double x = phi[0][k];
            step[0][k] += IsFreeRotary(fields, k) ? x * damping : x;
        }
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): states are read through non-const access
void LimitFullStep(IkJtStateVector states, JointRow& step)
{
    // Kept on purpose: only the joint's own lock stops it here, not the stream's.
    for (int k = 0; k < std::min(step.Cols(), states.Size()); ++k) {
        const IkJoint* joint = states.GetState(k).GetJoint();
        if (joint == nullptr || joint->IsLocked()) {
            step[0][k] = 0.0;
        } else if (joint->IsRotary()) {
            step[0][k] = Limited(step[0][k], kEighthTurn);
        }
    }
}

void ExpandLimited(const JointRow& freeStep, const SolveFields& fields, JointRow& step)
{
    SetToZero(fields.states.Size(), step);
    for (int k = 0; k < freeStep.Cols(); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        const double x = freeStep[0][k];
        if (IsStateIndex(fields, index)) {
            step[0][index] = IsFreeRotary(fields, k) ? Limited(x, fields.maxAngleStep) : x;
        }
    }
}

void ExpandDamped(const JointRow& freeStep, const SolveFields& fields, int rank, JointRow& step)
{
    // Kept on purpose: a rotary step beyond the limit lands in row k instead of its joint's row,
    // and in every other case it is the entry at the rank that is written, over and over.
    SetToZero(fields.states.Size(), step);
    const int last = std::max(rank, 0);
    for (int k = 0; k < std::min(freeStep.Cols(), step.Cols()); ++k) {
        const double x = freeStep[0][k];
        if (IsFreeRotary(fields, k) && std::fabs(x) > fields.maxAngleStep) {
            step[0][k] = Limited(x, fields.maxAngleStep);
        } else if (last < freeStep.Cols() &&
                   IsStateIndex(fields, fields.freeIndices[ToIndex(last)])) {
            step[0][fields.freeIndices[ToIndex(last)]] = freeStep[0][last];
        }
    }
}

void ExpandSelectivelyDamped(const JointRow& freeStep, const SolveFields& fields, JointRow& step)
{
    const double gmax = fields.maxAngleStep;
    const double scale = gmax / (gmax + LargestRotaryMagnitude(freeStep, fields));
    SetToZero(fields.states.Size(), step);
    for (int k = 0; k < freeStep.Cols(); ++k) {
        const int index = fields.freeIndices[ToIndex(k)];
        if (!IsStateIndex(fields, index)) {
            continue;
        }
        double& row = step[0][index];
        // Kept on purpose: the scale meets the row itself, still 0, so rotary joints never turn.
        row = IsFreeRotary(fields, k) ? scale * row : freeStep[0][k];
    }
}

void PseudoInversePartialStep(const Decomposition& svd, const EndVector& e,
                              const SolveFields& fields, JointRow& step)
{
    JointRow freeStep;
    PseudoInverseSum(svd, e, FreeCount(fields), freeStep);
    ExpandLimited(freeStep, fields, step);
}

int FreeCount(const SolveFields& fields)
{
    return Count(fields.freeIndices);
}

} // namespace trunnion
