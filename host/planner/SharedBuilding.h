#ifndef TRUNNION_HOST_PLANNER_SHARED_BUILDING_H
#define TRUNNION_HOST_PLANNER_SHARED_BUILDING_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "planner/BuiltStretch.h"
#include "planner/Candidates.h"
#include "planner/Choice.h"
#include "planner/MotionTakers.h"
#include "planner/RowMaker.h"
#include "planner/TurnForecast.h"
#include "planner/Workplace.h"
#include "ranks/SharedWork.h"

namespace host
{

/// A section whose states are chosen.
struct ChosenSection
{
    Workplace& place;
    const CandidateTable& candidates;
    const ChosenStates& chosen;
    const Choice& choice; //!< the same as a motion
    const RowMaker& maker;
    const RowText& rowText;
};

/// Builds the rows of a section with other ranks to help, stretch by stretch. Where the motion will
/// stand at the begin of each is foretold; one that was built from where it does not begin after
/// all, or that could not be foretold, is built when all before it is.
class SharedBuilding
{
  public:
    SharedBuilding(const ChosenSection& ofSection, const MotionTakers& byTakers);

    /// False when it might not go on.
    bool Run(WorkLeader& leader);

  private:
    std::size_t BeginOf(std::size_t stretch) const;
    std::size_t EndOf(std::size_t stretch) const;
    bool IsForeseen(std::size_t stretch) const;
    void Prepare(std::size_t stretch);
    std::string QuestionOf(std::size_t stretch) const;
    BuiltStretch BuildForeseen(std::size_t stretch) const;
    BuiltStretch Build(std::size_t stretch, const MotionStand& start) const;
    static BuiltStretch Unpack(std::string_view answer);
    void Take(std::size_t stretch, BuiltStretch built);
    void HandOn(const BuiltStretch& built);

    ChosenSection section;
    const MotionTakers& takers;
    TurnForecast forecast;
    std::map<std::size_t, JointValues> turns; // before each stretch that is foreseen
    MotionStand actual;                       // behind the last stretch that was taken
    std::size_t taken{0};                     // points
    MotionRow row;                            // scratch
};

} // namespace host

#endif
