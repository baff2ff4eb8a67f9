#include "toolpath/NcBlock.h"

#include <algorithm>
#include <cmath>

#include "text/Numbers.h"
#include "text/Quoted.h"
#include "toolpath/PathText.h"

namespace host
{

namespace
{

bool IsLetter(char c)
{
    return Capital(c) >= 'A' && Capital(c) <= 'Z';
}

bool IsPartOfNumber(char c)
{
    return IsDigit(c) || c == '.' || c == '+' || c == '-';
}

} // namespace

const NcWord* NcBlock::Find(char letter) const
{
    return FindAny(std::string_view(&letter, 1));
}

const NcWord* NcBlock::FindAny(std::string_view letters) const
{
    const auto found = std::find_if(words.begin(), words.end(), [letters](const NcWord& word) {
        return letters.find(word.letter) != std::string_view::npos;
    });
    return found == words.end() ? nullptr : &*found;
}

bool NcBlockReader::Next(NcBlock& block)
{
    block.words.clear();
    while (block.words.empty()) {
        if (!lines.Next()) {
            return false;
        }
        if (!IsProgramMark()) {
            TakeLine(block);
        } else if (hasBegun) {
            return false;
        }
    }
    hasBegun = true;
    block.line = lines.Number();
    return true;
}

bool NcBlockReader::IsProgramMark() const
{
    const std::string_view line = lines.Line();
    const std::size_t start = LeadingBlanks(line);
    return start < line.size() && line[start] == '%';
}

void NcBlockReader::TakeLine(NcBlock& block) const
{
    const std::string_view line = lines.Line();
    std::size_t next = 0;
    while (next < line.size() && line[next] != ';') {
        if (IsBlank(line[next])) {
            ++next;
        } else if (line[next] == '(') {
            next = EndOfComment(next);
        } else {
            next = TakeWord(block, next);
        }
    }
}

std::size_t NcBlockReader::EndOfComment(std::size_t start) const
{
    const std::size_t end = lines.Line().find_first_of("()", start + 1);
    if (end == std::string_view::npos || lines.Line()[end] == '(') {
        Refuse(start, "this comment has no ) of its own on its line; add it");
    }
    return end + 1;
}

std::size_t NcBlockReader::TakeWord(NcBlock& block, std::size_t start) const
{
    const std::string_view line = lines.Line();
    if (line[start] == '/') {
        Refuse(start, "whether a block behind a / is run is for the operator to say; take the / "
                      "out, or the block");
    }
    if (!IsLetter(line[start])) {
        Refuse(start, Quoted(line.substr(start, 1)) +
                          " does not begin a word like X12.5; have variables, calculations and "
                          "calls written out as plain words");
    }
    const std::size_t from = start + 1 + LeadingBlanks(line.substr(start + 1));
    const auto* const stop = std::find_if_not(line.begin() + from, line.end(), IsPartOfNumber);
    const std::string_view number(line.data() + from,
                                  static_cast<std::size_t>(stop - line.begin()) - from);
    const auto value = ParseNumber(number);
    if (!value) {
        Refuse(start, std::string(1, Capital(line[start])) +
                          " is to be followed by a number like 12.5 or -1; what stands there is " +
                          Quoted(line.substr(from, std::max<std::size_t>(number.size(), 1))));
    }
    if (std::fabs(*value) > kLargestPathNumber) {
        Refuse(from, Quoted(number) + " is beyond any machine; correct it");
    }
    block.words.push_back({Capital(line[start]),
                           *value,
                           std::string(number),
                           {lines.Number(), static_cast<int>(start) + 1}});
    return from + number.size();
}

void NcBlockReader::Refuse(std::size_t offset, const std::string& sentence) const
{
    throw InputError(lines.File(), {lines.Number(), static_cast<int>(offset) + 1}, sentence);
}

} // namespace host
