#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "solvers/Solvers.h"
#include "support/Bits.h"
#include "support/Fixtures.h"
#include "support/Repeat.h"

namespace
{

using test::Answer;
using test::At;
using test::BitsOf;
using test::EndState;
using test::Gantry;
using test::kOneDegree;
using test::Random;
using test::Recorder;
using test::Rig;
using test::Solve;
using test::StatesOf;
using test::Untouched;
using test::Values;
using Flags = std::vector<bool>;
using Samples = std::vector<IkSolverSampleItem>;
using Degrees = std::vector<int>;

constexpr double kPi = 3.141592653589793; // the nearest double: its degrees are cut to 180
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kHuge = 1e300;
constexpr int kMost = 2147483647;
constexpr int kLeast = -2147483647 - 1;

/// An analyst that is a function.
class Analyst : public IkSolutionAnalyst
{
  public:
    using Function = std::function<bool(IkStream*, IkJtStateVector*, Samples&)>;
    explicit Analyst(Function ofSamples) : function(std::move(ofSamples)) {}
    bool AnalyzeSolutions(IkStream* stream, IkJtStateVector* startStates, Samples& samples) override
    {
        ++count;
        return function(stream, startStates, samples);
    }

    int count{0};

  private:
    Function function;
};

/// A linear joint at 3 and then rotary joints about z.
struct Turner : Rig
{
    explicit Turner(int rotaryCount)
    {
        Linear(tool, IkJoint::JtPrimTransX).SetCurValue(3);
        for (int i = 0; i < rotaryCount; ++i) {
            auto& joint = Rotary(tool, IkJoint::JtPrimRotZ);
            joint.SetBounds(-4 * kPi, 4 * kPi);
            joints.push_back(&joint);
        }
        tip = &Add<test::CountingBody>(tool);
        tip->SetOrigFrame(IkXformMat::Translate(100, 0, 0));
        Connect();
    }

