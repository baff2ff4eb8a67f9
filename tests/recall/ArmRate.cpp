// How often the program solves a pose of an arm from nowhere near, and how many of the ways to
// stand there it finds.
//
//   arm_rate [POSES]     a row of the table, 10000 unless given
//
// Prints a table, and the time that solving took; exits 1 when fewer than 99.5 % of the poses of a
// row are solved, or fewer than 98 % of the ways found.
//
// A pose is the arm's at random joint values inside the limits. The solve starts from where the
// axes start, all at 0, and has to stay within the limits. It counts as solved when forward
// kinematics of the joints found is within 1e-6 mm and 1e-3 degrees, of the tool's direction, and
// of its x axis where the whole orientation is asked for. The six-axis arm's ways to stand at one
// pose in ten are worked out by hand; those within the limits are looked for among all that the
// program finds.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "geometry/Frame.h"
#include "geometry/Units.h"
#include "host/ArmText.h"
#include "machine/MachineAssembly.h"
#include "machine/MachineFile.h"
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

/// A row of the table.
struct Question
{
    std::string name;
    host::LoadedMachine machine;
    bool isWhole; //!< whether the turn about the tool counts
    bool hasKnownWays;
};

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
    explicit Rate(Question asked)
        : question(std::move(asked)), fk(question.machine, question.machine.streams.front(), {}),
          sampled(question.machine, question.machine.streams.front(), {}, fk.Initial())
    {}

    void Try(Random& random)
    {
        const PathTarget target = TargetAt(RandomJoints(random));
        TryFirst(target);
        if (tally.poses++ % kOneInWays == 0 && question.hasKnownWays) {
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
        PathTarget target{{host::Column(pose, 3), host::Column(pose, 2)}, std::nullopt};
        if (question.isWhole) {
            target.xAxis = host::Column(pose, 0);
        }
        return target;
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
        double angle = host::AngleBetween(reached.at.direction, target.at.direction);
        if (question.isWhole) {
            angle = std::max(angle, host::AngleBetween(*reached.xAxis, *target.xAxis));
        }
        const double angle_deg = host::ToDegrees(angle);
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

    Question question;
    host::PointSolver fk;
    host::SampledSolver sampled;
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

host::LoadedMachine ArmAtATable()
{
    return host::AssembleMachine(
        host::ReadMachine(test::ArmText("-360, 360", "-180, 180"), "arm.toml"));
}

/// Prints the row of a question; false where too little was found.
bool PrintRow(const std::string& name, const Tally& t)
{
    const double solved = Share(t.solved, t.poses);
    const double waysFound = Share(t.waysFound, t.ways);
    std::cout << "| " << name << " | " << t.poses << " | " << std::fixed << std::setprecision(2)
              << solved << " % | " << std::scientific << std::setprecision(0) << t.worstPosition
              << " mm | " << t.worstAngle_deg << " deg | " << std::fixed << std::setprecision(2);
    if (t.ways > 0) {
        std::cout << waysFound << " % of " << t.ways;
    } else {
        std::cout << "-";
    }
    std::cout << " |" << std::endl;
    return solved >= kLeastSolved && (t.ways == 0 || waysFound >= kLeastWaysFound);
}

} // namespace

int main(int argc, char** argv)
{
    const int poses = argc > 1 ? std::atoi(argv[1]) : 10000;
    std::vector<Question> questions;
    questions.push_back({"six-axis arm", test::Loaded(test::SixAxisArm()), true, true});
    questions.push_back(
        {"six-axis arm, any turn about the tool", test::Loaded(test::SixAxisArm()), false, false});
    questions.push_back({"arm at a turning table, seven axes", ArmAtATable(), true, false});
    questions.push_back(
        {"arm at a turning table, any turn about the tool", ArmAtATable(), false, false});
    std::cout << "| machine | poses | solved | worst position | worst angle | ways to stand that "
                 "are found |\n|---|---|---|---|---|---|\n";
    bool isGood = true;
    std::vector<Tally> tallies;
    for (Question& question : questions) {
        const std::string name = question.name;
        Rate rate(std::move(question));
        Random random(29);
        for (int i = 0; i < poses; ++i) {
            rate.Try(random);
        }
        isGood = PrintRow(name, rate.Result()) && isGood;
        tallies.push_back(rate.Result());
    }
    for (const Tally& t : tallies) {
        std::cout << "time  " << Milliseconds(t.solving, t.poses) << " ms to solve a pose";
        if (t.posesOfWays > 0) {
            std::cout << ", " << Milliseconds(t.finding, t.posesOfWays) << " ms to find all ways";
        }
        std::cout << "\n";
    }
    return isGood ? 0 : 1;
}
