#ifndef TRUNNION_TESTS_HOST_MILL_TEXT_H
#define TRUNNION_TESTS_HOST_MILL_TEXT_H

#include <sstream>
#include <string>

namespace test
{

/// A tilting-table mill whose lines the tests know by number. All axes start at 0 there.
///
///   base -- X -- Y -- Z -- spindle (the tool's end at machine zero)
///     '---- A (about x, 120 below) -- C (about z) -- table (100 below)
inline std::string MillText()
{
    return R"([machine]
name   = "Mill"
length = "mm"
angle  = "deg"

[[axis]]
name      = "X"
parent    = "base"
type      = "linear"
direction = [1, 0, 0]
limits    = [-300, 300]

[[axis]]
name      = "Y"
parent    = "X"
type      = "linear"
direction = [0, 1, 0]
limits    = [-300, 300]

[[axis]]
name      = "Z"
parent    = "Y"
type      = "linear"
direction = [0, 0, 1]
limits    = [-400, 400]

[[axis]]
name      = "A"
parent    = "base"
type      = "rotary"
direction = [1, 0, 0]
point     = [0, 0, -120]
limits    = [-120, 30]

[[axis]]
name      = "C"
parent    = "A"
type      = "rotary"
direction = [0, 0, 1]
point     = [0, 0, 0]
unlimited = true

[[mount]]
name   = "spindle"
kind   = "tool"
parent = "Z"
origin = [0, 0, 0]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]

[[mount]]
name   = "table"
kind   = "part"
parent = "C"
origin = [0, 0, -100]
z_axis = [0, 0, 1]
x_axis = [1, 0, 0]

[[stream]]
id   = 1
tool = "spindle"
part = "table"
)";
}

/// `text` with its line `number` replaced by `with`, which may be several lines.
inline std::string WithLine(const std::string& text, int number, const std::string& with)
{
    std::istringstream in(text);
    std::string changed;
    std::string line;
    for (int i = 1; std::getline(in, line); ++i) {
        changed += (i == number ? with : line) + "\n";
    }
    return changed;
}

/// The mill with one line replaced.
inline std::string MillWith(int number, const std::string& with)
{
    return WithLine(MillText(), number, with);
}

} // namespace test

#endif
