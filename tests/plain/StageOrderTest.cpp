// The stages of solver objects that a host overrides, one or all: they are called in the order of
// the iteration with what is in force at the time, and what they make of it is taken further. Nodes
// of the host's classes write into the same log, so that the order among both is held too.

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "plain/Comparison.h"
#include "plain/PlainSolve.h"

namespace
{

using test::CallLog;
using test::NumberBits;
using test::NumbersOf;
using test::Random;
using test::UnusualMachine;
using Array = TNT::Array2D<double>;

enum Stage : unsigned {
    kInitialize = 1,
    kObjective = 2,
    kJacobian = 4,
    kStep = 8,
    kDecomposition = 16,
    kAll = 31
};

constexpr std::uint64_t kStageMark = 0xFACE00000000; // no node's question looks like it

/// What the overridden stages do beside calling their base: they note it, and make it smaller.
struct Watch
{
    CallLog* log{nullptr};
    double errorFactor{1.0}; // powers of two, as all of these
    double jacobianFactor{1.0};
    double stepFactor{1.0};
    bool answer{true};

    void Note(Stage stage, std::initializer_list<test::Words> values) const
    {
        log->push_back(kStageMark + stage);
        for (const test::Words& words : values) {
            log->insert(log->end(), words.begin(), words.end());
        }
    }
};

test::Words Number(double x)
{
    return {NumberBits(x)};
}

test::Words ValuesOf(const IkJtStateVector& states)
{
    return NumbersOf(states.GetValVector());
}

test::Words ValuesOf(const plain::States& states)
{
    test::Words words;
    for (int i = 0; i < states.Size(); ++i) {
        words.push_back(NumberBits(states.Value(i)));
    }
    return words;
}

test::Words NumbersOfEndState(const plain::EndState& state)
{
    test::Words words = NumbersOf(state.pose);
    words.insert(words.end(), state.filter.begin(), state.filter.end());
    return words;
}

Array Times(double factor, const Array& m)
{
    Array product(m.dim1(), m.dim2());
    for (int i = 0; i < m.dim1(); ++i) {
        for (int j = 0; j < m.dim2(); ++j) {
            product[i][j] = factor * m[i][j];
        }
    }
    return product;
}

test::Words NumbersOfDecomposition(const Array& u, const Array& v, const TNT::Array1D<double>& s,
                                   int rank)
{
    test::Words words = NumbersOf(u);
    const test::Words ofV = NumbersOf(v);
    words.insert(words.end(), ofV.begin(), ofV.end());
    for (int i = 0; i < s.dim(); ++i) {
        words.push_back(NumberBits(s[i]));
    }
    words.push_back(static_cast<std::uint64_t>(rank));
    return words;
}

template <class Base>
struct Watched : Base
{
    using Base::Base;
    Watch watch;
};

template <class Base>
struct WithInitialize : Base
{
    using Base::Base;
    void Initialize(bool lockRotary) override
    {
        Base::Initialize(lockRotary);
        this->watch.Note(kInitialize, {Number(lockRotary), ValuesOf(this->SolverJtStates)});
    }
};

template <class Base>
struct WithObjective : Base
{
    using Base::Base;
    bool ObjectiveFcn(const IkEndState& current, const IkEndState& target,
                      std::vector<double>& components, double& error) override
    {
        Base::ObjectiveFcn(current, target, components, error);
        this->watch.Note(kObjective,
                         {ValuesOf(this->SolverJtStates), NumbersOfEndState(current),
                          NumbersOfEndState(target), NumbersOf(components), Number(error)});
        error *= this->watch.errorFactor;
        return this->watch.answer;
    }
};

template <class Base>
struct WithJacobian : Base
{
    using Base::Base;
    bool ComputePartialJacobian(const IkEndState& reference, Array& jacobian, int includeRotary,
                                bool fkFlag) override
    {
        this->watch.Note(kJacobian, {ValuesOf(this->SolverJtStates), NumbersOfEndState(reference),
                                     Number(includeRotary), Number(fkFlag)});
        Base::ComputePartialJacobian(reference, jacobian, includeRotary, fkFlag);
        jacobian = Times(this->watch.jacobianFactor, jacobian);
        return this->watch.answer;
    }
};

template <class Base>
struct WithStep : Base
{
    using Base::Base;
    Array CalcDTheta(const IkEndState& target, const IkEndState& current, Array& jacobian) override
    {
        this->watch.Note(kStep, {ValuesOf(this->SolverJtStates), NumbersOfEndState(target),
                                 NumbersOfEndState(current), NumbersOf(jacobian)});
        return Times(this->watch.stepFactor, Base::CalcDTheta(target, current, jacobian));
    }
};

template <class Base>
struct WithDecomposition : Base
{
    using Base::Base;
    void SafeSVDCalc(Array& matrix, Array& u, Array& v, TNT::Array1D<double>& s, int& rank) override
    {
        Base::SafeSVDCalc(matrix, u, v, s, rank);
        this->watch.Note(kDecomposition,
                         {NumbersOf(matrix), NumbersOfDecomposition(u, v, s, rank)});
    }
};

/// Each of them.
template <class Base>
using WithAll = WithInitialize<WithObjective<WithJacobian<WithStep<WithDecomposition<Base>>>>>;

/// What a stage may do to the machine and to the solver's own fields while it is at it.
struct Meddling
{
    bool clamps{false};
    bool movesStates{false};
    bool movesBounds{false};
    bool movesFrames{false};
    bool turnsJoints{false};

