#include <string>

#include <gtest/gtest.h>

#include "text/InputError.h"
#include "toolpath/PathBuilder.h"

namespace
{

TEST(PathBuilder, RefusesMorePointsThanItsBound)
{
    host::PathBuilder path("part.cl", 2);
    host::ToolPoint point;
    point.line = 7;
    path.Add(point);
    path.Add(point);
    try {
        path.Add(point);
        FAIL() << "not refused";
    } catch (const host::InputError& error) {
        EXPECT_STREQ(error.what(), "part.cl:7:1: this path has more than 2 points; split it");
    }
}

} // namespace
