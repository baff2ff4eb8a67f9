#ifndef TRUNNION_HOST_APP_PATH_REPORT_H
#define TRUNNION_HOST_APP_PATH_REPORT_H

#include <ostream>

#include "machine/AxisText.h"
#include "toolpath/Toolpath.h"
#include "toolpath/ToolpathFile.h"

namespace host
{

/// What a toolpath was understood to say, for whoever wrote it.
class PathReport
{
  public:
    PathReport(const Toolpath& ofPath, const ShownUnits& inUnits, std::ostream& to);

    void Print(ToolpathFormat format) const;

  private:
    void PrintExtents() const;
    void PrintTilt() const;
    void PrintFeeds() const;
    void PrintOperations() const;

    const Toolpath& path;
    ShownUnits units;
    std::ostream& out;
};

} // namespace host

#endif
