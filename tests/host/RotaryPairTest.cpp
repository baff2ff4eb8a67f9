// Two rotary axes that direct the tool: their angles, branches and pole.

#include <cmath>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MillTexts.h"
#include "geometry/Units.h"
#include "planner/JointSpace.h"
#include "planner/RotaryPair.h"
#include "support/Repeat.h"

namespace
{

using host::JointValues;
using host::LoadedMachine;
using host::PointSolver;
using host::RotaryPair;
using host::ToDegrees;
using host::ToRadians;
using host::Vec3;

constexpr double kExact_deg = 1e-10;

/// A machine with its pair, where it has one.
struct Rig
{
    explicit Rig(const std::string& text) : Rig(test::MachineFrom(text)) {}
    explicit Rig(LoadedMachine&& loaded)
        : machine(std::move(loaded)), solver(machine, machine.streams.front(), {}),
          pair(RotaryPair::Of(solver))
    {}

    const std::string& NameOf(std::size_t axis) const { return solver.Axes()[axis]->name; }

    LoadedMachine machine;
    PointSolver solver;
    std::optional<RotaryPair> pair;
};

constexpr const char* kWide = "limits = [-400, 400]";

std::string TableTable()
{
    return test::TableTableText(kWide, kWide);
}
std::string HeadTable()
{
    return test::HeadTableText(kWide, kWide);
}
std::string HeadHead()
{
    return test::HeadHeadText(kWide, kWide);
}
std::string Nutating()
{
    return test::NutatingHeadText(kWide, kWide);
}

Vec3 Tilted(double tilt_deg, double azimuth_deg)
{
    const double tilt = ToRadians(tilt_deg);
    const double azimuth = ToRadians(azimuth_deg);
    return {std::sin(tilt) * std::cos(azimuth), std::sin(tilt) * std::sin(azimuth), std::cos(tilt)};
}

void ExpectAngles(const RotaryPair::Angles& angles, double first_deg, double second_deg)
{
    EXPECT_NEAR(ToDegrees(angles.first), first_deg, kExact_deg);
    EXPECT_NEAR(ToDegrees(angles.second), second_deg, kExact_deg);
}

// The angles, by hand ------------------------------------------------------------------------

TEST(RotaryPair, DirectsByATiltingTable)
{
    // d = (sin A sin C, sin A cos C, cos A). C is nearer to the part and comes first. u = -z and
    // v = -x; u x v = y, towards which z = exp(v A) r leans where A is positive.
    const Rig rig(TableTable());
    ASSERT_TRUE(rig.pair);
    EXPECT_EQ(rig.NameOf(rig.pair->FirstAxis()), "C");
    EXPECT_EQ(rig.NameOf(rig.pair->SecondAxis()), "A");
    // Leaning 30 degrees, 60 degrees from y: C 60 and A 30, or C 60 - 180 and A -30.
    const auto angles = rig.pair->Directing(Tilted(30, 30));
    ASSERT_EQ(angles.size(), 2U);
    ExpectAngles(angles[0], 60, 30);
    ExpectAngles(angles[1], -120, -30);
    // Below the horizon.
    const auto below = rig.pair->Directing(Tilted(150, 90));
    ASSERT_EQ(below.size(), 2U);
    ExpectAngles(below[0], 0, 150);
    EXPECT_NEAR(ToDegrees(below[1].second), -150, kExact_deg);
    EXPECT_NEAR(std::fabs(ToDegrees(below[1].first)), 180, kExact_deg);
    EXPECT_EQ(rig.pair->BranchOf(ToRadians(30)), 1);
    EXPECT_EQ(rig.pair->BranchOf(ToRadians(-30)), 2);
    EXPECT_EQ(rig.pair->BranchOf(ToRadians(-30 + 360)), 2);
}

TEST(RotaryPair, DirectsByAHeadOverATable)
{
    // d = (sin B cos C, -sin B sin C, cos B). u = -z, v = y, u x v = x.
    const Rig rig(HeadTable());
    ASSERT_TRUE(rig.pair);
    EXPECT_EQ(rig.NameOf(rig.pair->FirstAxis()), "C");
    EXPECT_EQ(rig.NameOf(rig.pair->SecondAxis()), "B");
    const auto angles = rig.pair->Directing(Tilted(40, 25));
    ASSERT_EQ(angles.size(), 2U);
    ExpectAngles(angles[0], -25, 40);
    ExpectAngles(angles[1], 155, -40);
}

TEST(RotaryPair, DirectsByAForkedHead)
{
    // d = (sin C sin A, -cos C sin A, cos A): C comes first here because it carries A. u = z,
    // v = x, u x v = y, from which z = (0, -sin A, cos A) leans away where A is positive.
    const Rig rig(HeadHead());
    ASSERT_TRUE(rig.pair);
    EXPECT_EQ(rig.NameOf(rig.pair->FirstAxis()), "C");
    EXPECT_EQ(rig.NameOf(rig.pair->SecondAxis()), "A");
    const auto angles = rig.pair->Directing(Tilted(70, 10));
    ASSERT_EQ(angles.size(), 2U);
    ExpectAngles(angles[0], -80, -70); // C and A such that -A leans towards azimuth 90 + C
    ExpectAngles(angles[1], 100, 70);
}

TEST(RotaryPair, DirectsByANutatingHead)
{
    // At B 90 the direction is (1/2, -1/sqrt 2, 1/2) turned by C: azimuth C - 54.7356 at a tilt of
    // 60 degrees; at B -90 azimuth C + 54.7356. atan sqrt 2 = 54.7356.
    const Rig rig(Nutating());
    ASSERT_TRUE(rig.pair);
    EXPECT_EQ(rig.NameOf(rig.pair->FirstAxis()), "C");
    EXPECT_EQ(rig.NameOf(rig.pair->SecondAxis()), "B");
    const double lean_deg = ToDegrees(std::atan(std::sqrt(2.0)));
    const auto angles = rig.pair->Directing(Tilted(60, 20));
    ASSERT_EQ(angles.size(), 2U);
    // u x v = z x (1, 0, 1) / sqrt 2 = y / sqrt 2: branch 1 has B negative.
    ExpectAngles(angles[0], 20 - lean_deg, -90);
    ExpectAngles(angles[1], 20 + lean_deg, 90);
}

TEST(RotaryPair, DoesNotReachWhatItsAxesDoNotSpan)
{
    // The nutating head reaches down to the horizon, where its branches meet at B 180, and no
    // farther.
    const Rig rig(Nutating());
    const auto level = rig.pair->Directing({1, 0, 0});
    ASSERT_EQ(level.size(), 2U);
    EXPECT_NEAR(std::fabs(ToDegrees(level[0].second)), 180, 1e-4); // from the root of a rounding
    EXPECT_NEAR(std::fabs(ToDegrees(level[1].second)), 180, 1e-4);
    EXPECT_EQ(rig.pair->Directing(Tilted(89.9, 77)).size(), 2U);
    EXPECT_TRUE(rig.pair->Directing(Tilted(90.1, 77)).empty());
    EXPECT_TRUE(rig.pair->Directing({0, 0, -1}).empty());
}

TEST(RotaryPair, DoesNotReachThePoleWithATiltedSpindle)
{
    // The spindle leans by 10 degrees from the A axis's own plane, towards x: the tool cannot come
    // nearer to the C axis than that.
    std::string text = TableTable();
    const std::string upright = "z_axis = [0, 0, 1]\nx_axis = [1, 0, 0]";
    text.replace(text.find(upright), upright.size(),
                 "z_axis = [0.17364817766693033, 0, 0.984807753012208]\nx_axis = "
                 "[0.984807753012208, 0, -0.17364817766693033]");
    const Rig rig(text);
    ASSERT_TRUE(rig.pair);
    EXPECT_TRUE(rig.pair->Directing({0, 0, 1}).empty());
    EXPECT_TRUE(rig.pair->Directing(Tilted(9.9, 130)).empty());
    EXPECT_EQ(rig.pair->Directing(Tilted(10.1, 130)).size(), 2U);
}

TEST(RotaryPair, CountsReversedAxesTheOtherWay)
{
    std::string reversed = TableTable();
    const std::string aboutX = "direction = [1, 0, 0]\npoint     = [0, 0, -120]";
    const std::string aboutZ = "direction = [0, 0, 1]\npoint     = [0, 0, 0]";
    reversed.replace(reversed.find(aboutX), aboutX.size(),
                     "direction = [-1, 0, 0]\npoint     = [0, 0, -120]");
    reversed.replace(reversed.find(aboutZ), aboutZ.size(),
                     "direction = [0, 0, -1]\npoint     = [0, 0, 0]");
    const Rig rig(reversed);
    const auto angles = rig.pair->Directing(Tilted(30, 30));
    ASSERT_EQ(angles.size(), 2U);
    // u = z, v = x: u x v = y as before. The angles are those of the tilting table, negated.
    ExpectAngles(angles[0], -60, -30);
    ExpectAngles(angles[1], 120, 30);
}

TEST(RotaryPair, IsFoundWhateverTheOrderInTheFile)
{
    // The rotary axes before the linear ones: the file's order is the order of the joint values.
    const std::string axes = test::RotaryText("A", "base", "[1, 0, 0]", "[0, 0, -120]", kWide) +
                             test::RotaryText("C", "A", "[0, 0, 1]", "[0, 0, 0]", kWide) +
                             test::LinearText("Z", "base", "[0, 0, 1]") +
                             test::LinearText("X", "Z", "[1, 0, 0]") +
                             test::LinearText("Y", "X", "[0, 1, 0]");
    const Rig rig(test::WholeMill(axes, test::MountText("tool", "Y", "[0, 0, 0]") +
                                            test::MountText("part", "C", "[0, 0, -100]")));
    ASSERT_TRUE(rig.pair);
    EXPECT_EQ(rig.NameOf(rig.pair->FirstAxis()), "C");
    EXPECT_EQ(rig.NameOf(rig.pair->SecondAxis()), "A");
    ExpectAngles(rig.pair->Directing(Tilted(30, 30)).at(0), 60, 30);
}

TEST(RotaryPair, DirectsTheToolOfForwardKinematics)
{
    // Against the solver's own forward kinematics, with directions all over the sphere.
    for (const std::string& text : {TableTable(), HeadTable(), HeadHead(), Nutating()}) {
        Rig rig(text);
        std::size_t reached = 0;
        test::Repeat(200, 1, [&](test::Random& random) {
            const Vec3 wanted =
                Tilted(ToDegrees(std::acos(random.Between(-1, 1))), random.Between(-180, 180));
            const auto angles = rig.pair->Directing(wanted);
            const bool isReachable = text != Nutating() || wanted[2] >= 0.0;
            ASSERT_EQ(angles.size(), isReachable ? 2U : 0U);
            for (std::size_t i = 0; i < angles.size(); ++i) {
                JointValues joints = rig.solver.Initial();
                joints[rig.pair->FirstAxis()] = angles[i].first;
                joints[rig.pair->SecondAxis()] = angles[i].second;
                const Vec3 found = rig.solver.ToolAt(joints).direction;
                ASSERT_NEAR(host::AngleBetween(found, wanted), 0.0, 1e-9);
                ASSERT_EQ(rig.pair->BranchOf(angles[i].second), static_cast<int>(i) + 1);
                ASSERT_NEAR(host::NearestImage(rig.pair->NearestSecond(wanted, angles[i].first),
                                               angles[i].second),
                            angles[i].second, 1e-7);
                ++reached;
            }
        });
        EXPECT_GT(reached, 150U);
    }
}

// The pole -----------------------------------------------------------------------------------

TEST(RotaryPair, LeavesTheFirstAngleFreeAtThePole)
{
    Rig rig(HeadTable());
    const auto angles = rig.pair->Directing({0, 0, 1});
    ASSERT_EQ(angles.size(), 2U);
    EXPECT_NEAR(angles[0].second, 0.0, 1e-7);
    EXPECT_NEAR(angles[1].second, 0.0, 1e-7);
    for (const double first : {-3.0, 0.0, 1.0, 2.5}) {
        EXPECT_NEAR(rig.pair->NearestSecond({0, 0, 1}, first), 0.0, 1e-12);
        // A direction beside the pole, towards x: the head swivels by what of it lies across the
        // swivel axis, which the table's turn has brought around by -C.
        const double beside = 1e-4;
        EXPECT_NEAR(rig.pair->NearestSecond({std::sin(beside), 0, std::cos(beside)}, first),
                    beside * std::cos(first), 1e-11);
    }
}

TEST(RotaryPair, IsAccurateBesideThePole)
{
    const Rig rig(TableTable());
    for (const double beside_deg : {0.03, 0.1, 1.0}) {
        const auto angles = rig.pair->Directing(Tilted(beside_deg, 30));
        ASSERT_EQ(angles.size(), 2U);
        EXPECT_NEAR(ToDegrees(angles[0].first), 60, 1e-8);
        EXPECT_NEAR(ToDegrees(angles[0].second), beside_deg, 1e-8);
        EXPECT_NEAR(ToDegrees(angles[1].first), -120, 1e-8);
        EXPECT_NEAR(ToDegrees(angles[1].second), -beside_deg, 1e-8);
    }
}

TEST(RotaryPair, MeasuresTheAngleToTheNearerEndOfThePole)
{
    const Rig rig(TableTable());
    EXPECT_NEAR(ToDegrees(rig.pair->AngleToPole(Tilted(10, 50))), 10, kExact_deg);
    EXPECT_NEAR(ToDegrees(rig.pair->AngleToPole(Tilted(90, 50))), 90, kExact_deg);
    EXPECT_NEAR(ToDegrees(rig.pair->AngleToPole(Tilted(170, 50))), 10, kExact_deg);
    EXPECT_NEAR(ToDegrees(rig.pair->AngleToPole(Tilted(1e-6, 50))), 1e-6, 1e-12);
    EXPECT_EQ(rig.pair->AngleToPole(Vec3{0, 0, 1}), 0.0);
}

double ArcToPole_deg(const Rig& rig, const Vec3& from, const Vec3& to)
{
    EXPECT_NEAR(rig.pair->AngleToPole(from, to), rig.pair->AngleToPole(to, from), 1e-12);
    return ToDegrees(rig.pair->AngleToPole(from, to));
}

TEST(RotaryPair, MeasuresTheAngleToThePoleAlongATurn)
{
    const Rig rig(HeadTable());
    // Straight over it, from one side to the other and not evenly.
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(10, 0), Tilted(25, 180)), 0, kExact_deg);
    // A quarter turn around it: halfway the direction is along (s, s, 2 c), so that its tilt is
    // atan(tan(10) / sqrt 2).
    const double middle = ToDegrees(std::atan(std::tan(ToRadians(10)) / std::sqrt(2.0)));
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(10, 30), Tilted(10, 120)), middle, kExact_deg);
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(170, 30), Tilted(170, 120)), middle, kExact_deg);
    // Up to it, away from it, and short of it: an end is nearest.
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(30, 70), Tilted(5, 70)), 5, kExact_deg);
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(10, 0), Tilted(60, 60)), 10, kExact_deg);
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(100, 0), Tilted(160, 10)), 20, kExact_deg);
    // Along the horizon, and on the spot.
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(90, 0), Tilted(90, 90)), 90, kExact_deg);
    EXPECT_NEAR(ArcToPole_deg(rig, Tilted(40, 80), Tilted(40, 80)), 40, kExact_deg);
}