    std::vector<IkJtRot*> joints;
    test::CountingBody* tip;
};

std::vector<Values> StartsOf(IkSolverHybrid& solver)
{
    std::vector<Values> starts;
    for (const IkSolverSampleItem& item : solver.GetSampleList()) {
        EXPECT_EQ(item.stream, solver.GetStreamPtr());
        EXPECT_FALSE(item.rejected);
        EXPECT_EQ(item.errorValue, 0.0);
        EXPECT_EQ(item.resultStates.Size(), 0);
        starts.push_back(item.startStates.GetValVector());
    }
    return starts;
}

std::vector<Values> StartsOf(IkStream& stream, bool lockRotary = false)
{
    IkSolverHybrid solver(&stream);
    solver.Initialize(lockRotary);
    EXPECT_TRUE(solver.SetupSampleItems());
    return StartsOf(solver);
}

Flags RejectedOf(const Samples& samples)
{
    Flags rejected;
    for (const IkSolverSampleItem& item : samples) {
        rejected.push_back(item.rejected);
    }
    return rejected;
}

// --- items and fields ---

TEST(IkSolverSampleItem, StartsEmptyAndIsCopiedWhole)
{
    IkSolverSampleItem item;
    EXPECT_EQ(item.startStates.Size() + item.resultStates.Size(), 0);
    EXPECT_EQ(item.stream, nullptr);
    EXPECT_EQ(item.userValue1, 0);
    EXPECT_EQ(item.userValue2, 0);
    EXPECT_EQ(item.userValue3, 0);
    EXPECT_EQ(item.label, L"");
    EXPECT_FALSE(item.rejected);
    EXPECT_EQ(item.errorValue, 0.0);

    IkStream stream;
    item.startStates = Untouched();
    item.resultStates = Untouched();
    item.stream = &stream;
    item.userValue1 = std::numeric_limits<long long>::max();
    item.userValue2 = 2;
    item.userValue3 = 3;
    item.label = L"flipped";
    item.rejected = true;
    item.errorValue = 0.5;
    IkSolverSampleItem assigned;
    assigned = item;
    for (const IkSolverSampleItem& copy : {IkSolverSampleItem(item), assigned}) {
        EXPECT_EQ(copy.startStates.GetValVector(), Values{99});
        EXPECT_EQ(copy.resultStates.GetValVector(), Values{99});
        EXPECT_EQ(copy.stream, &stream);
        EXPECT_EQ(copy.userValue1, std::numeric_limits<long long>::max());
        EXPECT_EQ(copy.userValue2, 2);
        EXPECT_EQ(copy.userValue3, 3);
        EXPECT_EQ(copy.label, L"flipped");
        EXPECT_TRUE(copy.rejected);
        EXPECT_EQ(copy.errorValue, 0.5);
    }
}

TEST(IkSolverHybrid, StartsWithoutSamplesAndAnalyst)
{
    IkStream stream;
    IkSolverHybrid withStream(&stream);
    IkSolverHybrid withoutStream;
    EXPECT_EQ(withStream.GetStreamPtr(), &stream);
    EXPECT_EQ(withoutStream.GetStreamPtr(), nullptr);
    for (IkSolverHybrid* solver : {&withStream, &withoutStream}) {
        EXPECT_TRUE(solver->GetSampleList().empty());
        EXPECT_EQ(solver->GetAnalystObj(), nullptr);
        EXPECT_EQ(solver->GetMaxIterations(), 60);
        EXPECT_EQ(solver->GetConvergenceTolerance(), 1e-12);
    }
}

TEST(IkSolverHybrid, CopiesShareTheAnalystAndHaveTheirOwnSamples)
{
    Turner rig(1);
    Analyst analyst([](auto&&...) { return true; });
    IkSolverHybrid solver(&rig.stream);
    solver.SetAnalystObj(&analyst);
    solver.SetMaxIterations(7);
    EXPECT_TRUE(Solve(solver, At(103, 0, 0)).isSolved);
    IkSolverHybrid copy(solver);
    IkSolverHybrid assigned;
    EXPECT_EQ(&(assigned = solver), &assigned);
    EXPECT_EQ(copy.SolverJtStates.Size(), 0); // as copies of the base
    EXPECT_EQ(assigned.SolverJtStates.Size(), 2);
    for (IkSolverHybrid* made : {&copy, &assigned}) {
        EXPECT_EQ(made->GetStreamPtr(), &rig.stream);
        EXPECT_EQ(made->GetMaxIterations(), 7);
        EXPECT_EQ(made->GetAnalystObj(), &analyst);
        ASSERT_EQ(made->GetSampleList().size(), 4U);
        EXPECT_EQ(BitsOf(made->GetSampleList()[1].startStates),
                  BitsOf(solver.GetSampleList()[1].startStates));
        made->GetSampleList().clear();
        EXPECT_EQ(solver.GetSampleList().size(), 4U);
        made->SetAnalystObj(nullptr);
        EXPECT_EQ(solver.GetAnalystObj(), &analyst);
    }
}

TEST(IkSolverHybrid, ResetLeavesTheSamplesAndTheBase)
{
    Turner rig(1);
    IkSolverHybrid solver(&rig.stream);
    EXPECT_TRUE(Solve(solver, At(103, 0, 0)).isSolved);
    const auto bits = BitsOf(solver.GetSampleList()[3].resultStates);
    solver.Reset();
    ASSERT_EQ(solver.GetSampleList().size(), 4U);
    EXPECT_EQ(BitsOf(solver.GetSampleList()[3].resultStates), bits);
    EXPECT_EQ(solver.SolverJtStates.Size(), 2);
}

// --- sampling ---

TEST(HybridSamples, OfOneJointAreItsAnglesWithinItsBounds)
{
    struct Row
    {
        double current, low, high; // [rad]
        Degrees angles_deg;        // in order; the first gives way to the unchanged start
    };
    const double right = kPi / 2;
    for (const Row& row : std::vector<Row>{
             {kPi / 6, -2 * kPi, 2 * kPi, {30, 120, 210, -60}},
             {0, 0, right, {0, 90}}, // 180 gives 90 and -90 gives 0 again
             {0, -right, right, {0, 90, -90}},
             {0, -kPi, kPi, {0, 90, 180, -90}},               // -180 is not among them: 180 stays
             {0.9999 * kOneDegree, -9, 9, {0, 90, 180, -90}}, // whole degrees, towards zero
             {-0.9999 * kOneDegree, -9, 9, {0, 90, 180, -90}},
             {-30.7 * kOneDegree, -9, 9, {-30, 60, 150, -120}},
             {10 * kPi, -2 * kPi - 0.001, 7, {401}}, // all beyond: 7 rad is 401
             {2 * kPi + 0.001, -9, 5.5 * kPi, {360, 450, 540, 270}},
             {1, 0.5, 0.5, {28}}, // 28.6 cut
             {1, kNan, 9, {57, 147, 237, 0}},
             {1, -9, kNan, {0, -33}},
             {1, kNan, kNan, {0}},
             {kNan, -9, 9, {0, 90, 180, -90}},
             {1, -kHuge, kHuge, {57, 147, 237, -33}},
             {1, -kInfinity, kInfinity, {57, 147, 237, -33}},
             {kHuge, -9, 9, {515}}, // 9 rad
             {kHuge, -kHuge, kHuge, {kMost, kMost - 90}},
             {-kHuge, -kHuge, kHuge, {kLeast, kLeast + 90, kLeast + 180}},
             // Inverted bounds: what is above the high one drops to it, the rest rises to the low.
             {0, right, -right, {-90, 90}},
             {-1.2 * kPi, right, -right, {90, -90}},
             // -180 and 180 are the same angle: the negative one goes.
             {-100.5 * kOneDegree, kPi, -kPi, {180}},
             {-250.5 * kOneDegree, kPi, -kPi, {180}},
             {-100.5 * kOneDegree, kPi + 2 * kOneDegree, -kPi, {-180, 182}},
             // So are 0 and 360, but 0 is not negative: both stay.
             {0, 2 * kPi, 0, {360, 0}},
         }) {
        Turner rig(1);
        rig.joints[0]->SetCurValue(row.current);
        rig.joints[0]->SetBounds(row.low, row.high);
        const std::vector<Values> starts = StartsOf(rig.stream);
        ASSERT_EQ(starts.size(), row.angles_deg.size()) << row.current << " " << row.low;
        EXPECT_EQ(BitsOf(starts[0][1]), BitsOf(row.current));
        for (std::size_t i = 0; i < starts.size(); ++i) {
            EXPECT_EQ(starts[i][0], 3); // linear joints start where they stand
            if (i > 0) {
                EXPECT_EQ(starts[i][1], row.angles_deg[i] * kOneDegree) << row.current;
            }
        }
    }
}

TEST(HybridSamples, KeepThePositiveOneOfTwoEqualAngles)
{
    // The first joint can only be 180; a second joint's samples show it.
    for (const double current : {-100.5 * kOneDegree, -250.5 * kOneDegree}) {
        Turner rig(2);
        rig.joints[0]->SetCurValue(current);
        rig.joints[0]->SetBounds(kPi, -kPi);
        rig.joints[1]->SetBounds(0, kPi / 2);
        EXPECT_EQ(StartsOf(rig.stream),
                  (std::vector<Values>{{3, current, 0}, {3, 180 * kOneDegree, 90 * kOneDegree}}));
    }
}

TEST(HybridSamples, AreAllCombinationsOfUpToThreeJoints)
{
    // Each joint at its own angle, so that every start tells where it comes from.
    for (int count = 0; count <= 5; ++count) {
        Turner rig(count);
        std::vector<Degrees> angles_deg;
        Values first{3};
        for (int i = 0; i < count; ++i) {
            const int at = 10 * (i + 1);
            rig.joints[static_cast<std::size_t>(i)]->SetCurValue((at + 0.5) * kOneDegree);
            first.push_back((at + 0.5) * kOneDegree);
            angles_deg.push_back({at, at + 90, at + 180, at - 90});
        }
        std::vector<Values> expected{{3}};
        for (const Degrees& angles : angles_deg) { // the first joint varies slowest
            std::vector<Values> longer;
            for (const Values& start : expected) {
                for (const int angle : angles) {
                    longer.push_back(start);
                    longer.back().push_back(angle * kOneDegree);
                }
            }
            expected = longer;
        }
        expected[0] = first;
        if (count > 3) {
            expected.resize(1);
        }
        EXPECT_EQ(StartsOf(rig.stream), expected) << count;
        EXPECT_EQ(expected.size(), (std::vector<std::size_t>{1, 4, 16, 64, 1, 1}.at(
                                       static_cast<std::size_t>(count))));
    }
}

TEST(HybridSamples, LeaveLockedJointsOut)
{
    Turner rig(4);
    for (IkJtRot* joint : rig.joints) {
        joint->SetCurValue(0.25);
    }
    rig.joints[0]->SetIsLocked(true);
    rig.stream.SetLocalLock(rig.joints[2], true);
    const std::vector<Values> starts = StartsOf(rig.stream); // two are left: 14 degrees each
    ASSERT_EQ(starts.size(), 16U);
    EXPECT_EQ(starts[1], (Values{3, 0.25, 14 * kOneDegree, 0.25, 104 * kOneDegree}));
    EXPECT_EQ(starts[15], (Values{3, 0.25, -76 * kOneDegree, 0.25, -76 * kOneDegree}));
    EXPECT_EQ(StartsOf(rig.stream, true), (std::vector<Values>{{3, 0.25, 0.25, 0.25, 0.25}}));
}

TEST(HybridSamples, TurnFromTheJointsAndKeepTheOtherStartValues)
{
    Turner rig(1);
    rig.joints[0]->SetCurValue(kPi / 6);
    IkJtStateVector start = StatesOf(rig.stream, {8, 1.5});
    IkSolverHybrid solver(&rig.stream);
    ASSERT_TRUE(solver.SetStartingJtStates(&start));
    solver.Initialize(false);
    solver.SetupSampleItems();
    EXPECT_EQ(StartsOf(solver),
              (std::vector<Values>{
                  {8, 1.5}, {8, 120 * kOneDegree}, {8, 210 * kOneDegree}, {8, -60 * kOneDegree}}));
}

TEST(HybridSamples, ReplaceThoseOfTheLastSolve)
{
    Turner rig(1);
    IkSolverHybrid solver(&rig.stream);
    solver.GetSampleList().resize(100);
    solver.GetSampleList()[0].label = L"old";
    EXPECT_TRUE(Solve(solver, At(103, 0, 0)).isSolved);
    EXPECT_EQ(solver.GetSampleList().size(), 4U);
    EXPECT_EQ(solver.GetSampleList()[0].label, L"");
}

// --- duplicates ---

Samples SamplesAt(const IkStream& stream, const std::vector<Values>& results)
{
    Samples samples(results.size());
    for (std::size_t i = 0; i < results.size(); ++i) {
        samples[i].resultStates = StatesOf(stream, results[i]);
    }
    return samples;
}

TEST(HybridDuplicates, AreMarkedWithinATenth)
{
    const double tenth = 0.1;
    Turner rig(1); // a linear joint and a rotary one
    struct Row
    {
        std::vector<Values> results;
        Flags rejected;
    };
    for (const Row& row : std::vector<Row>{
             {{}, {}},
             {{{0, 0}}, {false}},
             {{{0, 0}, {tenth, 0}}, {false, true}},
             {{{0, 0}, {0.1000001, 0}}, {false, false}},
             {{{0, 0}, {0, -tenth}}, {false, true}},
             {{{0, 0}, {0, -0.1000001}}, {false, false}},
             {{{0, 0}, {0.05, 0.2}}, {false, false}},                // both must be near
             {{{0, 0}, {0.08, 0}, {0.16, 0}}, {false, true, false}}, // a duplicate has none itself
             {{{0, 0}, {5, 0}, {0, 0}, {5, 0}, {0, 0}}, {false, false, true, true, true}},
             {{{0, 0}, {0, 6.28318530717958}}, {false, false}}, // a turn on is another solution
         }) {
        Samples samples = SamplesAt(rig.stream, row.results);
        IkSolverHybrid().EliminateDuplicates(samples);
        EXPECT_EQ(RejectedOf(samples), row.rejected);
    }
}

TEST(HybridDuplicates, OfRejectedSamplesOrOtherJointsAreNone)
{
    Turner rig(1);
    Turner foreign(1);
    IkSolverHybrid solver;
    Samples samples = SamplesAt(rig.stream, {{0, 0}, {0, 0}, {0, 0}});
    samples[0].rejected = true;
    solver.EliminateDuplicates(samples);
    EXPECT_EQ(RejectedOf(samples), (Flags{true, false, true}));

    samples = SamplesAt(rig.stream, {{0, 0}, {0, 0}});
    samples[1].resultStates = StatesOf(foreign.stream, {0, 0});
    solver.EliminateDuplicates(samples);
    EXPECT_EQ(RejectedOf(samples), (Flags{false, false}));
    samples[1].resultStates = IkJtStateVector();
    solver.EliminateDuplicates(samples);
    EXPECT_EQ(RejectedOf(samples), (Flags{false, false}));
}

// --- solving ---

TEST(HybridSolve, WithoutRotaryJointsIsThePseudoInverseSolve)
{
    Gantry gantry;
    IkSolverHybrid solver(&gantry.stream);
    IkSolverPsuedoInverse single(&gantry.stream);
    const Answer answer = Solve(solver, At(30, -40, 50));
    EXPECT_TRUE(answer.isSolved);
    EXPECT_EQ(answer.values, Solve(single, At(30, -40, 50)).values);
    ASSERT_EQ(solver.GetSampleList().size(), 1U);
    EXPECT_EQ(solver.GetSampleList()[0].errorValue, single.GetCurErrorval());
    EXPECT_EQ(solver.SolverJtStates.GetValVector(), (Values{0, 0, 0})); // where it started
    EXPECT_EQ(gantry.stream.GetJointStates().GetValVector(), (Values{0, 0, 0}));
}

TEST(HybridSolve, GivesEachSampleTenIterationsWhateverItsOwnSettings)
{
    Gantry gantry;
    gantry.x.SetBounds(-400, 400);
    IkSolverHybrid solver(&gantry.stream);
    solver.SetMaxIterations(0);
    solver.SetConvergenceTolerance(1e9);
    const Answer answer = Solve(solver, At(1000, 0, 0));
    EXPECT_EQ(gantry.tip.count, 11 * (1 + 3)); // the pose and three columns a pass
    // All samples fail: the result is the first one's, what the last step took out of bounds.
    EXPECT_FALSE(answer.isSolved);
    ASSERT_EQ(answer.values.size(), 1U);
    EXPECT_NEAR(answer.values[0], 1000, 1e-9);
    EXPECT_EQ(RejectedOf(solver.GetSampleList()), Flags{true});
    EXPECT_NEAR(solver.GetSampleList()[0].errorValue, 360000, 1e-6); // 600 away at the bound
}

TEST(HybridSolve, TurnsEveryArgumentOverToItsSamples)
{
    // The part is 10 along x, so a target in part coordinates is 10 further.
    Turner rig(1);
    rig.Body(rig.part, IkXformMat::Translate(10, 0, 0));
    IkSolverHybrid solver(&rig.stream);
    IkJtStateVector result = Untouched();
    IkEndState inMachine = At(103, 0, 0);
    EXPECT_TRUE(solver.SolveIK(inMachine, result, true, IkJoint::JtLimitAll, true));
    EXPECT_EQ(result.GetValVector(), (Values{3, 0}));
    EXPECT_EQ(solver.GetSampleList().size(), 1U); // rotary joints held
    EXPECT_TRUE(solver.SolveIK(inMachine, result, false, IkJoint::JtLimitAll, true));
    test::ExpectNear(result.GetValVector(), {13, 0}, 1.1e-6);
    IkEndState far = At(5000, 0, 0);
    EXPECT_FALSE(solver.SolveIK(far, result, true, IkJoint::JtLimitLinear, true));
    EXPECT_TRUE(solver.SolveIK(far, result, true, IkJoint::JtLimitNone, true));
    test::ExpectNear(result.GetValVector(), {4900, 0}, 1.1e-6);
}

TEST(HybridSolve, CallsItsOwnInitializeOnceAndNoOtherStage)
{
    Turner rig(1);
    Recorder<IkSolverHybrid> solver(&rig.stream);
    EXPECT_TRUE(Solve(solver, At(103, 0, 0)).isSolved);
    EXPECT_EQ(solver.calls, (test::Calls{"SolveIK 030", "Initialize 0"}));
    solver.calls.clear();
    IkEndState home = At(103, 0, 0);
    EXPECT_EQ(solver.SolveIK(home, true, IkJoint::JtLimitRotary).GetValVector(), (Values{3, 0}));
    EXPECT_EQ(solver.calls, (test::Calls{"SolveIK", "SolveIK 120", "Initialize 0"}));
}

TEST(HybridSolve, ReturnsTheFirstOfTwoEqualSolutions)
{
    Turner rig(1);
    IkSolverHybrid solver(&rig.stream);
    const Answer answer = Solve(solver, At(103, 0, 0, test::kEverything));
    EXPECT_TRUE(answer.isSolved);
    EXPECT_EQ(answer.values, (Values{3, 0}));
    EXPECT_FALSE(solver.GetSampleList()[0].rejected);
    for (std::size_t i = 1; i < 4; ++i) { // near 0 again, or not there within ten iterations
        EXPECT_TRUE(solver.GetSampleList()[i].rejected) << i;
    }
}

/// The angles at which a joint starts, for bounds in their usual order.
Degrees StartAngles(const IkJoint& joint)
{
    const auto whole = [](double x) { return static_cast<int>(x * 180 / 3.14159265358979); };
    Degrees angles;
    for (const int offset : {0, 90, 180, -90}) {
        const int angle = std::clamp(whole(joint.GetCurValue()) + offset,
                                     whole(joint.GetLowBound()), whole(joint.GetHiBound()));
        if (std::find(angles.begin(), angles.end(), angle) == angles.end()) {
            angles.push_back(angle);
        }
    }
    return angles;
}

/// Every start in order: the joints as they stand, then the other combinations.
std::vector<Values> StartConfigurations(const test::Fixture& machine)
{
    std::vector<std::size_t> rotary;
    for (std::size_t i = 0; i < machine.joints.size(); ++i) {
        if (machine.joints[i]->IsRotary()) {
            rotary.push_back(i);
        }
    }
    std::vector<Values> starts{machine.JointValues()};
    if (rotary.size() > 3) {
        return starts;
    }
    for (const std::size_t i : rotary) {
        std::vector<Values> more;
        for (const Values& start : starts) {
            for (const int angle : StartAngles(*machine.joints[i])) {
                more.push_back(start);
                more.back()[i] = angle * kOneDegree;
            }
        }
        starts = more;
    }
    starts[0] = machine.JointValues();
    return starts;
}

bool IsSame(const IkJtStateVector& a, const IkJtStateVector& b)
{
    const Values left = a.GetValVector();
    const Values right = b.GetValVector();
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](double x, double y) { return std::fabs(x - y) <= 0.1; });
}

