#include <gtest/gtest.h>

#include "IkXformMat.h"
#include "geometry/Trace.h"

namespace
{

TEST(TraceSink, DiscardsEveryLine)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    trunnion::TraceLine(L"a line");
    IkXformMat().TraceDump(L"label");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
