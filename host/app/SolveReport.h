#ifndef TRUNNION_HOST_APP_SOLVE_REPORT_H
#define TRUNNION_HOST_APP_SOLVE_REPORT_H

#include <chrono>

#include "app/FileDigest.h"
#include "app/SolveOptions.h"
#include "app/Summary.h"
#include "planner/PathPlan.h"
#include "report/RunReport.h"

namespace host
{

/// What a run came to, and under which settings.
RunReport ReportOf(const SolveOptions& options, const SourceDigests& sources,
                   const PlanRequest& request, const Summary& summary,
                   std::chrono::duration<double> time);

} // namespace host

#endif
