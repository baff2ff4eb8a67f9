#include "toolpath/AptStatement.h"

#include <algorithm>
#include <string_view>

#include "toolpath/PathText.h"

namespace host
{

namespace
{

constexpr std::size_t kMaxLines = 100; // of one statement

/// In capitals, runs of blanks as one.
std::string Normal(std::string_view text)
{
    std::string normal;
    for (const char c : text) {
        if (!IsBlank(c)) {
            normal += Capital(c);
        } else if (!normal.empty() && normal.back() != ' ') {
            normal += ' ';
        }
    }
    return normal;
}

} // namespace

bool AptStatementReader::Next(AptStatement& statement)
{
    if (!JoinLines()) {
        return false;
    }
    const std::string_view all = WithoutTrailingBlanks(text);
    const std::size_t start = LeadingBlanks(all);
    const std::size_t slash = all.find('/');
    statement.at = PositionOf(start);
    statement.word = Normal(WithoutTrailingBlanks(all.substr(start, slash - start)));
    statement.hasSlash = slash != std::string_view::npos;
    statement.next = pieces.size() > 1 ? TextPosition{pieces[1].line, 1} : TextPosition{};
    statement.arguments.clear();
    for (std::size_t next = slash; next != std::string_view::npos;) {
        const std::size_t from = next + 1;
        next = all.find(',', from);
        const std::string_view argument = WithoutTrailingBlanks(all.substr(from, next - from));
        const std::size_t blanks = LeadingBlanks(argument);
        const std::string_view written = argument.substr(blanks);
        statement.arguments.push_back(
            {Normal(written), std::string(written), PositionOf(from + blanks)});
    }
    return true;
}

/// Collects the lines of the next statement; false at the end of the text.
bool AptStatementReader::JoinLines()
{
    bool isContinued = false;
    do {
        if (!isContinued) {
            text.clear();
            pieces.clear();
        }
        if (!lines.Next()) {
            if (isContinued) {
                throw InputError(lines.File(), PositionOf(text.size()),
                                 "the file ends after a $ that announces another line; it may have "
                                 "been cut off");
            }
            return false;
        }
        if (pieces.size() == kMaxLines) {
            throw InputError(lines.File(), {lines.Number(), 1},
                             "this statement runs over more than " + std::to_string(kMaxLines) +
                                 " lines; is a $ at the end of a line meant?");
        }
        isContinued = AppendLine();
    } while (isContinued || LeadingBlanks(text) == text.size());
    return true;
}

/// Appends the current line without comment; true when a trailing $ says that it goes on.
bool AptStatementReader::AppendLine()
{
    std::string_view line = lines.Line();
    line = WithoutTrailingBlanks(line.substr(0, line.find("$$")));
    const bool isContinued = !line.empty() && line.back() == '$';
    if (isContinued) {
        line.remove_suffix(1);
    }
    if (!pieces.empty()) {
        text += ' '; // a word or a number ends with its line
    }
    pieces.push_back({text.size(), lines.Number()});
    text += line;
    return isContinued;
}

TextPosition AptStatementReader::PositionOf(std::size_t offset) const
{
    const auto after = std::upper_bound(
        pieces.begin(), pieces.end(), offset,
        [](std::size_t wanted, const Piece& piece) { return wanted < piece.offset; });
    const Piece& piece = *(after - 1);
    return {piece.line, static_cast<int>(offset - piece.offset) + 1};
}

} // namespace host
