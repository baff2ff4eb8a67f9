#include "RecordingTraceSink.h"

#include <utility>

#include "geometry/Trace.h"

namespace
{

test::Lines& Recorded()
{
    static test::Lines lines;
    return lines;
}

} // namespace

void trunnion::TraceLine(const wchar_t* line)
{
    Recorded().emplace_back(line);
}

test::Lines test::LinesOf(const std::function<void()>& act)
{
    Recorded().clear();
    act();
    return std::move(Recorded());
}
