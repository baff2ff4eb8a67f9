#ifndef TRUNNION_TESTS_SOLVERS_SOLVERS_H
#define TRUNNION_TESTS_SOLVERS_SOLVERS_H

#include <functional>
#include <string>
#include <vector>

#include "IkSolver.h"
#include "machine/Rig.h"

// What the tests of the solver objects share: a machine whose answers are known, and solvers such
// as a host may derive.
namespace test
{

constexpr double kOneDegree = 0.017453292519943278;
constexpr double kEighthTurn = 0.7853981633974475; // 45 * 3.14159265358979 / 180
using Calls = std::vector<std::string>;

inline IkEndState At(double x, double y, double z, Filter filter = kPositionOnly)
{
    return EndState(IkXformMat::Translate(x, y, z), filter);
}

/// Prisms along x, y and z: a tip that is where the joints say.
struct Gantry : Rig
{
    Gantry()
        : x(Linear(tool, IkJoint::JtPrimTransX)), y(Linear(tool, IkJoint::JtPrimTransY)),
          z(Linear(tool, IkJoint::JtPrimTransZ)), tip(Add<CountingBody>(tool))
    {
        x.SetName(L"X");
        y.SetName(L"Y");
        z.SetName(L"Z");
        Connect();
    }

    IkJtPrism& x;
    IkJtPrism& y;
    IkJtPrism& z;
    CountingBody& tip;
};

inline IkJtStateVector StatesOf(const IkStream& stream, const Values& values)
{
    IkJtStateVector states = stream.GetJointStates();
    EXPECT_TRUE(states.SetValVector(values));
    return states;
}

/// One state without joint: what no solve leaves behind.
inline IkJtStateVector Untouched()
{
    IkJtStateVector states;
    states.AddState(IkJtState(static_cast<IkJoint*>(nullptr), 99));
    return states;
}

struct Answer
{
    bool isSolved;
    Values values;
};

/// Solves with the five arguments into a vector that holds something else.
inline Answer Solve(IkSolver& solver, const IkEndState& target, bool lockRotary = false,
                    IkJoint::JointLimitTypes limits = IkJoint::JtLimitAll)
{
    IkEndState given(target);
    IkJtStateVector result = Untouched();
    const bool isSolved = solver.SolveIK(given, result, false, limits, lockRotary);
    return {isSolved, result.GetValVector()};
}

/// A solver that notes every stage it is asked for and what with.
template <class Base>
class Recorder : public Base
{
  public:
    using Base::Base;

    bool SolveIK(IkEndState& target, IkJtStateVector& result, bool toolOnly,
                 IkJoint::JointLimitTypes limits, bool lockRotary) override
    {
        calls.push_back("SolveIK " + std::to_string(toolOnly) + std::to_string(limits) +
                        std::to_string(lockRotary));
        return Base::SolveIK(target, result, toolOnly, limits, lockRotary);
    }
    IkJtStateVector SolveIK(IkEndState& target, bool toolOnly,
                            IkJoint::JointLimitTypes limits) override
    {
        calls.push_back("SolveIK");
        return Base::SolveIK(target, toolOnly, limits);
    }
    void TraceDump() override
    {
        calls.push_back("TraceDump");
        Base::TraceDump();
    }
    void Reset() override
    {
        calls.push_back("Reset");
        Base::Reset();
    }

    Calls calls;
    std::vector<IkEndState> measured;
    std::vector<const IkEndState*> targets;

  protected:
    void Initialize(bool lockRotary) override
    {
        calls.push_back("Initialize " + std::to_string(lockRotary));
        Base::Initialize(lockRotary);
    }
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override
    {
        calls.push_back("Objective");
        measured.push_back(current);
        targets.push_back(&target);
        return Base::ObjectiveFcn(current, target, components, error);
    }
    bool ComputeFullJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                             bool fkFlag) override
    {
        calls.push_back("FullJacobian");
        return Base::ComputeFullJacobian(reference, jacobian, fkFlag);
    }
    bool ComputePartialJacobian(const IkEndState& reference, TNT::Array2D<double>& jacobian,
                                int includeRotary, bool fkFlag) override
    {
        calls.push_back("PartialJacobian " + std::to_string(includeRotary) +
                        std::to_string(fkFlag));
        return Base::ComputePartialJacobian(reference, jacobian, includeRotary, fkFlag);
    }
    TNT::Array2D<double> CalcDTheta(const IkEndState& target, const IkEndState& current,
                                    TNT::Array2D<double>& jacobian) override
    {
        calls.push_back("Step " + std::to_string(jacobian.dim1()) + "x" +
                        std::to_string(jacobian.dim2()));
        targets.push_back(&target);
        return Base::CalcDTheta(target, current, jacobian);
    }
    void SafeSVDCalc(TNT::Array2D<double>& matrix, TNT::Array2D<double>& u, TNT::Array2D<double>& v,
                     TNT::Array1D<double>& s, int& rank) override
    {
        calls.push_back("Svd");
        Base::SafeSVDCalc(matrix, u, v, s, rank);
    }
};

/// Solvers with a single stage replaced by a function.
template <class Base>
struct WithInitialize : Base
{
    using Base::Base;
    std::function<void(WithInitialize&)> after;
    void Initialize(bool lockRotary) override
    {
        Base::Initialize(lockRotary);
        after(*this);
    }
};

template <class Base>
struct WithObjective : Base
{
    using Base::Base;
    std::function<bool(double&)> replacement; // is given the error so far
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override
    {
        Base::ObjectiveFcn(current, target, components, error);
        return replacement(error);
    }
};

template <class Base>
struct WithJacobian : Base
{
    using Base::Base;
    TNT::Array2D<double> replacement;
    bool ComputePartialJacobian(const IkEndState& /*reference*/, TNT::Array2D<double>& jacobian,
                                int /*includeRotary*/, bool /*fkFlag*/) override
    {
        jacobian = replacement;
        return true;
    }
};

template <class Base>
struct WithStep : Base
{
    using Base::Base;
    TNT::Array2D<double> replacement;
    TNT::Array2D<double> CalcDTheta(const IkEndState& /*target*/, const IkEndState& /*current*/,
                                    TNT::Array2D<double>& /*jacobian*/) override
    {
        return replacement;
    }
};

template <class Base>
struct WithSvd : Base
{
    using Base::Base;
    TNT::Array2D<double> u;
    TNT::Array2D<double> v;
    TNT::Array1D<double> s;
    int rank{0};
    void SafeSVDCalc(TNT::Array2D<double>& /*matrix*/, TNT::Array2D<double>& uOut,
                     TNT::Array2D<double>& vOut, TNT::Array1D<double>& sOut, int& rankOut) override
    {
        uOut = u;
        vOut = v;
        sOut = s;
        rankOut = rank;
    }
};

} // namespace test

#endif
