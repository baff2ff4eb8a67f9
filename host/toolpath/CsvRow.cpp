#include "toolpath/CsvRow.h"

#include <string_view>

#include "toolpath/PathText.h"

namespace host
{

namespace
{

constexpr char kQuote = '"';

/// Walks along one line.
class Splitter
{
  public:
    explicit Splitter(const LineReader& lines) : source(lines), line(lines.Line()) {}

    std::vector<CsvCell> Cells()
    {
        std::vector<CsvCell> cells;
        do {
            cells.push_back(Cell());
        } while (SkipComma());
        return cells;
    }

  private:
    CsvCell Cell()
    {
        SkipBlanks();
        const TextPosition at = Here();
        const bool isQuoted = next < line.size() && line[next] == kQuote;
        return {isQuoted ? InQuotes(at) : Plain(), at};
    }

    std::string Plain()
    {
        const std::string_view rest = line.substr(next);
        const std::string_view text = rest.substr(0, rest.find(','));
        if (const std::size_t quote = text.find(kQuote); quote != std::string_view::npos) {
            next += quote;
            throw InputError(source.File(), Here(),
                             "a quote stands within this cell; put the whole cell in quotes, and "
                             "this one twice");
        }
        next += text.size();
        return std::string(WithoutTrailingBlanks(text));
    }

    std::string InQuotes(TextPosition at)
    {
        std::string text;
        do {
            const std::size_t end = line.find(kQuote, next + 1);
            if (end == std::string_view::npos) {
                throw InputError(source.File(), at,
                                 "this quote has no other on its line; add it, or take it out");
            }
            text += line.substr(next + 1, end - next - 1);
            next = end + 1;
            if (next < line.size() && line[next] == kQuote) {
                text += kQuote;
            }
        } while (next < line.size() && line[next] == kQuote);
        SkipBlanks();
        if (next < line.size() && line[next] != ',') {
            throw InputError(source.File(), Here(),
                             "behind a cell in quotes a comma is expected; a quote inside is "
                             "written twice");
        }
        return text;
    }

    bool SkipComma()
    {
        const bool isThere = next < line.size();
        next += isThere ? 1 : 0;
        return isThere;
    }

    void SkipBlanks() { next += LeadingBlanks(line.substr(next)); }

    TextPosition Here() const { return {source.Number(), static_cast<int>(next) + 1}; }

    const LineReader& source;
    const std::string_view line;
    std::size_t next{0};
};

} // namespace

std::vector<CsvCell> CsvCellsOf(const LineReader& lines)
{
    return Splitter(lines).Cells();
}

} // namespace host
