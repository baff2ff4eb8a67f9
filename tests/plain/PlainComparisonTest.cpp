// The library against the plain formulation, bit for bit, over random machines.

#include <cmath>
#include <tuple>

#include <gtest/gtest.h>

#include "plain/Comparison.h"
#include "plain/PlainSolve.h"
#include "support/Bits.h"
#include "support/RandomMachine.h"
#include "support/Repeat.h"

using test::BitsOf;
using test::Fixture;
using test::Random;

namespace
{

/// A random machine in the middle of a solve: fields set, working values moved, reference
/// evaluated.
struct Pass
{
    Fixture fixture;
    IkEndState target;
    plain::Fields fields;
    IkEndState reference;
    TNT::Array2D<double> jacobian;
};

Pass RandomPass(Random& random, bool isFull)
{
    Pass pass;
    pass.fixture = test::RandomMachine(random);
    IkStream& stream = *pass.fixture.stream;
    pass.target = test::RandomTarget(pass.fixture, random);
    const bool lockRotary = random.OneIn(10);
    stream.InitializeIkSolver(lockRotary);
    pass.fields = plain::Initialize(stream, lockRotary);
    pass.reference =
        stream.SolveFK(stream.SolverJtStates, false, nullptr, nullptr, random.OneIn(5));
    pass.reference.CopyFilter(pass.target);
    if (isFull) {
        stream.ComputeFullJacobian(pass.reference, pass.jacobian, false);
    } else {
        stream.ComputePartialJacobian(pass.reference, pass.jacobian, 1, false);
    }
    return pass;
}

/// Up to 12 rows and 16 columns; entries over a wide range, zeros and repeated columns among them.
TNT::Array2D<double> RandomMatrix(Random& random)
{
    const int rows = 1 + random.Below(12);
    TNT::Array2D<double> matrix(rows, 1 + random.Below(16));
    const bool hasZeros = random.OneIn(2);
    const bool repeats = random.OneIn(4);
    const int spread = random.OneIn(2) ? 1 : 60;
    for (int i = 0; i < matrix.dim1(); ++i) {
        for (int j = 0; j < matrix.dim2(); ++j) {
            const double fraction = random.Between(-1, 1);
            const double entry = std::ldexp(fraction, random.Below(spread));
            matrix[i][j] = hasZeros && random.OneIn(3) ? 0.0 : entry;
        }
        if (repeats) {
            matrix[i][matrix.dim2() - 1] = matrix[i][0];
        }
    }
    return matrix;
}

} // namespace

TEST(PlainComparison, Decomposition)
{
    test::Repeat(3000, 10, [](Random& random) {
        TNT::Array2D<double> matrix = RandomMatrix(random);
        TNT::Array2D<double> u;
        TNT::Array2D<double> v;
        TNT::Array1D<double> s;
        int rank = -1;
        IkStream().SafeSVDCalc(matrix, u, v, s, rank);
        const plain::Svd expected = plain::Decompose(matrix);
        ASSERT_EQ(rank, expected.rank);
        ASSERT_EQ(s.dim(), expected.s.dim());
        for (int i = 0; i < s.dim(); ++i) {
            ASSERT_EQ(BitsOf(s[i]), BitsOf(expected.s[i]));
        }
        ASSERT_EQ(BitsOf(u), BitsOf(expected.u));
        ASSERT_EQ(BitsOf(v), BitsOf(expected.v));
    });
}

TEST(PlainComparison, ChainTransform)
{
    test::Repeat(2000, 11, [](Random& random) {
        const Fixture fixture = test::RandomMachine(random);
        IkJtStateVector states = fixture.stream->GetJointStates();
        plain::States plainStates(states);
        for (const IkChain* chain : {fixture.toolChain.get(), fixture.partChain.get()}) {
            ASSERT_EQ(BitsOf(chain->GetXformMat(states)),
                      BitsOf(plain::ChainTransform(*chain, plainStates)));
        }
    });
}

TEST(PlainComparison, ForwardKinematics)
{
    test::Repeat(2000, 12, [](Random& random) {
        const Fixture fixture = test::RandomMachine(random);
        IkJtStateVector states = fixture.stream->GetJointStates();
        plain::States plainStates(states);
        for (const bool toolOnly : {false, true}) {
            const IkEndState pose =
                fixture.stream->SolveFK(states, false, nullptr, nullptr, toolOnly);
            ASSERT_EQ(BitsOf(pose.GetCompleteState()),
                      BitsOf(plain::Pose(*fixture.stream, plainStates, toolOnly)));
        }
    });
}

