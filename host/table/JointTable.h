#ifndef TRUNNION_HOST_TABLE_JOINT_TABLE_H
#define TRUNNION_HOST_TABLE_JOINT_TABLE_H

#include <optional>
#include <string>
#include <vector>

#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "solve/WarmStart.h"

namespace host
{

/// The solved path as CSV: a row for each point, a column for each axis, numbers that read back as
/// the same ones.
class JointTable
{
  public:
    JointTable(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits);

    std::string Header() const;
    /// `number` counts the points from 1. The cells of what a point that was not reached does not
    /// have stay empty.
    std::string Row(std::size_t number, const ToolPoint& point,
                    const std::optional<Reached>& reached) const;

  private:
    std::vector<const Axis*> axes;
    ShownUnits units;
};

} // namespace host

#endif
