#include "toolpath/AptReader.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string_view>

#include "text/InputFile.h"
#include "text/LineReader.h"
#include "text/Numbers.h"
#include "text/Quoted.h"
#include "toolpath/AptStatement.h"

namespace host
{

namespace
{

constexpr TextBounds kBounds{1024UL * 1024 * 1024, 4096};
constexpr double kLargestNumber = 1e12; // its square and its conversion are still finite
constexpr Vec3 kUpright{0.0, 0.0, 1.0};

/// Statements that move nothing.
bool IsInert(const std::string& word)
{
    static const std::set<std::string, std::less<>> words{
        "COOLNT", "CUTTER",  "DELAY",  "END",    "END-OF-PATH", "INTOL",  "LOADTL",
        "MACHIN", "OPNAME",  "OPSTOP", "OUTTOL", "PAINT",       "PARTNO", "PPRINT",
        "REMARK", "SELECTL", "SPINDL", "STOP",   "TLDATA",      "TOLER",  "TOOL PATH"};
    // These carry text, which may follow after a mere blank.
    static const std::set<std::string, std::less<>> textWords{"PARTNO", "PPRINT", "REMARK"};
    return words.find(word) != words.end() ||
           textWords.find(word.substr(0, word.find(' '))) != textWords.end();
}

struct FeedUnit
{
    std::optional<LengthUnit> length; //!< nothing: the file's
    FeedPer per;
};

const FeedUnit* FindFeedUnit(const std::string& word)
{
    static const std::map<std::string, FeedUnit, std::less<>> units{
        {"MMPM", {LengthUnit::Millimetre, FeedPer::Minute}},
        {"MMPR", {LengthUnit::Millimetre, FeedPer::Revolution}},
        {"IPM", {LengthUnit::Inch, FeedPer::Minute}},
        {"IPR", {LengthUnit::Inch, FeedPer::Revolution}},
        {"PERMIN", {std::nullopt, FeedPer::Minute}},
        {"PERREV", {std::nullopt, FeedPer::Revolution}}};
    const auto found = units.find(word);
    return found == units.end() ? nullptr : &found->second;
}

/// Takes the statements one by one and keeps what holds from one to the next.
class Interpreter
{
  public:
    Interpreter(const std::string& file, LengthUnit wantedUnit)
        : lengthUnit(wantedUnit), fileUnit(wantedUnit)
    {
        path.file = file;
        path.operations.emplace_back();
    }

    Toolpath Read(AptStatementReader& statements)
    {
        AptStatement statement;
        while (statements.Next(statement) && statement.word != "FINI") {
            Take(statement);
        }
        if (path.points.empty()) {
            Refuse({1, 1}, "there is no GOTO in this file, so there is nothing to do; "
                           "is it a cutter-location file?");
        }
        WarnOfIgnoredVectors();
        return std::move(path);
    }

  private:
    using Argument = AptStatement::Argument;
    using Handler = void (Interpreter::*)(const AptStatement&);

    [[noreturn]] void Refuse(TextPosition at, const std::string& sentence) const
    {
        throw InputError(path.file, at, sentence);
    }

    void Take(const AptStatement& statement)
    {
        static const std::map<std::string, Handler, std::less<>> handlers{
            {"GOTO", &Interpreter::TakeGoto},
            {"RAPID", &Interpreter::TakeRapid},
            {"FEDRAT", &Interpreter::TakeFeed},
            {"UNITS", &Interpreter::TakeUnits},
            {"MULTAX", &Interpreter::TakeMultax}};
        const auto handler = handlers.find(statement.word);
        if (handler != handlers.end()) {
            (this->*handler->second)(statement);
        } else if (!IsInert(statement.word)) {
            RefuseUnknown(statement);
        }
    }

    [[noreturn]] void RefuseUnknown(const AptStatement& statement) const
    {
        if (statement.word.empty()) {
            Refuse(statement.at, "a statement begins with a word, as in GOTO/x,y,z; add it");
        }
        Refuse(statement.at, Quoted(statement.word) +
                                 " is not understood, and it may move the tool; have "
                                 "the points written as GOTO, or take it out if it "
                                 "moves nothing");
    }

