#ifndef TRUNNION_HOST_PLANNER_PLAN_QUESTIONS_H
#define TRUNNION_HOST_PLANNER_PLAN_QUESTIONS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "planner/Candidates.h"
#include "planner/Choice.h"
#include "planner/MotionBuilder.h"
#include "planner/PathTargets.h"
#include "planner/RowMaker.h"
#include "text/Bytes.h"
#include "toolpath/PathBytes.h"

// What the rank that leads a plan asks of the others. A question brings the points along that it is
// about, so that the others need not hold the path.
namespace host
{

/// Successive points of a section, under the numbers that they have in it.
struct AskedPoints
{
    PathPart part;
    std::vector<Vec3> xAxes; //!< of the tool at each of them; empty where they do not count

    static AskedPoints Of(const PathTargets& targets, std::size_t first, std::size_t end);
};

/// Which candidates there are.
struct FindQuestion
{
    AskedPoints points;
    std::size_t begin{0};
    std::size_t end{0};
};

/// Where a solution leads: of the task's starts there is one.
struct FollowQuestion
{
    AskedPoints points; //!< from `task.from` on
    FollowTask task;
};

/// Which rows lead through points whose states are chosen.
struct BuildQuestion
{
    AskedPoints points; //!< the two before `begin` as well
    std::size_t begin{0};
    std::size_t end{0};
    JointValues start;         //!< where the axes stand before the section
    JointValues turns;         //!< near which they stand at the first of the points
    CandidateBlock candidates; //!< of the points
    std::vector<ChosenState> chosen;
    RowMaker maker{0, {}, {}};
};

enum class QuestionKind : std::uint8_t { Find, Follow, Build };

std::string BytesOf(const FindQuestion& question);
std::string BytesOf(const FollowQuestion& question);
std::string BytesOf(const BuildQuestion& question);
bool Take(ByteReader& bytes, FindQuestion& question);
bool Take(ByteReader& bytes, FollowQuestion& question);
bool Take(ByteReader& bytes, BuildQuestion& question);

void PutWay(ByteWriter& bytes, const FollowedWay& way);
bool TakeWay(ByteReader& bytes, FollowedWay& way);

/// Where a motion will stand before `begin`, told from the two points before it, which have states:
/// right unless something unusual has come before.
/// @param turns near which the axes stand at the first of the two
MotionStand ForetoldStand(Workplace& place, const ChosenMotion& motion, const JointValues& turns,
                          std::size_t begin);
/// How many points before a stretch it takes to foretell where the motion stands.
constexpr std::size_t kPointsToForetell = 2;

} // namespace host

#endif
