#include "KdlSolvers.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include <kdl/chain.hpp>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <kdl/chainiksolverpos_lma.hpp>
#include <kdl/chainiksolverpos_nr_jl.hpp>
#include <kdl/chainiksolvervel_pinv.hpp>

#include <benchmark/benchmark.h>

namespace bench
{

namespace
{

constexpr int kMostIterations = 61;
constexpr double kTolerance = 1e-4; // of the position [mm]
const double kTolerancePerComponent = kTolerance / std::sqrt(3.0);
constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kNoLimit = 1e9;

KDL::Frame FrameOf(const IkXformMat& m)
{
    return {KDL::Rotation(m[0][0], m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1],
                          m[2][2]),
            KDL::Vector(m[0][3], m[1][3], m[2][3])};
}

KDL::Joint::JointType TypeOf(const IkJoint& joint)
{
    switch (joint.GetJtPrimitive()) {
    case IkJoint::JtPrimTransX:
        return KDL::Joint::TransX;
    case IkJoint::JtPrimTransY:
        return KDL::Joint::TransY;
    case IkJoint::JtPrimTransZ:
        return KDL::Joint::TransZ;
    case IkJoint::JtPrimRotX:
        return KDL::Joint::RotX;
    case IkJoint::JtPrimRotY:
        return KDL::Joint::RotY;
    case IkJoint::JtPrimRotZ:
        return KDL::Joint::RotZ;
    default:
        throw std::logic_error("a joint of no kind that is measured");
    }
}

/// The loop from a stream's part to its tool as one chain.
class Loop
{
  public:
    explicit Loop(const Subject& subject) : states(subject.Stream().GetJointStates())
    {
        const host::LoadedStream& stream = subject.machine.streams.front();
        for (int i = stream.partChain->Size(); i-- > 0;) {
            AddInverse(*stream.partChain->GetAt(i));
        }
        for (int i = 0; i < stream.toolChain->Size(); ++i) {
            Add(*stream.toolChain->GetAt(i));
        }
        if (!subject.isWhole && subject.kind != Kind::ThreeAxes) {
            AddFreeTurn();
        }
        Close();
    }

    const KDL::Chain& Chain() const { return chain; }

    KDL::JntArray Joints(const JointValues& values) const
    {
        KDL::JntArray joints(chain.getNrOfJoints());
        for (std::size_t i = 0; i < stateOf.size(); ++i) {
            joints(static_cast<unsigned>(i)) = values[static_cast<std::size_t>(stateOf[i])];
        }
        return joints;
    }

    JointValues Values(const KDL::JntArray& joints) const
    {
        JointValues values(stateOf.size());
        for (std::size_t i = 0; i < stateOf.size(); ++i) {
            values[static_cast<std::size_t>(stateOf[i])] = joints(static_cast<unsigned>(i));
        }
        return values;
    }

    KDL::JntArray Limits(double (IkJoint::*bound)() const, double otherwise) const
    {
        KDL::JntArray limits(chain.getNrOfJoints());
        for (unsigned i = 0; i < limits.rows(); ++i) {
            limits(i) =
                i < stateOf.size() ? (states.GetState(stateOf[i]).GetJoint()->*bound)() : otherwise;
        }
        return limits;
    }

  private:
    void Add(IkNode& node)
    {
        const auto* joint = dynamic_cast<const IkJoint*>(&node);
        if (joint == nullptr) {
            pending = pending * FrameOf(node.GetXformMat(none));
            return;
        }
        pending = pending * FrameOf(joint->GetOrigFrame());
        AddMotion(*joint, 1.0);
    }

    void AddInverse(IkNode& node)
    {
        const auto* joint = dynamic_cast<const IkJoint*>(&node);
        if (joint == nullptr) {
            pending = pending * FrameOf(node.GetXformMat(none)).Inverse();
            return;
        }
        AddMotion(*joint, -1.0);
        pending = pending * FrameOf(joint->GetOrigFrame()).Inverse();
    }

    void AddMotion(const IkJoint& joint, double sign)
    {
        const double scale = joint.IsDirectionReversed() ? -sign : sign;
        Close();
        motion = KDL::Joint(TypeOf(joint), scale, -scale * joint.GetInitialValue());
        stateOf.push_back(states.FindStateByJointPtr(&joint));
    }

    void AddFreeTurn()
    {
        Close();
        motion = KDL::Joint(KDL::Joint::RotZ);
    }

