// How often the hybrid solver finds both branches of a five-axis machine.
//
//   branch_recall [POSES]     poses a machine, 10000 unless given
//
// Prints a table; exits 1 when a machine finds both branches at less than 97 % of its poses.
//
// On each of these machines two pairs of rotary values give a tool direction: (tilt, turn) and
// (-tilt, turn + half a turn). A pose is drawn from random joint values inside the bounds, one in
// twenty from a special tilt: the pole, where any turn gives the direction and the two branches are
// one, or close to it. The solve starts from other random joint values and ignores the limits,
// since most poses have one branch only inside them. A branch is found when a sample that is not
// rejected ends at its rotary values, whole turns aside; a pose at the pole, when any sample
// reaches it.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <string>

#include "IkSolver.h"
#include "support/Fixtures.h"
#include "support/Random.h"

using test::Fixture;
using test::Random;

namespace
{

constexpr double kHalfTurn = 3.141592653589793;
constexpr double kSameAngle = 1e-3;  // [rad], where branches lie much further apart
constexpr double kLeastShare = 97.0; // [%]
constexpr double kPole = 1e-3; // [rad] of tilt: below it the branches are one to that tolerance

struct FiveAxisMachine
{
    std::string name;
    test::FixtureMaker make;
    const wchar_t* tilt;
    const wchar_t* turn;
};

/// What came of the poses of one machine.
struct Tally
{
    int poses{0}; // away from the pole
    int both{0};
    int slow{0};  // branches missed that a start reaches in 60 iterations, but not in ten
    int apart{0}; // branches missed that no start leads to, however long it runs
    int poles{0};
    int polesReached{0};
};

bool SameAngle(double a, double b)
{
    return std::fabs(std::remainder(a - b, 2 * kHalfTurn)) < kSameAngle;
}

double ValueOf(const IkJtStateVector& states, const IkJoint& joint)
{
    double value = 0.0;
    states.FindValFromPtr(&joint, value);
    return value;
}

std::vector<double> RandomValues(const Fixture& fixture, Random& random)
{
    std::vector<double> values;
    for (const IkJoint* joint : fixture.joints) {
        values.push_back(random.Between(joint->GetLowBound(), joint->GetHiBound()));
    }
    return values;
}

class Recall
{
  public:
    explicit Recall(const FiveAxisMachine& machine)
        : fixture(machine.make()), tilt(fixture.Joint(machine.tilt)),
          turn(fixture.Joint(machine.turn)), solver(fixture.stream)
    {}

    void Try(Random& random)
    {
        IkJtStateVector wanted = fixture.States(RandomValues(fixture, random));
        if (random.OneIn(20)) {
            const double special = random.OneOf({0.0, 1e-6, 1e-2});
            wanted.GetState(wanted.FindStateByJointPtr(&tilt)).SetValue(special);
        }
        fixture.SetJoints(RandomValues(fixture, random));
        target = fixture.stream->SolveFK(wanted, false, nullptr, nullptr, false);
        IkJtStateVector result;
        solver.SolveIK(target, result, false, IkJoint::JtLimitNone, false);
        const Branch there{ValueOf(wanted, tilt), ValueOf(wanted, turn)};
        if (std::fabs(there.tilt) < kPole) {
            ++tally.poles;
            tally.polesReached += IsReached() ? 1 : 0;
        } else {
            Count({there, {-there.tilt, there.turn + kHalfTurn}});
        }
    }

    const Tally& Result() const { return tally; }

  private:
    struct Branch
    {
        double tilt; // [rad]
        double turn; // [rad]
    };

    bool IsReached()
    {
        const auto& samples = solver.GetSampleList();
        return std::any_of(samples.begin(), samples.end(),
                           [](const IkSolverSampleItem& item) { return !item.rejected; });
    }

    bool IsAt(const IkJtStateVector& states, const Branch& branch) const
    {
        return SameAngle(ValueOf(states, tilt), branch.tilt) &&
               SameAngle(ValueOf(states, turn), branch.turn);
    }

    bool IsFound(const Branch& branch)
    {
        const auto& samples = solver.GetSampleList();
        return std::any_of(samples.begin(), samples.end(), [&](const IkSolverSampleItem& item) {
            return !item.rejected && IsAt(item.resultStates, branch);
        });
    }

    /// Whether some start leads to the branch when it is given a stream's sixty iterations.
    bool IsReachedInTheEnd(const Branch& branch)
    {
        auto& samples = solver.GetSampleList();
        return std::any_of(samples.begin(), samples.end(), [&](IkSolverSampleItem& item) {
            IkSolverPsuedoInverse patient(fixture.stream);
            patient.SetStartingJtStates(&item.startStates);
            IkJtStateVector result;
            return patient.SolveIK(target, result, false, IkJoint::JtLimitNone, false) &&
                   IsAt(result, branch);
        });
    }

    void Count(const std::array<Branch, 2>& branches)
    {
        int found = 0;
        for (const Branch& branch : branches) {
            if (IsFound(branch)) {
                ++found;
            } else {
                ++(IsReachedInTheEnd(branch) ? tally.slow : tally.apart);
            }
        }
        ++tally.poses;
        tally.both += found == 2 ? 1 : 0;
    }

    Fixture fixture;
    IkJoint& tilt;
    IkJoint& turn;
    IkSolverHybrid solver;
    IkEndState target;
    Tally tally;
};

} // namespace

int main(int argc, char** argv)
{
    const int poses = argc > 1 ? std::atoi(argv[1]) : 10000;
    const std::vector<FiveAxisMachine> machines{
        {"table-table", test::TableTableMill, L"A", L"C"},
        {"head-table", test::HeadTableMill, L"B", L"C"},
        {"head-head", test::HeadHeadMill, L"A", L"C"},
        {"mill-turn", test::MillTurn, L"B", L"C"},
    };
    std::cout << "| machine | poses | both branches | missed: ten iterations too few | missed: no "
                 "start leads there | poles reached |\n|---|---|---|---|---|---|\n";
    bool isGood = true;
    for (const FiveAxisMachine& machine : machines) {
        Recall recall(machine);
        Random random(5);
        for (int i = 0; i < poses; ++i) {
            recall.Try(random);
        }
        const Tally& t = recall.Result();
        const double share = 100.0 * t.both / t.poses;
        isGood = isGood && share >= kLeastShare;
        std::cout << "| " << machine.name << " | " << t.poses << " | " << std::fixed
                  << std::setprecision(2) << share << " % | " << t.slow << " | " << t.apart << " | "
                  << t.polesReached << " of " << t.poles << " |" << std::endl;
    }
    return isGood ? 0 : 1;
}
