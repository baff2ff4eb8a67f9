#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/CutterLocation.h"
#include "geometry/Units.h"

namespace
{

using host::AngleBetween;
using host::Between;
using host::CutterLocation;
using host::Deviation;
using host::DeviationFrom;
using host::operator*;
using host::operator+;
using host::operator-;
using host::ToRadians;
using host::Vec3;

constexpr double kLinear = 0.01;
const double kAngle = ToRadians(0.05);
constexpr double kRounding = 1e-12;
// The best place of a way is found to a billionth of the tolerances.
constexpr double kSearch = 1e-9;

constexpr Vec3 kUp{0, 0, 1};

/// In the plane of x and z, leaning from z towards x.
Vec3 Leaning(double angle_deg)
{
    return {std::sin(ToRadians(angle_deg)), 0, std::cos(ToRadians(angle_deg))};
}

/// On the meridian of a y of the same sign: like Leaning, but off the plane by `off_deg`.
Vec3 LeaningOff(double angle_deg, double off_deg)
{
    const double inPlane = std::cos(ToRadians(off_deg));
    const Vec3 leaning = Leaning(angle_deg);
    return {inPlane * leaning[0], std::sin(ToRadians(off_deg)), inPlane * leaning[2]};
}

void ExpectNear(const Vec3& actual, const Vec3& expected, double tolerance)
{
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "component " << i;
    }
}

Deviation DeviationOf(const CutterLocation& tool, const CutterLocation& from,
                      const CutterLocation& to)
{
    return DeviationFrom(from, to, tool, kLinear, kAngle);
}

// Between ------------------------------------------------------------------------------------

TEST(BetweenLocations, MovesEvenlyAlongTheLine)
{
    const CutterLocation from{{1, 2, 3}, kUp};
    const CutterLocation to{{5, -6, 3}, kUp};
    ExpectNear(Between(from, to, 0.25).position, {2, 0, 3}, kRounding);
    ExpectNear(Between(from, to, 0.75).position, {4, -4, 3}, kRounding);
    EXPECT_EQ(Between(from, to, 0.75).direction, kUp);
}

TEST(BetweenLocations, TurnsEvenlyAlongTheGreatCircle)
{
    // A third of the way from 10 to 100 degrees of lean.
    const CutterLocation from{{}, Leaning(10)};
    const CutterLocation to{{}, Leaning(100)};
    ExpectNear(Between(from, to, 1.0 / 3.0).direction, Leaning(40), kRounding);
    // From x to y, half way.
    const Vec3 half = Between({{}, {1, 0, 0}}, {{}, {0, 1, 0}}, 0.5).direction;
    ExpectNear(half, {std::sqrt(0.5), std::sqrt(0.5), 0}, kRounding);
}

TEST(BetweenLocations, StartsAndEndsAtItsEnds)
{
    const CutterLocation from{{0.1, -1e9, 7}, Leaning(3)};
    const CutterLocation to{{0.3, 1e-9, -7}, LeaningOff(170, 4)};
    EXPECT_EQ(Between(from, to, 0.0).position, from.position);
    EXPECT_EQ(Between(from, to, 1.0).position, to.position);
    ExpectNear(Between(from, to, 0.0).direction, from.direction, kRounding);
    ExpectNear(Between(from, to, 1.0).direction, to.direction, kRounding);
}

TEST(BetweenLocations, StaysWhereBothEndsAreOne)
{
    const CutterLocation place{{0.1, 0.7, -0.3}, LeaningOff(33, 12)};
    for (const double share : {0.0, 0.3, 0.9, 1.0}) {
        EXPECT_EQ(Between(place, place, share).position, place.position);
        ExpectNear(Between(place, place, share).direction, place.direction, 1e-15);
    }
}

TEST(BetweenLocations, TurnsByTheSameHalfCircleBetweenOppositeDirections)
{
    // Directions whose length differs from 1 by rounding, as they come out of a file.
    const std::vector<Vec3> directions{{0, 0, 1},
                                       {1, 0, 0},
                                       {0.6, 0.8, 0},
                                       *host::Normalised({1, 1, 1}),
                                       *host::Normalised({0.1, -0.3, 0.7})};
    for (const Vec3& up : directions) {
        const Vec3 down = -1.0 * up;
        const Vec3 half = Between({{}, up}, {{}, down}, 0.5).direction;
        EXPECT_NEAR(AngleBetween(half, up), host::kPi / 2.0, kRounding);
        EXPECT_NEAR(AngleBetween(half, down), host::kPi / 2.0, kRounding);
        const Vec3 quarter = Between({{}, up}, {{}, down}, 0.25).direction;
        EXPECT_NEAR(AngleBetween(quarter, up), host::kPi / 4.0, kRounding);
        EXPECT_NEAR(AngleBetween(quarter, half), host::kPi / 4.0, kRounding);
        // An end that is off by rounding alone changes nothing.
        const double slightly = 1.0 + 3e-16;
        ExpectNear(Between({{}, up}, {{}, slightly * down}, 0.5).direction, half, kRounding);
        ExpectNear(Between({{}, slightly * up}, {{}, down}, 0.5).direction, half, kRounding);
    }
}

