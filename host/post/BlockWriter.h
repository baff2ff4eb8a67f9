#ifndef TRUNNION_HOST_POST_BLOCK_WRITER_H
#define TRUNNION_HOST_POST_BLOCK_WRITER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "post/Dialect.h"
#include "post/Words.h"

namespace host
{

/// Spells blocks and remembers which words still hold. Keeps a reference to the dialect.
class BlockWriter
{
  public:
    /// What a block says besides where the machine goes.
    struct FeedWords
    {
        std::string mode;       //!< "G93"
        std::string feed;       //!< "F12.5"
        bool isRepeated{false}; //!< F stands in every block
    };

    BlockWriter(const Dialect& inDialect, std::vector<Coordinate> ofBlocks);

    // `values` are those of the coordinates.
    std::string Rapid(const std::vector<double>& values);
    /// A rapid block with its rotary words alone.
    std::string RapidTurn(const std::vector<double>& values);
    std::string Straight(const std::vector<double>& values, const FeedWords& feed);
    /// Lines that stand as they are.
    std::string Lines(const std::vector<std::string>& lines);
    std::string Comment(std::string_view text) const;

    /// The next block says everything.
    void Forget();

  private:
    std::string Numbered(const std::string& block);
    std::string MotionWord(const std::string& word);
    std::string Words(const std::vector<double>& values, bool onlyRotary);

    const Dialect& dialect;
    std::vector<Coordinate> coordinates;
    int nextNumber{0};
    std::vector<std::optional<double>> heldValues;
    std::string heldMotion;
    std::string heldMode;
    std::string heldFeed;
};

/// Text out of a file as it may stand in a comment: of printable ASCII, without parentheses, and
/// not too long.
std::string CommentText(std::string_view text);

} // namespace host

#endif
