#include "toolpath/AptReader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

#include "text/LineReader.h"
#include "text/Quoted.h"
#include "toolpath/AptStatement.h"
#include "toolpath/AptWords.h"
#include "toolpath/MovedFrame.h"
#include "toolpath/PathBuilder.h"
#include "toolpath/PathText.h"
#include "toolpath/Recurrence.h"

namespace host
{

namespace
{

/// Takes the statements one by one and keeps what holds from one to the next.
class Interpreter
{
  public:
    Interpreter(const std::string& file, LengthUnit wantedUnit)
        : path(file), lengthUnit(wantedUnit), fileUnit(wantedUnit)
    {}

    Toolpath Read(AptStatementReader& statements)
    {
        AptStatement statement;
        while (statements.Next(statement) && statement.word != "FINI") {
            Take(statement);
        }
        WarnOfRecurrences();
        return path.Finish("there is no GOTO in this file, so there is nothing to do; "
                           "is it a cutter-location file?");
    }

  private:
    using Argument = AptStatement::Argument;
    using Handler = void (Interpreter::*)(const AptStatement&);

    void Take(const AptStatement& statement)
    {
        static const std::map<std::string, Handler, std::less<>> handlers{
            {"GOTO", &Interpreter::TakeGoto},
            {"FROM", &Interpreter::TakeFrom},
            {"RAPID", &Interpreter::TakeRapid},
            {"FEDRAT", &Interpreter::TakeFeed},
            {"UNITS", &Interpreter::TakeUnits},
            {"MULTAX", &Interpreter::TakeMultax},
            {"MSYS", &Interpreter::TakeFrame},
            {"TOOL PATH", &Interpreter::TakeToolPath},
            {"END-OF-PATH", &Interpreter::TakeEndOfPath},
            {"LOADTL", &Interpreter::TakeLoadTool},
            {"LOAD", &Interpreter::TakeLoad},
            {"TLDATA", &Interpreter::TakeToolData}};
        const auto handler = handlers.find(statement.word);
        if (handler != handlers.end()) {
            (this->*handler->second)(statement);
        } else if (!IsAptInert(statement)) {
            path.Refuse(statement.at, WhyAptRefused(statement));
        } else if (IsAptText(statement) && statement.next.line != 0) {
            path.Refuse(statement.next, "this line is taken for text, since the one before ends in "
                                        "a $; take the $ out, or put the text on one line");
        }
    }

    // Points -----------------------------------------------------------------------------------

    void TakeGoto(const AptStatement& statement)
    {
        ToolPoint point;
        point.position = TakeLocation(statement);
        point.line = statement.at.line;
        point.direction = direction;
        point.isRapid = isRapid;
        point.feed = feed;
        NoteChangeOfTool();
        path.Add(point);
        isRapid = false;
        isLengthFresh = false;
    }

    /// Where the tool starts is no motion: only its vector holds on.
    void TakeFrom(const AptStatement& statement)
    {
        if (!path.IsAtStart()) {
            path.Refuse(statement.at, "FROM tells where the tool starts, and here it is under way; "
                                      "make it a GOTO if the tool moves there");
        }
        TakeLocation(statement);
    }

    /// The position, in part coordinates, after taking note of the vector.
    Vec3 TakeLocation(const AptStatement& statement)
    {
        const std::size_t count = statement.arguments.size();
        if (count != 3 && count != 6) {
            path.Refuse(statement.at, statement.word + " has " + std::to_string(count) +
                                          " numbers; it takes x,y,z or x,y,z,i,j,k");
        }
        if (count == 6) {
            TakeVector(statement);
        }
        if (isVectorTurned) {
            path.Refuse(statement.at, "the tool vector was given before MSYS turned the axes; give "
                                      "it again here");
        }
        return frame.Position(Lengths(Triple(statement, 0)));
    }

    void TakeVector(const AptStatement& statement)
    {
        const TextPosition at = statement.arguments[3].at;
        const Vec3 vector = PathDirection(path.File(), at, Triple(statement, 3));
        if (!isMultiAxis) {
            ignoredVectors.AddAt(at);
            return;
        }
        givenDirection = vector;
        direction = frame.Direction(vector);
        isVectorGiven = true;
        isVectorTurned = false;
    }

    /// The length of the tool before is kept where the file gives no other.
    void NoteChangeOfTool()
    {
        if (path.IsAtStart() && !path.IsEmpty() && !isLengthFresh &&
            path.Next().toolNumber != lastTool && path.Next().toolLength) {
            keptLengths.AddAt(loadedAt);
        }
        lastTool = path.Next().toolNumber;
    }

