// The stages of a solve of a machine against the plain formulation.

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "plain/Comparison.h"
#include "plain/PlainSteps.h"
#include "plain/UnusualChecks.h"

namespace
{

using test::NumberBits;
using test::NumbersOf;
using test::Random;
using test::UnusualMachine;
using Array = TNT::Array2D<double>;

/// An unusual machine in the middle of a solve.
struct Pass
{
    Pass(const UnusualMachine& ofMachine, Random& random)
        : machine(ofMachine), stream(*machine.stream), target(test::UnusualTarget(machine, random)),
          lockRotary(random.OneIn(10)), toolOnly(random.OneIn(5))
    {
        RunBoth(
            machine, [&] { stream.InitializeIkSolver(lockRotary); },
            [&] { fields = plain::Initialize(stream, lockRotary); });
        test::ExpectFields(stream, fields);
        Move(random);
        reference = stream.SolveFK(stream.SolverJtStates, false, nullptr, nullptr, toolOnly);
        reference.CopyFilter(target);
        fields.states = plain::States(stream.SolverJtStates);
    }

    /// Takes the working values elsewhere, as earlier passes do.
    void Move(Random& random)
    {
        for (int i = 0; i < stream.SolverJtStates.Size(); ++i) {
            IkJtState& state = stream.SolverJtStates.GetState(i);
            state.SetValue(state.GetValue() + random.Between(-0.1, 0.1));
        }
    }

    const UnusualMachine& machine;
    IkStream& stream;
    IkEndState target;
    bool lockRotary;
    bool toolOnly;
    plain::Fields fields;
    IkEndState reference;
};

void ExpectPlainObjective(const Pass& pass, const IkEndState& target)
{
    const IkEndState& current = pass.reference;
    std::vector<double> components;
    double error = 0.0;
    EXPECT_TRUE(pass.stream.ObjectiveFcn(current, target, components, error));
    EXPECT_EQ(components, std::vector<double>());
    EXPECT_EQ(NumberBits(error),
              NumberBits(plain::Objective(current, target, plain::kStreamDirectionTolerance)));
    IkSolverPsuedoInverse solver(&pass.stream);
    EXPECT_TRUE(solver.ObjectiveFcn(current, target, components, error));
    EXPECT_EQ(NumberBits(error),
              NumberBits(plain::Objective(current, target, plain::kSolverDirectionTolerance)));
}

/// The reference with its axes off by about as much as still counts as met.
IkEndState NearlyMet(const Pass& pass, Random& random)
{
    IkXformMat pose = pass.reference.GetCompleteState();
    pose.RotXThis(random.Between(1.744e-5, 1.7505e-5)); // 1 - cos: 1.521e-10 to 1.532e-10
    IkEndState target(pass.reference);
    target.SetCompleteState(pose);
    return target;
}

void ExpectPlainPartialJacobian(const Pass& pass, int includeRotary, Array& jacobian)
{
    Array expected;
    RunBoth(
        pass.machine,
        [&] {
            pass.stream.ComputePartialJacobian(pass.reference, jacobian, includeRotary,
                                               pass.toolOnly);
        },
        [&] {
            expected = plain::PartialJacobian(pass.stream, pass.fields, pass.reference,
                                              includeRotary, pass.toolOnly);
        });
    EXPECT_EQ(NumbersOf(jacobian), NumbersOf(expected));
}

bool ExpectPlainFullJacobian(const Pass& pass, Array& jacobian)
{
    jacobian = Array(1, 1, 42.0);
    Array expected(1, 1, 42.0);
    bool isMade = false;
    bool isExpected = false;
    RunBoth(
        pass.machine,
        [&] { isMade = pass.stream.ComputeFullJacobian(pass.reference, jacobian, pass.toolOnly); },
        [&] {
            isExpected = plain::FullJacobian(pass.stream, pass.reference, pass.toolOnly, expected);
        });
    EXPECT_EQ(isMade, isExpected);
    EXPECT_EQ(NumbersOf(jacobian), NumbersOf(expected));
    return isMade;
}

test::Words ValuesOf(const TNT::Array1D<double>& values)
{
    test::Words words;
    for (int i = 0; i < values.dim(); ++i) {
        words.push_back(NumberBits(values[i]));
    }
    return words;
}

void ExpectPlainDecomposition(const Pass& pass, Array& jacobian)
{
    Array u;
    Array v;
    TNT::Array1D<double> s;
    int rank = -1;
    pass.stream.SafeSVDCalc(jacobian, u, v, s, rank);
    const plain::Svd expected = plain::Decompose(jacobian);
    EXPECT_EQ(rank, expected.rank);
    if (rank > 0) {
        EXPECT_EQ(NumbersOf(u), NumbersOf(expected.u));
        EXPECT_EQ(NumbersOf(v), NumbersOf(expected.v));
    }
    EXPECT_EQ(ValuesOf(s), ValuesOf(expected.s));
}

void ExpectPlainPartialSteps(const Pass& pass, Array& jacobian)
{
    IkStream& stream = pass.stream;
    const IkEndState& target = pass.target;
    const IkEndState& current = pass.reference;
    const plain::Fields& fields = pass.fields;
    EXPECT_EQ(NumbersOf(stream.CalcDThetaPsuedoInversePartial(target, current, jacobian)),
              NumbersOf(plain::PseudoInversePartialStep(fields, target, current, jacobian)));
    EXPECT_EQ(NumbersOf(stream.CalcDThetaDLSPartial(target, current, jacobian)),
              NumbersOf(plain::DampedPartialStep(fields, target, current, jacobian)));
    EXPECT_EQ(NumbersOf(stream.CalcDThetaSDLSPartial(target, current, jacobian)),
              NumbersOf(plain::SelectivelyDampedPartialStep(fields, target, current, jacobian)));
}

void ExpectPlainFullSteps(const Pass& pass, Array& jacobian)
{
    IkStream& stream = pass.stream;
    const IkEndState& target = pass.target;
    const IkEndState& current = pass.reference;
    EXPECT_EQ(NumbersOf(stream.CalcDThetaPsuedoInverse(target, current, jacobian)),
              NumbersOf(plain::PseudoInverseStep(stream, target, current, jacobian)));
    EXPECT_EQ(NumbersOf(stream.CalcDThetaDLS(target, current, jacobian)),
              NumbersOf(plain::DampedStep(stream, target, current, jacobian)));
}

void Scale(Array& matrix, int exponent)
{
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            matrix[i][j] = std::ldexp(matrix[i][j], exponent);
        }
    }
}

