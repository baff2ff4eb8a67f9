#include "mutated/PlainPaths.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <map>
#include <set>

#include "mutated/PlainText.h"

namespace test
{

namespace
{

using Triple = std::array<double, 3>;

Triple Unit(const Triple& v)
{
    const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return {v[0] / length, v[1] / length, v[2] / length};
}

Triple CrossOf(const Triple& a, const Triple& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// APT ----------------------------------------------------------------------------------------

struct PlainStatement
{
    int line{0};
    std::string word;
    std::vector<std::string> arguments;
    std::string name; // the first argument as it is written
};

/// Each run of blanks as one.
std::string Squeezed(const std::string& text)
{
    std::string squeezed;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t';
        if (!isBlank || squeezed.empty() || squeezed.back() != ' ') {
            squeezed += isBlank ? ' ' : c;
        }
    }
    return squeezed;
}

std::vector<PlainStatement> Statements(const std::string& text)
{
    std::vector<PlainStatement> all;
    std::string joined;
    int first = 0;
    int number = 0;
    for (std::string line : PlainLines(text)) {
        ++number;
        first = Trim(joined).empty() ? number : first;
        line = line.substr(0, line.find("$$"));
        const std::string shown = Trim(line);
        if (!shown.empty() && shown.back() == '$') {
            joined += line.substr(0, line.rfind('$')) + " "; // with the blanks before the $
            continue;
        }
        joined += line;
        PlainStatement statement;
        statement.line = first;
        const std::size_t slash = joined.find('/');
        statement.word = Squeezed(Upper(Trim(joined.substr(0, slash))));
        if (slash != std::string::npos) {
            for (const std::string& argument : SplitAt(joined.substr(slash + 1), ',')) {
                statement.arguments.push_back(Squeezed(Upper(Trim(argument))));
            }
            statement.name = Trim(SplitAt(joined.substr(slash + 1), ',')[0]);
        }
        all.push_back(statement);
        joined.clear();
    }
    return all;
}

/// What holds from one statement to the next.
struct AptState
{
    double unit{1.0};
    Triple origin{};
    Triple x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
    Triple direction{0, 0, 1};
    bool hasVector{false};
    bool takesVectors{true};
    bool isRapid{false};
    double feedUnit{0.0}; // 0: that of the lengths
    std::optional<double> feed;
    std::string operation;
    std::optional<int> tool;
    std::optional<double> toolLength;

    Triple Turned(const Triple& v) const
    {
        Triple turned{};
        for (std::size_t i = 0; i < 3; ++i) {
            turned[i] = v[0] * x[i] + v[1] * y[i] + v[2] * z[i];
        }
        return turned;
    }

    void Locate(const PlainStatement& statement, PlainMove& move)
    {
        Triple numbers{};
        for (std::size_t i = 0; i < 3; ++i) {
            numbers[i] = unit * PlainNumber(statement.arguments[i]);
        }
        move.position = Turned(numbers);
        for (std::size_t i = 0; i < 3; ++i) {
            move.position[i] += origin[i];
        }
        if (statement.arguments.size() > 3 && takesVectors) {
            direction = Turned(
                Unit({PlainNumber(statement.arguments[3]), PlainNumber(statement.arguments[4]),
                      PlainNumber(statement.arguments[5])}));
            hasVector = true;
        }
    }

    void TakeFeed(const PlainStatement& statement)
    {
        static const std::map<std::string, double> units{{"MMPM", 1.0},   {"MMPR", 1.0},
                                                         {"IPM", 25.4},   {"IPR", 25.4},
                                                         {"PERMIN", 0.0}, {"PERREV", 0.0}};
        double value = 0.0;
        for (const std::string& argument : statement.arguments) {
            const auto named = units.find(argument);
            if (named == units.end()) {
                value = PlainNumber(argument);
            } else {
                feedUnit = named->second;
            }
        }
        feed = value * (feedUnit > 0.0 ? feedUnit : unit);
    }

    void TakeFrame(const PlainStatement& statement)
    {
        std::array<double, 9> n{};
        for (std::size_t i = 0; i < n.size(); ++i) {
            n[i] = PlainNumber(statement.arguments[i]);
        }
        origin = {unit * n[0], unit * n[1], unit * n[2]};
        x = Unit({n[3], n[4], n[5]});
        z = Unit(CrossOf(x, Triple{n[6], n[7], n[8]}));
        y = CrossOf(z, x);
        direction = hasVector ? direction : z;
    }

    void TakeName(std::string name)
    {
        if (name.size() > 1 && name.front() == '\'' && name.back() == '\'') {
            name = name.substr(1, name.size() - 2);
        }
        for (char& c : name) {
            c = std::iscntrl(static_cast<unsigned char>(c)) != 0 ? '?' : c;
        }
        operation = name;
    }

