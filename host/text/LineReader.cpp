#include "text/LineReader.h"

#include <utility>

#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/Utf8.h"

namespace host
{

namespace
{

constexpr std::size_t kLineEnd = 2; // the CR, and the zero that getline puts behind a line

} // namespace

LineReader::LineReader(std::istream& from, std::string fileName, TextBounds within)
    : in(from), file(std::move(fileName)), bounds(within), buffer(within.lineLength + kLineEnd)
{}

bool LineReader::Next()
{
    if (!in.good()) {
        return false;
    }
    in.getline(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    const auto taken = static_cast<std::size_t>(in.gcount());
    if (in.bad()) {
        throw InputError(file, "this file cannot be read to its end; try again");
    }
    if (taken == 0) {
        return false;
    }
    ++number;
    bytesTaken += taken;
    const bool isTooLong = in.fail();
    const bool hasLineFeed = !in.eof() && !isTooLong;
    line = std::string_view(buffer.data(), hasLineFeed ? taken - 1 : taken);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (number == 1 && line.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        line.remove_prefix(kByteOrderMark.size());
    }
    if (bytesTaken > bounds.bytes) {
        Refuse(0, "this file is larger than " + SizeText(bounds.bytes) + "; split it");
    }
    if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos) {
        Refuse(nul, "there is a NUL byte here; this is not a text file, or it is damaged");
    }
    if (const std::size_t lone = line.find('\r'); lone != std::string_view::npos) {
        Refuse(lone,
               "there is a carriage return here without a line feed behind it; write the file "
               "with the line ends of Unix or of Windows");
    }
    if (isTooLong || line.size() > bounds.lineLength) {
        Refuse(bounds.lineLength, "this line is longer than " + std::to_string(bounds.lineLength) +
                                      " characters; break it up");
    }
    return true;
}

void LineReader::Refuse(std::size_t offset, const std::string& sentence) const
{
    throw InputError(file, {number, static_cast<int>(offset) + 1}, sentence);
}

} // namespace host