/// Of the same shape: with singular values at the cut-off and about it, with repeated columns, or
/// with entries from one end of the range of doubles to the other.
Array UnusualJacobian(const Array& like, Random& random)
{
    const bool isDiagonal = random.OneIn(3);
    const int spread = random.OneIn(2) ? 1040 : 30; // exponents
    Array jacobian(like.dim1(), like.dim2(), 0.0);
    for (int i = 0; i < jacobian.dim1(); ++i) {
        for (int j = 0; j < jacobian.dim2(); ++j) {
            const double entry =
                std::ldexp(random.Between(-1, 1), random.Below(2 * spread) - spread);
            jacobian[i][j] = isDiagonal || random.OneIn(3) ? 0.0 : entry;
        }
    }
    for (int i = 0; isDiagonal && i < std::min(jacobian.dim1(), jacobian.dim2()); ++i) {
        jacobian[i][i] = random.OneOf(
            {1e-10, std::nextafter(1e-10, 0.0), std::nextafter(1e-10, 1.0), 1.0, 3.0, 0.0});
    }
    if (random.OneIn(3)) {
        Scale(jacobian, static_cast<int>(random.OneOf({-1060.0, -1000.0, -940.0, 930.0, 980.0})));
    }
    const int last = jacobian.dim2() - 1;
    const bool repeats = last > 0 && random.OneIn(4);
    for (int i = 0; repeats && i < jacobian.dim1(); ++i) {
        jacobian[i][last] = jacobian[i][0];
    }
    return jacobian;
}

/// A step with entries of any size: none, tiny, far beyond every range.
Array UnusualStep(int rows, Random& random)
{
    Array step(rows, 1);
    for (int i = 0; i < rows; ++i) {
        const double scale = random.OneOf({0.0, 1e-17, 2.220446049250313e-16, 0.1, 10.0, 1e4});
        step[i][0] = test::UnusualNumber(scale * random.Between(-1, 1), random);
    }
    return step;
}

} // namespace

namespace test
{

void CheckStages(const UnusualMachine& machine, Random& random)
{
    const Pass pass(machine, random);
    ExpectPlainObjective(pass, pass.target);
    ExpectPlainObjective(pass, NearlyMet(pass, random));
    Array jacobian;
    ExpectPlainPartialJacobian(pass, 0, jacobian);
    ExpectPlainPartialSteps(pass, jacobian);
    ExpectPlainPartialJacobian(pass, 1, jacobian);
    ExpectPlainPartialSteps(pass, jacobian);
    Array unusual = UnusualJacobian(jacobian, random);
    ExpectPlainDecomposition(pass, unusual);
    ExpectPlainPartialSteps(pass, unusual);
    if (ExpectPlainFullJacobian(pass, jacobian)) {
        ExpectPlainFullSteps(pass, jacobian);
        unusual = UnusualJacobian(jacobian, random);
        ExpectPlainFullSteps(pass, unusual);
    }
}

void CheckLimits(const UnusualMachine& machine, Random& random)
{
    const IkJtStateVector start = UnusualStates(machine, random);
    const int rows = random.OneIn(20) ? random.Below(20) : start.Size();
    Array step = UnusualStep(rows, random);
    for (int kind = 0; kind < 6; ++kind) {
        IkJtStateVector states = start;
        plain::States expected(start);
        if (kind < 4) {
            const auto limits = static_cast<IkJoint::JointLimitTypes>(kind);
            states.AppendValues(step, limits);
            plain::Append(expected, step, plain::LimitsOf(limits));
        } else {
            states.AppendValues(step, kind == 5);
            plain::Append(expected, step, plain::LimitsOf(kind == 5));
        }
        EXPECT_EQ(StatesOf(states), StatesOf(expected));
        std::vector<int> outside;
        states.GetOutOfBoundIndices(outside);
        EXPECT_EQ(static_cast<int>(outside.size()), plain::OutOfBounds(expected).Size());
    }
}

} // namespace test