    void Change(const std::vector<IkJoint*>& joints) const
    {
        for (IkJoint* joint : joints) {
            if (movesBounds) {
                joint->SetBounds(joint->GetLowBound(), joint->GetHiBound() - 0.5);
            }
            if (movesFrames) {
                IkXformMat frame = joint->GetOrigFrame();
                frame.TranslateThis(0.25, 0, 0);
                joint->SetOrigFrame(frame);
            }
            if (turnsJoints) {
                joint->SetDirectionReversed(!joint->IsDirectionReversed());
                joint->SetInitialValue(joint->GetInitialValue() + 0.125);
            }
        }
    }
};

/// Keeps what meddling changes of joints, and brings it back.
class Kept
{
  public:
    explicit Kept(std::vector<IkJoint*> ofJoints) : joints(std::move(ofJoints))
    {
        for (const IkJoint* joint : joints) {
            kept.push_back({joint->GetLowBound(), joint->GetHiBound(), joint->GetInitialValue(),
                            joint->IsDirectionReversed(), joint->GetOrigFrame()});
        }
    }
    void BringBack() const
    {
        for (std::size_t i = 0; i < joints.size(); ++i) {
            joints[i]->SetBounds(kept[i].low, kept[i].high);
            joints[i]->SetInitialValue(kept[i].initialValue);
            joints[i]->SetDirectionReversed(kept[i].isReversed);
            joints[i]->SetOrigFrame(kept[i].frame);
        }
    }

  private:
    struct Description
    {
        double low;
        double high;
        double initialValue;
        bool isReversed;
        IkXformMat frame;
    };
    std::vector<IkJoint*> joints;
    std::vector<Description> kept;
};

/// Meddles when it is asked for a step.
struct MeddlingSolver : IkSolverPsuedoInverse
{
    using IkSolverPsuedoInverse::IkSolverPsuedoInverse;
    Array CalcDTheta(const IkEndState& target, const IkEndState& current, Array& jacobian) override
    {
        Array step = IkSolverPsuedoInverse::CalcDTheta(target, current, jacobian);
        if (meddling.clamps) {
            JointClampSearch(step);
        }
        if (meddling.movesStates && SolverJtStates.Size() > 0) {
            IkJtState& state = SolverJtStates.GetState(SolverJtStates.Size() - 1);
            state.SetValue(0.75 * state.GetValue());
        }
        meddling.Change(joints);
        return step;
    }
    Meddling meddling;
    std::vector<IkJoint*> joints;
};

/// The iteration of the plain formulation with these stages overridden.
class Expected
{
  public:
    Expected(const IkStream& ofStream, const Watch& withWatch, unsigned whichStages)
        : stream(ofStream), watch(withWatch), stages(whichStages)
    {}