TEST(BetweenLocations, TakesThePlaneOfDirectionsThatAreNearlyOpposite)
{
    // The far end leans beyond x by 90 - 1e-6 degrees; halfway is x turned by half of that little.
    const Vec3 half = Between({{}, kUp}, {{}, Leaning(180 - 1e-6)}, 0.5).direction;
    ExpectNear(half, Leaning(90 - 0.5e-6), 1e-8);
    const Vec3 other = Between({{}, kUp}, {{}, Leaning(-180 + 1e-6)}, 0.5).direction;
    ExpectNear(other, Leaning(-90 + 0.5e-6), 1e-8);
}

// DeviationFrom ------------------------------------------------------------------------------

TEST(DeviationFromWay, IsNothingOnTheWay)
{
    const CutterLocation from{{10, 0, 5}, Leaning(-20)};
    const CutterLocation to{{-30, 80, 5}, LeaningOff(50, 30)};
    for (int i = 0; i <= 20; ++i) {
        const Deviation deviation = DeviationOf(Between(from, to, i / 20.0), from, to);
        EXPECT_NEAR(deviation.position, 0.0, kLinear * kSearch) << "share " << i / 20.0;
        EXPECT_NEAR(deviation.direction, 0.0, kAngle * kSearch) << "share " << i / 20.0;
    }
}

TEST(DeviationFromWay, IsTheDistanceAcrossALine)
{
    const CutterLocation from{{0, 0, 0}, kUp};
    const CutterLocation to{{100, 0, 0}, kUp};
    const Deviation deviation = DeviationOf({{40, 3, 4}, LeaningOff(0, 0.02)}, from, to);
    EXPECT_NEAR(deviation.position, 5.0, kRounding);
    EXPECT_NEAR(deviation.direction, ToRadians(0.02), kRounding);
}

TEST(DeviationFromWay, IsTheDistanceToTheEndBeyondIt)
{
    const CutterLocation from{{0, 0, 0}, kUp};
    const CutterLocation to{{100, 0, 0}, kUp};
    EXPECT_NEAR(DeviationOf({{103, 0, 4}, kUp}, from, to).position, 5.0, kRounding);
    EXPECT_NEAR(DeviationOf({{-12, 5, 0}, kUp}, from, to).position, 13.0, kRounding);
}

TEST(DeviationFromWay, IsTheAngleAcrossAGreatCircle)
{
    const CutterLocation from{{7, 7, 7}, Leaning(10)};
    const CutterLocation to{{7, 7, 7}, Leaning(50)};
    const Deviation across = DeviationOf({{7, 7, 7}, LeaningOff(33, 2)}, from, to);
    EXPECT_EQ(across.position, 0.0);
    EXPECT_NEAR(across.direction, ToRadians(2), kRounding);
    // Beyond the ends it is the angle to the end.
    EXPECT_NEAR(DeviationOf({{7, 7, 7}, Leaning(53)}, from, to).direction, ToRadians(3), kRounding);
    EXPECT_NEAR(DeviationOf({{7, 7, 7}, Leaning(4)}, from, to).direction, ToRadians(6), kRounding);
}

TEST(DeviationFromWay, TakesThePlaceByTheDirectionWhereThePositionStays)
{
    const CutterLocation from{{0, 0, 0}, Leaning(0)};
    const CutterLocation to{{0, 0, 0}, Leaning(40)};
    const Deviation deviation = DeviationOf({{0, 3, 0}, Leaning(30)}, from, to);
    EXPECT_NEAR(deviation.position, 3.0, kRounding);
    EXPECT_NEAR(deviation.direction, 0.0, kRounding);
    const Deviation off = DeviationOf({{0, 0.005, 0}, LeaningOff(30, 0.04)}, from, to);
    EXPECT_NEAR(off.position, 0.005, kRounding);
    EXPECT_NEAR(off.direction, ToRadians(0.04), kRounding);
}