    void TakeTool(const PlainStatement& statement)
    {
        if (statement.word == "TLDATA") {
            const bool isMill = statement.arguments.size() > 3 && statement.arguments[0] == "MILL";
            toolLength =
                isMill ? std::optional(unit * PlainNumber(statement.arguments[3])) : std::nullopt;
        } else if (statement.word == "LOADTL" || statement.word == "LOAD") {
            const std::string& number = statement.arguments[statement.word == "LOAD" ? 1 : 0];
            tool = static_cast<int>(PlainNumber(number));
        }
    }
};

} // namespace

std::vector<PlainMove> PlainApt(const std::string& text)
{
    std::vector<PlainMove> moves;
    AptState state;
    for (const PlainStatement& statement : Statements(text)) {
        if (statement.word == "FINI") {
            break;
        }
        if (statement.word == "GOTO" || statement.word == "FROM") {
            PlainMove move;
            state.Locate(statement, move);
            move.line = statement.line;
            move.direction = state.direction;
            move.isRapid = state.isRapid;
            move.feed = state.feed;
            move.operation = state.operation;
            move.tool = state.tool;
            move.toolLength = state.toolLength;
            if (statement.word == "GOTO") {
                moves.push_back(move);
                state.isRapid = false;
            }
        } else if (statement.word == "RAPID") {
            state.isRapid = true;
        } else if (statement.word == "FEDRAT") {
            state.TakeFeed(statement);
        } else if (statement.word == "UNITS") {
            state.unit = statement.arguments[0] == "MM" ? 1.0 : 25.4;
        } else if (statement.word == "MULTAX") {
            state.takesVectors = statement.arguments.empty() || statement.arguments[0] == "ON";
        } else if (statement.word == "MSYS") {
            state.TakeFrame(statement);
        } else if (statement.word == "END-OF-PATH") {
            state.operation.clear();
        } else if (Upper(statement.word.substr(0, 4)) == "TOOL" && statement.word.size() > 4) {
            state.TakeName(statement.name);
        } else {
            state.TakeTool(statement);
        }
    }
    return moves;
}

// CSV ----------------------------------------------------------------------------------------

namespace
{

/// The cells of a line: without blanks around, or what stands in quotes.
std::vector<std::string> CellsIn(const std::string& line)
{
    std::vector<std::string> cells(1);
    bool isInQuotes = false;
    bool wasInQuotes = false;
    for (const char c : line) {
        std::string& cell = cells.back();
        if (c == '"') {
            cell = wasInQuotes || isInQuotes ? cell : "";
            cell += !isInQuotes && wasInQuotes ? "\"" : ""; // written twice
            isInQuotes = !isInQuotes;
            wasInQuotes = true;
        } else if (isInQuotes) {
            cell += c;
        } else if (c == ',') {
            cell = wasInQuotes ? cell : Trim(cell);
            cells.emplace_back();
            wasInQuotes = false;
        } else if (!wasInQuotes) {
            cell += c;
        }
    }
    cells.back() = wasInQuotes ? cells.back() : Trim(cells.back());
    return cells;
}

} // namespace

std::vector<PlainMove> PlainCsv(const std::string& text)
{
    std::vector<PlainMove> moves;
    std::map<std::string, std::size_t> columns;
    std::optional<double> feed;
    std::string operation;
    int number = 0;
    for (const std::string& line : PlainLines(text)) {
        ++number;
        if (Trim(line).empty()) {
            continue;
        }
        const std::vector<std::string> cells = CellsIn(line);
        if (columns.empty()) {
            for (std::size_t i = 0; i < cells.size(); ++i) {
                columns[Upper(cells[i])] = i;
            }
            continue;
        }
        const auto cell = [&](const std::string& name) {
            const auto column = columns.find(name);
            return column == columns.end() ? std::string() : cells.at(column->second);
        };
        feed = cell("F").empty() ? feed : std::optional(PlainNumber(cell("F")));
        operation = cell("OP").empty() ? operation : cell("OP");
        PlainMove move;
        move.line = number;
        move.position = {PlainNumber(cell("X")), PlainNumber(cell("Y")), PlainNumber(cell("Z"))};
        move.direction =
            Unit({PlainNumber(cell("I")), PlainNumber(cell("J")), PlainNumber(cell("K"))});
        move.isRapid = cell("RAPID") == "1" || Upper(cell("RAPID")) == "TRUE";
        move.feed = feed;
        for (const char c : operation) {
            move.operation += std::iscntrl(static_cast<unsigned char>(c)) != 0 ? '?' : c;
        }
        moves.push_back(move);
    }
    return moves;
}

// NC -----------------------------------------------------------------------------------------

namespace
{

/// The line without comments and blanks.
std::string NcWords(const std::string& line)
{
    std::string words;
    bool isComment = false;
    for (const char c : line) {
        if (c == ';' && !isComment) {
            break;
        }
        isComment = isComment || c == '(';
        if (!isComment && c != ' ' && c != '\t') {
            words += c;
        }
        isComment = isComment && c != ')';
    }
    return Upper(words);
}

struct NcLine
{
    int number{0}; // of the line
    std::map<char, double> numbers;
    std::set<double> g;
    std::set<double> m;
};

NcLine Parsed(int lineNumber, const std::string& words)
{
    NcLine line;
    line.number = lineNumber;
    for (std::size_t i = 0; i < words.size();) {
        const char letter = words[i];
        const std::size_t end =
            std::min(words.find_first_not_of("+-.0123456789", i + 1), words.size());
        const double number = PlainNumber(words.substr(i + 1, end - i - 1));
        if (letter == 'G') {
            line.g.insert(number);
        } else if (letter == 'M') {
            line.m.insert(number);
        } else {
            line.numbers[letter] = number;
        }
        i = end;
    }
    return line;
}

/// Up to the end of the program.
std::vector<NcLine> NcLines(const std::string& text)
{
    std::vector<NcLine> lines;
    int number = 0;
    for (const std::string& line : PlainLines(text)) {
        ++number;
        const std::string words = NcWords(line);
        const bool isMark = !words.empty() && words[0] == '%';
        if (isMark && !lines.empty()) {
            break;
        }
        if (words.empty() || isMark) {
            continue;
        }
        lines.push_back(Parsed(number, words));
        if (lines.back().m.count(2) > 0 || lines.back().m.count(30) > 0) {
            break;
        }
    }
    return lines;
}

struct NcState
{
    double unit{1.0};
    bool isRapid{false};
    int feedMode{94};
    std::optional<double> feed;
    std::array<std::optional<double>, 3> place{};
    Triple given{0, 0, 1};
    bool selectsByT{true}; // no block changes the tool by M6
    std::optional<int> selected;
    std::optional<int> changed;

