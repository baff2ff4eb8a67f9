#ifndef TRUNNION_BENCH_REPORT_H
#define TRUNNION_BENCH_REPORT_H

#include <ostream>

#include "Measurements.h"

namespace bench
{

/// The aims as a table, and behind it what they were taken from.
void PrintReport(const Measurements& measurements, std::ostream& out);

/// The same as JSON.
void WriteJson(const Measurements& measurements, std::ostream& out);

} // namespace bench

#endif
