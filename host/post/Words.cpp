#include "post/Words.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>

#include "geometry/Units.h"
#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr std::string_view kAxisLetters = "ABCUVWXYZ"; // the others mean something else

bool IsLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsLongWord(std::string_view word)
{
    return IsLetter(word.front()) && std::all_of(word.begin(), word.end(), [](char c) {
               return IsLetter(c) || (c >= '0' && c <= '9') || c == '_';
           });
}

char Upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string AddressOf(const Axis& axis, const LoadedMachine& machine, const Dialect& dialect)
{
    if (axis.word.size() == 1 && kAxisLetters.find(Upper(axis.word[0])) != std::string_view::npos) {
        return {Upper(axis.word[0])};
    }
    if (axis.word.size() > 1 && IsLongWord(axis.word) && dialect.takesLongWords) {
        return axis.word + "=";
    }
    throw InputError(machine.file,
                     "axis " + Quoted(axis.name) + " has the word " + Quoted(axis.word) +
                         ", which dialect " + Quoted(dialect.name) +
                         " cannot write; give it one of A, B, C, U, V, W, X, Y, Z (word = \"A\")" +
                         (dialect.takesLongWords ? ", or a name of letters and digits"
                                                 : ", or choose a dialect with long_words = true"));
}

/// How far beyond a limit counts as at it, in last digits: more than turning degrees into radians
/// and back changes, far less than anyone can write.
constexpr double kSlack = 1e-6;

Coordinate CoordinateOf(const Axis& axis, std::size_t index, const LoadedMachine& machine,
                        const Dialect& dialect)
{
    Coordinate coordinate;
    coordinate.address = AddressOf(axis, machine, dialect);
    coordinate.isRotary = axis.isRotary;
    coordinate.index = index;
    coordinate.sign = axis.wordSign;
    coordinate.decimals =
        axis.isRotary ? dialect.decimals.degree : LengthDecimals(machine, dialect);
    const auto inLastDigits = [&](double value) {
        return coordinate.sign * (axis.isRotary ? ToDegrees(value) : value) *
               ScaleOf(coordinate.decimals);
    };
    const double one = inLastDigits(axis.joint->GetLowBound());
    const double other = inLastDigits(axis.joint->GetHiBound());
    coordinate.low = std::ceil(std::min(one, other) - kSlack);
    coordinate.high = std::floor(std::max(one, other) + kSlack);
    if (coordinate.low > coordinate.high) {
        throw InputError(machine.file, "the limits of axis " + Quoted(axis.name) +
                                           " leave no value with " +
                                           std::to_string(coordinate.decimals) +
                                           " decimals; take a dialect with more of them");
    }
    return coordinate;
}

Coordinate TipCoordinate(std::size_t index, int decimals)
{
    Coordinate coordinate;
    coordinate.address = std::string_view("XYZ").substr(index, 1);
    coordinate.isOfTip = true;
    coordinate.index = index;
    coordinate.decimals = decimals;
    return coordinate;
}

void RefuseSameAddresses(const std::vector<Coordinate>& coordinates, const LoadedMachine& machine)
{
    std::set<std::string> addresses;
    for (const Coordinate& coordinate : coordinates) {
        if (!addresses.insert(coordinate.address).second) {
            throw InputError(machine.file, "a block would have two words " +
                                               Quoted(coordinate.address) +
                                               "; give each axis a word of its own");
        }
    }
}

} // namespace

double ScaleOf(int decimals)
{
    double scale = 1.0;
    for (int i = 0; i < decimals; ++i) {
        scale *= 10.0;
    }
    return scale;
}

double Coordinate::At(const MotionRow& row) const
{
    const double value = isOfTip ? row.asked.position[index] : row.joints[index];
    const double scale = ScaleOf(decimals);
    double digits = std::round(sign * (isRotary ? ToDegrees(value) : value) * scale);
    // What is farther beyond a limit than rounding goes stays as it is, for all to see.
    if (digits == high + 1.0) {
        digits = high;
    } else if (digits == low - 1.0) {
        digits = low;
    }
    return digits / scale;
}

std::vector<Coordinate> AxisCoordinates(const LoadedMachine& machine,
                                        const std::vector<const Axis*>& axes,
                                        const Dialect& dialect)
{
    std::vector<Coordinate> coordinates;
    coordinates.reserve(axes.size());
    for (const Axis* axis : axes) {
        coordinates.push_back(CoordinateOf(*axis, coordinates.size(), machine, dialect));
    }
    RefuseSameAddresses(coordinates, machine);
    return coordinates;
}

std::vector<Coordinate> TipCoordinates(const LoadedMachine& machine,
                                       const std::vector<const Axis*>& axes, const Dialect& dialect)
{
    constexpr std::size_t kComponents = 3;
    std::vector<Coordinate> coordinates;
    for (std::size_t i = 0; i < kComponents; ++i) {
        coordinates.push_back(TipCoordinate(i, LengthDecimals(machine, dialect)));
    }
    for (std::size_t i = 0; i < axes.size(); ++i) {
        if (axes[i]->isRotary) {
            coordinates.push_back(CoordinateOf(*axes[i], i, machine, dialect));
        }
    }
    RefuseSameAddresses(coordinates, machine);
    return coordinates;
}

int LengthDecimals(const LoadedMachine& machine, const Dialect& dialect)
{
    return machine.length == LengthUnit::Millimetre ? dialect.decimals.mm : dialect.decimals.inch;
}

std::string NumberText(double value, int decimals, bool keepsZeros)
{
    std::string text = FixedText(value, decimals);
    if (!keepsZeros && decimals > 0) {
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text;
}

} // namespace host
