#include "machine/Objective.h"

#include <array>
#include <cmath>

#include "geometry/Angles.h"

namespace trunnion
{

namespace
{

double AngleInDegrees(double cosine, double directionTolerance)
{
    if (cosine > 1.0) {
        return 0.0;
    }
    if (cosine < -1.0) {
        return 180.0;
    }
    return std::fabs(1.0 - cosine) < directionTolerance ? 0.0 : ToDegrees(std::acos(cosine));
}

} // namespace

double PoseError(const IkEndState& current, const IkEndState& target, double directionTolerance)
{
    const TNT::Array1D<double> difference = target.Diff(current);
    const TNT::Array1D<double> wanted = target.GetVector();
    const TNT::Array1D<double> reached = current.GetVector();
    std::array<bool, 4> filter{};
    target.GetFilter(filter.data());

    double error = 0.0;
    int entry = 0;
    if (filter[3]) {
        for (; entry < 3; ++entry) {
            error += difference[entry] * difference[entry];
        }
    }
    for (; entry < wanted.dim(); entry += 3) {
        double cosine = 0.0;
        for (int i = entry; i < entry + 3; ++i) {
            cosine += wanted[i] * reached[i];
        }
        const double angle = AngleInDegrees(cosine, directionTolerance);
        error += angle * angle;
    }
    return error;
}

} // namespace trunnion