TEST(RotaryPair, MeasuresAlongTheTurnThatThePathTakesBetweenOppositeDirections)
{
    // Between opposite directions there are many turns, and the path always takes one of them: the
    // least angle is that of the places on it.
    const Rig rig(TableTable());
    for (const Vec3& from : {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Tilted(60, 20), Tilted(1, 200)}) {
        const Vec3 to{-from[0], -from[1], -from[2]};
        double least = host::kPi;
        constexpr int kPlaces = 20000;
        for (int i = 0; i <= kPlaces; ++i) {
            const double share = static_cast<double>(i) / kPlaces;
            least = std::min(
                least, rig.pair->AngleToPole(host::Between({{}, from}, {{}, to}, share).direction));
        }
        EXPECT_NEAR(rig.pair->AngleToPole(from, to), least, 1e-4);
    }
}

// What is no pair ----------------------------------------------------------------------------

TEST(RotaryPair, IsNoneWithoutTwoRotaryAxes)
{
    const std::string linear = test::LinearText("X", "base", "[1, 0, 0]") +
                               test::LinearText("Y", "X", "[0, 1, 0]") +
                               test::LinearText("Z", "Y", "[0, 0, 1]");
    const std::string c = test::RotaryText("C", "base", "[0, 0, 1]", "[0, 0, 0]", kWide);
    const std::string a = test::RotaryText("A", "C", "[1, 0, 0]", "[0, 0, 0]", kWide);
    const std::string b = test::RotaryText("B", "A", "[0, 1, 0]", "[0, 0, 0]", kWide);
    const auto withTable = [](const std::string& parent) {
        return test::MountText("tool", "Z", "[0, 0, 0]") +
               test::MountText("part", parent, "[0, 0, 0]");
    };
    EXPECT_FALSE(Rig(test::WholeMill(linear, withTable("base"))).pair);
    EXPECT_FALSE(Rig(test::WholeMill(linear + c, withTable("C"))).pair);
    EXPECT_TRUE(Rig(test::WholeMill(linear + c + a, withTable("A"))).pair);
    EXPECT_FALSE(Rig(test::WholeMill(linear + c + a + b, withTable("B"))).pair);
    // Parallel axes, one beside the other, turn the part about the same line.
    const std::string parallel = test::RotaryText("C2", "C", "[0, 0, -1]", "[100, 0, 0]", kWide);
    EXPECT_FALSE(Rig(test::WholeMill(linear + c + parallel, withTable("C2"))).pair);
}

