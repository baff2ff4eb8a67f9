#include "post/BlockWriter.h"

#include <algorithm>
#include <utility>

namespace host
{

BlockWriter::BlockWriter(const Dialect& inDialect, std::vector<Coordinate> ofBlocks)
    : dialect(inDialect), coordinates(std::move(ofBlocks)), heldValues(coordinates.size())
{
    if (dialect.lineNumbers) {
        nextNumber = dialect.lineNumbers->first;
    }
}

std::string BlockWriter::Rapid(const std::vector<double>& values)
{
    const std::string motion = MotionWord(dialect.rapid);
    return Numbered(motion + Words(values, false));
}

std::string BlockWriter::RapidTurn(const std::vector<double>& values)
{
    const std::string motion = MotionWord(dialect.rapid);
    return Numbered(motion + Words(values, true));
}

std::string BlockWriter::Straight(const std::vector<double>& values, const FeedWords& feed)
{
    std::string block;
    if (feed.mode != heldMode) {
        block += " " + feed.mode;
        heldFeed.clear();
    }
    block += MotionWord(dialect.linear) + Words(values, false);
    if (!dialect.isModal || feed.isRepeated || feed.feed != heldFeed) {
        block += " " + feed.feed;
    }
    heldMode = feed.mode;
    heldFeed = feed.feed;
    return Numbered(block);
}

std::string BlockWriter::Lines(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += Numbered(" " + line);
    }
    return text;
}

std::string BlockWriter::Comment(std::string_view text) const
{
    const std::string comment = CommentText(text);
    return dialect.comment == CommentStyle::Parentheses ? "(" + comment + ")\n"
                                                        : "; " + comment + "\n";
}

void BlockWriter::Forget()
{
    heldValues.assign(heldValues.size(), std::nullopt);
    heldMotion.clear();
    heldMode.clear();
    heldFeed.clear();
}

/// `block` has a blank before each word.
std::string BlockWriter::Numbered(const std::string& block)
{
    if (!dialect.lineNumbers) {
        return block.substr(1) + "\n";
    }
    const std::string number = "N" + std::to_string(nextNumber);
    const LineNumbers& numbers = *dialect.lineNumbers;
    nextNumber =
        numbers.last - nextNumber < numbers.step ? numbers.first : nextNumber + numbers.step;
    return number + block + "\n";
}

std::string BlockWriter::MotionWord(const std::string& word)
{
    const bool isLeftOut = dialect.isModal && word == heldMotion;
    heldMotion = word;
    return isLeftOut ? "" : " " + word;
}

std::string BlockWriter::Words(const std::vector<double>& values, bool onlyRotary)
{
    std::string words;
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        const Coordinate& coordinate = coordinates[i];
        const bool isLeftOut =
            (dialect.isModal && heldValues[i] == values[i]) || (onlyRotary && !coordinate.isRotary);
        if (!isLeftOut) {
            words += " " + coordinate.address +
                     NumberText(values[i], coordinate.decimals, dialect.decimals.keepsZeros);
            heldValues[i] = values[i];
        }
    }
    return words;
}

std::string CommentText(std::string_view text)
{
    constexpr std::size_t kLongest = 60;
    std::string shown(text.substr(0, kLongest));
    std::replace(shown.begin(), shown.end(), '(', '[');
    std::replace(shown.begin(), shown.end(), ')', ']');
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return shown;
}

} // namespace host
