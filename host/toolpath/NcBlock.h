#ifndef TRUNNION_HOST_TOOLPATH_NC_BLOCK_H
#define TRUNNION_HOST_TOOLPATH_NC_BLOCK_H

#include <string>
#include <string_view>
#include <vector>

#include "text/InputError.h"
#include "text/LineReader.h"

namespace host
{

/// A letter and its number.
struct NcWord
{
    char letter{' '}; //!< a capital
    double value{0.0};
    std::string number; //!< as the file has it
    TextPosition at;

    std::string Text() const { return letter + number; }
};

/// What stands on one line.
struct NcBlock
{
    int line{0};
    std::vector<NcWord> words; //!< at least one

    /// The first word of this letter, or null.
    const NcWord* Find(char letter) const;
    /// The first word of any of these letters, or null.
    const NcWord* FindAny(std::string_view letters) const;
};

/// Splits an NC program into blocks; comments and empty lines are dropped.
class NcBlockReader
{
  public:
    explicit NcBlockReader(LineReader& from) : lines(from) {}

    /// False at the end of the text, and at a % behind a block. Throws InputError for what is no
    /// word.
    bool Next(NcBlock& block);

  private:
    bool IsProgramMark() const;
    void TakeLine(NcBlock& block) const;
    std::size_t EndOfComment(std::size_t start) const;
    std::size_t TakeWord(NcBlock& block, std::size_t start) const;
    [[noreturn]] void Refuse(std::size_t offset, const std::string& sentence) const;

    LineReader& lines;
    bool hasBegun{false};
};

} // namespace host

#endif
