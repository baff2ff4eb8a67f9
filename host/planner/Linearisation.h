#ifndef TRUNNION_HOST_PLANNER_LINEARISATION_H
#define TRUNNION_HOST_PLANNER_LINEARISATION_H

#include <cstddef>
#include <vector>

#include "planner/Workplace.h"

namespace host
{

/// Where the axes stand at a share of the way to a point.
struct WayStation
{
    double share{0.0};
    JointValues joints;
    bool isAtPole{
        false}; //!< the free axis stands between its neighbours, not where the tool has it
};

/// Finds what has to be inserted between two points so that the machine, which moves its axes
/// evenly from one row to the next, keeps the tool near the straight way.
class Linearisation
{
  public:
    explicit Linearisation(Workplace& at) : place(at) {}

    enum class Outcome {
        Kept,        //!< the tool stays within the tolerances
        OutOfReach,  //!< a place on the way is not reached
        OutOfLimits, //!< on the way an axis would leave its limits
        Unsteady     //!< halving the way again and again does not bring the tool nearer to it
    };

    /// Appends the stations between the point before `point`, where the axes stand at `start`, and
    /// `point`, where they stand at `end`.
    Outcome Insert(std::size_t point, const JointValues& start, const JointValues& end,
                   std::vector<WayStation>& stations);

  private:
    Outcome Halve(const WayStation& from, const WayStation& to, int depth);
    bool IsNear(const WayStation& from, const WayStation& to);
    bool IsTurnSpread(const WayStation& from, const WayStation& to) const;
    Outcome StandBetween(const WayStation& from, const WayStation& to, WayStation& middle);
    bool IsHeldAtPole(const WayStation& from, const WayStation& to, const Vec3& direction) const;
    bool SolveBetween(const PathTarget& target, const JointValues& from, const JointValues& to,
                      JointValues& joints);
    bool SolvePairBetween(const PathTarget& target, const JointValues& from, const JointValues& to,
                          JointValues& joints);

    Workplace& place;
    std::size_t towards{0};
    std::vector<WayStation>* found{nullptr};
};

} // namespace host

#endif
