#include "planner/PathTargets.h"

#include "solve/ToolRoll.h"

namespace host
{

CutterLocation PathTargets::LocationAt(std::size_t point) const
{
    return {points[point].position, points[point].direction};
}

PathTarget PathTargets::At(std::size_t point) const
{
    PathTarget target{LocationAt(point), std::nullopt};
    if (!xAxes.empty()) {
        target.xAxis = XAxisAt(point);
    }
    return target;
}

PathTarget PathTargets::Towards(std::size_t point, double share) const
{
    const CutterLocation from = LocationAt(point - 1);
    const CutterLocation to = LocationAt(point);
    PathTarget target{Between(from, to, share), std::nullopt};
    if (!xAxes.empty()) {
        target.xAxis = XAxisBetween({from.direction, XAxisAt(point - 1)},
                                    {to.direction, XAxisAt(point)}, share);
    }
    return target;
}

} // namespace host
