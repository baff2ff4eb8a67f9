#ifndef TRUNNION_HOST_PLANNER_TURN_FORECAST_H
#define TRUNNION_HOST_PLANNER_TURN_FORECAST_H

#include <cstddef>
#include <vector>

#include "planner/Candidates.h"
#include "planner/Choice.h"
#include "planner/Workplace.h"

namespace host
{

/// Near which values the axes whose turns do not count will stand, from point to point, told from
/// the chosen states alone.
class TurnForecast
{
  public:
    TurnForecast(const Workplace& place, const CandidateTable& ofTable,
                 const ChosenStates& ofPoints)
        : axes(place.Axes()), table(ofTable), chosen(ofPoints), near(place.Start())
    {}

    /// At this point, which is not before the last one asked for.
    const JointValues& At(std::size_t point);
    /// From where the axes are found to stand before this point.
    void StartAgain(const JointValues& joints, std::size_t point);

  private:
    void Take(const double* joints);

    const std::vector<const Axis*>& axes;
    const CandidateTable& table;
    const ChosenStates& chosen;
    JointValues near;
    std::size_t next{0};
};

} // namespace host

#endif
