#include "machine/Iteration.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "machine/Arrays.h"
#include "machine/LoopStages.h"
#include "machine/Rig.h"
#include "support/Bits.h"
#include "support/Fixtures.h"

namespace
{

using test::BitsOf;
using test::CountingBody;
using test::EndState;
using test::ExpectNear;
using test::MatrixOf;
using test::Rig;
using test::Values;
using trunnion::Iterate;
using Matrix = TNT::Array2D<double>;
using Log = std::vector<std::string>;
using Names = std::vector<std::wstring>;

// --- the loop, over stages made for the test ---

/// Stages that do what a test tells them, and note when they are asked.
struct Script
{
    IkJtStateVector states;
    int lastPass{3};
    double tolerance{1};
    std::function<double(int pass)> error = [](int) { return 2.0; };
    std::function<void(int pass, Matrix& step)> step = [](int, Matrix&) {};

    int passes{0};
    Matrix lastStep;
    Log log;

    IkJtStateVector& States() { return states; }
    int LastPass() const { return lastPass; }
    double Tolerance() const { return tolerance; }

    double Error()
    {
        log.emplace_back("error");
        ++passes;
        return error(passes - 1);
    }
    void Jacobian(int pass)
    {
        log.push_back("jacobian " + std::to_string(pass));
        EXPECT_EQ(pass, passes - 1);
    }
    void Step()
    {
        log.emplace_back("step");
        step(passes - 1, lastStep);
    }
    template <class Limits>
    void TakeStep(Limits limits)
    {
        states.AppendValues(lastStep, limits);
    }
};

struct Loop : testing::Test
{
    Loop()
    {
        for (IkJtPrism* joint : {&a, &b}) {
            joint->SetBounds(-test::kWide, test::kWide);
            script.states.AddState(IkJtState(joint));
        }
        result.AddState(IkJtState(&b, 99));
    }

    bool Run(IkJoint::JointLimitTypes limits = IkJoint::JtLimitAll)
    {
        return Iterate(script, result, limits);
    }
    void StepBy(double ofA, double ofB)
    {
        script.step = [=](int, Matrix& step) { step = MatrixOf({{ofA}, {ofB}}); };
    }
    Values Working() const { return script.states.GetValVector(); }
    void ExpectResultUntouched() const { EXPECT_EQ(result.GetValVector(), Values{99}); }

