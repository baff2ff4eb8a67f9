#include "solve/StartConfigurations.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

#include "geometry/Frame.h"
#include "geometry/Units.h"

namespace host
{

namespace
{

/// The bases of the axes' sequences; axes beyond them are not spread.
constexpr std::array<std::size_t, 16> kPrimes{2,  3,  5,  7,  11, 13, 17, 19,
                                              23, 29, 31, 37, 41, 43, 47, 53};

/// Eight values an axis, up to a number with which the nearest configuration leads to the target
/// four times in five on a six-axis arm; twice as many add two per cent and take twice as long to
/// look through.
std::size_t CountFor(std::size_t spreadAxes)
{
    constexpr std::size_t kMost = 1024;
    constexpr std::size_t kAxesOfMost = 4;
    return spreadAxes >= kAxesOfMost ? kMost : std::size_t{1} << (3 * spreadAxes);
}

/// The digits of `index` mirrored at the point: evenly spread over 0 to 1 however many are taken.
double Halton(std::size_t index, std::size_t base)
{
    double value = 0.0;
    double weight = 1.0;
    for (std::size_t rest = index; rest > 0; rest /= base) {
        weight /= static_cast<double>(base);
        value += weight * static_cast<double>(rest % base);
    }
    return value;
}

struct Span
{
    double low;
    double high;
};

/// What of an axis is worth starting from: no more than a turn of it.
Span UsefulSpan(const Axis& axis)
{
    const double low = axis.joint->GetLowBound();
    const double high = axis.joint->GetHiBound();
    if (!std::isfinite(low) || !std::isfinite(high)) {
        const double middle = std::clamp(axis.initial, low, high);
        return {std::max(low, middle - kTurn / 2.0), std::min(high, middle + kTurn / 2.0)};
    }
    const double middle = low + (high - low) / 2.0;
    return high - low > kTurn ? Span{middle - kTurn / 2.0, middle + kTurn / 2.0} : Span{low, high};
}

/// Where a linear axis waits: a solve's first pass moves it where it is needed.
double WaitingPlace(const Axis& axis)
{
    const double middle =
        axis.joint->GetLowBound() + (axis.joint->GetHiBound() - axis.joint->GetLowBound()) / 2.0;
    return std::isfinite(middle) ? middle : axis.initial;
}

std::vector<std::size_t> Without(const std::vector<std::size_t>& from,
                                 const std::vector<std::size_t>& taken)
{
    std::vector<std::size_t> rest;
    std::set_difference(from.begin(), from.end(), taken.begin(), taken.end(),
                        std::back_inserter(rest));
    return rest;
}

/// What of `vector` is across all of `slides`.
Vec3 Across(Vec3 vector, const std::vector<Vec3>& slides)
{
    for (const Vec3& slide : slides) {
        vector = vector - Dot(vector, slide) * slide;
    }
    return vector;
}

} // namespace

StartConfigurations::StartConfigurations(PointSolver& solver, const JointValues& at)
{
    const std::vector<const Axis*>& axes = solver.Axes();
    std::vector<std::size_t> rotary = solver.FreeRotaryAxes();
    linear = Without(solver.FreeAxes(), rotary);
    rotary.resize(std::min(rotary.size(), kPrimes.size()));

    JointValues joints = at;
    for (const std::size_t i : linear) {
        joints[i] = WaitingPlace(*axes[i]);
    }
    const std::size_t count = CountFor(rotary.size());
    all.reserve(count);
    for (std::size_t index = 1; index <= count; ++index) {
        for (std::size_t k = 0; k < rotary.size(); ++k) {
            const Span span = UsefulSpan(*axes[rotary[k]]);
            joints[rotary[k]] = span.low + Halton(index, kPrimes[k]) * (span.high - span.low);
        }
        all.push_back(At(solver, joints));
    }
    lengthOfOneRadian = OneRadian();
}

StartConfigurations::Configuration StartConfigurations::At(PointSolver& solver,
                                                           const JointValues& joints) const
{
    const IkXformMat partToTool = solver.PoseAt(joints);
    Configuration made{
        joints, {Column(partToTool, 3), Column(partToTool, 2)}, Column(partToTool, 0), {}};
    for (const std::size_t i : linear) {
        constexpr double kLeastAcross = 1e-6; // of length 1: below it two axes run alike
        JointValues moved = joints;
        moved[i] += 1.0;
        const Vec3 slide =
            Across(Column(solver.PoseAt(moved), 3) - made.tool.position, made.slides);
        if (Length(slide) > kLeastAcross) {
            made.slides.push_back(*Normalised(slide));
        }
    }
    return made;
}

double StartConfigurations::OneRadian() const
{
    // Of the places that a six-axis arm reaches, an eighth of their spread gave the best first
    // starts; half and twice as much gave nearly the same.
    constexpr double kShareOfSpread = 1.0 / 8.0;
    constexpr double kLeastShareOfDistance = 1e-6; // below it the spread is rounding
    const auto count = static_cast<double>(all.size());
    const Vec3 sum = std::accumulate(
        all.begin(), all.end(), Vec3{},
        [](const Vec3& before, const Configuration& one) { return before + one.tool.position; });
    const Vec3 mean = (1.0 / count) * sum;
    double squares = 0.0;
    double farthest = 0.0;
    for (const Configuration& one : all) {
        const Vec3 off = Across(one.tool.position - mean, one.slides);
        squares += Dot(off, off);
        farthest = std::max(farthest, Length(one.tool.position));
    }
    const double length =
        std::max(kShareOfSpread * std::sqrt(squares / count), kLeastShareOfDistance * farthest);
    return length > 0.0 ? length : 1.0;
}

double StartConfigurations::SquaredDistance(const Configuration& from, const PathTarget& to) const
{
    const Vec3 way = Across(to.at.position - from.tool.position, from.slides);
    const double ways = Dot(way, way) / (lengthOfOneRadian * lengthOfOneRadian);
    // Squared chords: of the turn from one direction, or one orientation, to the other.
    const double sameDirection = Dot(from.tool.direction, to.at.direction);
    if (!to.xAxis) {
        return ways + 2.0 * (1.0 - sameDirection);
    }
    const double trace =
        Dot(from.xAxis, *to.xAxis) + sameDirection +
        Dot(Cross(from.tool.direction, from.xAxis), Cross(to.at.direction, *to.xAxis));
    return ways + 3.0 - trace;
}

std::vector<std::size_t> StartConfigurations::NearestTo(const PathTarget& target,
                                                        std::size_t count) const
{
    constexpr double kFarthest = std::numeric_limits<double>::max();
    std::vector<std::pair<double, std::size_t>> order;
    order.reserve(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const double distance = SquaredDistance(all[i], target);
        order.emplace_back(std::isfinite(distance) ? distance : kFarthest, i);
    }
    const auto end = order.begin() + static_cast<std::ptrdiff_t>(std::min(count, order.size()));
    std::partial_sort(order.begin(), end, order.end());
    std::vector<std::size_t> nearest;
    std::transform(order.begin(), end, std::back_inserter(nearest),
                   [](const auto& one) { return one.second; });
    return nearest;
}

} // namespace host
