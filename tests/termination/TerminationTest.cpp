// No input keeps a solve or a decomposition going: machines, values and targets at the ends of what
// a host can describe, each under a ceiling of wall-clock time. What comes back is held to what is
// promised of it, too.

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "IkSolver.h"
#include "support/Random.h"
#include "support/Repeat.h"

namespace
{

#ifdef NDEBUG
constexpr std::chrono::seconds kCeiling{2}; // where the longest takes some hundredths
const std::vector<int> kJointCounts{1, 3, 6, 16, 17, 40};
#else
constexpr std::chrono::seconds kCeiling{20}; // code that is not optimised, or is instrumented
const std::vector<int> kJointCounts{1, 6, 17};
#endif

constexpr double kHuge = 1e300;
constexpr double kTiny = 1e-300;
const double kDenormal = std::numeric_limits<double>::denorm_min();
const double kMost = std::numeric_limits<double>::max();
const double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Stops the process with the name of what runs when it runs for longer than the ceiling.
class Ceiling
{
  public:
    explicit Ceiling(std::string ofWhat)
        : what(std::move(ofWhat)), watch([this] {
              std::unique_lock<std::mutex> lock(mutex);
              if (!ended.wait_for(lock, kCeiling, [this] { return isOver; })) {
                  std::fprintf(stderr, "still running: %s\n", what.c_str());
                  std::abort();
              }
          })
    {}
    ~Ceiling()
    {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            isOver = true;
        }
        ended.notify_one();
        watch.join();
    }
    Ceiling(const Ceiling&) = delete;
    Ceiling& operator=(const Ceiling&) = delete;
    Ceiling(Ceiling&&) = delete;
    Ceiling& operator=(Ceiling&&) = delete;

  private:
    std::string what;
    std::mutex mutex;
    std::condition_variable ended;
    bool isOver{false};
    std::thread watch;
};

enum Shape : int {
    Snake,        // turns about y and x by turns, arms of 50
    ZeroLength,   // the same, every joint in one place
    Coincident,   // turns about one and the same axis
    OneDirection, // slides, all along z: rank 1
    Repeated,     // slides along x, y, z in turn: equal singular values
    Mixed,        // turns and slides
    HugeArms,
    DenormalArms,
    FarApart, // arms of 1e300 and 1e-300 by turns
    Infinite,
    NotANumber,
    NotRigid, // frames that scale and mirror
    kShapes
};

IkXformMat FrameOf(int shape, int i)
{
    switch (shape) {
    case HugeArms:
        return IkXformMat::Translate(0, kHuge, kHuge);
    case DenormalArms:
        return IkXformMat::Translate(0, kDenormal, kDenormal);
    case FarApart:
        return IkXformMat::Translate(0, 0, i % 2 == 0 ? kHuge : kTiny);
    case Infinite:
        return IkXformMat::Translate(0, 0, i == 1 ? kInfinity : 50);
    case NotANumber:
        return IkXformMat::Translate(0, 0, i == 1 ? kNaN : 50);
    case NotRigid: {
        IkXformMat frame = IkXformMat::Translate(0, 0, 50);
        frame[0][0] = -3.0;
        frame[1][1] = 0.0;
        frame[2][0] = 0.25;
        return frame;
    }
    case ZeroLength:
    case Coincident:
        return {};
    default:
        return IkXformMat::Translate(0, 0, 50);
    }
}

std::unique_ptr<IkJoint> JointOf(int shape, int i)
{
    const bool isSlide =
        shape == OneDirection || shape == Repeated || (shape == Mixed && i % 2 == 0);
    std::unique_ptr<IkJoint> joint;
    if (isSlide) {
        joint = std::make_unique<IkJtPrism>();
        joint->SetJtPrimitive(shape == OneDirection ? IkJoint::JtPrimTransZ
                                                    : static_cast<IkJoint::JtPrimitives>(
                                                          IkJoint::JtPrimTransX + i % 3));
    } else {
        joint = std::make_unique<IkJtRot>();
        if (shape != Coincident) {
            joint->SetJtPrimitive(i % 2 == 0 ? IkJoint::JtPrimRotY : IkJoint::JtPrimRotX);
        }
    }
    joint->SetOrigFrame(FrameOf(shape, i));
    return joint;
}