    IkJtPrism a{L"a"};
    IkJtPrism b{L"b"};
    Script script;
    IkJtStateVector result;
};

TEST_F(Loop, RunsTheStagesOfEachPassInOrderAndFailsAfterTheLast)
{
    script.lastPass = 1;
    EXPECT_FALSE(Run());
    EXPECT_EQ(script.log, (Log{"error", "jacobian 0", "step", //
                               "error", "jacobian 1", "step"}));
    EXPECT_EQ(result.Size(), 0);
}

TEST_F(Loop, EndsWhereTheErrorIsAtMostTheTolerance)
{
    script.tolerance = 0.5;
    StepBy(1, 2);
    script.error = [](int pass) { return pass < 2 ? 0.5000000001 : 0.5; };
    EXPECT_TRUE(Run());
    EXPECT_EQ(script.passes, 3);
    EXPECT_EQ(script.log.back(), "error"); // no Jacobian, no step
    EXPECT_EQ(result.GetValVector(), (Values{2, 4}));
    EXPECT_EQ(result.GetNameVector(), (Names{L"a", L"b"}));
}

TEST_F(Loop, EndsBeforeTheFirstStepWhereNoneIsNeeded)
{
    script.error = [](int) { return 0.0; };
    EXPECT_TRUE(Run());
    EXPECT_EQ(script.log, Log{"error"});
    EXPECT_EQ(result.GetValVector(), (Values{0, 0}));
}

TEST_F(Loop, NeverTakesANanForAnAnswer)
{
    script.error = [](int) { return std::numeric_limits<double>::quiet_NaN(); };
    EXPECT_FALSE(Run());
    EXPECT_EQ(script.passes, 4);
}

TEST_F(Loop, HasOnePassMoreThanTheNumberOfItsLast)
{
    for (const int last : {0, 1, 9, 60}) {
        script.lastPass = last;
        script.passes = 0;
        EXPECT_FALSE(Run());
        EXPECT_EQ(script.passes, last + 1);
    }
}

TEST_F(Loop, DoesNothingWhenItsLastPassIsBelowTheFirst)
{
    script.lastPass = -1;
    EXPECT_FALSE(Run());
    EXPECT_EQ(script.log, Log{});
    ExpectResultUntouched();
}

TEST_F(Loop, EndsWithItsResultUntouchedWhenTheLastPassFallsBelowTheRunningOne)
{
    script.step = [this](int pass, Matrix& step) {
        step = MatrixOf({{1}, {2000}});
        script.lastPass = pass < 2 ? 3 : 1;
    };
    EXPECT_FALSE(Run());
    EXPECT_EQ(script.passes, 3);
    EXPECT_EQ(Working(), (Values{2, 1000})); // the third step was not taken
    ExpectResultUntouched();
}

TEST_F(Loop, TakesTheRunningPassForTheLastWhenTheLimitFallsToIt)
{
    script.step = [this](int pass, Matrix& step) {
        step = MatrixOf({{1}, {2000}});
        script.lastPass = pass < 2 ? 9 : 2;
    };
    EXPECT_FALSE(Run());
    EXPECT_EQ(script.passes, 3);
    EXPECT_EQ(Working(), (Values{3, 3000}));
    EXPECT_EQ(result.GetNameVector(), Names{L"b"});
}

TEST_F(Loop, GoesOnWhenTheLastPassRises)
{
    script.lastPass = 1;
    script.step = [this](int, Matrix& step) {
        step = MatrixOf({{1}, {2000}});
        script.lastPass = 4;
    };
    EXPECT_FALSE(Run());
    EXPECT_EQ(script.passes, 5);
    EXPECT_EQ(Working(), (Values{5, 3000})); // four limited steps, then one that is not
}

TEST_F(Loop, LimitsEveryStepButTheLastAndListsWhatThatTookOut)
{
    struct Row
    {
        double low, high, step, reached;
        bool isListed;
    };
    const std::vector<Row> rows{
        {-5, 5, 3, 8, true},         // 3, 5, 5, 8
        {-5, 5, -3, -8, true},       //
        {-5, 5, 1, 4, false},        //
        {-5, 4, 1, 4, false},        // at its bound
        {-4, 5, -1, -4, false},      //
        {1, -1, -0.25, -1.25, true}, // -1, 1, -1: above the high bound is asked first
    };
    IkJtPrism joints[6];
    script.states.Reset();
    std::vector<Values> step;
    Values reached;
    Values listed;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        joints[i].SetBounds(rows[i].low, rows[i].high);
        script.states.AddState(IkJtState(&joints[i]));
        step.push_back({rows[i].step});
        reached.push_back(rows[i].reached);
        if (rows[i].isListed) {
            listed.push_back(rows[i].reached);
        }
    }
    script.step = [&step](int, Matrix& out) { out = MatrixOf(step); };
    EXPECT_FALSE(Run());
    EXPECT_EQ(Working(), reached);
    EXPECT_EQ(result.GetValVector(), listed);
    EXPECT_EQ(result.GetState(0).GetJoint(), &joints[0]);
    EXPECT_EQ(joints[0].GetCurValue(), 0);
}

TEST_F(Loop, HandsTheLimitTypeOn)
{
    a.SetBounds(-5, 5);
    StepBy(3, 0);
    EXPECT_FALSE(Run(IkJoint::JtLimitRotary));
    EXPECT_EQ(Working(), (Values{12, 0})); // prisms are not limited
    EXPECT_EQ(result.GetValVector(), Values{12});
}

TEST_F(Loop, TakesThePreviousStepAgainWhereAStageMakesNone)
{
    script.step = [](int pass, Matrix& step) {
        if (pass == 1) {
            step = MatrixOf({{1}, {10}});
        }
    };
    EXPECT_FALSE(Run());
    EXPECT_EQ(Working(), (Values{3, 30})); // an empty one first, then the same three times
}

// --- the stages of a stream ---

/// The stages of a stream by one of the methods.
struct StreamStages : trunnion::LoopStages
{
    StreamStages(IkStream& of, const IkEndState& towards, int number, bool withToolOnly = false,
                 int lastPass = 60)
        : LoopStages(of, of.Fields(), towards, withToolOnly, number,
                     {lastPass, 1e-8, 1.523e-10, false}, 0.0)
    {}
};

Matrix JacobianOf(const trunnion::LoopStages& stages)
{
    return trunnion::ToArray(stages.jacobian);
}

Matrix StepOf(const trunnion::LoopStages& stages)
{
    return trunnion::ToColumn(stages.step);
}

TEST(StageConstants, ChooseTheMethodOfEveryStream)
{
    EXPECT_EQ(trunnion::IkStepMethod, 4);
}

using Method = Matrix (IkStream::*)(const IkEndState&, const IkEndState&, Matrix&);
struct Selection
{
    int number;
    bool isPartial;
    Method method; // null where the previous step stays
};