    // Motion and coordinates -------------------------------------------------------------------

    void TakeRapid(const AptStatement& statement)
    {
        RefuseArgumentsUnless(!statement.hasSlash, statement, "RAPID stands alone");
        isRapid = true;
    }

    void TakeFeed(const AptStatement& statement)
    {
        const Argument* number = nullptr;
        const AptFeedUnit* unit = nullptr;
        for (const Argument& argument : statement.arguments) {
            if (const AptFeedUnit* const named = FindAptFeedUnit(argument.text)) {
                RefuseSecond(unit != nullptr, argument);
                unit = named;
            } else {
                RefuseSecond(number != nullptr, argument);
                number = &argument;
            }
        }
        if (number == nullptr) {
            path.Refuse(statement.at, "FEDRAT has no number; write it as FEDRAT/300,MMPM");
        }
        if (unit != nullptr) {
            feedUnit = *unit;
        }
        const double value =
            Converted(Number(*number), feedUnit.length.value_or(fileUnit), lengthUnit);
        feed = Feed{PathFeed(path.File(), number->at, value), feedUnit.per};
    }

    void RefuseSecond(bool isSecond, const Argument& argument) const
    {
        if (isSecond) {
            path.Refuse(argument.at, Quoted(argument.text) +
                                         " does not belong here; FEDRAT takes one number "
                                         "and one of MMPM, MMPR, IPM, IPR, PERMIN, PERREV");
        }
    }

    void TakeUnits(const AptStatement& statement)
    {
        const bool isMetric = HasOnlyArgument(statement, {"MM"});
        RefuseArgumentsUnless(isMetric || HasOnlyArgument(statement, {"INCH", "INCHES"}), statement,
                              "UNITS takes MM, INCH or INCHES");
        fileUnit = isMetric ? LengthUnit::Millimetre : LengthUnit::Inch;
    }

    void TakeMultax(const AptStatement& statement)
    {
        isMultiAxis = !statement.hasSlash || HasOnlyArgument(statement, {"ON"});
        RefuseArgumentsUnless(isMultiAxis || HasOnlyArgument(statement, {"OFF"}), statement,
                              "MULTAX takes ON or OFF");
    }

    void TakeFrame(const AptStatement& statement)
    {
        constexpr std::size_t kNumbers = 9;
        if (statement.arguments.size() != kNumbers) {
            path.Refuse(statement.at, "MSYS has " + std::to_string(statement.arguments.size()) +
                                          " numbers; it takes an origin and two axes, "
                                          "x,y,z,i1,j1,k1,i2,j2,k2");
        }
        frame.origin = Lengths(Triple(statement, 0));
        frame.x = FrameAxis(statement, 3);
        const Vec3 second = FrameAxis(statement, 6);
        const auto third = Normalised(Cross(frame.x, second));
        if (!third || std::fabs(Dot(frame.x, second)) > kFrameSlack) {
            path.Refuse(statement.arguments[6].at, "the two axes of MSYS are not at right angles; "
                                                   "correct them");
        }
        frame.z = *third;
        frame.y = Cross(frame.z, frame.x);
        NoteTurnOfFrame();
    }

    Vec3 FrameAxis(const AptStatement& statement, std::size_t first) const
    {
        const Vec3 axis = Triple(statement, first);
        if (!(std::fabs(Length(axis) - 1.0) <= kFrameSlack)) {
            path.Refuse(statement.arguments[first].at,
                        "an axis of MSYS is a direction of length 1; correct it");
        }
        return Normalised(axis).value_or(axis);
    }

    /// Without vector the tool stands along z of the new frame. A vector given before could be
    /// meant in either, which only matters when that makes a difference.
    void NoteTurnOfFrame()
    {
        constexpr double kSame = 1e-6; // [rad], what six decimals of a vector come to
        const Vec3 turned = frame.Direction(givenDirection);
        isVectorTurned = isVectorGiven && AngleBetween(turned, direction) > kSame;
        direction = isVectorGiven ? direction : turned;
    }

    // Operations and tools ---------------------------------------------------------------------

    void TakeToolPath(const AptStatement& statement)
    {
        std::string_view name;
        if (!statement.arguments.empty()) {
            name = statement.arguments[0].written;
        }
        if (name.size() > 1 && name.front() == '\'' && name.back() == '\'') {
            name = name.substr(1, name.size() - 2);
        }
        path.BeginOperation(name, statement.at.line);
    }

