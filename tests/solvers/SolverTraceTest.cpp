#include <array>
#include <functional>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "geometry/RecordingTraceSink.h"
#include "geometry/Trace.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

namespace
{

using test::BitsOf;
using test::LinesOf;
using test::SwitchedOn;
using trunnion::TraceSwitches;
using trunnion::Tracing;

constexpr std::array<bool TraceSwitches::*, 3> kSolverSwitches{
    &TraceSwitches::solverObjectiveTarget,
    &TraceSwitches::solverObjectiveCurrent,
    &TraceSwitches::hybridSampling,
};

/// Announces that it is dumped, ahead of what its base forms.
template <class Base>
class Announcing : public Base
{
  public:
    using Base::Base;
    void TraceDump() override
    {
        trunnion::TraceLine(L"dumped");
        Base::TraceDump();
    }
};

test::Lines LinesOfASolve(IkSolver& solver, const test::Fixture& machine)
{
    std::vector<double> values(machine.joints.size(), 0.2);
    IkJtStateVector states = machine.States(values);
    IkEndState target = machine.stream->SolveFK(states, false, nullptr, nullptr, false);
    return LinesOf([&] {
        IkJtStateVector result;
        solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false);
    });
}

TEST(SolverTrace, OfHybridSamplingDumpsTheSolverOnce)
{
    const test::Fixture mill = test::TableTableMill();
    Announcing<IkSolverHybrid> solver(mill.stream);
    EXPECT_EQ(LinesOfASolve(solver, mill), test::Lines{});
    const SwitchedOn on(&TraceSwitches::hybridSampling);
    // The samples are captioned, but vectors of states form no line.
    EXPECT_EQ(LinesOfASolve(solver, mill), test::Lines{L"dumped"});
}

TEST(SolverTrace, OfOtherSitesNeverDumpsTheSolver)
{
    const test::Fixture mill = test::TableTableMill();
    Announcing<IkSolverHybrid> hybrid(mill.stream);
    Announcing<IkSolverPsuedoInverse> psuedo(mill.stream);
    for (const auto which :
         {&TraceSwitches::solverObjectiveTarget, &TraceSwitches::solverObjectiveCurrent}) {
        const SwitchedOn on(which);
        EXPECT_EQ(LinesOfASolve(hybrid, mill), test::Lines{});
        EXPECT_EQ(LinesOfASolve(psuedo, mill), test::Lines{});
    }
    const SwitchedOn on(&TraceSwitches::hybridSampling);
    EXPECT_EQ(LinesOfASolve(psuedo, mill), test::Lines{});
}

TEST(SolverTrace, OfADumpFormsNoLine)
{
    const test::Fixture mill = test::TableTableMill();
    IkSolverHybrid solver(mill.stream);
    EXPECT_EQ(LinesOfASolve(solver, mill), test::Lines{});
    EXPECT_EQ(LinesOf([&solver] { solver.TraceDump(); }), test::Lines{});
}

using Bits = std::vector<std::uint64_t>;

Bits BitsOfSolves(const test::NamedFixture& named, const std::function<void(IkSolver&)>& between)
{
    const test::Fixture machine = named.make();
    IkSolverPsuedoInverse psuedo(machine.stream);
    IkSolverHybrid hybrid(machine.stream);
    Bits bits;
    for (IkSolver* solver : {static_cast<IkSolver*>(&psuedo), static_cast<IkSolver*>(&hybrid)}) {
        IkJtStateVector states = machine.States(std::vector<double>(machine.joints.size(), 0.15));
        IkEndState target = machine.stream->SolveFK(states, false, nullptr, nullptr, false);
        between(*solver);
        IkJtStateVector result;
        bits.push_back(solver->SolveIK(target, result, false, IkJoint::JtLimitAll, false));
        between(*solver);
        bits.push_back(BitsOf(solver->GetCurErrorval()));
        for (const std::uint64_t more : BitsOf(result)) {
            bits.push_back(more);
        }
    }
    for (const IkSolverSampleItem& item : hybrid.GetSampleList()) {
        bits.push_back(item.rejected);
        bits.push_back(BitsOf(item.errorValue));
        for (const std::uint64_t more : BitsOf(item.resultStates)) {
            bits.push_back(more);
        }
    }
    return bits;
}

TEST(SolverTrace, ChangesNoBitOfAResult)
{
    const auto nothing = [](IkSolver&) {};
    const auto dump = [](IkSolver& solver) { solver.TraceDump(); };
    for (const test::NamedFixture& named : test::AllFixtures()) {
        const Bits bits = BitsOfSolves(named, nothing);
        EXPECT_EQ(BitsOfSolves(named, dump), bits) << named.name;
        for (const auto which : kSolverSwitches) {
            const SwitchedOn on(which);
            EXPECT_EQ(BitsOfSolves(named, nothing), bits) << named.name;
        }
    }
}

TEST(SolverTrace, IsOffAtTheStart)
{
    for (const auto which : kSolverSwitches) {
        EXPECT_FALSE(Tracing().*which);
    }
}

} // namespace
