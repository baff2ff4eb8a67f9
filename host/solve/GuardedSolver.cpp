#include "solve/GuardedSolver.h"

#include <algorithm>
#include <array>

namespace host
{

namespace
{

/// How many independent numbers a target fixes: 5 for position and one direction, 6 for position
/// and the whole orientation.
int NumbersFixedBy(const IkEndState& target)
{
    constexpr std::array kOfAxes{0, 2, 3, 3};
    constexpr int kOfPosition = 3;
    std::array<bool, 4> counts{};
    target.GetFilter(counts.data());
    const auto axes = std::count(counts.begin(), counts.end() - 1, true);
    return kOfAxes[static_cast<std::size_t>(axes)] + (counts[3] ? kOfPosition : 0);
}

/// What a pseudo-inverse makes of `difference` for the joint of one column.
double StepOf(int column, const TNT::Array2D<double>& u, const TNT::Array2D<double>& v,
              const TNT::Array1D<double>& singularValues, int rank,
              const TNT::Array2D<double>& difference)
{
    constexpr double kSingularCutOff = 1e-10; // the library's
    double step = 0.0;
    for (int i = 0; i < rank && singularValues[i] > kSingularCutOff; ++i) {
        double along = 0.0;
        for (int row = 0; row < difference.dim1(); ++row) {
            along += u[row][i] * difference[row][0];
        }
        step += v[column][i] * along / singularValues[i];
    }
    return step;
}

void ClearColumn(TNT::Array2D<double>& matrix, int column)
{
    for (int row = 0; row < matrix.dim1(); ++row) {
        matrix[row][column] = 0.0;
    }
}

} // namespace

GuardedSolver::GuardedSolver(IkStream* ofStream, int mostIterations)
    : IkSolverPsuedoInverse(ofStream), most(mostIterations)
{}

void GuardedSolver::Initialize(bool lockRotary)
{
    IkSolverPsuedoInverse::Initialize(lockRotary);
    SetMaxIterations(most);
    pass = 0;
}

bool GuardedSolver::ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                                 std::vector<double>& components, double& error)
{
    constexpr double kNear = 1.0; // [length^2] plus [deg^2]
    const bool isMeasured = IkSolverPsuedoInverse::ObjectiveFcn(current, target, components, error);
    fixedNumbers = NumbersFixedBy(target);
    difference = target.Diff2D(current);
    if (pass == patience && patience > 0 && !(error <= kNear)) {
        SetMaxIterations(0); // read afresh after every pass: this one is the last
    }
    ++pass;
    return isMeasured;
}

bool GuardedSolver::SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                            IkJoint::JointLimitTypes limitType, bool lockRotary)
{
    limits = limitType;
    return IkSolverPsuedoInverse::SolveIK(target, result, toolOnly, limitType, lockRotary);
}

/// Whether the joint of a column stands at a bound that the step would have it pass.
bool GuardedSolver::IsStopped(int column, double step)
{
    const int index = FreeJointIndices[static_cast<std::size_t>(column)];
    const IkJtState& state = SolverJtStates.GetState(index);
    const IkJoint& joint = *state.GetJoint();
    const bool isLimited =
        (limits & (joint.IsRotary() ? IkJoint::JtLimitRotary : IkJoint::JtLimitLinear)) != 0;
    return isLimited && ((step < 0.0 && state.GetValue() <= joint.GetLowBound()) ||
                         (step > 0.0 && state.GetValue() >= joint.GetHiBound()));
}

void GuardedSolver::SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                                TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues,
                                int& rank)
{
    const auto decompose = [&] {
        IkSolverPsuedoInverse::SafeSVDCalc(matrix, u, v, singularValues, rank);
        rank = std::min(rank, fixedNumbers); // the largest come first
    };
    decompose();
    int spare = limits == IkJoint::JtLimitNone ? 0 : matrix.dim2() - fixedNumbers;
    for (bool isAgain = true; isAgain && spare > 0;) {
        std::vector<int> stopped;
        for (int column = 0; column < matrix.dim2(); ++column) {
            if (IsStopped(column, StepOf(column, u, v, singularValues, rank, difference))) {
                stopped.push_back(column);
            }
        }
        stopped.resize(std::min(stopped.size(), static_cast<std::size_t>(spare)));
        for (const int column : stopped) {
            ClearColumn(matrix, column);
        }
        isAgain = !stopped.empty();
        if (isAgain) {
            spare -= static_cast<int>(stopped.size());
            decompose();
        }
    }
}

} // namespace host
