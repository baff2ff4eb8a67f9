#ifndef TRUNNION_HOST_PLANNER_CHOICE_H
#define TRUNNION_HOST_PLANNER_CHOICE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <vector>

#include "planner/Candidates.h"
#include "planner/Workplace.h"

namespace host
{

/// A way to stand at a point: a candidate with each rotary axis whose turns count on one of those
/// that its limits allow. The others stand on any turn; their values count modulo turns.
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

/// How the motion gets from one state to the next.
enum class Passage {
    Straight, //!< along the way between them
    Rewind,   //!< not so: an axis has to turn back by whole turns first
    Flip      //!< not so: the axes have to swing to another branch first
};

struct Way
{
    WayKind kind{WayKind::Rapid};
    bool isInCone{false}; //!< it touches the pole cone, and does not lead through the air
};

/// What a motion costs: first how often it breaks off for good, then how often with the tool pulled
/// back, then the weighed sum.
struct MotionCost
{
    std::uint32_t refused{0};
    std::uint32_t breaks{0}; //!< all of them
    double sum{0.0};         //!< [rad]
};

inline bool operator<(const MotionCost& a, const MotionCost& b)
{
    return std::tie(a.refused, a.breaks, a.sum) < std::tie(b.refused, b.breaks, b.sum);
}

/// What ways and stands cost, and which of them there are.
class MotionRules
{
  public:
    explicit MotionRules(const Workplace& at);

    /// The states of a point in a fixed order, of each candidate those nearest to the start first.
    std::vector<MotionState> StatesAt(const CandidateTable& candidates, std::size_t point) const;
    Way WayBetween(std::size_t from, std::size_t to) const;
    /// @param parent the candidate of the point before that the one of `to` continues
    Passage PassageOn(WayKind kind, const MotionState& from, const MotionState& to,
                      int parent) const;
    /// Whether the motion breaks off for good: the user does not have it so, or the axes cannot
    /// turn back while the tool is at `from`.
    bool IsRefused(Passage passage, const MotionState& from, const MotionState& to) const;
    /// Of a motion between two states, whatever the passage.
    double TravelCost(const Way& way, const JointValues& start, const JointValues& end) const;
    double StandCost(const JointValues& joints) const;
    double StartCost(const JointValues& first) const;

  private:
    struct RotaryAxis
    {
        std::size_t index;
        bool countsTurns;
    };
    bool HasRoomToTurnBack(const MotionState& from, const MotionState& to) const;
    static double Turn(const RotaryAxis& axis, const JointValues& from, const JointValues& to);
    WayKind KindBetween(std::size_t from, std::size_t to) const;
    void FindImages(std::size_t i, double value, std::vector<double>& images) const;
    std::vector<JointValues> AllImages(JointValues joints) const;

    const Workplace& place;
    std::vector<RotaryAxis> rotary;
};

/// What was chosen at the points of a path.
class ChosenMotion
{
  public:
    ChosenMotion() = default;
    virtual ~ChosenMotion() = default;
    ChosenMotion(const ChosenMotion&) = delete;
    ChosenMotion& operator=(const ChosenMotion&) = delete;

    /// Nothing where a point has no state, or leaves the first axis of the pair free.
    virtual std::optional<MotionState> StateAt(std::size_t point) const = 0;
    /// How the motion gets to this point, which has a state.
    virtual Passage PassageTo(std::size_t point) const = 0;
    /// All the candidates of a point that has no state.
    virtual std::vector<JointValues> CandidatesAt(std::size_t point) const = 0;
    /// The end of the points of which this knows.
    virtual std::size_t EndPoint() const = 0;
};

/// The least costly motion through the candidates, changing branch at rapids and the pole alone;
/// where none leads on it breaks off as seldom as can be, and the way the user allows if it can.
class Choice final : public ChosenMotion
{
  public:
    Choice(const Workplace& place, const CandidateTable& table);

    std::optional<MotionState> StateAt(std::size_t point) const override;
    /// The last point before this one that has a state.
    std::optional<std::size_t> PointBefore(std::size_t point) const;
    Passage PassageTo(std::size_t point) const override;
    std::vector<JointValues> CandidatesAt(std::size_t point) const override;
    std::size_t EndPoint() const override { return chosen.size(); }
    MotionCost Cost() const { return total; }

  private:
    /// A state that was looked up before, for whoever comes back to it at the next point.
    struct Remembered
    {
        std::size_t point{0};
        std::optional<MotionState> state;
    };

    void Run();
    MotionRules rules;
    const CandidateTable& candidates;
    std::vector<std::int32_t> chosen; // state of each point; -1 for none
    MotionCost total;
    mutable std::array<Remembered, 2> remembered; // of an even and of an odd point
};

} // namespace host

#endif
