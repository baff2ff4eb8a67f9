#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "machine/Arrays.h"
#include "machine/Rig.h"
#include "machine/StepMethods.h"

// The selectively damped sum never shows in a stream's step, whose rotary rows are 0; here it is
// looked at by itself, with decompositions made by hand.
namespace
{

using test::ExpectNear;
using test::MatrixOf;
using test::Values;
using Matrix = TNT::Array2D<double>;

constexpr double kLimit = 0.5; // gmax [rad]

struct Case
{
    std::string name;
    std::vector<bool> rotary; // by joint
    std::vector<int> free;
    Matrix u;
    Matrix v;
    Values s;
    Matrix jacobian;
    Values error;
    Values expected;
};

Values Sum(const Case& given)
{
    IkJtStateVector states;
    std::vector<bool> locked;
    std::vector<bool> rotary = given.rotary;
    std::vector<int> rotaryIndices;
    std::vector<int> free = given.free;
    double limit = kLimit;
    const int rank = static_cast<int>(given.s.size());
    trunnion::Decomposition svd;
    svd.u = trunnion::ToArray<trunnion::Counted>(given.u);
    svd.v = trunnion::ToArray<trunnion::Counted>(given.v);
    svd.s = TNT::Array1D<trunnion::Counted>(rank);
    std::copy(given.s.begin(), given.s.end(), &svd.s[0]);
    svd.rank = rank;
    trunnion::EndVector error{static_cast<int>(given.error.size()), {}};
    std::copy(given.error.begin(), given.error.end(), error.e);
    trunnion::JointMatrix jacobian;
    trunnion::FromArray(given.jacobian, jacobian);
    trunnion::JointRow step;
    trunnion::SelectivelyDampedSum(svd, error, jacobian,
                                   {states, locked, rotary, rotaryIndices, free, limit}, step);
    return {step[0], step[0] + step.Cols()};
}

/// What is left of a rotary entry: gamma / (gamma + the largest rotary entry).
double Left(double gammaOverLimit, double largest)
{
    const double gamma = gammaOverLimit * kLimit;
    return gamma / (gamma + largest);
}

TEST(SelectiveDamping, SoftlyBoundsEachTermByHowFarItMovesTheTool)
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const Matrix e1 = MatrixOf({{1}, {0}, {0}});
    const Matrix pair = MatrixOf({{.6}, {.8}}); // with u = e1, s = 2: phi = (.6, .8) e / 2
    const Matrix one = MatrixOf({{1}});
    // gamma / gmax is 1 / M or 1, M the sum of |v_j| rho_j over s.
    const std::vector<Case> cases{
        // Column norms 5 and 2 add up in rho: .6 * 5 + .8 * (5 + 2) = 8.6
        {"rho runs on from joint to joint",
         {true, true},
         {0, 1},
         e1,
         pair,
         {2},
         MatrixOf({{3, 0}, {4, 0}, {0, 2}}),
         {4, 0, 0},
         {1.2 * Left(2 / 8.6, 1.6), 1.6 * Left(2 / 8.6, 1.6)}},
        {"magnitudes count, not signs",
         {true, true},
         {0, 1},
         e1,
         MatrixOf({{-.6}, {.8}}),
         {2},
         MatrixOf({{-3, 0}, {4, 0}, {0, -2}}),
         {-4, 0, 0},
         {1.2 * Left(2 / 8.6, 1.6), -1.6 * Left(2 / 8.6, 1.6)}},
        // phi = (1, 1) and rho anew for the second: M = 3 / 2 and (3 + 5) / 4
        {"rho starts afresh for each singular value",
         {true, true},
         {0, 1},
         MatrixOf({{1, 0}, {0, 1}, {0, 0}}),
         MatrixOf({{1, 0}, {0, 1}}),
         {2, 4},
         MatrixOf({{3, 0}, {0, 5}, {0, 0}}),
         {2, 4, 0},
         {Left(2 / 3., 1), Left(4 / 8., 1)}},
        // 5 + 2 * 2.5 = 10 over 2
        {"rotational rows count twice",
         {true},
         {0},
         MatrixOf({{1}, {0}, {0}, {0}, {0}, {0}}),
         one,
         {2},
         MatrixOf({{3}, {4}, {0}, {0}, {1.5}, {2}}),
         {4, 0, 0, 0, 0, 0},
         {2 * Left(2 / 10., 2)}},
        // 1 / (.1 / 2) = 20
        {"gamma is at most gmax",
         {true},
         {0},
         e1,
         one,
         {2},
         MatrixOf({{.1}, {0}, {0}}),
         {4, 0, 0},
         {2 * Left(1, 2)}},
        {"entries below one count as they are",
         {true},
         {0},
         e1,
         one,
         {2},
         MatrixOf({{2}, {0}, {0}}),
         {.5, 0, 0},
         {.25 * Left(1, .25)}},
        // M = 1 / .25
        {"a vanishing M counts as 1",
         {true},
         {0},
         e1,
         one,
         {.25},
         MatrixOf({{0}, {9e-11}, {0}}),
         {.5, 0, 0},
         {2 * Left(.25, 2)}},
        // M = 1.01e-10 / 1e-10
        {"an M above 1e-10 counts as it is",
         {true},
         {0},
         e1,
         one,
         {1e-10},
         MatrixOf({{0}, {1.01e-10}, {0}}),
         {2e-10, 0, 0},
         {2 * Left(1 / 1.01, 2)}},
        {"a NaN counts as gmax",
         {true},
         {0},
         e1,
         one,
         {2},
         MatrixOf({{kNan}, {0}, {0}}),
         {4, 0, 0},
         {2 * Left(1, 2)}},
        // The slide is left as it is and takes no part in rho or in the largest entry.
        {"linear joints are not damped",
         {false, true},
         {0, 1},
         e1,
         pair,
         {2},
         MatrixOf({{30, 0}, {0, 0}, {0, 5}}),
         {4, 0, 0},
         {1.2, 1.6 * Left(2 / 4., 1.6)}},
        // Free joint 0 is joint 2, which turns; free joint 1 is joint 0, which slides.
        {"flags go by joint, rows by free joint",
         {false, false, true},
         {2, 0},
         e1,
         pair,
         {2},
         MatrixOf({{3, 0}, {4, 0}, {0, 2}}),
         {4, 0, 0},
         {1.2 * Left(2 / 3., 1.2), 1.6}},
    };
    for (const Case& given : cases) {
        SCOPED_TRACE(given.name);
        ExpectNear(Sum(given), given.expected, 1e-14);
    }
}

} // namespace