TEST(RotaryPair, CountsTheAxesThatAreNotLocked)
{
    const std::string axes =
        test::LinearText("X", "base", "[1, 0, 0]") + test::LinearText("Y", "X", "[0, 1, 0]") +
        test::LinearText("Z", "Y", "[0, 0, 1]") +
        test::RotaryText("A", "base", "[1, 0, 0]", "[0, 0, 0]", kWide) +
        test::RotaryText("C", "A", "[0, 0, 1]", "[0, 0, 0]", kWide) +
        test::RotaryText("B", "C", "[0, 1, 0]", "[0, 0, 0]", std::string(kWide) + "\ninitial = 20");
    LoadedMachine machine =
        test::MachineFrom(test::WholeMill(axes, test::MountText("tool", "Z", "[0, 0, 0]") +
                                                    test::MountText("part", "B", "[0, 0, 0]")));
    PointSolver ofThree(machine, machine.streams.front(), {});
    EXPECT_FALSE(RotaryPair::Of(ofThree));
    machine.axes[5].joint->SetIsLocked(true);
    machine.MoveToInitial();
    const Rig rig(std::move(machine));
    ASSERT_TRUE(rig.pair);
    EXPECT_EQ(rig.NameOf(rig.pair->FirstAxis()), "C");
    EXPECT_EQ(rig.NameOf(rig.pair->SecondAxis()), "A");
    // Seen from the part, which B tilts, the C axis leans by 20 degrees towards -x.
    EXPECT_NEAR(ToDegrees(rig.pair->AngleToPole(Tilted(20, 180))), 0, kExact_deg);
    EXPECT_NEAR(ToDegrees(rig.pair->AngleToPole(Tilted(0, 0))), 20, kExact_deg);
    ExpectAngles(rig.pair->Directing(Tilted(50, 180)).at(0), -90, 30);
}

