#ifndef TRUNNION_HOST_PLANNER_MOTION_STRETCH_H
#define TRUNNION_HOST_PLANNER_MOTION_STRETCH_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "motion/Event.h"
#include "motion/MotionRow.h"
#include "planner/Choice.h"
#include "planner/MotionBuilder.h"
#include "planner/Workplace.h"
#include "text/Bytes.h"

namespace host
{

/// Successive points whose rows can be built by whoever knows where the motion stands before them.
class MotionStretch final : public ChosenMotion
{
  public:
    struct Steps
    {
        std::size_t begin{0};            //!< the first point
        std::vector<MotionState> states; //!< of the point before it and of each
        std::vector<Passage> passages;   //!< to each
    };

    /// Nothing where some of the points, or the one before them, have no state: then it takes more
    /// than these points to know where the axes go.
    static std::optional<Steps> Of(const ChosenMotion& whole, std::size_t begin, std::size_t end);

    explicit MotionStretch(Steps ofPoints) : steps(std::move(ofPoints)) {}

    std::optional<MotionState> StateAt(std::size_t point) const override;
    Passage PassageTo(std::size_t point) const override;
    std::vector<JointValues> CandidatesAt(std::size_t /*point*/) const override { return {}; }
    std::size_t EndPoint() const override { return steps.begin + steps.passages.size(); }

  private:
    Steps steps;
};

/// What a builder has made of a stretch.
struct BuiltStretch
{
    struct Happening
    {
        std::size_t behindRows; //!< how many rows come before it
        Event event;
    };

    MotionStand start; //!< that it was built from
    MotionStand end;
    std::vector<MotionRow> rows;
    std::vector<Happening> events;
};

BuiltStretch BuildStretch(Workplace& place, const ChosenMotion& motion, const MotionStand& start,
                          std::size_t begin, std::size_t end);

// As bytes, from rank to rank.
void Put(ByteWriter& bytes, const MotionStand& stand);
void Put(ByteWriter& bytes, const MotionStretch::Steps& steps);
void Put(ByteWriter& bytes, const BuiltStretch& built);
bool Take(ByteReader& bytes, MotionStand& stand);
bool Take(ByteReader& bytes, MotionStretch::Steps& steps);
/// Without its start, which whoever asked for it knows.
bool Take(ByteReader& bytes, BuiltStretch& built);

/// To the last bit.
bool AreSame(const MotionStand& a, const MotionStand& b);

} // namespace host

#endif
