#ifndef TRUNNION_HOST_APP_REPORT_TEXT_H
#define TRUNNION_HOST_APP_REPORT_TEXT_H

#include <ostream>

#include "report/RunReport.h"

namespace host
{

/// Prints what a run comes to, for whoever started it: not its options and files, and the first of
/// its events only.
void PrintReport(const RunReport& report, std::ostream& out);

} // namespace host

#endif
