#ifndef TRUNNION_HOST_PLANNER_CHOICE_H
#define TRUNNION_HOST_PLANNER_CHOICE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <utility>
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
    std::size_t image{0}; //!< which of the candidate's states
    int branch{0};
    JointValues joints;
};

/// The states of a point. Their storage stays for those of the next.
class StateList
{
  public:
    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    const MotionState& operator[](std::size_t index) const { return states[index]; }
    std::vector<MotionState>::const_iterator begin() const { return states.begin(); }
    std::vector<MotionState>::const_iterator end() const
    {
        return states.begin() + static_cast<std::ptrdiff_t>(count);
    }

  private:
    friend class MotionRules;

    MotionState& At(std::size_t index) { return states[index]; }
    void Resize(std::size_t newCount)
    {
        count = newCount;
        states.resize(std::max(states.size(), count));
    }

    std::vector<MotionState> states; // the first so many count
    std::size_t count{0};
    std::vector<double> images; // scratch
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
    void FindStates(const CandidateTable& candidates, std::size_t point, StateList& states) const;
    /// Those of one candidate.
    void FindStates(const CandidateTable& candidates, std::size_t point, std::size_t candidate,
                    StateList& states) const;
    Way WayBetween(std::size_t from, std::size_t to) const;
    WayKind KindBetween(std::size_t from, std::size_t to) const;
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
    void FindImages(std::size_t i, double value, std::vector<double>& images) const;
    void AddStates(const CandidateTable& candidates, std::size_t point, std::size_t candidate,
                   StateList& states) const;
    static void Vary(StateList& states, std::size_t first, std::size_t axis);

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

/// The state that was chosen at a point.
struct ChosenState
{
    std::int16_t candidate{-1}; //!< less than 0 where there is none
    std::int16_t image{0};      //!< which of the candidate's states
};

/// What was chosen at successive points.
struct ChosenStates
{
    std::size_t firstPoint{0};
    std::vector<ChosenState> states; //!< of each point
    MotionCost cost;

    std::size_t EndPoint() const { return firstPoint + states.size(); }
    ChosenState At(std::size_t point) const { return states[point - firstPoint]; }
    bool HasState(std::size_t point) const { return At(point).candidate >= 0; }
};

/// Looks for the least costly motion through the candidates, changing branch at rapids and the pole
/// alone; where none leads on it breaks off as seldom as can be, and the way the user allows if it
/// can. Goes on from point to point as their candidates come.
class MotionSearch
{
  public:
    /// The candidates are those from the first point on.
    MotionSearch(const Workplace& ofPlace, const CandidateTable& ofCandidates)
        : rules(ofPlace), candidates(ofCandidates)
    {}

    /// Up to the last point that has candidates by now.
    void GoOn();
    /// The best motion up to there.
    ChosenStates Best() const;

  private:
    struct Step
    {
        std::uint16_t parent; // the state before
        std::uint8_t candidate;
        std::uint8_t image;
    };

    void TakePoint(std::size_t point);
    MotionCost BestTo(const MotionState& state, const Way& way, int continued,
                      std::uint16_t& parent) const;

    MotionRules rules;
    const CandidateTable& candidates;
    std::vector<Step> steps;       // to all states of all points, one after another
    std::vector<std::size_t> ends; // of the steps to each point
    std::size_t from{0};           // the last point that has states: these
    StateList before;
    std::vector<MotionCost> costsBefore;
    StateList states; // scratch
    std::vector<MotionCost> costs;
};

/// The motion that was chosen among candidates.
class Choice final : public ChosenMotion
{
  public:
    Choice(const Workplace& place, const CandidateTable& table, ChosenStates ofPoints)
        : rules(place), candidates(table), chosen(std::move(ofPoints))
    {}

    std::optional<MotionState> StateAt(std::size_t point) const override;
    /// The last point before this one that has a state.
    std::optional<std::size_t> PointBefore(std::size_t point) const;
    Passage PassageTo(std::size_t point) const override;
    std::vector<JointValues> CandidatesAt(std::size_t point) const override;
    std::size_t EndPoint() const override { return chosen.EndPoint(); }
    MotionCost Cost() const { return chosen.cost; }

  private:
    /// A state that was looked up before, for whoever comes back to it at the next point.
    struct Remembered
    {
        std::size_t point{0};
        std::optional<MotionState> state;
    };

    const MotionState& Remember(std::size_t point) const;

    MotionRules rules;
    const CandidateTable& candidates;
    ChosenStates chosen;
    mutable StateList looked;                     // scratch
    mutable std::array<Remembered, 2> remembered; // of an even and of an odd point
};

} // namespace host

#endif
