#ifndef TRUNNION_HOST_PLANNER_CHOICE_H
#define TRUNNION_HOST_PLANNER_CHOICE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "planner/Candidates.h"
#include "planner/Workplace.h"

namespace host
{

/// A way to stand at a point: a candidate with each of its limited rotary axes on one of the turns
/// that its limits allow. Unlimited axes stand on any turn; their values count modulo turns.
struct MotionState
{
    std::size_t candidate{0};
    int branch{0};
    JointValues joints;
};

/// The motion from one point that settles where all axes stand to the next such point.
enum class WayKind {
    Cut,   //!< straight on: the branch stays, and every axis takes the short way
    Pole,  //!< over the pole: the first axis of the pair turns as far as it likes
    Rapid, //!< through the air, or past points that are not reached: anything goes
};

/// What a motion costs: first how often it breaks off, then the weighed sum.
struct MotionCost
{
    std::uint32_t breaks{0};
    double sum{0.0}; //!< [rad]
};

inline bool operator<(const MotionCost& a, const MotionCost& b)
{
    return a.breaks != b.breaks ? a.breaks < b.breaks : a.sum < b.sum;
}

/// What ways and stands cost, and which of them there are.
class MotionRules
{
  public:
    explicit MotionRules(const Workplace& at) : place(at) {}

    /// The states of a point, in a fixed order.
    std::vector<MotionState> StatesAt(const CandidateTable& candidates, std::size_t point) const;
    WayKind WayBetween(std::size_t from, std::size_t to) const;
    /// Whether a cut or the pole leads from one state to the other without a break.
    bool IsWay(WayKind kind, const MotionState& from, const MotionState& to, int parent) const;
    /// Of a motion between two states, whatever its way.
    double TravelCost(WayKind kind, std::size_t from, std::size_t to, const JointValues& start,
                      const JointValues& end) const;
    double StandCost(const JointValues& joints) const;
    double StartCost(const JointValues& first) const;

    /// By how much axis `i` turns between two values: the short way where its limits do not say
    /// which [rad].
    double Turn(std::size_t i, double from, double to) const;

  private:
    const Workplace& place;
};

/// The least costly motion through the candidates, changing branch at rapids and the pole alone;
/// where none leads on it breaks off as seldom as can be.
class Choice
{
  public:
    Choice(const Workplace& place, const CandidateTable& table);

    /// Nothing where a point has no state, or leaves the first axis of the pair free.
    std::optional<MotionState> StateAt(std::size_t point) const;
    /// The last point before this one that has a state.
    std::optional<std::size_t> PointBefore(std::size_t point) const;
    /// Whether the motion breaks off on the way to this point, which has a state.
    bool BreaksBefore(std::size_t point) const;
    MotionCost Cost() const { return total; }

  private:
    void Run();
    MotionRules rules;
    const CandidateTable& candidates;
    std::vector<std::int32_t> chosen; // state of each point; -1 for none
    MotionCost total;
};

} // namespace host

#endif
