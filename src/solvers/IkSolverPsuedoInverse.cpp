#include <algorithm>

#include "IkSolver.h"
#include "machine/Arrays.h"
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
    TNT::Array2D<double> u;
    TNT::Array2D<double> v;
    TNT::Array1D<double> s;
    trunnion::Decomposition svd;
    SafeSVDCalc(jacobian, u, v, s, svd.rank);
    // A subclass may decompose in its own way: take no more of it than it gives.
    svd.rank = std::max(0, std::min({svd.rank, s.dim(), u.dim2(), v.dim2()}));
    svd.u = trunnion::ToArray<trunnion::Counted>(u);
    svd.v = trunnion::ToArray<trunnion::Counted>(v);
    svd.s = TNT::Array1D<trunnion::Counted>(svd.rank);
    for (int i = 0; i < svd.rank; ++i) {
        svd.s[i] = s[i];
    }
    trunnion::JointRow step;
    trunnion::PseudoInversePartialStep(svd, trunnion::ErrorOf(target, current), Fields(), step);
    return trunnion::ToColumn(step);
}
