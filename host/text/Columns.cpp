#include "text/Columns.h"

#include <algorithm>
#include <utility>

#include "text/Utf8.h"

namespace host
{

namespace
{

constexpr std::size_t kGap = 2;

} // namespace

Columns::Columns(std::vector<Side> ofSides) : sides(std::move(ofSides)) {}

void Columns::Add(std::vector<std::string> row)
{
    rows.push_back(std::move(row));
}

void Columns::Print(std::ostream& out, const std::string& indent) const
{
    std::vector<std::size_t> widths;
    for (const std::vector<std::string>& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], CharacterCount(row[i]));
        }
    }
    for (const std::vector<std::string>& row : rows) {
        std::string line = indent;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - CharacterCount(row[i]), ' ');
            const bool isRight = i < sides.size() && sides[i] == Side::Right;
            line += std::string(i == 0 ? 0 : kGap, ' ');
            line += isRight ? padding + row[i] : row[i] + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}

} // namespace host
