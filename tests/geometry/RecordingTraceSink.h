#ifndef TRUNNION_TESTS_GEOMETRY_RECORDING_TRACE_SINK_H
#define TRUNNION_TESTS_GEOMETRY_RECORDING_TRACE_SINK_H

#include <functional>
#include <string>
#include <vector>

#include "geometry/Trace.h"

// A program that contains this sink receives every trace line.
namespace test
{

using Lines = std::vector<std::wstring>;

/// The lines that reach the sink while `act` runs.
Lines LinesOf(const std::function<void()>& act);

/// Turns one switch on for a while.
class SwitchedOn
{
  public:
    explicit SwitchedOn(bool trunnion::TraceSwitches::*which) : isOn(trunnion::Tracing().*which)
    {
        isOn = true;
    }
    ~SwitchedOn() { isOn = false; }
    SwitchedOn(const SwitchedOn&) = delete;
    SwitchedOn& operator=(const SwitchedOn&) = delete;
    SwitchedOn(SwitchedOn&&) = delete;
    SwitchedOn& operator=(SwitchedOn&&) = delete;

  private:
    bool& isOn;
};

} // namespace test

#endif
