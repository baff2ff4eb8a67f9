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
    if (pass == patience && patience > 0 && !(error <= kNear)) {
        SetMaxIterations(0); // read afresh after every pass: this one is the last
    }
    ++pass;
    return isMeasured;
}

void GuardedSolver::SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u,
                                TNT::Array2D<double>& v, TNT::Array1D<double>& singularValues,
                                int& rank)
{
    IkSolverPsuedoInverse::SafeSVDCalc(matrix, u, v, singularValues, rank);
    rank = std::min(rank, fixedNumbers); // the largest come first
}

} // namespace host
