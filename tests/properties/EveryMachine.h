#ifndef TRUNNION_TESTS_PROPERTIES_EVERY_MACHINE_H
#define TRUNNION_TESTS_PROPERTIES_EVERY_MACHINE_H

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "support/Fixtures.h"
#include "support/Random.h"

// What the properties have in common. Each is tried on every fixture machine.
namespace test
{

constexpr double kQuarterTurn = 1.5707963267948966;

inline bool Contains(const IkJoint& joint, double value)
{
    return value >= joint.GetLowBound() && value <= joint.GetHiBound();
}

/// Values inside the bounds, the bounds themselves and special angles among them.
inline std::vector<double> RandomJointValues(const Fixture& fixture, Random& random)
{
    std::vector<double> values;
    for (const IkJoint* joint : fixture.joints) {
        const double low = joint->GetLowBound();
        const double high = joint->GetHiBound();
        double value = random.Between(low, high);
        if (random.OneIn(8)) {
            const double special =
                random.OneOf({0.0, kQuarterTurn, -kQuarterTurn, 2 * kQuarterTurn, low, high});
            value = Contains(*joint, special) ? special : value;
        }
        values.push_back(value);
    }
    return values;
}

/// A start near `values`: within 10 mm and 0.1 rad, inside the bounds.
inline std::vector<double> StartNear(const Fixture& fixture, std::vector<double> values,
                                     Random& random)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        const IkJoint& joint = *fixture.joints[i];
        const double reach = joint.IsRotary() ? 0.1 : 10.0;
        values[i] += random.Between(-reach, reach);
        values[i] = std::min(std::max(values[i], joint.GetLowBound()), joint.GetHiBound());
    }
    return values;
}

inline IkEndState PoseAt(const Fixture& fixture, const std::vector<double>& values)
{
    IkJtStateVector states = fixture.States(values);
    return fixture.stream->SolveFK(states, false, nullptr, nullptr, false);
}

inline double Distance(const IkEndState& a, const IkEndState& b)
{
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
        const double d = a.GetCompleteState()[i][3] - b.GetCompleteState()[i][3];
        sum += d * d;
    }
    return std::sqrt(sum);
}

/// Angle between the tool axes, well conditioned for small ones: |a - b| is its chord.
inline double Angle(const IkEndState& a, const IkEndState& b)
{
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
        const double d = a.GetCompleteState()[i][2] - b.GetCompleteState()[i][2];
        sum += d * d;
    }
    return 2 * std::asin(std::min(1.0, std::sqrt(sum) / 2));
}

class EveryMachine : public ::testing::TestWithParam<test::NamedFixture>
{
  protected:
    const Fixture fixture = GetParam().make();
    IkStream& stream = *fixture.stream;
};

} // namespace test

#endif
