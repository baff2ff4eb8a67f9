#include "Arrays.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "text/InputError.h"

namespace bindings
{

namespace
{

constexpr int kSize = 4; // of a frame

} // namespace

Rows RowsOf(const char* name, const NumberArray& array)
{
    if (array.ndim() != 2) {
        throw host::InputError(name, "this is no table of numbers; give one row for each");
    }
    Rows rows;
    rows.count = static_cast<std::size_t>(array.shape(0));
    rows.width = static_cast<std::size_t>(array.shape(1));
    rows.values.assign(array.data(), array.data() + rows.count * rows.width);
    const auto bad = std::find_if(rows.values.begin(), rows.values.end(),
                                  [](double value) { return !std::isfinite(value); });
    if (bad != rows.values.end()) {
        const auto row = static_cast<std::size_t>(bad - rows.values.begin()) / rows.width;
        throw host::InputError(name, "row " + std::to_string(row) +
                                         " has a number that is not finite; leave the row out");
    }
    return rows;
}

NumberArray ArrayOf(const IkXformMat& frame)
{
    NumberArray array({kSize, kSize});
    for (int row = 0; row < kSize; ++row) {
        for (int column = 0; column < kSize; ++column) {
            array.mutable_at(row, column) = frame[row][column];
        }
    }
    return array;
}

IkXformMat FrameFrom(const NumberArray& array)
{
    if (array.ndim() != 2 || array.shape(0) != kSize || array.shape(1) != kSize) {
        throw host::InputError("frame", "a frame is an array of 4 by 4 numbers");
    }
    IkXformMat frame;
    for (int row = 0; row < kSize; ++row) {
        for (int column = 0; column < kSize; ++column) {
            frame[row][column] = array.at(row, column);
        }
    }
    return frame;
}

} // namespace bindings
