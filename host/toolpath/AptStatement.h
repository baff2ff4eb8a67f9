#ifndef TRUNNION_HOST_TOOLPATH_APT_STATEMENT_H
#define TRUNNION_HOST_TOOLPATH_APT_STATEMENT_H

#include <cstddef>
#include <string>
#include <vector>

#include "text/InputError.h"
#include "text/LineReader.h"

namespace host
{

/// WORD/argument,argument,...
struct AptStatement
{
    struct Argument
    {
        std::string text;    //!< without blanks around it, in capitals
        std::string written; //!< without blanks around it, as the file has it
        TextPosition at;
    };

    std::string word; //!< in capitals, blanks inside it single
    TextPosition at;
    bool hasSlash{false};
    TextPosition next; //!< where its second line begins; line 0 for a statement on one line
    std::vector<Argument> arguments;
};

/// Splits a text into statements: comments dropped, continued lines joined, blank ones skipped.
class AptStatementReader
{
  public:
    explicit AptStatementReader(LineReader& from) : lines(from) {}

    bool Next(AptStatement& statement);

  private:
    /// Where a line of the file begins in the joined text.
    struct Piece
    {
        std::size_t offset;
        int line;
    };

    bool JoinLines();
    bool AppendLine();
    TextPosition PositionOf(std::size_t offset) const;

    LineReader& lines;
    std::string text;
    std::vector<Piece> pieces;
};

} // namespace host

#endif
