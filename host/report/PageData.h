#ifndef TRUNNION_HOST_REPORT_PAGE_DATA_H
#define TRUNNION_HOST_REPORT_PAGE_DATA_H

#include <string>

#include "machine/LoadedMachine.h"
#include "report/ColumnEncoder.h"
#include "report/ReportRows.h"
#include "report/RunReport.h"

namespace host
{

/// A machine to look at.
struct ShownMachine
{
    const LoadedMachine& machine;
    ReportedFile file;
    std::string version; //!< of the program
};

/// A run to look at.
struct ShownRun
{
    const RunReport& report;
    const ReportRows& rows;
};

/// Writes what a page shows as JSON: lengths in the machine's unit, angles in degrees. It may stand
/// in an HTML script, for there is no "<" in it, and nothing but ASCII; bytes that are not UTF-8
/// are replaced.
/// @param run null for the machine alone
void WritePageData(const ShownMachine& shown, const ShownRun* run, const TextSink& sink);

} // namespace host

#endif