/// The distinct solutions from each start, by putting the joints there.
std::vector<IkJtStateVector> DistinctSolutions(const test::Fixture& machine, IkEndState target)
{
    std::vector<IkJtStateVector> solutions;
    const Values home = machine.JointValues();
    for (const Values& start : StartConfigurations(machine)) {
        machine.SetJoints(start);
        IkSolverPsuedoInverse solver(machine.stream);
        solver.SetMaxIterations(10);
        IkJtStateVector result;
        const bool isNew =
            solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false) &&
            std::none_of(solutions.begin(), solutions.end(),
                         [&result](const IkJtStateVector& known) { return IsSame(known, result); });
        if (isNew) {
            solutions.push_back(result);
        }
    }
    machine.SetJoints(home);
    return solutions;
}

TEST(HybridSolve, KeepsTheDistinctSolutionsOfEachStartSolvedAlone)
{
    std::size_t most = 0;
    for (const test::NamedFixture& named : test::AllFixtures()) {
        test::Repeat(6, 81, [&](Random& random) {
            const test::Fixture machine = named.make();
            IkJtStateVector goal = machine.stream->GetJointStates();
            Values home;
            for (int i = 0; i < goal.Size(); ++i) {
                const IkJoint& joint = *goal.GetState(i).GetJoint();
                const double reach = joint.IsRotary() ? 1 : 40;
                home.push_back(std::clamp(random.Between(-reach, reach), joint.GetLowBound(),
                                          joint.GetHiBound()));
                goal.GetState(i).SetValue(std::clamp(random.Between(-reach, reach),
                                                     joint.GetLowBound(), joint.GetHiBound()));
            }
            machine.SetJoints(home);
            IkEndState target = machine.stream->SolveFK(goal, false, nullptr, nullptr, false);
            const std::vector<IkJtStateVector> expected = DistinctSolutions(machine, target);

            IkSolverHybrid solver(machine.stream);
            IkJtStateVector result;
            ASSERT_EQ(solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false),
                      !expected.empty());
            std::vector<std::vector<std::uint64_t>> found;
            for (const IkSolverSampleItem& item : solver.GetSampleList()) {
                if (!item.rejected) {
                    EXPECT_LE(item.errorValue, 1e-12);
                    found.push_back(BitsOf(item.resultStates));
                }
            }
            ASSERT_EQ(found.size(), expected.size()) << named.name;
            for (std::size_t i = 0; i < found.size(); ++i) {
                ASSERT_EQ(found[i], BitsOf(expected[i])) << named.name << " " << i;
            }
            ASSERT_EQ(BitsOf(result),
                      expected.empty() ? BitsOf(solver.GetSampleList()[0].resultStates) : found[0]);
            ASSERT_EQ(machine.JointValues(), home);
            most = std::max(most, found.size());
        });
    }
    EXPECT_GE(most, 2U); // machines with more than one solution are among the cases
}

