#ifndef TRUNNION_HOST_TABLE_JOINT_TABLE_H
#define TRUNNION_HOST_TABLE_JOINT_TABLE_H

#include <string>
#include <vector>

#include "machine/AxisText.h"
#include "machine/LoadedMachine.h"
#include "motion/MotionRow.h"

namespace host
{

/// The motion as CSV: a line for each row, a column for each axis, numbers that read back as the
/// same ones.
class JointTable
{
  public:
    /// The joints of the rows are in the order of `ofAxes`.
    JointTable(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits);

    std::string Header() const;
    /// A line; `line` is where the toolpath has the row's point. The cells of what a row
    /// that has failed does not have stay empty.
    std::string Row(const MotionRow& row, int line) const;
    void AppendRow(const MotionRow& row, int line, std::string& text) const;

  private:
    std::vector<const Axis*> axes;
    ShownUnits units;
};

} // namespace host

#endif
