#ifndef TRUNNION_HOST_PLANNER_CANDIDATES_H
#define TRUNNION_HOST_PLANNER_CANDIDATES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "planner/Workplace.h"

namespace host
{

/// The solutions at some successive points. What stands for a point depends on the block's own
/// points alone, so that blocks may be found in any order and by anyone.
struct CandidateBlock
{
    std::size_t firstPoint{0};
    std::vector<std::uint32_t> ends;   //!< for each point, the end of its candidates
    std::vector<double> joints;        //!< of all candidates, one after another
    std::vector<std::int8_t> branches; //!< of all candidates; 0 where the way tells them apart
    /// Of all candidates: the place, among those of the point before, of the one it continues; -1
    /// where it begins.
    std::vector<std::int8_t> parents;
    /// Where the candidates of the block's last point lead at the next block's first; empty where
    /// they lead nowhere, or where nothing follows.
    std::vector<JointValues> exits;
};

/// Whether a block holds together, as one that was found does: for one out of a file.
bool IsConsistent(const CandidateBlock& block, std::size_t numAxes);

/// The candidates of the last point before a block that settles where all axes stand.
struct KnownCandidates
{
    std::size_t point{0};
    std::vector<JointValues> joints;
};

/// The candidates of successive points of a path. The ways through each block are joined to those
/// through the one before it, and the branches that only the way tells apart are numbered in the
/// order in which they appear.
class CandidateTable
{
  public:
    /// How a block goes on from the one before it.
    enum class Joint {
        ByExits,  //!< where the candidates before it lead tells which of its own continue them
        ByParents //!< it was found from them
    };

    /// From the first point on.
    CandidateTable(std::vector<const Axis*> ofAxes, std::size_t perBlock, Joint betweenBlocks)
        : axes(std::move(ofAxes)), blockSize(perBlock), joint(betweenBlocks)
    {}
    /// Some points out of another table.
    static CandidateTable OfSlice(std::vector<const Axis*> ofAxes, CandidateBlock slice);

    /// Whether the candidates of a block's first point continue such as there are.
    bool Continues(const CandidateBlock& block) const;
    /// Blocks come in the order of their points.
    void Append(CandidateBlock block);
    const std::vector<CandidateBlock>& Blocks() const { return blocks; }
    /// Of the points for which there are blocks.
    std::size_t EndPoint() const;

    std::size_t NumAxes() const { return axes.size(); }
    std::size_t CountAt(std::size_t point) const;
    /// Its values, one for each axis; valid until the next block comes.
    const double* JointsAt(std::size_t point, std::size_t candidate) const;
    int BranchAt(std::size_t point, std::size_t candidate) const;
    int ParentAt(std::size_t point, std::size_t candidate) const;
    /// Some points with all that is known of them by now.
    CandidateBlock Slice(std::size_t begin, std::size_t end) const;

  private:
    struct Place
    {
        std::size_t block;
        std::size_t begin;
        std::size_t end;
    };
    Place PlaceOf(std::size_t point) const;
    void LinkFirstPoint();
    void NumberBranches();
    void NumberBranchesAt(std::size_t point);

    std::vector<const Axis*> axes;
    std::size_t blockSize;
    Joint joint;
    std::size_t firstPoint{0};
    std::vector<CandidateBlock> blocks;
    std::vector<std::vector<std::int8_t>> numbers; // of the branches, candidate by candidate
    int known{0};                                  // how many branches have been numbered
};

/// Where a solution leads, from one point to the next that settles where all axes stand, until it
/// is lost.
using FollowedWay = std::vector<JointValues>;

/// Solutions at point `from` that are to be followed through the points from `begin` to `end`.
struct FollowTask
{
    std::size_t from;
    std::size_t begin;
    std::size_t end;
    std::vector<JointValues> starts;
};

/// Finds the distinct solutions at the points of a path. Where two rotary axes direct the tool,
/// their angles lead to them at each point by itself. Elsewhere each one known is continued from
/// point to point, and where a block begins, or a branch is lost, they are sought afresh.
class CandidateFinder
{
  public:
    /// Follows each of the starts by itself; so others may do it.
    using Following = std::function<std::vector<FollowedWay>(const FollowTask& task)>;

    /// @param following empty where the finder is to do it
    explicit CandidateFinder(Workplace& at, Following following = {});

    /// How many points a block holds: so many that seeking afresh costs little beside continuing,
    /// so few that there are blocks to share out.
    static constexpr std::size_t kBlockPoints = 128;
    /// @param before on redundant machines, where a solution found afresh would not continue any
    /// other; elsewhere a block stands by itself
    CandidateBlock FindBlock(std::size_t firstPoint, std::size_t endPoint,
                             const KnownCandidates& before = {});
    FollowedWay FollowOn(JointValues joints, std::size_t from, std::size_t begin, std::size_t end);

  private:
    struct Candidate
    {
        JointValues joints;
        int branch{0};
        int parent{-1};
        // Where it leads, once that is known.
        std::size_t way{kNoWay};
        std::size_t step{0};
    };
    using Candidates = std::vector<Candidate>;
    static constexpr std::size_t kNoWay = static_cast<std::size_t>(-1);

    bool IsSettled(std::size_t point) const;
    Candidates FindAt(std::size_t point, Candidates& known, std::size_t from, std::size_t end);
    Candidates Continue(Candidates& known, std::size_t from, std::size_t point, std::size_t end);
    void FollowAll(Candidates& known, std::size_t from, std::size_t point, std::size_t end);
    bool Follow(JointValues& joints, std::size_t from, std::size_t point);
    void SeekAfresh(std::size_t point, Candidates& into);
    std::vector<JointValues> Seek(std::size_t point);
    std::vector<JointValues> SeekByPair(std::size_t point);
    std::vector<JointValues> SeekByHybridSolver(std::size_t point);
    void Add(Candidate candidate, Candidates& into) const;
    JointValues OnBaseTurns(JointValues joints) const;
    bool MayHoldMore(const Candidates& found, const Candidates& before, std::size_t point) const;

    Workplace& place;
    Following follow;
    std::vector<FollowedWay> ways; // of the block
};

} // namespace host

#endif
