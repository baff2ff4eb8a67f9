#ifndef TRUNNION_HOST_PLANNER_ROW_MAKER_H
#define TRUNNION_HOST_PLANNER_ROW_MAKER_H

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "motion/MotionRow.h"

namespace host
{

/// Appends what a table says of a row; `line` is where the toolpath has its point.
using RowText = std::function<void(const MotionRow& row, int line, std::string& text)>;

/// Makes rows of a part of the path, which one stream moves, rows of the whole path: with its
/// numbers, and with values for the axes of all streams.
class RowMaker
{
  public:
    /// @param first the number of the part's first point
    /// @param ofAxes for each axis of the part's rows, its place among those of the whole
    /// @param standing where the axes of the whole stand
    RowMaker(std::size_t first, std::vector<std::size_t> ofAxes, std::vector<double> standing)
        : firstPoint(first), axisOf(std::move(ofAxes)), values(std::move(standing))
    {}

    /// Valid until the next one is made.
    const MotionRow& Made(const MotionRow& row)
    {
        for (std::size_t i = 0; i < row.joints.size(); ++i) {
            values[axisOf[i]] = row.joints[i];
        }
        made.point = row.point + firstPoint;
        made.joints = row.flags.hasFailed ? std::vector<double>{} : values;
        made.asked = row.asked;
        made.error = row.error;
        made.branch = row.branch;
        made.flags = row.flags;
        return made;
    }
    std::size_t FirstPoint() const { return firstPoint; }
    const std::vector<std::size_t>& AxisOf() const { return axisOf; }
    /// Where the axes stand behind the last row.
    const std::vector<double>& Values() const { return values; }

  private:
    std::size_t firstPoint;
    std::vector<std::size_t> axisOf;
    std::vector<double> values;
    MotionRow made;
};

} // namespace host

#endif
