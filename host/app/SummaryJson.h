#ifndef TRUNNION_HOST_APP_SUMMARY_JSON_H
#define TRUNNION_HOST_APP_SUMMARY_JSON_H

#include <string>

#include "report/RunReport.h"

namespace host
{

/// The report as a JSON object, its keys in a fixed order, its numbers such that they read back as
/// the same ones. The time it took is the only thing in it that differs from run to run, and stands
/// last. Bytes that are not UTF-8 are replaced.
std::string ToJson(const RunReport& report);

} // namespace host

#endif
