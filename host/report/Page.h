#ifndef TRUNNION_HOST_REPORT_PAGE_H
#define TRUNNION_HOST_REPORT_PAGE_H

#include <string_view>

#include "report/ColumnEncoder.h"
#include "report/PageData.h"

namespace host
{

/// Where a page's HTML takes its data.
constexpr std::string_view kDataMark = "@TRUNNION_DATA@";

/// Writes a page that needs no other file.
/// @param html the page, with the mark in it
/// @param run null for the machine alone
void WritePage(std::string_view html, const ShownMachine& shown, const ShownRun* run,
               const TextSink& sink);

} // namespace host

#endif