/// What a case is made of beside its shape; each counts round by itself.
struct Choice
{
    int bounds;
    int values;
    int locks;
    int chains;
    int filter;
    int limit;
};

constexpr int kBounds = 5;
constexpr int kValues = 6;
constexpr int kLocks = 4;
constexpr int kChains = 4;

struct Rig
{
    Rig(int shape, int count, const Choice& choice)
    {
        for (int i = 0; i < count; ++i) {
            joints.push_back(JointOf(shape, i));
            IkJoint& joint = *joints.back();
            SetBounds(joint, choice.bounds);
            SetValue(joint, choice.values, i);
            joint.SetIsLocked(choice.locks == 1 || (choice.locks == 2 && i % 2 == 0));
            const bool isOfPart = choice.chains == 2 && i % 2 == 1;
            (isOfPart ? part : tool).AddNode(&joint);
        }
        stream.AddChain(&tool);
        if (choice.chains == 1) {
            stream.AddChain(&tool); // part and tool are one and the same
        } else if (choice.chains > 1) {
            stream.AddChain(&part);
        }
        if (choice.chains == 3) {
            stream.SetPartSpaceMatrix(IkXformMat::RotX(0.5), true);
        }
        for (const auto& joint : joints) {
            stream.SetLocalLock(joint.get(), choice.locks == 3);
        }
    }

    static void SetBounds(IkJoint& joint, int bounds)
    {
        switch (bounds) {
        case 1:
            joint.SetBounds(1, -1);
            break;
        case 2:
            joint.SetBounds(0.25, 0.25);
            break;
        case 3:
            joint.SetBounds(-kInfinity, kInfinity);
            break;
        case 4:
            joint.SetBounds(kNaN, kMost);
            break;
        default:
            break; // its own: a full turn, or inverted
        }
    }

    static void SetValue(IkJoint& joint, int values, int i)
    {
        switch (values) {
        case 1:
            joint.SetCurValue(0.1 * (i + 1));
            break;
        case 2:
            joint.SetCurValue(kMost);
            break;
        case 3:
            joint.SetCurValue(kDenormal);
            break;
        case 4:
            joint.SetCurValue(i == 0 ? kNaN : 0.5);
            break;
        case 5:
            joint.SetCurValue(i == 0 ? -kInfinity : 0.5);
            break;
        default:
            break; // all 0: stretched out
        }
    }

    std::vector<std::unique_ptr<IkJoint>> joints;
    IkChain tool;
    IkChain part;
    IkStream stream;
};

constexpr int kTargets = 8;

IkXformMat TargetPose(int target, IkStream& stream)
{
    switch (target) {
    case 0: {
        IkJtStateVector states = stream.GetJointStates();
        for (int i = 0; i < states.Size(); ++i) {
            IkJtState& state = states.GetState(i);
            state.SetValue(state.GetValue() + 0.05);
        }
        return stream.SolveFK(states, false, nullptr, nullptr, false).GetCompleteState();
    }
    case 1:
        return IkXformMat::Translate(1e6, -2e6, 3e6);
    case 2:
        return IkXformMat::Translate(kMost, -kMost, kMost);
    case 3:
        return IkXformMat::Translate(kDenormal, kTiny, 0);
    case 4:
        return IkXformMat::Translate(kNaN, 0, 0);
    case 5:
        return IkXformMat::Translate(0, kInfinity, 0);
    case 6: {
        IkXformMat pose = IkXformMat::RotX(3.0);
        pose[2][2] = -1e150; // a direction of no length that is one
        return pose;
    }
    default: {
        IkXformMat pose;
        for (int i = 0; i < 3; ++i) {
            std::fill_n(pose[i], 4, 0.0);
        }
        return pose;
    }
    }
}

