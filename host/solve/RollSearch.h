#ifndef TRUNNION_HOST_SOLVE_ROLL_SEARCH_H
#define TRUNNION_HOST_SOLVE_ROLL_SEARCH_H

#include <cstddef>
#include <memory>
#include <vector>

#include "machine/LoadedMachine.h"
#include "solve/PointSolver.h"
#include "solve/SampledSolver.h"
#include "solve/ToolRoll.h"
#include "toolpath/Toolpath.h"

namespace host
{

/// Chooses the tool's x axis by what the machine makes of it: for each run one angle, every 15
/// degrees, by which the axis is turned from where the reference has it.
///
/// An angle is tried at up to 8 points of the run, from each of up to 8 ways to stand at the first
/// of them. The one with the fewest points lost, where the machine has to let go of its way or does
/// not reach, is the best; among those the one with the least travel of the rotary axes, with
/// something on top where an axis comes near its limit. The angle of the run before, at first none,
/// is kept where it loses no point and costs little, or where no other is better by a tenth.
///
/// A path of more than 32 runs is searched in 32 groups of successive runs, so that there are at
/// most 32 * 25 * (17 + 8 * 7) solves.
class RollSearch
{
  public:
    /// @param ofStreams, @param ofLengths one entry for each operation; lengths in [length]
    RollSearch(const LoadedMachine& ofMachine, std::vector<const LoadedStream*> ofStreams,
               std::vector<double> ofLengths, const SolverSettings& withSettings);

    /// At each point of the path.
    std::vector<Vec3> XAxes(const Toolpath& path, const ToolRoll& roll);

  private:
    struct Trial
    {
        std::size_t lost{0};
        double cost{0.0};   //!< [rad]
        JointValues joints; //!< at the last point reached
        bool operator<(const Trial& other) const
        {
            return lost != other.lost ? lost < other.lost : cost < other.cost;
        }
    };
    /// The machine with the tool of an operation.
    struct Seat
    {
        Seat(const LoadedMachine& ofMachine, const LoadedStream& ofStream, double ofLength,
             const SolverSettings& withSettings);
        const LoadedStream* stream;
        double toolLength; //!< [length]
        PointSolver solver;
        SampledSolver sampled;
    };

    /// The points of one group that are looked at.
    struct Samples
    {
        std::vector<CutterLocation> at;
        std::vector<Vec3> xAxes; //!< by the reference
    };

    bool IsSeated(int operation) const;
    void TakeSeat(int operation);
    Samples SamplesOf(const Toolpath& path, const Run& points,
                      const std::vector<Vec3>& xAxes) const;
    double ChooseTurn(const Samples& samples, double before);
    /// What the angle has to offer where that is better than `best`, else `best`.
    Trial Try(const Samples& samples, double turn, Trial best);
    Trial Follow(const std::vector<PathTarget>& targets, Trial trial, const Trial& best);
    void Move(Trial& trial, const JointValues& to, double weight) const;

    const LoadedMachine& machine;
    std::vector<const LoadedStream*> streams;
    std::vector<double> toolLengths;
    SolverSettings settings;
    std::unique_ptr<Seat> seat;
    JointValues joints; // where the last group ends
};

} // namespace host

#endif
