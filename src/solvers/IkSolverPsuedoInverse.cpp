#include <algorithm>

#include "IkSolver.h"
#include "machine/StepMethods.h"

IkSolverPsuedoInverse::IkSolverPsuedoInverse() = default;
IkSolverPsuedoInverse::IkSolverPsuedoInverse(IkStream* ofStream) : IkSolver(ofStream) {}
IkSolverPsuedoInverse::IkSolverPsuedoInverse(const IkSolver& other) : IkSolver(other) {}
IkSolverPsuedoInverse::IkSolverPsuedoInverse(const IkSolverPsuedoInverse& other) = default;
IkSolverPsuedoInverse&
IkSolverPsuedoInverse::operator=(const IkSolverPsuedoInverse& other) = default;
IkSolverPsuedoInverse::~IkSolverPsuedoInverse() = default;

TNT::Array2D<double> IkSolverPsuedoInverse::CalcDTheta(const IkEndState& target,
                                                       const IkEndState& current,
                                                       TNT::Array2D<double>& jacobian)
{
    trunnion::Decomposition svd;
    SafeSVDCalc(jacobian, svd.u, svd.v, svd.s, svd.rank);
    // A subclass may decompose in its own way: take no more of it than it gives.
    svd.rank = std::min({svd.rank, svd.s.dim(), svd.u.dim2(), svd.v.dim2()});
    return trunnion::PseudoInversePartialStep(svd, target.Diff2D(current), Fields());
}
