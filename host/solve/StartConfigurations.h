#ifndef TRUNNION_HOST_SOLVE_START_CONFIGURATIONS_H
#define TRUNNION_HOST_SOLVE_START_CONFIGURATIONS_H

#include <cstddef>
#include <vector>

#include "geometry/Vec3.h"
#include "solve/PointSolver.h"

namespace host
{

/// Joint values spread evenly over what a stream's free rotary axes may do, each with the place of
/// the tool there, so that a solve can start near where it is to end.
///
/// They hold for the locks and the tool length at the time of their making.
class StartConfigurations
{
  public:
    /// @param at values for the axes that are not spread: locked ones stay there
    StartConfigurations(PointSolver& solver, const JointValues& at);

    std::size_t Size() const { return all.size(); }
    const JointValues& operator[](std::size_t index) const { return all[index].joints; }

    /// The indices of the `count` configurations (or all, where there are fewer) whose tool is
    /// nearest to `target`, the nearest first.
    std::vector<std::size_t> NearestTo(const PathTarget& target, std::size_t count) const;

  private:
    struct Configuration
    {
        JointValues joints;
        CutterLocation tool; //!< in part coordinates
        Vec3 xAxis{};        //!< of the tool
        /// Across each other and of length 1: along these the linear axes move the tool's end.
        std::vector<Vec3> slides;
    };

    Configuration At(PointSolver& solver, const JointValues& joints) const;
    double OneRadian() const;
    double SquaredDistance(const Configuration& from, const PathTarget& to) const;

    std::vector<std::size_t> linear; //!< indices of the free linear axes
    std::vector<Configuration> all;
    double lengthOfOneRadian{1.0}; //!< [length] that counts as much as a radian
};

} // namespace host

#endif
