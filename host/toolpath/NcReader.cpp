#include "toolpath/NcReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <set>
#include <string_view>

#include "text/LineReader.h"
#include "text/Quoted.h"
#include "toolpath/NcBlock.h"
#include "toolpath/NcCodes.h"
#include "toolpath/NcTools.h"
#include "toolpath/PathBuilder.h"
#include "toolpath/PathText.h"
#include "toolpath/Recurrence.h"

namespace host
{

namespace
{

constexpr std::string_view kPlaceLetters = "XYZ";
constexpr std::string_view kVectorLetters = "IJK";
constexpr std::string_view kMoveLetters = "XYZIJK";
constexpr std::string_view kKnownLetters = "NGMTSFHDXYZIJK";
constexpr std::string_view kDwellLetters = "NGMPXFSU";
constexpr std::string_view kPathModeLetters = "PQ";
constexpr std::string_view kRotaryLetters = "ABC";
constexpr std::size_t kZ = 2;

/// A coordinate of the tool's place.
struct Coordinate
{
    double value{0.0};                         //!< [length]
    NcLengthMode mode{NcLengthMode::Unstated}; //!< under which it was given
};

/// Takes the blocks one by one and keeps what holds from one to the next.
class NcReader
{
  public:
    NcReader(const std::string& file, LengthUnit wantedUnit)
        : path(file), lengthUnit(wantedUnit), fileUnit(wantedUnit)
    {}

    Toolpath Read(NcBlockReader& blocks)
    {
        NcBlock block;
        while (!isAtEnd && blocks.Next(block)) {
            Take(block);
        }
        leftOut.WarnIn(path, "rapids on which not all of X, Y, Z are known are left out",
                       "the path begins behind them");
        Toolpath result = path.Finish("there is no move with X, Y and Z in this file, so there is "
                                      "nothing to do; is it an NC program with tool vectors?");
        tools.CutIntoOperations(result);
        return result;
    }

  private:
    void Take(const NcBlock& block)
    {
        RefuseRepetitions(block);
        const NcAsked asked = AskedBy(block, path.File());
        RefuseStrangers(block, asked);
        TakeProgramNumber(block);
        if (!asked.isDwell) {
            TakeModes(asked);
            TakeFeed(block);
        }
        TakeTool(block);
        TakeMiscellaneous(block);
        if (!asked.isDwell) {
            Move(block);
        }
    }

    // Words ------------------------------------------------------------------------------------

    void RefuseRepetitions(const NcBlock& block) const
    {
        std::set<char> letters;
        for (const NcWord& word : block.words) {
            if (word.letter != 'G' && word.letter != 'M' && !letters.insert(word.letter).second) {
                path.Refuse(word.at, std::string("this block has a second ") + word.letter +
                                         "; take one of them out");
            }
        }
    }

    void RefuseStrangers(const NcBlock& block, const NcAsked& asked) const
    {
        for (const NcWord& word : block.words) {
            const auto isOneOf = [&word](std::string_view letters) {
                return letters.find(word.letter) != std::string_view::npos;
            };
            const bool isProgramNumber = word.letter == 'O';
            const bool isKnown = asked.isDwell
                                     ? isOneOf(kDwellLetters)
                                     : isOneOf(kKnownLetters) || isProgramNumber ||
                                           (asked.isPathMode && isOneOf(kPathModeLetters));
            if (!isKnown) {
                RefuseStranger(word, asked.isDwell, isOneOf(kRotaryLetters));
            }
        }
        const bool hasOtherCode =
            std::count_if(block.words.begin(), block.words.end(),
                          [](const NcWord& word) { return word.letter == 'G'; }) > 1;
        if (asked.isDwell && hasOtherCode) {
            path.Refuse({block.line, 1}, "a G4 stands alone in its block; move the other G words");
        }
    }

    [[noreturn]] void RefuseStranger(const NcWord& word, bool isDwell, bool isRotary) const
    {
        if (isDwell) {
            path.Refuse(word.at, word.Text() + " does not belong to G4; move it to a block of its "
                                               "own");
        }
        if (isRotary) {
            path.Refuse(word.at, word.Text() +
                                     " turns an axis, and this reader takes tool vectors; "
                                     "have them written as I J K under G43.5");
        }
        path.Refuse(word.at, word.Text() + " is not understood, and it may move the tool; have the "
                                           "path written in X Y Z and I J K");
    }