    void TakeEndOfPath(const AptStatement& /*statement*/) { path.EndOperation(); }

    void TakeLoadTool(const AptStatement& statement) { LoadTool(statement, 0); }

    void TakeLoad(const AptStatement& statement)
    {
        const bool isTool = !statement.arguments.empty() && statement.arguments[0].text == "TOOL";
        RefuseArgumentsUnless(isTool, statement, "LOAD takes TOOL and its number");
        LoadTool(statement, 1);
    }

    void LoadTool(const AptStatement& statement, std::size_t number)
    {
        if (statement.arguments.size() <= number) {
            path.Refuse(statement.at, statement.word + " has no number; write the tool's");
        }
        const Argument& tool = statement.arguments[number];
        path.SetToolNumber(PathToolNumber(path.File(), tool.at, tool.text), statement.at.line);
        loadedAt = statement.at;
    }

    void TakeToolData(const AptStatement& statement)
    {
        constexpr std::size_t kLength = 3; // behind the form, the diameter and the corner's radius
        std::optional<double> length;
        if (statement.arguments.size() > kLength && statement.arguments[0].text == "MILL") {
            length = Lengths(Triple(statement, 1))[2];
            if (!(*length > 0.0)) {
                path.Refuse(statement.arguments[kLength].at,
                            "the length of a tool is greater than 0; correct it");
            }
        } else {
            unknownTools.AddAt(statement.at);
        }
        path.SetToolLength(length, statement.at.line);
        isLengthFresh = true;
    }

    // Arguments --------------------------------------------------------------------------------

    static bool HasOnlyArgument(const AptStatement& statement,
                                std::initializer_list<std::string_view> choices)
    {
        return statement.arguments.size() == 1 &&
               std::find(choices.begin(), choices.end(), statement.arguments[0].text) !=
                   choices.end();
    }

    void RefuseArgumentsUnless(bool isGood, const AptStatement& statement,
                               const std::string& rule) const
    {
        if (!isGood) {
            path.Refuse(statement.arguments.empty() ? statement.at : statement.arguments[0].at,
                        rule + "; correct this statement");
        }
    }

    double Number(const Argument& argument) const
    {
        return PathNumber(path.File(), argument.at, argument.text);
    }

    Vec3 Triple(const AptStatement& statement, std::size_t first) const
    {
        return {Number(statement.arguments[first]), Number(statement.arguments[first + 1]),
                Number(statement.arguments[first + 2])};
    }

    Vec3 Lengths(const Vec3& inFile) const
    {
        Vec3 lengths{};
        std::transform(inFile.begin(), inFile.end(), lengths.begin(),
                       [this](double x) { return Converted(x, fileUnit, lengthUnit); });
        return lengths;
    }

    // Warnings ---------------------------------------------------------------------------------

    void WarnOfRecurrences()
    {
        ignoredVectors.WarnIn(path, "tool vectors after MULTAX/OFF are ignored",
                              "put MULTAX/ON before them if they count");
        unknownTools.WarnIn(path, "TLDATA of other forms than MILL,d,r,length tell no tool length",
                            "the operations from there on have none");
        keptLengths.WarnIn(path, "tools are loaded without TLDATA for them",
                           "they are taken to be as long as the tool before");
    }

    static constexpr double kFrameSlack = 1e-3; // what files round

    PathBuilder path;
    const LengthUnit lengthUnit;
    LengthUnit fileUnit;
    MovedFrame frame;
    Vec3 givenDirection{kUpright}; // in the frame that held when it was given
    Vec3 direction{kUpright};      // in part coordinates
    bool isVectorGiven{false};
    bool isVectorTurned{false}; // the frame was turned since it was given
    bool isMultiAxis{true};
    bool isRapid{false}; // good for one GOTO
    std::optional<Feed> feed;
    AptFeedUnit feedUnit;
    std::optional<int> lastTool;
    TextPosition loadedAt;
    bool isLengthFresh{false}; // TLDATA came since the last point
    Recurrence ignoredVectors;
    Recurrence unknownTools;
    Recurrence keptLengths;
};

} // namespace

Toolpath ReadApt(std::istream& in, const std::string& file, LengthUnit lengthUnit)
{
    LineReader lines(in, file, kPathBounds);
    AptStatementReader statements(lines);
    return Interpreter(file, lengthUnit).Read(statements);
}

} // namespace host
