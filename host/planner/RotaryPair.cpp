#include "planner/RotaryPair.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "geometry/CutterLocation.h"
#include "geometry/Frame.h"
#include "geometry/Units.h"

namespace host
{

namespace
{

constexpr double kQuarterTurn = kPi / 2.0;
constexpr double kParallel = 1e-6; // sine of the angle between axes that cannot direct a tool

Vec3 Turned(const Vec3& axis, double angle, const Vec3& vector)
{
    return std::cos(angle) * vector + std::sin(angle) * Cross(axis, vector) +
           ((1.0 - std::cos(angle)) * Dot(axis, vector)) * axis;
}

/// By which `from` turns about `axis` to come nearest to `to`.
double AngleAbout(const Vec3& axis, const Vec3& from, const Vec3& to)
{
    const Vec3 a = from - Dot(axis, from) * axis;
    const Vec3 b = to - Dot(axis, to) * axis;
    return std::atan2(Dot(axis, Cross(a, b)), Dot(a, b));
}

/// The axis of a quarter turn that takes the columns of one rotation to those of another.
Vec3 AxisBetween(const IkXformMat& before, const IkXformMat& after)
{
    // after * transpose(before) = exp(axis * 90 deg), whose skew part is the axis.
    Vec3 axis{};
    for (int column = 0; column < 3; ++column) {
        axis = axis + Cross(Column(before, column), Column(after, column));
    }
    return 0.5 * axis;
}

/// Whether the linear axes move the tool in all three dimensions.
bool ReachAnywhere(PointSolver& solver)
{
    const Vec3 origin = Column(solver.PoseAt(solver.Initial()), 3);
    std::vector<Vec3> moves;
    for (const std::size_t i : solver.FreeAxes()) {
        if (!solver.Axes()[i]->isRotary) {
            JointValues joints = solver.Initial();
            joints[i] += 1.0;
            moves.push_back(Column(solver.PoseAt(joints), 3) - origin);
        }
    }
    double volume = 0.0;
    for (std::size_t i = 0; i < moves.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            for (std::size_t k = 0; k < j; ++k) {
                volume = std::max(volume, std::fabs(Dot(moves[i], Cross(moves[j], moves[k]))));
            }
        }
    }
    return volume > kParallel;
}

} // namespace

std::optional<RotaryPair> RotaryPair::Of(PointSolver& solver)
{
    const std::vector<std::size_t> rotary = solver.FreeRotaryAxes();
    if (rotary.size() != 2 || !ReachAnywhere(solver)) {
        return std::nullopt;
    }
    const auto poseAt = [&](double a, double b) {
        JointValues joints = solver.Initial();
        joints[rotary[0]] = a;
        joints[rotary[1]] = b;
        return solver.PoseAt(joints);
    };
    const IkXformMat zero = poseAt(0.0, 0.0);
    const Vec3 a = AxisBetween(zero, poseAt(kQuarterTurn, 0.0));
    const Vec3 b = AxisBetween(zero, poseAt(0.0, kQuarterTurn));
    if (!(Length(Cross(a, b)) > kParallel)) {
        return std::nullopt;
    }
    RotaryPair pair;
    pair.firstAxis = rotary[0];
    pair.secondAxis = rotary[1];
    pair.u = a;
    pair.v = b;
    pair.r = Column(zero, 2);
    // Which comes first shows when both turn: the outer one turns the inner one's axis.
    const IkXformMat both = poseAt(kQuarterTurn, kQuarterTurn);
    const auto misfit = [&](const Vec3& outer, const Vec3& inner) {
        double sum = 0.0;
        for (int column = 0; column < 3; ++column) {
            const Vec3 turned =
                Turned(outer, kQuarterTurn, Turned(inner, kQuarterTurn, Column(zero, column)));
            sum += Length(turned - Column(both, column));
        }
        return sum;
    };
    if (misfit(b, a) < misfit(a, b)) {
        std::swap(pair.firstAxis, pair.secondAxis);
        std::swap(pair.u, pair.v);
    }
    return pair;
}