// --- analysts ---

TEST(HybridAnalyst, SeesTheStreamTheStartAndEverySample)
{
    Turner rig(1);
    rig.joints[0]->SetCurValue(0.5);
    IkJtStateVector start = StatesOf(rig.stream, {7, 0.25});
    IkSolverHybrid solver(&rig.stream);
    ASSERT_TRUE(solver.SetStartingJtStates(&start));
    Analyst analyst([&](IkStream* stream, IkJtStateVector* states, Samples& samples) {
        EXPECT_EQ(stream, &rig.stream);
        EXPECT_EQ(states, &solver.SolverJtStates);
        EXPECT_EQ(states->GetValVector(), (Values{7, 0.25}));
        EXPECT_EQ(&samples, &solver.GetSampleList());
        EXPECT_EQ(samples.size(), 4U);
        EXPECT_FALSE(samples[0].rejected);
        return true;
    });
    solver.SetAnalystObj(&analyst);
    EXPECT_EQ(solver.GetAnalystObj(), &analyst);
    Solve(solver, rig.stream.SolveFK(start, false, nullptr, nullptr, false));
    EXPECT_EQ(analyst.count, 1);
}

TEST(HybridAnalyst, LeavesTheChoiceToTheLastItem)
{
    // X at 3 and C at 0 is the first sample's solution; each analyst does its own to the list.
    Turner rig(1);
    const auto named = [&rig](Values values) {
        IkSolverSampleItem item;
        item.resultStates = StatesOf(rig.stream, values);
        item.rejected = true; // not looked at
        return item;
    };
    struct Row
    {
        Analyst::Function analyze;
        bool isSolved;
        Values values;
        std::size_t size;
    };
    for (const Row& row : std::vector<Row>{
             {[](auto*, auto*, Samples& s) { // best at the end
                  std::sort(s.begin(), s.end(),
                            [](const auto& a, const auto& b) { return a.rejected > b.rejected; });
                  return true;
              },
              true,
              {3, 0},
              4},
             {[&](auto*, auto*, Samples& s) {
                  s.push_back(named({1, 2}));
                  return false; // not looked at either
              },
              true,
              {1, 2},
              5},
             {[&](auto*, auto*, Samples& s) {
                  s.back() = named({4, 5});
                  return true;
              },
              true,
              {4, 5},
              4},
             {[](auto*, auto*, Samples& s) {
                  s.resize(1);
                  return true;
              },
              true,
              {3, 0},
              1},
             {[](auto*, auto*, Samples& s) {
                  s.clear();
                  return true;
              },
              false,
              {3, 0},
              0}, // the first sample's, kept from before
         }) {
        Analyst analyst(row.analyze);
        IkSolverHybrid solver(&rig.stream);
        solver.SetAnalystObj(&analyst);
        const Answer answer = Solve(solver, At(103, 0, 0, test::kEverything));
        EXPECT_EQ(answer.isSolved, row.isSolved);
        EXPECT_EQ(answer.values, row.values);
        EXPECT_EQ(solver.GetSampleList().size(), row.size);
        EXPECT_EQ(analyst.count, 1);
    }
}