TEST(DeviationFromWay, TakesThePlaceByThePositionWhereTheDirectionStays)
{
    const CutterLocation from{{0, 0, 0}, kUp};
    const CutterLocation to{{50, 0, 0}, kUp};
    const Deviation deviation = DeviationOf({{20, 0.001, 0}, Leaning(3)}, from, to);
    EXPECT_NEAR(deviation.position, 0.001, kRounding);
    EXPECT_NEAR(deviation.direction, ToRadians(3), kRounding);
}

TEST(DeviationFromWay, DoesNotTakeRoundingForATurn)
{
    const Vec3 direction = *host::Normalised({0.3, -0.4, 0.8});
    const Vec3 again{std::nextafter(direction[0], 1.0), direction[1],
                     std::nextafter(direction[2], 0.0)};
    ASSERT_GT(AngleBetween(direction, again), 0.0);
    const CutterLocation tool{{20, 0.001, 0}, *host::Normalised({0.3, -0.4, 0.8005})};
    for (const bool isSwapped : {false, true}) {
        const Deviation deviation = DeviationOf(tool, {{0, 0, 0}, isSwapped ? again : direction},
                                                {{50, 0, 0}, isSwapped ? direction : again});
        EXPECT_NEAR(deviation.position, 0.001, kRounding);
        EXPECT_NEAR(deviation.direction, AngleBetween(tool.direction, direction), kRounding);
    }
}

TEST(DeviationFromWay, BalancesADirectionThatLeadsThePosition)
{
    // Over 10 mm the direction turns by 20 degrees, 2 per mm. A tool at 4 mm should lean by 8
    // degrees; it leans by 8.01. Taken d mm farther on, at d tolerances of 0.01 mm each, the
    // direction is off by 0.01 - 2 d degrees, tolerances of 0.05 each: they meet where
    // d / 0.01 = (0.01 - 2 d) / 0.05, which is d = 0.01 / 7.
    const CutterLocation from{{0, 0, 0}, Leaning(0)};
    const CutterLocation to{{10, 0, 0}, Leaning(20)};
    const Deviation ahead = DeviationOf({{4, 0, 0}, Leaning(8.01)}, from, to);
    EXPECT_NEAR(ahead.position, 0.01 / 7.0, 2 * kLinear * kSearch);
    EXPECT_NEAR(ahead.direction, ToRadians(0.05 / 7.0), 2 * kAngle * kSearch);
    const Deviation behind = DeviationOf({{4, 0, 0}, Leaning(7.99)}, from, to);
    EXPECT_NEAR(behind.position, 0.01 / 7.0, 2 * kLinear * kSearch);
    EXPECT_NEAR(behind.direction, ToRadians(0.05 / 7.0), 2 * kAngle * kSearch);
}

TEST(DeviationFromWay, DoesNotCountHowFarTheToolHasCome)
{
    // Both at the same place of the way, ahead of or behind where an even motion would be.
    const CutterLocation from{{0, 0, 0}, Leaning(0)};
    const CutterLocation to{{10, 20, 0}, Leaning(60)};
    for (const double share : {0.03, 0.5, 0.97}) {
        const CutterLocation tool = Between(from, to, share);
        const Deviation deviation = DeviationOf(tool, from, to);
        EXPECT_NEAR(deviation.position, 0.0, kLinear * kSearch);
        EXPECT_NEAR(deviation.direction, 0.0, kAngle * kSearch);
    }
}

/// The larger of both deviations, in tolerances.
double Worst(const Deviation& deviation, double linear, double angle)
{
    return std::max(deviation.position / linear, deviation.direction / angle);
}

/// The least of it over the places of the way, tried one by one and then ever closer about the
/// best ones.
double WorstByTrial(const CutterLocation& from, const CutterLocation& to,
                    const CutterLocation& tool, double linear, double angle)
{
    const auto at = [&](double share) {
        const CutterLocation place = Between(from, to, share);
        return Worst({host::Length(tool.position - place.position),
                      AngleBetween(tool.direction, place.direction)},
                     linear, angle);
    };
    constexpr int kPlaces = 400;
    constexpr int kRounds = 6;
    double low = 0.0;
    double high = 1.0;
    double best = 0.0;
    double least = std::numeric_limits<double>::infinity();
    for (int round = 0; round < kRounds; ++round) {
        const double step = (high - low) / kPlaces;
        for (int i = 0; i <= kPlaces; ++i) {
            const double share = low + i * step;
            if (at(share) < least) {
                least = at(share);
                best = share;
            }
        }
        low = std::max(0.0, best - 2.0 * step);
        high = std::min(1.0, best + 2.0 * step);
    }
    return least;
}