std::vector<RotaryPair::Angles> RotaryPair::Directing(const Vec3& direction) const
{
    // With z = exp(v t2) r = exp(-u t1) d, the parts of z along u and v are those of d and r
    // (subproblem 2 of Paden and Kahan); what is left stands across both, on either side.
    const Vec3 across = Cross(u, v);
    const double square = Dot(across, across);
    const double uv = Dot(u, v);
    const double alpha = (Dot(u, direction) - uv * Dot(v, r)) / square;
    const double beta = (Dot(v, r) - uv * Dot(u, direction)) / square;
    double left = (1.0 - alpha * alpha - beta * beta - 2.0 * alpha * beta * uv) / square;
    constexpr double kRounding = 1e-9; // beside the pole `left` is a difference of near equals
    if (left < -kRounding) {
        return {};
    }
    const double gamma = std::sqrt(std::max(left, 0.0));
    std::vector<Angles> found;
    for (const double side : {gamma, -gamma}) {
        const Vec3 z = alpha * u + beta * v + side * across;
        found.push_back({AngleAbout(u, z, direction), AngleAbout(v, r, z)});
    }
    return found;
}

int RotaryPair::BranchOf(double second) const
{
    return Dot(Turned(v, second, r), Cross(u, v)) >= 0.0 ? 1 : 2;
}

double RotaryPair::NearestSecond(const Vec3& direction, double first) const
{
    return AngleAbout(v, r, Turned(u, -first, direction));
}

double RotaryPair::AngleToPole(const Vec3& direction) const
{
    return std::min(AngleBetween(direction, u), AngleBetween(direction, -1.0 * u));
}

double RotaryPair::AngleToPole(const Vec3& from, const Vec3& to) const
{
    if (Dot(from, to) < 0.0) {
        // Nearly opposite directions have no plane of their own: the path says how it turns.
        const Vec3 middle = Between({{}, from}, {{}, to}, 0.5).direction;
        return std::min(AngleToPole(from, middle), AngleToPole(middle, to));
    }
    double least = std::min(AngleToPole(from), AngleToPole(to));
    const auto normal = Normalised(Cross(from, to));
    if (!normal) {
        return least;
    }
    // The place of the great circle that is nearest to an end of the pole counts when it lies
    // between the two directions.
    for (const double sign : {1.0, -1.0}) {
        const auto nearest = Normalised(sign * (u - Dot(u, *normal) * *normal));
        if (nearest && Dot(Cross(from, *nearest), *normal) >= 0.0 &&
            Dot(Cross(*nearest, to), *normal) >= 0.0) {
            least = std::min(least, AngleToPole(*nearest));
        }
    }
    return least;
}

/// By the cosine, which is at least 1 - angle^2 / 2; what is close to that is not plain.
bool RotaryPair::IsPlainlyBeyond(double angle, const Vec3& direction) const
{
    constexpr double kClose = 1e-9;
    return std::fabs(Dot(u, direction)) < 1.0 - angle * angle / 2.0 - kClose;
}

bool RotaryPair::IsNearPole(const Vec3& direction, double within) const
{
    return !IsPlainlyBeyond(within, direction) && AngleToPole(direction) <= within;
}

/// On its way the angle is less than at both ends by no more than half the turn, which for turns up
/// to a right angle is less than this share of the chord.
bool RotaryPair::PassesPole(const Vec3& from, const Vec3& to, double within) const
{
    constexpr double kHalfTurnOfChord = 0.6;
    constexpr double kLeastChord = 1e-8; // below, the plane of the turn is not plain
    const double chord = Length(to - from);
    if (Dot(from, to) >= 0.0 && (chord == 0.0 || chord >= kLeastChord)) {
        const double reach = within + kHalfTurnOfChord * chord;
        if (IsPlainlyBeyond(reach, from) && IsPlainlyBeyond(reach, to)) {
            return false;
        }
    }
    return AngleToPole(from, to) <= within;
}

} // namespace host