TEST(HybridAnalyst, IsAskedThoughEverySampleFailed)
{
    Gantry gantry;
    gantry.x.SetBounds(-400, 400);
    IkSolverHybrid solver(&gantry.stream);
    Analyst analyst([](IkStream*, IkJtStateVector*, Samples& samples) {
        EXPECT_TRUE(samples.at(0).rejected);
        return false;
    });
    solver.SetAnalystObj(&analyst);
    const Answer answer = Solve(solver, At(1000, 0, 0));
    EXPECT_TRUE(answer.isSolved); // whatever the item's flag
    ASSERT_EQ(answer.values.size(), 1U);
    EXPECT_NEAR(answer.values[0], 1000, 1e-9);
    solver.SetAnalystObj(nullptr);
    EXPECT_FALSE(Solve(solver, At(1000, 0, 0)).isSolved);
    EXPECT_EQ(analyst.count, 1);
}

TEST(HybridAnalyst, IsNotOwned)
{
    int destroyed = 0;
    struct Counting : Analyst
    {
        explicit Counting(int& counter) : Analyst([](auto&&...) { return true; }), count(counter) {}
        ~Counting() override { ++count; }
        int& count;
    };
    {
        Counting analyst(destroyed);
        {
            IkSolverHybrid solver;
            solver.SetAnalystObj(&analyst);
            const IkSolverHybrid copy(solver);
            EXPECT_EQ(copy.GetAnalystObj(), &analyst);
        }
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

} // namespace