const std::vector<Selection>& Selections()
{
    static const std::vector<Selection> all{
        {1, false, &IkStream::CalcDThetaPsuedoInverse},
        {2, false, &IkStream::CalcDThetaDLS},
        {3, false, nullptr},
        {4, true, &IkStream::CalcDThetaPsuedoInversePartial},
        {5, true, &IkStream::CalcDThetaSDLSPartial},
        {6, true, &IkStream::CalcDThetaDLSPartial},
        {7, false, nullptr},
        {0, false, nullptr},
        {-1, false, nullptr},
    };
    return all;
}

/// X Y Z C A with Y locked in the stream, so that full and partial differ in size.
struct MillStages : testing::Test
{
    MillStages()
    {
        mill.SetJoints({1, 2, 3, 0.4, 0.5});
        stream.SetLocalLock(&mill.Joint(L"Y"), true);
        stream.InitializeIkSolver(false);
        IkXformMat pose = stream.SolveFK(false).GetCompleteState();
        working = EndState(pose);
        pose.TranslateThis(1, 2, 3);
        pose.RotXThis(0.2);
        target = EndState(pose);
    }

    test::Fixture mill = test::HeadHeadMill();
    IkStream& stream = *mill.stream;
    IkEndState working;
    IkEndState target;
};

TEST_F(MillStages, ChooseTheJacobianByTheMethodNumber)
{
    for (const Selection& selection : Selections()) {
        for (const bool toolOnly : {false, true}) {
            for (const int pass : {0, 1, 60}) {
                StreamStages stages(stream, target, selection.number, toolOnly);
                stages.Error();
                stages.Jacobian(pass);
                const Matrix chosen = JacobianOf(stages);
                Matrix expected;
                IkEndState reference = stream.SolveFK(toolOnly);
                reference.CopyFilter(target);
                if (selection.isPartial) {
                    stream.ComputePartialJacobian(reference, expected, pass, toolOnly);
                } else {
                    stream.ComputeFullJacobian(reference, expected, toolOnly);
                }
                EXPECT_EQ(chosen.dim2(), selection.isPartial ? 4 : 5) << selection.number;
                EXPECT_EQ(BitsOf(chosen), BitsOf(expected)) << selection.number;
                // C and A are the last two columns; only the first pass of a partial one rests
                // them.
                const bool rests = selection.isPartial && pass == 0;
                EXPECT_EQ(chosen[0][chosen.dim2() - 2] == 0, rests) << selection.number;
            }
        }
    }
}

TEST_F(MillStages, ChooseTheStepByTheMethodNumber)
{
    for (const Selection& selection : Selections()) {
        StreamStages stages(stream, target, selection.number);
        stages.Error();
        stages.Jacobian(1);
        stages.step.Resize(1, 1);
        stages.step.Fill(42);
        stages.Step();
        Matrix jacobian = JacobianOf(stages);
        Matrix expected = MatrixOf({{42}});
        if (selection.method != nullptr) {
            expected = std::invoke(selection.method, stream, target, working, jacobian);
        }
        EXPECT_EQ(BitsOf(StepOf(stages)), BitsOf(expected)) << selection.number;
    }
}

TEST_F(MillStages, EvaluateTheWorkingValuesInTheAskedCoordinates)
{
    stream.SolverJtStates = mill.States({10, 20, 30, 0, 0});
    stream.SetPartSpaceMatrix(IkXformMat::Translate(0, 0, 50), false);
    for (const bool toolOnly : {false, true}) {
        StreamStages stages(stream, target, 4, toolOnly);
        stages.Error();
        // The tip hangs 180 below the head at 700 plus Z, the part lies at 50.
        const double* reached = stages.working.vector.e;
        ExpectNear({reached[0], reached[1], reached[2]}, {10, 20, 550. - (toolOnly ? 0 : 50)},
                   1e-12);
        EXPECT_EQ(&stages.States(), &stream.SolverJtStates);
    }
    EXPECT_EQ(mill.JointValues(), (Values{1, 2, 3, 0.4, 0.5}));
}

TEST_F(MillStages, MeasureByTheStreamsObjective)
{
    StreamStages stages(stream, target, 4);
    std::vector<double> components;
    double expected = 0;
    stream.ObjectiveFcn(working, target, components, expected);
    EXPECT_EQ(stages.Error(), expected);
    EXPECT_EQ(stages.LastError(), expected);
    EXPECT_GT(expected, 14); // 1 + 4 + 9 and the angle
}

/// Prisms along x, y and z and a tip that counts evaluations.
struct GantryStages : testing::Test
{
    GantryStages()
    {
        for (const auto primitive :
             {IkJoint::JtPrimTransX, IkJoint::JtPrimTransY, IkJoint::JtPrimTransZ}) {
            rig.Linear(rig.tool, primitive);
        }
        tip = &rig.Add<CountingBody>(rig.tool);
        rig.Connect();
    }

