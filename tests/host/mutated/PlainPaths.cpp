#include "mutated/PlainPaths.h"

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
};

std::vector<PlainStatement> Statements(const std::string& text)
{
    std::vector<PlainStatement> all;
    std::string joined;
    int first = 0;
    int number = 0;
    for (std::string line : PlainLines(text)) {
        ++number;
        first = Trim(joined).empty() ? number : first;
        line = Trim(line.substr(0, line.find("$$")) + " ");
        if (!line.empty() && line.back() == '$') {
            joined += line.substr(0, line.size() - 1) + " ";
            continue;
        }
        joined += line;
        PlainStatement statement;
        statement.line = first;
        const std::size_t slash = joined.find('/');
        statement.word = Upper(Trim(joined.substr(0, slash)));
        if (slash != std::string::npos) {
            for (const std::string& argument : SplitAt(joined.substr(slash + 1), ',')) {
                statement.arguments.push_back(Upper(Trim(argument)));
            }
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
        }
    }
    return moves;
}

// CSV ----------------------------------------------------------------------------------------

namespace
{

/// The cells of a line; one in quotes loses them.
std::vector<std::string> CellsIn(const std::string& line)
{
    std::vector<std::string> cells(1);
    bool isInQuotes = false;
    bool wasInQuotes = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"' && (isInQuotes || Trim(cells.back()).empty() || wasInQuotes)) {
            if (!isInQuotes && wasInQuotes) {
                cells.back() += '"'; // written twice
            }
            isInQuotes = !isInQuotes;
            wasInQuotes = true;
        } else if (line[i] == ',' && !isInQuotes) {
            cells.emplace_back();
            wasInQuotes = false;
        } else {
            cells.back() += line[i];
        }
    }
    return cells;
}

} // namespace

std::vector<PlainMove> PlainCsv(const std::string& text)
{
    std::vector<PlainMove> moves;
    std::map<std::string, std::size_t> columns;
    std::optional<double> feed;
    int number = 0;
    for (const std::string& line : PlainLines(text)) {
        ++number;
        if (Trim(line).empty()) {
            continue;
        }
        const std::vector<std::string> cells = CellsIn(line);
        if (columns.empty()) {
            for (std::size_t i = 0; i < cells.size(); ++i) {
                columns[Upper(Trim(cells[i]))] = i;
            }
            continue;
        }
        const auto cell = [&](const std::string& name) {
            const auto column = columns.find(name);
            return column == columns.end() ? std::string() : Trim(cells.at(column->second));
        };
        feed = cell("F").empty() ? feed : std::optional(PlainNumber(cell("F")));
        PlainMove move;
        move.line = number;
        move.position = {PlainNumber(cell("X")), PlainNumber(cell("Y")), PlainNumber(cell("Z"))};
        move.direction =
            Unit({PlainNumber(cell("I")), PlainNumber(cell("J")), PlainNumber(cell("K"))});
        move.isRapid = cell("RAPID") == "1" || Upper(cell("RAPID")) == "TRUE";
        move.feed = feed;
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
    std::map<char, double> numbers;
    std::set<double> g;
    std::set<double> m;
};

NcLine Parsed(const std::string& words)
{
    NcLine line;
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

struct NcState
{
    double unit{1.0};
    bool isRapid{false};
    int feedMode{94};
    std::optional<double> feed;
    std::array<std::optional<double>, 3> place{};
    Triple given{0, 0, 1};

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
        if (line.m.count(6) > 0) {
            place = {};
        }
    }

    void Move(const NcLine& line, int number, std::vector<PlainMove>& moves)
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
        move.line = number;
        move.isKnown = place[0] && place[1] && place[2];
        move.position = {place[0].value_or(0), place[1].value_or(0), place[2].value_or(0)};
        move.direction = Unit(given);
        move.isRapid = isRapid;
        move.feed = feedMode == 93 ? std::nullopt : feed;
        moves.push_back(move);
    }
};

} // namespace

std::vector<PlainMove> PlainNc(const std::string& text)
{
    std::vector<PlainMove> moves;
    NcState state;
    int number = 0;
    bool hasBegun = false;
    for (const std::string& line : PlainLines(text)) {
        ++number;
        const std::string words = NcWords(line);
        if (words.empty() || words[0] == '%') {
            if (!words.empty() && hasBegun) {
                break;
            }
            continue;
        }
        hasBegun = true;
        const NcLine parsed = Parsed(words);
        state.TakeChange(parsed);
        if (parsed.g.count(4) == 0) { // whose X and F are times
            state.TakeModes(parsed);
            state.Move(parsed, number, moves);
        }
        if (parsed.m.count(2) > 0 || parsed.m.count(30) > 0) {
            break;
        }
    }
    return moves;
}

} // namespace test