    /// The latest motion and the fixed frame behind it become a segment.
    void Close()
    {
        const bool isNothing = motion.getType() == KDL::Joint::None &&
                               KDL::Equal(pending, KDL::Frame::Identity(), 0.0);
        if (!isNothing) {
            chain.addSegment(KDL::Segment(motion, pending));
        }
        motion = KDL::Joint(KDL::Joint::None);
        pending = KDL::Frame::Identity();
    }

    mutable IkJtStateVector states;
    IkJtStateVector none;
    KDL::Joint motion{KDL::Joint::None};
    KDL::Frame pending;
    KDL::Chain chain;
    std::vector<int> stateOf; // of the chain's joints but the free turn
};

/// What both of its solvers have in common.
class KdlSolver : public PoseSolver
{
  public:
    KdlSolver(const Subject& subject, const Task& task)
        : loop(subject), start(loop.Joints(task.start)), from(start), answer(start)
    {
        for (const IkEndState& target : task.targets) {
            targets.push_back(FrameOf(target.GetCompleteState()));
        }
    }

    void GoTo(const JointValues& joints) override { from = loop.Joints(joints); }
    void GoToStart() override { from = start; }
    void GoToAnswer() override { from = answer; }
    JointValues Answer() override { return loop.Values(answer); }

  protected:
    Loop loop;
    KDL::JntArray start;
    KDL::JntArray from;
    std::vector<KDL::Frame> targets;
    KDL::JntArray answer;
};

class KdlNewton : public KdlSolver
{
  public:
    KdlNewton(const Subject& subject, const Task& task)
        : KdlSolver(subject, task), forward(loop.Chain()), velocity(loop.Chain()),
          solver(loop.Chain(), loop.Limits(&IkJoint::GetLowBound, -kNoLimit),
                 loop.Limits(&IkJoint::GetHiBound, kNoLimit), forward, velocity, kMostIterations,
                 kTolerancePerComponent)
    {}

    bool Solve(std::size_t target) override
    {
        return solver.CartToJnt(from, targets[target], answer) == KDL::SolverI::E_NOERROR;
    }

  private:
    KDL::ChainFkSolverPos_recursive forward;
    KDL::ChainIkSolverVel_pinv velocity;
    KDL::ChainIkSolverPos_NR_JL solver;
};

class KdlLevenbergMarquardt : public KdlSolver
{
  public:
    KdlLevenbergMarquardt(const Subject& subject, const Task& task)
        : KdlSolver(subject, task), solver(loop.Chain(), Weights(), kTolerance)
    {}

    bool Solve(std::size_t target) override
    {
        return solver.CartToJnt(from, targets[target], answer) == KDL::SolverI::E_NOERROR;
    }

  private:
    static Eigen::Matrix<double, 6, 1> Weights()
    {
        Eigen::Matrix<double, 6, 1> weights;
        weights << 1.0, 1.0, 1.0, kDegreesPerRadian, kDegreesPerRadian, kDegreesPerRadian;
        return weights;
    }

    KDL::ChainIkSolverPos_LMA solver;
};

} // namespace

void CheckKdlChain(const Subject& subject, const std::vector<JointValues>& joints)
{
    constexpr double kMostDifference = 1e-9;
    const Loop loop(subject);
    KDL::ChainFkSolverPos_recursive forward(loop.Chain());
    for (const JointValues& values : joints) {
        KDL::Frame pose;
        forward.JntToCart(loop.Joints(values), pose);
        if (!KDL::Equal(pose, FrameOf(subject.TargetAt(values).GetCompleteState()),
                        kMostDifference)) {
            throw std::runtime_error("KDL's chain of " + subject.name +
                                     " does not stand where the machine does");
        }
    }
}

std::function<void()> KdlForward(const Subject& subject, const std::vector<JointValues>& joints)
{
    const auto loop = std::make_shared<Loop>(subject);
    const auto forward = std::make_shared<KDL::ChainFkSolverPos_recursive>(loop->Chain());
    std::vector<KDL::JntArray> arrays;
    arrays.reserve(joints.size());
    for (const JointValues& values : joints) {
        arrays.push_back(loop->Joints(values));
    }
    return [loop, forward, arrays] {
        KDL::Frame pose;
        for (const KDL::JntArray& array : arrays) {
            forward->JntToCart(array, pose);
            benchmark::DoNotOptimize(pose);
        }
    };
}

std::unique_ptr<PoseSolver> MakeKdlNewton(const Subject& subject, const Task& task)
{
    return std::make_unique<KdlNewton>(subject, task);
}

std::unique_ptr<PoseSolver> MakeKdlLevenbergMarquardt(const Subject& subject, const Task& task)
{
    return std::make_unique<KdlLevenbergMarquardt>(subject, task);
}

} // namespace bench
