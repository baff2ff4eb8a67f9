#ifndef TRUNNION_HOST_TEXT_LINE_READER_H
#define TRUNNION_HOST_TEXT_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/// How much of a text is taken before it is refused.
struct TextBounds
{
    std::uintmax_t bytes;
    std::size_t lineLength;
};

/// A text line by line, in bounded memory. Lines end in LF or CR LF; the last one may lack it.
class LineReader
{
  public:
    LineReader(std::istream& from, std::string fileName, TextBounds within);

    /// Moves to the next line; false at the end. Throws InputError for a line or a text beyond its
    /// bound, for a NUL byte and for a CR within a line.
    bool Next();
    std::string_view Line() const { return line; } //!< valid until Next()
    int Number() const { return number; }          //!< of the current line, from 1
    const std::string& File() const { return file; }

  private:
    [[noreturn]] void Refuse(std::size_t offset, const std::string& sentence) const;

    std::istream& in;
    std::string file;
    TextBounds bounds;
    std::vector<char> buffer;
    std::string_view line;
    int number{0};
    std::uintmax_t bytesTaken{0};
};

} // namespace host

#endif
