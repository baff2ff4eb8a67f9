#include "planner/TurnForecast.h"

#include "planner/JointSpace.h"

namespace host
{

const JointValues& TurnForecast::At(std::size_t point)
{
    for (; next <= point; ++next) {
        if (chosen.HasState(next)) {
            Take(table.JointsAt(next, static_cast<std::size_t>(chosen.At(next).candidate)));
        }
    }
    return near;
}

void TurnForecast::StartAgain(const JointValues& joints, std::size_t point)
{
    near = joints;
    next = point;
}

void TurnForecast::Take(const double* joints)
{
    for (std::size_t i = 0; i < axes.size(); ++i) {
        near[i] = axes[i]->isRotary && !CountsTurns(*axes[i])
                      ? OnNearestTurn(*axes[i], joints[i], near[i])
                      : joints[i];
    }
}

} // namespace host
