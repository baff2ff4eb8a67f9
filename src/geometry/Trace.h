#ifndef TRUNNION_GEOMETRY_TRACE_H
#define TRUNNION_GEOMETRY_TRACE_H

#include <string>

#include "IkXformMat.h"

// Diagnostic dumps form wide-character lines in fixed buffers and hand them to one sink. The sink
// discards them, and every switch is off: a dump never changes state and no solve depends on one.
namespace trunnion
{

// Buffer sizes in characters, the terminator included. A text that does not fit is not formed.
inline constexpr std::size_t kTraceChildLabel = 256;
inline constexpr std::size_t kTraceFrameLabel = 124;
inline constexpr std::size_t kTraceElement = 124;
inline constexpr std::size_t kTraceSampleCaption = 56;
inline constexpr std::size_t kTraceNodeInfoLabel = 1024;

/// Which computations trace what they do. All off, and nothing in the library turns one on: a
/// developer does, here or in a debugger.
struct TraceSwitches
{
    bool solverObjectiveTarget{false};
    bool solverObjectiveCurrent{false};
    bool streamObjectiveTarget{false};
    bool streamObjectiveCurrent{false};
    bool streamForwardKinematics{false};
    bool hybridSampling{false};
};

TraceSwitches& Tracing();

/// Takes a finished line; discards it. Defined apart from the rest so that a build can replace it.
void TraceLine(const wchar_t* line);

/// `label` with `suffix` behind it, or nothing when the two do not fit into a buffer of `size`.
std::wstring TraceLabel(const wchar_t* label, const wchar_t* suffix, std::size_t size);

/// The caption of a sample: `format` with its index, or nothing when that does not fit.
std::wstring TraceSampleCaption(const wchar_t* format, int index);

/// One line a row, each element in `elementFormat`.
void TraceRows(const TNT::Matrix<double>& matrix, const wchar_t* elementFormat);

} // namespace trunnion

#endif
