#include "Poses.h"

#include <algorithm>
#include <cmath>

#include "support/Random.h"

namespace bench
{

namespace
{

constexpr double kHalfTurn = 3.141592653589793;
constexpr double kGoodPosition = 1e-4;                // [mm]
constexpr double kGoodAngle = 1e-2 * kHalfTurn / 180; // [rad]

struct Range
{
    double low;
    double high;
};

Range RangeOf(const IkJoint& joint)
{
    Range range{joint.GetLowBound(), joint.GetHiBound()};
    if (joint.IsRotary()) {
        range = {std::max(range.low, -kHalfTurn), std::min(range.high, kHalfTurn)};
    }
    return range;
}

std::vector<const IkJoint*> JointsOf(const Subject& subject)
{
    std::vector<const IkJoint*> joints;
    IkJtStateVector states = subject.Stream().GetJointStates();
    joints.reserve(static_cast<std::size_t>(states.Size()));
    for (int i = 0; i < states.Size(); ++i) {
        joints.push_back(states.GetState(i).GetJoint());
    }
    return joints;
}

/// One joint's part of the closed curve.
struct Swing
{
    Swing(const IkJoint& joint, double home, int steps)
    {
        constexpr double kLongestStep = 1.0;                  // [mm]
        constexpr double kWidestStep = 0.6 * kHalfTurn / 180; // [rad]
        const Range range = RangeOf(joint);
        const double step = joint.IsRotary() ? kWidestStep : kLongestStep;
        reach = std::min(step * steps / (2 * kHalfTurn), (range.high - range.low) / 4);
        middle = std::clamp(home, range.low + reach, range.high - reach);
    }

    double reach;  //!< to either side of the middle
    double middle; //!< [length] or [rad]
};

double SquaredDistance(const IkXformMat& a, const IkXformMat& b, int column)
{
    double sum = 0.0;
    for (int row = 0; row < 3; ++row) {
        const double difference = a[row][column] - b[row][column];
        sum += difference * difference;
    }
    return sum;
}

/// Between two axes, from the chord of their tips.
double Angle(const IkXformMat& a, const IkXformMat& b, int column)
{
    return 2.0 * std::asin(std::min(1.0, std::sqrt(SquaredDistance(a, b, column)) / 2.0));
}

} // namespace

std::vector<JointValues> RandomJoints(const Subject& subject, int count)
{
    test::Random random(41);
    std::vector<JointValues> all;
    for (int k = 0; k < count; ++k) {
        JointValues values;
        for (const IkJoint* joint : JointsOf(subject)) {
            const Range range = RangeOf(*joint);
            values.push_back(random.Between(range.low, range.high));
        }
        all.push_back(values);
    }
    return all;
}

Task ColdTask(const Subject& subject, int count)
{
    Task task;
    task.start = subject.home;
    task.witnesses = RandomJoints(subject, count);
    for (const JointValues& values : task.witnesses) {
        task.targets.push_back(subject.TargetAt(values));
    }
    return task;
}

Task WarmTask(const Subject& subject, int count)
{
    const std::vector<const IkJoint*> joints = JointsOf(subject);
    const auto at = [&](int step) {
        JointValues values;
        for (std::size_t i = 0; i < joints.size(); ++i) {
            const Swing swing(*joints[i], subject.home[i], count);
            const double phase = 2 * kHalfTurn * step / count + static_cast<double>(i);
            values.push_back(swing.middle + swing.reach * std::sin(phase));
        }
        return values;
    };
    Task task;
    task.isPath = true;
    task.start = at(0);
    for (int step = 1; step <= count; ++step) {
        task.witnesses.push_back(at(step));
        task.targets.push_back(subject.TargetAt(task.witnesses.back()));
    }
    return task;
}

bool Meets(const Subject& subject, const JointValues& values, const IkEndState& target)
{
    if (static_cast<int>(values.size()) != subject.JointCount()) {
        return false;
    }
    const IkXformMat reached = subject.TargetAt(values).GetCompleteState();
    const IkXformMat& wanted = target.GetCompleteState();
    return std::sqrt(SquaredDistance(reached, wanted, 3)) <= kGoodPosition &&
           Angle(reached, wanted, 2) <= kGoodAngle &&
           (!subject.isWhole || Angle(reached, wanted, 0) <= kGoodAngle);
}

} // namespace bench
