#include "machine/Objective.h"

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

double PoseError(const EndVector& current, const EndVector& target, bool hasPosition,
                 double directionTolerance)
{
    double error = 0.0;
    int entry = 0;
    if (hasPosition) {
        for (; entry < 3; ++entry) {
            const double difference = target.e[entry] - current.e[entry];
            error += difference * difference;
        }
    }
    for (; entry < target.size; entry += 3) {
        double cosine = 0.0;
        for (int i = entry; i < entry + 3; ++i) {
            cosine += target.e[i] * current.e[i];
        }
        const double angle = AngleInDegrees(cosine, directionTolerance);
        error += angle * angle;
    }
    return error;
}

double PoseError(const IkEndState& current, const IkEndState& target, double directionTolerance)
{
    if (FilterOf(current) != FilterOf(target)) {
        target.Diff(current); // throws
    }
    EndVector reached;
    EndVector wanted;
    ToEndVector(current, reached);
    ToEndVector(target, wanted);
    return PoseError(reached, wanted, FilterOf(target)[3], directionTolerance);
}

} // namespace trunnion
