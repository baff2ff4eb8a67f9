#ifndef TRUNNION_HOST_POST_WORDS_H
#define TRUNNION_HOST_POST_WORDS_H

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "machine/LoadedMachine.h"
#include "motion/MotionRow.h"
#include "post/Dialect.h"

// The words of a block that say where the machine goes.
namespace host
{

/// One such word: an axis position, or a coordinate of the tool's end on the part.
struct Coordinate
{
    std::string address; //!< what stands before the number: "X", or "J1="
    bool isRotary{false};
    bool isOfTip{false};  //!< a coordinate of the tool's end
    std::size_t index{0}; //!< into the row's joints, or into the coordinates of the tool's end
    int sign{1};
    int decimals{0};
    double low{-std::numeric_limits<double>::infinity()}; //!< that can be written, in last digits
    double high{std::numeric_limits<double>::infinity()};

    /// What the word says at a row [length] or [deg]: rounded, inwards at a limit.
    double At(const MotionRow& row) const;
};

/// Those of axis positions, in the order of the axes. Throws InputError for an axis whose word or
/// limits the dialect cannot write.
std::vector<Coordinate> AxisCoordinates(const LoadedMachine& machine,
                                        const std::vector<const Axis*>& axes,
                                        const Dialect& dialect);

/// X, Y and Z of the tool's end, then the rotary axes.
std::vector<Coordinate> TipCoordinates(const LoadedMachine& machine,
                                       const std::vector<const Axis*>& axes,
                                       const Dialect& dialect);

/// Of a length in the machine's unit.
int LengthDecimals(const LoadedMachine& machine, const Dialect& dialect);

/// 10 to the power of `decimals`.
double ScaleOf(int decimals);

/// With a decimal point wherever there are decimals, and never "-0".
std::string NumberText(double value, int decimals, bool keepsZeros);

} // namespace host

#endif
