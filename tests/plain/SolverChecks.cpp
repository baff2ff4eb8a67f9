// Solves of a machine by solver objects against the plain formulation.

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "plain/Comparison.h"
#include "plain/PlainSolvers.h"
#include "plain/UnusualChecks.h"

namespace
{

using test::NumberBits;
using test::Random;
using test::StatesOf;
using test::UnusualMachine;

/// The arguments of a solve.
struct Given
{
    Given(const UnusualMachine& machine, Random& random)
        : target(test::UnusualTarget(machine, random)), toolOnly(random.OneIn(6)),
          limits(static_cast<IkJoint::JointLimitTypes>(random.Below(4))),
          lockRotary(random.OneIn(10))
    {}

    IkEndState target;
    bool toolOnly;
    IkJoint::JointLimitTypes limits;
    bool lockRotary;
};

/// Start states that a solver takes, or else may refuse.
IkJtStateVector StartOf(const UnusualMachine& machine, Random& random)
{
    if (random.OneIn(5)) {
        return test::UnusualStates(machine, random);
    }
    IkJtStateVector states = machine.stream->GetJointStates();
    for (int i = 0; i < states.Size(); ++i) {
        IkJtState& state = states.GetState(i);
        state.SetValue(test::UnusualNumber(state.GetValue() + random.Between(-0.2, 0.2), random));
    }
    if (states.Size() > 1 && random.OneIn(8)) {
        IkJtState last = states.GetState(states.Size() - 1);
        states.DelState(last); // is no longer found, and is there all the same
    }
    return states;
}

/// Solves by both and holds the answers and what the solvers are left with against each other.
template <class Solver, class PlainSolver>
bool ExpectPlainSolve(const UnusualMachine& machine, Given given, Solver& solver,
                      PlainSolver& plainSolver)
{
    IkJtStateVector result;
    result.AddState(IkJtState(static_cast<IkJoint*>(nullptr), 99));
    plain::States expected(result);
    bool isSolved = false;
    bool isExpected = false;
    RunBoth(
        machine,
        [&] {
            isSolved = solver.SolveIK(given.target, result, given.toolOnly, given.limits,
                                      given.lockRotary);
        },
        [&] {
            isExpected = plainSolver.SolveIK(given.target, expected, given.toolOnly, given.limits,
                                             given.lockRotary);
        });
    EXPECT_EQ(isSolved, isExpected);
    EXPECT_EQ(StatesOf(result), StatesOf(expected));
    test::ExpectFields(solver, plainSolver.WorkingFields());
    return isExpected;
}

/// What an analyst makes of the samples: which it keeps, in which order.
using Order = std::vector<std::size_t>;
using Selection = std::function<Order(const std::vector<double>& errors)>;

double SortKey(double error)
{
    return std::isfinite(error) ? error : std::numeric_limits<double>::infinity();
}

Selection AnySelection(Random& random)
{
    const int kind = random.Below(5);
    return [kind](const std::vector<double>& errors) {
        Order order(errors.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        switch (kind) {
        case 0:
            return Order();
        case 1:
            std::reverse(order.begin(), order.end());
            break;
        case 2: // the best comes last
            std::stable_sort(order.begin(), order.end(), [&errors](std::size_t a, std::size_t b) {
                return SortKey(errors[a]) > SortKey(errors[b]);
            });
            break;
        case 3:
            order.resize((order.size() + 1) / 2);
            break;
        default:
            break;
        }
        return order;
    };
}

template <class Sample>
void Select(const Order& order, std::vector<Sample>& samples)
{
    std::vector<Sample> selected;
    for (const std::size_t i : order) {
        selected.push_back(samples[i]);
    }
    samples = selected;
}

class Analyst : public IkSolutionAnalyst
{
  public:
    explicit Analyst(Selection bySelection) : selection(std::move(bySelection)) {}

    bool AnalyzeSolutions(IkStream* stream, IkJtStateVector* startStates,
                          std::vector<IkSolverSampleItem>& samples) override
    {
        ofStream = stream;
        start = StatesOf(*startStates);
        std::vector<double> errors;
        for (const IkSolverSampleItem& sample : samples) {
            errors.push_back(sample.errorValue);
        }
        Select(selection(errors), samples);
        return false;
    }

    IkStream* ofStream{nullptr};
    test::Words start;

  private:
    Selection selection;
};

void ExpectPlainSamples(const IkStream& stream, const std::vector<IkSolverSampleItem>& samples,
                        const std::vector<plain::Sample>& expected)
{
    ASSERT_EQ(samples.size(), expected.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(StatesOf(samples[i].startStates), StatesOf(expected[i].start)) << i;
        EXPECT_EQ(StatesOf(samples[i].resultStates), StatesOf(expected[i].result)) << i;
        EXPECT_EQ(samples[i].rejected, expected[i].rejected) << i;
        EXPECT_EQ(NumberBits(samples[i].errorValue), NumberBits(expected[i].error)) << i;
        EXPECT_EQ(samples[i].stream, &stream);
        EXPECT_EQ(samples[i].userValue1 + samples[i].userValue2 + samples[i].userValue3, 0);
        EXPECT_EQ(samples[i].label, std::wstring());
    }
}

} // namespace

namespace test
{

void CheckPsuedoInverseSolves(const UnusualMachine& machine, Random& random, Tally& tally)
{
    IkSolverPsuedoInverse solver(machine.stream.get());
    plain::PseudoInverseSolver plainSolver(*machine.stream);
    IkJtStateVector start;
    if (random.OneIn(2)) {
        start = StartOf(machine, random);
        EXPECT_EQ(solver.SetStartingJtStates(&start), plainSolver.SetStart(start));
    }
    for (int solves = random.OneIn(4) ? 2 : 1; solves > 0; --solves) {
        const int iterations = random.OneIn(20) ? 60 : random.Below(20) - 1;
        solver.SetMaxIterations(iterations);
        plainSolver.SetMaxIterations(iterations);
        const double tolerance = random.OneOf({1e-12, 1e-12, 1e-12, 1e-8, 0.5, 0.0, -1.0,
                                               std::numeric_limits<double>::quiet_NaN(),
                                               std::numeric_limits<double>::infinity()});
        solver.SetConvergenceTolerance(tolerance);
        plainSolver.SetConvergenceTolerance(tolerance);
        const Given given(machine, random);
        tally.Add(ExpectPlainSolve(machine, given, solver, plainSolver));
        EXPECT_EQ(NumberBits(solver.GetCurErrorval()), NumberBits(plainSolver.Error()));
        EXPECT_EQ(solver.GetMaxIterations(), iterations);
        EXPECT_EQ(NumberBits(solver.GetConvergenceTolerance()), NumberBits(tolerance));
    }
}

void CheckHybridSolve(const UnusualMachine& machine, Random& random, Tally& tally)
{
    IkSolverHybrid solver(machine.stream.get());
    plain::HybridSolver plainSolver(*machine.stream);
    IkJtStateVector start;
    if (random.OneIn(3)) {
        start = StartOf(machine, random);
        EXPECT_EQ(solver.SetStartingJtStates(&start), plainSolver.SetStart(start));
    }
    const Selection selection = AnySelection(random);
    Analyst analyst(selection);
    Words plainStart;
    const bool hasAnalyst = random.OneIn(3);
    if (hasAnalyst) {
        solver.SetAnalystObj(&analyst);
        plainSolver.SetAnalyst(
            [&](const plain::States& states, std::vector<plain::Sample>& samples) {
                plainStart = StatesOf(states);
                std::vector<double> errors;
                for (const plain::Sample& sample : samples) {
                    errors.push_back(sample.error);
                }
                Select(selection(errors), samples);
            });
    }
    const Given given(machine, random);
    tally.Add(ExpectPlainSolve(machine, given, solver, plainSolver));
    ExpectPlainSamples(*machine.stream, solver.GetSampleList(), plainSolver.Samples());
    EXPECT_EQ(NumberBits(solver.GetCurErrorval()), NumberBits(0.0)); // its samples have errors
    EXPECT_EQ(analyst.start, plainStart);
    EXPECT_EQ(analyst.ofStream, hasAnalyst ? machine.stream.get() : nullptr);
    tally.mostSamples = std::max(tally.mostSamples, solver.GetSampleList().size());
}

int CheckDuplicateSamples(const UnusualMachine& machine, Random& random)
{
    std::vector<IkSolverSampleItem> samples(static_cast<std::size_t>(random.Below(8)));
    std::vector<plain::Sample> expected;
    for (IkSolverSampleItem& sample : samples) {
        sample.resultStates = machine.stream->GetJointStates();
        for (int i = 0; i < sample.resultStates.Size(); ++i) { // closer than 0.1 or not
            sample.resultStates.GetState(i).SetValue(
                UnusualNumber(0.0625 * random.Below(3), random));
        }
        sample.rejected = random.OneIn(4);
        expected.push_back({{}, sample.resultStates, sample.rejected, 0.0});
    }
    IkSolverHybrid(machine.stream.get()).EliminateDuplicates(samples);
    plain::RejectDuplicates(expected);
    int left = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].rejected, expected[i].rejected);
        left += samples[i].rejected ? 0 : 1;
    }
    return left;
}

} // namespace test
