#ifndef TRUNNION_HOST_TOOLPATH_NC_TOOLS_H
#define TRUNNION_HOST_TOOLPATH_NC_TOOLS_H

#include <cstddef>
#include <optional>
#include <vector>

#include "toolpath/Toolpath.h"

namespace host
{

/// Cuts a program into operations by its tools. T gets a tool ready and M6 changes it; in a program
/// without any M6, T changes it by itself.
class NcTools
{
  public:
    /// T, when so many points have been read.
    void Select(int number, int line, std::size_t points);
    /// M6, when so many points have been read.
    void Change(int line, std::size_t points);

    /// Sets the path's operations and the points' indices of them. The path has points.
    void CutIntoOperations(Toolpath& path) const;

  private:
    std::vector<Operation> selections;
    std::vector<Operation> changes;
    std::optional<int> selected;
};

} // namespace host

#endif