    void TakeProgramNumber(const NcBlock& block) const
    {
        const NcWord* const number = block.Find('O');
        if (number == nullptr) {
            return;
        }
        if (block.words.size() > 1 || !path.IsEmpty()) {
            path.Refuse(number->at, number->Text() + " is understood as the number of the program "
                                                     "only, alone and before the first move; have "
                                                     "calls and subprograms written out");
        }
    }

    // Modes ------------------------------------------------------------------------------------

    void TakeModes(const NcAsked& asked)
    {
        fileUnit = asked.unit.value_or(fileUnit);
        isRapid = asked.isRapid ? asked.isRapid : isRapid;
        lengthMode = asked.lengthMode.value_or(lengthMode);
        workOffset = asked.workOffset.value_or(workOffset);
        if (asked.feedMode && *asked.feedMode != feedMode) {
            feedMode = *asked.feedMode;
            feed.reset(); // the number meant something else
        }
    }

    void TakeFeed(const NcBlock& block)
    {
        const NcWord* const word = block.Find('F');
        if (word == nullptr) {
            return;
        }
        if (feedMode == NcFeedMode::InverseTime) {
            PathFeed(path.File(), word->at, word->value); // is for its block alone
            return;
        }
        const double value = Converted(word->value, fileUnit, lengthUnit);
        feed = Feed{PathFeed(path.File(), word->at, value),
                    feedMode == NcFeedMode::PerMinute ? FeedPer::Minute : FeedPer::Revolution};
    }

    // Tools ------------------------------------------------------------------------------------

    void TakeTool(const NcBlock& block)
    {
        if (const NcWord* const word = block.Find('T')) {
            tools.Select(PathToolNumber(path.File(), word->at, word->number), block.line,
                         path.Count());
        }
    }

    void TakeMiscellaneous(const NcBlock& block)
    {
        for (const NcWord& word : block.words) {
            if (word.letter == 'M') {
                TakeMiscellaneous(word, block.line);
            }
        }
    }

    void TakeMiscellaneous(const NcWord& word, int line)
    {
        static const std::set<int> ends{2, 30};
        static const std::set<int> calls{97, 98, 99, 198};
        constexpr int kChange = 6;
        constexpr double kHighest = 9999.0;
        const bool isCode =
            word.value >= 0.0 && word.value <= kHighest && std::floor(word.value) == word.value;
        const int code = isCode ? static_cast<int>(word.value) : -1;
        if (!isCode || calls.find(code) != calls.end()) {
            path.Refuse(word.at, word.Text() + " is not understood; have calls and subprograms "
                                               "written out");
        }
        isAtEnd = isAtEnd || ends.find(code) != ends.end();
        if (code == kChange) {
            tools.Change(line, path.Count());
            place = {}; // the tool is changed away from the part
            isUnderWay = false;
        }
    }

    // Moves ------------------------------------------------------------------------------------

    void Move(const NcBlock& block)
    {
        const NcWord* const first = block.FindAny(kMoveLetters);
        if (first == nullptr) {
            return;
        }
        if (!isRapid) {
            path.Refuse(first->at, "neither G0 nor G1 was given before this move; put one of them "
                                   "here");
        }
        TakeVector(block);
        TakePlace(block);
        if (HasUnknownPlace()) {
            LeaveOut(*first);
            return;
        }
        if (lengthMode == NcLengthMode::Upright && !IsUpright()) {
            path.Refuse(first->at,
                        "under G43 the coordinates are those of an upright tool, and the "
                        "tool leans; put G43.5 before this move");
        }
        AddPoint(block, *first);
    }

    void TakeVector(const NcBlock& block)
    {
        const NcWord* const first = block.FindAny(kVectorLetters);
        if (first == nullptr) {
            return;
        }
        if (lengthMode == NcLengthMode::Upright || lengthMode == NcLengthMode::Off) {
            path.Refuse(first->at, "I J K are a tool vector under G43.5 only; put it before them");
        }
        for (std::size_t i = 0; i < kVectorLetters.size(); ++i) {
            const NcWord* const word = block.Find(kVectorLetters[i]);
            // Controls differ in whether what is not given stays or becomes 0.
            if (word == nullptr && given[i] != 0.0) {
                path.Refuse(first->at, std::string("the tool vector lacks ") + kVectorLetters[i] +
                                           "; give I, J and K together");
            }
            given[i] = word == nullptr ? 0.0 : word->value;
        }
        direction = PathDirection(path.File(), first->at, given);
    }