// Near the pole ------------------------------------------------------------------------------

/// The quick answers are those of the angle itself, near the bound and far from it.
TEST(RotaryPair, KnowsWithoutTheAngleWhatIsFarFromThePole)
{
    std::mt19937 random(20261122);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    const auto near = [&](double bound) { // mostly within a hair of the bound, or anywhere
        const double off = std::pow(10.0, -16.0 * share(random)) * (share(random) < 0.5 ? 1 : -1);
        return share(random) < 0.8 ? bound * (1.0 + off) : host::kPi * share(random);
    };
    std::size_t numNear = 0;
    std::size_t numPassing = 0;
    for (const std::string& machine : {TableTable(), HeadTable(), HeadHead(), Nutating()}) {
        const Rig rig(machine);
        // Where the first axis leaves the tool: the pole is its direction there.
        const Vec3 pole = Tilted(0, 0);
        ASSERT_NEAR(rig.pair->AngleToPole(pole), 0.0, 1e-12);
        for (int i = 0; i < 20000; ++i) {
            const double within = std::pow(10.0, -5.0 * share(random));
            const double azimuth = 360.0 * share(random);
            const Vec3 from = Tilted(ToDegrees(near(within)), azimuth);
            const double step = 180.0 * std::pow(10.0, -12.0 * share(random));
            const Vec3 to = Tilted(ToDegrees(near(within)), azimuth + step);
            const bool isNear = rig.pair->AngleToPole(from) <= within;
            const bool passes = rig.pair->AngleToPole(from, to) <= within;
            ASSERT_EQ(rig.pair->IsNearPole(from, within), isNear) << machine << i;
            ASSERT_EQ(rig.pair->PassesPole(from, to, within), passes) << machine << i;
            ASSERT_EQ(rig.pair->PassesPole(from, from, within),
                      rig.pair->AngleToPole(from, from) <= within);
            numNear += isNear ? 1 : 0;
            numPassing += passes ? 1 : 0;
        }
    }
    EXPECT_GT(numNear, 20000U);
    EXPECT_LT(numNear, 60000U);
    EXPECT_GT(numPassing, numNear);
    EXPECT_LT(numPassing, 70000U);
}

} // namespace
