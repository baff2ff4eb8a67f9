#include "geometry/Trace.h"

namespace trunnion
{

void TraceLine(const wchar_t* /*line*/) {}

} // namespace trunnion