    Rig rig;
    CountingBody* tip;
    IkJtStateVector result;
};

TEST_F(GantryStages, SolveOrStandStillByTheMethodNumber)
{
    // Without a step, and in the mixed-up method whose full rank leaves nothing to write, all 61
    // passes find the start. Damping takes more than one step, which a full Jacobian does not live
    // through: see below.
    struct Row
    {
        int method;
        bool isSolved;
        bool moves;
    };
    for (const Row& row :
         {Row{1, true, true}, Row{2, false, true}, Row{3, false, false}, Row{4, true, true},
          Row{5, true, true}, Row{6, false, false}, Row{7, false, false}}) {
        SCOPED_TRACE(row.method);
        IkEndState target = EndState(IkXformMat::Translate(100, 0, 0));
        rig.stream.InitializeIkSolver(false);
        tip->count = 0;
        StreamStages stages(rig.stream, target, row.method);
        EXPECT_EQ(Iterate(stages, result, IkJoint::JtLimitAll), row.isSolved);
        EXPECT_EQ(tip->count, row.isSolved ? 1 + 3 + 1 : 61 * (1 + 3));
        EXPECT_EQ(result.Size(), row.isSolved ? 3 : 0);
        if (row.isSolved) {
            ExpectNear(result.GetValVector(), {100, 0, 0}, 1e-9);
        }
        EXPECT_EQ(rig.stream.SolverJtStates.GetValVector() != (Values{0, 0, 0}), row.moves);
    }
}

TEST(StageTwo, DifferentiatesTheJointsWhereTheyStandAgainstTheWorkingPose)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    IkEndState target = EndState(IkXformMat::Translate(10, 0, 0), test::kPositionOnly);
    double x = 0;
    for (int last = 0; last < 5; ++last) {
        rig.stream.InitializeIkSolver(false);
        StreamStages stages(rig.stream, target, 2, false, last);
        IkJtStateVector result;
        EXPECT_FALSE(Iterate(stages, result, IkJoint::JtLimitAll));
        // The joint still stands at 0 and is moved to 0.1; the working pose is at x.
        const double j = (0.1 - x) / 0.1;
        x += j / (j * j + 1.21) * (10 - x);
        ExpectNear(rig.stream.SolverJtStates.GetValVector(), {x}, 1e-9);
    }
}

/// The method of the first pass and that of all others.
struct SwitchingStages : StreamStages
{
    using StreamStages::StreamStages;
    void Jacobian(int pass)
    {
        method = pass == 0 ? 1 : 3;
        StreamStages::Jacobian(pass);
    }
};

TEST(StageThree, AppliesThePreviousStepAgain)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransX);
    rig.Connect();
    rig.stream.InitializeIkSolver(false);
    // y is out of reach, so no pass succeeds; the one step made is 10 along x.
    IkEndState target = EndState(IkXformMat::Translate(10, 5, 0));
    IkJtStateVector result;
    SwitchingStages stages(rig.stream, target, 1, false, 3);
    EXPECT_FALSE(Iterate(stages, result, IkJoint::JtLimitAll));
    ExpectNear(rig.stream.SolverJtStates.GetValVector(), {40}, 1e-9);
}

TEST(StageFive, NeverTurnsARotaryJoint)
{
    Rig rig;
    rig.Linear(rig.tool, IkJoint::JtPrimTransY);
    rig.Rotary(rig.tool, IkJoint::JtPrimRotZ).SetCurValue(0.25);
    rig.Body(rig.tool, IkXformMat::Translate(100, 0, 0));
    rig.Connect();
    rig.stream.InitializeIkSolver(false);
    IkEndState target = EndState(IkXformMat::Translate(80, 40, 0), test::kPositionOnly);
    IkJtStateVector result;
    StreamStages stages(rig.stream, target, 5);
    EXPECT_FALSE(Iterate(stages, result, IkJoint::JtLimitNone));
    EXPECT_EQ(rig.stream.SolverJtStates.GetState(1).GetValue(), 0.25);
}

TEST(StageOne, OfAnUnregisteredJointHasNoJacobianAndTakesNoStep)
{
    Rig rig;
    rig.Connect();
    rig.Linear(rig.tool, IkJoint::JtPrimTransX); // after its chain was added
    rig.stream.InitializeIkSolver(false);
    IkEndState target = EndState(IkXformMat::Translate(10, 0, 0));
    for (const int method : {1, 2, 3}) {
        IkJtStateVector result;
        StreamStages stages(rig.stream, target, method);
        EXPECT_FALSE(Iterate(stages, result, IkJoint::JtLimitAll));
        EXPECT_EQ(rig.stream.SolverJtStates.GetValVector(), Values{0});
    }
}

} // namespace