    bool SolveIK(const plain::EndState& target, plain::States& result, bool toolOnly,
                 IkJoint::JointLimitTypes limits, bool lockRotary)
    {
        fields = plain::Initialize(stream, lockRotary);
        Note(kInitialize, {Number(lockRotary), ValuesOf(fields.states)});
        for (int pass = 0; pass <= lastPass; ++pass) {
            const plain::EndState working(plain::Pose(stream, fields.states, toolOnly),
                                          target.filter);
            error = Objective(working, target);
            if (error <= 1e-12) {
                result = fields.states;
                return true;
            }
            const Array jacobian = Jacobian(working, pass, toolOnly);
            const Array step = Step(target, working, jacobian);
            if (pass < lastPass) {
                plain::Append(fields.states, step, plain::LimitsOf(limits));
            } else {
                plain::Append(fields.states, step, plain::LimitsOf(false));
                result = plain::OutOfBounds(fields.states);
            }
        }
        return false;
    }

    int lastPass{60};
    bool moves{true}; // a plain IkSolver takes no steps
    plain::Fields fields;
    double error{0.0};
    Meddling meddling;
    std::vector<IkJoint*> joints;

  private:
    void Note(Stage stage, std::initializer_list<test::Words> values) const
    {
        if ((stages & stage) != 0) {
            watch.Note(stage, values);
        }
    }

    double Objective(const plain::EndState& working, const plain::EndState& target) const
    {
        const double measured = plain::Objective(working, target, plain::kSolverDirectionTolerance);
        Note(kObjective, {ValuesOf(fields.states),
                          NumbersOfEndState(working),
                          NumbersOfEndState(target),
                          {},
                          Number(measured)});
        return (stages & kObjective) != 0 ? measured * watch.errorFactor : measured;
    }

    Array Jacobian(const plain::EndState& working, int pass, bool toolOnly) const
    {
        Note(kJacobian,
             {ValuesOf(fields.states), NumbersOfEndState(working), Number(pass), Number(toolOnly)});
        const Array jacobian = plain::PartialJacobian(stream, fields, working, pass, toolOnly);
        return (stages & kJacobian) != 0 ? Times(watch.jacobianFactor, jacobian) : jacobian;
    }

    Array Step(const plain::EndState& target, const plain::EndState& working, const Array& jacobian)
    {
        Note(kStep, {ValuesOf(fields.states), NumbersOfEndState(target), NumbersOfEndState(working),
                     NumbersOf(jacobian)});
        if (!moves) {
            return {};
        }
        const plain::Svd svd = plain::Decompose(jacobian);
        const Array u = svd.u.dim1() > 0 ? svd.u : Array(jacobian.dim1(), 0);
        const Array v = svd.v.dim1() > 0 ? svd.v : Array(jacobian.dim2(), 0);
        Note(kDecomposition, {NumbersOf(jacobian), NumbersOfDecomposition(u, v, svd.s, svd.rank)});
        const Array step = plain::PseudoInversePartialStep(fields, target, working, jacobian);
        Meddle(step);
        return (stages & kStep) != 0 ? Times(watch.stepFactor, step) : step;
    }

    void Meddle(const Array& step)
    {
        if (meddling.clamps) {
            plain::LockJointsLeavingBounds(fields, step);
        }
        if (meddling.movesStates && fields.states.Size() > 0) {
            const int last = fields.states.Size() - 1;
            fields.states.SetValue(last, 0.75 * fields.states.Value(last));
        }
        meddling.Change(joints);
    }