    void TakeGoto(const AptStatement& statement)
    {
        const std::size_t count = statement.arguments.size();
        if (count != 3 && count != 6) {
            Refuse(statement.at,
                   "GOTO has " + std::to_string(count) + " numbers; it takes x,y,z or x,y,z,i,j,k");
        }
        if (count == 6) {
            TakeVector(statement);
        }
        const Vec3 position = Triple(statement, 0);
        ToolPoint point;
        point.line = statement.at.line;
        std::transform(position.begin(), position.end(), point.position.begin(),
                       [this](double x) { return Converted(x, fileUnit, lengthUnit); });
        point.direction = direction;
        point.isRapid = isRapid;
        point.feed = feed;
        path.points.push_back(point);
        isRapid = false;
    }

    void TakeVector(const AptStatement& statement)
    {
        const auto vector = Normalised(Triple(statement, 3));
        if (!vector) {
            Refuse(statement.arguments[3].at,
                   "the tool vector has no length; give its direction as i,j,k");
        }
        if (isMultiAxis) {
            direction = *vector;
        } else if (ignoredVectors++ == 0) {
            firstIgnoredVector = statement.arguments[3].at;
        }
    }

    void TakeRapid(const AptStatement& statement)
    {
        RefuseArgumentsUnless(!statement.hasSlash, statement, "RAPID stands alone");
        isRapid = true;
    }

    void TakeFeed(const AptStatement& statement)
    {
        const Argument* number = nullptr;
        const FeedUnit* unit = nullptr;
        for (const Argument& argument : statement.arguments) {
            if (const FeedUnit* const named = FindFeedUnit(argument.text)) {
                RefuseSecond(unit != nullptr, argument);
                unit = named;
            } else {
                RefuseSecond(number != nullptr, argument);
                number = &argument;
            }
        }
        if (number == nullptr) {
            Refuse(statement.at, "FEDRAT has no number; write it as FEDRAT/300,MMPM");
        }
        const double value = Number(*number);
        if (!(value > 0.0)) {
            Refuse(number->at, "a feed is greater than 0; correct it");
        }
        if (unit != nullptr) {
            feedUnit = *unit;
        }
        feed = Feed{Converted(value, feedUnit.length.value_or(fileUnit), lengthUnit), feedUnit.per};
    }

    void RefuseSecond(bool isSecond, const Argument& argument) const
    {
        if (isSecond) {
            Refuse(argument.at, Quoted(argument.text) +
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
            Refuse(statement.arguments.empty() ? statement.at : statement.arguments[0].at,
                   rule + "; correct this statement");
        }
    }

    double Number(const Argument& argument) const
    {
        const auto value = ParseNumber(argument.text);
        if (!value) {
            Refuse(argument.at,
                   Quoted(argument.text) + " is not a number; write it like 12.5 or -1.0E-3");
        }
        if (std::fabs(*value) > kLargestNumber) {
            Refuse(argument.at, Quoted(argument.text) + " is beyond any machine; correct it");
        }
        return *value;
    }

    Vec3 Triple(const AptStatement& statement, std::size_t first) const
    {
        return {Number(statement.arguments[first]), Number(statement.arguments[first + 1]),
                Number(statement.arguments[first + 2])};
    }

    void WarnOfIgnoredVectors()
    {
        if (ignoredVectors > 0) {
            path.warnings.push_back(
                path.file + ":" + std::to_string(firstIgnoredVector.line) + ":" +
                std::to_string(firstIgnoredVector.column) +
                ": warning: tool vectors after MULTAX/OFF are ignored, " +
                std::to_string(ignoredVectors) +
                " in all and the first of them here; put MULTAX/ON before them if they count");
        }
    }

    Toolpath path;
    const LengthUnit lengthUnit;
    LengthUnit fileUnit;
    Vec3 direction{kUpright};
    bool isMultiAxis{true};
    bool isRapid{false}; // good for one GOTO
    std::optional<Feed> feed;
    FeedUnit feedUnit{std::nullopt, FeedPer::Minute};
    std::uint64_t ignoredVectors{0};
    TextPosition firstIgnoredVector;
};

} // namespace

Toolpath ReadApt(std::istream& in, const std::string& file, LengthUnit lengthUnit)
{
    LineReader lines(in, file, kBounds);
    AptStatementReader statements(lines);
    return Interpreter(file, lengthUnit).Read(statements);
}

Toolpath ReadAptFile(const std::filesystem::path& path, LengthUnit lengthUnit)
{
    std::ifstream in = OpenInput(path);
    return ReadApt(in, path.string(), lengthUnit);
}

} // namespace host
