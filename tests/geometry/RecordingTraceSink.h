#ifndef TRUNNION_TESTS_GEOMETRY_RECORDING_TRACE_SINK_H
#define TRUNNION_TESTS_GEOMETRY_RECORDING_TRACE_SINK_H

#include <functional>
#include <string>
#include <vector>

// A program that contains this sink receives every trace line.
namespace test
{

using Lines = std::vector<std::wstring>;

/// The lines that reach the sink while `act` runs.
Lines LinesOf(const std::function<void()>& act);

} // namespace test

#endif