    const IkStream& stream;
    Watch watch;
    unsigned stages;
};

struct Counts
{
    int solved{0};
    int failed{0};
};

template <class Solver>
void ExpectStagesInOrder(unsigned stages, bool moves, Random& random, Counts& counts)
{
    const UnusualMachine machine = test::MakeUnusualMachine(random);
    IkStream& stream = *machine.stream;
    IkEndState target = test::UnusualTarget(machine, random);
    Solver solver(&stream);
    solver.watch.log = machine.log.get();
    solver.watch.errorFactor = random.OneOf({1.0, 1.0, 0.5});
    solver.watch.jacobianFactor = random.OneOf({1.0, 1.0, 0.5, 2.0});
    solver.watch.stepFactor = random.OneOf({1.0, 1.0, 0.5});
    solver.watch.answer = random.OneIn(2);
    solver.SetMaxIterations(random.Below(12));
    Expected expected(stream, solver.watch, stages);
    expected.lastPass = solver.GetMaxIterations();
    expected.moves = moves;
    const bool toolOnly = random.OneIn(5);
    const bool lockRotary = random.OneIn(10);
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    IkJtStateVector result;
    plain::States plainResult;
    bool isSolved = false;
    bool isExpected = false;
    RunBoth(
        machine, [&] { isSolved = solver.SolveIK(target, result, toolOnly, limits, lockRotary); },
        [&] { isExpected = expected.SolveIK(target, plainResult, toolOnly, limits, lockRotary); });
    EXPECT_EQ(isSolved, isExpected);
    EXPECT_EQ(test::StatesOf(result), test::StatesOf(plainResult));
    EXPECT_EQ(NumberBits(solver.GetCurErrorval()), NumberBits(expected.error));
    test::ExpectFields(solver, expected.fields);
    ++(isExpected ? counts.solved : counts.failed);
}

template <template <class> class Stages>
void ExpectStages(unsigned stages, std::uint64_t seed)
{
    Counts counts;
    test::Repeat(test::Cases(300), seed, [&](Random& random) {
        ExpectStagesInOrder<Stages<Watched<IkSolverPsuedoInverse>>>(stages, true, random, counts);
    });
    test::Repeat(test::Cases(60), seed + 100, [&](Random& random) {
        ExpectStagesInOrder<Stages<Watched<IkSolver>>>(stages, false, random, counts);
    });
    EXPECT_GT(counts.solved, 0);
    EXPECT_GT(counts.failed, 0);
}

void ExpectPlainMeddling(Random& random, Counts& counts)
{
    const UnusualMachine machine = test::MakeUnusualMachine(random);
    IkStream& stream = *machine.stream;
    IkEndState target = test::UnusualTarget(machine, random);
    MeddlingSolver solver(&stream);
    solver.meddling.clamps = random.OneIn(2);
    solver.meddling.movesStates = random.OneIn(4);
    solver.meddling.movesBounds = random.OneIn(3);
    solver.meddling.movesFrames = random.OneIn(3);
    solver.meddling.turnsJoints = random.OneIn(4);
    solver.joints = machine.joints;
    solver.SetMaxIterations(random.Below(15));
    Expected expected(stream, Watch(), 0);
    expected.lastPass = solver.GetMaxIterations();
    expected.meddling = solver.meddling;
    expected.joints = machine.joints;
    const Kept kept(machine.joints);
    const auto limits = static_cast<IkJoint::JointLimitTypes>(random.Below(4));
    IkJtStateVector result;
    plain::States plainResult;
    bool isSolved = false;
    bool isExpected = false;
    RunBoth(
        machine,
        [&] {
            isSolved = solver.SolveIK(target, result, false, limits, false);
            kept.BringBack();
        },
        [&] {
            isExpected = expected.SolveIK(target, plainResult, false, limits, false);
            kept.BringBack();
        });
    EXPECT_EQ(isSolved, isExpected);
    EXPECT_EQ(test::StatesOf(result), test::StatesOf(plainResult));
    EXPECT_EQ(NumberBits(solver.GetCurErrorval()), NumberBits(expected.error));
    test::ExpectFields(solver, expected.fields);
    ++(isExpected ? counts.solved : counts.failed);
}

} // namespace

TEST(StageOrder, OfAStepThatMeddles)
{
    Counts counts;
    test::Repeat(test::Cases(1500), 47,
                 [&](Random& random) { ExpectPlainMeddling(random, counts); });
    EXPECT_GT(counts.solved, 0);
    EXPECT_GT(counts.failed, 0);
}

TEST(StageOrder, OfInitialize)
{
    ExpectStages<WithInitialize>(kInitialize, 41);
}

TEST(StageOrder, OfTheObjective)
{
    ExpectStages<WithObjective>(kObjective, 42);
}

TEST(StageOrder, OfTheJacobian)
{
    ExpectStages<WithJacobian>(kJacobian, 43);
}

TEST(StageOrder, OfTheStep)
{
    ExpectStages<WithStep>(kStep, 44);
}

TEST(StageOrder, OfTheDecomposition)
{
    ExpectStages<WithDecomposition>(kDecomposition, 45);
}

TEST(StageOrder, OfAllStages)
{
    ExpectStages<WithAll>(kAll, 46);
}
