#ifndef TRUNNION_HOST_PLANNER_MOTION_BUILDER_H
#define TRUNNION_HOST_PLANNER_MOTION_BUILDER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "motion/Event.h"
#include "motion/MotionRow.h"
#include "planner/Choice.h"
#include "planner/Linearisation.h"
#include "planner/Workplace.h"

namespace host
{

/// How far the motion has come between two points: all that the rows to come depend on besides what
/// was chosen.
struct MotionStand
{
    JointValues current;               //!< where the axes stand
    std::optional<std::size_t> stands; //!< the point at which they do; nothing before the first
    int branch{0};                     //!< the last one
    bool isFollowed{false}; //!< the point before was reached, so that there is a way from it
    bool isInCone{false};
    bool isNearPole{false}; //!< the way to the point leads through the cone
    std::vector<std::int8_t> isAtLimit;
    // The stretch of points at the pole that is under way: how its free axis turns.
    std::size_t poleBegin{0};
    std::size_t poleEnd{0};
    std::vector<double> poleTurns;
};

/// Turns a choice into the rows of the motion, point by point: unlimited axes on their nearest
/// turns, the free axis led over the pole, rows inserted, axes swung away from the part.
class MotionBuilder
{
  public:
    using RowTaker = std::function<void(const MotionRow&)>;
    using EventTaker = std::function<void(const Event&)>;

    enum class Purpose {
        Motion,
        /// Where the motion will stand, without the ways between the points: not quite sure, and
        /// quick. The rows are not complete.
        Forecast
    };

    /// Before the first point, where the axes stand at the workplace's start.
    MotionBuilder(Workplace& at, const ChosenMotion& ofMotion, RowTaker toRows, EventTaker toEvents,
                  Purpose ofBuilding = Purpose::Motion);

    const MotionStand& Stand() const { return now; }
    void SetStand(MotionStand stand) { now = std::move(stand); }

    /// The rows that lead to this point and the point's own. Points come in their order.
    void Build(std::size_t point);

  private:
    void BuildPoint(std::size_t point, JointValues joints, int branch);
    bool LeadTo(std::size_t point, JointValues& joints);
    Linearisation::Outcome InsertOtherWay(std::size_t point, JointValues& joints,
                                          std::vector<WayStation>& stations);
    int BranchAt(const JointValues& joints) const;
    void Fail(std::size_t point, const std::string& sentence);
    std::string WhyNot(std::size_t point, const std::vector<JointValues>& beyondLimits);

    void ForgetPole();
    void PlanPole(std::size_t point);
    std::optional<JointValues> StandAtPole(std::size_t point);

    bool Swing(std::size_t point, const MotionState& state, Passage passage);
    std::optional<JointValues> OnBranchOf(const MotionState& state, std::size_t point);

    void Emit(MotionRow row);
    void NoteLimits(MotionRow& row);
    void NotePole(std::size_t point);
    bool NoteSwing(std::size_t point, const JointValues& before, const JointValues& joints,
                   int branch);
    void Report(EventKind kind, std::size_t point, const std::string& sentence);

    Workplace& place;
    const ChosenMotion& choice;
    Purpose purpose;
    Linearisation linearisation;
    RowTaker takeRow;
    EventTaker takeEvent;

    MotionStand now;
};

} // namespace host

#endif