    void TakePlace(const NcBlock& block)
    {
        for (std::size_t i = 0; i < kPlaceLetters.size(); ++i) {
            if (const NcWord* const word = block.Find(kPlaceLetters[i])) {
                RefuseOtherWorkOffset(word->at);
                place[i] = Coordinate{Converted(word->value, fileUnit, lengthUnit), lengthMode};
            }
        }
    }

    void RefuseOtherWorkOffset(TextPosition at)
    {
        if (partOffset.value_or(workOffset) != workOffset) {
            path.Refuse(at, "this coordinate is in another work offset than those before; have the "
                            "path written in one");
        }
        partOffset = workOffset;
    }

    /// Whether a coordinate is known as that of the tool's end. While the tool is upright, X and Y
    /// of the spindle are.
    bool IsKnown(std::size_t i) const
    {
        if (!place[i] || (i == kZ && place[i]->mode == NcLengthMode::Off)) {
            return false;
        }
        const NcLengthMode mode = place[i]->mode;
        return mode == NcLengthMode::Vectors || mode == lengthMode || IsUpright();
    }

    bool HasUnknownPlace() const
    {
        return lengthMode == NcLengthMode::Off || !IsKnown(0) || !IsKnown(1) || !IsKnown(kZ);
    }

    bool IsUpright() const { return direction == kUpright; }

    void LeaveOut(const NcWord& first)
    {
        if (*isRapid && !isUnderWay) {
            leftOut.AddAt(first.at);
            return;
        }
        if (lengthMode == NcLengthMode::Off) {
            path.Refuse(first.at, "under G49 the coordinates are not those of the tool's end; put "
                                  "G43.5 before this move, or the end of the program");
        }
        path.Refuse(first.at, "not all of X, Y, Z of the tool's end are known here; give all of "
                              "them in this block");
    }

    void AddPoint(const NcBlock& block, const NcWord& first)
    {
        ToolPoint point;
        point.line = block.line;
        point.position = {place[0]->value, place[1]->value, place[2]->value};
        point.direction = direction;
        point.isRapid = *isRapid;
        if (feedMode == NcFeedMode::InverseTime && !*isRapid) {
            feed = FeedOfInverseTime(point, block, first);
        }
        point.feed = feed;
        path.Add(point);
        isUnderWay = true;
        for (std::optional<Coordinate>& coordinate : place) {
            coordinate->mode = NcLengthMode::Vectors; // the tool's end stands there now
        }
    }

    /// Inverse time says how often a minute the move could be made.
    Feed FeedOfInverseTime(const ToolPoint& to, const NcBlock& block, const NcWord& first) const
    {
        const NcWord* const word = block.Find('F');
        if (word == nullptr) {
            path.Refuse(first.at, "under G93 each G1 has an F of its own; add it");
        }
        const ToolPoint* const from = path.Last();
        if (from == nullptr || !isUnderWay) {
            path.Refuse(word->at, "the time of this move says nothing of its feed, since where it "
                                  "comes from is not known; begin with a G0");
        }
        const double feedPerMinute = word->value * Length(to.position - from->position);
        if (!(feedPerMinute > 0.0)) {
            path.Refuse(word->at, "this move has a time, but no length and so no feed; have it "
                                  "written under G94");
        }
        return {feedPerMinute, FeedPer::Minute};
    }

    PathBuilder path;
    const LengthUnit lengthUnit;
    LengthUnit fileUnit;
    NcTools tools;
    std::optional<bool> isRapid; // nothing before the first G0 or G1
    NcLengthMode lengthMode{NcLengthMode::Unstated};
    NcFeedMode feedMode{NcFeedMode::PerMinute};
    int workOffset{kUsualWorkOffset};
    std::optional<int> partOffset; // that of all coordinates so far
    std::optional<Feed> feed;
    std::array<std::optional<Coordinate>, 3> place{};
    Vec3 given{kUpright}; // I J K as they were given last
    Vec3 direction{kUpright};
    bool isUnderWay{false}; // there is a point since the start or the last change of tool
    bool isAtEnd{false};
    Recurrence leftOut;
};

} // namespace

Toolpath ReadNc(std::istream& in, const std::string& file, LengthUnit lengthUnit)
{
    LineReader lines(in, file, kPathBounds);
    NcBlockReader blocks(lines);
    return NcReader(file, lengthUnit).Read(blocks);
}

} // namespace host
