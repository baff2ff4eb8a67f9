// How often the program solves a pose of the six-axis arm from nowhere near, and how many of the
// ways to stand there it finds.
//
//   arm_rate [POSES]     10000 unless given
//
// Prints a table, and the time that solving took; exits 1 when fewer than 99.5 % of the poses are
// solved, or fewer than 98 % of the ways found.
//
// A pose is the arm's at random joint values inside the limits, the whole orientation counting. The
// solve starts from where the axes start, all at 0, and has to stay within the limits. It counts as
// solved when forward kinematics of the joints found is within 1e-6 mm and 1e-3 degrees, both of
// the tool's direction and of its x axis. The ways to stand at one pose in ten are worked out by
// hand; those within the limits are looked for among all that the program finds.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <optional>
#include <vector>

#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "solve/SampledSolver.h"
#include "support/ArmInverse.h"
#include "support/LoadedFixture.h"
#include "support/Random.h"

using host::JointValues;
using host::operator-;
using host::PathTarget;
using test::Random;

namespace
{

constexpr double kGoodPosition = 1e-6;   // [mm]
constexpr double kGoodAngle_deg = 1e-3;  // of direction and x axis
constexpr double kLeastSolved = 99.5;    // [%]
constexpr double kLeastWaysFound = 98.0; // [%]
constexpr int kOneInWays = 10;           // of the poses: finding all takes thirty times as long

struct Tally
{
    int poses{0};
    int solved{0};
    double worstPosition{0.0};  // of the solved [mm]
    double worstAngle_deg{0.0}; // of the solved
    std::clock_t solving{0};    // processor time
    int ways{0};
    int waysFound{0};
    int posesOfWays{0};
    std::clock_t finding{0};
};

class Rate
{
  public:
    void Try(Random& random)
    {
        const PathTarget target = TargetAt(RandomJoints(random));
        TryFirst(target);
        if (tally.poses++ % kOneInWays == 0) {
            TryAll(target);
        }
    }

    const Tally& Result() const { return tally; }

  private:
    JointValues RandomJoints(Random& random) const
    {
        JointValues joints;
        for (const host::Axis* axis : fk.Axes()) {
            joints.push_back(random.Between(axis->joint->GetLowBound(), axis->joint->GetHiBound()));
        }
        return joints;
    }

    PathTarget TargetAt(const JointValues& joints)
    {
        const IkXformMat pose = fk.PoseAt(joints);
        return {{host::Column(pose, 3), host::Column(pose, 2)}, host::Column(pose, 0)};
    }

    bool IsWithinLimits(const JointValues& joints) const
    {
        for (std::size_t i = 0; i < joints.size(); ++i) {
            const IkJoint& joint = *fk.Axes()[i]->joint;
            if (joints[i] < joint.GetLowBound() || joints[i] > joint.GetHiBound()) {
                return false;
            }
        }
        return true;
    }

    void TryFirst(const PathTarget& target)
    {
        const std::clock_t begin = std::clock();
        const std::optional<JointValues> joints = sampled.FindFirst(target, fk.Initial());
        tally.solving += std::clock() - begin;
        if (!joints || !IsWithinLimits(*joints)) {
            return;
        }
        const PathTarget reached = TargetAt(*joints);
        const double position = host::Length(reached.at.position - target.at.position);
        const double angle_deg =
            host::ToDegrees(std::max(host::AngleBetween(reached.at.direction, target.at.direction),
                                     host::AngleBetween(*reached.xAxis, *target.xAxis)));
        if (position <= kGoodPosition && angle_deg <= kGoodAngle_deg) {
            ++tally.solved;
            tally.worstPosition = std::max(tally.worstPosition, position);
            tally.worstAngle_deg = std::max(tally.worstAngle_deg, angle_deg);
        }
    }

    /// Turns the joints by whole turns to where they are nearest to the middle of their limits.
    JointValues Centred(const test::ArmJoints& joints) const
    {
        JointValues centred(joints.begin(), joints.end());
        for (std::size_t i = 0; i < centred.size(); ++i) {
            const IkJoint& joint = *fk.Axes()[i]->joint;
            const double middle = (joint.GetLowBound() + joint.GetHiBound()) / 2.0;
            centred[i] = middle + std::remainder(centred[i] - middle, 2.0 * host::kPi);
        }
        return centred;
    }

    void TryAll(const PathTarget& target)
    {
        const std::clock_t begin = std::clock();
        const std::vector<JointValues> found = sampled.FindAll(target, fk.Initial());
        tally.finding += std::clock() - begin;
        ++tally.posesOfWays;
        const IkXformMat pose =
            host::FrameOf(target.at.position, *target.xAxis, target.at.direction);
        for (const test::ArmJoints& joints : test::ArmInverse(pose)) {
            const JointValues way = Centred(joints);
            if (IsWithinLimits(way)) {
                ++tally.ways;
                tally.waysFound +=
                    std::any_of(found.begin(), found.end(),
                                [&](const JointValues& one) {
                                    return host::AreSameSolution(fk.Axes(), one, way);
                                })
                        ? 1
                        : 0;
            }
        }
    }

    host::LoadedMachine machine{test::Loaded(test::SixAxisArm())};
    host::PointSolver fk{machine, machine.streams.front(), {}};
    host::SampledSolver sampled{machine, machine.streams.front(), {}, fk.Initial()};
    Tally tally;
};

double Share(int part, int whole)
{
    return 100.0 * part / std::max(whole, 1);
}

double Milliseconds(std::clock_t all, int count)
{
    return 1e3 * static_cast<double>(all) / CLOCKS_PER_SEC / std::max(count, 1);
}

} // namespace

int main(int argc, char** argv)
{
    const int poses = argc > 1 ? std::atoi(argv[1]) : 10000;
    Rate rate;
    Random random(29);
    for (int i = 0; i < poses; ++i) {
        rate.Try(random);
    }
    const Tally& t = rate.Result();
    const double solved = Share(t.solved, t.poses);
    const double waysFound = Share(t.waysFound, t.ways);
    std::cout
        << "| machine | poses | solved | worst position | worst angle | ways to stand, of one "
           "pose in "
        << kOneInWays << " | found |\n|---|---|---|---|---|---|---|\n"
        << "| six-axis arm | " << t.poses << " | " << std::fixed << std::setprecision(2) << solved
        << " % | " << std::scientific << std::setprecision(0) << t.worstPosition << " mm | "
        << t.worstAngle_deg << " deg | " << t.ways << " | " << std::fixed << std::setprecision(2)
        << waysFound << " % |\n"
        << "time  " << Milliseconds(t.solving, t.poses) << " ms to solve a pose, "
        << Milliseconds(t.finding, t.posesOfWays) << " ms to find all ways" << std::endl;
    return solved >= kLeastSolved && waysFound >= kLeastWaysFound ? 0 : 1;
}
