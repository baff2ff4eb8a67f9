#include "toolpath/NcCodes.h"

#include <cmath>
#include <set>

namespace host
{

namespace
{

enum class Group {
    Motion,
    Once, // for its block alone
    Plane,
    Units,
    CutterRadius,
    ToolLength,
    Cycle,
    WorkOffset,
    Distance,
    ArcDistance,
    PathMode,
    Rotation,
    PolarCoordinates,
    FeedMode,
    SpindleMode,
    NotKnown
};

/// Notes what a code, ten times the number behind G, asks for. Arcs, cycles, cutter radius
/// compensation, rotations and polar coordinates are not understood, so what cancels them and what
/// they go by changes nothing.
Group Note(int code, NcAsked& asked)
{
    switch (code) {
    case 0:
    case 10:
        asked.isRapid = code == 0;
        return Group::Motion;
    case 40:
        asked.isDwell = true;
        return Group::Once;
    case 90: // exact stop
        return Group::Once;
    case 150:
        return Group::PolarCoordinates;
    case 170:
    case 180:
    case 190:
        return Group::Plane;
    case 200:
    case 210:
        asked.unit = code == 200 ? LengthUnit::Inch : LengthUnit::Millimetre;
        return Group::Units;
    case 400:
        return Group::CutterRadius;
    case 430:
        asked.lengthMode = NcLengthMode::Upright;
        return Group::ToolLength;
    case 435:
        asked.lengthMode = NcLengthMode::Vectors;
        return Group::ToolLength;
    case 490:
        asked.lengthMode = NcLengthMode::Off;
        return Group::ToolLength;
    case 540:
    case 550:
    case 560:
    case 570:
    case 580:
    case 590:
    case 591:
    case 592:
    case 593:
        asked.workOffset = code;
        return Group::WorkOffset;
    case 640:
        asked.isPathMode = true;
        return Group::PathMode;
    case 610:
    case 611:
        return Group::PathMode;
    case 690:
        return Group::Rotation;
    case 800:
        return Group::Cycle;
    case 900:
        return Group::Distance;
    case 901:
    case 911:
        return Group::ArcDistance;
    case 930:
        asked.feedMode = NcFeedMode::InverseTime;
        return Group::FeedMode;
    case 940:
        asked.feedMode = NcFeedMode::PerMinute;
        return Group::FeedMode;
    case 950:
        asked.feedMode = NcFeedMode::PerRevolution;
        return Group::FeedMode;
    case 970:
        return Group::SpindleMode;
    default:
        return Group::NotKnown;
    }
}

/// Ten times the number behind G, or -1 where that is not whole.
int CodeOf(const NcWord& word)
{
    constexpr double kHighest = 1e4;
    constexpr double kRounding = 1e-9;
    const double tenfold = 10.0 * word.value;
    const double whole = std::round(tenfold);
    const bool isCode = whole >= 0.0 && whole < kHighest && std::fabs(tenfold - whole) < kRounding;
    return isCode ? static_cast<int>(whole) : -1;
}

std::string WhyRefused(const NcWord& word, int code)
{
    switch (code) {
    case 434:
        return "under G43.4 the rotary axes say where the tool points, and this reader takes tool "
               "vectors; have them written as I J K under G43.5";
    case 910:
        return "G91 makes the coordinates steps; have them written for G90";
    default:
        return word.Text() + " is not understood, and it may move the tool or change what "
                             "coordinates mean; have the path written in G0 and G1";
    }
}

} // namespace

NcAsked AskedBy(const NcBlock& block, const std::string& file)
{
    NcAsked asked;
    std::set<Group> groups;
    for (const NcWord& word : block.words) {
        if (word.letter != 'G') {
            continue;
        }
        const int code = CodeOf(word);
        const Group group = Note(code, asked);
        if (group == Group::NotKnown) {
            throw InputError(file, word.at, WhyRefused(word, code));
        }
        if (!groups.insert(group).second) {
            throw InputError(file, word.at,
                             word.Text() + " does not go together with another G word of this "
                                           "block; take one of them out");
        }
    }
    return asked;
}

} // namespace host