TEST(DeviationFromWay, IsTheLeastOfAllPlaces)
{
    constexpr std::uint32_t kSeed = 20240611;
    std::mt19937 random(kSeed);
    // Through the generator's own numbers: distributions differ from library to library.
    const auto even = [&](double low, double high) {
        return low + (high - low) * (static_cast<double>(random()) / 4294967295.0);
    };
    const auto direction = [&] {
        return host::Normalised({even(-1, 1), even(-1, 1), even(-1, 1)}).value_or(kUp);
    };
    constexpr int kCases = 1500;
    for (int i = 0; i < kCases; ++i) {
        const CutterLocation from{{even(-5, 5), even(-5, 5), even(-5, 5)}, direction()};
        // Ways with every proportion of line and turn, some with turns beyond a right angle.
        const double reach = std::pow(10.0, even(-4, 2));
        const double turn = std::pow(10.0, even(-4, 1));
        const CutterLocation to{
            from.position + reach * direction(),
            host::Normalised(from.direction + turn * direction()).value_or(kUp)};
        const CutterLocation on = Between(from, to, even(0, 1));
        const CutterLocation tool{on.position + std::pow(10.0, even(-4, 1)) * direction(),
                                  host::Normalised(Between(from, to, even(0, 1)).direction +
                                                   std::pow(10.0, even(-4, 1)) * direction())
                                      .value_or(kUp)};
        const double linear = std::pow(10.0, even(-3, 1));
        const double angle = std::pow(10.0, even(-3, 0.3));
        const double worst = Worst(DeviationFrom(from, to, tool, linear, angle), linear, angle);
        const double least = WorstByTrial(from, to, tool, linear, angle);
        EXPECT_NEAR(worst, least, 1e-8 * std::max(1.0, least)) << "case " << i;
    }
}

TEST(DeviationFromWay, FindsTheEndBehindTheFarthestDirection)
{
    // The way turns by 170 degrees. The tool leans by -30: beyond 150 of the turn every place is
    // nearer again, and the end is 160 degrees from it, the beginning 30. With 20 degrees and 1 mm
    // as tolerances the beginning, 100 mm behind, counts 100, the end, 2 mm ahead, 8.
    const CutterLocation from{{0, 0, 0}, Leaning(0)};
    const CutterLocation to{{102, 0, 0}, Leaning(170)};
    const Deviation deviation =
        DeviationFrom(from, to, {{100, 0, 0}, Leaning(-30)}, 1.0, ToRadians(20));
    EXPECT_NEAR(deviation.position, 2.0, 1e-8);
    EXPECT_NEAR(deviation.direction, ToRadians(160), 1e-8);
}

TEST(DeviationFromWay, IsANumberForEveryFiniteInput)
{
    constexpr double kHuge = std::numeric_limits<double>::max();
    constexpr double kTiny = std::numeric_limits<double>::denorm_min();
    const std::vector<double> values{0.0, -0.0, kTiny, -kTiny, 1e-200, 1.0, -1e200, kHuge, -kHuge};
    const std::vector<Vec3> directions{kUp, {0, 0, -1}, {1, 0, 0}, LeaningOff(120, 5)};
    const std::vector<double> tolerances{kTiny, 1e-9, 1.0, kHuge};
    for (const double a : values) {
        for (const double b : values) {
            for (const double c : values) {
                for (const Vec3& end : directions) {
                    for (const double tolerance : tolerances) {
                        const CutterLocation from{{a, b, c}, kUp};
                        const CutterLocation to{{b, c, a}, end};
                        const CutterLocation tool{{c, -a, b}, LeaningOff(-40, 3)};
                        const Deviation deviation =
                            DeviationFrom(from, to, tool, tolerance, tolerance);
                        EXPECT_GE(deviation.position, 0.0);
                        EXPECT_GE(deviation.direction, 0.0);
                        EXPECT_LE(deviation.direction, host::kPi);
                        for (const double share : {0.0, 0.3, 1.0}) {
                            for (const double x : Between(from, to, share).position) {
                                EXPECT_TRUE(std::isfinite(x));
                            }
                        }
                    }
                }
            }
        }
    }
}

} // namespace
