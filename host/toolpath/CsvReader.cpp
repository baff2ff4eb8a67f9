#include "toolpath/CsvReader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "text/LineReader.h"
#include "text/Quoted.h"
#include "toolpath/CsvRow.h"
#include "toolpath/PathBuilder.h"
#include "toolpath/PathText.h"

namespace host
{

namespace
{

enum Column : std::size_t { X, Y, Z, I, J, K, FeedPerMinute, Rapid, Op, kColumns };

constexpr std::array<std::string_view, kColumns> kNames{"X", "Y", "Z",     "I", "J",
                                                        "K", "F", "RAPID", "OP"};
constexpr std::size_t kNeeded = FeedPerMinute; // the columns before it
constexpr const char* kHeaderRule =
    "the header names the columns x,y,z,i,j,k and, if wanted, f, rapid, op, with commas between";

class CsvReader
{
  public:
    CsvReader(LineReader& from, const std::string& file) : lines(from), path(file) {}

    Toolpath Read()
    {
        if (!NextRow()) {
            path.Refuse({1, 1}, std::string("this file is empty; ") + kHeaderRule);
        }
        TakeHeader();
        while (NextRow()) {
            TakePoint();
        }
        return path.Finish("there is no row behind the header, so there is nothing to do");
    }

  private:
    /// Lines without anything in them are passed over.
    bool NextRow()
    {
        do {
            if (!lines.Next()) {
                return false;
            }
        } while (LeadingBlanks(lines.Line()) == lines.Line().size());
        cells = CsvCellsOf(lines);
        return true;
    }

    void TakeHeader()
    {
        width = cells.size();
        for (std::size_t i = 0; i < width; ++i) {
            const auto* const name =
                std::find(kNames.begin(), kNames.end(), Capitals(cells[i].text));
            if (name == kNames.end()) {
                path.Refuse(cells[i].at,
                            Quoted(cells[i].text) + " is not a column; " + kHeaderRule);
            }
            std::optional<std::size_t>& place =
                places.at(static_cast<std::size_t>(name - kNames.begin()));
            if (place) {
                path.Refuse(cells[i].at, "there is a column " + Quoted(cells[i].text) +
                                             " already; take one of them out");
            }
            place = i;
        }
        const auto* const missing =
            std::find(places.begin(), places.begin() + kNeeded, std::nullopt);
        if (missing != places.begin() + kNeeded) {
            const std::string_view name =
                kNames.at(static_cast<std::size_t>(missing - places.begin()));
            path.Refuse({lines.Number(), 1},
                        "the column " + std::string(name) + " is missing; " + kHeaderRule);
        }
    }

    void TakePoint()
    {
        if (cells.size() != width) {
            path.Refuse(cells.back().at, "this row has " + std::to_string(cells.size()) +
                                             " cells and the header " + std::to_string(width) +
                                             "; make them as many");
        }
        TakeFeed();
        TakeOperation();
        ToolPoint point;
        point.line = lines.Number();
        point.position = {Number(X), Number(Y), Number(Z)};
        point.direction =
            PathDirection(path.File(), Cell(I)->at, {Number(I), Number(J), Number(K)});
        point.isRapid = IsRapid();
        point.feed = feed;
        path.Add(point);
    }

    void TakeFeed()
    {
        const CsvCell* const cell = Cell(FeedPerMinute);
        if (cell != nullptr && !cell->text.empty()) {
            feed = Feed{PathFeed(path.File(), cell->at, Number(FeedPerMinute)), FeedPer::Minute};
        }
    }

    void TakeOperation()
    {
        const CsvCell* const cell = Cell(Op);
        if (cell != nullptr && !cell->text.empty() && cell->text != operation) {
            operation = cell->text;
            path.BeginOperation(operation, lines.Number());
        }
    }

    bool IsRapid() const
    {
        const CsvCell* const cell = Cell(Rapid);
        const std::string text = cell == nullptr ? std::string() : Capitals(cell->text);
        const bool isTrue = text == "1" || text == "TRUE";
        if (!isTrue && !text.empty() && text != "0" && text != "FALSE") {
            path.Refuse(cell->at, Quoted(cell->text) +
                                      " does not say whether this is a rapid; write 1 or 0, "
                                      "true or false, or nothing");
        }
        return isTrue;
    }

    double Number(Column column) const
    {
        return PathNumber(path.File(), Cell(column)->at, Cell(column)->text);
    }

    /// Null for a column that the file does not have.
    const CsvCell* Cell(Column column) const
    {
        const std::optional<std::size_t>& place = places.at(column);
        return place ? &cells.at(*place) : nullptr;
    }

    LineReader& lines;
    PathBuilder path;
    std::vector<CsvCell> cells; // of the current line
    std::size_t width{0};
    std::array<std::optional<std::size_t>, kColumns> places{};
    std::optional<Feed> feed;
    std::string operation;
};

} // namespace

Toolpath ReadCsv(std::istream& in, const std::string& file)
{
    LineReader lines(in, file, kPathBounds);
    return CsvReader(lines, file).Read();
}

} // namespace host