IkEndState TargetOf(int target, int filter, IkStream& stream)
{
    IkEndState state;
    state.SetCompleteState(TargetPose(target, stream));
    bool flags[4]{(filter & 1) != 0, (filter & 2) != 0, (filter & 4) != 0, (filter & 8) != 0};
    state.SetFilter(flags);
    return state;
}

/// The squared distance that the answer leaves, in the order in which the objective sums it.
double SquaredDistance(const IkEndState& reached, const IkEndState& wanted)
{
    double sum = 0.0;
    for (int row = 0; row < 3; ++row) {
        const double d = wanted.GetCompleteState()[row][3] - reached.GetCompleteState()[row][3];
        sum += d * d;
    }
    return sum;
}

/// A solve that says it has succeeded is there; one that says it has not lists what is outside.
void ExpectHonest(bool isSolved, IkJtStateVector& result, const IkEndState& target, Rig& rig,
                  double tolerance)
{
    if (isSolved) {
        ASSERT_EQ(result.Size(), static_cast<int>(rig.joints.size()));
        bool filter[4];
        target.GetFilter(filter);
        if (filter[3]) {
            const IkEndState reached = rig.stream.SolveFK(result, false, nullptr, nullptr, false);
            ASSERT_LE(SquaredDistance(reached, target), tolerance);
        }
        return;
    }
    std::vector<int> outside;
    result.GetOutOfBoundIndices(outside);
    ASSERT_EQ(static_cast<int>(outside.size()), result.Size());
}

void SolveAll(Rig& rig, const IkEndState& forTarget, const Choice& choice)
{
    IkEndState target = forTarget;
    const auto limit = static_cast<IkJoint::JointLimitTypes>(choice.limit);
    IkJtStateVector result;
    bool isSolved = rig.stream.SolveIK(target, result, false, limit, false);
    ExpectHonest(isSolved, result, target, rig, 1e-8);

    IkSolverPsuedoInverse solver(&rig.stream);
    isSolved = solver.SolveIK(target, result, false, limit, false);
    ExpectHonest(isSolved, result, target, rig, 1e-12);

    IkSolverHybrid hybrid(&rig.stream);
    isSolved =
        hybrid.SolveIK(target, result, false, limit, choice.locks == 0 && choice.chains == 3);
    if (isSolved) { // a failed one has the first sample's result, whatever that came to
        ExpectHonest(isSolved, result, target, rig, 1e-12);
    }
}

std::string NameOf(int shape, int count, int target, const Choice& choice)
{
    std::ostringstream name;
    name << "shape " << shape << ", joints " << count << ", target " << target << ", bounds "
         << choice.bounds << ", values " << choice.values << ", locks " << choice.locks
         << ", chains " << choice.chains << ", filter " << choice.filter << ", limit "
         << choice.limit;
    return name.str();
}

} // namespace

class SolvesEnd : public testing::TestWithParam<int>
{};

