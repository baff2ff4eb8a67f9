#ifndef TRUNNION_HOST_PLANNER_PATH_PLAN_H
#define TRUNNION_HOST_PLANNER_PATH_PLAN_H

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "machine/LoadedMachine.h"
#include "planner/Candidates.h"
#include "planner/Choice.h"
#include "planner/MotionTakers.h"
#include "planner/PlanOptions.h"
#include "planner/RowMaker.h"
#include "planner/Workplace.h"
#include "ranks/SharedWork.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// What is to be planned. Machine and path outlive the plan.
struct PlanRequest
{
    const LoadedMachine& machine;
    const Toolpath& path;
    std::vector<const LoadedStream*> streams; //!< of each operation
    std::vector<double> toolLengths;          //!< of each operation [length]
    /// Of each point, for streams that would leave the turn about the tool open; empty where none
    /// does, or where it is to stay open.
    std::vector<Vec3> toolXAxes;
    PlanOptions options;
    SolverSettings settings;
    RowText rowText{}; //!< nothing where no text of rows is wanted

    /// The axes of all streams that work on the path, in the machine's order: those of the rows.
    std::vector<const Axis*> Axes() const;
};

/// From a path to its motion, in two stages: first the candidates, block by block in any order,
/// then one pass that chooses among them all and builds the rows. Operations of different streams
/// are planned one after the other, each from where the one before it leaves the axes.
class PathPlan
{
  public:
    using Takers = MotionTakers;

    explicit PathPlan(const PlanRequest& request);

    std::size_t NumBlocks() const { return blocks.size(); }
    /// Points up to the end of this block.
    std::size_t PointsUpTo(std::size_t block) const;
    /// Finds the candidates of a block. Does not depend on what was found before, but on redundant
    /// machines: there it has to be the next block.
    CandidateBlock FindBlock(std::size_t block);
    /// Whether this could be the candidates of the next block.
    bool Accepts(const CandidateBlock& block) const;
    /// Takes the candidates of the next block.
    void Append(CandidateBlock next);
    std::size_t NumAppended() const { return appended; }
    const CandidateBlock& Appended(std::size_t block) const;

    const std::vector<const Axis*>& Axes() const { return axes; } //!< of the rows
    /// Chooses the motion through the candidates appended so far and builds its rows, for as long
    /// as it may go on. False when it might not. With other ranks to help the rows are the same.
    bool Build(const Takers& takers, WorkLeader* leader = nullptr);

    /// Finds and appends the candidates that are missing, with other ranks to help.
    /// @param mayGoOn asked, with the number of blocks appended, again and again
    bool FindShared(WorkLeader& leader, const std::function<bool(std::size_t appended)>& mayGoOn);

  private:
    /// Successive points of one stream.
    struct Section
    {
        std::size_t firstPoint{0};
        std::unique_ptr<Workplace> place;
        std::vector<std::size_t> axisOf; // for each of its axes, the place among those of the rows
        std::unique_ptr<CandidateTable> table;
        std::unique_ptr<MotionSearch> search;
        std::size_t firstBlock{0};
    };
    struct Block
    {
        std::size_t section;
        std::size_t begin; // points of the section
        std::size_t end;
    };

    KnownCandidates KnownBefore(const Block& block) const;
    CandidateBlock FindFollowing(const Block& block, WorkLeader& leader) const;
    bool FindFresh(std::size_t end, WorkLeader& leader,
                   const std::function<bool(std::size_t appended)>& mayGoOn);
    void AddSection(const PlanRequest& request, std::size_t begin, std::size_t end);
    void StartFrom(Section& section, const std::vector<double>& values) const;
    bool BuildSection(Section& section, const Takers& takers, WorkLeader* leader,
                      std::vector<double>& values);
    bool BuildAlone(const Section& section, const Choice& choice, RowMaker maker,
                    const Takers& takers) const;

    RowText rowText;
    std::vector<const Axis*> axes;
    std::vector<double> initial; // values of these
    std::vector<Section> sections;
    std::vector<Block> blocks;
    std::size_t appended{0};
};

} // namespace host

#endif