TEST(PlainComparison, Objective)
{
    test::Repeat(2000, 13, [](Random& random) {
        const Pass pass = RandomPass(random, false);
        std::vector<double> components;
        double error = 0.0;
        pass.fixture.stream->ObjectiveFcn(pass.reference, pass.target, components, error);
        ASSERT_EQ(BitsOf(error), BitsOf(plain::Objective(pass.reference, pass.target,
                                                         plain::kStreamDirectionTolerance)));
    });
}

TEST(PlainComparison, Jacobians)
{
    test::Repeat(1000, 14, [](Random& random) {
        const Pass pass = RandomPass(random, false);
        IkStream& stream = *pass.fixture.stream;
        const bool toolOnly = random.OneIn(4);
        TNT::Array2D<double> jacobian;
        for (const int includeRotary : {0, 1}) {
            stream.ComputePartialJacobian(pass.reference, jacobian, includeRotary, toolOnly);
            ASSERT_EQ(BitsOf(jacobian),
                      BitsOf(plain::PartialJacobian(stream, pass.fields, pass.reference,
                                                    includeRotary, toolOnly)));
        }
        ASSERT_TRUE(stream.ComputeFullJacobian(pass.reference, jacobian, toolOnly));
        TNT::Array2D<double> expected;
        ASSERT_TRUE(plain::FullJacobian(stream, pass.reference, toolOnly, expected));
        ASSERT_EQ(BitsOf(jacobian), BitsOf(expected));
    });
}

TEST(PlainComparison, FullSteps)
{
    test::Repeat(1000, 15, [](Random& random) {
        Pass pass = RandomPass(random, true);
        IkStream& stream = *pass.fixture.stream;
        ASSERT_EQ(
            BitsOf(stream.CalcDThetaPsuedoInverse(pass.target, pass.reference, pass.jacobian)),
            BitsOf(plain::PseudoInverseStep(stream, pass.target, pass.reference, pass.jacobian)));
        ASSERT_EQ(BitsOf(stream.CalcDThetaDLS(pass.target, pass.reference, pass.jacobian)),
                  BitsOf(plain::DampedStep(stream, pass.target, pass.reference, pass.jacobian)));
    });
}

TEST(PlainComparison, PartialSteps)
{
    test::Repeat(1000, 16, [](Random& random) {
        Pass pass = RandomPass(random, false);
        IkStream& stream = *pass.fixture.stream;
        const auto& [target, reference, jacobian] =
            std::tie(pass.target, pass.reference, pass.jacobian);
        ASSERT_EQ(
            BitsOf(stream.CalcDThetaPsuedoInversePartial(target, reference, pass.jacobian)),
            BitsOf(plain::PseudoInversePartialStep(pass.fields, target, reference, jacobian)));
        ASSERT_EQ(BitsOf(stream.CalcDThetaDLSPartial(target, reference, pass.jacobian)),
                  BitsOf(plain::DampedPartialStep(pass.fields, target, reference, jacobian)));
        ASSERT_EQ(
            BitsOf(stream.CalcDThetaSDLSPartial(target, reference, pass.jacobian)),
            BitsOf(plain::SelectivelyDampedPartialStep(pass.fields, target, reference, jacobian)));
    });
}

TEST(PlainComparison, WholeSolves)
{
    int converged = 0;
    test::Repeat(test::Cases(400), 17, [&converged](Random& random) {
        const Fixture fixture = test::RandomMachine(random);
        IkStream& stream = *fixture.stream;
        IkEndState target = test::RandomTarget(fixture, random);
        const bool toolOnly = random.OneIn(6);
        const bool lockRotary = random.OneIn(10);
        const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
        IkJtStateVector result;
        plain::States plainResult;
        plain::Fields fields;
        const bool isSolved = stream.SolveIK(target, result, toolOnly, limits, lockRotary);
        ASSERT_EQ(isSolved, plain::SolveIK(stream, target, plainResult, toolOnly, limits,
                                           lockRotary, fields));
        ASSERT_EQ(BitsOf(result), BitsOf(plainResult.ToLibrary()));
        ASSERT_EQ(BitsOf(stream.SolverJtStates), BitsOf(fields.states.ToLibrary()));
        ASSERT_EQ(stream.FreeJointIndices, fields.freeIndices);
        converged += isSolved ? 1 : 0;
    });
    EXPECT_GT(converged, 0); // both outcomes are among the cases
}