TEST_P(SolvesEnd, InTimeAndWithAnHonestAnswer)
{
    const int shape = GetParam();
    const auto variants = static_cast<int>(test::FromEnvironment("TRUNNION_TEST_FACTOR", 1));
    int index = shape;
    int cases = 0;
    for (const int count : kJointCounts) {
        for (int target = 0; target < kTargets; ++target) {
            for (int variant = 0; variant < variants; ++variant, ++cases) {
                // Steps without common divisors: all pairs come up.
                index += 7;
                const Choice choice{index % kBounds,
                                    index / 5 % kValues,
                                    index / 3 % kLocks,
                                    index / 11 % kChains,
                                    index % 3 == 0 ? 12 : index % 16,
                                    index % 4};
                const std::string name = NameOf(shape, count, target, choice);
                SCOPED_TRACE(name);
                Rig rig(shape, count, choice);
                const IkEndState wanted = TargetOf(target, choice.filter, rig.stream);
                const Ceiling ceiling(name);
                SolveAll(rig, wanted, choice);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
    EXPECT_EQ(cases, static_cast<int>(kJointCounts.size()) * kTargets * variants);
}

INSTANTIATE_TEST_SUITE_P(EveryShape, SolvesEnd, testing::Range(0, static_cast<int>(kShapes)));

TEST(DecompositionsEnd, WhateverTheEntries)
{
    const std::vector<double> entries{0.0,   -0.0,      1.0,   1.0,    -1.0, 0.5,       kHuge,
                                      kTiny, kDenormal, kMost, -kMost, 1e-8, kInfinity, kNaN};
    test::Random random(20);
    IkSolverPsuedoInverse solver;
    int decomposed = 0;
    for (int round = 0; round < 2000; ++round) {
        const int rows = 1 + random.Below(12);
        const int columns = 1 + random.Below(round % 40 == 0 ? 40 : 8);
        // From a few of them, so that ranks are low and values repeat; seldom the last two.
        const int first = random.Below(static_cast<int>(entries.size()));
        const int spread = 1 + random.Below(round % 10 == 0 ? 14 : 6);
        TNT::Array2D<double> matrix(rows, columns);
        bool isFinite = true;
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < columns; ++j) {
                const int pick = (first + random.Below(spread)) % static_cast<int>(entries.size());
                matrix[i][j] = entries[static_cast<std::size_t>(pick)];
                isFinite = isFinite && std::isfinite(matrix[i][j]);
            }
        }
        const Ceiling ceiling("decomposition " + std::to_string(round));
        TNT::Array2D<double> u;
        TNT::Array2D<double> v;
        TNT::Array1D<double> s;
        int rank = -1;
        solver.SafeSVDCalc(matrix, u, v, s, rank);
        ASSERT_GE(rank, 0);
        ASSERT_LE(rank, std::min(rows, columns));
        ASSERT_EQ(u.dim1(), rows);
        ASSERT_EQ(v.dim1(), columns);
        ASSERT_TRUE(isFinite || rank == 0) << "a matrix that is not finite has no rank";
        for (int i = 0; i + 1 < s.dim(); ++i) {
            ASSERT_GE(s[i], s[i + 1]);
        }
        decomposed += rank > 0 ? 1 : 0;
    }
    EXPECT_GT(decomposed, 500);
}

TEST(PassesEnd, AfterAsManyPassesAsThereAreNumbers)
{
    // The last number that an int holds is a limit like any other: passes do not count past it. A
    // stage that lowers it ends the solve there.
    class Counting : public IkSolver
    {
      public:
        using IkSolver::IkSolver;
        int passes{0};

      protected:
        bool ObjectiveFcn(const IkEndState& /*current*/, const IkEndState& /*target*/,
                          std::vector<double>& /*components*/, double& error) override
        {
            error = 1.0;
            if (++passes == 1000) {
                SetMaxIterations(0);
            }
            return true;
        }
    };
    IkJtPrism joint;
    IkChain chain;
    chain.AddNode(&joint);
    IkStream stream;
    stream.AddChain(&chain);
    Counting solver(&stream);
    IkEndState target;
    IkJtStateVector result;
    for (const auto& [limit, passes] : std::vector<std::pair<int, int>>{
             {std::numeric_limits<int>::max(), 1000}, {-1, 0}, {0, 1}, {5, 6}}) {
        const Ceiling ceiling("passes");
        solver.passes = 0;
        solver.SetMaxIterations(limit);
        EXPECT_FALSE(solver.SolveIK(target, result, false, IkJoint::JtLimitAll, false));
        EXPECT_EQ(solver.passes, passes);
    }
}
