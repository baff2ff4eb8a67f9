#ifndef TRUNNION_HOST_APP_SUMMARY_H
#define TRUNNION_HOST_APP_SUMMARY_H

#include <cstddef>
#include <optional>
#include <vector>

#include "machine/AxisText.h"
#include "motion/Event.h"
#include "motion/MotionRow.h"
#include "report/RunReport.h"

namespace host
{

/// Collects what a run over a path comes to.
class Summary
{
  public:
    Summary(std::vector<const Axis*> ofAxes, const ShownUnits& inUnits);

    /// `line` is that of the row's point.
    void Add(const MotionRow& row, int line);
    void Add(const Event& event) { events.push_back(event); }

    bool HasFailures() const { return counts.failed > 0; }
    /// Sets the units, the counts, the worst errors, the axes and the events of a report.
    void FillIn(RunReport& report) const;

  private:
    ReportedAxis AxisAt(std::size_t index) const;

    std::vector<const Axis*> axes;
    ShownUnits units;
    ReportedCounts counts;
    std::optional<ReportedError> position;
    std::optional<ReportedError> direction_deg;
    std::vector<Range> spans; //!< of the axes [length] or [rad]; empty without any row
    std::vector<Event> events;
};

} // namespace host

#endif