    void TakeModes(const NcLine& line)
    {
        const auto has = [&line](double code) { return line.g.count(code) > 0; };
        unit = has(20) ? 25.4 : has(21) ? 1.0 : unit;
        isRapid = has(0) || (isRapid && !has(1));
        for (const int mode : {93, 94, 95}) {
            if (has(mode) && mode != feedMode) {
                feedMode = mode;
                feed.reset();
            }
        }
        if (line.numbers.count('F') > 0) {
            feed = unit * line.numbers.at('F');
        }
    }

    void TakeChange(const NcLine& line)
    {
        if (line.numbers.count('T') > 0) {
            selected = static_cast<int>(line.numbers.at('T'));
        }
        if (line.m.count(6) > 0) {
            changed = selected;
            place = {};
        }
    }

    void Move(const NcLine& line, std::vector<PlainMove>& moves)
    {
        bool isMove = false;
        for (std::size_t i = 0; i < 3; ++i) {
            if (const auto word = line.numbers.find("XYZ"[i]); word != line.numbers.end()) {
                place[i] = unit * word->second;
                isMove = true;
            }
            if (const auto word = line.numbers.find("IJK"[i]); word != line.numbers.end()) {
                given[i] = word->second;
                isMove = true;
            }
        }
        if (!isMove) {
            return;
        }
        PlainMove move;
        move.line = line.number;
        move.isKnown = place[0] && place[1] && place[2];
        move.position = {place[0].value_or(0), place[1].value_or(0), place[2].value_or(0)};
        move.direction = Unit(given);
        move.isRapid = isRapid;
        move.feed = feed;
        move.isFeedFollowed = feedMode != 93;
        move.tool = selectsByT ? selected : changed;
        moves.push_back(move);
    }
};

} // namespace

std::vector<PlainMove> PlainNc(const std::string& text)
{
    const std::vector<NcLine> lines = NcLines(text);
    std::vector<PlainMove> moves;
    NcState state;
    state.selectsByT = std::none_of(lines.begin(), lines.end(),
                                    [](const NcLine& line) { return line.m.count(6) > 0; });
    for (const NcLine& line : lines) {
        state.TakeChange(line);
        if (line.g.count(4) == 0) { // whose X and F are times
            state.TakeModes(line);
            state.Move(line, moves);
        }
    }
    return moves;
}

} // namespace test
